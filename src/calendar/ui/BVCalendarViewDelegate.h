#pragma once

#include <QString>

class BVCalendarDayCell;
class BVCalendarView;
struct CalendarDisplayCell;

// What a calendar view tells the object in charge of it. Every callback is optional: the defaults
// do nothing, so a delegate answers only what it cares about.
class BVCalendarViewDelegate
{
public:
    virtual ~BVCalendarViewDelegate() = default;

    virtual void calendarViewSelectionDidChange(BVCalendarView *) {}
    // An entry is being dragged: it is already the view's selection.
    virtual void calendarViewEventWillMove(BVCalendarView *) {}
    // The dragged entry was dropped on a day and is now the selection there.
    virtual void calendarViewEventDidMove(BVCalendarView *) {}
    virtual void calendarViewDidDoubleClick(BVCalendarView *) {}
    // Return was pressed with an entry selected.
    virtual void calendarViewOpenSelection(BVCalendarView *) {}
    // An entry row (row >= 1) of a day's list is about to be drawn.
    virtual void calendarViewWillDisplayCell(BVCalendarView *, BVCalendarDayCell *, CalendarDisplayCell &,
                                             const QString & /*column*/, int /*row*/)
    {
    }
};
