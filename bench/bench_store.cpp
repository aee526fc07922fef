// Speed and memory of the assignment store on generated stores of 1,000, 10,000 and 100,000
// records. Every figure is a ratio to a floor measured in the same run on the same file, the two
// timed alternately so that both see the same machine:
//   load            AssignmentStore::load() (file to records) against reading the file and counting
//                   its '<' bytes once
//   save            AssignmentStore::save() after one record changed (atomic, fdatasync included)
//                   against writing the same bytes with QSaveFile
//   startup_repair  the start-up repair (two read-and-write passes) against two loads and two
//                   floor writes of the same file
//   peak_memory     peak RSS growth while loading the 100,000 store, against the file's size
// Counters: median_ms, floor_ms and ratio = median_ms / floor_ms.

#include "store/AssignmentStore.h"
#include "support/BenchMeasure.h"
#include "support/StoreGenerator.h"

#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <map>
#include <memory>

namespace {

struct GeneratedStore {
    std::unique_ptr<QTemporaryDir> dir;
    QString path;
    qint64 size = 0;
};

const GeneratedStore &store(int count)
{
    static std::map<int, GeneratedStore> stores;
    auto it = stores.find(count);
    if (it == stores.end()) {
        GeneratedStore generated;
        generated.dir = std::make_unique<QTemporaryDir>();
        generated.path = generated.dir->filePath(QStringLiteral("Assignments.plist"));
        QString error;
        if (!StoreGenerator::writeStore(generated.path, count, &error))
            qFatal("could not write the store: %s", qPrintable(error));
        generated.size = QFileInfo(generated.path).size();
        it = stores.emplace(count, std::move(generated)).first;
    }
    return it->second;
}

void Load(benchmark::State &state)
{
    const GeneratedStore &generated = store(int(state.range(0)));
    BenchMeasure::Pair pair;
    for (auto _ : state) {
        pair.floor([&] { benchmark::DoNotOptimize(BenchMeasure::readAndCountOpenings(generated.path)); });
        pair.measure([&] {
            AssignmentStore loader(generated.path);
            auto records = loader.load();
            benchmark::DoNotOptimize(records);
        });
    }
    pair.report(state);
    state.counters["file_MB"] = double(generated.size) / 1e6;
}

void Save(benchmark::State &state)
{
    const GeneratedStore &generated = store(int(state.range(0)));
    QTemporaryDir dir;
    const QString target = dir.filePath(QStringLiteral("Assignments.plist"));
    QFile::copy(generated.path, target);
    AssignmentStore saver(target);
    AssignmentList records = *saver.load();
    saver.save(records); // every record's text is cached from here on, as in a running program
    const QByteArray bytes = BenchMeasure::readAll(target);
    const QString floorTarget = dir.filePath(QStringLiteral("floor.plist"));
    BenchMeasure::Pair pair;
    int edit = 0;
    for (auto _ : state) {
        pair.floor([&] { BenchMeasure::saveAtomically(floorTarget, bytes); });
        // A save follows one change, as every edit in the program does.
        records[edit++ % records.size()]->set(QStringLiteral("Grade"), QStringLiteral("B+"));
        pair.measure([&] { saver.save(records); });
    }
    pair.report(state);
}

void StartupRepair(benchmark::State &state)
{
    const GeneratedStore &generated = store(int(state.range(0)));
    QTemporaryDir dir;
    const QString target = dir.filePath(QStringLiteral("Assignments.plist"));
    const QByteArray bytes = BenchMeasure::readAll(generated.path);
    BenchMeasure::Pair pair;
    for (auto _ : state) {
        pair.floor([&] {
            for (int pass = 0; pass < 2; ++pass) {
                auto records = AssignmentStore::readFile(generated.path);
                benchmark::DoNotOptimize(records);
                BenchMeasure::saveAtomically(target, bytes);
            }
        });
        BenchMeasure::saveAtomically(target, bytes);
        pair.measure([&] { AssignmentStore(target).repairAtStartup(); });
    }
    pair.report(state);
}

void PeakMemory(benchmark::State &state)
{
    const GeneratedStore &generated = store(int(state.range(0)));
    qint64 growth = -1;
    for (auto _ : state) {
        growth = BenchMeasure::peakGrowthBytes([&] {
            AssignmentStore loader(generated.path);
            auto records = loader.load();
            benchmark::DoNotOptimize(records);
        });
    }
    if (growth < 0) {
        state.SkipWithError("could not measure the peak memory");
        return;
    }
    state.counters["peak_MB"] = double(growth) / 1e6;
    state.counters["file_MB"] = double(generated.size) / 1e6;
    state.counters["ratio"] = double(growth) / double(generated.size);
}

} // namespace

BENCHMARK(Load)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(Save)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(StartupRepair)->Arg(10000)->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(PeakMemory)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
