#include "list/ui/MainWindowTestSupport.h"

#include "calendar/ui/BVCalendarView.h"
#include "calendar/ui/CalendarController.h"
#include "widgets/AnimatingTabView.h"

using namespace ListTest;
using namespace WindowTest;
using Command = MainMenus::Command;

TEST(CalendarFormatWindow, TheFormatsSwitchToCalendarsThatShowTheListAndAddOnTheirFocusDay)
{
    freshPreferences();
    // No transition, so the switch is immediate.
    setGeneral(PreferenceKeys::GeneralKeys::MainWindowTransition, 0);
    writeStore({record("Essay", {{"Date", stored(2026, 11, 22)}}), record("Lab", {{"Date", stored(2026, 11, 24)}})});
    Window w;
    MainMenus *menus = w.window->menus();
    AnimatingTabView *formats = w.window->formattingTabView();
    CalendarController *calendars = w.window->calendarController();
    ASSERT_EQ(formats->count(), 3);
    w.window->validateCommands();
    EXPECT_FALSE(menus->action(Command::GoToToday)->isEnabled());

    menus->action(Command::FormatMonthly)->trigger();
    EXPECT_EQ(formats->currentIndex(), 2);
    EXPECT_EQ(w.toolbar()->formatSegment(), 2);
    EXPECT_EQ(calendars->activeView(), calendars->monthlyView());
    const auto &days = calendars->monthlyView()->dataDictionary();
    EXPECT_EQ(days.value(QDate(2026, 11, 22)).size(), 1);
    EXPECT_EQ(days.value(QDate(2026, 11, 24)).size(), 1);
    EXPECT_TRUE(menus->action(Command::GoToToday)->isEnabled());

    // Selecting in the list selects in the calendar.
    w.select("Lab");
    ASSERT_TRUE(calendars->monthlyView()->selectedObject());
    EXPECT_EQ(calendars->monthlyView()->selectedObject()->string("Name"), "Lab");

    // The month commands move the calendar; an add lands on its focus day.
    menus->action(Command::NextMonth)->trigger();
    EXPECT_EQ(calendars->monthlyView()->focusDate().date().month(), 12);
    w.controller()->clearSelection();
    menus->action(Command::Add)->trigger();
    bool found = false;
    for (const QVariant &value : readStore()) {
        const QVariantMap added = value.toMap();
        if (added.contains("Name"))
            continue;
        found = true;
        EXPECT_TRUE(added.value("Date").toString().startsWith("2026-12-")) << added.value("Date").toString().toStdString();
    }
    EXPECT_TRUE(found);

    // The weekly calendar takes over the focus day; the list leaves the active calendar alone.
    menus->action(Command::FormatWeekly)->trigger();
    EXPECT_EQ(formats->currentIndex(), 1);
    EXPECT_EQ(calendars->activeView(), calendars->weeklyView());
    EXPECT_EQ(calendars->weeklyView()->focusDate().date().month(), 12);
    menus->action(Command::FormatList)->trigger();
    EXPECT_EQ(formats->currentIndex(), 0);
    EXPECT_EQ(calendars->activeView(), calendars->weeklyView());
    w.window->validateCommands();
    EXPECT_FALSE(menus->action(Command::NextMonth)->isEnabled());
}
