#include "LibplistFiles.h"
#include "platform/PropertyList.h"
#include "support/BinaryPlists.h"

#include <QTimeZone>
#include <gtest/gtest.h>

#include <limits>

namespace {

std::optional<QVariant> parse(const QByteArray &bytes, QString *error = nullptr)
{
    return PropertyList::parse(bytes, error);
}

QByteArray plist(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n" + body + "\n</plist>\n";
}

QVariant value(const QByteArray &body)
{
    QString error;
    const auto parsed = parse(plist(body), &error);
    EXPECT_TRUE(parsed) << body.toStdString() << ": " << error.toStdString();
    return parsed.value_or(QVariant());
}

} // namespace

TEST(PropertyListParse, DecodesEntitiesCdataAndComments)
{
    EXPECT_EQ(value("<string>a &amp; b &lt;c&gt; &quot;d&quot; &apos;e&apos;</string>").toString(),
              QStringLiteral("a & b <c> \"d\" 'e'"));
    EXPECT_EQ(value("<string>&#65;&#x42;&#xe9;&#8364;&#x1F600;</string>").toString(),
              QStringLiteral("ABé€😀"));
    EXPECT_EQ(value("<string>x<![CDATA[<b>&amp;</b>]]>y<!-- gone -->z</string>").toString(),
              QStringLiteral("x<b>&amp;</b>yz"));
    EXPECT_EQ(value("<!-- before --><array>\n <!-- inside -->\n\t<integer>1</integer> </array><!-- after -->"),
              QVariant(QVariantList{qint64(1)}));
    // Whitespace in strings is kept exactly.
    EXPECT_EQ(value("<string>  two\n lines\t</string>").toString(), QStringLiteral("  two\n lines\t"));
}

TEST(PropertyListParse, AcceptsPrologVariantsAndUtf8)
{
    const QByteArray body = "<dict><key>Kurs</key><string>Französisch – Übung ✓ 日本語</string></dict>";
    const QByteArray withEverything = "\xEF\xBB\xBF<?xml version='1.0'?>\n<!-- hi -->\n"
                                      "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" \"x.dtd\" "
                                      "[ <!ENTITY e \"a>b\"> ]>\n<plist version='1.0'>"
                                      + body + "</plist>\n<!-- trailing -->\n";
    const auto parsed = parse(withEverything);
    ASSERT_TRUE(parsed);
    EXPECT_EQ(parsed->toMap().value(QStringLiteral("Kurs")).toString(),
              QStringLiteral("Französisch – Übung ✓ 日本語"));
    EXPECT_TRUE(parse("<plist>" + body + "</plist>")); // no declaration at all
    EXPECT_EQ(value("<dict><key>Straße</key><true/></dict>").toMap().value(QStringLiteral("Straße")), QVariant(true));
}

TEST(PropertyListParse, ReadsScalarForms)
{
    EXPECT_EQ(value("<integer>+5</integer>"), QVariant(qint64(5)));
    EXPECT_EQ(value("<integer> -9223372036854775808 </integer>"), QVariant(std::numeric_limits<qint64>::min()));
    EXPECT_EQ(value("<integer>18446744073709551615</integer>").toULongLong(), std::numeric_limits<quint64>::max());
    EXPECT_EQ(value("<integer>0</integer>").typeId(), QMetaType::LongLong);
    EXPECT_EQ(value("<real>1.5E3</real>"), QVariant(1500.0));
    EXPECT_EQ(value("<real>-2e-3</real>"), QVariant(-0.002));
    EXPECT_EQ(value("<real>+7</real>"), QVariant(7.0));
    EXPECT_EQ(value("<real>7</real>").typeId(), QMetaType::Double);
    EXPECT_TRUE(std::isinf(value("<real>-inf</real>").toDouble()));
    EXPECT_TRUE(std::isnan(value("<real>nan</real>").toDouble()));
    EXPECT_EQ(value("<true></true>"), QVariant(true));
    EXPECT_EQ(value("<false/>"), QVariant(false));
    EXPECT_EQ(value("<date>2006-09-14T04:00:00Z</date>"),
              QVariant(QDateTime(QDate(2006, 9, 14), QTime(4, 0), QTimeZone::utc())));
    EXPECT_EQ(value("<data>\n\taGVs\n\tbG8=\r\n</data>"), QVariant(QByteArray("hello")));
    EXPECT_EQ(value("<data>aGVsbG8</data>"), QVariant(QByteArray("hello"))); // padding left off
    EXPECT_EQ(value("<data/>"), QVariant(QByteArray()));
    EXPECT_EQ(value("<string/>").toString(), QStringLiteral(""));
    EXPECT_EQ(value("<array/>"), QVariant(QVariantList()));
    EXPECT_EQ(value("<dict/>"), QVariant(QVariantMap()));
    // A repeated key keeps its last value; keys out of order still land in their place.
    EXPECT_EQ(value("<dict><key>b</key><integer>1</integer><key>a</key><integer>2</integer>"
                    "<key>b</key><integer>3</integer></dict>"),
              QVariant(QVariantMap{{QStringLiteral("a"), qint64(2)}, {QStringLiteral("b"), qint64(3)}}));
}

