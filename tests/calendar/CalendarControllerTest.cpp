#include "CalendarControllerTestSupport.h"
#include "TestEnvironment.h"
#include "calendar/DueDateMove.h"
#include "calendar/ui/CalendarDisplayCell.h"

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace CalendarControllerTest;
using namespace CalendarViewTest;

namespace {
const QDate kTuesday(2026, 11, 24);
const QDate kFriday(2026, 11, 27);

AssignmentList term()
{
    return {record("Essay", stored(2026, 11, 24, 17)), record("Lab", stored(2026, 11, 24, 9)),
            record("Reading"), record("Quiz", stored(2026, 12, 2, 8)),
            record("Old", stored(2026, 11, 20, 12), {{AssignmentKeys::Completed, true}})};
}
} // namespace

TEST(CalendarControllerTest, TheActiveCalendarShowsTheDisplayedAssignmentsOnTheirDays)
{
    Fixture f(term());
    EXPECT_EQ(f.calendar->activeCalendar(), "Monthly");
    EXPECT_TRUE(f.weekly()->weeklyView());
    // In the list's order (by due date); the record without a date is not shown.
    EXPECT_EQ(f.titlesOn(f.monthly(), kTuesday), (QStringList{"Lab", "Essay"}));
    EXPECT_EQ(f.titlesOn(f.monthly(), QDate(2026, 12, 2)), QStringList{"Quiz"});
    qsizetype total = 0;
    for (const QList<CalendarEntry> &day : f.monthly()->dataDictionary())
        total += day.size();
    EXPECT_EQ(total, 4);
    EXPECT_EQ(f.monthly()->data().entries(kTuesday)[1].object, f.shown("Essay"));
    EXPECT_EQ(f.monthly()->dayCellForDate(kTuesday)->model()->rowCount(), 3);

    // A search narrows the calendar with the list.
    f.toolbar.text = "lab";
    f.controller->controlTextDidChange(true);
    EXPECT_EQ(f.titlesOn(f.monthly(), kTuesday), QStringList{"Lab"});
    EXPECT_TRUE(f.titlesOn(f.monthly(), QDate(2026, 12, 2)).isEmpty());
}

TEST(CalendarControllerTest, SwitchingCalendarsHandsTheFocusOver)
{
    Fixture f(term());
    f.monthly()->setFocusDate(midnight(2026, 12, 9));
    f.calendar->setActiveCalendar("Weekly");
    EXPECT_EQ(f.calendar->activeView(), f.weekly());
    EXPECT_EQ(f.weekly()->focusDate(), midnight(2026, 12, 9));
    EXPECT_EQ(*f.calendar->focusDate(), midnight(2026, 12, 9));
    f.calendar->updateCalendar();
    EXPECT_EQ(f.titlesOn(f.weekly(), QDate(2026, 12, 2)), QStringList{"Quiz"});

    f.weekly()->setFocusDate(midnight(2027, 2, 3));
    f.calendar->setActiveCalendar("yearly");
    EXPECT_EQ(f.calendar->activeView(), f.weekly());
    f.calendar->setActiveCalendar("Monthly");
    EXPECT_EQ(f.calendar->activeCalendar(), "Monthly");
    EXPECT_EQ(f.monthly()->currentMonthField()->text(), "February 2027");
}

TEST(CalendarControllerTest, ACalendarSelectionIsTheListSelection)
{
    Fixture f(term());
    BVCalendarDayCell *tuesday = f.monthly()->dayCellForDate(kTuesday);
    click(tuesday, rowCentre(tuesday, 2));
    EXPECT_EQ(f.listSelection(), "Essay");
    EXPECT_EQ(f.controller->selectedRows().size(), 1);
    // The list's answer did not disturb the calendar's selection.
    EXPECT_EQ(f.monthly()->selectedObject(), f.shown("Essay"));
    EXPECT_EQ(tuesday->selectedRow(), 2);

    click(tuesday, rowCentre(tuesday, 1));
    EXPECT_EQ(f.listSelection(), "Lab");

    // An empty part of a day clears both.
    click(tuesday, belowRows(tuesday));
    EXPECT_TRUE(f.controller->selectedRows().isEmpty());
    EXPECT_FALSE(f.monthly()->selectedObject());

    // And asked to, the controller clears the list too.
    click(tuesday, rowCentre(tuesday, 1));
    f.calendar->deselectAllAndDeselectListView(false);
    EXPECT_FALSE(f.monthly()->selectedObject());
    EXPECT_EQ(f.listSelection(), "Lab");
    f.calendar->deselectAllAndDeselectListView(true);
    EXPECT_TRUE(f.controller->selectedRows().isEmpty());
}

