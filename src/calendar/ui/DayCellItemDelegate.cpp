#include "calendar/ui/DayCellItemDelegate.h"

#include "calendar/ui/BVCalendarDayCell.h"
#include "calendar/ui/BVCalendarView.h"
#include "calendar/ui/CalendarDisplayCell.h"
#include "widgets/ReadableColors.h"

#include <QPainter>

namespace {
const QColor kDisabledText = QColor::fromRgbF(0.55f, 0.55f, 0.55f);
const int kTextInset = 3;
} // namespace

DayCellItemDelegate::DayCellItemDelegate(BVCalendarDayCell *cell)
    : QStyledItemDelegate(cell)
    , m_cell(cell)
{
}

void DayCellItemDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    CalendarDisplayCell display;
    display.text = index.data(Qt::DisplayRole).toString();
    display.font = BVCalendarDayCell::dayFont();
    display.selected = option.state.testFlag(QStyle::State_Selected);
    display.textColor = display.selected ? QColor(Qt::white) : QColor(Qt::black);
    if (index.row() >= 1)
        m_cell->superView()->willDisplayCell(m_cell, display, index.row());
    if (!m_cell->isDayEnabled() && !display.selected)
        display.textColor = kDisabledText;
    // The colours are chosen for a white page; on a dark one they are drawn lighter, in their hue.
    if (!display.selected)
        display.textColor = ReadableColors::text(display.textColor, m_cell->viewport()->palette().color(QPalette::Base));

    painter->save();
    if (display.selected)
        painter->fillRect(option.rect, option.palette.color(QPalette::Active, QPalette::Highlight));
    painter->setFont(display.font);
    painter->setPen(display.textColor);
    const QRect textRect = option.rect.adjusted(kTextInset, 0, -kTextInset, 0);
    const QString shown = QFontMetrics(display.font).elidedText(display.text, Qt::ElideRight, textRect.width());
    const auto alignment = Qt::Alignment(index.data(Qt::TextAlignmentRole).toInt());
    painter->drawText(textRect, int(alignment), shown);
    painter->restore();
}

QSize DayCellItemDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &) const
{
    return QSize(option.rect.width(), BVCalendarDayCell::rowHeight());
}
