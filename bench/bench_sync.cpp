// What an upload and a download of a data folder holding 10,000 assignments (about 14 MB) cost
// through the sync engine, against a local FTP server (pyftpdlib on 127.0.0.1). The floor, measured
// in the same run against the same server, is what the plain tools take for the same folder:
// "tar -cf" + "curl -T" for an upload, "curl -o" + "tar -xf" for a download. "x_floor" is the
// program's time over the floor's; the goal is at most 1.5 (the automatic backup is the one
// piece of work the plain tools do not do).
//
// "backup_ms" is that backup alone, written the way the engine writes it (the whole data as one
// document, put on disk before it takes its name) in the same run, outside the program's time: the
// engine overlaps it with packing and the transfer, but it cannot finish before it, so it is the
// least a sync can take whatever the rest costs.
//
// Like with like: the floor's download unpacks over the tree its previous round left, as the
// program's replaces the data files the previous download left, so both pay for freeing the files
// they replace. The program replaces each file by renaming a complete new one over it (a crash
// leaves the old file or the new one, never half of one), and the file system writes a file
// renamed over another to disk before the rename counts; the floor's tar overwrites in place and
// leaves its files in memory. That difference is the price of the atomic replace and stays in
// the program's time.

#include "exchange/AutomaticBackups.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "support/StoreGenerator.h"
#include "sync/CommandLine.h"
#include "sync/Syncing.h"
#include "sync/SyncingKeys.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QThreadPool>
#include <benchmark/benchmark.h>

#include <arpa/inet.h>
#include <chrono>
#include <csignal>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int RecordCount = 10000;
// pyftpdlib's anonymous account, writable with -w, takes the empty password.
const QString FtpUser = QStringLiteral("anonymous");
const QString Tar = QStringLiteral("/usr/bin/tar");
const QString Curl = QStringLiteral("/usr/bin/curl");

