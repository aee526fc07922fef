#pragma once

#include "store/Assignment.h"

#include <QDateTime>

#include <optional>

// How the list tells the calendar views about changes. The calendar controller implements it.
class CalendarObserver
{
public:
    virtual ~CalendarObserver() = default;

    // The displayed assignments changed: redraw.
    virtual void updateCalendar() = 0;
    // The day a new assignment gets when added in a calendar format: the active calendar's focus.
    virtual std::optional<QDateTime> focusDate() const = 0;
    // One record was selected in the list: select it in the calendars at its date.
    virtual void selectAssignment(const AssignmentRef &record) = 0;
    virtual void clearSelection() = 0;
};
