#include "exchange/AutomaticBackups.h"
#include "exchange/Backup.h"
#include "exchange/RecordMatch.h"
#include "platform/Alerts.h"
#include "platform/FilePanels.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"
#include "support/BinaryPlists.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSignalSpy>
#include <gtest/gtest.h>

namespace {

const QString Stamp = QStringLiteral("2026-11-22 10:30:00 -0500"); // the pinned clock, stored form

QVariantMap assignment(const QString &name, const QString &updated, const QString &notes = {})
{
    QVariantMap record{{"Name", name},
                       {"Date", "2026-12-01 00:00:00 -0500"},
                       {"Completed", false},
                       {"Priority", 1.0},
                       {"Date Created", 1700000000.5},
                       {"Date Updated", updated}};
    if (!notes.isEmpty())
        record.insert("Notes", notes);
    return record;
}

QVariantMap course(const QString &name)
{
    return {{"Type", "Course"}, {"Name", name}};
}

void writeList(const QString &path, const QVariantList &list)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    ASSERT_TRUE(PropertyList::writeFile(path, list));
}

QVariantList readList(const QString &path)
{
    const auto parsed = PropertyList::readFile(path);
    EXPECT_TRUE(parsed.has_value()) << path.toStdString();
    return parsed ? parsed->toList() : QVariantList();
}

void writeData(const QVariantList &assignments, const QVariantList &courses, const QVariantList &types)
{
    writeList(Paths::assignmentsFile(), assignments);
    writeList(Paths::coursesFile(), courses);
    writeList(Paths::universalTypesFile(), types);
}

QString writeBackup(const QVariantList &assignments, const QVariantList &courses, const QVariantList &types)
{
    const QString path = TestEnvironment::home() + QStringLiteral("/Quillory Backup");
    writeList(path, {QVariant(assignments), QVariant(courses), QVariant(types)});
    return path;
}

struct Snapshot {
    QByteArray assignments, courses, types;
    bool operator==(const Snapshot &) const = default;
};

Snapshot snapshot()
{
    return {TestEnvironment::readFile(Paths::assignmentsFile()), TestEnvironment::readFile(Paths::coursesFile()),
            TestEnvironment::readFile(Paths::universalTypesFile())};
}

QVariantMap withUpdated(QVariantMap record, const QString &updated)
{
    record.insert("Date Updated", updated);
    return record;
}

} // namespace

TEST(BackupExport, WritesTheThreeDataFilesAsOneArrayAndEmptyListsForMissingFiles)
{
    const QVariantList assignments = {assignment("Essay", "2026-11-01 09:00:00 -0400")};
    writeList(Paths::assignmentsFile(), assignments);
    writeList(Paths::coursesFile(), {course("Math")});
    ASSERT_FALSE(QFileInfo::exists(Paths::universalTypesFile()));

    const QString path = TestEnvironment::home() + QStringLiteral("/out/backup.plist");
    QDir().mkpath(QFileInfo(path).absolutePath());
    ASSERT_TRUE(Backup::sharedController()->exportBackupToFile(path));
    const QVariantList root = readList(path);
    ASSERT_EQ(root.size(), 3);
    EXPECT_EQ(root.at(0).toList(), assignments);
    EXPECT_EQ(root.at(1).toList(), QVariantList{course("Math")});
    EXPECT_EQ(root.at(2).typeId(), QMetaType::QVariantList);
    EXPECT_TRUE(root.at(2).toList().isEmpty());
    // A real stays a real through the backup, so a later merge compares like with like.
    EXPECT_EQ(root.at(0).toList().at(0).toMap().value("Priority").typeId(), QMetaType::Double);
}

