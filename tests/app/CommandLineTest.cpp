#include "TestEnvironment.h"

#include "BuildInfo.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QThread>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>

// The real program's command line, and what a second start does while a first one runs: two real
// processes against the test's home folder, offscreen, each with a log of what it did.
namespace {

// Long enough for a start under the sanitizers on a busy machine; a hand-over takes milliseconds.
constexpr int StartMs = 60000;
constexpr int HandOverMs = 20000;

QString runtimeFolder()
{
    const QString folder = TestEnvironment::home() + QStringLiteral("/runtime");
    QDir().mkpath(folder);
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    return folder;
}

// Started the way a desktop starts it, with its log on the merged output channel.
class Program
{
public:
    explicit Program(const QStringList &arguments, bool display = true, const QString &workingFolder = QString())
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("HOME"), TestEnvironment::home());
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtimeFolder());
        environment.insert(QStringLiteral("TZ"), QStringLiteral("America/New_York"));
        environment.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("quillory.*.info=true"));
        environment.remove(QStringLiteral("QUILLORY_QUIT_AFTER_STARTUP"));
        environment.remove(QStringLiteral("DISPLAY"));
        environment.remove(QStringLiteral("WAYLAND_DISPLAY"));
        if (display)
            environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        else
            environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        if (!workingFolder.isEmpty())
            m_process.setWorkingDirectory(workingFolder);
        m_process.start(QStringLiteral(QUILLORY_PROGRAM_PATH), arguments);
        EXPECT_TRUE(m_process.waitForStarted());
    }
    ~Program()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished();
        }
    }

    // The exit code, or -1 when it did not end in time or crashed.
    int finish(int milliseconds)
    {
        if (!m_process.waitForFinished(milliseconds) || m_process.exitStatus() != QProcess::NormalExit)
            return -1;
        collect();
        return m_process.exitCode();
    }
    bool running() { return m_process.state() == QProcess::Running; }
    void signal(int number) { ::kill(pid_t(m_process.processId()), number); }

    QString output()
    {
        collect();
        return m_output;
    }
    bool waitForOutput(const QString &text, int milliseconds)
    {
        QDeadlineTimer deadline(milliseconds);
        while (!output().contains(text)) {
            if (deadline.hasExpired() || m_process.state() == QProcess::NotRunning)
                return output().contains(text);
            m_process.waitForReadyRead(100);
        }
        return true;
    }

private:
    void collect() { m_output += QString::fromLocal8Bit(m_process.readAll()); }

    QProcess m_process;
    QString m_output;
};

QStringList sockets()
{
    return QDir(runtimeFolder()).entryList({QStringLiteral("*.socket")}, QDir::System | QDir::Files);
}

// A first copy that runs until told to quit; true once it listens for later starts.
bool waitForListening(Program &program)
{
    QDeadlineTimer deadline(StartMs);
    while (sockets().isEmpty()) {
        if (deadline.hasExpired() || !program.running())
            return false;
        QThread::msleep(50);
    }
    return true;
}

void writeAssignments()
{
    const QVariantList records{QVariantMap{{QStringLiteral("Name"), QStringLiteral("Essay")}}};
    QDir().mkpath(Paths::dataFolder());
    EXPECT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), records));
}

} // namespace

