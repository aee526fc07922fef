#include "ProgramProcess.h"

#include "support/SyncSandbox.h"

#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"
#include "sync/CommandLine.h"
#include "sync/SyncArchive.h"
#include "sync/SyncingKeys.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>

// The real program, started with a sync set up, told to quit (SIGTERM, as a logout does) while it
// waits at a question or works through its quit path. It must always end promptly, and a start
// that did not finish must never upload.
namespace {

using SyncSandbox::FtpPassword;
using SyncSandbox::FtpUser;

// How long a quit may take at most once asked for; a program held at a question would take forever.
constexpr int PromptMs = 15000;

class QuitDuringSync : public testing::Test
{
protected:
    void SetUp() override
    {
        // The program uses the fixed paths below /tmp, as the sync tests do: one at a time.
        ASSERT_NO_FATAL_FAILURE(m_paths.take());
        ASSERT_TRUE(sharedKeyring().isRunning());
        ASSERT_NO_FATAL_FAILURE(SyncSandbox::setFtpPassword(FtpPassword));
        QDir(m_root.path()).mkpath(QStringLiteral("planner"));
        QString error;
        ASSERT_TRUE(m_server.start(m_root.path(), FtpUser, FtpPassword, &error)) << error.toStdString();
        QDir().mkpath(Paths::dataFolder());
        ASSERT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(),
                                            QVariantList{QVariantMap{{QStringLiteral("Name"), QStringLiteral("Essay")}}}));
    }
    void TearDown() override
    {
        if (m_program.state() != QProcess::NotRunning) {
            m_program.kill();
            m_program.waitForFinished(5000);
        }
        m_server.stop();
        m_paths.release();
    }

    void useServer(const QString &host)
    {
        UserDefaults::dropCaches();
        UserDefaults().set(SyncingKeys::Group, SyncSandbox::ftpSettings(host, QStringLiteral("/planner/")));
    }
    // An archive on the server for the start-up's download, laid out as the program packs one.
    void putArchiveOnServer()
    {
        QTemporaryDir staging;
        const QString folder = staging.filePath(QStringLiteral("tmp/Quillory"));
        QDir().mkpath(folder);
        ASSERT_TRUE(PropertyList::writeFile(folder + QStringLiteral("/Assignments.plist"),
                                            QVariantList{QVariantMap{{QStringLiteral("Name"), QStringLiteral("From the server")}}}));
        const auto tar = CommandLine::run(QStringLiteral("/usr/bin/tar"),
                                          {QStringLiteral("-cf"), remoteArchive(), QStringLiteral("-C"), staging.path(),
                                           QStringLiteral("tmp/Quillory")});
        ASSERT_EQ(tar.exitStatus, 0) << tar.output.toStdString();
    }
    QString remoteArchive() const { return m_root.filePath(QStringLiteral("planner/Quillory.tar")); }

    void start()
    {
        m_program.setProcessEnvironment(ProgramProcess::environment());
        m_program.setProcessChannelMode(QProcess::MergedChannels);
        m_log.clear();
        m_program.start(QStringLiteral(QUILLORY_PROGRAM_PATH), QStringList());
        ASSERT_TRUE(m_program.waitForStarted());
    }
    bool waitFor(const std::function<bool()> &condition, int milliseconds)
    {
        QDeadlineTimer deadline(milliseconds);
        while (!deadline.hasExpired()) {
            m_program.waitForReadyRead(50);
            m_log += m_program.readAll();
            if (condition())
                return true;
            if (m_program.state() == QProcess::NotRunning)
                break;
        }
        m_log += m_program.readAll();
        return condition();
    }
    bool waitForLog(const QString &text) { return waitFor([&] { return logged(text) > 0; }, 60000); }
    qsizetype logged(const QString &text) const { return QString::fromUtf8(m_log).count(text); }
    static bool started()
    {
        UserDefaults::dropCaches();
        return UserDefaults().all().contains(PreferenceKeys::LastStartup);
    }
    // SIGTERM, then the quit must be over within PromptMs, ended normally.
    void terminateAndExpectPromptExit()
    {
        ::kill(pid_t(m_program.processId()), SIGTERM);
        const bool ended = waitFor([&] { return m_program.state() == QProcess::NotRunning; }, PromptMs);
        ASSERT_TRUE(ended) << "still running after SIGTERM; log:\n" << m_log.toStdString();
        EXPECT_EQ(m_program.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(m_program.exitCode(), 0);
        EXPECT_EQ(logged(QStringLiteral("Quitting on signal 15")), 1);
    }

    SyncSandbox::PathsLock m_paths;
    QTemporaryDir m_root;
    LocalServers::FtpServer m_server;
    QProcess m_program;
    QByteArray m_log;
};

} // namespace

