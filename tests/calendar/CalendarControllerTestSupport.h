#pragma once

#include "CalendarViewTestSupport.h"
#include "calendar/ui/CalendarController.h"
#include "list/Controller.h"
#include "list/ListStartupSteps.h"
#include "list/SidebarValues.h"
#include "list/ToolbarState.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/StartupSequence.h"
#include "support/ListDoubles.h"

#include <QDir>

namespace CalendarControllerTest {

inline QString stored(int year, int month, int day, int hour = 0, int minute = 0)
{
    return DateText::toStoredForm(QDateTime(QDate(year, month, day), QTime(hour, minute)));
}

inline AssignmentRef record(const QString &name, const QString &date = QString(), const QVariantMap &more = {})
{
    QVariantMap fields = more;
    fields.insert(AssignmentKeys::Name, name);
    if (!date.isNull())
        fields.insert(AssignmentKeys::Date, date);
    return Assignments::make(fields);
}

using StoreFiles::readStore;
using StoreFiles::setGeneral;
using StoreFiles::storedNamed;

// The list over a store on disk, with the calendars joined to it and the monthly one shown.
struct Fixture {
    FakeToolbar toolbar;
    FakeSidebar sidebar;
    std::unique_ptr<Controller> controller;
    std::unique_ptr<CalendarController> calendar;

    explicit Fixture(const AssignmentList &records, const QSize &size = QSize(700, 451))
    {
        toolbar.format = 2; // a calendar format
        Preferences::setAllDefaults();
        // "All" in the filter bar (Default View 2 wraps to the first view).
        setGeneral(PreferenceKeys::GeneralKeys::DefaultView, 2);
        QDir().mkpath(Paths::dataFolder());
        PropertyList::writeFile(Paths::assignmentsFile(), Assignments::toVariantList(records));
        controller = std::make_unique<Controller>();
        controller->setToolbar(&toolbar);
        controller->setSidebar(&sidebar);
        calendar = std::make_unique<CalendarController>();
        calendar->setController(controller.get());
        for (BVCalendarView *view : {calendar->monthlyView(), calendar->weeklyView()})
            view->resize(size);
        calendar->monthlyView()->show();
        [[maybe_unused]] const bool exposed = QTest::qWaitForWindowExposed(calendar->monthlyView());
        ListStartupSteps steps(*controller);
        StartupSequence::setUpWindowFromPreferences(steps);
    }

    ~Fixture()
    {
        calendar.reset();
        controller.reset();
    }

    BVCalendarView *monthly() const { return calendar->monthlyView(); }
    BVCalendarView *weekly() const { return calendar->weeklyView(); }

    AssignmentRef shown(const QString &name) const
    {
        for (const AssignmentRef &r : controller->displayAssignments())
            if (r->string(AssignmentKeys::Name) == name)
                return r;
        return nullptr;
    }

    // The name of the list's only selected row, or "" without one.
    QString listSelection() const
    {
        const int row = controller->singleSelectedRow();
        return row < 0 ? QString() : controller->displayAssignments()[row]->string(AssignmentKeys::Name);
    }

    QStringList titlesOn(BVCalendarView *view, const QDate &day) const
    {
        QStringList titles;
        for (const CalendarEntry &entry : view->data().entries(day))
            titles.append(entry.title);
        return titles;
    }
};

} // namespace CalendarControllerTest
