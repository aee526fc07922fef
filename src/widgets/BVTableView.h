#pragma once

#include <QList>
#include <QPlainTextEdit>
#include <QRectF>

#include <optional>

class LinkHighlighter;

// The multi-line notes field. Its content is plain text, exactly as typed; every web, FTP, gopher,
// mail or "nap:" address in it is drawn as a link (underlined, blue) as the user types, and a click
// on a link opens it with the desktop's handler. While empty and without the keyboard it shows a
// grey placeholder.
class BVTableView : public QPlainTextEdit
{
    Q_OBJECT
public:
    explicit BVTableView(QWidget *parent = nullptr);

    // Colour of a link while the mouse presses it, and after it has been pressed.
    static QColor pressedLinkColour();
    static QColor visitedLinkColour();

    void setPlaceholderString(const QString &placeholder);
    QString placeholderString() const;

    // Replaces the content; the links are found at once.
    void setString(const QString &text);

protected:
    void paintEvent(QPaintEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    struct Link {
        int position = 0; // in the document
        int length = 0;
        QString target;
        QList<QRectF> rects; // where its text stands, in viewport coordinates
    };

    // The link whose text stands under a point of the viewport, if any.
    std::optional<Link> linkAt(const QPointF &point) const;
    // Starts pressing the link under the event, if there is one; false leaves the click to the text.
    bool pressLink(QMouseEvent *event);
    static bool contains(const QList<QRectF> &rects, const QPointF &point);

    LinkHighlighter *m_highlighter;
    QString m_placeholder;
    std::optional<Link> m_pressed;
};
