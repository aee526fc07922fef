// Property-list speed and memory on generated stores of 1,000, 10,000 and 100,000 records.
//
// Every figure is a ratio to a floor measured in the same run, on the same file, interleaved with
// the measured operation so that both see the same machine:
//   parse           readFile() against reading the file and counting its '<' bytes once
//   parse_pugixml   the DOM alternative (pugixml, then QVariants) against the same floor
//   write           writeFile() against writing the same bytes with QSaveFile (fdatasync included)
//   write_cached    the store's path: header + "<array>\n" + cached record fragments + footer
//   serialise       toXml() alone against copying the same bytes in memory (for information)
//   peak_memory     peak RSS growth while reading the 100,000 store, against the file's size
// Counters: median_ms and floor_ms are medians over the iterations; ratio = median_ms / floor_ms.

#include <pugixml.hpp>

#include "platform/PropertyList.h"
#include "support/BenchMeasure.h"
#include "support/StoreGenerator.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QVariantList>
#include <QVariantMap>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <malloc.h>
#include <map>
#include <memory>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct Store {
    QString path;
    QString outPath;
    qint64 fileSize = 0;
    QVariantList records;
    QByteArray bytes;
    QList<QByteArray> fragments;
};

QTemporaryDir &folder()
{
    static QTemporaryDir dir(QDir::tempPath() + QStringLiteral("/bench-propertylist-XXXXXX"));
    return dir;
}

Store &store(int count)
{
    static std::map<int, std::unique_ptr<Store>> stores;
    auto &slot = stores[count];
    if (!slot) {
        slot = std::make_unique<Store>();
        slot->path = folder().filePath(QStringLiteral("Assignments-%1.plist").arg(count));
        slot->outPath = folder().filePath(QStringLiteral("Out-%1.plist").arg(count));
        slot->records = StoreGenerator::assignments(count);
        slot->bytes = PropertyList::toXml(slot->records);
        QString error;
        if (!PropertyList::writeBytes(slot->path, slot->bytes, &error))
            std::fprintf(stderr, "%s\n", qPrintable(error));
        slot->fileSize = slot->bytes.size();
        for (const QVariant &record : std::as_const(slot->records)) {
            QByteArray fragment;
            PropertyList::appendValue(fragment, record, 1);
            slot->fragments.append(fragment);
        }
    }
    return *slot;
}

template<typename Operation>
double timed(Operation &&operation)
{
    const auto start = std::chrono::steady_clock::now();
    operation();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n == 0 ? 0 : (n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2);
}

void report(benchmark::State &state, const Store &s, const std::vector<double> &own, const std::vector<double> &floor)
{
    state.counters["MB"] = double(s.fileSize) / 1e6;
    state.counters["median_ms"] = median(own) * 1e3;
    state.counters["floor_ms"] = median(floor) * 1e3;
    state.counters["ratio"] = median(own) / median(floor);
}

void readAndCount(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = file.readAll();
    benchmark::DoNotOptimize(std::count(bytes.begin(), bytes.end(), '<'));
}

void saveBytes(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly)) {
        file.write(bytes);
        file.commit();
    }
}

// The alternative to our streaming reader: a pugixml DOM of the whole document, then QVariants.
QVariant fromNode(const pugi::xml_node &node)
{
    const std::string_view name = node.name();
    const char *text = node.child_value();
    if (name == "dict") {
        QVariantMap map;
        for (pugi::xml_node key = node.child("key"); key; key = key.next_sibling("key"))
            map.insert(QString::fromUtf8(key.child_value()), fromNode(key.next_sibling()));
        return map;
    }
    if (name == "array") {
        QVariantList list;
        for (pugi::xml_node item = node.first_child(); item; item = item.next_sibling())
            list.append(fromNode(item));
        return list;
    }
    if (name == "string")
        return QString::fromUtf8(text);
    if (name == "real") {
        double real = 0;
        std::from_chars(text, text + std::strlen(text), real);
        return real;
    }
    if (name == "integer") {
        qint64 integer = 0;
        std::from_chars(text, text + std::strlen(text), integer);
        return integer;
    }
    if (name == "true" || name == "false")
        return name == "true";
    if (name == "data")
        return QByteArray::fromBase64(QByteArray::fromRawData(text, qsizetype(std::strlen(text))));
    if (name == "date")
        return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
    return QVariant();
}

QVariant readWithPugixml(const QString &path)
{
    pugi::xml_document document;
    if (!document.load_file(QFile::encodeName(path).constData()))
        return QVariant();
    return fromNode(document.child("plist").first_child());
}

void Parse(benchmark::State &state)
{
    Store &s = store(int(state.range(0)));
    std::vector<double> own;
    std::vector<double> floor;
    for (auto _ : state) {
        floor.push_back(timed([&] { readAndCount(s.path); }));
        double seconds = 0;
        {
            std::optional<QVariant> value;
            seconds = timed([&] { value = PropertyList::readFile(s.path); });
            if (!value || value->toList().size() != s.records.size())
                state.SkipWithError("the store did not read back");
        }
        own.push_back(seconds);
        state.SetIterationTime(seconds);
    }
    report(state, s, own, floor);
}

