#include "CalendarViewTestSupport.h"
#include "TestEnvironment.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace CalendarViewTest;

namespace {
AssignmentRef named(const QString &name)
{
    return Assignments::make({{AssignmentKeys::Name, name}});
}

QStringList g_messages;
void collect(QtMsgType, const QMessageLogContext &, const QString &message)
{
    g_messages.append(message);
}
} // namespace

// A shown month view reporting to a delegate, and two records to put on it.
class CalendarView : public testing::Test
{
protected:
    CalendarView() { view->setDelegate(&delegate); }

    RecordingDelegate delegate; // made first, so the view goes before it
    std::unique_ptr<BVCalendarView> view = shownView();
    const AssignmentRef essay = named("Essay");
    const AssignmentRef lab = named("Lab");
};

TEST_F(CalendarView, StartsOnTodayInTheMonthView)
{
    EXPECT_TRUE(view->monthlyView());
    EXPECT_EQ(view->focusDate(), midnight(2026, 11, 22));
    EXPECT_EQ(view->currentMonthField()->text(), "November 2026");
    EXPECT_EQ(view->rows(), 5);
    EXPECT_EQ(view->leftButton()->text(), "<");
    EXPECT_EQ(view->rightButton()->text(), ">");
    EXPECT_EQ(view->todayButton()->text(), "Today");
    EXPECT_EQ(view->weekdayField(0)->text(), "Sunday");
    EXPECT_EQ(view->weekdayField(6)->text(), "Saturday");
    // Today's cell is tinted; a day of December in the last row is grey.
    BVCalendarDayCell *today = view->dayCellForDate(QDate(2026, 11, 22));
    ASSERT_NE(today, nullptr);
    EXPECT_EQ(today->number(), 21);
    EXPECT_NEAR(today->background().alphaF(), 0.9, 0.01);
    EXPECT_NEAR(view->dayCellForDate(QDate(2026, 12, 2))->background().redF(), 0.96, 0.002);
    EXPECT_FALSE(view->dayCellForDate(QDate(2026, 12, 2))->isDayEnabled());
    // Every control can be found by a screen reader.
    for (QWidget *child : view->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly)) {
        EXPECT_FALSE(child->objectName().isEmpty());
        EXPECT_FALSE(child->accessibleName().isEmpty()) << child->objectName().toStdString();
    }
}

TEST_F(CalendarView, RowsAndCellsFollowTheMonth)
{
    view->setFocusDate(midnight(2009, 2, 14));
    EXPECT_EQ(view->rows(), 4);
    EXPECT_EQ(view->currentMonthField()->text(), "February 2009");
    EXPECT_EQ(view->dayCell(0)->date(), QDate(2009, 2, 1));
    EXPECT_TRUE(view->dayCell(34)->isVisible());
    for (int number = 35; number < 42; ++number)
        EXPECT_FALSE(view->dayCell(number)->isVisible());
    // Each row takes a quarter of what the header leaves.
    EXPECT_EQ(view->dayCell(7)->geometry(), QRect(0, 150, 101, 101));

    view->setFocusDate(midnight(2011, 1, 20));
    EXPECT_EQ(view->rows(), 6);
    for (int number = 0; number < 42; ++number)
        EXPECT_TRUE(view->dayCell(number)->isVisible());
    EXPECT_EQ(view->dayCell(0)->date(), QDate(2010, 12, 26));
    EXPECT_EQ(view->dayCell(41)->date(), QDate(2011, 2, 5));
}