TEST(CalendarControllerTest, AListSelectionIsSelectedInBothCalendars)
{
    Fixture f(term());
    const AssignmentRef quiz = f.shown("Quiz");
    f.controller->selectRowAlone(int(f.controller->displayAssignments().indexOf(quiz)));
    // Both calendars go to its day; the active one, rebuilt from the list, selects it.
    for (BVCalendarView *view : {f.monthly(), f.weekly()})
        EXPECT_EQ(view->focusDate(), midnight(2026, 12, 2));
    EXPECT_EQ(f.monthly()->selectedObject(), quiz);
    EXPECT_EQ(f.monthly()->currentMonthField()->text(), "December 2026");
    EXPECT_EQ(f.monthly()->dayCellForDate(QDate(2026, 12, 2))->selectedRow(), 1);
    EXPECT_EQ(f.listSelection(), "Quiz");

    // A record without a due date leaves the calendars without a selection.
    f.controller->selectRowAlone(int(f.controller->displayAssignments().indexOf(f.shown("Reading"))));
    EXPECT_FALSE(f.monthly()->selectedObject());
    EXPECT_EQ(f.listSelection(), "Reading");

    // The weekly calendar, once active and rebuilt, selects it too.
    f.calendar->setActiveCalendar("Weekly");
    f.calendar->updateCalendar();
    f.controller->selectRowAlone(int(f.controller->displayAssignments().indexOf(quiz)));
    EXPECT_EQ(f.weekly()->selectedObject(), quiz);
    EXPECT_EQ(f.weekly()->dayCellForDate(QDate(2026, 12, 2))->selectedRow(), 1);
    f.controller->clearSelection();
    EXPECT_FALSE(f.monthly()->selectedObject());
    EXPECT_FALSE(f.weekly()->selectedObject());
}

TEST(CalendarControllerTest, DraggingToAnotherDayChangesTheStoredDueDate)
{
    Fixture f(term());
    BVCalendarDayCell *tuesday = f.monthly()->dayCellForDate(kTuesday);
    click(tuesday, rowCentre(tuesday, 2));
    std::unique_ptr<QMimeData> data(tuesday->dragDataForSelection());
    ASSERT_TRUE(data);
    EXPECT_EQ(f.listSelection(), "Essay");

    BVCalendarDayCell *friday = f.monthly()->dayCellForDate(kFriday);
    ASSERT_TRUE(dragOnto(friday, data.get(), belowRows(friday), true));

    // On disk: the new day, at the hour it was due before, stamped now.
    const QVariantMap essay = storedNamed("Essay");
    EXPECT_EQ(essay.value(AssignmentKeys::Date).toString(), "2026-11-27 17:00:00 -0500");
    EXPECT_EQ(essay.value(AssignmentKeys::DateUpdated).toString(), DateText::nowStoredForm());
    EXPECT_EQ(storedNamed("Lab").value(AssignmentKeys::Date).toString(), stored(2026, 11, 24, 9));
    // The calendar was rebuilt from the list, with the moved entry selected on its new day.
    EXPECT_EQ(f.titlesOn(f.monthly(), kTuesday), QStringList{"Lab"});
    EXPECT_EQ(f.titlesOn(f.monthly(), kFriday), QStringList{"Essay"});
    EXPECT_EQ(f.listSelection(), "Essay");
    EXPECT_EQ(f.monthly()->selectedObject(), f.shown("Essay"));
    EXPECT_EQ(f.monthly()->dayCellForDate(kFriday)->selectedRow(), 1);
}

TEST(CalendarControllerTest, AMoveAcrossTheClockChangeKeepsTheHour)
{
    Fixture f({record("Essay", stored(2026, 10, 30, 17))});
    EXPECT_TRUE(DueDateMove::changeDueDay(*f.controller, f.shown("Essay"), QDate(2026, 11, 2)));
    EXPECT_EQ(storedNamed("Essay").value(AssignmentKeys::Date).toString(), "2026-11-02 17:00:00 -0500");
    EXPECT_EQ(f.titlesOn(f.monthly(), QDate(2026, 11, 2)), QStringList{"Essay"});
}