// The file manager knows a backup by the bytes the desktop's MIME type for it looks for (it has no
// extension to go by): every backup we write carries them where the type says, a data file never does.
TEST(BackupExport, StartsWithTheBytesItsFileTypeIsKnownBy)
{
    QFile types(QStringLiteral(QUILLORY_TEST_DATA_DIR "/../../resources/desktop/com.brevandt.Quillory.mime.xml"));
    ASSERT_TRUE(types.open(QIODevice::ReadOnly));
    const QRegularExpressionMatch match
        = QRegularExpression(QStringLiteral("<match type=\"string\" value=\"([^\"]*)\" offset=\"0:(\\d+)\"/>"))
              .match(QString::fromUtf8(types.readAll()));
    ASSERT_TRUE(match.hasMatch());
    QByteArray magic = match.captured(1).toUtf8();
    magic.replace("&lt;", "<").replace("&gt;", ">").replace("&quot;", "\"").replace("\\n", "\n").replace("\\t", "\t");
    const qsizetype last = match.captured(2).toLongLong();

    const QString path = TestEnvironment::home() + QStringLiteral("/Quillory Backup");
    for (const QVariantList &assignments : {QVariantList{}, QVariantList{assignment("Essay", Stamp)}}) {
        writeList(Paths::assignmentsFile(), assignments);
        ASSERT_TRUE(Backup::sharedController()->exportBackupToFile(path));
        const qsizetype at = TestEnvironment::readFile(path).indexOf(magic);
        EXPECT_GE(at, 0) << magic.constData();
        EXPECT_LE(at, last);
        EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()).indexOf(magic), -1);
    }
}

TEST(BackupExport, NestsEachDataFileAsItIsAndReadsBackAsTheParsedLists)
{
    const QVariantList assignments = {assignment("Essay", "2026-11-01 09:00:00 -0400", "a < b & \"c\""),
                                      assignment("Ölfarben ✓", "2026-11-02 09:00:00 -0400")};
    writeList(Paths::assignmentsFile(), assignments);
    // Written by another hand: no DOCTYPE, single quotes, a comment and odd blanks inside.
    const QByteArray courses = "<?xml version='1.0' encoding='utf-8'?>\n<plist version=\"1.0\">"
                               "<array >\r\n <!-- kept -->\n\t\t<dict><key>Type</key><string>Course</string>"
                               "<key>Name</key>   <string>Math</string></dict></array>\n</plist>\n\n";
    TestEnvironment::writeFile(Paths::coursesFile(), courses);
    // Binary: nothing to nest, so the list is written out again. An array holding "Math".
    TestEnvironment::writeFile(Paths::universalTypesFile(),
                               BinaryPlists::fromObjects({QByteArray("\xA1\x01", 2), QByteArray("\x54Math")}));

    const QString path = TestEnvironment::home() + QStringLiteral("/backup.plist");
    QString error;
    ASSERT_TRUE(Backup::sharedController()->exportBackupToFile(path, &error)) << error.toStdString();
    const QByteArray written = TestEnvironment::readFile(path);
    const QByteArray own = TestEnvironment::readFile(Paths::assignmentsFile());
    const qsizetype from = own.indexOf("<array>"), to = own.lastIndexOf("</array>") + 8;
    EXPECT_TRUE(written.contains(own.mid(from, to - from)));
    EXPECT_TRUE(written.contains("<!-- kept -->"));
    EXPECT_TRUE(written.startsWith(PropertyList::documentHeader()));
    const QVariantList expected = {PropertyList::parse(own)->toList(), PropertyList::parse(courses)->toList(),
                                   QVariantList{QStringLiteral("Math")}};
    EXPECT_EQ(readList(path), expected);

    // A DOCTYPE with an internal subset is not carried into the backup; the list is written anew.
    const QByteArray withSubset = "<?xml version=\"1.0\"?><!DOCTYPE plist [ <!ELEMENT plist ANY> ]>"
                                  "<plist><array><string>Lab</string></array></plist>";
    TestEnvironment::writeFile(Paths::coursesFile(), withSubset);
    ASSERT_TRUE(Backup::sharedController()->exportBackupToFile(path, &error)) << error.toStdString();
    EXPECT_FALSE(TestEnvironment::readFile(path).contains("ELEMENT"));
    EXPECT_EQ(readList(path).value(1).toList(), QVariantList{QStringLiteral("Lab")});

    // A document that is the right shape outside but broken inside stops the backup as before.
    TestEnvironment::writeFile(Paths::coursesFile(), "<plist><array><string>Lab</array></plist>");
    EXPECT_FALSE(Backup::sharedController()->exportBackupToFile(path, &error));
    EXPECT_TRUE(error.contains(Paths::coursesFile())) << error.toStdString();
    // So does an empty one: it holds no list at all.
    TestEnvironment::writeFile(Paths::coursesFile(), QByteArray());
    EXPECT_FALSE(Backup::sharedController()->exportBackupToFile(path, &error));
    EXPECT_EQ(readList(path).value(1).toList(), QVariantList{QStringLiteral("Lab")}) << "the last good backup stays";
}