TEST_F(QuitDuringSync, ASignalAtTheStartUpWarningEndsTheProgramAndTheUnfinishedStartUploadsNothing)
{
    // The download fails (no archive on the server yet): the Warning asks "Quit" or "Continue".
    useServer(m_server.hostAndPort());
    const QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());
    start();
    ASSERT_TRUE(waitForLog(QStringLiteral("Asking: Warning There was a problem syncing your data:"))) << m_log.toStdString();
    terminateAndExpectPromptExit();
    EXPECT_FALSE(started()) << "the start-up went on past the download";
    EXPECT_FALSE(QFileInfo::exists(remoteArchive())) << "this computer's data went over the server's";
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);
}

TEST_F(QuitDuringSync, APlantedLinkIsToldOnceWithoutBlockingAndTheStartGoesOn)
{
    QTemporaryDir elsewhere;
    const QString victim = elsewhere.filePath(QStringLiteral("victim.txt"));
    TestEnvironment::writeFile(victim, "precious");
    ASSERT_TRUE(QFile::link(victim, SyncArchive::ArchivePath));
    putArchiveOnServer();
    const QByteArray onServer = TestEnvironment::readFile(remoteArchive());
    useServer(m_server.hostAndPort());
    start();
    ASSERT_TRUE(waitFor(started, 60000)) << "the start-up is held; log:\n" << m_log.toStdString();
    terminateAndExpectPromptExit();
    const QString refusal = QStringLiteral("/tmp/Quillory.tar is a symbolic link; it was not followed.");
    EXPECT_EQ(logged(refusal), 1) << m_log.toStdString();
    EXPECT_EQ(logged(QStringLiteral("Asking:")), 0) << m_log.toStdString();
    EXPECT_EQ(TestEnvironment::readFile(victim), "precious");
    EXPECT_EQ(TestEnvironment::readFile(remoteArchive()), onServer) << "the quit sent nothing through the link";
    EXPECT_TRUE(QFileInfo(SyncArchive::ArchivePath).isSymLink());
}

TEST_F(QuitDuringSync, TheQuitUploadsOnASignalAndAFailureThenAsksNothing)
{
    putArchiveOnServer();
    const QByteArray onServer = TestEnvironment::readFile(remoteArchive());
    useServer(m_server.hostAndPort());

    // A start that completed: the quit uploads.
    start();
    ASSERT_TRUE(waitFor(started, 60000)) << m_log.toStdString();
    terminateAndExpectPromptExit();
    const QByteArray uploaded = TestEnvironment::readFile(remoteArchive());
    EXPECT_NE(uploaded, onServer);
    const auto members = CommandLine::run(QStringLiteral("/usr/bin/tar"), {QStringLiteral("-tf"), remoteArchive()});
    EXPECT_TRUE(members.output.contains(QStringLiteral("tmp/Quillory/Assignments.plist"))) << members.output.toStdString();

    // The server is gone by the time of the quit: the failure's Warning would wait for an answer
    // nobody gives. The quit goes on without asking.
    UserDefaults::dropCaches();
    UserDefaults().remove(PreferenceKeys::LastStartup);
    ASSERT_FALSE(started());
    start();
    ASSERT_TRUE(waitFor(started, 60000)) << m_log.toStdString();
    m_server.stop();
    terminateAndExpectPromptExit();
    EXPECT_EQ(logged(QStringLiteral("Asking:")), 0) << m_log.toStdString();
    EXPECT_EQ(logged(QStringLiteral("Not asked while quitting: \"Warning\"")), 1) << m_log.toStdString();
}
