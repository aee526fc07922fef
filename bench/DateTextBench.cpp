// How much reading and writing dates costs. The list reads the stored form of every record on every sort
// and redraw, so that reader matters most. Every figure is also given as a ratio ("x_floor") to the
// cheapest possible pass over the same texts, measured in the same run: a loop that only adds up their
// digits, which any reader has to do at least.

#include "platform/DateText.h"

#include <QCoreApplication>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <vector>

namespace {

constexpr int RecordCount = 1000;

const std::vector<QString> &storedTexts()
{
    static const std::vector<QString> texts = [] {
        std::vector<QString> out;
        QDateTime moment(QDate(2006, 1, 1), QTime(0, 0));
        for (int i = 0; i < RecordCount; ++i, moment = moment.addSecs(86400 * 3 + 3601))
            out.push_back(DateText::toStoredForm(moment));
        return out;
    }();
    return texts;
}

// CPU time of this thread in nanoseconds: the other builds and tests sharing the machine do not count.
double cpuNanoseconds()
{
    timespec now {};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e9 + double(now.tv_nsec);
}

int digitSum(const QString &text)
{
    int sum = 0;
    for (QChar c : text)
        sum += (c.unicode() >= '0' && c.unicode() <= '9') ? c.unicode() - '0' : 0;
    return sum;
}

// CPU nanoseconds per text for the digit-summing floor: the best of several rounds.
double floorNanoseconds()
{
    static const double floor = [] {
        double best = 1e18;
        for (int round = 0; round < 50; ++round) {
            const double start = cpuNanoseconds();
            int sum = 0;
            for (const QString &text : storedTexts())
                sum += digitSum(text);
            benchmark::DoNotOptimize(sum);
            best = std::min(best, (cpuNanoseconds() - start) / RecordCount);
        }
        return best;
    }();
    return floor;
}

// Runs `body` once per text per iteration and reports its cost against the floor.
template <typename Body> void measure(benchmark::State &state, Body body)
{
    const double floor = floorNanoseconds();
    const double start = cpuNanoseconds();
    for (auto _ : state) {
        for (const QString &text : storedTexts())
            body(text);
    }
    const double perText = (cpuNanoseconds() - start) / (double(state.iterations()) * RecordCount);
    state.counters["ns_per_text"] = perText;
    state.counters["x_floor"] = perText / floor;
    state.SetItemsProcessed(state.iterations() * RecordCount);
}

void floorDigitSum(benchmark::State &state)
{
    measure(state, [](const QString &text) { benchmark::DoNotOptimize(digitSum(text)); });
}

void fromStoredForm(benchmark::State &state)
{
    measure(state, [](const QString &text) { benchmark::DoNotOptimize(DateText::fromStoredForm(text)); });
}

// What a reader built on Qt's own parser would cost, for comparison (and it ignores the offset).
void qtFromStringWithoutOffset(benchmark::State &state)
{
    const QString pattern = QStringLiteral("yyyy-MM-dd HH:mm:ss");
    measure(state,
        [&pattern](const QString &text) { benchmark::DoNotOptimize(QDateTime::fromString(text.left(19), pattern)); });
}

void toStoredForm(benchmark::State &state)
{
    std::vector<QDateTime> moments;
    for (const QString &text : storedTexts())
        moments.push_back(*DateText::fromStoredForm(text));
    std::size_t i = 0;
    measure(state,
        [&](const QString &) { benchmark::DoNotOptimize(DateText::toStoredForm(moments[i++ % moments.size()])); });
}

void storedFormToDisplayText(benchmark::State &state)
{
    const QString format = QStringLiteral("%A, %B %e, %Y");
    measure(state, [&format](const QString &text) {
        benchmark::DoNotOptimize(DateText::format(*DateText::fromStoredForm(text), format));
    });
}

void parseNaturalFreeForm(benchmark::State &state)
{
    const QString format = QStringLiteral("%A, %B %e, %Y");
    const QDateTime now(QDate(2026, 11, 22), QTime(10, 30));
    const QString typed = QStringLiteral("March 5, 2008");
    measure(state, [&](const QString &) { benchmark::DoNotOptimize(DateText::parseNatural(typed, format, now)); });
}

} // namespace

BENCHMARK(floorDigitSum);
BENCHMARK(fromStoredForm);
BENCHMARK(qtFromStringWithoutOffset);
BENCHMARK(toStoredForm);
BENCHMARK(storedFormToDisplayText);
BENCHMARK(parseNaturalFreeForm);

int main(int argc, char **argv)
{
    setenv("TZ", "America/New_York", 1);
    tzset();
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
