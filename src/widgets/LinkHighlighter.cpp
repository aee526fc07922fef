#include "widgets/LinkHighlighter.h"

#include "widgets/URLTextViewAdditions.h"

#include <QTextBlock>
#include <QTextDocument>

LinkHighlighter::LinkHighlighter(QTextDocument *document)
    : QSyntaxHighlighter(document)
{
    // Connected after the highlighter's own handler, so the changed paragraphs have been drawn with
    // the old colour already and only the coloured link's paragraph needs drawing again.
    connect(document, &QTextDocument::contentsChange, this, &LinkHighlighter::textChanged);
}

QColor LinkHighlighter::linkColour()
{
    return QColor(0, 0, 255);
}

void LinkHighlighter::setLinkColour(int position, const QColor &colour)
{
    const QTextBlock previous = m_coloured.isNull() ? QTextBlock() : m_coloured.block();
    m_coloured = QTextCursor(document());
    m_coloured.setPosition(position);
    m_colour = colour;
    if (previous.isValid() && previous != m_coloured.block())
        rehighlightBlock(previous);
    rehighlightBlock(m_coloured.block());
}

void LinkHighlighter::highlightBlock(const QString &text)
{
    QList<QTextLayout::FormatRange> links = URLTextViewAdditions::detectURLs(text, linkColour());
    const int colouredStart = m_coloured.isNull() ? -1 : m_coloured.position() - currentBlock().position();
    for (QTextLayout::FormatRange &link : links) {
        if (link.start == colouredStart)
            link.format.setForeground(m_colour);
        setFormat(link.start, link.length, link.format);
    }
}

void LinkHighlighter::textChanged(int, int removed, int added)
{
    // Re-drawing formats reports a change of nothing; only a change of text resets the colours.
    if ((removed == 0 && added == 0) || m_coloured.isNull())
        return;
    const QTextBlock block = m_coloured.block();
    m_coloured = QTextCursor();
    rehighlightBlock(block);
}
