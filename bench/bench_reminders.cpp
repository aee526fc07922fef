// Speed of working out the next reminder over a generated store of 10,000 records (what the
// reminder schedule does after every change to the assignments), as a ratio to a floor measured in
// the same run: one pass reading the due date of every record of the same list.
//   next_reminder   a fresh plan (as each recompute makes) finding the next moment after now
//   due_window      every reminder of the coming week, grouped by moment
// Counters: median_ms, floor_ms and ratio = median_ms / floor_ms.

#include "reminders/ReminderPlan.h"
#include "support/BenchMeasure.h"
#include "support/StoreGenerator.h"

#include <QDateTime>
#include <benchmark/benchmark.h>

namespace {

const AssignmentList &records()
{
    static const AssignmentList list = [] {
        AssignmentList made = Assignments::fromVariantList(StoreGenerator::assignments(10000));
        // The program has read every due date once by the time the window shows the list.
        for (const AssignmentRef &record : made)
            benchmark::DoNotOptimize(record->dueMoment());
        return made;
    }();
    return list;
}

qint64 readDueDates(const AssignmentList &list)
{
    qint64 sum = 0;
    for (const AssignmentRef &record : list) {
        if (const auto due = record->dueMoment())
            sum += *due;
    }
    return sum;
}

// The middle of the generated due dates, so that reminders lie on both sides.
qint64 middleMoment(const AssignmentList &list)
{
    std::vector<qint64> moments;
    for (const AssignmentRef &record : list) {
        if (const auto due = record->dueDate())
            moments.push_back(due->toMSecsSinceEpoch());
    }
    std::nth_element(moments.begin(), moments.begin() + moments.size() / 2, moments.end());
    return moments[moments.size() / 2];
}

void NextReminder(benchmark::State &state)
{
    const AssignmentList &list = records();
    const qint64 now = middleMoment(list);
    BenchMeasure::Pair pair;
    for (auto _ : state) {
        pair.floor([&] { benchmark::DoNotOptimize(readDueDates(list)); });
        pair.measure([&] {
            const ReminderPlan plan{ReminderSettings()};
            benchmark::DoNotOptimize(plan.nextMoment(list, now));
        });
    }
    pair.report(state);
}

void DueWindow(benchmark::State &state)
{
    const AssignmentList &list = records();
    const qint64 now = middleMoment(list);
    BenchMeasure::Pair pair;
    for (auto _ : state) {
        pair.floor([&] { benchmark::DoNotOptimize(readDueDates(list)); });
        pair.measure([&] {
            const ReminderPlan plan{ReminderSettings()};
            benchmark::DoNotOptimize(plan.between(list, now, now + 7LL * 24 * 3600 * 1000));
        });
    }
    pair.report(state);
}

} // namespace

BENCHMARK(NextReminder)->Unit(benchmark::kMillisecond)->Iterations(21);
BENCHMARK(DueWindow)->Unit(benchmark::kMillisecond)->Iterations(21);

BENCHMARK_MAIN();
