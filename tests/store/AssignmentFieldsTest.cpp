#include "platform/PropertyList.h"
#include "store/Assignment.h"
#include "store/AssignmentStore.h"
#include "support/StoreGenerator.h"

#include <QDateTime>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTimeZone>
#include <gtest/gtest.h>

namespace {

const QString Fixture = QStringLiteral(QUILLORY_TEST_DATA_DIR "/store/typed-and-unknown-fields.plist");

QByteArray readAll(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

// How a dictionary of fields is written by the general writer: the bytes a record must give.
QByteArray mapXml(const QVariantMap &fields)
{
    QByteArray out;
    PropertyList::appendValue(out, fields, 1);
    return out;
}

// Keys sorting before, between and after the known ones, in other cases and scripts, and the
// known keys' prefixes and extensions.
const QStringList OddKeys = {
    QStringLiteral("AAA"),        QStringLiteral("Dat"),         QStringLiteral("Date Zone"),
    QStringLiteral("Date Created "), QStringLiteral("name"),     QStringLiteral("Zebra"),
    QStringLiteral("Ünknown"),    QStringLiteral("Calendar"),    QStringLiteral("Subprojects"),
    QStringLiteral("\u65e5\u4ed8"), QStringLiteral(" Name"),     QStringLiteral("Fil"),
};

QVariant oddValue(QRandomGenerator &random)
{
    switch (random.bounded(10)) {
    case 0: return qint64(random.bounded(-5, 500));
    case 1: return double(random.bounded(1000)) / 8.0;
    case 2: return random.bounded(2) == 1;
    case 3: return QDateTime(QDate(2000 + random.bounded(30), 3, 4), QTime(5, 6, 7), Qt::UTC);
    case 4: return QByteArray("\x00\x01snap", 6);
    case 5: return QVariantList{QStringLiteral("a"), qint64(2), QVariantMap{{QStringLiteral("k"), 1.5}}};
    case 6: return QVariantMap{{QStringLiteral("UID"), QStringLiteral("x@y")}, {QStringLiteral("Name"), QString()}};
    case 7: return QString();
    case 8: return QStringLiteral("A & B <c> \u00e9\u2603");
    default: return QStringLiteral("B+");
    }
}

QVariantMap randomFields(QRandomGenerator &random)
{
    QVariantMap fields;
    for (size_t i = 0; i < AssignmentFieldCount; ++i)
        if (random.bounded(2))
            fields.insert(fieldKey(AssignmentField(i)), oddValue(random));
    for (const QString &key : OddKeys)
        if (random.bounded(4) == 0)
            fields.insert(key, oddValue(random));
    return fields;
}

// What the fixed store holds.
QVariantList fixtureRecords()
{
    using namespace AssignmentKeys;
    const QDateTime moment(QDate(2009, 2, 13), QTime(23, 31, 30), Qt::UTC);
    return {
        QVariantMap{{Name, QStringLiteral("Essay & <draft>")}, {Date, QStringLiteral("2026-03-02 23:59:00 -0500")},
                    {Priority, 2.5}, {Grade, QStringLiteral("B+")}, {Completed, qint64(0)},
                    {DateCreated, 1756000000.25}, {DateUpdated, QStringLiteral("2026-02-01 08:00:00 -0500")},
                    {QStringLiteral("Mystery Key"), qint64(42)}, {QStringLiteral("AAA"), true},
                    {QStringLiteral("Date Zone"), moment}, {QStringLiteral("zz lower"), QByteArray("\x00\x01\x02", 3)}},
        QVariantMap{{Name, QStringLiteral("Lab \u00e9t\u00e9 \u65e5\u672c")}, {Grade, qint64(93)}, {Priority, qint64(3)},
                    {Course, QStringLiteral("Chemistry")}, {Contacts, QVariantList{QStringLiteral("Ann"), QStringLiteral("Bo")}},
                    {Notes, QString()}, {QStringLiteral("Calendar Import"),
                                        QVariantMap{{QStringLiteral("UID"), QStringLiteral("a@b")},
                                                    {QStringLiteral("Name"), QStringLiteral("Lab")}}}},
        QVariantMap{},
        QVariantMap{{QStringLiteral("Only Unknown"), QVariantList{}}, {QStringLiteral("Also"), QVariantMap{}}},
        QVariantMap{{Project, QStringLiteral("2026-01-01 00:00:00 -0500")}, {Completed, qint64(1)}, {Type, QStringLiteral("Paper")},
                    {Textbook, QStringLiteral("Atkins")}, {File, QStringLiteral("/home/s/essay.odt")},
                    {Snapshot, QByteArray(200, 'x')}, {QStringLiteral("Date Created "), 1.0}, {QStringLiteral("name"), false}},
        QVariantMap{{Subproject, QStringLiteral("2026-01-01 00:00:00 -0500")}, {Name, QStringLiteral("Step 1")},
                    {DateCreated, qint64(1756000001)}, {QStringLiteral("\u00dcnknown"), -7.125}},
    };
}

} // namespace

// Records of every mix of known and unknown keys and value types, changed through either API:
// values keep their types, the dictionary comes back whole, equality follows the fields, and the
// record's XML is what the general writer makes of its dictionary.
TEST(AssignmentFields, RecordsAgreeWithTheirDictionaryThroughChanges)
{
    QRandomGenerator random(7);
    for (int round = 0; round < 400; ++round) {
        QVariantMap expected = randomFields(random);
        Assignment record(expected);
        for (int step = 0; step < 6; ++step) {
            ASSERT_EQ(record.fields(), expected);
            ASSERT_EQ(record.xml(), mapXml(expected));
            for (auto it = expected.cbegin(); it != expected.cend(); ++it) {
                ASSERT_TRUE(record.has(it.key()));
                ASSERT_EQ(record.value(it.key()).typeId(), it.value().typeId()) << qPrintable(it.key());
            }
            ASSERT_EQ(Assignment(expected), record);

            const quint64 before = record.revision();
            const QString key = random.bounded(2) ? fieldKey(AssignmentField(random.bounded(int(AssignmentFieldCount))))
                                                  : OddKeys[random.bounded(int(OddKeys.size()))];
            const std::optional<AssignmentField> field = fieldFromKey(key);
            if (random.bounded(3) == 0) {
                const bool had = expected.remove(key) > 0;
                if (field && random.bounded(2))
                    record.remove(*field);
                else
                    record.remove(key);
                EXPECT_EQ(record.revision() != before, had);
                EXPECT_FALSE(record.has(key));
            } else {
                const QVariant value = oddValue(random);
                expected.insert(key, value);
                if (field && random.bounded(2))
                    record.set(*field, value);
                else
                    record.set(key, value);
                EXPECT_NE(record.revision(), before);
            }
        }
    }
}

TEST(AssignmentFields, EqualityTellsTypesAndUnknownKeysApart)
{
    const Assignment real(QVariantMap{{AssignmentKeys::Priority, 2.5}});
    EXPECT_NE(real, Assignment(QVariantMap{{AssignmentKeys::Priority, QStringLiteral("2.6")}}));
    EXPECT_NE(Assignment(QVariantMap{{QStringLiteral("X"), 1}}), Assignment(QVariantMap{{QStringLiteral("Y"), 1}}));
    EXPECT_NE(Assignment(QVariantMap{{AssignmentKeys::Notes, QString()}}), Assignment());
    Assignment grade;
    grade.set(AssignmentField::Grade, QStringLiteral("A-"));
    EXPECT_EQ(grade.value(AssignmentKeys::Grade).typeId(), QMetaType::QString);
    grade.set(AssignmentField::Grade, qint64(93));
    EXPECT_EQ(grade.value(AssignmentField::Grade).typeId(), QMetaType::LongLong);
    EXPECT_EQ(grade.lowered(AssignmentField::Grade), QStringLiteral("93"));
    const AssignmentRef copy = Assignments::copy(std::make_shared<Assignment>(grade));
    EXPECT_EQ(*copy, grade);
    EXPECT_NE(copy->revision(), grade.revision());
}

// A store written by the earlier general writer, with unknown keys and odd types, reads and
// writes back byte for byte.
TEST(AssignmentFields, AFixedStoreWritesBackByteForByte)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Assignments.plist"));
    const QByteArray original = readAll(Fixture);
    ASSERT_FALSE(original.isEmpty());
    ASSERT_TRUE(QFile::copy(Fixture, path));
    AssignmentStore store(path);
    const auto records = store.load();
    ASSERT_TRUE(records);
    EXPECT_EQ(Assignments::toVariantList(*records), fixtureRecords());
    EXPECT_EQ(records->at(0)->value(AssignmentField::Priority).typeId(), QMetaType::Double);
    EXPECT_EQ(records->at(1)->value(AssignmentField::Grade).typeId(), QMetaType::LongLong);
    EXPECT_EQ(records->at(1)->value(AssignmentField::Priority).typeId(), QMetaType::LongLong);
    ASSERT_TRUE(store.save(*records));
    EXPECT_EQ(readAll(path), original);
}

// The benchmarks' 10,000 records plus records with unknown keys: loaded and saved, the file is
// unchanged, and it is what the general writer makes of the same dictionaries.
TEST(AssignmentFields, AGeneratedStoreWritesBackByteForByte)
{
    QVariantList records = StoreGenerator::assignments(10000, 3);
    QRandomGenerator random(5);
    for (int i = 0; i < 300; ++i)
        records.insert(random.bounded(int(records.size())), randomFields(random));
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Assignments.plist"));
    ASSERT_TRUE(PropertyList::writeFile(path, records));
    const QByteArray written = readAll(path);

    AssignmentStore store(path);
    const auto loaded = store.load();
    ASSERT_TRUE(loaded);
    ASSERT_EQ(loaded->size(), records.size());
    ASSERT_TRUE(store.save(*loaded));
    EXPECT_TRUE(readAll(path) == written);
    EXPECT_EQ(Assignments::toVariantList(*loaded), records);
}
