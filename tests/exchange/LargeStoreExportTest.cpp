// The exports of a large, realistic store (the one the benchmarks time) held to the bytes the
// program has always written for it: any change to how the files are built, encoded or written
// that alters a single byte shows here. The digests were taken from the exports as they stood
// before their writing was reworked; the store is generated the same on every machine, so they
// change only when the generator does (regenerate them from a build that is known to be right).
#include "exchange/ICalExport.h"
#include "exchange/TextExport.h"
#include "platform/Paths.h"
#include "store/AssignmentStore.h"
#include "support/StoreGenerator.h"
#include "support/TestEnvironment.h"

#include <QCryptographicHash>
#include <QDir>
#include <gtest/gtest.h>

namespace {

constexpr int RecordCount = 10000;

// The records as the program holds them after loading the store from its file.
const AssignmentList &largeStore()
{
    static const AssignmentList list = [] {
        QDir().mkpath(Paths::dataFolder());
        AssignmentStore store;
        AssignmentStore::writeFile(store.path(), StoreGenerator::assignments(RecordCount));
        return store.load().value_or(AssignmentList());
    }();
    return list;
}

std::string digest(const QByteArray &bytes)
{
    return QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex().toStdString();
}

QByteArray exportedCalendar(const QString &name, const QString &format)
{
    ICalExport::resetCountersForTest();
    EXPECT_TRUE(ICalExport(name, format).performExport(largeStore()));
    return TestEnvironment::readFile(Paths::iCalExportFile());
}

} // namespace

TEST(LargeStoreExport, TheCalendarFilesAreTheBytesTheyHaveAlwaysBeen)
{
    ASSERT_EQ(largeStore().size(), RecordCount);
    // Records without a due date are dated by the pinned clock.
    const QByteArray events = exportedCalendar(ICalExport::DefaultName, ICalExport::Events);
    EXPECT_EQ(events.size(), 3829046);
    EXPECT_EQ(digest(events), "5f326c0486a0284b331b90e9c65b837619ac6af4905dba537ec9b0f8c8bb5082");

    const QByteArray toDos = exportedCalendar(QStringLiteral("%c: %n (%a) %d"), ICalExport::ToDos);
    EXPECT_EQ(toDos.size(), 4188750);
    EXPECT_EQ(digest(toDos), "b6ca35e76e9550896afa248bd3fcb948fbe74b7654e6eb068fdc3824565e3b38");
}

TEST(LargeStoreExport, TheTextFileIsTheBytesItHasAlwaysBeen)
{
    const QString path = Paths::home() + QStringLiteral("/Quillory.txt");
    QString error;
    ASSERT_TRUE(TextExport::writeTextFile(path, largeStore(), &error)) << qPrintable(error);
    QByteArray text = TestEnvironment::readFile(path);
    // The heading carries the program's version, which is not the export's to keep.
    const qsizetype headingEnd = text.indexOf('\n');
    ASSERT_GT(headingEnd, 0);
    EXPECT_TRUE(text.startsWith("Quillory "));
    text.remove(0, headingEnd);
    EXPECT_EQ(text.size(), 2765184);
    EXPECT_EQ(digest(text), "dc40d919ffe27069b59afcb719deaebb9a47d2f272558402ca77268c8d598fca");
}
