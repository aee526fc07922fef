#include "SyncTestSupport.h"

#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/Paths.h"
#include "support/TestEnvironment.h"
#include "sync/AGKeychain.h"
#include "sync/CommandLine.h"
#include "sync/SyncArchive.h"
#include "sync/Syncing.h"
#include "sync/SyncingKeys.h"

#include <QDir>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>

#include <atomic>
#include <mutex>
#include <thread>
#include <unistd.h>

namespace {

using SyncSandbox::setFtpPassword;
using SyncSandbox::FtpPassword;
using SyncSandbox::FtpUser;
const QString Problem = QStringLiteral("There was a problem syncing your data:\n");

// The user's own FTP server, with the password in the keychain as "Internet Password".
class FtpSyncTest : public SyncTest
{
protected:
    void SetUp() override
    {
        SyncTest::SetUp();
        ASSERT_TRUE(sharedKeyring().isRunning());
        QString error;
        ASSERT_TRUE(m_server.start(m_root.path(), FtpUser, FtpPassword, &error)) << error.toStdString();
        setFtpPassword(FtpPassword);
    }
    void TearDown() override
    {
        AGKeychain::deleteKeychainItem(AGKeychain::InternetPasswordItem, AGKeychain::QuilloryKind, FtpUser);
        m_server.stop();
        SyncTest::TearDown();
    }
    QVariantMap ftpSettings(const QString &path) const { return SyncSandbox::ftpSettings(m_server.hostAndPort(), path); }
    QString remote(const QString &relative) const { return m_root.filePath(relative); }
    // A large attachment, so that each transfer lasts long enough to be watched and overlapped.
    static void writeLargeAttachment()
    {
        QByteArray bytes(48 << 20, Qt::Uninitialized);
        QRandomGenerator generator(7);
        generator.fillRange(reinterpret_cast<quint32 *>(bytes.data()), bytes.size() / 4);
        TestEnvironment::writeFile(dataFolder() + QStringLiteral("/Attachments/lecture.mov"), bytes);
    }

    QTemporaryDir m_root;
    LocalServers::FtpServer m_server;
};

} // namespace

TEST_F(FtpSyncTest, RoundTripBetweenTwoHomesThroughAFolderWithBlanks)
{
    for (const QString &folder : {QStringLiteral("planner"), QStringLiteral("my planner")}) {
        SCOPED_TRACE(folder.toStdString());
        QDir(m_root.path()).mkpath(folder);
        writeSampleData(QStringLiteral("first computer ") + folder);
        const QVariantMap settings = ftpSettings(QLatin1Char('/') + folder + QLatin1Char('/'));
        writeSettings(settings);
        Syncing engine;
        engine.uploadData();
        EXPECT_TRUE(Alerts::takeAsked().isEmpty());
        ASSERT_TRUE(QFileInfo::exists(remote(folder + QStringLiteral("/Quillory.tar"))));
        EXPECT_EQ(m_sheet.mid(4, 2), (QStringList{QStringLiteral("show:Uploading Data to FTP Server..."),
                                                 QStringLiteral("hide")}));
        const auto uploaded = snapshot(dataFolder());

        switchToSecondHome();
        writeSampleData(QStringLiteral("second computer"));
        writeSettings(settings);
        m_sheet.clear();
        engine.downloadData();
        EXPECT_TRUE(Alerts::takeAsked().isEmpty());
        EXPECT_EQ(m_sheet, (QStringList{QStringLiteral("show:Downloading Data..."), QStringLiteral("hide"),
                                        QStringLiteral("show:Backing Up Data..."), QStringLiteral("hide"),
                                        QStringLiteral("show:Downloading Data from FTP Server..."),
                                        QStringLiteral("hide")}));
        EXPECT_EQ(snapshot(dataFolder()), uploaded);
        EXPECT_EQ(QDir(Paths::syncingBackupsFolder()).entryList(QDir::Files).size(), 1);
        EXPECT_FALSE(SyncArchive::archiveExists());
        m_sheet.clear();
    }
}

TEST_F(FtpSyncTest, EmptyPathUploadsToTheTopAndItsDownloadFailsWithoutTouchingData)
{
    writeSampleData(QStringLiteral("local"));
    writeSettings(ftpSettings(QString()));
    Syncing engine;
    engine.uploadData();
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_TRUE(QFileInfo::exists(remote(QStringLiteral("Quillory.tar"))));

    const auto before = snapshot(dataFolder());
    engine.downloadData(); // "ftp://127.0.0.1:PORTQuillory.tar" is not a URL curl accepts
    const auto asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked[0].message.startsWith(Problem + QStringLiteral("curl: (3)"))
                || asked[0].message.contains(QStringLiteral("curl:")))
        << asked[0].message.toStdString();
    EXPECT_EQ(snapshot(dataFolder()), before);
}

