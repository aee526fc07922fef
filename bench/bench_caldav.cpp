// What a sync with a calendar server costs for 10,000 assignments, against a local Radicale on
// 127.0.0.1: the first upload into an empty calendar, then an incremental sync after 10 changes here
// and 10 made on the server by another device. The counters say what went over the wire (requests,
// bytes each way); an incremental sync should move only the changed items, and take under 5% of the
// first upload's time ("x_upload" on the incremental run, against the upload measured in the same run).
//
// QUILLORY_BENCH_CALDAV_RECORDS changes the number of assignments; QUILLORY_BENCH_CALDAV_SERVER=xandikos
// runs against a local Xandikos instead. QUILLORY_BENCH_CALDAV_UPLOADS sets how often the first upload
// is repeated (3 by default): Radicale looks through every item of a calendar before it stores a new
// one, so one upload of 10,000 items into it takes the better part of an hour. The incremental runs
// start from the calendar the last upload filled, so no upload is made that is not measured.

#include "caldav/CalDavAccount.h"
#include "caldav/CalDavSync.h"
#include "caldav/DavSession.h"
#include "caldav/SyncState.h"
#include "caldav/TodoMapping.h"
#include "store/Assignment.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QThread>
#include <QUuid>
#include <benchmark/benchmark.h>

#include <csignal>

namespace {

const QString User = QStringLiteral("bench");
const QString Password = QStringLiteral("bench");

int recordCount() { return qEnvironmentVariableIntValue("QUILLORY_BENCH_CALDAV_RECORDS") ?: 10000; }
int uploadRepetitions() { return qEnvironmentVariableIntValue("QUILLORY_BENCH_CALDAV_UPLOADS") ?: 3; }

struct Radicale {
    QTemporaryDir folder;
    QProcess process;
    quint16 port = 0;
    QUrl home;

    bool start()
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        port = probe.serverPort();
        probe.close();
        QFile users(folder.filePath(QStringLiteral("users")));
        users.open(QIODevice::WriteOnly);
        users.write((User + QLatin1Char(':') + Password + QLatin1Char('\n')).toUtf8());
        users.close();
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        if (qgetenv("QUILLORY_BENCH_CALDAV_SERVER") == "xandikos")
            process.start(QStringLiteral("/usr/bin/xandikos"),
                          {QStringLiteral("--defaults"), QStringLiteral("-d"), folder.filePath(QStringLiteral("dav")),
                           QStringLiteral("-l"), QStringLiteral("127.0.0.1"), QStringLiteral("-p"), QString::number(port)});
        else
            process.start(QStringLiteral("/usr/bin/radicale"),
                          {QStringLiteral("--config"), QString(), QStringLiteral("--server-hosts"),
                           QStringLiteral("127.0.0.1:%1").arg(port), QStringLiteral("--storage-filesystem-folder"),
                           folder.filePath(QStringLiteral("collections")), QStringLiteral("--auth-type"),
                           QStringLiteral("htpasswd"), QStringLiteral("--auth-htpasswd-filename"), users.fileName(),
                           QStringLiteral("--auth-htpasswd-encryption"), QStringLiteral("plain"),
                           QStringLiteral("--logging-level"), QStringLiteral("error")});
        for (int i = 0; i < 100; ++i) {
            DavSession session(User, Password);
            const auto found = CalDavAccount::discover(session, QStringLiteral("http://127.0.0.1:%1/").arg(port));
            if (found.problem == CalDavAccount::Problem::None) {
                home = found.home;
                return true;
            }
            QThread::msleep(100);
        }
        return false;
    }
    ~Radicale()
    {
        if (process.state() != QProcess::NotRunning) {
            ::kill(pid_t(process.processId()), SIGTERM);
            process.waitForFinished(5000);
        }
    }
    QUrl newCalendar()
    {
        DavSession session(User, Password);
        return CalDavAccount::createCalendar(session, home, QStringLiteral("Bench")).calendars.value(0).url;
    }
};

Radicale &server()
{
    static Radicale radicale;
    static const bool started = radicale.start();
    if (!started)
        qFatal("radicale did not start");
    return radicale;
}

QList<QVariantMap> generated(int count)
{
    QList<QVariantMap> out;
    for (int i = 0; i < count; ++i)
        out << QVariantMap{{AssignmentKeys::Name, QStringLiteral("Assignment %1").arg(i)},
                           {AssignmentKeys::Date, QStringLiteral("2026-12-%1 09:00:00 -0500").arg(1 + i % 28, 2, 10, QLatin1Char('0'))},
                           {AssignmentKeys::Course, QStringLiteral("Course %1").arg(i % 7)},
                           {AssignmentKeys::Notes, QStringLiteral("Read chapter %1 and answer the questions at its end.").arg(i % 40)},
                           {AssignmentKeys::Priority, 1.0 + i % 5},
                           {AssignmentKeys::DateUpdated, QStringLiteral("2026-11-20 09:00:00 -0500")},
                           {CalDavKeys::Uid, QUuid::createUuid().toString(QUuid::WithoutBraces)}};
    return out;
}

