#include "LibplistFiles.h"
#include "platform/PropertyList.h"

#include "support/BinaryPlists.h"
#include "support/TestEnvironment.h"

#include <QFile>
#include <QProcess>
#include <QTimeZone>
#include <gtest/gtest.h>

// Files made to hurt: shared references that expand without end, dates no reader takes back, text
// the file's encoding cannot hold. Whatever is read must either be refused with a message or write
// out as XML that this reader, Python's plistlib and libplist all accept.
namespace {

using BinaryPlists::referenceBomb;
const auto binaryPlist = BinaryPlists::fromObjects;

QByteArray binaryDate(double secondsSince2001)
{
    quint64 bits;
    std::memcpy(&bits, &secondsSince2001, sizeof bits);
    QByteArray object(1, '\x33');
    for (int shift = 56; shift >= 0; shift -= 8)
        object += char(bits >> shift);
    return object;
}

bool plistlibReads(const QByteArray &xml, QString *why)
{
    const QString path = TestEnvironment::home() + QStringLiteral("/written.plist");
    TestEnvironment::writeFile(path, xml);
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"),
                 {QStringLiteral("-c"), QStringLiteral("import plistlib, sys; plistlib.load(open(sys.argv[1], 'rb'))"), path});
    python.waitForFinished(60000);
    *why = QString::fromUtf8(python.readAllStandardError());
    return python.exitStatus() == QProcess::NormalExit && python.exitCode() == 0;
}

bool libplistReads(const QByteArray &xml)
{
    plist_t root = nullptr;
    plist_from_xml(xml.constData(), uint32_t(xml.size()), &root);
    const bool ok = root != nullptr;
    if (root)
        plist_free(root);
    return ok;
}

void expectEveryReaderTakes(const QByteArray &xml)
{
    QString why;
    EXPECT_TRUE(PropertyList::parse(xml, &why)) << why.toStdString();
    EXPECT_TRUE(plistlibReads(xml, &why)) << why.toStdString() << "\n" << xml.toStdString();
    EXPECT_TRUE(libplistReads(xml)) << xml.toStdString();
}

QDateTime utc(int year, int month, int day, int hour, int minute, int second)
{
    return QDateTime(QDate(year, month, day), QTime(hour, minute, second), QTimeZone::utc());
}

} // namespace

TEST(PropertyListHostile, SharedReferencesThatExpandBeyondTheLimitsAreRefused)
{
    // A couple of hundred bytes that would write out as gigabytes: eight levels of fourteen
    // references each.
    const QByteArray bomb = referenceBomb(8, 14);
    EXPECT_LT(bomb.size(), 400);
    QString error;
    EXPECT_FALSE(PropertyList::parse(bomb, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("expand"))) << error.toStdString();
    // Deep rather than wide: forty levels of two, 2^40 leaves. Kept shared in memory it would be
    // small, but every save writes it whole.
    EXPECT_FALSE(PropertyList::parse(referenceBomb(40, 2), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("expand"))) << error.toStdString();

    // Many references to one long string blow up the text rather than the object count.
    // Four levels of fifteen references (an array's length as a one-byte integer after 0xAF).
    QList<QByteArray> objects;
    for (char next = 1; next <= 4; ++next)
        objects.append(QByteArray(1, '\xAF') + QByteArray("\x10\x0F", 2) + QByteArray(15, next));
    objects.append(QByteArray("\x5F\x11\x10\x00", 4) + QByteArray(4096, 'x'));
    EXPECT_FALSE(PropertyList::parse(binaryPlist(objects), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("expand"))) << error.toStdString();

    // Sharing as real writers use it (each distinct key and value stored once) stays readable:
    // 100,000 records whose keys and courses are all shared.
    plist_t root = plist_new_array();
    for (int i = 0; i < 100000; ++i) {
        plist_t record = plist_new_dict();
        plist_dict_set_item(record, "Name", plist_new_string(QByteArray::number(i).prepend("Essay ").constData()));
        plist_dict_set_item(record, "Course", plist_new_string(i % 2 ? "Biology" : "History"));
        plist_dict_set_item(record, "Type", plist_new_string("Homework"));
        plist_dict_set_item(record, "Grade", plist_new_string("A"));
        plist_dict_set_item(record, "Priority", plist_new_real(1.0));
        plist_dict_set_item(record, "Completed", plist_new_bool(i % 3 == 0));
        plist_dict_set_item(record, "Date", plist_new_string("2006-09-14 00:00:00 -0400"));
        plist_dict_set_item(record, "Date Updated", plist_new_string("2006-09-14 00:00:00 -0400"));
        plist_dict_set_item(record, "Date Created", plist_new_real(1158206400.0));
        plist_array_append_item(root, record);
    }
    const QByteArray store = LibplistFiles::toBinary(root);
    const auto parsed = PropertyList::parse(store, &error);
    ASSERT_TRUE(parsed) << error.toStdString();
    EXPECT_EQ(parsed->toList().size(), 100000);
}

