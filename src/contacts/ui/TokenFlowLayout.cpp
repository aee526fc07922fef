#include "contacts/ui/TokenFlowLayout.h"

#include <QWidget>

TokenFlowLayout::TokenFlowLayout(QWidget *parent, int spacing)
    : QLayout(parent)
    , m_spacing(spacing)
{
}

TokenFlowLayout::~TokenFlowLayout()
{
    while (QLayoutItem *item = takeAt(0))
        delete item;
}

void TokenFlowLayout::addItem(QLayoutItem *item)
{
    m_items.append(item);
}

void TokenFlowLayout::insertWidget(int index, QWidget *widget)
{
    addChildWidget(widget);
    m_items.insert(qBound(0, index, int(m_items.size())), new QWidgetItem(widget));
    invalidate();
}

int TokenFlowLayout::count() const
{
    return int(m_items.size());
}

QLayoutItem *TokenFlowLayout::itemAt(int index) const
{
    return m_items.value(index);
}

QLayoutItem *TokenFlowLayout::takeAt(int index)
{
    if (index < 0 || index >= m_items.size())
        return nullptr;
    QLayoutItem *item = m_items.takeAt(index);
    invalidate();
    return item;
}

Qt::Orientations TokenFlowLayout::expandingDirections() const
{
    return Qt::Horizontal;
}

bool TokenFlowLayout::hasHeightForWidth() const
{
    return true;
}

int TokenFlowLayout::heightForWidth(int width) const
{
    return doLayout(QRect(0, 0, width, 0), false);
}

QSize TokenFlowLayout::minimumSize() const
{
    QSize size;
    for (const QLayoutItem *item : m_items)
        size = size.expandedTo(item->minimumSize());
    const QMargins margins = contentsMargins();
    return size + QSize(margins.left() + margins.right(), margins.top() + margins.bottom());
}

QSize TokenFlowLayout::sizeHint() const
{
    int width = 0;
    for (const QLayoutItem *item : m_items)
        width += item->sizeHint().width() + m_spacing;
    width = qMin(width, 300);
    return QSize(width, heightForWidth(width)).expandedTo(minimumSize());
}

void TokenFlowLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    doLayout(rect, true);
}

int TokenFlowLayout::doLayout(const QRect &rect, bool apply) const
{
    const QRect area = rect.marginsRemoved(contentsMargins());
    int x = area.x();
    int y = area.y();
    int lineHeight = 0;
    for (qsizetype i = 0; i < m_items.size(); ++i) {
        QLayoutItem *item = m_items[i];
        if (item->isEmpty())
            continue;
        const bool last = i == m_items.size() - 1;
        QSize size = item->sizeHint();
        size.setWidth(qMin(size.width(), area.width()));
        const int wanted = last ? qMin(m_lastMinimum, area.width()) : size.width();
        if (x > area.x() && x + wanted > area.right() + 1) {
            x = area.x();
            y += lineHeight + m_spacing;
            lineHeight = 0;
        }
        if (last)
            size.setWidth(qMax(area.right() + 1 - x, 0));
        if (apply)
            item->setGeometry(QRect(QPoint(x, y), size));
        x += size.width() + m_spacing;
        lineHeight = qMax(lineHeight, size.height());
    }
    const QMargins margins = contentsMargins();
    return y + lineHeight - rect.y() + margins.bottom();
}