TEST(PropertyListParse, RejectsBrokenDocumentsWithAMessage)
{
    const QByteArray good = plist("<dict><key>Name</key><string>x</string></dict>");
    ASSERT_TRUE(parse(good));
    const QByteArray cases[] = {
        "",
        "   \n",
        "garbage",
        "\x00\x01\x02 random",
        "<array><string>x</string></array>",
        "<?xml version=\"1.0\"?><foo><string>x</string></foo>",
        plist("<dict><key>Name</key></dict>"),
        plist("<dict><key>Name</key><key>Other</key><string>x</string></dict>"),
        plist("<dict><string>no key</string></dict>"),
        plist("<dict><key>Name</key><string>x</string><key>Other</key>"),
        plist("<blob>1</blob>"),
        plist("<string>x</string><string>second value</string>"),
        plist("<string>x</strin>"),
        plist("<array><string>x</string></dict>"),
        plist("<integer>12a</integer>"),
        plist("<integer></integer>"),
        plist("<integer>99999999999999999999</integer>"),
        plist("<integer>-99999999999999999999</integer>"),
        plist("<real>1,5</real>"),
        plist("<real></real>"),
        plist("<date>2006-13-14T04:00:00Z</date>"),
        plist("<date>yesterday</date>"),
        plist("<data>aGV$sbG8=</data>"),
        plist("<data>a</data>"),
        plist("<string>&nbsp;</string>"),
        plist("<string>&#0;</string>"),
        plist("<string>&#xD800;</string>"),
        plist("<string>a <b>bold</b></string>"),
        plist("<true>yes</true>"),
        plist("<key>loose</key>"),
        plist(""),
        "<plist version=\"1.0\"/>",
        "<plist><string>x</string></plist> trailing text",
        "<plist><string>x</string></plist><plist/>",
        "<plist><string>x</string>",
        "<plist><!-- unclosed comment <string>x</string></plist>",
        "<plist><string><![CDATA[unclosed</string></plist>",
        "<plist><string a=>x</string></plist>",
    };
    for (const QByteArray &bytes : cases) {
        QString error;
        EXPECT_FALSE(parse(bytes, &error)) << bytes.toStdString();
        EXPECT_FALSE(error.isEmpty()) << bytes.toStdString();
    }
    // Every truncation of a good document fails too.
    for (qsizetype length = 0; length < good.size() - 1; ++length) {
        const QByteArray cut = good.left(length);
        if (cut.trimmed() == good.trimmed())
            continue;
        EXPECT_FALSE(parse(cut)) << cut.toStdString();
    }
}

TEST(PropertyListParse, ErrorsNameTheLine)
{
    QString error;
    EXPECT_FALSE(parse("<plist>\n<array>\n\t<string>ok</string>\n\t<wrong/>\n</array>\n</plist>", &error));
    EXPECT_TRUE(error.startsWith(QStringLiteral("line 4, column 2:"))) << error.toStdString();
    EXPECT_TRUE(error.contains(QStringLiteral("<wrong>"))) << error.toStdString();
}

TEST(PropertyListParse, DeepNestingIsRefusedNotOverflowed)
{
    QByteArray deep;
    for (int i = 0; i < 100000; ++i)
        deep += "<array>";
    QString error;
    EXPECT_FALSE(parse(plist(deep), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("nested"))) << error.toStdString();
    QByteArray fine;
    for (int i = 0; i < 100; ++i)
        fine += "<array>";
    for (int i = 0; i < 100; ++i)
        fine += "</array>";
    EXPECT_TRUE(parse(plist(fine)));
}

