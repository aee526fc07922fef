#include "TestEnvironment.h"

#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/AssignmentStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QScopeGuard>
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace AssignmentKeys;

// What the store files go through at start-up when they were damaged, made by hand or left behind
// by a program that was killed: nothing is lost, nothing is written that cannot be read back, and
// nothing of the student's is readable by other users.
namespace {

QByteArray fixture(const char *name)
{
    return TestEnvironment::readFile(TestEnvironment::fixture(QStringLiteral("hostile/") + QLatin1String(name)));
}

QString preferencesPath()
{
    return Paths::preferencesFile(UserDefaults::ProgramDomain);
}

int modeOf(const QString &path)
{
    struct stat info;
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return -1;
    return int(info.st_mode & 07777);
}

QStringList entries(const QString &folder)
{
    QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System);
    names.sort();
    return names;
}

qint64 finishedProcessId()
{
    QProcess process;
    process.start(QStringLiteral("/bin/true"), {});
    process.waitForStarted();
    const qint64 pid = process.processId();
    process.waitForFinished();
    return pid;
}

const QByteArray Latin1Store = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<plist version=\"1.0\"><array><dict>"
                               "<key>Name</key><string>R\xE9sum\xE9</string></dict></array></plist>\n";

} // namespace

TEST(StoreFileSafety, ExpandingSharedReferencesLeaveTheFilesByteForByte)
{
    const QByteArray bomb = fixture("reference-bomb-store.plist");
    ASSERT_FALSE(bomb.isEmpty());
    TestEnvironment::writeFile(Paths::assignmentsFile(), bomb);
    AssignmentStore store;
    store.repairAtStartup();
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), bomb);
    QString error;
    EXPECT_FALSE(store.load(&error));
    EXPECT_TRUE(error.contains(QStringLiteral("expand"))) << error.toStdString();
    EXPECT_FALSE(store.save({}));
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), bomb);

    // The preferences read as empty, and the first change keeps the original aside unchanged.
    const QByteArray preferencesBomb = fixture("reference-bomb-preferences.plist");
    TestEnvironment::writeFile(preferencesPath(), preferencesBomb);
    UserDefaults defaults;
    EXPECT_TRUE(defaults.all().isEmpty());
    defaults.set(QStringLiteral("Last Startup"), QStringLiteral("now"));
    EXPECT_EQ(TestEnvironment::readFile(preferencesPath() + QStringLiteral(".damaged")), preferencesBomb);
    EXPECT_LT(QFileInfo(preferencesPath()).size(), 4096);
}

TEST(StoreFileSafety, AStoreWithADateNoReaderTakesBackIsLeftAsItCame)
{
    const QByteArray store = fixture("far-date-store.plist");
    ASSERT_FALSE(store.isEmpty());
    TestEnvironment::writeFile(Paths::assignmentsFile(), store);
    AssignmentStore().repairAtStartup();
    AssignmentStore().repairAtStartup();
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), store);
}

TEST(StoreFileSafety, RepairKeepsTheOriginalOnceWhenItWouldChangeText)
{
    // A declared Latin-1 file is read as what it says: nothing changes, so no copy is needed.
    TestEnvironment::writeFile(Paths::assignmentsFile(), Latin1Store);
    AssignmentStore().repairAtStartup();
    auto records = AssignmentStore::readFile(Paths::assignmentsFile());
    ASSERT_TRUE(records);
    EXPECT_EQ(records->value(0).toMap().value(Name).toString(), QStringLiteral("Résumé"));
    const QString copy = Paths::assignmentsFile() + QStringLiteral(".before-repair");
    EXPECT_FALSE(QFileInfo::exists(copy));

    // The same bytes in a file that claims UTF-8 cannot be decoded: the original is kept beside
    // the repaired file, once.
    QByteArray undecodable = Latin1Store;
    undecodable.replace("ISO-8859-1", "UTF-8");
    TestEnvironment::writeFile(Paths::assignmentsFile(), undecodable);
    AssignmentStore().repairAtStartup();
    EXPECT_EQ(TestEnvironment::readFile(copy), undecodable);
    EXPECT_EQ(modeOf(copy), 0600);
    records = AssignmentStore::readFile(Paths::assignmentsFile());
    ASSERT_TRUE(records);
    EXPECT_TRUE(records->value(0).toMap().contains(DateCreated));

    QByteArray later = undecodable;
    later.replace("R\xE9sum\xE9", "Caf\xE9");
    TestEnvironment::writeFile(Paths::assignmentsFile(), later);
    AssignmentStore().repairAtStartup();
    EXPECT_EQ(TestEnvironment::readFile(copy), undecodable);
}

