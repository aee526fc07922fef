#pragma once

#include <QByteArray>
#include <QString>
#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <vector>

// Shared measuring for the benchmarks: an operation timed alternately with its floor (so both see
// the same machine), medians of both and their ratio as counters, and peak memory in a child.
namespace BenchMeasure {

class Pair
{
public:
    void floor(const std::function<void()> &operation) { m_floor.push_back(time(operation)); }
    void measure(const std::function<void()> &operation) { m_measured.push_back(time(operation)); }
    // Sets median_ms, floor_ms and ratio.
    void report(benchmark::State &state) const;

    static double time(const std::function<void()> &operation);
    static double median(std::vector<double> values);

private:
    std::vector<double> m_floor;
    std::vector<double> m_measured;
};

QByteArray readAll(const QString &path);
// The load floor: read the file and count its '<' bytes once.
qint64 readAndCountOpenings(const QString &path);
// The save floor: the same bytes written with QSaveFile (which syncs before renaming).
void saveAtomically(const QString &path, const QByteArray &bytes);
// Peak resident-memory growth of `operation`, run in a forked child so that nothing the benchmark
// holds counts; -1 when it cannot be measured.
qint64 peakGrowthBytes(const std::function<void()> &operation);
// main() of a bench that needs windows: offscreen unless a platform is asked for, a QApplication,
// then the registered benchmarks.
int runWindowBenchmarks(int argc, char **argv);

} // namespace BenchMeasure
