#include "SyncTestSupport.h"

#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "support/TestEnvironment.h"
#include "sync/CommandLine.h"
#include "sync/SyncArchive.h"
#include "sync/Syncing.h"
#include "sync/SyncingKeys.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QThreadPool>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// What this process moved aside in /tmp to be freed in the background.
QStringList discardedPaths()
{
    const QString pattern = QStringLiteral(".quillory-discard-%1-*").arg(QCoreApplication::applicationPid());
    return QDir(QStringLiteral("/tmp")).entryList({pattern}, QDir::AllEntries | QDir::Hidden | QDir::System);
}

QStringList backupNames()
{
    return QDir(Paths::syncingBackupsFolder())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Name);
}

QStringList members(const QString &archive)
{
    return CommandLine::run(SyncArchive::TarPath, {QStringLiteral("-tf"), archive})
        .output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// Puts an archive where a download leaves it, made with Python's tarfile so that it can hold what
// GNU tar would tidy away when creating: entries are "name", "name|dir", "name|fifo",
// "name|sym|target" or "name|hard|target".
void plantArchive(const QStringList &entries)
{
    static const QString script = QStringLiteral(R"(
import io, sys, tarfile
with tarfile.open(sys.argv[1], "w", format=tarfile.GNU_FORMAT) as archive:
    for entry in sys.argv[2:]:
        name, kind, link = (entry.split("|") + ["", ""])[:3]
        info = tarfile.TarInfo(name)
        if kind == "sym" or kind == "hard":
            info.type = tarfile.SYMTYPE if kind == "sym" else tarfile.LNKTYPE
            info.linkname = link
            archive.addfile(info)
        elif kind == "dir" or kind == "fifo":
            info.type = tarfile.DIRTYPE if kind == "dir" else tarfile.FIFOTYPE
            archive.addfile(info)
        else:
            data = b"from the archive"
            info.size = len(data)
            archive.addfile(info, io.BytesIO(data))
)");
    const auto outcome = CommandLine::run(QStringLiteral("/usr/bin/python3"),
                                          QStringList{QStringLiteral("-c"), script, SyncArchive::ArchivePath} + entries);
    ASSERT_EQ(outcome.exitStatus, 0) << outcome.output.toStdString();
}

const QVariantMap LocalArchive{{SyncingKeys::Method, qint64(SyncingKeys::LocalArchive)}};

} // namespace

TEST_F(SyncTest, MethodAbsentOrZeroDoesNothingAtAll)
{
    writeSampleData(QStringLiteral("local"));
    Syncing engine;
    for (const QVariantMap &settings : {QVariantMap{}, QVariantMap{{SyncingKeys::Method, qint64(0)}}}) {
        writeSettings(settings);
        engine.uploadData();
        engine.downloadData();
    }
    EXPECT_FALSE(QFileInfo::exists(Paths::syncingBackupsFolder()));
    EXPECT_FALSE(SyncArchive::archiveExists());
    EXPECT_TRUE(m_sheet.isEmpty());
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
}

TEST_F(SyncTest, BackupIsNamedAfterNowAndHoldsTheThreeStoreFiles)
{
    writeSampleData(QStringLiteral("local"));
    Syncing engine;
    EXPECT_EQ(Syncing::backupPath(), Paths::syncingBackupsFolder() + QStringLiteral("/2026-11-22 10:30:00 -0500.plist"));
    ASSERT_TRUE(engine.backup());
    EXPECT_EQ(m_sheet, (QStringList{QStringLiteral("hide"), QStringLiteral("show:Backing Up Data...")}));
    const auto backup = PropertyList::readFile(Syncing::backupPath());
    ASSERT_TRUE(backup.has_value());
    const QVariantList lists = backup->toList();
    ASSERT_EQ(lists.size(), 3);
    EXPECT_EQ(lists[0], PropertyList::readFile(Paths::assignmentsFile())->toList());
    EXPECT_EQ(lists[1], PropertyList::readFile(Paths::coursesFile())->toList());
    EXPECT_EQ(lists[2].toList(), QVariantList{QStringLiteral("Essay")});
}

