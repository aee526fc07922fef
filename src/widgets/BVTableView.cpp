#include "widgets/BVTableView.h"

#include "platform/Workspace.h"
#include "widgets/LinkHighlighter.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QTextDocument>
#include <QTextLayout>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace {

constexpr qreal PlaceholderPointSize = 13;
const QPointF PlaceholderOrigin(3, 0);

QColor placeholderColour()
{
    return QColor::fromRgbF(0.5f, 0.5f, 0.5f);
}

} // namespace

BVTableView::BVTableView(QWidget *parent)
    : QPlainTextEdit(parent)
    , m_highlighter(new LinkHighlighter(document()))
{
    // The pointer turns into a hand over a link, so moves without a button are wanted too.
    viewport()->setMouseTracking(true);
    // Text replaced while a link is held down (the record changed underneath): the press is over,
    // and its release opens nothing.
    connect(document(), &QTextDocument::contentsChange, this, [this](int, int removed, int added) {
        if (removed != 0 || added != 0)
            m_pressed.reset();
    });
}

QColor BVTableView::pressedLinkColour()
{
    return QColor::fromRgbF(1.0f, 0.5f, 0.0f);
}

QColor BVTableView::visitedLinkColour()
{
    return QColor::fromRgbF(0.1f, 0.3f, 0.8f, 1.0f);
}

void BVTableView::setPlaceholderString(const QString &placeholder)
{
    m_placeholder = placeholder;
    viewport()->update();
}

QString BVTableView::placeholderString() const
{
    return m_placeholder;
}

void BVTableView::setString(const QString &text)
{
    // The highlighter hears the change and draws the links before this returns.
    setPlainText(text);
}

void BVTableView::paintEvent(QPaintEvent *event)
{
    QPlainTextEdit::paintEvent(event);
    // Hidden while the field has the keyboard, even in a window in the background: the window's
    // focus widget, not the application's.
    if (m_placeholder.isEmpty() || !document()->isEmpty() || window()->focusWidget() == this)
        return;
    QPainter painter(viewport());
    QFont font = QApplication::font();
    font.setPointSizeF(PlaceholderPointSize);
    painter.setFont(font);
    painter.setPen(placeholderColour());
    const QRectF area(PlaceholderOrigin, QSizeF(viewport()->width(), viewport()->height()));
    painter.drawText(area, Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, m_placeholder);
}

void BVTableView::focusInEvent(QFocusEvent *event)
{
    viewport()->update();
    QPlainTextEdit::focusInEvent(event);
}

void BVTableView::focusOutEvent(QFocusEvent *event)
{
    viewport()->update();
    QPlainTextEdit::focusOutEvent(event);
}

std::optional<BVTableView::Link> BVTableView::linkAt(const QPointF &point) const
{
    const QTextBlock block = cursorForPosition(point.toPoint()).block();
    if (!block.isValid() || !block.layout())
        return std::nullopt;
    const QTextLayout *layout = block.layout();
    const QPointF origin = blockBoundingGeometry(block).translated(contentOffset()).topLeft();
    const QPointF local = point - origin;

    // The character under the point: none if the point is above, below or past the end of the
    // lines of text.
    int character = -1;
    for (int i = 0; i < layout->lineCount(); ++i) {
        const QTextLine line = layout->lineAt(i);
        if (local.y() < line.y() || local.y() >= line.y() + line.height())
            continue;
        const int index = line.xToCursor(local.x(), QTextLine::CursorOnCharacter);
        if (index < line.textStart() + line.textLength())
            character = index;
        break;
    }
    if (character < 0)
        return std::nullopt;

    for (const QTextLayout::FormatRange &range : layout->formats()) {
        if (character < range.start || character >= range.start + range.length || !range.format.isAnchor())
            continue;
        Link link{block.position() + range.start, range.length, range.format.anchorHref(), {}};
        const int end = range.start + range.length;
        for (int i = 0; i < layout->lineCount(); ++i) {
            const QTextLine line = layout->lineAt(i);
            const int from = std::max(range.start, line.textStart());
            const int to = std::min(end, line.textStart() + line.textLength());
            if (from >= to)
                continue;
            const qreal left = line.cursorToX(from);
            const qreal right = line.cursorToX(to);
            link.rects.append(QRectF(std::min(left, right), line.y(), std::abs(right - left), line.height())
                                  .translated(origin));
        }
        return link;
    }
    return std::nullopt;
}

bool BVTableView::contains(const QList<QRectF> &rects, const QPointF &point)
{
    return std::any_of(rects.begin(), rects.end(), [&](const QRectF &rect) { return rect.contains(point); });
}

bool BVTableView::pressLink(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return false;
    std::optional<Link> link = linkAt(event->position());
    // The character nearest the point may belong to a link while the point itself is beside it.
    if (!link || !contains(link->rects, event->position()))
        return false;
    m_pressed = std::move(link);
    m_highlighter->setLinkColour(m_pressed->position, pressedLinkColour());
    event->accept();
    return true;
}

void BVTableView::mousePressEvent(QMouseEvent *event)
{
    if (m_pressed) {
        event->accept();
        return;
    }
    if (!pressLink(event))
        QPlainTextEdit::mousePressEvent(event);
}

void BVTableView::mouseDoubleClickEvent(QMouseEvent *event)
{
    // A second click on a link presses it again rather than selecting its word.
    if (m_pressed) {
        event->accept();
        return;
    }
    if (!pressLink(event))
        QPlainTextEdit::mouseDoubleClickEvent(event);
}

void BVTableView::mouseMoveEvent(QMouseEvent *event)
{
    if (m_pressed) {
        const bool inside = contains(m_pressed->rects, event->position());
        m_highlighter->setLinkColour(m_pressed->position,
                                     inside ? pressedLinkColour() : visitedLinkColour());
        event->accept();
        return;
    }
    if (event->buttons() == Qt::NoButton) {
        const std::optional<Link> link = linkAt(event->position());
        const bool overLink = link && contains(link->rects, event->position());
        viewport()->setCursor(overLink ? Qt::PointingHandCursor : Qt::IBeamCursor);
    }
    QPlainTextEdit::mouseMoveEvent(event);
}

void BVTableView::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_pressed) {
        QPlainTextEdit::mouseReleaseEvent(event);
        return;
    }
    event->accept();
    const Link link = std::move(*m_pressed);
    m_pressed.reset();
    m_highlighter->setLinkColour(link.position, visitedLinkColour());
    if (contains(link.rects, event->position()))
        Workspace::openUrl(QUrl(link.target));
}
