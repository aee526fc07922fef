#include "TestEnvironment.h"

#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/AssignmentStore.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <gtest/gtest.h>

using namespace AssignmentKeys;

namespace {

QVariantList readStore()
{
    auto records = AssignmentStore::readFile(Paths::assignmentsFile());
    EXPECT_TRUE(records.has_value());
    return records.value_or(QVariantList());
}

const QByteArray Garbage = "<?xml version=\"1.0\"?><plist><array><dict><key>Name</key><string>half";

} // namespace

TEST(AssignmentStore, StartupRepairCreatesTheFolderAndAnEmptyStore)
{
    AssignmentStore store;
    store.repairAtStartup();
    ASSERT_TRUE(QFileInfo::exists(Paths::assignmentsFile()));
    EXPECT_TRUE(readStore().isEmpty());
    auto loaded = store.load();
    ASSERT_TRUE(loaded);
    EXPECT_TRUE(loaded->isEmpty());
}

TEST(AssignmentStore, StartupRepairFillsTimeStampsAndKeepsUnknownKeys)
{
    QDir().mkpath(Paths::dataFolder());
    const QVariantList records{
        QVariantMap{{Name, QStringLiteral("Essay")}, {QStringLiteral("Mystery Key"), qint64(42)}},
        QVariantMap{{Name, QStringLiteral("Lab")}, {DateCreated, 1000.5}, {DateUpdated, QStringLiteral("2008-01-02 03:04:05 -0500")}},
    };
    ASSERT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), records));

    AssignmentStore().repairAtStartup();

    const QVariantList repaired = readStore();
    ASSERT_EQ(repaired.size(), 2);
    const QVariantMap first = repaired[0].toMap();
    EXPECT_EQ(first.value(DateUpdated).toString(), DateText::toStoredForm(TestEnvironment::pinnedNow()));
    EXPECT_EQ(first.value(DateCreated).typeId(), QMetaType::Double);
    EXPECT_DOUBLE_EQ(first.value(DateCreated).toDouble(), Clock::secondsSince1970());
    EXPECT_EQ(first.value(QStringLiteral("Mystery Key")).typeId(), QMetaType::LongLong);
    EXPECT_EQ(first.value(QStringLiteral("Mystery Key")).toLongLong(), 42);
    // Records that had both keep them as they were.
    EXPECT_EQ(repaired[1].toMap(), records[1].toMap());
}

TEST(AssignmentStore, AnUnreadableFileIsNeverOverwritten)
{
    TestEnvironment::writeFile(Paths::assignmentsFile(), Garbage);
    AssignmentStore store;
    store.repairAtStartup();
    QString error;
    EXPECT_FALSE(store.load(&error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(store.isUsable());
    EXPECT_FALSE(store.save({Assignments::make({{Name, QStringLiteral("New")}})}));
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), Garbage);

    // A root that is not an array, or an array holding something other than records, is also
    // refused rather than lost on the next save.
    for (const QVariant &root : {QVariant(QVariantMap{{Name, QStringLiteral("x")}}),
                                 QVariant(QVariantList{QVariantMap{}, QStringLiteral("stray")})}) {
        ASSERT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), root));
        const QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());
        AssignmentStore other;
        other.repairAtStartup();
        EXPECT_FALSE(other.load());
        EXPECT_FALSE(other.save({}));
        EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);
    }

    // Once the file is replaced from outside, the store works again.
    ASSERT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), QVariantList()));
    ASSERT_TRUE(store.load());
    EXPECT_TRUE(store.save({Assignments::make({{Name, QStringLiteral("New")}})}));
    EXPECT_EQ(readStore().size(), 1);
}

TEST(AssignmentStore, SaveWritesWhatToXmlWouldAndKeepsTypes)
{
    QDir().mkpath(Paths::dataFolder());
    AssignmentStore store;
    ASSERT_TRUE(store.load());
    AssignmentList list{
        Assignments::make({{Name, QStringLiteral("Résumé & <draft>")},
                           {Priority, 1.0},
                           {Completed, true},
                           {Snapshot, QByteArray("\x00\x01\xff", 3)},
                           {Contacts, QVariantList{QStringLiteral("Ann"), QStringLiteral("Bo")}},
                           {DateCreated, 1234567890.125}}),
        Assignments::make({{Name, QStringLiteral("Second")}}),
    };
    ASSERT_TRUE(store.save(list));
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), PropertyList::toXml(Assignments::toVariantList(list)));

    // A change to one record is written, not the text cached before it.
    list[1]->set(Grade, QStringLiteral("A-"));
    ASSERT_TRUE(store.save(list));
    auto reloaded = store.load();
    ASSERT_TRUE(reloaded);
    ASSERT_EQ(reloaded->size(), 2);
    EXPECT_EQ(*(*reloaded)[0], *list[0]);
    EXPECT_EQ((*reloaded)[1]->string(Grade), QStringLiteral("A-"));
    EXPECT_EQ((*reloaded)[0]->value(Priority).typeId(), QMetaType::Double);

    ASSERT_TRUE(store.save({}));
    EXPECT_TRUE(readStore().isEmpty());
}

TEST(Assignment, CachesFollowEveryChange)
{
    auto record = Assignments::make({{Name, QStringLiteral("Essay")}, {Date, QStringLiteral("2008-03-05 00:00:00 -0500")}});
    const quint64 before = record->revision();
    const QByteArray xml = record->xml();
    EXPECT_EQ(record->lowered(Name), QStringLiteral("essay"));
    ASSERT_TRUE(record->dueDate());
    EXPECT_EQ(record->dueDate()->date(), QDate(2008, 3, 5));

    record->set(Name, QStringLiteral("FINAL Essay"));
    record->set(Date, QStringLiteral("2009-04-06 00:00:00 -0400"));
    EXPECT_NE(record->revision(), before);
    EXPECT_NE(record->xml(), xml);
    EXPECT_TRUE(record->xml().contains("FINAL Essay"));
    EXPECT_EQ(record->lowered(Name), QStringLiteral("final essay"));
    EXPECT_EQ(record->dueDate()->date(), QDate(2009, 4, 6));

    record->remove(Date);
    EXPECT_FALSE(record->dueDate());
    EXPECT_TRUE(record->lowered(Grade).isNull());
}