TEST(BackupExport, RefusesToBackUpADataFileItCannotRead)
{
    TestEnvironment::writeFile(Paths::assignmentsFile(), "this is not a property list");
    const QString path = TestEnvironment::home() + QStringLiteral("/backup");
    QString error;
    EXPECT_FALSE(Backup::sharedController()->exportBackupToFile(path, &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(QFileInfo::exists(path));
}

TEST(BackupExport, SavePanelProposesTheNameAndCancelWritesNothing)
{
    writeData({assignment("Essay", Stamp)}, {}, {});
    FilePanels::queueAnswer(QString());
    Backup::sharedController()->exportToBackup();
    EXPECT_EQ(QDir(TestEnvironment::home()).entryList(QDir::Files).size(), 0);

    const QString chosen = TestEnvironment::home() + QStringLiteral("/Quillory Backup");
    FilePanels::queueAnswer(chosen);
    Backup::sharedController()->exportToBackup();
    EXPECT_EQ(readList(chosen).size(), 3);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
}

TEST(BackupImport, CancelInThePanelOrTheFirstAlertLeavesEveryFileUntouched)
{
    writeData({assignment("Essay", "2026-01-01 00:00:00 -0500")}, {course("Math")}, {"Quiz"});
    const QString backup = writeBackup({assignment("Other", Stamp)}, {}, {});
    const Snapshot before = snapshot();
    Backup *b = Backup::sharedController();
    QSignalSpy reloads(b, &Backup::dataFilesReplaced);

    FilePanels::queueAnswer(QString());
    EXPECT_EQ(b->importFromBackup(), Backup::ImportOutcome::Cancelled);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());

    FilePanels::queueAnswer(backup);
    Alerts::queueAnswer(Backup::CancelButton);
    EXPECT_EQ(b->importFromBackup(), Backup::ImportOutcome::Cancelled);
    const auto asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked.at(0).message, "Import from Backup");
    EXPECT_EQ(asked.at(0).informativeText,
              "Would you like to replace all old data with the backed up data, or would you rather merge the data "
              "into Quillory?");
    EXPECT_EQ(asked.at(0).buttons, (QStringList{"Merge", "Replace", "Cancel"}));
    EXPECT_EQ(asked.at(0).style, Alerts::Style::Warning);

    // A dismissed alert is a cancel too.
    Alerts::queueAnswer(QString());
    EXPECT_EQ(b->importFromFile(backup), Backup::ImportOutcome::Cancelled);

    EXPECT_EQ(snapshot(), before);
    EXPECT_EQ(reloads.count(), 0);
}

TEST(BackupImport, ReplaceWritesTheBackupListsAsTheyAre)
{
    writeData({assignment("Old", Stamp)}, {course("Old Course")}, {"Old Type"});
    const QVariantList assignments = {assignment("New", "2025-05-05 05:05:05 -0400")};
    const QString backup = writeBackup(assignments, {course("New Course")}, {"Lab"});
    QSignalSpy reloads(Backup::sharedController(), &Backup::dataFilesReplaced);
    Alerts::queueAnswer(Backup::ReplaceButton);
    EXPECT_EQ(Backup::sharedController()->importFromFile(backup), Backup::ImportOutcome::Replaced);
    EXPECT_EQ(readList(Paths::assignmentsFile()), assignments); // "Date Updated" kept as it was
    EXPECT_EQ(readList(Paths::coursesFile()), QVariantList{course("New Course")});
    EXPECT_EQ(readList(Paths::universalTypesFile()), QVariantList{"Lab"});
    EXPECT_EQ(reloads.count(), 1);
    // Nothing of the staging is left in the data folder.
    EXPECT_EQ(QDir(Paths::dataFolder()).entryList(QDir::Files | QDir::NoDotAndDotDot).size(), 3);
}