TEST(StoreFileSafety, TemporaryFilesOfProgramsThatDiedAreRemovedAtStartUp)
{
    QDir().mkpath(Paths::dataFolder());
    const QString folder = Paths::dataFolder() + QLatin1Char('/');
    const QString dead = QStringLiteral(".Assignments.plist.quillory-tmp-%1-a1B2c3").arg(finishedProcessId());
    const QString alive = QStringLiteral(".Assignments.plist.quillory-tmp-%1-x9Y8z7").arg(::getppid());
    const QString deadCourses = QStringLiteral(".Courses and Textbooks.plist.quillory-tmp-%1-Qq0000").arg(finishedProcessId());
    const QString foreign = QStringLiteral("Assignments.plist.mine");
    for (const QString &name : {dead, alive, deadCourses, foreign})
        TestEnvironment::writeFile(folder + name, "partial");
    const QString preferences = Paths::preferencesFolder() + QLatin1Char('/');
    const QString deadBeforeStart = QStringLiteral(".com.brevandt.Quillory.plist.quillory-tmp-%1-Zz9Zz9").arg(finishedProcessId());
    TestEnvironment::writeFile(preferences + deadBeforeStart, "partial");

    AssignmentStore store;
    store.repairAtStartup();
    EXPECT_FALSE(QFileInfo::exists(preferences + deadBeforeStart));
    ASSERT_TRUE(store.load());
    ASSERT_TRUE(store.save({Assignments::make({{Name, QStringLiteral("Essay")}})}));
    EXPECT_EQ(entries(Paths::dataFolder()), (QStringList{alive, QStringLiteral("Assignments.plist"), foreign}));

    // The preferences store sweeps its folder of ours the same way, and only of ours.
    const QString deadPreferences = QStringLiteral(".com.brevandt.Quillory.plist.quillory-tmp-%1-AbCdEf").arg(finishedProcessId());
    const QString otherProgram = QStringLiteral(".org.other.plist.tmp-1-AbCdEf");
    TestEnvironment::writeFile(preferences + deadPreferences, "partial");
    TestEnvironment::writeFile(preferences + otherProgram, "theirs");
    UserDefaults().set(QStringLiteral("Key"), QStringLiteral("value"));
    EXPECT_EQ(entries(Paths::preferencesFolder()), (QStringList{otherProgram, QStringLiteral("com.brevandt.Quillory.plist")}));
}

TEST(StoreFileSafety, TheDataFolderAndEveryFileWrittenArePrivateWhateverTheUmask)
{
    const mode_t previous = ::umask(0);
    const auto restore = qScopeGuard([previous] { ::umask(previous); });

    AssignmentStore store;
    store.repairAtStartup();
    EXPECT_EQ(modeOf(Paths::dataFolder()), 0700);
    EXPECT_EQ(modeOf(Paths::assignmentsFile()), 0600);

    // A file that was readable by others becomes private when it is next written.
    ::chmod(QFile::encodeName(Paths::assignmentsFile()).constData(), 0644);
    ASSERT_TRUE(store.load());
    ASSERT_TRUE(store.save({}));
    EXPECT_EQ(modeOf(Paths::assignmentsFile()), 0600);
    ASSERT_TRUE(AssignmentStore::writeFile(Paths::coursesFile(), {}));
    EXPECT_EQ(modeOf(Paths::coursesFile()), 0600);

    UserDefaults().set(QStringLiteral("Key"), QStringLiteral("value"));
    EXPECT_EQ(modeOf(preferencesPath()), 0600);
    EXPECT_EQ(modeOf(Paths::preferencesFolder()), 0700);
}
