#include "ListTestSupport.h"

#include "list/CellPresentation.h"
#include "list/ColumnCatalogue.h"
#include "list/ColumnLayout.h"
#include "platform/ColorString.h"
#include "store/ColumnKeys.h"

#include <gtest/gtest.h>

using namespace ListTest;
using namespace AssignmentKeys;

namespace {

const QColor PastDueColor(204, 0, 0);
const QColor TodayColor(204, 102, 0);
const QColor TomorrowColor(204, 153, 0);
const QColor OthersColor(10, 20, 30);
const QColor CompletedColor(0, 153, 0);

PresentationSettings settingsWithColors(qint64 scheme, bool twoDays = false)
{
    PresentationSettings settings;
    settings.dateFormat = PreferenceKeys::DateFormatNumeric;
    settings.colorFormat = scheme;
    settings.today = QDate(2026, 11, 22);
    settings.colors = {{"All Others", OthersColor}, {"Past Due", PastDueColor}, {"Due Today", TodayColor},
                       {"Due Tomorrow", TomorrowColor}, {"Completed", CompletedColor},
                       {"Math", QColor(1, 2, 3)}, {"Essay", QColor(4, 5, 6)}, {"2", QColor(7, 8, 9)}};
    if (twoDays)
        settings.colors.insert("Due in Two Days", QColor(9, 9, 9));
    return settings;
}

std::optional<QColor> colorOf(const AssignmentRef &r, const PresentationSettings &s, const QString &column = "Name",
                              bool selected = false)
{
    return CellPresentation::textColor(*r, column, selected, s);
}

} // namespace

TEST(CellPresentation, DueDateSchemeAndItsMissingEntries)
{
    PresentationSettings s = settingsWithColors(0);
    EXPECT_EQ(colorOf(record("y", {{Date, stored(2026, 11, 21)}}), s), PastDueColor);
    EXPECT_EQ(colorOf(record("t", {{Date, stored(2026, 11, 22, 18)}}), s), TodayColor);
    EXPECT_EQ(colorOf(record("m", {{Date, stored(2026, 11, 23)}}), s), TomorrowColor);
    EXPECT_EQ(colorOf(record("2", {{Date, stored(2026, 11, 24)}}), s), OthersColor);
    EXPECT_EQ(colorOf(record("none", {}), s), OthersColor);
    // The date column is coloured too under this scheme.
    EXPECT_EQ(colorOf(record("t", {{Date, stored(2026, 11, 22)}}), s, "Date"), TodayColor);

    s = settingsWithColors(0, true);
    EXPECT_EQ(colorOf(record("2", {{Date, stored(2026, 11, 24)}}), s), QColor(9, 9, 9));

    // A missing "Due Today" entry gives the default colour, not "All Others".
    s.colors.remove("Due Today");
    EXPECT_EQ(colorOf(record("t", {{Date, stored(2026, 11, 22)}}), s), std::nullopt);
}

TEST(CellPresentation, CompletedThenSelectedOverrideEverything)
{
    PresentationSettings s = settingsWithColors(0);
    AssignmentRef done = record("d", {{Date, stored(2026, 11, 22)}, {Completed, true}});
    EXPECT_EQ(colorOf(done, s), CompletedColor);
    EXPECT_EQ(colorOf(done, s, "Name", true), QColor(Qt::white));
}

TEST(CellPresentation, CourseTypeAndPrioritySchemesLeaveTheDateColumnAlone)
{
    PresentationSettings s = settingsWithColors(1);
    AssignmentRef math = record("a", {{Course, "Math"}, {Type, "Essay"}, {Priority, 2.0}});
    EXPECT_EQ(colorOf(math, s), QColor(1, 2, 3));
    EXPECT_EQ(colorOf(math, s, "Date"), OthersColor);
    EXPECT_EQ(colorOf(record("b", {{Course, "Art"}}), s), OthersColor);
    s.colorFormat = 2;
    EXPECT_EQ(colorOf(math, s), QColor(4, 5, 6));
    s.colorFormat = 3;
    EXPECT_EQ(colorOf(math, s), QColor(7, 8, 9));
    s.colorFormat = 7;
    EXPECT_EQ(colorOf(math, s), OthersColor);
}