TEST(BackupImport, MergeOfEqualDataAsksOnceAndKeepsOneOrBothCopies)
{
    const QVariantList data = {assignment("A", "2026-01-01 00:00:00 -0500"), assignment("B", "2026-01-02 00:00:00 -0500"),
                               assignment("C", "2026-01-03 00:00:00 -0500")};
    writeData(data, {course("Math")}, {"Quiz"});
    const QString backup = writeBackup(data, {course("Math")}, {"Quiz"});

    Alerts::queueAnswer(Backup::MergeButton);
    Alerts::queueAnswer(Backup::KeepOnlyOneButton);
    EXPECT_EQ(Backup::sharedController()->importFromFile(backup), Backup::ImportOutcome::Merged);
    const auto asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 2);
    EXPECT_EQ(asked.at(1).message, "Duplicate Assignments");
    EXPECT_EQ(asked.at(1).informativeText,
              "The backup data contains one or more assignments which already exist in Quillory.  Would you like to "
              "keep both copies of the assignments, or just one copy?");
    EXPECT_EQ(asked.at(1).buttons, (QStringList{"Keep Only One", "Keep Both"}));

    // Only one: the backup's copies, dated now.
    const QVariantList merged = readList(Paths::assignmentsFile());
    ASSERT_EQ(merged.size(), 3);
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(merged.at(i).toMap(), withUpdated(data.at(i).toMap(), Stamp));
    EXPECT_EQ(readList(Paths::coursesFile()), QVariantList{course("Math")});
    EXPECT_EQ(readList(Paths::universalTypesFile()), QVariantList{"Quiz"});

    // Both: the backup's copies dated now, then the current ones unchanged.
    writeData(data, {}, {});
    Alerts::queueAnswer(Backup::MergeButton);
    Alerts::queueAnswer(Backup::KeepBothButton);
    Backup::sharedController()->importFromFile(backup);
    EXPECT_EQ(Alerts::takeAsked().size(), 2);
    const QVariantList both = readList(Paths::assignmentsFile());
    ASSERT_EQ(both.size(), 6);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(both.at(i).toMap(), withUpdated(data.at(i).toMap(), Stamp));
        EXPECT_EQ(both.at(i + 3), data.at(i));
    }

    // The question speaks the user's own word for an assignment.
    UserDefaults().set(PreferenceKeys::Labels, QVariantMap{{"Assignment", "Task"}});
    Alerts::queueAnswer(Backup::MergeButton);
    Alerts::queueAnswer(Backup::KeepOnlyOneButton);
    Backup::sharedController()->importFromFile(backup);
    const auto relabelled = Alerts::takeAsked();
    ASSERT_EQ(relabelled.size(), 2);
    EXPECT_EQ(relabelled.at(1).message, "Duplicate Tasks");
    EXPECT_EQ(relabelled.at(1).informativeText,
              "The backup data contains one or more tasks which already exist in Quillory.  Would you like to keep "
              "both copies of the tasks, or just one copy?");
}

TEST(BackupImport, DateUpdatedAloneDoesNotMakeADifferenceButNotesDo)
{
    const QVariantMap current = assignment("Essay", "2026-03-03 03:03:03 -0500", "draft");
    const QVariantMap sameButUpdated = assignment("Essay", "2020-01-01 00:00:00 -0500", "draft");
    writeData({current}, {}, {});

    Alerts::queueAnswer(Backup::MergeButton);
    Alerts::queueAnswer(Backup::KeepOnlyOneButton);
    Backup::sharedController()->importFromFile(writeBackup({sameButUpdated}, {}, {}));
    EXPECT_EQ(Alerts::takeAsked().size(), 2);
    EXPECT_EQ(readList(Paths::assignmentsFile()), QVariantList{withUpdated(sameButUpdated, Stamp)});

    const QVariantMap changedNotes = assignment("Essay", "2020-01-01 00:00:00 -0500", "final");
    writeData({current}, {}, {});
    Alerts::queueAnswer(Backup::MergeButton);
    Backup::sharedController()->importFromFile(writeBackup({changedNotes}, {}, {}));
    EXPECT_EQ(Alerts::takeAsked().size(), 1); // no duplicate question
    EXPECT_EQ(readList(Paths::assignmentsFile()), (QVariantList{withUpdated(changedNotes, Stamp), current}));
}

TEST(BackupImport, CoursesAndTypesAreAppendedOnlyWhenAbsent)
{
    writeData({}, {course("Math"), course("History")}, {"Quiz", "Essay"});
    const QString backup = writeBackup({}, {course("Biology"), course("Math")}, {"Essay", "Lab"});
    Alerts::queueAnswer(Backup::MergeButton);
    Backup::sharedController()->importFromFile(backup);
    EXPECT_EQ(Alerts::takeAsked().size(), 1);
    EXPECT_EQ(readList(Paths::coursesFile()), (QVariantList{course("Biology"), course("Math"), course("History")}));
    EXPECT_EQ(readList(Paths::universalTypesFile()), (QVariantList{"Essay", "Lab", "Quiz"}));
}