TEST_F(CalendarView, NavigationButtons)
{
    view->setFocusDate(midnight(2008, 12, 31));
    EXPECT_EQ(view->currentMonthField()->text(), "December 2008");
    QTest::mouseClick(view->rightButton(), Qt::LeftButton);
    EXPECT_EQ(view->focusDate(), midnight(2009, 1, 31));
    QTest::mouseClick(view->rightButton(), Qt::LeftButton);
    EXPECT_EQ(view->focusDate(), midnight(2009, 2, 28));
    EXPECT_EQ(view->currentMonthField()->text(), "February 2009");
    QTest::mouseClick(view->leftButton(), Qt::LeftButton);
    QTest::mouseClick(view->leftButton(), Qt::LeftButton);
    EXPECT_EQ(view->currentMonthField()->text(), "December 2008");
    QTest::mouseClick(view->todayButton(), Qt::LeftButton);
    // Today comes with its time of day, and today's cell is still recognised.
    EXPECT_EQ(view->focusDate(), TestEnvironment::pinnedNow());
    EXPECT_NEAR(view->dayCellForDate(QDate(2026, 11, 22))->background().alphaF(), 0.9, 0.01);
    view->changeDateIncrementally("sideways");
    EXPECT_EQ(view->focusDate(), TestEnvironment::pinnedNow());

    view->setWeeklyView();
    EXPECT_EQ(view->rows(), 1);
    QTest::mouseClick(view->rightButton(), Qt::LeftButton);
    EXPECT_EQ(view->focusDate().date(), QDate(2026, 11, 29));
    EXPECT_EQ(view->dayCell(0)->date(), QDate(2026, 11, 29));
    EXPECT_EQ(view->rightButton()->accessibleName(), "Next week");
}

TEST_F(CalendarView, NavigationClearsTheSelection)
{
    view->addObject(essay, "Essay", midnight(2026, 11, 24));
    view->selectObject(essay, midnight(2026, 11, 24));
    ASSERT_EQ(view->selectedObject(), essay);
    const int before = delegate.selectionChanges;
    QTest::mouseClick(view->rightButton(), Qt::LeftButton);
    EXPECT_FALSE(view->selectedObject());
    EXPECT_FALSE(view->selectedTitle().has_value());
    EXPECT_EQ(delegate.selectionChanges, before + 1);
}

TEST_F(CalendarView, HiddenWeekendsShowMondayToFriday)
{
    view = shownView(QSize(500, 451));
    view->setHiddenWeekends(true);
    EXPECT_TRUE(view->hiddenWeekends());
    const int monday = 1;
    for (int day = monday; day <= 5; ++day) {
        EXPECT_EQ(view->dayCell(day)->geometry(), QRect((day - 1) * 100, 50, 101, 81));
        EXPECT_EQ(view->weekdayField(day)->x(), (day - 1) * 100);
    }
    // Sunday and Saturday are pushed out: only the shared border pixel of Sunday stays in view.
    EXPECT_LE(view->dayCell(0)->geometry().right(), 1);
    EXPECT_GE(view->dayCell(6)->x(), view->width());
    EXPECT_GE(view->weekdayField(6)->x(), view->width());
    view->setHiddenWeekends(false);
    EXPECT_EQ(view->dayCell(1)->geometry(), QRect(71, 50, 73, 81));
}

TEST_F(CalendarView, AddingAnEntryRereadsOnlyItsDay)
{
    BVCalendarDayCell *monday = view->dayCellForDate(QDate(2026, 11, 23));
    BVCalendarDayCell *tuesday = view->dayCellForDate(QDate(2026, 11, 24));
    QSignalSpy mondayResets(monday->model(), &QAbstractItemModel::modelReset);
    QSignalSpy tuesdayResets(tuesday->model(), &QAbstractItemModel::modelReset);
    view->addObject(essay, "Essay", QDateTime(QDate(2026, 11, 23), QTime(17, 0)));
    EXPECT_EQ(mondayResets.count(), 1);
    EXPECT_EQ(tuesdayResets.count(), 0);
    ASSERT_EQ(monday->model()->rowCount(), 2);
    EXPECT_EQ(monday->model()->index(0, 0).data().toString(), "23");
    EXPECT_EQ(monday->model()->index(1, 0).data().toString(), "Essay");
    EXPECT_EQ(monday->accessibleDescription(), "1 entries");
    // Row 0 is never selectable or draggable.
    EXPECT_FALSE(monday->model()->flags(monday->model()->index(0, 0)).testFlag(Qt::ItemIsSelectable));
    EXPECT_TRUE(monday->model()->flags(monday->model()->index(1, 0)).testFlag(Qt::ItemIsDragEnabled));

    view->removeAllObjects();
    EXPECT_EQ(monday->model()->rowCount(), 1);
}

