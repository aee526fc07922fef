#pragma once

#include "calendar/ui/BVCalendarViewDelegate.h"
#include "list/CalendarObserver.h"
#include "list/PresentationSettings.h"

#include <QObject>
#include <QPointer>

class BVCalendarView;
class Controller;

// Owns the weekly and the monthly calendar and joins them to the assignment list: the calendars
// show the displayed assignments, a selection in either is the list's selection and the other way
// round, an entry dragged to another day moves the assignment's due date, and a double click on a
// day may add an assignment there.
//
// The main window places weeklyView() and monthlyView(); both start without a parent, and the
// controller deletes them when it goes first.
class CalendarController : public QObject, public CalendarObserver, public BVCalendarViewDelegate
{
    Q_OBJECT
public:
    static CalendarController *sharedController();

    explicit CalendarController(QObject *parent = nullptr);
    ~CalendarController() override;

    BVCalendarView *monthlyView() const { return m_monthlyCalendar; }
    BVCalendarView *weeklyView() const { return m_weeklyCalendar; }
    BVCalendarView *activeView() const { return m_activeCalendar; }
    // "Weekly" or "Monthly".
    QString activeCalendar() const;

    Controller *controller() const { return m_controller; }
    // Joins the list: the controller reports its changes here from now on.
    void setController(Controller *controller);

    // "Weekly" or "Monthly" becomes the active calendar, showing the day the other one showed; any
    // other text does nothing.
    void setActiveCalendar(const QString &name);
    // Clears the active calendar's selection and, when asked, the list's.
    void deselectAllAndDeselectListView(bool deselectListView);

    // --- what the list asks ----------------------------------------------------------------------
    // Rebuilds the active calendar from the displayed assignments.
    void updateCalendar() override;
    std::optional<QDateTime> focusDate() const override;
    void selectAssignment(const AssignmentRef &record) override;
    void clearSelection() override;

    // --- what the calendars report ---------------------------------------------------------------
    void calendarViewSelectionDidChange(BVCalendarView *view) override;
    void calendarViewEventWillMove(BVCalendarView *view) override;
    void calendarViewEventDidMove(BVCalendarView *view) override;
    void calendarViewDidDoubleClick(BVCalendarView *view) override;
    void calendarViewOpenSelection(BVCalendarView *view) override;
    void calendarViewWillDisplayCell(BVCalendarView *view, BVCalendarDayCell *cell, CalendarDisplayCell &display,
                                     const QString &column, int row) override;

Q_SIGNALS:
    // Return on a selected entry: the window should show that assignment for editing. It is
    // already selected in the list.
    void openAssignmentRequested(const AssignmentRef &record);

private:
    // The calendar's selection becomes the list's.
    void selectInList(BVCalendarView *view);
    // A preference was written: redraw what it decides (hidden weekends, the entries' colours).
    void preferenceChanged(const QString &group, const QString &key);
    const PresentationSettings &settingsFor(const BVCalendarView *view);

    QPointer<BVCalendarView> m_monthlyCalendar;
    QPointer<BVCalendarView> m_weeklyCalendar;
    QPointer<BVCalendarView> m_activeCalendar;
    // Cleared when the controller is destroyed.
    Controller *m_controller = nullptr;
    QMetaObject::Connection m_controllerGone;

    // A selection handed from one side to the other comes straight back; these stop the echo.
    bool m_applyingListSelection = false;
    bool m_applyingCalendarSelection = false;

    PresentationSettings m_settings;
    const BVCalendarView *m_settingsView = nullptr;
    quint64 m_settingsPass = 0;
    bool m_settingsLoaded = false;
};
