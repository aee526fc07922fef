// What the exports and the backup merge cost on a large store. The exports are measured against the
// floor of writing the same number of bytes with QSaveFile in the same run ("x_floor" is the ratio;
// the goal is at most 3), the merge of 10,000 backup records into 10,000 current ones (half of them
// duplicates) against the goal of one second, and against the floor of writing its result file.

#include "exchange/Backup.h"
#include "exchange/ICalExport.h"
#include "exchange/TextExport.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/Workspace.h"
#include "store/AssignmentStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>
#include "support/BenchMeasure.h"
#include "support/StoreGenerator.h"

#include <chrono>
#include <ctime>
#include <vector>

namespace {

constexpr int RecordCount = 10000;

// The realistic generated store; records past RecordCount stand for a backup's own records.
QVariantMap record(int i)
{
    static const QVariantList records = StoreGenerator::assignments(2 * RecordCount);
    return records[i].toMap();
}

// The records as the program has them: written to the store and read back, so that they lie in
// memory the way a loaded store does.
const AssignmentList &assignments()
{
    static const AssignmentList list = [] {
        QVariantList records;
        for (int i = 0; i < RecordCount; ++i)
            records.append(record(i));
        AssignmentStore store;
        AssignmentStore::writeFile(store.path(), records);
        return store.load().value_or(AssignmentList());
    }();
    return list;
}

double seconds(std::chrono::steady_clock::duration d)
{
    return std::chrono::duration<double>(d).count();
}

// Writing `size` bytes atomically, as every export does at the least.
double floorSeconds(qsizetype size)
{
    const QByteArray bytes(size, 'x');
    const QString path = Paths::dataFolder() + QStringLiteral("/floor.bin");
    const auto start = std::chrono::steady_clock::now();
    QSaveFile file(path);
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
    file.commit();
    return seconds(std::chrono::steady_clock::now() - start);
}

// The export and its floor alternate, so that both see the same machine and the same disk; the
// ratio is of the two medians, so that one slow write on a busy machine does not decide it.
template<typename Work>
void measure(benchmark::State &state, Work work)
{
    std::vector<double> times;
    std::vector<double> floors;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const qsizetype bytes = work();
        const double elapsed = seconds(std::chrono::steady_clock::now() - start);
        state.SetIterationTime(elapsed);
        times.push_back(elapsed);
        floors.push_back(floorSeconds(bytes));
    }
    const double floor = BenchMeasure::Pair::median(floors);
    state.counters["median_ms"] = BenchMeasure::Pair::median(times) * 1000;
    state.counters["floor_ms"] = floor * 1000;
    state.counters["x_floor"] = floor > 0 ? BenchMeasure::Pair::median(times) / floor : 0.0;
}

void BM_ICalExport(benchmark::State &state)
{
    measure(state, [] {
        ICalExport("%n", ICalExport::Events).performExport(assignments());
        return QFileInfo(Paths::iCalExportFile()).size();
    });
}
BENCHMARK(BM_ICalExport)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_ICalExportCustomName(benchmark::State &state)
{
    measure(state, [] {
        ICalExport("%c: %n (%a) %d", ICalExport::ToDos).performExport(assignments());
        return QFileInfo(Paths::iCalExportFile()).size();
    });
}
BENCHMARK(BM_ICalExportCustomName)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_TextExport(benchmark::State &state)
{
    const QString path = Paths::dataFolder() + QStringLiteral("/export.txt");
    measure(state, [&] {
        TextExport::writeTextFile(path, assignments());
        return QFileInfo(path).size();
    });
}
BENCHMARK(BM_TextExport)->UseManualTime()->Unit(benchmark::kMillisecond);

// Half of the backup's records equal current ones apart from "Date Updated".
struct MergeData {
    QVariantList backup;
    QVariantList current;
};
const MergeData &mergeData()
{
    static const MergeData data = [] {
        MergeData d;
        for (int i = 0; i < RecordCount; ++i) {
            d.current.append(record(i));
            QVariantMap fromBackup = record(i % 2 == 0 ? i : RecordCount + i);
            fromBackup.insert("Date Updated", "2025-01-01 00:00:00 -0500");
            d.backup.append(fromBackup);
        }
        return d;
    }();
    return data;
}

void BM_MergeInMemory(benchmark::State &state)
{
    const MergeData &data = mergeData();
    measure(state, [&] {
        const QVariantList merged = Backup::mergeAssignments(data.backup, data.current, "2026-11-22 10:30:00 -0500",
                                                             [] { return true; });
        benchmark::DoNotOptimize(merged.size());
        return qsizetype(1); // the in-memory merge writes nothing; its floor is the smallest write
    });
}
BENCHMARK(BM_MergeInMemory)->UseManualTime()->Unit(benchmark::kMillisecond);

// The whole import: reading the backup and the data files, merging, writing three files.
void BM_MergeImport(benchmark::State &state)
{
    const MergeData &data = mergeData();
    const QString backupPath = Paths::home() + QStringLiteral("/backup.plist");
    PropertyList::writeFile(backupPath, QVariantList{QVariant(data.backup), QVariantList{}, QVariantList{}});
    const QByteArray current = PropertyList::toXml(data.current);
    measure(state, [&] {
        state.PauseTiming();
        PropertyList::writeBytes(Paths::assignmentsFile(), current);
        Alerts::queueAnswer(Backup::MergeButton);
        Alerts::queueAnswer(Backup::KeepOnlyOneButton);
        state.ResumeTiming();
        Backup::sharedController()->importFromFile(backupPath);
        return QFileInfo(Paths::assignmentsFile()).size();
    });
}
BENCHMARK(BM_MergeImport)->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    // The generated store is a student's in New York: its dates carry that zone's offsets.
    // QUILLORY_BENCH_TZ runs it elsewhere, as for a student who moved.
    qputenv("TZ", !qEnvironmentVariableIsEmpty("QUILLORY_BENCH_TZ") ? qgetenv("QUILLORY_BENCH_TZ") : "America/New_York");
    tzset();
    QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    QCoreApplication app(argc, argv);
    QDir().mkpath(Paths::dataFolder());
    Workspace::recordForTest(); // a benchmark never opens the calendar
    // Built before any timing: the first timed export would otherwise pay for generating the store.
    assignments();
    mergeData();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