TEST(BackupImport, FewerThanThreeListsOrAMissingFileStopsAfterTheQuestionWithNothingWritten)
{
    writeData({assignment("A", Stamp)}, {course("Math")}, {"Quiz"});
    const Snapshot before = snapshot();
    const QString shortBackup = TestEnvironment::home() + QStringLiteral("/short");
    writeList(shortBackup, {QVariant(QVariantList{}), QVariant(QVariantList{})});
    const QString notLists = TestEnvironment::home() + QStringLiteral("/strings");
    writeList(notLists, {"a", "b", "c"});

    for (const QString &path : {shortBackup, notLists, TestEnvironment::home() + QStringLiteral("/missing")}) {
        for (const QString &answer : {Backup::ReplaceButton, Backup::MergeButton}) {
            Alerts::queueAnswer(answer);
            EXPECT_EQ(Backup::sharedController()->importFromFile(path), Backup::ImportOutcome::NotABackup)
                << path.toStdString();
            EXPECT_EQ(Alerts::takeAsked().size(), 1);
        }
    }
    EXPECT_EQ(snapshot(), before);
}

TEST(BackupImport, UnreadableCurrentDataIsNeverLost)
{
    TestEnvironment::writeFile(Paths::assignmentsFile(), "<plist><array><dict>broken");
    writeList(Paths::coursesFile(), {course("Math")});
    const QString backup = writeBackup({assignment("New", Stamp)}, {}, {});
    const Snapshot before = snapshot();

    Alerts::queueAnswer(Backup::MergeButton);
    EXPECT_EQ(Backup::sharedController()->importFromFile(backup), Backup::ImportOutcome::DataUnreadable);
    const auto asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 2);
    EXPECT_EQ(asked.at(1).message, Backup::DataUnreadableMessage);
    EXPECT_EQ(snapshot(), before);

    // Replacing is what a restore is for; the damaged file is kept beside it first.
    Alerts::queueAnswer(Backup::ReplaceButton);
    EXPECT_EQ(Backup::sharedController()->importFromFile(backup), Backup::ImportOutcome::Replaced);
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile() + ".damaged"), before.assignments);
    EXPECT_EQ(readList(Paths::assignmentsFile()).size(), 1);
}

TEST(BackupImport, AFailedWriteLeavesTheDataFolderAsItWas)
{
    writeData({assignment("A", Stamp)}, {course("Math")}, {"Quiz"});
    const Snapshot before = snapshot();
    // A folder standing where the types file's staging copy goes makes the third write fail after
    // the first two succeeded.
    QDir().mkpath(Paths::universalTypesFile() + ".importing/blocker");
    Alerts::queueAnswer(Backup::ReplaceButton);
    EXPECT_EQ(Backup::sharedController()->importFromFile(writeBackup({}, {}, {})),
              Backup::ImportOutcome::WriteFailed);
    EXPECT_EQ(snapshot(), before);
    EXPECT_FALSE(QFileInfo::exists(Paths::assignmentsFile() + ".importing"));
    EXPECT_FALSE(QFileInfo::exists(Paths::coursesFile() + ".importing"));
}

TEST(RecordMatch, NumbersCompareByValueAndHashAlike)
{
    const QVariantMap a{{"Completed", true}, {"Priority", 1.0}, {"List", QVariantList{1, "x"}}};
    const QVariantMap b{{"Completed", qint64(1)}, {"Priority", qint64(1)}, {"List", QVariantList{1.0, "x"}}};
    EXPECT_TRUE(RecordMatch::equal(a, b));
    EXPECT_EQ(RecordMatch::hash(a), RecordMatch::hash(b));
    EXPECT_FALSE(RecordMatch::equal(QVariant("1"), QVariant(1)));
    EXPECT_FALSE(RecordMatch::equal(a, QVariantMap{{"Completed", true}, {"Priority", 1.0}}));
    const QVariantMap c{{"Name", "x"}, {"Date Updated", "one"}};
    const QVariantMap d{{"Name", "x"}, {"Date Updated", "two"}};
    const QVariantMap e{{"Name", "x"}};
    EXPECT_FALSE(RecordMatch::equal(c, d));
    EXPECT_TRUE(RecordMatch::equal(c, d, "Date Updated"));
    EXPECT_TRUE(RecordMatch::equal(c, e, "Date Updated"));
    EXPECT_EQ(RecordMatch::hash(c, "Date Updated"), RecordMatch::hash(e, "Date Updated"));
    EXPECT_FALSE(RecordMatch::equal(QVariantList{1, 2}, QVariantList{2, 1}));
}