TEST_F(SyncTest, PruneKeepsTwentyEntriesAndEveryEntryCounts)
{
    writeSampleData(QStringLiteral("local"));
    QDir().mkpath(Paths::syncingBackupsFolder());
    for (int day = 1; day <= 20; ++day)
        TestEnvironment::writeFile(
            Paths::syncingBackupsFolder() + QStringLiteral("/2026-10-%1 09:00:00 -0400.plist").arg(day, 2, 10, QLatin1Char('0')),
            "old");
    Syncing engine;
    engine.backup(); // the 21st removes the oldest name
    QStringList names = backupNames();
    ASSERT_EQ(names.size(), 20);
    EXPECT_EQ(names.first(), QStringLiteral("2026-10-02 09:00:00 -0400.plist"));
    EXPECT_EQ(names.last(), QStringLiteral("2026-11-22 10:30:00 -0500.plist"));

    // A stray entry whose name sorts first (even a folder) goes before any dated backup.
    TestEnvironment::writeFile(Paths::syncingBackupsFolder() + QStringLiteral("/.DS_Store"), "x");
    TestEnvironment::writeFile(Paths::syncingBackupsFolder() + QStringLiteral("/.cache/inside"), "x");
    Clock::pin(TestEnvironment::pinnedNow().addSecs(60));
    engine.backup();
    names = backupNames();
    ASSERT_EQ(names.size(), 20);
    EXPECT_FALSE(names.contains(QStringLiteral(".DS_Store")));
    EXPECT_FALSE(names.contains(QStringLiteral(".cache")));
    EXPECT_EQ(names.first(), QStringLiteral("2026-10-03 09:00:00 -0400.plist")) << "two strays and the oldest went";
    EXPECT_EQ(names.last(), QStringLiteral("2026-11-22 10:31:00 -0500.plist"));
}

TEST_F(SyncTest, UploadWithoutTransferPacksTheDataFolderWithoutBackups)
{
    writeSampleData(QStringLiteral("local"));
    writeSettings(LocalArchive);
    Syncing engine;
    engine.uploadData();
    EXPECT_EQ(m_sheet, (QStringList{QStringLiteral("show:Uploading Data..."), QStringLiteral("hide"),
                                    QStringLiteral("show:Backing Up Data..."), QStringLiteral("hide")}));
    ASSERT_TRUE(SyncArchive::archiveExists());
    const QStringList names = members(SyncArchive::ArchivePath);
    EXPECT_TRUE(names.contains(QStringLiteral("tmp/Quillory/Assignments.plist")));
    EXPECT_TRUE(names.contains(QStringLiteral("tmp/Quillory/Attachments/photo one.jpg")));
    for (const QString &name : names) {
        EXPECT_TRUE(name.startsWith(QStringLiteral("tmp/Quillory/"))) << name.toStdString();
        EXPECT_FALSE(name.contains(QStringLiteral("Syncing Backups"))) << name.toStdString();
    }
    EXPECT_EQ(backupNames().size(), 1);
    EXPECT_FALSE(QFileInfo::exists(SyncArchive::StagingFolder)) << "the staging copy is removed";
    // Other users of the computer cannot read the student's data in /tmp.
    struct stat info;
    ASSERT_EQ(::stat("/tmp/Quillory.tar", &info), 0);
    EXPECT_EQ(info.st_mode & 077, 0u);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());

    // The next upload packs afresh; the archive it replaces is freed in the background, leaving nothing,
    // and what an ended run left aside goes too. A child that has exited and been reaped stands for
    // that run: its process number names no process.
    const pid_t ended = ::fork();
    if (ended == 0)
        ::_exit(0);
    ASSERT_GT(ended, 0);
    ASSERT_EQ(::waitpid(ended, nullptr, 0), ended);
    const QString leftover = QStringLiteral("/tmp/.quillory-discard-%1-1").arg(ended);
    QDir().mkpath(leftover + QStringLiteral("/Quillory"));
    TestEnvironment::writeFile(leftover + QStringLiteral("/Quillory/Assignments.plist"), "old");
    writeSampleData(QStringLiteral("later"));
    engine.uploadData();
    ASSERT_TRUE(SyncArchive::archiveExists());
    EXPECT_EQ(members(SyncArchive::ArchivePath), names);
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_EQ(discardedPaths(), QStringList());
    EXPECT_FALSE(QFileInfo::exists(leftover));
}

