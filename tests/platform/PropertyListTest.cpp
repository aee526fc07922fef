#include "platform/PropertyList.h"

#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QTimeZone>
#include <QVariantHash>
#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>

namespace {

QVariant roundTrip(const QVariant &value)
{
    QString error;
    const auto parsed = PropertyList::parse(PropertyList::toXml(value), &error);
    EXPECT_TRUE(parsed.has_value()) << error.toStdString();
    return parsed.value_or(QVariant());
}

QByteArray document(const QByteArray &body)
{
    return PropertyList::documentHeader() + body + PropertyList::documentFooter();
}

QVariantMap sampleRecord()
{
    return QVariantMap{
        {QStringLiteral("Name"), QStringLiteral("Lab report <draft> & notes")},
        {QStringLiteral("Date"), QStringLiteral("2006-09-14 00:00:00 -0400")},
        {QStringLiteral("Priority"), 0.75},
        {QStringLiteral("Completed"), true},
        {QStringLiteral("Notes"), QStringLiteral("Grüße aus Köln — 東京 😀\nline two\ttabbed")},
        {QStringLiteral("Contacts"), QVariantList{QStringLiteral("Ann"), QStringLiteral("Bo")}},
        {QStringLiteral("Snapshot"), QByteArray("\x00\x01\x02\xff tiff", 9)},
        {QStringLiteral("Date Created"), 1763822400.123456},
        {QStringLiteral("Count"), qint64(-12)},
        {QStringLiteral("When"), QDateTime(QDate(2006, 9, 14), QTime(4, 0), QTimeZone::utc())},
        {QStringLiteral("Nothing"), QVariantList()},
        {QStringLiteral("Nobody"), QVariantMap()},
        {QStringLiteral("Unknown Key From Elsewhere"), QStringLiteral("kept")},
        {QStringLiteral("Empty"), QStringLiteral("")},
    };
}

} // namespace

TEST(PropertyListWriter, WritesTheStandardXmlForm)
{
    const QVariantList root{
        QVariantMap{{QStringLiteral("B & <c>"), QStringLiteral("x > y")},
                    {QStringLiteral("A"), qint64(3)},
                    {QStringLiteral("D"), QVariantList()},
                    {QStringLiteral("E"), QVariantMap()},
                    {QStringLiteral("F"), false},
                    {QStringLiteral("G"), QByteArray("hello")},
                    {QStringLiteral("H"), QDateTime(QDate(2006, 9, 14), QTime(4, 0), QTimeZone::utc())},
                    {QStringLiteral("I"), 1.0},
                    {QStringLiteral("J"), QString()}},
        true,
    };
    const QByteArray expected = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                "<plist version=\"1.0\">\n"
                                "<array>\n"
                                "\t<dict>\n"
                                "\t\t<key>A</key>\n"
                                "\t\t<integer>3</integer>\n"
                                "\t\t<key>B &amp; &lt;c&gt;</key>\n"
                                "\t\t<string>x &gt; y</string>\n"
                                "\t\t<key>D</key>\n"
                                "\t\t<array/>\n"
                                "\t\t<key>E</key>\n"
                                "\t\t<dict/>\n"
                                "\t\t<key>F</key>\n"
                                "\t\t<false/>\n"
                                "\t\t<key>G</key>\n"
                                "\t\t<data>\n"
                                "\t\taGVsbG8=\n"
                                "\t\t</data>\n"
                                "\t\t<key>H</key>\n"
                                "\t\t<date>2006-09-14T04:00:00Z</date>\n"
                                "\t\t<key>I</key>\n"
                                "\t\t<real>1</real>\n"
                                "\t\t<key>J</key>\n"
                                "\t\t<string></string>\n"
                                "\t</dict>\n"
                                "\t<true/>\n"
                                "</array>\n"
                                "</plist>\n";
    EXPECT_EQ(PropertyList::toXml(root).toStdString(), expected.toStdString());
}

TEST(PropertyListWriter, CachedFragmentsAssembleToTheSameDocument)
{
    const QVariantList records{sampleRecord(), QVariantMap{{QStringLiteral("Name"), QStringLiteral("Second")}}};
    QByteArray assembled = PropertyList::documentHeader() + "<array>\n";
    for (const QVariant &record : records)
        PropertyList::appendValue(assembled, record, 1);
    assembled += "</array>\n" + PropertyList::documentFooter();
    EXPECT_EQ(assembled, PropertyList::toXml(records));
}

TEST(PropertyListWriter, LongDataIsWrappedAndReadBack)
{
    QByteArray blob;
    for (int i = 0; i < 1000; ++i)
        blob.append(char(i * 7));
    const QByteArray xml = PropertyList::toXml(QVariantList{blob});
    // 1000 bytes are 1336 base64 characters: 17 full lines of 76 and one of 44, each indented once.
    const QList<QByteArray> lines = xml.split('\n');
    const qsizetype first = lines.indexOf("\t<data>") + 1;
    ASSERT_GT(first, 0);
    for (qsizetype i = first; i < first + 17; ++i)
        EXPECT_EQ(lines[i].size(), 77) << i;
    EXPECT_EQ(lines[first + 17].size(), 45);
    EXPECT_EQ(lines[first + 18], "\t</data>");
    EXPECT_EQ(roundTrip(QVariantList{blob}), QVariant(QVariantList{blob}));
}

