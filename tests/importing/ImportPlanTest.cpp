#include "TestEnvironment.h"

#include "importing/CalendarFeedParser.h"
#include "importing/CourseTag.h"
#include "exchange/ICalExport.h"
#include "importing/ImportPlan.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "store/AssignmentStore.h"

#include <gtest/gtest.h>

using namespace AssignmentKeys;
using Action = ImportPlan::Action;

namespace {

FeedContents feed(const QString &name)
{
    QString error;
    auto contents = CalendarFeedParser::parse(
        TestEnvironment::readFile(TestEnvironment::fixture(QStringLiteral("importing/") + name)), &error);
    EXPECT_TRUE(contents) << qPrintable(error);
    return contents.value_or(FeedContents());
}

const QStringList Courses = {QStringLiteral("eng 101"), QStringLiteral("History 210")};

ImportPlan plan(const QString &name, const AssignmentList &records)
{
    return ImportPlan::make(feed(name), records, Courses, name);
}

const ImportPlan::Item &item(const ImportPlan &plan, const QString &uid)
{
    for (const ImportPlan::Item &i : plan.items())
        if (i.uid == uid)
            return i;
    static const ImportPlan::Item none;
    ADD_FAILURE() << "no item " << qPrintable(uid);
    return none;
}

AssignmentRef record(const AssignmentList &records, const QString &uid)
{
    for (const AssignmentRef &r : records)
        if (ImportPlan::uidOf(*r) == uid)
            return r;
    return nullptr;
}

} // namespace

TEST(CourseTag, FindsTheCourseInTheWaysFeedsWriteIt)
{
    struct Case {
        QString title, name, course;
        bool known;
    };
    const QList<Case> cases = {
        {"Essay 2 [ENG 101]", "Essay 2", "eng 101", true},
        {"Essay 2 [PHIL 300 Fall 2026]", "Essay 2", "PHIL 300 Fall 2026", false},
        {"[history  210] Source analysis", "Source analysis", "History 210", true},
        {"ENG 101: Essay 2", "Essay 2", "eng 101", true},
        {"CS-61A: Project 1", "Project 1", "CS-61A", false},
        {"Essay 2 - ENG 101", "Essay 2", "eng 101", true},
        {"Midterm - MATH221", "Midterm", "MATH221", false},
        // Ordinary titles with a colon or a dash stay whole.
        {"Chapter 3: Reading response", "Chapter 3: Reading response", "", false},
        {"Office hours - bring questions", "Office hours - bring questions", "", false},
        {"Plain title", "Plain title", "", false},
        {"[ENG 101]", "[ENG 101]", "", false},
    };
    for (const Case &c : cases) {
        const CourseTag::Split split = CourseTag::split(c.title, Courses);
        EXPECT_EQ(split.name, c.name) << qPrintable(c.title);
        EXPECT_EQ(split.course, c.course) << qPrintable(c.title);
        EXPECT_EQ(split.knownCourse, c.known) << qPrintable(c.title);
    }
}

TEST(ImportPlan, FirstImportAddsEveryEntryWithItsCourseAndRemembersIt)
{
    AssignmentList records = {Assignments::make({{Name, QStringLiteral("Own assignment")}})};
    const ImportPlan first = plan(QStringLiteral("feed-before.ics"), records);
    ASSERT_EQ(first.items().size(), 4);
    EXPECT_EQ(first.count(Action::Add), 4);
    EXPECT_EQ(item(first, "feed-a").course, QStringLiteral("eng 101"));
    EXPECT_FALSE(item(first, "feed-a").newCourse);
    EXPECT_TRUE(item(first, "feed-c").newCourse);

    const ImportPlan::Result result = first.apply(records, Courses);
    EXPECT_EQ(result.added, 4);
    EXPECT_EQ(result.newCourses, QStringList{QStringLiteral("CHEM 105")});
    ASSERT_EQ(records.size(), 5);
    EXPECT_EQ(records[0]->string(Name), QStringLiteral("Own assignment"));
    const AssignmentRef essay = record(records, "feed-a");
    ASSERT_TRUE(essay);
    EXPECT_EQ(essay->string(Name), QStringLiteral("Essay 3"));
    EXPECT_EQ(essay->string(Course), QStringLiteral("eng 101"));
    EXPECT_EQ(essay->string(Date), QStringLiteral("2026-12-02 00:00:00 -0500"));
    EXPECT_FALSE(essay->has(Notes));
    EXPECT_EQ(essay->value(Priority).toDouble(), 1.0);
    EXPECT_TRUE(essay->has(DateCreated));
    EXPECT_TRUE(essay->has(DateUpdated));
    EXPECT_TRUE(ImportPlan::isUnedited(*essay));

    // The same file again changes nothing.
    const ImportPlan again = plan(QStringLiteral("feed-before.ics"), records);
    EXPECT_EQ(again.count(Action::Skip), 4);
    EXPECT_EQ(item(again, "feed-a").reason, QStringLiteral("unchanged since the last import"));
    EXPECT_EQ(again.apply(records, Courses).added, 0);
    EXPECT_EQ(records.size(), 5);
}