TEST_F(SyncTest, DownloadWithoutTransferRestoresTheArchiveAndKeepsLocalOnlyFiles)
{
    writeSampleData(QStringLiteral("packed"));
    writeSettings(LocalArchive);
    Syncing engine;
    engine.uploadData();
    const auto packed = snapshot(dataFolder());

    writeSampleData(QStringLiteral("changed later"));
    TestEnvironment::writeFile(dataFolder() + QStringLiteral("/only here.txt"), "mine");
    Clock::pin(TestEnvironment::pinnedNow().addSecs(3600));
    m_sheet.clear();
    engine.downloadData();

    EXPECT_EQ(m_sheet, (QStringList{QStringLiteral("show:Downloading Data..."), QStringLiteral("hide"),
                                    QStringLiteral("show:Backing Up Data..."), QStringLiteral("hide")}));
    auto now = snapshot(dataFolder());
    EXPECT_EQ(now.take(QStringLiteral("only here.txt")), QByteArray("mine"));
    EXPECT_EQ(now, packed);
    // The data the download replaced is in the second backup.
    const QStringList names = backupNames();
    ASSERT_EQ(names.size(), 2);
    const auto second = PropertyList::readFile(Paths::syncingBackupsFolder() + QLatin1Char('/') + names.last());
    ASSERT_TRUE(second.has_value());
    ASSERT_EQ(second->toList().size(), 3);
    const QVariantList assignments = second->toList().first().toList();
    ASSERT_FALSE(assignments.isEmpty());
    EXPECT_TRUE(assignments.first().toMap().value(QStringLiteral("Title")).toString().startsWith(
        QStringLiteral("changed later")));
    EXPECT_FALSE(SyncArchive::archiveExists());
    EXPECT_FALSE(QFileInfo::exists(SyncArchive::UnpackFolder));
    // The archive and the replaced files are freed on a pool thread, which leaves nothing behind.
    QThreadPool::globalInstance()->waitForDone();
    EXPECT_EQ(discardedPaths(), QStringList());
}

