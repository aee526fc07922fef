#include "ListTestSupport.h"

#include "list/Sorting.h"

#include <QRandomGenerator>

#include <gtest/gtest.h>

using namespace ListTest;
using namespace AssignmentKeys;

namespace {

// The comparison written the slow way, straight on the records' maps: the reference the sort must
// agree with.
int referenceCompare(const Assignment &a, const Assignment &b, const QString &column)
{
    const auto one = [](const Assignment &r, const QString &key, bool byValue) -> std::optional<QVariant> {
        if (!r.has(key))
            return std::nullopt;
        if (byValue)
            return r.value(key);
        return QVariant(r.value(key).toString().toLower());
    };
    const auto cmp = [&](const QString &key, bool byValue) {
        const auto x = one(a, key, byValue), y = one(b, key, byValue);
        if (!x || !y)
            return int(bool(x)) - int(bool(y));
        if (x->typeId() == QMetaType::QString)
            return x->toString().compare(y->toString());
        return x->toDouble() < y->toDouble() ? -1 : (y->toDouble() < x->toDouble() ? 1 : 0);
    };
    if (int c = cmp(column, Sorting::comparesByValue(column)))
        return c;
    if (int c = cmp(Date, true))
        return c;
    return cmp(Name, false);
}

// `list` put in order by a stable sort on referenceCompare.
AssignmentList referenceSorted(AssignmentList list, const QString &column, bool ascending)
{
    std::stable_sort(list.begin(), list.end(), [&](const AssignmentRef &a, const AssignmentRef &b) {
        return (ascending ? 1 : -1) * referenceCompare(*a, *b, column) < 0;
    });
    return list;
}

} // namespace

TEST(Sorting, TiesBreakByDateThenNameInTheSameDirection)
{
    AssignmentList list = {record("b", {{Course, "math"}, {Date, stored(2026, 12, 1)}}),
                           record("A", {{Course, "Math"}, {Date, stored(2026, 12, 1)}}),
                           record("c", {{Course, "art"}, {Date, stored(2026, 12, 5)}}),
                           record("d", {{Course, "Math"}, {Date, stored(2026, 11, 30)}}),
                           record("e", {{Date, stored(2026, 11, 1)}})};
    Sorting::sort(list, {"Course", true});
    EXPECT_EQ(names(list), (QStringList{"e", "c", "d", "A", "b"}));
    Sorting::sort(list, {"Course", false});
    EXPECT_EQ(names(list), (QStringList{"b", "A", "d", "c", "e"}));
}

TEST(Sorting, NumbersCompareAsNumbersAndMissingValuesGoTogether)
{
    AssignmentList list = {record("ten", {{Priority, 10.0}}), record("two", {{Priority, 2.0}}),
                           record("none"), record("one", {{Priority, 1.0}}), record("none2")};
    Sorting::sort(list, {"Priority", true});
    EXPECT_EQ(names(list), (QStringList{"none", "none2", "one", "two", "ten"}));
    Sorting::sort(list, {"Priority", false});
    EXPECT_EQ(names(list), (QStringList{"ten", "two", "one", "none2", "none"}));
}

TEST(Sorting, AgreesWithAStableSortOnRawValuesIncludingAlmostSortedLists)
{
    QRandomGenerator random(7);
    const QStringList courses = {"Math", "math", "Art", "", "History"};
    AssignmentList list;
    for (int i = 0; i < 400; ++i) {
        QVariantMap fields;
        if (random.bounded(5))
            fields.insert(Course, courses[random.bounded(int(courses.size()))]);
        if (random.bounded(4))
            fields.insert(Date, stored(2026, 1 + random.bounded(12), 1 + random.bounded(28)));
        if (random.bounded(3))
            fields.insert(Completed, bool(random.bounded(2)));
        fields.insert(Priority, double(random.bounded(5)));
        list.append(record(QString::number(random.bounded(50)), fields));
    }
    for (const QString column : {"Course", "Date", "Completed", "Priority", "Name"}) {
        for (bool ascending : {true, false}) {
            const AssignmentList expected = referenceSorted(list, column, ascending);
            AssignmentList sorted = list;
            Sorting::sort(sorted, {column, ascending});
            EXPECT_EQ(sorted, expected) << column.toStdString() << ascending;
            EXPECT_TRUE(Sorting::isSorted(sorted, {column, ascending}));

            // A sorted list with a few records appended is merged, with the same result.
            AssignmentList grown = expected;
            grown.append(list.mid(0, 3));
            const AssignmentList expectedGrown = referenceSorted(grown, column, ascending);
            Sorting::sort(grown, {column, ascending});
            EXPECT_EQ(grown, expectedGrown) << column.toStdString() << ascending;
        }
    }
}

TEST(Sorting, ACachedKeyFollowsAChangedRecord)
{
    AssignmentList list = {record("b"), record("a")};
    Sorting::sort(list, {"Name", true});
    EXPECT_EQ(names(list), (QStringList{"a", "b"}));
    list[0]->set(Name, "z");
    Sorting::sort(list, {"Name", true});
    EXPECT_EQ(names(list), (QStringList{"b", "z"}));
}

// Sorting through a kept cache of keys, between edits in place, additions, removals and other
// orders, always gives what a stable sort of the list as it stands gives.
TEST(Sorting, KeptKeysFollowEveryChangeOfTheList)
{
    QRandomGenerator random(23);
    const QStringList texts = {"Math", "math", "Art", "", "ärt", "History"};
    const auto randomRecord = [&] {
        QVariantMap fields;
        if (random.bounded(5))
            fields.insert(Course, texts[random.bounded(int(texts.size()))]);
        if (random.bounded(4))
            fields.insert(Date, stored(2026, 1 + random.bounded(3), 1 + random.bounded(5)));
        if (random.bounded(3))
            fields.insert(Priority, double(random.bounded(4)));
        return record(texts[random.bounded(int(texts.size()))] + QString::number(random.bounded(3)), fields);
    };
    AssignmentList list;
    for (int i = 0; i < 120; ++i)
        list.append(randomRecord());
    const QStringList columns = {"Course", "Date", "Priority", "Name", "Type"};
    Sorting::KeyCache cache;
    for (int step = 0; step < 300; ++step) {
        switch (random.bounded(6)) {
        case 0:
            list[random.bounded(int(list.size()))]->set(Course, texts[random.bounded(int(texts.size()))]);
            break;
        case 1:
            list[random.bounded(int(list.size()))]->set(Date, stored(2026, 2, 1 + random.bounded(28)));
            break;
        case 2:
            list.append(randomRecord());
            break;
        case 3:
            list.removeAt(random.bounded(int(list.size())));
            break;
        case 4:
            std::shuffle(list.begin(), list.end(), random);
            break;
        default:
            break;
        }
        const QString column = columns[random.bounded(int(columns.size()))];
        const bool ascending = random.bounded(2);
        const AssignmentList expected = referenceSorted(list, column, ascending);
        Sorting::sort(list, {column, ascending}, &cache);
        ASSERT_EQ(list, expected) << step << " " << column.toStdString() << ascending;
    }
}
