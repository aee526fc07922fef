#include "calendar/CalendarGrid.h"
#include "calendar/CalendarLayout.h"
#include "TestEnvironment.h"

#include <gtest/gtest.h>

using CalendarGrid::Mode;

namespace {
QDate day(int year, int month, int dayOfMonth)
{
    return QDate(year, month, dayOfMonth);
}
} // namespace

// Row counts, first and last days and navigation show through the view in CalendarViewTest; here
// what the view does not show.
TEST(CalendarGridTest, SlotsOfAFourRowMonthIncludeTheWeekBelowTheGrid)
{
    const QList<CalendarGrid::Slot> slots = CalendarGrid::slots(day(2009, 2, 10), Mode::Monthly);
    // Four rows of seven, then one more week laid below the grid; cells 35 to 41 stay unused.
    ASSERT_EQ(slots.size(), 35);
    for (int i = 0; i < slots.size(); ++i) {
        EXPECT_EQ(slots[i].cell, i);
        EXPECT_EQ(slots[i].column, i % 7);
        EXPECT_EQ(slots[i].date, day(2009, 2, 1).addDays(i));
    }
    EXPECT_EQ(slots[0].row, 3);
    EXPECT_EQ(slots[27].row, 0);
    EXPECT_EQ(slots[28].row, -1);
    EXPECT_EQ(slots[28].date, day(2009, 3, 1));
    EXPECT_TRUE(slots[27].enabled);
    EXPECT_FALSE(slots[28].enabled);
}

TEST(CalendarGridTest, WeekCrossingTheYearEndDisablesTheOtherMonth)
{
    const QList<CalendarGrid::Slot> slots = CalendarGrid::slots(day(2026, 12, 30), Mode::Weekly);
    ASSERT_EQ(slots.size(), 14);
    EXPECT_EQ(slots[0].date, day(2026, 12, 27));
    EXPECT_EQ(slots[0].row, 0);
    EXPECT_TRUE(slots[4].enabled);  // Thursday 31 December
    EXPECT_FALSE(slots[5].enabled); // Friday 1 January
    EXPECT_EQ(slots[5].date, day(2027, 1, 1));
    EXPECT_EQ(slots[7].row, -1);
    EXPECT_EQ(slots[7].date, day(2027, 1, 3));
}

TEST(CalendarGridTest, CellColoursTheMonthRuleFirst)
{
    const QDate focus = day(2026, 11, 10);
    const QDate today = day(2026, 11, 22);
    // The tints themselves show in the view test; here the order of the rules.
    const QColor grey = CalendarGrid::cellColor(day(2026, 12, 1), focus, today, Mode::Monthly);
    const QColor focusColour = CalendarGrid::cellColor(focus, focus, today, Mode::Monthly);
    EXPECT_NE(focusColour, QColor(Qt::white));
    EXPECT_NE(focusColour, grey);
    EXPECT_EQ(CalendarGrid::cellColor(day(2026, 11, 11), focus, today, Mode::Monthly), QColor(Qt::white));
    // Today in another month stays grey in the month view: the month rule comes first.
    EXPECT_EQ(CalendarGrid::cellColor(today, day(2026, 12, 5), today, Mode::Monthly), grey);
}

TEST(CalendarGridTest, DateKeysFollowTheLocalDay)
{
    const QDateTime morning(day(2026, 11, 22), QTime(0, 0, 1));
    const QDateTime evening(day(2026, 11, 22), QTime(23, 59, 59));
    EXPECT_EQ(CalendarGrid::dateKey(morning), CalendarGrid::dateKey(evening));
    // 03:00 UTC on the 23rd is still the 22nd in New York.
    const QDateTime utc(day(2026, 11, 23), QTime(3, 0), Qt::UTC);
    EXPECT_EQ(CalendarGrid::dateKey(utc), day(2026, 11, 22));
    EXPECT_EQ(CalendarGrid::dateWithoutTime(evening), QDateTime(day(2026, 11, 22), QTime(0, 0)));
}

TEST(CalendarGridTest, LayoutOfAFiveRowMonth)
{
    const QList<CalendarGrid::Slot> slots = CalendarGrid::slots(day(2026, 11, 22), Mode::Monthly);
    const CalendarLayout layout = CalendarLayout::compute(QSizeF(700, 451), 5, false, slots);
    EXPECT_DOUBLE_EQ(layout.columnWidth, 100);
    EXPECT_DOUBLE_EQ(layout.rowHeight, 80);
    EXPECT_EQ(layout.previousButton, QRectF(596, 5, 20, 20));
    EXPECT_EQ(layout.nextButton, QRectF(619, 5, 20, 20));
    EXPECT_EQ(layout.todayButton, QRectF(647, 5, 50, 20));
    EXPECT_DOUBLE_EQ(layout.lineY, 30);
    EXPECT_EQ(layout.weekdays[0], QRectF(0, 31, 101, 20));
    EXPECT_EQ(layout.weekdays[6], QRectF(600, 31, 101, 20));
    ASSERT_EQ(layout.cells.size(), 42);
    // The bottom row ends at the view's bottom edge.
    EXPECT_EQ(layout.cells[34], QRectF(600, 370, 101, 81));
    // The extra week starts one pixel above the bottom edge.
    EXPECT_EQ(layout.cells[35], QRectF(0, 450, 101, 81));
}

TEST(CalendarGridTest, LayoutWithHiddenWeekends)
{
    // Monday to Friday fill the view (the view test shows it at an even width). At a width that does
    // not divide by five the shift is a whole number, the columns are not.
    const QList<CalendarGrid::Slot> slots = CalendarGrid::slots(day(2009, 2, 1), Mode::Monthly);
    const CalendarLayout layout = CalendarLayout::compute(QSizeF(503, 251), 4, true, slots);
    EXPECT_DOUBLE_EQ(layout.leftShift, 100);
    EXPECT_NEAR(layout.cells[1].left(), 0.6, 1e-9);
    // Friday's right border overlaps the view's edge as every cell overlaps its neighbour.
    EXPECT_NEAR(layout.cells[5].right(), 504.6, 1e-9);
}

TEST(CalendarGridTest, WeeklyLayoutUsesTheWholeGridHeight)
{
    const QList<CalendarGrid::Slot> slots = CalendarGrid::slots(day(2026, 11, 22), Mode::Weekly);
    const CalendarLayout layout = CalendarLayout::compute(QSizeF(700, 451), 1, false, slots);
    EXPECT_DOUBLE_EQ(layout.rowHeight, 400);
    EXPECT_EQ(layout.cells[0], QRectF(0, 50, 101, 401));
    EXPECT_EQ(layout.cells[7], QRectF(0, 450, 101, 401));
}
