#include "TestEnvironment.h"
#include "app/ProgramProcess.h"

#include "platform/Paths.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

// These tests run the real program, make it die of a fatal signal through its test hook and start
// it again, as a student whose planner crashed would.
namespace {

struct ProgramRun {
    QProcess::ExitStatus status = QProcess::NormalExit;
    int code = -1; // the signal, for a crash
    QString errors;
};

ProgramRun runProgram(const QString &crash)
{
    // Without a crash to cause, the run quits as soon as its window is up.
    const QProcessEnvironment environment = ProgramProcess::environment(
        {{QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("quillory.support.info=true")},
         {QStringLiteral("QUILLORY_TEST_HOOKS"), QStringLiteral("1")},
         {QStringLiteral("QUILLORY_QUIT_AFTER_STARTUP"), crash.isEmpty() ? QStringLiteral("1") : QString()},
         {QStringLiteral("QUILLORY_TEST_CRASH"), crash}});
    QProcess program;
    program.setProcessEnvironment(environment);
    // No core files from the crashes we cause on purpose.
    program.setChildProcessModifier([] {
        const rlimit none{0, 0};
        ::setrlimit(RLIMIT_CORE, &none);
    });
    program.start(QStringLiteral(QUILLORY_PROGRAM_PATH), QStringList());
    ProgramRun run;
    EXPECT_TRUE(program.waitForFinished(60000));
    run.status = program.exitStatus();
    run.code = program.exitCode();
    run.errors = QString::fromLocal8Bit(program.readAllStandardError());
    return run;
}

bool offered(const ProgramRun &run)
{
    return run.errors.contains(QStringLiteral("Offering the crash log"));
}

QString crashLogText()
{
    return QString::fromUtf8(TestEnvironment::readFile(Paths::crashLog()));
}

// `expected`: texts the log must hold besides its header, the function that crashed among them.
void crashAndOfferAtTheNextStart(const QString &hook, int signal, const QString &signalName, const QStringList &expected)
{
    const ProgramRun crashed = runProgram(hook);
    EXPECT_EQ(crashed.status, QProcess::CrashExit) << crashed.errors.toStdString();
    EXPECT_EQ(crashed.code, signal);

    ASSERT_TRUE(QFileInfo::exists(Paths::crashLog()));
    const QString log = crashLogText();
    EXPECT_TRUE(log.startsWith(QStringLiteral("Quillory 1.0.0 crashed."))) << log.toStdString();
    EXPECT_TRUE(log.contains(QStringLiteral("Signal:     %1 %2").arg(signal).arg(signalName))) << log.toStdString();
    EXPECT_TRUE(log.contains(QStringLiteral("Date/Time:  %1").arg(QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyy-MM-dd")))));
    EXPECT_TRUE(log.contains(QStringLiteral("Backtrace of the crashing thread")));
    for (const QString &text : expected)
        EXPECT_TRUE(log.contains(text)) << text.toStdString() << "\n" << log.toStdString();
    // Written under another name and renamed into place: nothing half-written is left beside it.
    EXPECT_EQ(QDir(QFileInfo(Paths::crashLog()).absolutePath()).entryList(QDir::Files), QStringList{QStringLiteral("Quillory.crash.log")});

    // The crash came after that run's start, so the next start offers it; the window is closed
    // at the quit, which removes the log so that it is not offered twice.
    const ProgramRun next = runProgram(QString());
    EXPECT_EQ(next.status, QProcess::NormalExit);
    EXPECT_TRUE(offered(next)) << next.errors.toStdString();
    EXPECT_FALSE(QFileInfo::exists(Paths::crashLog()));
    EXPECT_FALSE(offered(runProgram(QString())));
}

} // namespace

TEST(CrashProgram, ASegmentationFaultIsLoggedWithItsAddressAndFunctionAndOfferedAtTheNextStart)
{
    crashAndOfferAtTheNextStart(QStringLiteral("segv"), SIGSEGV, QStringLiteral("SIGSEGV"),
                                {QStringLiteral("Address:    0x0000000000000010"), QStringLiteral("crashWithSegmentationFault")});
}

TEST(CrashProgram, AnAbortIsLoggedWithTheFunctionThatCalledAbort)
{
    crashAndOfferAtTheNextStart(QStringLiteral("abort"), SIGABRT, QStringLiteral("SIGABRT"), {QStringLiteral("crashWithAbort")});
}

TEST(CrashProgram, AStackOverflowIsLoggedFromTheHandlersOwnStack)
{
    const ProgramRun crashed = runProgram(QStringLiteral("overflow"));
    EXPECT_EQ(crashed.status, QProcess::CrashExit);
    EXPECT_EQ(crashed.code, SIGSEGV);
    const QString log = crashLogText();
    EXPECT_TRUE(log.contains(QStringLiteral("crashWithStackOverflow"))) << log.toStdString();
}

// A log found at the first start ever, or one older than the last start, is someone else's or
// was offered before: it is neither offered nor removed.
TEST(CrashProgram, TheFirstStartEverAndALogOlderThanTheLastStartOfferNothing)
{
    TestEnvironment::writeFile(Paths::crashLog(), "an old crash\n");
    const ProgramRun first = runProgram(QString());
    EXPECT_FALSE(offered(first)) << first.errors.toStdString();
    UserDefaults::dropCaches();
    ASSERT_TRUE(UserDefaults().contains(PreferenceKeys::LastStartup));

    QFile log(Paths::crashLog());
    ASSERT_TRUE(log.open(QIODevice::ReadWrite));
    ASSERT_TRUE(log.setFileTime(QDateTime::currentDateTime().addSecs(-3600), QFileDevice::FileModificationTime));
    log.close();
    const ProgramRun run = runProgram(QString());
    EXPECT_EQ(run.status, QProcess::NormalExit);
    EXPECT_FALSE(offered(run)) << run.errors.toStdString();
    EXPECT_EQ(crashLogText(), QStringLiteral("an old crash\n"));
}

TEST(CrashProgram, TheDebugWindowDeletesDataRelaunchesAndQuitsForAScreenReaderUser)
{
    // The real program on an X server of its own, its debug window pressed through AT-SPI.
    const QString session = QStringLiteral("/usr/bin/dbus-run-session");
    if (!QFileInfo::exists(session) || !QFileInfo::exists(QStringLiteral("/usr/bin/Xvfb")))
        GTEST_SKIP() << "dbus-run-session or Xvfb is missing";
    QProcess walk;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("DISPLAY"));
    environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    walk.setProcessEnvironment(environment);
    walk.setProcessChannelMode(QProcess::MergedChannels);
    walk.start(session, {QStringLiteral("--"), QStringLiteral("/usr/bin/python3"),
                         QStringLiteral(QUILLORY_TEST_SUPPORT_DIR "/../crash/debug_window_walk.py"),
                         QStringLiteral(QUILLORY_PROGRAM_PATH)});
    ASSERT_TRUE(walk.waitForFinished(240000));
    const QString output = QString::fromUtf8(walk.readAll());
    EXPECT_EQ(walk.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(walk.exitCode(), 0) << output.toStdString();
    EXPECT_TRUE(output.contains(QStringLiteral("the debug window deleted the data, relaunched and quit"))) << output.toStdString();
}
