#include "calendar/CalendarData.h"

#include <gtest/gtest.h>

namespace {
const QDate kMonday(2026, 11, 23);
const QDate kTuesday(2026, 11, 24);

AssignmentRef named(const QString &name)
{
    return Assignments::make({{AssignmentKeys::Name, name}});
}
} // namespace

// Selecting by clicking, and that nothing moves without a selection, show through the view in
// CalendarViewTest.
TEST(CalendarGridDataTest, EntriesKeepTheirOrderAndMomentsOfOneDayShareAKey)
{
    CalendarData data;
    const AssignmentRef essay = named("Essay");
    const AssignmentRef lab = named("Lab");
    data.add(essay, "Essay", QDateTime(kMonday, QTime(23, 59)));
    data.add(lab, "Lab", QDateTime(kMonday, QTime(0, 0)));
    data.add(nullptr, QString(), kTuesday);
    ASSERT_EQ(data.count(kMonday), 2);
    EXPECT_EQ(data.entries(kMonday)[0].object, essay);
    EXPECT_EQ(data.entries(kMonday)[1].object, lab);
    EXPECT_EQ(data.entries(kTuesday)[0].title, QString());
    EXPECT_EQ(data.count(QDate(2026, 11, 25)), 0);
    data.removeAll();
    EXPECT_TRUE(data.dataDictionary().isEmpty());
}

TEST(CalendarGridDataTest, TheLastEntryOfTheVeryRecordIsFound)
{
    CalendarData data;
    const AssignmentRef essay = named("Essay");
    const AssignmentRef twin = named("Essay"); // equal fields, another record
    data.add(essay, "Essay", kMonday);
    data.add(twin, "Essay", kMonday);
    data.add(essay, "Essay again", kMonday);
    EXPECT_EQ(data.lastIndexOfObject(kMonday, essay), 2);
    EXPECT_EQ(data.lastIndexOfObject(kMonday, twin), 1);
    EXPECT_EQ(data.lastIndexOfObject(kTuesday, essay), -1);
    EXPECT_EQ(data.lastIndexOfObject(kMonday, named("Other")), -1);
}

TEST(CalendarGridDataTest, AMoveTakesTheFirstMatchingEntryToTheEndOfTheNewDay)
{
    CalendarData data;
    const AssignmentRef essay = named("Essay");
    const AssignmentRef other = named("Essay");
    const AssignmentRef waiting = named("Quiz");
    data.add(essay, "Essay", kMonday);
    data.add(other, "Essay", kMonday);
    data.add(essay, "Essay", kMonday);
    data.add(waiting, "Quiz", kTuesday);

    // The selection is the third row; the move still takes the first entry with that title and
    // that very record.
    ASSERT_TRUE(data.setSelectedEventToDate(kMonday, 3));
    const std::optional<int> row = data.moveSelectedEventToDate(kTuesday);
    ASSERT_TRUE(row.has_value());
    EXPECT_EQ(*row, 2);
    ASSERT_EQ(data.count(kMonday), 2);
    EXPECT_EQ(data.entries(kMonday)[0].object, other);
    EXPECT_EQ(data.entries(kMonday)[1].object, essay);
    ASSERT_EQ(data.count(kTuesday), 2);
    EXPECT_EQ(data.entries(kTuesday)[1].object, essay);
    EXPECT_EQ(data.entries(kTuesday)[1].date, kTuesday);
    EXPECT_EQ(*data.selectedDate(), kTuesday);
    EXPECT_EQ(data.selectedObject(), essay);

    // Onto its own day: it goes to the end.
    ASSERT_TRUE(data.setSelectedEventToDate(kTuesday, 1));
    EXPECT_EQ(data.moveSelectedEventToDate(kTuesday), 2);
    EXPECT_EQ(data.entries(kTuesday)[0].object, essay);
    EXPECT_EQ(data.entries(kTuesday)[1].object, waiting);
}