TEST_F(SyncTest, SymbolicLinksAtTheTemporaryPathsAreNeverFollowed)
{
    writeSampleData(QStringLiteral("local"));
    writeSettings(LocalArchive);
    QTemporaryDir elsewhere;
    const QString victim = elsewhere.filePath(QStringLiteral("victim.txt"));
    TestEnvironment::writeFile(victim, "precious");

    // Anyone can plant these links, so a refusal asks nothing: it is told once, without blocking,
    // and the sync goes without the step.
    ASSERT_TRUE(QFile::link(victim, QStringLiteral("/tmp/Quillory.tar")));
    Syncing engine;
    engine.uploadData();
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_EQ(m_notices, QStringList{QStringLiteral("Warning: There was a problem syncing your data:\n/tmp/Quillory.tar is "
                                                    "a symbolic link; it was not followed.\n\nThis sync was skipped; "
                                                    "nothing was changed.")});
    EXPECT_EQ(TestEnvironment::readFile(victim), QByteArray("precious"));
    EXPECT_TRUE(QFileInfo(QStringLiteral("/tmp/Quillory.tar")).isSymLink()) << "someone else's link is left alone";

    // A download does not unpack through it either, and the same refusal is not told twice.
    engine.downloadData();
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_EQ(m_notices.size(), 1);
    EXPECT_EQ(TestEnvironment::readFile(victim), QByteArray("precious"));
    QFile::remove(QStringLiteral("/tmp/Quillory.tar"));

    // The staging folder.
    ASSERT_TRUE(QFile::link(elsewhere.path(), QStringLiteral("/tmp/Quillory")));
    engine.uploadData();
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    ASSERT_EQ(m_notices.size(), 2);
    EXPECT_TRUE(m_notices[1].contains(QStringLiteral("/tmp/Quillory is a symbolic link")));
    EXPECT_EQ(QDir(elsewhere.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
              QStringList{QStringLiteral("victim.txt")});
    QFile::remove(QStringLiteral("/tmp/Quillory"));
}

TEST_F(SyncTest, ArchivesWithMembersLeavingTheFolderAreRefusedAndChangeNothing)
{
    writeSampleData(QStringLiteral("local"));
    writeSettings(LocalArchive);
    const auto before = snapshot(dataFolder());
    const QString fine = QStringLiteral("tmp/Quillory/Assignments.plist");
    struct Case {
        QStringList entries; // name[|type|link]
        QString problem;
    };
    const QList<Case> cases{
        {{fine, QStringLiteral("other/file.txt")}, QStringLiteral("a member outside tmp/Quillory/: other/file.txt")},
        {{fine, QStringLiteral("tmp/Quillory/../outside.txt")},
         QStringLiteral("a member outside tmp/Quillory/: tmp/Quillory/../outside.txt")},
        {{QStringLiteral("/tmp/outside.txt")}, QStringLiteral("a member outside tmp/Quillory/: /tmp/outside.txt")},
        {{QStringLiteral("tmp/Quillory/etc|sym|/etc")},
         QStringLiteral("a link pointing outside tmp/Quillory/: tmp/Quillory/etc -> /etc")},
        {{QStringLiteral("tmp/Quillory/sub/up|sym|../../other")},
         QStringLiteral("a link pointing outside tmp/Quillory/: tmp/Quillory/sub/up -> ../../other")},
        // Lexically inside, but "l/l/../.." climbs out for real once l points at "."; no ".." is
        // taken in a link at all.
        {{QStringLiteral("tmp/Quillory/l|sym|."), QStringLiteral("tmp/Quillory/up|sym|l/l/../..")},
         QStringLiteral("a link pointing outside tmp/Quillory/: tmp/Quillory/up -> l/l/../..")},
        {{QStringLiteral("tmp/Quillory/hard|hard|tmp/outside.txt")},
         QStringLiteral("a link pointing outside tmp/Quillory/: tmp/Quillory/hard link to tmp/outside.txt")},
        {{QStringLiteral("tmp/Quillory/pipe|fifo")}, QStringLiteral("a special file: tmp/Quillory/pipe")},
        {{}, QStringLiteral("could not be read")},
    };
    Syncing engine;
    for (const Case &oneCase : cases) {
        SCOPED_TRACE(oneCase.problem.toStdString());
        if (oneCase.entries.isEmpty())
            TestEnvironment::writeFile(SyncArchive::ArchivePath, "this is not a tar archive at all");
        else
            plantArchive(oneCase.entries);
        m_notices.clear();
        engine.downloadData();
        EXPECT_TRUE(Alerts::takeAsked().isEmpty());
        ASSERT_EQ(m_notices.size(), 1);
        EXPECT_TRUE(m_notices[0].startsWith(QStringLiteral("Warning: There was a problem syncing your data:\n")));
        EXPECT_TRUE(m_notices[0].contains(oneCase.problem)) << m_notices[0].toStdString();
        EXPECT_EQ(snapshot(dataFolder()), before);
        EXPECT_FALSE(QFileInfo::exists(QStringLiteral("/tmp/tmp/outside.txt")));
        EXPECT_FALSE(QFileInfo::exists(QStringLiteral("/tmp/outside.txt")));
        EXPECT_FALSE(SyncArchive::archiveExists());
    }
}

TEST_F(SyncTest, LinksInsideTheFolderAreAccepted)
{
    plantArchive({QStringLiteral("tmp/Quillory/|dir"), QStringLiteral("tmp/Quillory/Assignments.plist"),
                  QStringLiteral("tmp/Quillory/alias|sym|Assignments.plist"),
                  QStringLiteral("tmp/Quillory/twin|hard|tmp/Quillory/Assignments.plist")});
    EXPECT_EQ(SyncArchive::checkMembers(SyncArchive::ArchivePath), std::nullopt);
    QString problem;
    ASSERT_TRUE(SyncArchive::uncompress(dataFolder(), &problem)) << problem.toStdString();
    EXPECT_EQ(TestEnvironment::readFile(dataFolder() + QStringLiteral("/Assignments.plist")), "from the archive");
    EXPECT_EQ(TestEnvironment::readFile(dataFolder() + QStringLiteral("/twin")), "from the archive");
    EXPECT_EQ(QFileInfo(dataFolder() + QStringLiteral("/alias")).symLinkTarget(),
              dataFolder() + QStringLiteral("/Assignments.plist"));
}

TEST_F(SyncTest, ADownloadWithoutABackupChangesNothingUnlessTheUserGoesOn)
{
    writeSampleData(QStringLiteral("packed"));
    writeSettings(LocalArchive);
    Syncing engine;
    engine.uploadData();
    const auto packed = snapshot(dataFolder());

    // A store that does not parse cannot be backed up.
    TestEnvironment::writeFile(Paths::assignmentsFile(), "not a property list");
    const auto damaged = snapshot(dataFolder());
    const QString archiveCopy = TestEnvironment::home() + QStringLiteral("/archive.tar");
    ASSERT_TRUE(QFile::copy(SyncArchive::ArchivePath, archiveCopy));

    Alerts::queueAnswer(Syncing::QuitButton);
    engine.downloadData();
    auto asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_TRUE(asked[0].message.startsWith(
        QStringLiteral("There was a problem syncing your data:\nThe automatic backup could not be written: ")))
        << asked[0].message.toStdString();
    EXPECT_TRUE(engine.quitWasChosen());
    EXPECT_EQ(snapshot(dataFolder()), damaged);
    EXPECT_FALSE(SyncArchive::archiveExists());

    ASSERT_TRUE(QFile::copy(archiveCopy, SyncArchive::ArchivePath));
    Alerts::queueAnswer(Syncing::ContinueButton);
    engine.downloadData();
    EXPECT_EQ(Alerts::takeAsked().size(), 1);
    EXPECT_FALSE(engine.quitWasChosen());
    EXPECT_EQ(snapshot(dataFolder()), packed);
}

TEST_F(SyncTest, AnArchiveCannotReplaceTheLocalBackups)
{
    writeSampleData(QStringLiteral("local"));
    writeSettings(LocalArchive);
    Syncing engine;
    engine.backup();
    const auto backups = snapshot(Paths::syncingBackupsFolder());
    plantArchive({QStringLiteral("tmp/Quillory/Assignments.plist"),
                  QStringLiteral("tmp/Quillory/Syncing Backups/2026-11-22 10:30:00 -0500.plist")});
    Clock::pin(TestEnvironment::pinnedNow().addSecs(1));
    engine.downloadData();
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), "from the archive");
    auto now = snapshot(Paths::syncingBackupsFolder());
    EXPECT_EQ(now.size(), 2);
    EXPECT_EQ(now.value(QStringLiteral("2026-11-22 10:30:00 -0500.plist")),
              backups.value(QStringLiteral("2026-11-22 10:30:00 -0500.plist")));
}