TEST(PropertyListRoundTrip, KeepsEveryTypeExactly)
{
    const QVariantMap record = sampleRecord();
    const QVariantMap back = roundTrip(record).toMap();
    EXPECT_EQ(back, record);
    ASSERT_EQ(back.keys(), record.keys());
    EXPECT_EQ(back[QStringLiteral("Priority")].typeId(), QMetaType::Double);
    EXPECT_EQ(back[QStringLiteral("Date Created")].typeId(), QMetaType::Double);
    EXPECT_EQ(back[QStringLiteral("Count")].typeId(), QMetaType::LongLong);
    EXPECT_EQ(back[QStringLiteral("Completed")].typeId(), QMetaType::Bool);
    EXPECT_EQ(back[QStringLiteral("Snapshot")].typeId(), QMetaType::QByteArray);
    EXPECT_EQ(back[QStringLiteral("When")].typeId(), QMetaType::QDateTime);
    EXPECT_EQ(back[QStringLiteral("When")].toDateTime().timeSpec(), Qt::UTC);
    EXPECT_EQ(back[QStringLiteral("Contacts")].typeId(), QMetaType::QVariantList);
    EXPECT_EQ(back[QStringLiteral("Nobody")].typeId(), QMetaType::QVariantMap);
    // An empty string stays a present, empty, non-null string.
    EXPECT_EQ(back[QStringLiteral("Empty")].typeId(), QMetaType::QString);
    EXPECT_FALSE(back[QStringLiteral("Empty")].toString().isNull());
    // A whole real stays a real, and reading then writing gives the same bytes.
    EXPECT_EQ(roundTrip(QVariantList{1.0}).toList().first().typeId(), QMetaType::Double);
    const QByteArray xml = PropertyList::toXml(QVariantList{record, record});
    EXPECT_EQ(PropertyList::toXml(*PropertyList::parse(xml)), xml);
}

TEST(PropertyListRoundTrip, RealsUseTheShortestExactText)
{
    const struct {
        double value;
        const char *text;
    } cases[] = {{0.1, "0.1"},
                 {1.0, "1"},
                 {-2.5, "-2.5"},
                 {1.0 / 3.0, "0.3333333333333333"},
                 {1763822400.123456, "1763822400.123456"},
                 {1e300, "1e+300"},
                 {5e-324, "5e-324"},
                 {std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
                 {std::numeric_limits<double>::infinity(), "inf"},
                 {-std::numeric_limits<double>::infinity(), "-inf"},
                 {std::nan(""), "nan"}};
    for (const auto &c : cases) {
        const QByteArray xml = PropertyList::toXml(c.value);
        EXPECT_TRUE(xml.contains(QByteArray("<real>") + c.text + "</real>")) << c.text << "\n" << xml.toStdString();
        const double back = roundTrip(c.value).toDouble();
        if (std::isnan(c.value))
            EXPECT_TRUE(std::isnan(back));
        else
            EXPECT_EQ(std::memcmp(&back, &c.value, sizeof back), 0) << c.text;
    }
    // Random bit patterns: every finite double comes back bit for bit.
    quint64 state = 0x9E3779B97F4A7C15ull;
    for (int i = 0; i < 2000; ++i) {
        state = state * 6364136223846793005ull + 1442695040888963407ull;
        double value;
        std::memcpy(&value, &state, sizeof value);
        if (!std::isfinite(value))
            continue;
        const double back = roundTrip(value).toDouble();
        ASSERT_EQ(std::memcmp(&back, &value, sizeof back), 0) << PropertyList::toXml(value).toStdString();
    }
}

TEST(PropertyListRoundTrip, RealsIgnoreADecimalCommaLocale)
{
    // Qt programs inherit LC_NUMERIC from LANG; a German one must still write and read "0.5".
    const std::string previous = std::setlocale(LC_NUMERIC, nullptr);
    const bool german = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr;
    if (german) {
        char probe[16];
        std::snprintf(probe, sizeof probe, "%.1f", 0.5);
        EXPECT_STREQ(probe, "0,5"); // the locale really is in force
    }
    EXPECT_TRUE(PropertyList::toXml(1234.5).contains("<real>1234.5</real>"));
    const auto parsed = PropertyList::parse(document("<real>1234.5</real>\n"));
    std::setlocale(LC_NUMERIC, previous.c_str());
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->toDouble(), 1234.5);
    if (!german)
        GTEST_SKIP() << "de_DE.UTF-8 is not installed; checked under the current locale only";
}