TEST(PropertyListHostile, DatesOutsideWhatTheReaderTakesAreNeverWritten)
{
    // Binary dates count seconds from 2001; the XML form only has room for the years 1 to 9999.
    const double first = double(utc(1, 1, 1, 0, 0, 0).toSecsSinceEpoch()) - 978307200.0;
    const double last = double(utc(9999, 12, 31, 23, 59, 59).toSecsSinceEpoch()) - 978307200.0;
    for (double seconds : {first, last, 0.0}) {
        QString error;
        const auto parsed = PropertyList::parse(binaryPlist({binaryDate(seconds)}), &error);
        ASSERT_TRUE(parsed) << seconds << ": " << error.toStdString();
        const QByteArray xml = PropertyList::toXml(*parsed);
        EXPECT_EQ(PropertyList::parse(xml), parsed);
        expectEveryReaderTakes(xml);
    }
    EXPECT_EQ(PropertyList::parse(binaryPlist({binaryDate(first)}))->toDateTime(), utc(1, 1, 1, 0, 0, 0));
    EXPECT_EQ(PropertyList::parse(binaryPlist({binaryDate(last)}))->toDateTime(), utc(9999, 12, 31, 23, 59, 59));
    for (double seconds : {first - 1, last + 1, -1e12, 9.9e11}) {
        QString error;
        EXPECT_FALSE(PropertyList::parse(binaryPlist({binaryDate(seconds)}), &error)) << seconds;
        EXPECT_TRUE(error.contains(QStringLiteral("date"))) << error.toStdString();
    }

    // The XML boundaries read and write back too, and a date beyond them is refused by the file
    // writer rather than written in a form nobody reads.
    for (const QDateTime &moment : {utc(1, 1, 1, 0, 0, 0), utc(9999, 12, 31, 23, 59, 59)}) {
        const QVariant value(QVariantList{moment});
        EXPECT_EQ(PropertyList::parse(PropertyList::toXml(value)), value);
    }
    // Only digits make a year: "2o06" is not the year 1 BC.
    for (const char *text : {"2o06-09-14T04:00:00Z", "-006-09-14T04:00:00Z", "0000-01-01T00:00:00Z"}) {
        EXPECT_FALSE(PropertyList::parse(QByteArray("<plist><date>") + text + "</date></plist>")) << text;
    }

    const QString path = TestEnvironment::home() + QStringLiteral("/dates.plist");
    ASSERT_TRUE(PropertyList::writeFile(path, QVariantList{utc(2006, 9, 14, 4, 0, 0)}));
    const QByteArray before = TestEnvironment::readFile(path);
    for (const QDateTime &moment : {utc(10000, 1, 1, 0, 0, 0), utc(-29689, 4, 6, 22, 13, 20)}) {
        QString error;
        EXPECT_FALSE(PropertyList::writeFile(path, QVariantList{moment}, &error));
        EXPECT_TRUE(error.contains(QStringLiteral("date"))) << error.toStdString();
        EXPECT_EQ(TestEnvironment::readFile(path), before);
        EXPECT_TRUE(PropertyList::parse(PropertyList::toXml(QVariantList{moment})));
    }
}