TEST_F(FtpSyncTest, FailedTransfersShowCurlsMessageAndLeaveLocalDataAloneAndQuitEndsTheSequence)
{
    QDir(m_root.path()).mkpath(QStringLiteral("planner"));
    writeSampleData(QStringLiteral("local"));
    const auto before = snapshot(dataFolder());
    Syncing engine;

    struct Case {
        const char *what;
        QVariantMap settings;
        QString password;
        QString curlMessage;
    };
    QVariantMap closed = ftpSettings(QStringLiteral("/planner/"));
    closed[SyncingKeys::FTPServer] = QStringLiteral("127.0.0.1:") + QString::number(LocalServers::freePort());
    const QList<Case> cases{
        {"wrong password", ftpSettings(QStringLiteral("/planner/")), QStringLiteral("wrong"), QStringLiteral("curl: (67)")},
        {"missing remote file", ftpSettings(QStringLiteral("/planner/")), FtpPassword, QStringLiteral("curl: (78)")},
        {"closed port", closed, FtpPassword, QStringLiteral("curl: (7)")},
    };
    for (const Case &oneCase : cases) {
        SCOPED_TRACE(oneCase.what);
        writeSettings(oneCase.settings);
        setFtpPassword(oneCase.password);
        Alerts::queueAnswer(Syncing::ContinueButton);
        engine.downloadData();
        auto asked = Alerts::takeAsked();
        ASSERT_EQ(asked.size(), 1);
        EXPECT_EQ(asked[0].title, QStringLiteral("Warning"));
        EXPECT_TRUE(asked[0].message.startsWith(Problem)) << asked[0].message.toStdString();
        EXPECT_TRUE(asked[0].message.contains(oneCase.curlMessage)) << asked[0].message.toStdString();
        EXPECT_EQ(asked[0].buttons, (QStringList{QStringLiteral("Quit"), QStringLiteral("Continue")}));
        EXPECT_EQ(snapshot(dataFolder()), before);
        EXPECT_FALSE(SyncArchive::archiveExists());
        EXPECT_FALSE(engine.quitWasChosen());
        EXPECT_EQ(m_sheet.last(), QStringLiteral("hide"));
    }
    // Uploads fail the same way (the wrong password).
    writeSettings(ftpSettings(QStringLiteral("/planner/")));
    setFtpPassword(QStringLiteral("wrong"));
    engine.uploadData();
    const auto asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked[0].message.contains(QStringLiteral("curl: (67)")));
    EXPECT_FALSE(QFileInfo::exists(remote(QStringLiteral("planner/Quillory.tar"))));

    // "Quit" stops the sequence and hands over to the quit path.
    int quits = 0;
    Syncing::setQuitHandler([&] { ++quits; });
    Syncing quitting;
    Alerts::queueAnswer(Syncing::QuitButton);
    quitting.downloadData();
    EXPECT_EQ(quits, 1);
    EXPECT_TRUE(quitting.quitWasChosen());
    EXPECT_EQ(m_sheet.last(), QStringLiteral("hide"));
    EXPECT_FALSE(SyncArchive::archiveExists());
    EXPECT_EQ(snapshot(dataFolder()), before);
}

// Every command line of this process's children while `work` runs, read from /proc as any user of
// the computer can.
static QStringList childCommandLines(const std::function<void()> &work)
{
    std::atomic<bool> done{false};
    std::mutex mutex;
    QSet<QString> seen;
    std::thread watcher([&] {
        const QByteArray self = QByteArray::number(::getpid());
        while (!done) {
            for (const QString &pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
                QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
                if (pid.front() < QLatin1Char('0') || pid.front() > QLatin1Char('9') || !stat.open(QIODevice::ReadOnly))
                    continue;
                const QByteArray fields = stat.readAll();
                const QList<QByteArray> after = fields.mid(fields.lastIndexOf(')') + 2).split(' ');
                if (after.size() < 2 || after[1] != self)
                    continue;
                QFile cmdline(QStringLiteral("/proc/%1/cmdline").arg(pid));
                if (!cmdline.open(QIODevice::ReadOnly))
                    continue;
                QByteArray line = cmdline.readAll();
                line.replace('\0', ' ');
                std::lock_guard lock(mutex);
                seen.insert(QString::fromUtf8(line));
            }
        }
    });
    work();
    done = true;
    watcher.join();
    return QStringList(seen.begin(), seen.end());
}