TEST_F(CalendarView, ClickingAnEntrySelectsItAndMovesTheFocus)
{
    view->addObject(essay, "Essay", midnight(2026, 11, 24));
    view->addObject(lab, "Lab", midnight(2026, 11, 24));
    BVCalendarDayCell *tuesday = view->dayCellForDate(QDate(2026, 11, 24));

    click(tuesday, rowCentre(tuesday, 2));
    EXPECT_EQ(view->focusDate(), midnight(2026, 11, 24));
    EXPECT_EQ(view->selectedObject(), lab);
    EXPECT_EQ(view->selectedTitle().value_or("none").toStdString(), "Lab");
    EXPECT_EQ(view->selectedDate(), midnight(2026, 11, 24));
    EXPECT_EQ(tuesday->selectedRow(), 2);
    EXPECT_EQ(delegate.selectionChanges, 1);

    // The day number row selects nothing and clears the calendar's selection.
    click(tuesday, rowCentre(tuesday, 0));
    EXPECT_FALSE(view->selectedObject());
    EXPECT_EQ(tuesday->selectedRow(), -1);
    EXPECT_EQ(delegate.selectionChanges, 2);

    // A click in another day takes the selection from the first.
    click(tuesday, rowCentre(tuesday, 1));
    BVCalendarDayCell *friday = view->dayCellForDate(QDate(2026, 11, 27));
    click(friday, belowRows(friday));
    EXPECT_EQ(tuesday->selectedRow(), -1);
    EXPECT_FALSE(view->selectedObject());
    EXPECT_EQ(view->focusDate(), midnight(2026, 11, 27));
}

TEST_F(CalendarView, AnEntryOfTheNextMonthSwitchesTheMonth)
{
    view->addObject(essay, "Essay", midnight(2026, 12, 3));
    BVCalendarDayCell *grey = view->dayCellForDate(QDate(2026, 12, 3));
    ASSERT_NE(grey, nullptr);
    ASSERT_FALSE(grey->isDayEnabled());

    // Its empty part does nothing.
    click(grey, belowRows(grey));
    EXPECT_EQ(view->currentMonthField()->text(), "November 2026");
    EXPECT_FALSE(view->selectedObject());

    click(grey, rowCentre(grey, 1));
    EXPECT_EQ(view->currentMonthField()->text(), "December 2026");
    EXPECT_EQ(view->focusDate(), midnight(2026, 12, 3));
    EXPECT_EQ(view->selectedObject(), essay);
    BVCalendarDayCell *now = view->dayCellForDate(QDate(2026, 12, 3));
    EXPECT_TRUE(now->isDayEnabled());
    EXPECT_EQ(now->selectedRow(), 1);
}

TEST_F(CalendarView, SelectObjectPicksTheVeryRecordOnItsDay)
{
    const AssignmentRef twin = named("Essay");
    view->addObject(essay, "Essay", midnight(2027, 1, 12));
    view->addObject(twin, "Essay", midnight(2027, 1, 12));
    view->selectObject(twin, QDateTime(QDate(2027, 1, 12), QTime(15, 30)));
    EXPECT_EQ(view->currentMonthField()->text(), "January 2027");
    EXPECT_EQ(view->focusDate(), midnight(2027, 1, 12));
    EXPECT_EQ(view->selectedObject(), twin);
    EXPECT_EQ(view->dayCellForDate(QDate(2027, 1, 12))->selectedRow(), 2);

    // A record that is not on that day selects nothing, though the focus goes there.
    view->deselectAll();
    view->selectObject(named("Other"), midnight(2027, 1, 14));
    EXPECT_FALSE(view->selectedObject());
    EXPECT_EQ(view->focusDate(), midnight(2027, 1, 14));
}