TEST(ImportPlan, AChangedFeedUpdatesUneditedAssignmentsAndNeverDeletes)
{
    AssignmentList records;
    plan(QStringLiteral("feed-before.ics"), records).apply(records, Courses);
    // The student completes one and edits the due date of another.
    record(records, "feed-b")->set(Completed, true);
    record(records, "feed-a")->set(Date, QStringLiteral("2026-12-08 09:00:00 -0500"));

    const ImportPlan after = plan(QStringLiteral("feed-after.ics"), records);
    EXPECT_EQ(item(after, "feed-a").action, Action::Skip);
    EXPECT_EQ(item(after, "feed-a").reason, QStringLiteral("edited here since it was imported"));
    EXPECT_FALSE(item(after, "feed-a").chosen);
    EXPECT_EQ(item(after, "feed-b").action, Action::Update);
    EXPECT_EQ(item(after, "feed-b").reason, QStringLiteral("new name"));
    EXPECT_EQ(item(after, "feed-c").action, Action::Skip);
    EXPECT_EQ(item(after, "feed-e").action, Action::Add);

    const ImportPlan::Result result = after.apply(records, Courses);
    EXPECT_EQ(result.added, 1);
    EXPECT_EQ(result.updated, 1);
    EXPECT_EQ(records.size(), 5); // feed-d left the calendar but stays here
    EXPECT_TRUE(record(records, "feed-d"));
    EXPECT_EQ(record(records, "feed-a")->string(Date), QStringLiteral("2026-12-08 09:00:00 -0500"));
    const AssignmentRef outline = record(records, "feed-b");
    EXPECT_EQ(outline->string(Name), QStringLiteral("Annotated outline"));
    EXPECT_TRUE(outline->isCompleted());
    EXPECT_TRUE(ImportPlan::isUnedited(*outline));
}

TEST(ImportPlan, ApplyChecksAgainstTheRecordsAsTheyAreNow)
{
    AssignmentList records;
    plan(QStringLiteral("feed-before.ics"), records).apply(records, Courses);
    ImportPlan after = plan(QStringLiteral("feed-after.ics"), records);
    ASSERT_EQ(item(after, "feed-a").action, Action::Update);
    // Between the preview and the click, the student renames the essay; the new date must not land on it.
    record(records, "feed-a")->set(Name, QStringLiteral("Essay 3 (extended)"));
    // An unticked item is left out.
    for (ImportPlan::Item &i : after.items())
        if (i.uid == QLatin1String("feed-e"))
            i.chosen = false;
    const ImportPlan::Result result = after.apply(records, Courses);
    EXPECT_EQ(result.updated, 1); // only feed-b
    EXPECT_EQ(result.added, 0);
    EXPECT_EQ(record(records, "feed-a")->string(Date), QStringLiteral("2026-12-02 00:00:00 -0500"));
    EXPECT_FALSE(record(records, "feed-e"));

    // The same plan applied twice adds nothing twice.
    for (ImportPlan::Item &i : after.items())
        i.chosen = i.action != Action::Skip;
    after.apply(records, Courses);
    after.apply(records, Courses);
    EXPECT_EQ(records.size(), 5);
}

TEST(ImportPlan, RepeatedAndCancelledEntriesAreSkipped)
{
    AssignmentList records;
    const ImportPlan duplicates = plan(QStringLiteral("duplicates.ics"), records);
    // dup-1's second entry is a change of its one occurrence (RECURRENCE-ID): it moves it a day.
    ASSERT_EQ(duplicates.items().size(), 4);
    EXPECT_EQ(duplicates.count(Action::Add), 2); // dup-1 once, one "Reading week"
    EXPECT_EQ(DateText::storedDay(duplicates.items()[0].date), QDate(2026, 12, 8));
    EXPECT_EQ(duplicates.items()[2].reason, QStringLiteral("appears more than once in the calendar"));
    EXPECT_EQ(duplicates.items()[3].reason, QStringLiteral("cancelled in the calendar"));
    duplicates.apply(records, Courses);
    EXPECT_EQ(records.size(), 2);
    // Entries without a UID are found again on the next import.
    EXPECT_EQ(plan(QStringLiteral("duplicates.ics"), records).count(Action::Add), 0);
}

TEST(ImportPlan, TheRememberedEntrySurvivesTheStoreFile)
{
    AssignmentList records;
    plan(QStringLiteral("zoned-prefix.ics"), records).apply(records, Courses);
    AssignmentStore store;
    store.repairAtStartup();
    ASSERT_TRUE(store.save(records));
    const std::optional<AssignmentList> loaded = store.load();
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->size(), 4);
    EXPECT_EQ(plan(QStringLiteral("zoned-prefix.ics"), *loaded).count(Action::Skip), 4);
    const AssignmentRef quiz = record(*loaded, "todo-78@moodle.example.org");
    ASSERT_TRUE(quiz);
    EXPECT_TRUE(quiz->isCompleted());
    EXPECT_EQ(quiz->string(Course), QStringLiteral("HIST 210")); // a code, not the student's "History 210"
    EXPECT_EQ(quiz->string(Name), QStringLiteral("Reading quiz"));
}

