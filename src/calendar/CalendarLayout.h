#pragma once

#include "calendar/CalendarGrid.h"

#include <QList>
#include <QRectF>
#include <QSizeF>

#include <array>

// Where every part of a calendar view goes for a size, in widget coordinates (origin top-left).
// The measures are those of the grid's original bottom-up layout: the header takes the top 51
// pixels (title, buttons, the line under them at 30, the weekday names), the week rows share the
// rest, and each day cell overlaps its neighbours by one pixel so their borders coincide.
struct CalendarLayout {
    static constexpr double HeaderHeight = 51;
    static constexpr double LineFromTop = 30;

    double columnWidth = 0;
    double rowHeight = 0;
    // With weekends hidden every column moves left by one (whole) column width, so that Sunday lies
    // left of the view and Saturday right of Friday.
    double leftShift = 0;

    QRectF title;
    QRectF previousButton;
    QRectF nextButton;
    QRectF todayButton;
    // Sunday first.
    std::array<QRectF, CalendarGrid::DaysPerWeek> weekdays;
    // The frame of each laid-out slot, in the order of the slots given.
    QList<QRectF> cells;
    // The y of the grey line under the title and buttons.
    double lineY = 0;

    static CalendarLayout compute(const QSizeF &size, int rows, bool hideWeekends,
                                  const QList<CalendarGrid::Slot> &slots);
};