// A move of a record no longer stored, or into a store that does not read, writes nothing.
TEST(CalendarControllerTest, AMoveThatCannotBeStoredLeavesTheFileAlone)
{
    Fixture f(term());
    QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());
    QString error;
    EXPECT_FALSE(DueDateMove::changeDueDay(*f.controller, record("Essay", stored(2026, 11, 24, 17)), kFriday, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);

    // The file turned unreadable under the open window: the record it showed is not written back.
    const AssignmentRef essay = f.shown("Essay");
    TestEnvironment::writeFile(Paths::assignmentsFile(), "<plist><array><dict><key>Name</key>");
    f.controller->updateWindowInformation();
    ASSERT_FALSE(f.controller->isStoreUsable());
    before = TestEnvironment::readFile(Paths::assignmentsFile());
    EXPECT_EQ(f.monthly()->dayCellForDate(kTuesday)->model()->rowCount(), 1);
    EXPECT_FALSE(DueDateMove::changeDueDay(*f.controller, essay, kFriday, &error));
    EXPECT_TRUE(error.contains("could not be read")) << error.toStdString();
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);
}

TEST(CalendarControllerTest, DoubleClickingADayAddsAnAssignmentThereWhenSwitchedOn)
{
    Fixture f(term());
    BVCalendarDayCell *friday = f.monthly()->dayCellForDate(kFriday);
    QTest::mouseDClick(friday->viewport(), Qt::LeftButton, Qt::NoModifier, belowRows(friday));
    const QVariantList afterFirst = readStore();
    ASSERT_EQ(afterFirst.size(), 6);
    int onFriday = 0;
    for (const QVariant &entry : afterFirst)
        if (entry.toMap().value(AssignmentKeys::Date).toString() == stored(2026, 11, 27))
            ++onFriday;
    EXPECT_EQ(onFriday, 1);
    // The new assignment shows on its day.
    EXPECT_EQ(f.monthly()->data().count(kFriday), 1);

    setGeneral(PreferenceKeys::GeneralKeys::DoubleClickCreates, false);
    QTest::mouseDClick(friday->viewport(), Qt::LeftButton, Qt::NoModifier, belowRows(friday));
    EXPECT_EQ(readStore().size(), 6);
}

TEST(CalendarControllerTest, EntriesTakeTheListsTextColours)
{
    Fixture f(term());
    f.monthly()->setFocusDate(midnight(2026, 11, 22));
    const auto colourOf = [&f](const QDate &day, int row, bool selected) {
        CalendarDisplayCell display;
        display.textColor = selected ? QColor(Qt::white) : QColor(Qt::black);
        display.selected = selected;
        f.calendar->calendarViewWillDisplayCell(f.monthly(), f.monthly()->dayCellForDate(day), display,
                                                CalendarTexts::ColumnIdentifier, row);
        return display.textColor.rgba();
    };
    // Due in two days: the default table's "Due in Two Days"; done: "Completed"; selected: white.
    EXPECT_EQ(colourOf(kTuesday, 1, false), QColor::fromRgbF(0.8f, 0.8f, 0.0f).rgba());
    EXPECT_EQ(colourOf(QDate(2026, 11, 20), 1, false), QColor::fromRgbF(0.0f, 0.6f, 0.0f).rgba());
    EXPECT_EQ(colourOf(kTuesday, 1, true), QColor(Qt::white).rgba());
    // Rows past the entries are left alone.
    EXPECT_EQ(colourOf(kTuesday, 3, false), QColor(Qt::black).rgba());

    // A colour changed in the preferences shows at the next redraw.
    QVariantMap colours = UserDefaults().dictionary(PreferenceKeys::Colors);
    colours.insert(PreferenceKeys::ColorKeys::DueInTwoDays, "NSCalibratedRGBColorSpace 0 0 1 1");
    UserDefaults().set(PreferenceKeys::Colors, colours);
    f.monthly()->beginDayCellPaint();
    EXPECT_EQ(colourOf(kTuesday, 1, false), QColor::fromRgbF(0.0f, 0.0f, 1.0f).rgba());
}

TEST(CalendarControllerTest, ReturnOpensTheSelectedAssignment)
{
    Fixture f(term());
    QSignalSpy opened(f.calendar.get(), &CalendarController::openAssignmentRequested);
    BVCalendarDayCell *tuesday = f.monthly()->dayCellForDate(kTuesday);
    click(tuesday, belowRows(tuesday));
    QTest::keyClick(tuesday, Qt::Key_Down);
    EXPECT_EQ(f.listSelection(), "Lab");
    QTest::keyClick(tuesday, Qt::Key_Return);
    ASSERT_EQ(opened.count(), 1);
    EXPECT_EQ(opened.first().first().value<AssignmentRef>(), f.shown("Lab"));
}