TEST(CommandLine, HelpAndVersionPrintAndExitWithoutADisplay)
{
    Program version({QStringLiteral("--version")}, false);
    ASSERT_EQ(version.finish(StartMs), 0) << version.output().toStdString();
    EXPECT_EQ(version.output(), QStringLiteral("%1 %2\n").arg(QLatin1String(BuildInfo::BundleName), QLatin1String(BuildInfo::BundleVersion)));

    Program help({QStringLiteral("-h")}, false);
    ASSERT_EQ(help.finish(StartMs), 0) << help.output().toStdString();
    EXPECT_TRUE(help.output().startsWith(QStringLiteral("Usage: quillory"))) << help.output().toStdString();
    EXPECT_TRUE(help.output().contains(QStringLiteral("--version")));

    // A mistyped option says so and starts nothing: no data folder, no socket.
    Program unknown({QStringLiteral("--veriosn")}, true);
    ASSERT_EQ(unknown.finish(StartMs), 2);
    EXPECT_TRUE(unknown.output().contains(QStringLiteral("unknown option '--veriosn'"))) << unknown.output().toStdString();
    Program missing({QStringLiteral("no such backup")}, true);
    ASSERT_EQ(missing.finish(StartMs), 2);
    EXPECT_TRUE(missing.output().contains(QStringLiteral("cannot open 'no such backup'"))) << missing.output().toStdString();
    EXPECT_FALSE(QFileInfo::exists(Paths::dataFolder()));
    EXPECT_TRUE(sockets().isEmpty());
}

TEST(CommandLine, ASecondStartHandsItsBackupToTheRunningCopyAndEnds)
{
    writeAssignments();
    const QString backupFolder = TestEnvironment::home() + QStringLiteral("/Downloads");
    QDir().mkpath(backupFolder);
    const QString backup = backupFolder + QStringLiteral("/Quillory Backup");
    ASSERT_TRUE(PropertyList::writeFile(backup, QVariantList{QVariantList{}, QVariantList{}, QVariantList{}}));

    Program first({});
    ASSERT_TRUE(waitForListening(first)) << first.output().toStdString();

    // Given as a name relative to the second start's own working folder, which the first does not share.
    Program second({QStringLiteral("Quillory Backup")}, true, backupFolder);
    ASSERT_EQ(second.finish(HandOverMs), 0) << second.output().toStdString();
    EXPECT_FALSE(second.output().contains(QStringLiteral("Asking:")));

    // The first copy comes to the front and asks the backup import's question about that file.
    ASSERT_TRUE(first.waitForOutput(QStringLiteral("Import from Backup"), HandOverMs)) << first.output().toStdString();
    EXPECT_TRUE(first.output().contains(QStringLiteral("Raised the window for a later start")));
    // (As start-up repaired it; the import has not written.)
    const QByteArray data = TestEnvironment::readFile(Paths::assignmentsFile());
    EXPECT_TRUE(first.output().contains(QStringLiteral("Opening \"%1\"").arg(backup))) << first.output().toStdString();

    // A logout answers the open question with Cancel: the data is as it was.
    first.signal(SIGTERM);
    ASSERT_EQ(first.finish(StartMs), 0) << first.output().toStdString();
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), data);
    EXPECT_TRUE(sockets().isEmpty());
}

TEST(CommandLine, ASocketLeftByAKilledCopyDoesNotStopTheNextStart)
{
    {
        Program killed({});
        ASSERT_TRUE(waitForListening(killed)) << killed.output().toStdString();
        killed.signal(SIGKILL);
        ASSERT_EQ(killed.finish(StartMs), -1);
    }
    ASSERT_EQ(sockets().size(), 1);
    writeAssignments();

    // The next start runs, and refuses a calendar file given to it rather than import it.
    const QString calendar = TestEnvironment::home() + QStringLiteral("/term.ics");
    TestEnvironment::writeFile(calendar, "BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n");
    Program next({calendar});
    ASSERT_TRUE(next.waitForOutput(QStringLiteral("Quillory cannot import calendar files such as \u201cterm.ics\u201d"), StartMs))
        << next.output().toStdString();
    const QByteArray data = TestEnvironment::readFile(Paths::assignmentsFile());
    EXPECT_TRUE(data.contains("Essay"));

    // It is the copy that later starts reach now.
    Program later({});
    ASSERT_EQ(later.finish(HandOverMs), 0) << later.output().toStdString();
    ASSERT_TRUE(next.waitForOutput(QStringLiteral("Raised the window for a later start"), HandOverMs)) << next.output().toStdString();

    next.signal(SIGTERM);
    ASSERT_EQ(next.finish(StartMs), 0) << next.output().toStdString();
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), data);
}
