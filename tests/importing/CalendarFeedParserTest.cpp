#include "TestEnvironment.h"

#include "importing/CalendarFeedParser.h"
#include "platform/DateText.h"

#include <gtest/gtest.h>

#include <ctime>

namespace {

FeedContents parseFixture(const QString &name)
{
    QString error;
    const std::optional<FeedContents> contents =
        CalendarFeedParser::parse(TestEnvironment::readFile(TestEnvironment::fixture(QStringLiteral("importing/") + name)),
                                  &error);
    EXPECT_TRUE(contents) << qPrintable(error);
    return contents.value_or(FeedContents());
}

const FeedEvent *byUid(const FeedContents &contents, const QString &uid)
{
    for (const FeedEvent &event : contents.events)
        if (event.uid == uid)
            return &event;
    ADD_FAILURE() << "no event " << qPrintable(uid);
    return nullptr;
}

QString stored(const FeedEvent *event)
{
    return event ? DateText::toStoredForm(event->due) : QString();
}

// Runs `body` with another local time zone, restoring the test's zone afterwards.
template <typename Body>
void inTimeZone(const char *zone, Body body)
{
    const QByteArray previous = qgetenv("TZ");
    qputenv("TZ", zone);
    tzset();
    body();
    qputenv("TZ", previous);
    tzset();
}

} // namespace

TEST(CalendarFeedParser, AllDayAndUtcTimesWithFoldedDescriptionsAndUrls)
{
    const FeedContents feed = parseFixture(QStringLiteral("lms-brackets.ics"));
    EXPECT_EQ(feed.calendarName, QStringLiteral("Jordan Lee Calendar (Fall 2026)"));
    ASSERT_EQ(feed.events.size(), 3);

    const FeedEvent *essay = byUid(feed, QStringLiteral("event-assignment-1001"));
    ASSERT_TRUE(essay);
    EXPECT_TRUE(essay->allDay);
    EXPECT_EQ(stored(essay), QStringLiteral("2026-12-01 00:00:00 -0500"));
    EXPECT_EQ(essay->summary, QStringLiteral("Essay 2 [ENG 101]"));
    // Folded lines joined, escapes undone, the URL kept after the text.
    EXPECT_EQ(essay->notes,
              QStringLiteral("Write 1,500 words on the assigned reading.\nCite at least three sources; use MLA style. "
                             "This description is long enough that the feed folds it over several physical lines, as "
                             "RFC 5545 asks for lines over seventy-five octets.\n\n"
                             "https://lms.example.edu/courses/101/assignments/1001"));

    // 04:59 UTC is a minute before midnight of the day before in New York.
    const FeedEvent *problems = byUid(feed, QStringLiteral("event-assignment-1002"));
    EXPECT_FALSE(problems->allDay);
    EXPECT_EQ(stored(problems), QStringLiteral("2026-12-01 23:59:00 -0500"));
    EXPECT_EQ(problems->notes, QStringLiteral("https://lms.example.edu/courses/221/assignments/1002"));
    EXPECT_TRUE(byUid(feed, QStringLiteral("event-assignment-1003"))->notes.isEmpty());
}

TEST(CalendarFeedParser, ZonedTimesTodosAndHtmlDescriptions)
{
    const FeedContents feed = parseFixture(QStringLiteral("zoned-prefix.ics"));
    ASSERT_EQ(feed.events.size(), 4);
    // The feed's own VTIMEZONE: 23:59 in Berlin (UTC+1 in December) is 17:59 in New York.
    const FeedEvent *essay = byUid(feed, QStringLiteral("1234@moodle.example.org"));
    EXPECT_EQ(stored(essay), QStringLiteral("2026-12-01 17:59:00 -0500"));
    EXPECT_EQ(essay->notes, QStringLiteral("Submit the final draft as a PDF.\n\n- Title page\n- Works cited\n\n"
                                           "See the brief (https://moodle.example.org/mod/assign/view.php?id=55) & rubric."));
    // A zone without a VTIMEZONE in the file comes from the zone database.
    EXPECT_EQ(stored(byUid(feed, QStringLiteral("1235@moodle.example.org"))), QStringLiteral("2026-12-04 12:00:00 -0500"));

    // A to-do is due at DUE, not at its start; a DATE due stays that day.
    const FeedEvent *paper = byUid(feed, QStringLiteral("todo-77@moodle.example.org"));
    EXPECT_TRUE(paper->isTodo);
    EXPECT_TRUE(paper->allDay);
    EXPECT_FALSE(paper->completed);
    EXPECT_EQ(stored(paper), QStringLiteral("2026-12-15 00:00:00 -0500"));
    const FeedEvent *quiz = byUid(feed, QStringLiteral("todo-78@moodle.example.org"));
    EXPECT_TRUE(quiz->completed);
    EXPECT_EQ(stored(quiz), QStringLiteral("2026-11-20 17:00:00 -0500"));
}

TEST(CalendarFeedParser, FloatingTimesAreLocalAndHtmlInTheDescriptionIsReduced)
{
    const FeedContents feed = parseFixture(QStringLiteral("floating-dash.ics"));
    ASSERT_EQ(feed.events.size(), 2);
    const FeedEvent *project = byUid(feed, QStringLiteral("bb-_9001_1"));
    EXPECT_EQ(stored(project), QStringLiteral("2026-12-03 17:00:00 -0500"));
    EXPECT_EQ(project->notes, QStringLiteral("Groups of three.\nSlides due at 5 pm."));
}

