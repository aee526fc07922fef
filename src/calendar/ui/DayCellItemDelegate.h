#pragma once

#include <QStyledItemDelegate>

class BVCalendarDayCell;

// Draws the rows of a day's list: the day number right-aligned, the entries left-aligned in the
// colour the calendar's delegate gives them, white on the highlight when selected, greyed on a day
// that takes no clicks.
class DayCellItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT
public:
    explicit DayCellItemDelegate(BVCalendarDayCell *cell);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    BVCalendarDayCell *m_cell;
};