TEST_F(FtpSyncTest, ThePasswordNeverAppearsOnACommandLineAndAnyPasswordLogsIn)
{
    const QString password = QStringLiteral("pa\"ss wo\\rd 'x' \\\" end");
    QTemporaryDir root;
    LocalServers::FtpServer server;
    QString error;
    ASSERT_TRUE(server.start(root.path(), FtpUser, password, &error)) << error.toStdString();
    QDir(root.path()).mkpath(QStringLiteral("planner"));
    setFtpPassword(password);
    writeSampleData(QStringLiteral("first computer"));
    writeLargeAttachment();
    QVariantMap settings = ftpSettings(QStringLiteral("/planner/"));
    settings[SyncingKeys::FTPServer] = server.hostAndPort();
    writeSettings(settings);
    const auto uploaded = snapshot(dataFolder());

    Syncing engine;
    const QStringList lines = childCommandLines([&] {
        engine.uploadData();
        switchToSecondHome();
        writeSettings(settings);
        engine.downloadData();
    });
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_TRUE(QFileInfo::exists(root.filePath(QStringLiteral("planner/Quillory.tar"))));
    EXPECT_EQ(snapshot(dataFolder()), uploaded);
    int curls = 0;
    for (const QString &line : lines) {
        if (line.contains(QStringLiteral(" -m pyftpdlib ")))
            continue; // the test's own server, told the password the test chose
        curls += line.startsWith(QStringLiteral("/usr/bin/curl ")) ? 1 : 0;
        EXPECT_FALSE(line.contains(password) || line.contains(QStringLiteral("ss wo"))) << line.toStdString();
    }
    EXPECT_GE(curls, 2) << "the transfers were not seen: " << lines.join(QLatin1Char('\n')).toStdString();
}

TEST_F(FtpSyncTest, TheToolbarUploadRunsOnItsOwnThreadOneAtATimeAndAQuitWaitsForIt)
{
    QDir(m_root.path()).mkpath(QStringLiteral("planner"));
    writeSampleData(QStringLiteral("local"));
    writeLargeAttachment();
    writeSettings(ftpSettings(QStringLiteral("/planner/")));
    std::mutex mutex;
    QList<QThread *> threads; // of every sheet shown or hidden, in order
    Syncing::setProgressPresenter({[&](const QString &) {
                                       std::lock_guard lock(mutex);
                                       threads << QThread::currentThread();
                                   },
                                   [&] {
                                       std::lock_guard lock(mutex);
                                       threads << QThread::currentThread();
                                   }});
    Syncing engine;
    QSignalSpy finished(&engine, &Syncing::asynchronousUploadFinished);
    EXPECT_TRUE(engine.syncData());
    // A second click is refused, and says why without blocking.
    EXPECT_FALSE(engine.syncData());
    EXPECT_EQ(m_notices, QStringList{QStringLiteral("Sync in Progress: Your data is already being synced.  Try again "
                                                    "when that sync has finished.")});
    // The quit's upload on the interface thread waits for the toolbar's, then runs on its own.
    EXPECT_TRUE(Syncing::isSyncing());
    engine.uploadData();
    EXPECT_FALSE(Syncing::isSyncing());
    EXPECT_TRUE(finished.count() == 1 || finished.wait(30000));
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());

    {
        std::lock_guard lock(mutex);
        const qsizetype firstOfQuit = threads.indexOf(QThread::currentThread());
        ASSERT_GT(firstOfQuit, 0) << "the toolbar's upload showed its sheets on the interface thread";
        for (qsizetype i = 0; i < threads.size(); ++i)
            EXPECT_EQ(threads[i] == QThread::currentThread(), i >= firstOfQuit) << "sheet event " << i << " overlaps";
    }
    const auto listed = CommandLine::run(QStringLiteral("/usr/bin/tar"),
                                         {QStringLiteral("-tf"), remote(QStringLiteral("planner/Quillory.tar"))});
    EXPECT_EQ(listed.exitStatus, 0) << listed.output.toStdString();
    EXPECT_TRUE(listed.output.contains(QStringLiteral("tmp/Quillory/Attachments/lecture.mov")));

    // A failure's alert is handed to the interface thread while the worker waits for the answer.
    setFtpPassword(QStringLiteral("wrong"));
    Alerts::queueAnswer(Syncing::ContinueButton);
    finished.clear();
    EXPECT_TRUE(engine.syncData());
    ASSERT_TRUE(finished.wait(30000));
    const auto asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked[0].message.contains(QStringLiteral("curl: (67)")));
}