// A file that is no property-list array changes nothing on a merge and empties the data on a
// replace, which first keeps what it replaces where the sync keeps its backups.
TEST(BackupImport, ReplaceFirstKeepsTheDataItReplacesAmongTheAutomaticBackups)
{
    const QVariantList data = {assignment("Mine", Stamp)};
    writeData(data, {course("Math")}, {"Quiz"});
    const QString bogus = TestEnvironment::home() + QStringLiteral("/notes.txt");
    TestEnvironment::writeFile(bogus, "just some text");

    Alerts::queueAnswer(Backup::MergeButton);
    EXPECT_EQ(Backup::sharedController()->importFromFile(bogus), Backup::ImportOutcome::Merged);
    EXPECT_EQ(readList(Paths::assignmentsFile()), data);
    EXPECT_EQ(readList(Paths::coursesFile()), QVariantList{course("Math")});
    EXPECT_EQ(readList(Paths::universalTypesFile()), QVariantList{"Quiz"});
    EXPECT_FALSE(QFileInfo::exists(Paths::syncingBackupsFolder()));

    // The wrong file, and "Replace": the data is emptied, but kept where the sync keeps its backups.
    Alerts::queueAnswer(Backup::ReplaceButton);
    EXPECT_EQ(Backup::sharedController()->importFromFile(bogus), Backup::ImportOutcome::Replaced);
    EXPECT_TRUE(readList(Paths::assignmentsFile()).isEmpty());
    EXPECT_TRUE(readList(Paths::coursesFile()).isEmpty());
    EXPECT_TRUE(readList(Paths::universalTypesFile()).isEmpty());
    const QString kept = Paths::syncingBackupsFolder() + QStringLiteral("/2026-11-22 10:30:00 -0500.plist");
    ASSERT_EQ(AutomaticBackups::path(), kept);
    EXPECT_EQ(PropertyList::readFile(kept)->toList(),
              (QVariantList{data, QVariantList{course("Math")}, QVariantList{"Quiz"}}));

    // Undone from there. That Replace keeps what it replaces too, beside the first in the same
    // second, which it does not overwrite.
    Alerts::queueAnswer(Backup::ReplaceButton);
    EXPECT_EQ(Backup::sharedController()->importFromFile(kept), Backup::ImportOutcome::Replaced);
    EXPECT_EQ(readList(Paths::assignmentsFile()), data);
    EXPECT_EQ(QDir(Paths::syncingBackupsFolder()).entryList(QDir::Files, QDir::Name),
              (QStringList{"2026-11-22 10:30:00 -0500.plist", "2026-11-22 10:30:00 -0500_2.plist"}));
    EXPECT_EQ(readList(Paths::syncingBackupsFolder() + QStringLiteral("/2026-11-22 10:30:00 -0500_2.plist")),
              (QVariantList{QVariantList{}, QVariantList{}, QVariantList{}}));

    // A merge keeps everything that was there, so it needs no backup.
    Alerts::queueAnswer(Backup::MergeButton);
    Backup::sharedController()->importFromFile(kept);
    EXPECT_EQ(QDir(Paths::syncingBackupsFolder()).entryList(QDir::Files).size(), 2);

    // A property list whose root is a dictionary is no array either.
    const QString dictionary = TestEnvironment::home() + QStringLiteral("/dict.plist");
    ASSERT_TRUE(PropertyList::writeFile(dictionary, QVariantMap{{"a", 1}}));
    Alerts::queueAnswer(Backup::ReplaceButton);
    EXPECT_EQ(Backup::sharedController()->importFromFile(dictionary), Backup::ImportOutcome::Replaced);
    EXPECT_TRUE(readList(Paths::assignmentsFile()).isEmpty());
}
