#include "list/FilterBarModel.h"

#include <gtest/gtest.h>

namespace {

// Every button is 30 points wide, so positions are easy to follow: a button at x takes x .. x+30
// and the next one starts at x + 32.
FilterBarModel::Metrics fixedMetrics()
{
    FilterBarModel::Metrics metrics;
    metrics.buttonWidth = [](const QString &) { return 30; };
    metrics.dividerWidth = 2;
    metrics.overflowButtonWidth = 16;
    return metrics;
}

struct Bar {
    FilterBarModel model;
    int actions = 0;
    explicit Bar(int width)
    {
        model.setMetrics(fixedMetrics());
        model.setSize(width, 24);
    }
    void add(const QStringList &titles)
    {
        model.addItemsWithTitles(titles, [this] { ++actions; });
    }
};

const QStringList ViewAndCourses = {"All", "Incomplete", "Complete", "DIVIDER", "All"};

} // namespace

TEST(FilterBarModel, DividerSplitsSegmentsAndFirstItemsAreOn)
{
    Bar bar(1000);
    bar.add(ViewAndCourses);
    bar.add({"Math", "History"});
    ASSERT_EQ(bar.model.segments().size(), 2);
    EXPECT_EQ(bar.model.segments()[0].size(), 4); // three buttons and the divider that closed it
    EXPECT_EQ(bar.model.segments()[1].size(), 3);
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(0), "All");
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(1), "All");
    EXPECT_EQ(bar.actions, 0);
    // Positions advance by width + 2, with 3 + divider + 2 + 3 around the divider.
    EXPECT_EQ(bar.model.segments()[0][0].x, 7);
    EXPECT_EQ(bar.model.segments()[0][1].x, 39);
    EXPECT_EQ(bar.model.segments()[0][3].x, 106);
    EXPECT_EQ(bar.model.segments()[1][0].x, 113);
    EXPECT_FALSE(bar.model.hasOverflowMenu());
}

TEST(FilterBarModel, SelectionByTitleAndIndexSendsTheAction)
{
    Bar bar(1000);
    bar.add(ViewAndCourses);
    bar.add({"Math", "History"});
    bar.model.selectTitleInSegment("History", 1);
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(1), "History");
    EXPECT_EQ(bar.model.getSelectedIndexInSegment(1), 2);
    EXPECT_EQ(bar.actions, 1);
    bar.model.selectIndexInSegment(1, 0);
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(0), "Incomplete");
    EXPECT_EQ(bar.actions, 2);

    // Nothing happens for unknown titles, missing segments, -1 or a position past the end.
    bar.model.selectTitleInSegment("math", 1);
    bar.model.selectTitleInSegment("Math", 5);
    bar.model.selectIndexInSegment(-1, 0);
    bar.model.selectIndexInSegment(9, 0);
    EXPECT_EQ(bar.actions, 2);
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(1), "History");
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(7), "");
    EXPECT_EQ(bar.model.getSelectedIndexInSegment(7), -1);
}

TEST(FilterBarModel, OnlyTheFirstCallIsRememberedForTheAction)
{
    FilterBarModel model;
    model.setSize(1000, 24);
    int first = 0, second = 0;
    model.addItemsWithTitles(ViewAndCourses, [&] { ++first; });
    model.addItemsWithTitles({"Math"}, [&] { ++second; });
    model.selectTitleInSegment("Math", 1);
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 0);
    model.removeAllItems();
    EXPECT_EQ(model.segments().size(), 1);
    EXPECT_EQ(model.nextButtonX(), FilterBarModel::FirstButtonX);
    EXPECT_EQ(model.getSelectedIndexInSegment(0), -1);
}

TEST(FilterBarModel, OnceOneTitleOverflowsEveryLaterOneDoes)
{
    // Room for buttons while bar width - 16 > the next x: 7+32=39, 71, 103 fit a 130 bar (114).
    Bar bar(130);
    FilterBarModel::Metrics metrics = fixedMetrics();
    metrics.buttonWidth = [](const QString &title) { return title == "Long" ? 60 : 30; };
    bar.model.setMetrics(metrics);
    bar.add({"A", "B", "Long", "C"});
    const auto &items = bar.model.segments()[0];
    EXPECT_EQ(items[0].kind, FilterBarModel::Kind::Button);
    EXPECT_EQ(items[1].kind, FilterBarModel::Kind::Button);
    EXPECT_EQ(items[2].kind, FilterBarModel::Kind::MenuItem);
    // "C" alone would fit where "Long" failed, but the position has moved past the edge.
    EXPECT_EQ(items[3].kind, FilterBarModel::Kind::MenuItem);
    EXPECT_TRUE(bar.model.hasOverflowMenu());
    EXPECT_EQ(bar.model.overflowButtonX(), 130 - 16);
    EXPECT_EQ(bar.model.overflowMenuTitles(), (QStringList{"Long", "C"}));
}

TEST(FilterBarModel, NarrowBarPutsEverythingInTheMenuAndSelectionStillWorks)
{
    Bar bar(20);
    bar.add(ViewAndCourses);
    bar.add({"Math"});
    EXPECT_EQ(bar.model.overflowMenuTitles(),
              (QStringList{"All", "Incomplete", "Complete", "DIVIDER", "All", "Math"}));
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(0), "All");
    bar.model.selectTitleInSegment("Math", 1);
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(1), "Math");
    EXPECT_EQ(bar.actions, 1);
}

TEST(FilterBarModel, ResizeKeepsTitlesOfTheFirstCallWithoutSendingTheAction)
{
    Bar bar(1000);
    bar.add(ViewAndCourses);
    bar.add({"Math", "History"});
    bar.model.selectTitleInSegment("Complete", 0);
    bar.model.selectTitleInSegment("History", 1);
    const int actions = bar.actions;

    bar.model.setSize(900, 24);
    EXPECT_EQ(bar.actions, actions);
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(0), "Complete");
    // Only the first call is replayed: the courses are gone and nothing named History is left.
    ASSERT_EQ(bar.model.segments()[1].size(), 1);
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(1), "");
}

TEST(FilterBarModel, ResizeMatchesSelectionsByPositionInOneFlatList)
{
    Bar bar(1000);
    // Segment 0 holds only a divider, so nothing in it is on: the flat list of selected titles
    // shifts by one and every later segment is matched against its neighbour's title.
    bar.add({"DIVIDER", "A", "DIVIDER", "B", "C"});
    bar.model.selectTitleInSegment("C", 2);
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(1), "A");

    bar.model.setSize(800, 24);
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(0), "");
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(1), ""); // looked for "C"
    EXPECT_EQ(bar.model.getSelectedTitleInSegment(2), ""); // the list ran out
}