TEST_F(CalendarView, DraggingAnEntryToAnotherDay)
{
    view->addObject(essay, "Essay", midnight(2026, 11, 24));
    view->addObject(lab, "Lab", midnight(2026, 11, 26));
    BVCalendarDayCell *tuesday = view->dayCellForDate(QDate(2026, 11, 24));
    BVCalendarDayCell *thursday = view->dayCellForDate(QDate(2026, 11, 26));
    BVCalendarDayCell *empty = view->dayCellForDate(QDate(2026, 11, 18));

    // Nothing selected: no drag.
    EXPECT_EQ(tuesday->dragDataForSelection(), nullptr);
    click(tuesday, rowCentre(tuesday, 1));
    std::unique_ptr<QMimeData> data(tuesday->dragDataForSelection());
    ASSERT_TRUE(data);
    EXPECT_EQ(data->formats(), QStringList{CalendarTexts::DragType});
    EXPECT_EQ(delegate.willMove, 1);

    // Onto the middle of a row, or above the day number: refused.
    EXPECT_FALSE(dragOnto(thursday, data.get(), rowCentre(thursday, 1), false));
    EXPECT_FALSE(dragOnto(thursday, data.get(), thursday->visualRect(thursday->model()->index(0, 0)).topLeft(),
                          false));
    // Between the day number and the first entry, or below the entries: accepted.
    const QRect first = thursday->visualRect(thursday->model()->index(1, 0));
    EXPECT_TRUE(dragOnto(thursday, data.get(), QPoint(first.center().x(), first.top()), false));
    // Data of another kind is not taken.
    QMimeData text;
    text.setText("Essay");
    EXPECT_FALSE(dragOnto(thursday, &text, belowRows(thursday), true));

    // A day with no entries takes the drop below its number.
    EXPECT_TRUE(dragOnto(empty, data.get(), belowRows(empty), true));
    EXPECT_EQ(view->data().count(QDate(2026, 11, 24)), 0);
    ASSERT_EQ(view->data().count(QDate(2026, 11, 18)), 1);
    EXPECT_EQ(view->selectedDate(), midnight(2026, 11, 18));
    EXPECT_EQ(view->selectedObject(), essay);
    EXPECT_EQ(empty->selectedRow(), 1);
    EXPECT_EQ(delegate.didMove, 1);

    // And on to Thursday, behind the entry already there.
    std::unique_ptr<QMimeData> again(empty->dragDataForSelection());
    ASSERT_TRUE(again);
    EXPECT_TRUE(dragOnto(thursday, again.get(), belowRows(thursday), true));
    ASSERT_EQ(view->data().count(QDate(2026, 11, 26)), 2);
    EXPECT_EQ(view->data().entries(QDate(2026, 11, 26))[1].object, essay);
    EXPECT_EQ(thursday->selectedRow(), 2);
    EXPECT_EQ(delegate.didMove, 2);
}

TEST_F(CalendarView, AMoveWhoseEntryIsGoneIsLoggedAndChangesNothing)
{
    view->addObject(essay, "Essay", midnight(2026, 11, 24));
    view->selectObject(essay, midnight(2026, 11, 24));
    // The entries were rebuilt with another title since the drag began.
    view->removeAllObjects();
    view->addObject(essay, "Essay, revised", midnight(2026, 11, 24));

    g_messages.clear();
    const QtMessageHandler previous = qInstallMessageHandler(collect);
    view->moveSelectedEventToDate(QDate(2026, 11, 25));
    qInstallMessageHandler(previous);
    EXPECT_TRUE(g_messages.contains(CalendarTexts::MoveError)) << g_messages.join('|').toStdString();
    EXPECT_EQ(view->data().count(QDate(2026, 11, 24)), 1);
    EXPECT_EQ(view->data().count(QDate(2026, 11, 25)), 0);
    EXPECT_EQ(delegate.didMove, 0);
}