void ParsePugixml(benchmark::State &state)
{
    Store &s = store(int(state.range(0)));
    std::vector<double> own;
    std::vector<double> floor;
    for (auto _ : state) {
        floor.push_back(timed([&] { readAndCount(s.path); }));
        double seconds = 0;
        {
            QVariant value;
            seconds = timed([&] { value = readWithPugixml(s.path); });
            if (value.toList().size() != s.records.size())
                state.SkipWithError("the store did not read back");
        }
        own.push_back(seconds);
        state.SetIterationTime(seconds);
    }
    report(state, s, own, floor);
}

void Write(benchmark::State &state)
{
    Store &s = store(int(state.range(0)));
    std::vector<double> own;
    std::vector<double> floor;
    for (auto _ : state) {
        floor.push_back(timed([&] { saveBytes(s.outPath, s.bytes); }));
        const double seconds = timed([&] { PropertyList::writeFile(s.outPath, s.records); });
        own.push_back(seconds);
        state.SetIterationTime(seconds);
    }
    if (QFile(s.outPath).size() != s.fileSize)
        state.SkipWithError("the written store differs in size");
    report(state, s, own, floor);
}

void WriteCached(benchmark::State &state)
{
    Store &s = store(int(state.range(0)));
    std::vector<double> own;
    std::vector<double> floor;
    for (auto _ : state) {
        floor.push_back(timed([&] { saveBytes(s.outPath, s.bytes); }));
        const double seconds = timed([&] {
            QByteArray document = PropertyList::documentHeader();
            qsizetype size = document.size() + 32;
            for (const QByteArray &fragment : std::as_const(s.fragments))
                size += fragment.size();
            document.reserve(size);
            document += "<array>\n";
            for (const QByteArray &fragment : std::as_const(s.fragments))
                document += fragment;
            document += "</array>\n";
            document += PropertyList::documentFooter();
            PropertyList::writeBytes(s.outPath, document);
        });
        own.push_back(seconds);
        state.SetIterationTime(seconds);
    }
    if (QFile(s.outPath).size() != s.fileSize)
        state.SkipWithError("the written store differs in size");
    report(state, s, own, floor);
}

// Serialising alone, in memory, against copying the same number of bytes: the processor's share
// of a write, without the disk.
void Serialise(benchmark::State &state)
{
    Store &s = store(int(state.range(0)));
    std::vector<double> own;
    std::vector<double> floor;
    for (auto _ : state) {
        floor.push_back(timed([&] {
            QByteArray copy(s.bytes.constData(), s.bytes.size());
            benchmark::DoNotOptimize(copy.data());
        }));
        const double seconds = timed([&] { benchmark::DoNotOptimize(PropertyList::toXml(s.records).size()); });
        own.push_back(seconds);
        state.SetIterationTime(seconds);
    }
    report(state, s, own, floor);
}

void PeakMemory(benchmark::State &state, bool pugixml)
{
    Store &s = store(int(state.range(0)));
    qint64 growth = 0;
    for (auto _ : state) {
        growth = BenchMeasure::peakGrowthBytes([&] {
            if (pugixml) {
                const QVariant value = readWithPugixml(s.path);
                benchmark::DoNotOptimize(value.toList().size());
            } else {
                const auto value = PropertyList::readFile(s.path);
                benchmark::DoNotOptimize(value->toList().size());
            }
        });
    }
    if (growth < 0)
        state.SkipWithError("could not measure the peak memory");
    state.counters["MB"] = double(s.fileSize) / 1e6;
    state.counters["peak_MB"] = double(growth) / 1e6;
    state.counters["ratio"] = double(growth) / double(s.fileSize);
}

void PeakMemoryStreaming(benchmark::State &state)
{
    PeakMemory(state, false);
}

void PeakMemoryPugixml(benchmark::State &state)
{
    PeakMemory(state, true);
}

} // namespace

BENCHMARK(Parse)->Arg(1000)->Iterations(30)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Parse)->Arg(10000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Parse)->Arg(100000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ParsePugixml)->Arg(10000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(ParsePugixml)->Arg(100000)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Write)->Arg(1000)->Iterations(20)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Write)->Arg(10000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Write)->Arg(100000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(WriteCached)->Arg(1000)->Iterations(20)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(WriteCached)->Arg(10000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(WriteCached)->Arg(100000)->Iterations(5)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Serialise)->Arg(10000)->Iterations(10)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(Serialise)->Arg(100000)->Iterations(3)->UseManualTime()->Unit(benchmark::kMillisecond);
BENCHMARK(PeakMemoryStreaming)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK(PeakMemoryPugixml)->Arg(100000)->Iterations(1)->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
