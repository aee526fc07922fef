#include "calendar/CalendarLayout.h"

#include <cmath>

namespace {
// The original frames are measured from the bottom edge; a frame of height `height` whose lower
// edge is `bottomUpY` above the bottom of a view `viewHeight` high starts here from the top.
double fromTop(double viewHeight, double bottomUpY, double height)
{
    return viewHeight - bottomUpY - height;
}
} // namespace

CalendarLayout CalendarLayout::compute(const QSizeF &size, int rows, bool hideWeekends,
                                       const QList<CalendarGrid::Slot> &slots)
{
    const double width = size.width();
    const double height = size.height();
    CalendarLayout layout;
    layout.columnWidth = width / (hideWeekends ? 5.0 : 7.0);
    const double gridHeight = height - HeaderHeight;
    layout.rowHeight = rows > 0 ? gridHeight / rows : gridHeight;
    layout.leftShift = hideWeekends ? std::floor(layout.columnWidth) : 0.0;

    layout.title = QRectF(width / 2 - 200, fromTop(height, height - 29, 25), 400, 25);
    layout.previousButton = QRectF(width - 104, fromTop(height, height - 25, 20), 20, 20);
    layout.nextButton = QRectF(width - 81, fromTop(height, height - 25, 20), 20, 20);
    layout.todayButton = QRectF(width - 53, fromTop(height, height - 25, 20), 50, 20);
    layout.lineY = fromTop(height, height - LineFromTop, 0);

    const double w = layout.columnWidth;
    const double h = layout.rowHeight;
    for (int day = 0; day < CalendarGrid::DaysPerWeek; ++day)
        layout.weekdays[day] = QRectF(day * w - layout.leftShift, fromTop(height, height - 51, 20), w + 1, 20);

    layout.cells.reserve(slots.size());
    for (const CalendarGrid::Slot &slot : slots)
        layout.cells.append(
            QRectF(slot.column * w - layout.leftShift, fromTop(height, slot.row * h, h + 1), w + 1, h + 1));
    return layout;
}