TEST(PropertyListHostile, DeclaredEncodingsAreHonouredAndUndecodableTextIsReported)
{
    const auto body = [](const char *encoding, const QByteArray &text) {
        return QByteArray("<?xml version=\"1.0\" encoding=\"") + encoding
            + "\"?>\n<plist version=\"1.0\"><array><string>" + text + "</string></array></plist>\n";
    };
    PropertyList::ReadReport report;
    auto parsed = PropertyList::parse(body("ISO-8859-1", "R\xE9sum\xE9"), nullptr, &report);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->toList().value(0).toString(), QStringLiteral("Résumé"));
    EXPECT_FALSE(report.textWillChange);
    parsed = PropertyList::parse(body("latin1", "caf\xE9"), nullptr, &report);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->toList().value(0).toString(), QStringLiteral("café"));

    // UTF-16 with its byte-order mark.
    const QString document = QString::fromUtf8(body("UTF-16", "Übung ✓"));
    QByteArray utf16("\xFF\xFE", 2);
    utf16.append(reinterpret_cast<const char *>(document.utf16()), document.size() * 2);
    parsed = PropertyList::parse(utf16, nullptr, &report);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->toList().value(0).toString(), QStringLiteral("Übung ✓"));

    // Bytes that are not UTF-8 in a file that says it is: read, but reported, so that whoever
    // writes the file back can keep the original first.
    parsed = PropertyList::parse(body("UTF-8", "R\xE9sum\xE9"), nullptr, &report);
    ASSERT_TRUE(parsed);
    EXPECT_TRUE(report.textWillChange);
    parsed = PropertyList::parse(body("UTF-8", "Résumé"), nullptr, &report);
    EXPECT_FALSE(report.textWillChange);
    parsed = PropertyList::parse(body("UTF-8", "a\x01" "b"), nullptr, &report);
    EXPECT_TRUE(report.textWillChange);

    QString error;
    EXPECT_FALSE(PropertyList::parse(body("x-no-such-encoding", "text"), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("x-no-such-encoding"))) << error.toStdString();

    // A lone surrogate in a binary UTF-16 string is reported the same way.
    parsed = PropertyList::parse(binaryPlist({QByteArray("\x62\xD8\x00\x00\x41", 5)}), nullptr, &report);
    ASSERT_TRUE(parsed);
    EXPECT_TRUE(report.textWillChange);
}

TEST(PropertyListHostile, EverythingWrittenParsesInOtherReaders)
{
    QString text;
    for (char16_t c : {u'\0', u'\x01', u'\x08', u'\x0B', u'\x0C', u'\x1F', u'\xFFFE', u'\xFFFF', u'\xD800'})
        text += QChar(c);
    text += QStringLiteral("kept\r\n\ttab & <tag> \"quoted\" 😀");
    const QVariantMap record{
        {QStringLiteral("Text"), text},
        {QStringLiteral("Key\x01 with & < >"), QStringLiteral("value")},
        {QStringLiteral("Big"), QVariant::fromValue(std::numeric_limits<quint64>::max())},
        {QStringLiteral("Small"), QVariant::fromValue(std::numeric_limits<qint64>::min())},
        {QStringLiteral("Real"), 1e-300},
        {QStringLiteral("Empty"), QByteArray()},
        {QStringLiteral("Blob"), QByteArray("\0\xFF", 2)},
        {QStringLiteral("First"), utc(1, 1, 1, 0, 0, 0)},
        {QStringLiteral("Last"), utc(9999, 12, 31, 23, 59, 59)},
        {QStringLiteral("Nothing"), QVariantList()},
    };
    const QByteArray xml = PropertyList::toXml(QVariantList{record});
    expectEveryReaderTakes(xml);
    const QVariantMap back = PropertyList::parse(xml)->toList().value(0).toMap();
    // Characters XML cannot hold are dropped, a lone surrogate becomes U+FFFD, the rest is kept
    // exactly, the carriage return included.
    EXPECT_EQ(back.value(QStringLiteral("Text")).toString(),
              QStringLiteral("\uFFFDkept\r\n\ttab & <tag> \"quoted\" 😀"));
    EXPECT_TRUE(back.contains(QStringLiteral("Key with & < >")));

    // A string or key that starts with U+FEFF keeps it: it is text there, not a byte-order mark.
    const QVariantMap marked{{QStringLiteral("\uFEFFKey"), QStringLiteral("\uFEFF\uFEFFvalue")},
                             {QStringLiteral("Long"), QString(QChar(0xFEFF)) + QString(40, QLatin1Char('x'))}};
    EXPECT_EQ(PropertyList::parse(PropertyList::toXml(marked)), QVariant(marked));
    EXPECT_EQ(back.value(QStringLiteral("Big")), record.value(QStringLiteral("Big")));
}
