#include "widgets/LinkHighlighter.h"

#include "widgets/URLTextViewAdditions.h"

#include <QTextBlock>
#include <QTextDocument>

#include <algorithm>
#include <utility>

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
    auto same = std::find_if(m_coloured.begin(), m_coloured.end(),
                             [position](const Coloured &link) { return link.start.position() == position; });
    if (same != m_coloured.end()) {
        same->colour = colour;
    } else {
        QTextCursor start(document());
        start.setPosition(position);
        m_coloured.append({start, colour});
    }
    rehighlightBlock(document()->findBlock(position));
}

void LinkHighlighter::highlightBlock(const QString &text)
{
    QList<QTextLayout::FormatRange> links = URLTextViewAdditions::detectURLs(text, linkColour());
    const QTextBlock block = currentBlock();
    for (const Coloured &coloured : m_coloured) {
        if (!block.contains(coloured.start.position()))
            continue;
        const int start = coloured.start.position() - block.position();
        for (QTextLayout::FormatRange &link : links)
            if (link.start == start)
                link.format.setForeground(coloured.colour);
    }
    for (const QTextLayout::FormatRange &link : links)
        setFormat(link.start, link.length, link.format);
}

void LinkHighlighter::textChanged(int, int removed, int added)
{
    // Re-drawing formats reports a change of nothing; only a change of text resets the colours.
    if ((removed == 0 && added == 0) || m_coloured.isEmpty())
        return;
    const QList<Coloured> coloured = std::exchange(m_coloured, {});
    for (const Coloured &link : coloured)
        rehighlightBlock(link.start.block());
}