TEST_F(SyncTest, DownloadedFilesAndFoldersArePrivateWhateverTheArchiveSays)
{
    writeSampleData(QStringLiteral("local"));
    writeSettings(LocalArchive);
    // Open modes, set-id bits and a stranger's owner, as a server (or someone on it) may send them.
    static const QString script = QStringLiteral(R"(
import io, sys, tarfile
with tarfile.open(sys.argv[1], "w", format=tarfile.GNU_FORMAT) as archive:
    for name, mode in (("tmp/Quillory/", 0o777), ("tmp/Quillory/New Folder/", 0o2777)):
        info = tarfile.TarInfo(name); info.type = tarfile.DIRTYPE; info.mode = mode; info.uid = 4321
        archive.addfile(info)
    for name, mode in (("tmp/Quillory/Assignments.plist", 0o666), ("tmp/Quillory/Courses and Textbooks.plist", 0o777),
                       ("tmp/Quillory/New Folder/tool", 0o4755), ("tmp/Quillory/Attachments/photo one.jpg", 0o1644)):
        data = b"from the archive"
        info = tarfile.TarInfo(name); info.size = len(data); info.mode = mode; info.uid = 4321; info.gid = 4321
        archive.addfile(info, io.BytesIO(data))
)");
    const auto made = CommandLine::run(QStringLiteral("/usr/bin/python3"),
                                       {QStringLiteral("-c"), script, SyncArchive::ArchivePath});
    ASSERT_EQ(made.exitStatus, 0) << made.output.toStdString();

    Syncing engine;
    engine.downloadData();
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    ASSERT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), "from the archive");
    for (const QString &name : {QStringLiteral("Assignments.plist"), QStringLiteral("Courses and Textbooks.plist"),
                                QStringLiteral("New Folder/tool"), QStringLiteral("Attachments/photo one.jpg"),
                                QStringLiteral("New Folder")}) {
        SCOPED_TRACE(name.toStdString());
        struct stat info;
        ASSERT_EQ(::lstat(QFile::encodeName(dataFolder() + QLatin1Char('/') + name).constData(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, S_ISDIR(info.st_mode) ? 0700u : 0600u);
        EXPECT_EQ(info.st_uid, ::geteuid());
    }
}