TEST(CellPresentation, DaysLeftCountsWholeDaysFromMidnight)
{
    const QDate today(2026, 11, 22);
    const auto at = [](int d, int h) { return QDateTime(QDate(2026, 11, d), QTime(h, 0)); };
    EXPECT_EQ(CellPresentation::daysLeft(at(22, 15), today), 0);
    EXPECT_EQ(CellPresentation::daysLeft(at(25, 0), today), 3);
    EXPECT_EQ(CellPresentation::daysLeft(at(25, 23), today), 3);
    EXPECT_EQ(CellPresentation::daysLeft(at(20, 0), today), -2);
    // Yesterday at noon is half a day back: no whole day.
    EXPECT_EQ(CellPresentation::daysLeft(at(21, 12), today), 0);
    EXPECT_EQ(CellPresentation::daysLeft(at(20, 12), today), -1);
    // Across the end of daylight saving time (1 November 2026) days are calendar days.
    EXPECT_EQ(CellPresentation::daysLeft(QDateTime(QDate(2026, 10, 31), QTime(0, 0)), today), -22);
}


TEST(CellPresentation, DuplicateDatesAreBlankUnlessShown)
{
    PresentationSettings s = settingsWithColors(0);
    AssignmentRef a = record("a", {{Date, stored(2026, 11, 25, 9)}});
    AssignmentRef b = record("b", {{Date, stored(2026, 11, 25, 17)}});
    AssignmentRef none = record("c");
    EXPECT_EQ(CellPresentation::dateCellText(*a, nullptr, s).toString(), "11/25/26");
    EXPECT_EQ(CellPresentation::dateCellText(*b, a.get(), s).toString(), "");
    EXPECT_EQ(CellPresentation::daysLeftCellText(*b, a.get(), s).toString(), "");
    EXPECT_FALSE(CellPresentation::dateCellText(*none, b.get(), s).isValid());
    s.displayDuplicateDates = true;
    EXPECT_EQ(CellPresentation::dateCellText(*b, a.get(), s).toString(), "11/25/26");
    EXPECT_EQ(CellPresentation::daysLeftCellText(*b, a.get(), s).toString(), "3");
}

TEST(ColumnLayout, SkipsUnknownAndRepeatedEntriesAndTruncatesWidths)
{
    const QVariantList stored = {
        QVariantMap{{"Identifier", "Name"}, {"Width", 150}},
        QVariantMap{{"Identifier", "Bogus"}, {"Width", 80}},
        QVariantMap{{"Identifier", "Course"}, {"Width", 87.6}},
        QVariantMap{{"Identifier", "Name"}, {"Width", 90}},
        QVariantMap{{"Identifier", "Priority"}, {"Width", 300}},
    };
    const std::optional<ColumnLayout> layout = ColumnLayout::fromPreferences(stored);
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->entries(),
              (QList<ColumnLayout::Entry>{{"Name", 150}, {"Course", 87}, {"Priority", 40}}));
    EXPECT_FALSE(ColumnLayout::fromPreferences(QVariant()));

    ColumnLayout resized = *layout;
    resized.setWidth(0, 87.6);
    resized.save();
    const QVariantList saved = UserDefaults().array(PreferenceKeys::UserColumnsOrdering);
    ASSERT_EQ(saved.size(), 3);
    EXPECT_EQ(saved[0].toMap().value("Width").typeId(), QMetaType::LongLong);
    EXPECT_EQ(saved[0].toMap().value("Width").toLongLong(), 87);
    EXPECT_EQ(saved[2].toMap().value("Identifier").toString(), "Priority");
}

// The preferences list the columns by identifier; the table draws them from its catalogue. A column
// one of them lacks could be chosen in the Main Window pane but never drawn, or drawn but never chosen.
TEST(ColumnCatalogue, DrawsEveryStoredColumnInTheStoredOrder)
{
    QStringList drawn;
    for (const ColumnCatalogue::Column &column : ColumnCatalogue::all())
        drawn.append(column.identifier);
    EXPECT_EQ(drawn, ColumnKeys::all());
}
