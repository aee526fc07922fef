// What a calendar import costs before the preview shows: reading a 2,000-entry course feed, parsing
// it with libical, and planning it against a store that already holds the first half of it (a second
// import of a term's feed) plus the student's own assignments. The goal is under 300 ms; the floor is
// reading the same file's bytes and splitting them into lines, measured alternately in the same run.

#include "importing/CalendarFeedParser.h"
#include "importing/ImportPlan.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include "support/BenchMeasure.h"

#include <ctime>

namespace {

constexpr int EventCount = 2000;
const QStringList Courses = {QStringLiteral("ENG 101"), QStringLiteral("MATH 221"), QStringLiteral("CHEM 105"),
                             QStringLiteral("HIST 210"), QStringLiteral("BIO 110")};

// A feed in the styles learning-management systems write: all-day dates, UTC and zoned times with
// the feed's VTIMEZONE, floating times, courses in brackets and prefixes, escaped and HTML
// descriptions, URLs, lines folded at 75 octets.
QByteArray generatedFeed()
{
    QByteArray out = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Bench//Course Feed//EN\r\n"
                     "X-WR-CALNAME:Bench Calendar\r\n"
                     "BEGIN:VTIMEZONE\r\nTZID:America/Chicago\r\n"
                     "BEGIN:STANDARD\r\nDTSTART:19701101T020000\r\nRRULE:FREQ=YEARLY;BYMONTH=11;BYDAY=1SU\r\n"
                     "TZOFFSETFROM:-0500\r\nTZOFFSETTO:-0600\r\nEND:STANDARD\r\n"
                     "BEGIN:DAYLIGHT\r\nDTSTART:19700308T020000\r\nRRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=2SU\r\n"
                     "TZOFFSETFROM:-0600\r\nTZOFFSETTO:-0500\r\nEND:DAYLIGHT\r\nEND:VTIMEZONE\r\n";
    const auto fold = [](const QByteArray &line) {
        QByteArray folded;
        for (qsizetype i = 0; i < line.size(); i += 74)
            folded += (i ? QByteArray(" ") : QByteArray()) + line.mid(i, i ? 73 : 74) + "\r\n";
        return folded;
    };
    for (int i = 0; i < EventCount; ++i) {
        const QDate day = QDate(2026, 9, 1).addDays(i % 120);
        const QByteArray date = day.toString(QStringLiteral("yyyyMMdd")).toLatin1();
        const QByteArray course = Courses[i % Courses.size()].toLatin1();
        out += i % 7 == 0 ? "BEGIN:VTODO\r\n" : "BEGIN:VEVENT\r\n";
        out += "UID:bench-" + QByteArray::number(i) + "@lms.example.edu\r\nDTSTAMP:20260801T120000Z\r\n";
        switch (i % 4) {
        case 0:
            out += (i % 7 == 0 ? "DUE;VALUE=DATE:" : "DTSTART;VALUE=DATE:") + date + "\r\n";
            break;
        case 1:
            out += (i % 7 == 0 ? "DUE:" : "DTSTART:") + date + "T045900Z\r\n";
            break;
        case 2:
            out += (i % 7 == 0 ? "DUE;TZID=America/Chicago:" : "DTSTART;TZID=America/Chicago:") + date + "T235900\r\n";
            break;
        default:
            out += (i % 7 == 0 ? "DUE:" : "DTSTART:") + date + "T170000\r\n";
            break;
        }
        out += i % 2 ? "SUMMARY:Problem set " + QByteArray::number(i) + " [" + course + "]\r\n"
                     : "SUMMARY:" + course + ": Reading response " + QByteArray::number(i) + "\r\n";
        out += fold(i % 3 ? "DESCRIPTION:Answer the questions at the end of the chapter\\, show your work\\nand "
                            "upload one PDF. Late work loses ten percent a day\\; ask early if stuck."
                          : "DESCRIPTION:<p>Read <b>chapter " + QByteArray::number(i % 30) +
                                "</b> and post a response.</p><ul><li>300 words</li><li>Two replies</li></ul>"
                                "<p>See <a href=\"https://lms.example.edu/p/" + QByteArray::number(i) +
                                "\">the prompt</a> &amp; rubric.</p>");
        out += "URL;VALUE=URI:https://lms.example.edu/courses/" + course.toLower().replace(' ', '-') + "/items/" +
               QByteArray::number(i) + "\r\n";
        out += i % 7 == 0 ? "END:VTODO\r\n" : "END:VEVENT\r\n";
    }
    out += "END:VCALENDAR\r\n";
    return out;
}

struct Fixture {
    QString path;
    qint64 bytes = 0;
    AssignmentList records;
};

const Fixture &fixture()
{
    static const Fixture made = [] {
        Fixture f;
        static QTemporaryDir folder;
        f.path = folder.filePath(QStringLiteral("course-feed.ics"));
        const QByteArray feed = generatedFeed();
        QFile file(f.path);
        if (!file.open(QIODevice::WriteOnly) || file.write(feed) != feed.size())
            qFatal("cannot write the generated feed");
        f.bytes = feed.size();
        // The store after an import of the first half of the feed, among 500 assignments of the student's own.
        for (int i = 0; i < 500; ++i)
            f.records.append(Assignments::make({{AssignmentKeys::Name, QStringLiteral("Own %1").arg(i)}}));
        QString error;
        FeedContents half = CalendarFeedParser::parse(feed, &error).value();
        half.events.resize(EventCount / 2);
        ImportPlan::make(half, f.records, Courses, QStringLiteral("course-feed.ics")).apply(f.records, Courses);
        return f;
    }();
    return made;
}

void ParseAndPlan(benchmark::State &state)
{
    const Fixture &f = fixture();
    BenchMeasure::Pair pair;
    int adds = 0;
    for (auto _ : state) {
        pair.floor([&] {
            const QByteArray bytes = BenchMeasure::readAll(f.path);
            benchmark::DoNotOptimize(bytes.split('\n').size());
        });
        pair.measure([&] {
            QString error;
            const std::optional<FeedContents> contents = CalendarFeedParser::parse(BenchMeasure::readAll(f.path), &error);
            const ImportPlan plan = ImportPlan::make(*contents, f.records, Courses, QStringLiteral("course-feed.ics"));
            adds = plan.count(ImportPlan::Action::Add);
            benchmark::DoNotOptimize(plan);
        });
    }
    pair.report(state);
    state.counters["events"] = EventCount;
    state.counters["to_add"] = adds;
    state.counters["file_kB"] = double(f.bytes) / 1e3;
}
BENCHMARK(ParseAndPlan)->Unit(benchmark::kMillisecond)->Iterations(21);

} // namespace

int main(int argc, char **argv)
{
    qputenv("TZ", "America/New_York");
    tzset();
    QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    QCoreApplication app(argc, argv);
    fixture(); // generated before any timing
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
