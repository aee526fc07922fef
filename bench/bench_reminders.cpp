// Speed of working out the next reminder over a generated store of 10,000 records (what the
// reminder schedule does after every change to the assignments), as a ratio to a floor measured in
// the same run: one pass reading the due date of every record of the same list.
//   next_reminder   a fresh plan (as each recompute makes) finding the next moment after now
//   due_window      every reminder of the coming week, grouped by moment
//   next_reminder_with_overrides   the first, with every tenth record carrying its own lead time
// Counters: median_ms, floor_ms and ratio = median_ms / floor_ms.

#include "reminders/ReminderPlan.h"
#include "reminders/ReminderRecords.h"
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

enum class Pass { NextReminder, DueWindow };

// One pass of the plan as the schedule makes it, with a floor of the same list's due dates.
// `overrides`: every tenth record carries its own reminder lead time, which the plan must read.
void Plan(benchmark::State &state, Pass pass, bool overrides)
{
    AssignmentList list = records();
    if (overrides) {
        for (qsizetype i = 0; i < list.size(); i += 10) {
            list[i] = Assignments::copy(list[i]);
            list[i]->set(ReminderRecords::OverrideKey, qint64(i % 20 == 0 ? 0 : 30));
            benchmark::DoNotOptimize(list[i]->dueMoment());
        }
    }
    const qint64 now = middleMoment(list);
    BenchMeasure::Pair pair;
    for (auto _ : state) {
        pair.floor([&] { benchmark::DoNotOptimize(readDueDates(list)); });
        pair.measure([&] {
            const ReminderPlan plan{ReminderSettings()};
            if (pass == Pass::NextReminder)
                benchmark::DoNotOptimize(plan.nextMoment(list, now));
            else
                benchmark::DoNotOptimize(plan.between(list, now, now + 7LL * 24 * 3600 * 1000));
        });
    }
    pair.report(state);
}

} // namespace

BENCHMARK_CAPTURE(Plan, next_reminder, Pass::NextReminder, false)->Unit(benchmark::kMillisecond)->Iterations(21);
BENCHMARK_CAPTURE(Plan, due_window, Pass::DueWindow, false)->Unit(benchmark::kMillisecond)->Iterations(21);
BENCHMARK_CAPTURE(Plan, next_reminder_with_overrides, Pass::NextReminder, true)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(21);

BENCHMARK_MAIN();