TEST_F(CalendarView, DoubleClickReportsAfterMovingTheFocus)
{
    BVCalendarDayCell *friday = view->dayCellForDate(QDate(2026, 11, 27));
    QTest::mouseDClick(friday->viewport(), Qt::LeftButton, Qt::NoModifier, belowRows(friday));
    EXPECT_EQ(delegate.doubleClicks, 1);
    EXPECT_EQ(view->focusDate(), midnight(2026, 11, 27));
    // A grey day of another month takes no double click.
    BVCalendarDayCell *grey = view->dayCellForDate(QDate(2026, 12, 2));
    QTest::mouseDClick(grey->viewport(), Qt::LeftButton, Qt::NoModifier, belowRows(grey));
    EXPECT_EQ(delegate.doubleClicks, 1);
}

TEST_F(CalendarView, WeekViewClickOnAnotherMonthMovesThere)
{
    view->setWeeklyView();
    view->setFocusDate(midnight(2026, 12, 30));
    BVCalendarDayCell *newYear = view->dayCellForDate(QDate(2027, 1, 1));
    ASSERT_NE(newYear, nullptr);
    EXPECT_FALSE(newYear->isDayEnabled());
    EXPECT_EQ(newYear->background(), QColor(Qt::white));
    click(newYear, belowRows(newYear));
    EXPECT_EQ(view->focusDate(), midnight(2027, 1, 1));
    EXPECT_EQ(view->currentMonthField()->text(), "January 2027");
    EXPECT_TRUE(newYear->isDayEnabled());
    EXPECT_FALSE(view->dayCellForDate(QDate(2026, 12, 31))->isDayEnabled());
}

TEST_F(CalendarView, ArrowKeysMoveBetweenDaysAndReturnOpens)
{
    view->addObject(essay, "Essay", midnight(2026, 11, 23));
    view->addObject(lab, "Lab", midnight(2026, 11, 23));
    BVCalendarDayCell *sunday = view->dayCellForDate(QDate(2026, 11, 22));
    click(sunday, belowRows(sunday));

    QTest::keyClick(sunday, Qt::Key_Right);
    EXPECT_EQ(view->focusDate(), midnight(2026, 11, 23));
    BVCalendarDayCell *monday = view->dayCellForDate(QDate(2026, 11, 23));
    EXPECT_EQ(view->focusWidget(), monday);
    // Return with nothing selected opens nothing.
    QTest::keyClick(monday, Qt::Key_Return);
    EXPECT_EQ(delegate.opens, 0);
    // Down walks into the day's entries, then out to the next week.
    QTest::keyClick(monday, Qt::Key_Down);
    EXPECT_EQ(view->selectedObject(), essay);
    QTest::keyClick(monday, Qt::Key_Down);
    EXPECT_EQ(view->selectedObject(), lab);
    QTest::keyClick(monday, Qt::Key_Return);
    EXPECT_EQ(delegate.opens, 1);
    QTest::keyClick(monday, Qt::Key_Up);
    EXPECT_EQ(view->selectedObject(), essay);
    QTest::keyClick(monday, Qt::Key_Up);
    EXPECT_EQ(view->focusDate(), midnight(2026, 11, 16));
    EXPECT_FALSE(view->selectedObject());
    // Left across the month's start goes to October.
    view->setFocusDate(midnight(2026, 11, 1));
    QTest::keyClick(view->dayCellForDate(QDate(2026, 11, 1)), Qt::Key_Left);
    EXPECT_EQ(view->currentMonthField()->text(), "October 2026");
    QTest::keyClick(view.get(), Qt::Key_Down);
    EXPECT_EQ(view->focusDate(), midnight(2026, 11, 7));
}