quint16 freePort()
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    quint16 port = 0;
    if (::bind(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0
        && ::getsockname(fd, reinterpret_cast<sockaddr *>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    ::close(fd);
    return port;
}

bool accepts(quint16 port)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const bool ok = ::connect(fd, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    ::close(fd);
    return ok;
}

// One home with the store, one FTP server with the folders "program/" and "plain/". No keychain
// runs here, so the engine uses the empty password it uses when no item exists.
struct Fixture {
    QTemporaryDir home{QDir::tempPath() + QStringLiteral("/quillory-bench-sync-XXXXXX")};
    QTemporaryDir root;
    QTemporaryDir plain;
    QProcess server;
    quint16 port = freePort();
    QString error;

    Fixture()
    {
        qputenv("HOME", QFile::encodeName(home.path()));
        UserDefaults::dropCaches();
        QDir().mkpath(Paths::dataFolder());
        if (!StoreGenerator::writeStore(Paths::assignmentsFile(), RecordCount, &error))
            return;
        PropertyList::writeFile(Paths::coursesFile(), QVariantList{});
        PropertyList::writeFile(Paths::universalTypesFile(), QVariantList{});
        QDir(root.path()).mkpath(QStringLiteral("program"));
        QDir(root.path()).mkpath(QStringLiteral("plain"));
        server.setStandardOutputFile(QProcess::nullDevice());
        server.setStandardErrorFile(QProcess::nullDevice());
        server.start(QStringLiteral("/usr/bin/python3"),
                     {QStringLiteral("-m"), QStringLiteral("pyftpdlib"), QStringLiteral("-i"), QStringLiteral("127.0.0.1"),
                      QStringLiteral("-p"), QString::number(port), QStringLiteral("-w"), QStringLiteral("-d"),
                      root.path()});
        for (int i = 0; i < 200 && !accepts(port); ++i)
            QThread::msleep(50);
        if (!accepts(port))
            error = QStringLiteral("pyftpdlib did not start");
        UserDefaults().set(SyncingKeys::Group,
                           QVariantMap{{SyncingKeys::Method, qint64(SyncingKeys::FTPServerMethod)},
                                       {SyncingKeys::FTPName, FtpUser},
                                       {SyncingKeys::FTPServer, host()},
                                       {SyncingKeys::FTPPath, QStringLiteral("/program/")}});
    }
    ~Fixture()
    {
        if (server.state() != QProcess::NotRunning) {
            ::kill(pid_t(server.processId()), SIGTERM);
            server.waitForFinished(5000);
        }
    }
    QString host() const { return QStringLiteral("127.0.0.1:") + QString::number(port); }
    QString credentials() const { return FtpUser + QLatin1Char(':'); }
};

Fixture &fixture()
{
    static Fixture instance;
    return instance;
}

double seconds(std::chrono::steady_clock::duration d)
{
    return std::chrono::duration<double>(d).count();
}

template<typename Work>
double timed(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return seconds(std::chrono::steady_clock::now() - start);
}

bool run(const QString &program, const QStringList &arguments)
{
    return CommandLine::run(program, arguments).exitStatus == 0;
}

// The automatic backup alone, as the engine writes it, in a place of its own so that the engine's
// backup folder keeps what the engine alone put there.
double backupAlone()
{
    const QString path = fixture().plain.filePath(QStringLiteral("backup.plist"));
    const double time = timed([&] { AutomaticBackups::write(path); });
    QFile::remove(path);
    return time;
}

// `freeing` is the part of `program` spent waiting for the pool to free the temporary paths.
void report(benchmark::State &state, double program, double floor, double freeing, double backup)
{
    state.SetIterationTime(program);
    state.counters["backup_ms"] = backup * 1000;
    state.counters["freeing_ms"] = freeing * 1000;
    state.counters["program_ms"] = program * 1000;
    state.counters["floor_ms"] = floor * 1000;
    state.counters["x_floor"] = program / floor;
}

void BM_Upload(benchmark::State &state)
{
    Fixture &f = fixture();
    if (!f.error.isEmpty()) {
        state.SkipWithError(f.error.toStdString().c_str());
        return;
    }
    const QString plainArchive = f.plain.filePath(QStringLiteral("Quillory.tar"));
    const QString plainUrl = QStringLiteral("ftp://") + f.host() + QStringLiteral("/plain/");
    Syncing engine;
    for (auto _ : state) {
        const double floor = timed([&] {
            run(Tar, {QStringLiteral("--exclude=Syncing Backups"), QStringLiteral("-cf"), plainArchive,
                      QStringLiteral("-C"), Paths::home(),
                      QStringLiteral("Library/Application Support/Quillory")});
            run(Curl, {QStringLiteral("-u"), f.credentials(), plainUrl, QStringLiteral("-T"), plainArchive});
            QFile::remove(plainArchive); // the plain tools leave nothing behind either
        });
        // The engine frees its temporary paths on a pool thread, off the interface thread; that is
        // still work the computer does for this upload (and the quit's upload waits for it before
        // the program exits), so it is timed too.
        double freeing = 0;
        const double program = timed([&] {
            engine.uploadData();
            freeing = timed([] { QThreadPool::globalInstance()->waitForDone(); });
        });
        report(state, program, floor, freeing, backupAlone());
    }
    if (!Alerts::takeAsked().isEmpty())
        state.SkipWithError("the upload showed an alert");
}

void BM_Download(benchmark::State &state)
{
    Fixture &f = fixture();
    if (!f.error.isEmpty()) {
        state.SkipWithError(f.error.toStdString().c_str());
        return;
    }
    Syncing engine;
    engine.uploadData(); // what the program downloads
    const QString plainArchive = f.plain.filePath(QStringLiteral("download.tar"));
    const QString plainUrl = QStringLiteral("ftp://") + f.host() + QStringLiteral("/program/Quillory.tar");
    const QString unpacked = f.plain.filePath(QStringLiteral("unpacked"));
    QDir().mkpath(unpacked);
    // Tar replaces what the previous round unpacked, as the program replaces the data files.
    run(Curl, {QStringLiteral("-u"), f.credentials(), plainUrl, QStringLiteral("-o"), plainArchive});
    run(Tar, {QStringLiteral("-xf"), plainArchive, QStringLiteral("-C"), unpacked});
    for (auto _ : state) {
        const double floor = timed([&] {
            run(Curl, {QStringLiteral("-u"), f.credentials(), plainUrl, QStringLiteral("-o"), plainArchive});
            run(Tar, {QStringLiteral("-xf"), plainArchive, QStringLiteral("-C"), unpacked});
            QFile::remove(plainArchive); // the plain tools leave nothing behind either
        });
        // Freeing the archive and the unpack folder on the pool is timed with the download.
        double freeing = 0;
        const double program = timed([&] {
            engine.downloadData();
            freeing = timed([] { QThreadPool::globalInstance()->waitForDone(); });
        });
        report(state, program, floor, freeing, backupAlone());
    }
    if (!Alerts::takeAsked().isEmpty())
        state.SkipWithError("the download showed an alert");
}

BENCHMARK(BM_Upload)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7)->ReportAggregatesOnly(true);
BENCHMARK(BM_Download)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(1)->Repetitions(7)->ReportAggregatesOnly(true);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    Alerts::resetForTest(); // an alert would be a failure here, not a question for someone
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