TEST(ImportPlan, TheCalendarExportOfImportedAssignmentsIsUnchangedByWhatTheyRemember)
{
    AssignmentList records;
    plan(QStringLiteral("zoned-prefix.ics"), records).apply(records, Courses);
    AssignmentList plain;
    for (const AssignmentRef &r : records) {
        plain.append(Assignments::copy(r));
        plain.back()->remove(ImportKeys::Record);
    }
    for (const QString &format : {ICalExport::Events, ICalExport::ToDos}) {
        ICalExport::resetCountersForTest();
        const QByteArray imported = ICalExport(ICalExport::DefaultName, format).fileText(records, QDate(2026, 11, 22));
        ICalExport::resetCountersForTest();
        const QByteArray without = ICalExport(ICalExport::DefaultName, format).fileText(plain, QDate(2026, 11, 22));
        EXPECT_EQ(imported, without);
        EXPECT_TRUE(imported.contains("Reading quiz"));
    }
}

TEST(ImportPlan, ASeriesAnEarlierVersionKeptAsOneAssignmentIsNotDuplicatedByItsOccurrences)
{
    // Earlier versions took a repeating entry as one assignment under the series' UID, dated at
    // its start (or, once moved, at the occurrence it stood for).
    const auto former = [](const QString &uid, const QString &name, const QString &date, const QString &ownName) {
        QVariantMap imported{{ImportKeys::Uid, uid}, {ImportKeys::Source, QStringLiteral("example.edu")},
                             {ImportKeys::Name, name}, {ImportKeys::Date, date}, {ImportKeys::Notes, QString()}};
        return Assignments::make({{Name, ownName}, {Date, date}, {ImportKeys::Record, imported}});
    };
    AssignmentList records = {
        former("ps@example.edu", "Problem set", "2026-11-03 17:00:00 -0500", "Problem set"),
        former("lab@example.edu", "Lab report", "2026-11-12 14:00:00 -0500", "Lab report"),
        former("talk@example.edu", "Guest lecture", "2026-11-06 16:00:00 -0500", "Talk, with my questions"),
    };
    const AssignmentRef problemSet = records[0];
    const AssignmentRef talk = records[2];
    // The subscription remembers the series' UIDs; the quiz's assignment was deleted here.
    const QSet<QString> broughtIn{"ps@example.edu", "lab@example.edu", "talk@example.edu", "quiz@example.edu"};
    const ImportPlan first = ImportPlan::make(feed("legacy-series.ics"), records, Courses, "example.edu", broughtIn);

    // The first occurrence continues the old assignment: unedited, it takes the feed's new notes.
    EXPECT_EQ(item(first, "ps@example.edu/20261103T170000").action, Action::Update);
    EXPECT_EQ(item(first, "ps@example.edu/20261103T170000").reason, "new notes");
    EXPECT_EQ(item(first, "ps@example.edu/20261110T170000").action, Action::Add);
    // The occurrence sharing the old assignment's date is the one it stood for.
    EXPECT_EQ(item(first, "lab@example.edu/20261105T140000").action, Action::Add);
    EXPECT_EQ(item(first, "lab@example.edu/20261112T140000").action, Action::Skip);
    EXPECT_EQ(item(first, "lab@example.edu/20261112T140000").reason, "unchanged since the last import");
    // The feed renamed the talk, but the student had renamed it first: their edit stands. The deleted
    // one stays deleted.
    EXPECT_EQ(item(first, "talk@example.edu/20261106T160000").reason, "edited here since it was imported");
    EXPECT_EQ(item(first, "quiz@example.edu/20261109T090000").reason, "deleted here since it was imported");
    EXPECT_EQ(item(first, "quiz@example.edu/20261116T090000").action, Action::Add);

    const ImportPlan::Result result = first.apply(records, Courses);
    EXPECT_EQ(result.updated, 1);
    EXPECT_EQ(result.added, 3 + 2 + 1 + 1);
    EXPECT_EQ(records.size(), 3 + 7);
    QSet<QPair<QString, QString>> seen;
    for (const AssignmentRef &r : records) {
        const QPair<QString, QString> key{r->string(Name), r->string(Date)};
        EXPECT_FALSE(seen.contains(key)) << qPrintable(key.first) << " " << qPrintable(key.second);
        seen.insert(key);
    }
    EXPECT_EQ(ImportPlan::uidOf(*problemSet), "ps@example.edu/20261103T170000");
    EXPECT_EQ(problemSet->string(Notes), "Chapter 3");
    EXPECT_EQ(talk->string(Name), "Talk, with my questions");

    // The next refresh finds every occurrence where the first one left it.
    const ImportPlan second = ImportPlan::make(feed("legacy-series.ics"), records, Courses, "example.edu", broughtIn);
    EXPECT_EQ(second.count(Action::Add), 0);
    EXPECT_EQ(second.count(Action::Update), 0);
}