void setCounters(benchmark::State &state, const CalDavSync::Outcome &out)
{
    state.counters["requests"] = out.requests;
    state.counters["bytes_sent"] = double(out.bytesSent);
    state.counters["bytes_received"] = double(out.bytesReceived);
    state.counters["sent"] = out.sent;
    state.counters["received"] = out.received;
}

double g_uploadSeconds = 0;

// What the last first upload left: the calendar it filled, the records it sent and its sync state.
struct Uploaded {
    QTemporaryDir folder;
    QUrl calendar;
    QList<QVariantMap> records;
    int rounds = 0;
};
Uploaded &lastUpload()
{
    static Uploaded uploaded;
    return uploaded;
}

void FirstUpload(benchmark::State &state)
{
    const QList<QVariantMap> records = generated(recordCount());
    for (auto _ : state) {
        state.PauseTiming();
        const QUrl calendar = server().newCalendar();
        lastUpload().calendar = calendar;
        lastUpload().records = records;
        SyncState syncState(lastUpload().folder.filePath(QStringLiteral("state.json")));
        DavSession session(User, Password);
        CalDavSync sync(session, calendar, syncState, true);
        state.ResumeTiming();
        QElapsedTimer timer;
        timer.start();
        const CalDavSync::Outcome out = sync.run(records);
        syncState.save();
        g_uploadSeconds = timer.nsecsElapsed() / 1e9;
        if (!out.ok)
            state.SkipWithError(out.error.toUtf8().constData());
        setCounters(state, out);
    }
}
BENCHMARK(FirstUpload)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(uploadRepetitions());

void IncrementalAfterTenAndTen(benchmark::State &state)
{
    if (lastUpload().records.isEmpty()) {
        state.SkipWithError("run together with FirstUpload: the incremental sync starts from its calendar");
        return;
    }
    // Each repetition goes on from where the previous one left the calendar and the records.
    QList<QVariantMap> &records = lastUpload().records;
    const QUrl calendar = lastUpload().calendar;
    SyncState syncState(lastUpload().folder.filePath(QStringLiteral("state.json")));
    if (!syncState.load()) {
        state.SkipWithError("the first upload's sync state could not be read");
        return;
    }
    int &round = lastUpload().rounds;
    for (auto _ : state) {
        state.PauseTiming();
        ++round;
        // Ten changes here, ten on the server by another device.
        for (int i = 0; i < 10; ++i) {
            QVariantMap &r = records[i * 37 % records.size()];
            r.insert(AssignmentKeys::Notes, QStringLiteral("changed here, round %1").arg(round));
            r.insert(AssignmentKeys::DateUpdated, QStringLiteral("2026-11-21 09:00:00 -0500"));
        }
        {
            DavSession other(User, Password);
            for (int i = 0; i < 10; ++i) {
                const QVariantMap &r = records[records.size() - 1 - i * 53 % (records.size() / 2)];
                const QString uid = r.value(CalDavKeys::Uid).toString();
                const SyncState::Item item = syncState.items.value(uid);
                QVariantMap theirs = r;
                theirs.insert(AssignmentKeys::Name, QStringLiteral("renamed there, round %1").arg(round));
                QUrl url = calendar;
                url.setPath(item.href);
                if (!other.send("PUT", url, TodoMapping::toIcs(theirs, uid, {}, item.ics)).ok()) {
                    state.SkipWithError("the other device's change was refused");
                    return;
                }
            }
        }
        DavSession session(User, Password);
        CalDavSync sync(session, calendar, syncState, true);
        state.ResumeTiming();
        QElapsedTimer timer;
        timer.start();
        const CalDavSync::Outcome out = sync.run(records);
        syncState.save();
        const double seconds = timer.nsecsElapsed() / 1e9;
        state.PauseTiming();
        for (const QVariantMap &fields : out.upserts)
            for (QVariantMap &r : records)
                if (r.value(CalDavKeys::Uid) == fields.value(CalDavKeys::Uid))
                    r = fields;
        if (!out.ok)
            state.SkipWithError(out.error.toUtf8().constData());
        setCounters(state, out);
        state.counters["x_upload"] = seconds / g_uploadSeconds;
        state.ResumeTiming();
    }
}
BENCHMARK(IncrementalAfterTenAndTen)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(1)->Repetitions(5);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
