// The exports write long files a chunk at a time as they are made; these tests hold the streamed
// files to the texts built whole in memory, and check that a failing write is reported.
#include "exchange/ExportFields.h"
#include "exchange/ICalExport.h"
#include "exchange/TextExport.h"
#include "platform/Paths.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

namespace {

// Every kind of UTF-16 an export meets: ASCII, two- and three-byte characters and a surrogate pair.
const QString Mixed = QString::fromUtf8("Plain ASCII run of some length. Révisez le subjonctif; "
                                        "\xe6\x95\xb0\xe5\xad\xa6 \xd0\x9f\xd0\xbe \xf0\x9f\x93\x9a ok "
                                        "abcdefgh\xc3\xbc"
                                        "abcdefg");

// Records with the fields the exports write, some missing, a few long notes, and lone surrogates at
// the ends of names (damaged text, written as "?"): the list spans many chunks.
AssignmentList manyRecords(int count)
{
    AssignmentList list;
    for (int i = 0; i < count; ++i) {
        QString name = QStringLiteral("Problem set %1 ").arg(i) + Mixed;
        if (i % 97 == 0)
            name += QChar(i % 2 ? 0xD800 : 0xDC00);
        QVariantMap fields{{"Name", name},
                           {"Date", QStringLiteral("2026-12-%1 23:59:00 -0500").arg(1 + i % 28, 2, 10, QLatin1Char('0'))},
                           {"Completed", i % 3 == 0}};
        if (i % 2)
            fields.insert("Course", QStringLiteral("Calculus & Co"));
        if (i % 5)
            fields.insert("Notes", Mixed.repeated(1 + i % 4));
        if (i % 7 == 0)
            fields.insert("Grade", 90 + i % 10); // a number, not text
        if (i == 10)
            fields.insert("Notes", QString(300000, QLatin1Char('n'))); // one piece longer than a chunk
        list.append(Assignments::make(fields));
        if (i % 50 == 0)
            list.append(nullptr);
    }
    return list;
}

} // namespace

TEST(ExportFields, FindsWhatLookingUpFindsAndNothingThatOnlyLooksLikeIt)
{
    AssignmentList list = manyRecords(100);
    list[3]->set(AssignmentKeys::Type, QStringLiteral("Quiz"));
    list[3]->set(AssignmentKeys::Textbook, QStringLiteral("Stewart"));
    list[3]->remove(AssignmentKeys::Name);
    auto lookedUp = [](const QVariantMap &fields, const QString &key) -> const QVariant * {
        const auto it = fields.constFind(key);
        return it == fields.constEnd() ? nullptr : &it.value();
    };
    for (const AssignmentRef &record : list) {
        if (!record)
            continue;
        const QVariantMap &fields = record->fields();
        const ExportFields found = ExportFields::of(fields);
        EXPECT_EQ(found.name, lookedUp(fields, AssignmentKeys::Name));
        EXPECT_EQ(found.date, lookedUp(fields, AssignmentKeys::Date));
        EXPECT_EQ(found.course, lookedUp(fields, AssignmentKeys::Course));
        EXPECT_EQ(found.textbook, lookedUp(fields, AssignmentKeys::Textbook));
        EXPECT_EQ(found.type, lookedUp(fields, AssignmentKeys::Type));
        EXPECT_EQ(found.grade, lookedUp(fields, AssignmentKeys::Grade));
        EXPECT_EQ(found.completed, lookedUp(fields, AssignmentKeys::Completed));
        EXPECT_EQ(found.notes, lookedUp(fields, AssignmentKeys::Notes));
    }
    const AssignmentRef lookalikes = Assignments::make({{"name", "x"}, {"Dates", "y"}, {"Notes ", "z"}, {"Typo", "t"}});
    const ExportFields none = ExportFields::of(*lookalikes);
    EXPECT_FALSE(none.name || none.date || none.notes || none.type);
}

TEST(StreamedExport, TheFilesEqualTheTextsBuiltInMemory)
{
    const AssignmentList list = manyRecords(3000);
    QDir().mkpath(Paths::dataFolder());

    ICalExport::resetCountersForTest();
    const QByteArray events = ICalExport("%c: %n (%a) %d", ICalExport::Events).fileText(list, QDate(2026, 11, 22));
    ASSERT_GT(events.size(), 2 * 1024 * 1024); // many chunks
    ASSERT_TRUE(events.contains("Name: Problem set 97 " + Mixed.toUtf8() + "?\\n")); // the lone surrogate
    ICalExport::resetCountersForTest();
    ASSERT_TRUE(ICalExport("%c: %n (%a) %d", ICalExport::Events).performExport(list));
    // The file is dated by the pinned clock, the same day as above.
    EXPECT_EQ(TestEnvironment::readFile(Paths::iCalExportFile()), events);

    const QString path = Paths::home() + "/Quillory.txt";
    QString error;
    ASSERT_TRUE(TextExport::writeTextFile(path, list, &error)) << qPrintable(error);
    EXPECT_EQ(TestEnvironment::readFile(path), TextExport::textFileBytes(list));
}

TEST(StreamedExport, AWriteThatFailsHalfWayIsReportedAndLeavesTheEarlierFileWhole)
{
    const QString path = Paths::home() + "/Quillory.txt";
    {
        QFile earlier(path);
        ASSERT_TRUE(earlier.open(QIODevice::WriteOnly));
        earlier.write("the earlier export");
    }
    // A file size limit makes the system refuse the writes past 256 KiB, as a full disk would.
    struct sigaction ignore {};
    struct sigaction previous {};
    ignore.sa_handler = SIG_IGN;
    ASSERT_EQ(::sigaction(SIGXFSZ, &ignore, &previous), 0);
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit saved = limit;
    limit.rlim_cur = 256 * 1024;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    QString error;
    const bool written = TextExport::writeTextFile(path, manyRecords(3000), &error);
    ::setrlimit(RLIMIT_FSIZE, &saved);
    ::sigaction(SIGXFSZ, &previous, nullptr);

    EXPECT_FALSE(written);
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(TestEnvironment::readFile(path), "the earlier export");
    EXPECT_EQ(QDir(Paths::home()).entryList(QDir::Files), QStringList{"Quillory.txt"}); // no temporary file left
}
