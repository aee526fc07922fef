#pragma once

#include <QColor>
#include <QSyntaxHighlighter>
#include <QList>
#include <QTextCursor>

// Draws the addresses in a notes document as links. Works paragraph by paragraph, as a paragraph
// changes: a keystroke re-reads only the paragraph it touched, never the whole note, and the
// formats live in the layout, so the text itself, its undo history and its modified flag stay as
// the user left them.
class LinkHighlighter : public QSyntaxHighlighter
{
    Q_OBJECT
public:
    explicit LinkHighlighter(QTextDocument *document);

    // The colour of new links.
    static QColor linkColour();
    // The link starting at a position of the document drawn in another colour until the text next
    // changes, when every link is drawn as new again. Several links can be coloured at once.
    void setLinkColour(int position, const QColor &colour);

protected:
    void highlightBlock(const QString &text) override;

private:
    void textChanged(int position, int removed, int added);

    // The links drawn in another colour, by where they start; cursors, so that they follow edits.
    struct Coloured {
        QTextCursor start;
        QColor colour;
    };
    QList<Coloured> m_coloured;
};
