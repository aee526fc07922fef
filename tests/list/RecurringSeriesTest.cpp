#include "ListTestSupport.h"


#include <gtest/gtest.h>

using namespace ListTest;

namespace {

using Series = RecurringSeries;

QDateTime day(int y, int m, int d)
{
    return QDateTime(QDate(y, m, d), QTime(0, 0));
}

std::array<bool, 7> weekdays(std::initializer_list<int> on)
{
    std::array<bool, 7> days{};
    for (int d : on)
        days[d] = true;
    return days;
}

Series::DayGrid grid(std::initializer_list<int> days)
{
    Series::DayGrid g{};
    for (int d : days)
        if (d % 7 != 0)
            g[d / 7][d % 7 - 1] = true;
    return g;
}

QStringList texts(const QList<QDateTime> &dates)
{
    QStringList out;
    for (const QDateTime &d : dates)
        out.append(d.date().toString(Qt::ISODate));
    return out;
}

} // namespace

TEST(RecurringSeries, WeeklyRulesWithTheSundayJump)
{
    // 2026-11-23 is a Monday.
    EXPECT_EQ(texts(Series::weeklyEndAfter(day(2026, 11, 23), weekdays({1, 3}), 1, 3)),
              (QStringList{"2026-11-23", "2026-11-25", "2026-11-30"}));
    // Interval 2, Tuesday, from a Wednesday: the Tuesday of the week after next.
    EXPECT_EQ(texts(Series::weeklyEndAfter(day(2026, 11, 25), weekdays({2}), 2, 1)), QStringList{"2026-12-08"});
    // Starting on a Sunday with interval 2 skips the first week.
    EXPECT_EQ(texts(Series::weeklyEndAfter(day(2026, 11, 22), weekdays({0}), 2, 1)), QStringList{"2026-11-29"});
    // The ending date, a checked weekday, is not generated.
    EXPECT_EQ(texts(Series::weeklyEndOnDate(day(2026, 11, 23), weekdays({1}), 1, day(2026, 12, 7))),
              (QStringList{"2026-11-23", "2026-11-30"}));
    // An interval that never moves on stops instead of looping.
    EXPECT_LE(Series::weeklyEndOnDate(day(2026, 11, 23), weekdays({1}), 0, day(2027, 1, 1)).size(), 14);
}

TEST(RecurringSeries, MonthlyRulesAndTheUnreachableDays)
{
    EXPECT_EQ(texts(Series::monthlyEndAfter(day(2026, 11, 16), grid({15}), 2)),
              (QStringList{"2026-12-15", "2027-01-15"}));
    // Day 14 has no box, so only the 15th ever occurs.
    Series::DayGrid fourteen = grid({15});
    EXPECT_FALSE(Series::isDayChecked(fourteen, 14));
    EXPECT_EQ(texts(Series::monthlyEndAfter(day(2026, 11, 1), grid({15}), 1)), QStringList{"2026-11-15"});
    // Only the seventh column's boxes: no day ever matches, the search gives up.
    Series::DayGrid lastColumn{};
    lastColumn[0][6] = true;
    EXPECT_TRUE(Series::monthlyEndAfter(day(2026, 11, 1), lastColumn, 3).isEmpty());
    EXPECT_EQ(texts(Series::monthlyEndOnDate(day(2026, 11, 1), grid({2, 3, 30}), day(2026, 12, 4))),
              (QStringList{"2026-11-02", "2026-11-03", "2026-11-30", "2026-12-02"}));
    EXPECT_TRUE(Series::monthlyEndOnDate(day(2026, 11, 3), grid({3}), day(2026, 11, 3)).isEmpty());
}

TEST(RecurringSeries, ValidationMessagesInOrder)
{
    Series::Entries e;
    const auto message = [&] { return Series::checkForValidEntry(e).value_or("valid"); };
    EXPECT_EQ(message(), "Please enter a beginning date.");
    e.startingDate = "the day after";
    EXPECT_EQ(message(), "Please enter a valid beginning date.");
    e.startingDate = "11/23/2026";
    EXPECT_EQ(message(), "Please select at least one day of the week.");
    e.weekdays = weekdays({1});
    EXPECT_EQ(message(), "Please enter a week interval.");
    e.weekInterval = "1";
    EXPECT_EQ(message(), "Please enter a number of occurances.");
    e.repeat = Series::Repeat::Monthly;
    EXPECT_EQ(message(), "Please select at least one day of the month.");
    e.dayGrid = grid({5});
    e.end = Series::End::OnDate;
    EXPECT_EQ(message(), "Please enter an ending date.");
    e.endingDate = "never";
    EXPECT_EQ(message(), "Please enter a valid ending date.");
    e.endingDate = "11/22/2026";
    EXPECT_EQ(message(), "Please enter an ending date that is after the starting date.");
    e.endingDate = "11/23/2026";
    EXPECT_EQ(message(), "valid");
    EXPECT_TRUE(Series::generate(e).isEmpty());
}

TEST(RecurringSeries, AppendsNumberedRecordsToTheFileOnDisk)
{
    writeStore({record("kept")});
    Series::Entries e;
    e.name = "Problem set %@";
    e.course = "Math";
    e.notes = "odd problems";
    e.startingDate = "11/23/2026";
    e.weekdays = weekdays({1});
    e.weekInterval = "1";
    e.occurrences = "3";
    ASSERT_TRUE(Series::addMultipleAssignments(e));
    const QVariantList stored = readStore();
    ASSERT_EQ(stored.size(), 4);
    EXPECT_EQ(stored[0].toMap().value("Name").toString(), "kept");
    const QVariantMap third = stored[3].toMap();
    EXPECT_EQ(third.value("Name").toString(), "Problem set 3");
    EXPECT_EQ(third.value("Date").toString(), ListTest::stored(2026, 12, 7));
    EXPECT_EQ(third.value("Course").toString(), "Math");
    EXPECT_FALSE(third.contains("Priority"));
    EXPECT_FALSE(third.contains("Textbook"));
    EXPECT_EQ(third.value("Date Created").typeId(), QMetaType::Double);
}