TEST(CalendarFeedParser, AllDayDatesKeepTheirDayInEveryTimeZone)
{
    for (const char *zone : {"Pacific/Kiritimati", "Pacific/Pago_Pago", "Asia/Kolkata"}) {
        inTimeZone(zone, [zone] {
            const FeedContents feed = parseFixture(QStringLiteral("lms-brackets.ics"));
            const FeedEvent *essay = byUid(feed, QStringLiteral("event-assignment-1001"));
            ASSERT_TRUE(essay);
            EXPECT_EQ(essay->due.date(), QDate(2026, 12, 1)) << zone;
            EXPECT_EQ(essay->due.time(), QTime(0, 0)) << zone;
            EXPECT_NE(essay->due.offsetFromUtc(), -5 * 3600) << "the zone did not change";
            EXPECT_EQ(DateText::storedDay(DateText::toStoredForm(essay->due)), QDate(2026, 12, 1)) << zone;
        });
    }
}

TEST(CalendarFeedParser, MalformedFilesGiveAMessageAndNoEvents)
{
    struct Case {
        QByteArray bytes;
        QString messageStart;
    };
    const QList<Case> cases = {
        {TestEnvironment::readFile(TestEnvironment::fixture(QStringLiteral("importing/malformed-date.ics"))),
         QStringLiteral("The calendar file has an error in “Broken entry [ENG 101]”: Can't parse as DATE-TIME value in DTSTART property (“2026-12-45 noon”).")},
        {TestEnvironment::readFile(TestEnvironment::fixture(QStringLiteral("importing/truncated.ics"))),
         QStringLiteral("The calendar file is cut short")},
        {QByteArray("<html><body>Sign in to continue</body></html>"), QStringLiteral("This is not a calendar file")},
        {QByteArray(), QStringLiteral("This is not a calendar file")},
    };
    for (const Case &c : cases) {
        QString error;
        EXPECT_FALSE(CalendarFeedParser::parse(c.bytes, &error));
        EXPECT_TRUE(error.startsWith(c.messageStart)) << qPrintable(error);
    }
}

TEST(CalendarFeedParser, RepeatingEntriesBecomeOneEntryPerOccurrenceWithinAYear)
{
    // Today is 2026-11-22: occurrences from a year back to a year ahead are taken.
    const FeedContents feed = parseFixture(QStringLiteral("repeating.ics"));
    QStringList quizzes;
    int readings = 0;
    for (const FeedEvent &event : feed.events) {
        if (event.uid.startsWith(QLatin1String("quiz-")))
            quizzes.append(event.uid);
        if (event.uid.startsWith(QLatin1String("reading-"))) {
            ++readings;
            EXPECT_TRUE(event.allDay);
        }
        // A rule repeating every second since 1970 is followed only so far, and brings nothing.
        EXPECT_FALSE(event.uid.startsWith(QLatin1String("ticker@"))) << qPrintable(event.uid);
    }
    // Six weeks less the excluded 16th; the 23rd moved, the 30th cancelled (skipped by the import).
    EXPECT_EQ(quizzes, QStringList({"quiz-chem110@example.edu/20261102T090000", "quiz-chem110@example.edu/20261109T090000",
                                    "quiz-chem110@example.edu/20261123T090000", "quiz-chem110@example.edu/20261130T090000",
                                    "quiz-chem110@example.edu/20261207T090000"}));
    // 9:00 in Chicago is 10:00 here.
    EXPECT_EQ(stored(byUid(feed, quizzes[0])), QStringLiteral("2026-11-02 10:00:00 -0500"));
    const FeedEvent *moved = byUid(feed, quizzes[2]);
    ASSERT_TRUE(moved);
    EXPECT_EQ(moved->summary, QStringLiteral("Weekly quiz, after the break [CHEM 110]"));
    EXPECT_EQ(stored(moved), QStringLiteral("2026-11-24 15:00:00 -0500"));
    EXPECT_TRUE(byUid(feed, quizzes[3])->cancelled);
    EXPECT_FALSE(byUid(feed, quizzes[4])->cancelled);
    // From 2025-11-23 to 2027-11-22, every day once.
    EXPECT_EQ(readings, 730);
    EXPECT_EQ(stored(byUid(feed, QStringLiteral("reading-chem110@example.edu/20251123"))),
              QStringLiteral("2025-11-23 00:00:00 -0500"));
    // A changed occurrence of a series the feed does not carry is an entry of its own.
    EXPECT_EQ(stored(byUid(feed, QStringLiteral("lab-chem110@example.edu/20261201T130000"))),
              QStringLiteral("2026-12-02 13:00:00 -0500"));
    // The next fetch finds each occurrence under the same UID.
    const FeedContents again = parseFixture(QStringLiteral("repeating.ics"));
    ASSERT_EQ(again.events.size(), feed.events.size());
    for (qsizetype i = 0; i < feed.events.size(); ++i)
        EXPECT_EQ(again.events[i].uid, feed.events[i].uid);
}