TEST(PropertyListParse, ReadsBinaryPropertyLists)
{
    // Written by another program's binary writer: every type once.
    const QByteArray binary = QByteArray::fromHex(
        "62706c6973743030da0102030405060708090a0b0c0d0e0f10141516175342696754426c6f6255436f756e7454446f6e655545"
        "6d707479544c697374544e616d65524e6f585072696f72697479545768656e1007430001fe13ffffffffffffffd609d0a31112"
        "135161233ff8000000000000a06500dc00620075006e006708233fb999999999999a3341a5721680000000081d21262c31373c"
        "41444d525458616263676972737e7f8800000000000001010000000000000018000000000000000000000000000000"
        "91");
    QString error;
    const auto parsed = parse(binary, &error);
    ASSERT_TRUE(parsed) << error.toStdString();
    const QVariantMap map = parsed->toMap();
    EXPECT_EQ(map[QStringLiteral("Name")], QVariant(QStringLiteral("Übung")));
    EXPECT_EQ(map[QStringLiteral("Count")], QVariant(qint64(-42)));
    EXPECT_EQ(map[QStringLiteral("Big")], QVariant(qint64(7)));
    EXPECT_EQ(map[QStringLiteral("Priority")], QVariant(0.1));
    EXPECT_EQ(map[QStringLiteral("Done")], QVariant(true));
    EXPECT_EQ(map[QStringLiteral("No")], QVariant(false));
    EXPECT_EQ(map[QStringLiteral("Blob")], QVariant(QByteArray("\x00\x01\xfe", 3)));
    EXPECT_EQ(map[QStringLiteral("When")], QVariant(QDateTime(QDate(2006, 9, 14), QTime(4, 0), QTimeZone::utc())));
    EXPECT_EQ(map[QStringLiteral("List")], QVariant(QVariantList{QStringLiteral("a"), 1.5, QVariantList()}));
    EXPECT_EQ(map[QStringLiteral("Empty")], QVariant(QVariantMap()));
    // And it writes out as XML that reads back the same.
    EXPECT_EQ(PropertyList::parse(PropertyList::toXml(*parsed)), parsed);

    for (qsizetype length : {8, 40, 120, 200}) {
        error.clear();
        EXPECT_FALSE(parse(binary.left(length), &error)) << length;
        EXPECT_FALSE(error.isEmpty());
    }
}

TEST(PropertyListParse, ReadsWhatLibplistWritesInBinary)
{
    // libplist's binary writer as an independent source of files: every type, shared strings, a
    // long array and a UTF-16 string.
    plist_t root = plist_new_dict();
    plist_dict_set_item(root, "Name", plist_new_string("Ölfarben ✓"));
    plist_dict_set_item(root, "Negative", plist_new_uint(uint64_t(-5)));
    plist_dict_set_item(root, "Large", plist_new_uint(uint64_t(1) << 40));
    plist_dict_set_item(root, "Priority", plist_new_real(0.3));
    plist_dict_set_item(root, "Completed", plist_new_bool(1));
    plist_dict_set_item(root, "Snapshot", plist_new_data("\x00\x01\x02", 3));
    plist_dict_set_item(root, "When", plist_new_date(0, 0));
    plist_t list = plist_new_array();
    for (int i = 0; i < 300; ++i)
        plist_array_append_item(list, plist_new_string(i % 2 ? "odd" : "even"));
    plist_dict_set_item(root, "List", list);
    const QByteArray binary = LibplistFiles::toBinary(root);

    QString error;
    const auto parsed = parse(binary, &error);
    ASSERT_TRUE(parsed) << error.toStdString();
    const QVariantMap map = parsed->toMap();
    EXPECT_EQ(map[QStringLiteral("Name")], QVariant(QStringLiteral("Ölfarben ✓")));
    EXPECT_EQ(map[QStringLiteral("Negative")], QVariant(qint64(-5)));
    EXPECT_EQ(map[QStringLiteral("Large")], QVariant(qint64(1) << 40));
    EXPECT_EQ(map[QStringLiteral("Priority")], QVariant(0.3));
    EXPECT_EQ(map[QStringLiteral("Completed")], QVariant(true));
    EXPECT_EQ(map[QStringLiteral("Snapshot")], QVariant(QByteArray("\x00\x01\x02", 3)));
    EXPECT_EQ(map[QStringLiteral("When")], QVariant(QDateTime(QDate(2001, 1, 1), QTime(0, 0), QTimeZone::utc())));
    const QVariantList items = map[QStringLiteral("List")].toList();
    ASSERT_EQ(items.size(), 300);
    EXPECT_EQ(items[0], QVariant(QStringLiteral("even")));
    EXPECT_EQ(items[299], QVariant(QStringLiteral("odd")));
}

TEST(PropertyListParse, RefusesABinaryArrayThatHoldsItself)
{
    QString error;
    EXPECT_FALSE(parse(BinaryPlists::fromObjects({QByteArray("\xA1\x00", 2)}), &error));
    EXPECT_TRUE(error.contains(QStringLiteral("itself"))) << error.toStdString();
}