TEST(PropertyListWriter, MapsOtherQtTypesSensibly)
{
    QVariantHash hash;
    hash.insert(QStringLiteral("zeta"), 1);
    hash.insert(QStringLiteral("alpha"), 2);
    const QVariantMap root{
        {QStringLiteral("int"), int(-7)},
        {QStringLiteral("uint"), uint(7)},
        {QStringLiteral("float"), 0.1f},
        {QStringLiteral("day"), QDate(2026, 11, 22)},
        {QStringLiteral("names"), QStringList{QStringLiteral("a"), QStringLiteral("b")}},
        {QStringLiteral("hash"), hash},
        {QStringLiteral("absent"), QVariant()},
        {QStringLiteral("big"), std::numeric_limits<quint64>::max()},
    };
    const QByteArray xml = PropertyList::toXml(root);
    EXPECT_TRUE(xml.contains("<key>int</key>\n\t<integer>-7</integer>"));
    EXPECT_TRUE(xml.contains("<key>uint</key>\n\t<integer>7</integer>"));
    EXPECT_TRUE(xml.contains("<key>float</key>\n\t<real>0.1</real>"));
    EXPECT_TRUE(xml.contains("<key>day</key>\n\t<date>2026-11-22T00:00:00Z</date>"));
    EXPECT_TRUE(xml.contains("<array>\n\t\t<string>a</string>\n\t\t<string>b</string>\n\t</array>"));
    EXPECT_TRUE(xml.contains("<dict>\n\t\t<key>alpha</key>\n\t\t<integer>2</integer>\n\t\t<key>zeta</key>"));
    EXPECT_TRUE(xml.contains("<integer>18446744073709551615</integer>"));
    EXPECT_FALSE(xml.contains("absent")); // an empty field is an absent key
    const QVariantMap back = PropertyList::parse(xml)->toMap();
    EXPECT_EQ(back[QStringLiteral("int")], QVariant(qint64(-7)));
    EXPECT_EQ(back[QStringLiteral("names")].toList(), (QVariantList{QStringLiteral("a"), QStringLiteral("b")}));
    EXPECT_EQ(back[QStringLiteral("big")].toULongLong(), std::numeric_limits<quint64>::max());
}

TEST(PropertyListFiles, WriteThenReadAndFailuresSayWhy)
{
    const QString folder = TestEnvironment::home() + QStringLiteral("/plists");
    ASSERT_TRUE(QDir().mkpath(folder));
    const QString path = folder + QStringLiteral("/Assignments.plist");
    QString error;
    ASSERT_TRUE(PropertyList::writeFile(path, QVariantList{sampleRecord()}, &error)) << error.toStdString();
    ASSERT_TRUE(PropertyList::writeFile(path, QVariantList{sampleRecord(), 2.5}, &error));
    const auto back = PropertyList::readFile(path, &error);
    ASSERT_TRUE(back) << error.toStdString();
    EXPECT_EQ(*back, QVariant(QVariantList{sampleRecord(), 2.5}));
    // Nothing but the file itself is left behind by the atomic writes.
    EXPECT_EQ(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{QStringLiteral("Assignments.plist")});

    error.clear();
    EXPECT_FALSE(PropertyList::readFile(folder + QStringLiteral("/Missing.plist"), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("Missing.plist")));

    error.clear();
    const QString nested = folder + QStringLiteral("/not/there/Out.plist");
    EXPECT_FALSE(PropertyList::writeFile(nested, QVariantList(), &error));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(QDir(folder + QStringLiteral("/not")).exists());

    error.clear();
    TestEnvironment::writeFile(path, "<plist><array><string>cut");
    EXPECT_FALSE(PropertyList::readFile(path, &error));
    EXPECT_TRUE(error.startsWith(path)) << error.toStdString();
}

TEST(PropertyListFiles, LargeMappedFileReadsWhole)
{
    // Above the mapping threshold and past several release steps of the reader.
    QVariantList records;
    QByteArray blob(50 * 1024, 'q');
    for (int i = 0; i < 400; ++i) {
        blob[i] = char(i);
        records.append(QVariantMap{{QStringLiteral("Name"), QStringLiteral("Record %1 ✓").arg(i)},
                                   {QStringLiteral("Snapshot"), blob},
                                   {QStringLiteral("Priority"), i / 7.0}});
    }
    const QString path = TestEnvironment::home() + QStringLiteral("/Big.plist");
    QString error;
    ASSERT_TRUE(PropertyList::writeFile(path, records, &error)) << error.toStdString();
    ASSERT_GT(QFile(path).size(), 20 << 20);
    // Written in pieces as it is serialised, it is still exactly the document toXml() makes.
    EXPECT_EQ(TestEnvironment::readFile(path), PropertyList::toXml(records));
    const auto back = PropertyList::readFile(path, &error);
    ASSERT_TRUE(back) << error.toStdString();
    EXPECT_EQ(*back, QVariant(records));

    // An error far into a mapped file still reports its line.
    QByteArray broken = PropertyList::toXml(records);
    broken.chop(30);
    TestEnvironment::writeFile(path, broken);
    EXPECT_FALSE(PropertyList::readFile(path, &error));
    EXPECT_TRUE(error.contains(QStringLiteral("line "))) << error.toStdString();
}
