// What the calendar costs on a large list: rebuilding the monthly calendar from 10,000 displayed
// assignments (300 of them in the month shown) and painting it once, against the goal of 20 ms.
// The floor, measured in the same run, is one pass over the 10,000 records reading their cached due
// dates: the least any rebuild must do. "x_floor" is the ratio to it; "ms" the time itself. Both are
// thread CPU time, so other work on a busy machine does not count against us.

#include "support/BenchMeasure.h"
#include "calendar/ui/BVCalendarView.h"
#include "calendar/ui/CalendarController.h"
#include "list/Controller.h"
#include "list/ListStartupSteps.h"
#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/StartupSequence.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <ctime>

namespace {

constexpr int RecordCount = 10000;
constexpr int InShownMonth = 300;
const QDate kShownMonth(2026, 11, 1);

double threadSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) * 1e-9;
}

QVariantMap record(int i)
{
    // 300 records spread over the shown month, the rest over the 1,000 days before September 2026.
    const QDate day = i < InShownMonth ? kShownMonth.addDays(i % 30) : QDate(2024, 1, 1).addDays(i % 1000);
    return {{"Name", QStringLiteral("Chapter %1 reading, questions 1-20").arg(i)},
            {"Date", DateText::toStoredForm(QDateTime(day, QTime(23, 59)))},
            {"Course", QStringLiteral("Course %1").arg(i % 7)},
            {"Type", "Homework"},
            {"Priority", 1.0 + i % 3},
            {"Completed", i % 4 == 0},
            {"Date Created", 1700000000.25 + i},
            {"Date Updated", "2026-11-01 08:00:00 -0500"}};
}

struct Setup {
    std::unique_ptr<Controller> controller;
    CalendarController *calendar = nullptr;
    BVCalendarView *view = nullptr;
};

Setup &setup()
{
    static Setup s = [] {
        Setup made;
        Preferences::setAllDefaults();
        QVariantMap general = UserDefaults().dictionary(PreferenceKeys::General);
        general.insert(PreferenceKeys::GeneralKeys::DefaultView, qint64(2)); // the filter shows "All"
        UserDefaults().set(PreferenceKeys::General, general);
        QVariantList records;
        for (int i = 0; i < RecordCount; ++i)
            records.append(record(i));
        QDir().mkpath(Paths::dataFolder());
        PropertyList::writeFile(Paths::assignmentsFile(), records);
        made.controller = std::make_unique<Controller>();
        made.calendar = CalendarController::sharedController();
        made.calendar->setController(made.controller.get());
        made.view = made.calendar->monthlyView();
        made.view->resize(1000, 700);
        made.view->show();
        ListStartupSteps steps(*made.controller);
        StartupSequence::setUpWindowFromPreferences(steps);
        QCoreApplication::processEvents();
        return made;
    }();
    return s;
}

double floorSeconds(const AssignmentList &records)
{
    const double start = threadSeconds();
    qint64 sum = 0;
    for (const AssignmentRef &r : records)
        if (const std::optional<QDateTime> due = r->dueDate())
            sum += due->date().day();
    benchmark::DoNotOptimize(sum);
    return threadSeconds() - start;
}

template<typename Work>
void measure(benchmark::State &state, Work work)
{
    Setup &s = setup();
    if (s.controller->displayAssignments().size() != RecordCount) {
        state.SkipWithError("the list does not show all 10,000 records");
        return;
    }
    double total = 0;
    double floor = 0;
    for (auto _ : state) {
        const double start = threadSeconds();
        work(s);
        const double elapsed = threadSeconds() - start;
        state.SetIterationTime(elapsed);
        total += elapsed;
        floor += floorSeconds(s.controller->displayAssignments());
    }
    state.counters["ms"] = 1000.0 * total / double(state.iterations());
    state.counters["x_floor"] = total / floor;
}

void BM_UpdateCalendarAndRepaint(benchmark::State &state)
{
    measure(state, [](Setup &s) {
        s.calendar->updateCalendar();
        s.view->repaint();
    });
}
BENCHMARK(BM_UpdateCalendarAndRepaint)->UseManualTime()->Unit(benchmark::kMillisecond)->Repetitions(5)
    ->ReportAggregatesOnly(true);

void BM_UpdateCalendar(benchmark::State &state)
{
    measure(state, [](Setup &s) { s.calendar->updateCalendar(); });
}
BENCHMARK(BM_UpdateCalendar)->UseManualTime()->Unit(benchmark::kMillisecond)->Repetitions(5)
    ->ReportAggregatesOnly(true);

void BM_Repaint(benchmark::State &state)
{
    measure(state, [](Setup &s) { s.view->repaint(); });
}
BENCHMARK(BM_Repaint)->UseManualTime()->Unit(benchmark::kMillisecond)->Repetitions(5)->ReportAggregatesOnly(true);

// One entry added to a day in view: only that day is read again, not the grid.
void BM_AddOneEntry(benchmark::State &state)
{
    measure(state, [](Setup &s) {
        s.view->addObject(nullptr, QStringLiteral("Extra"), QDateTime(QDate(2026, 11, 12), QTime(0, 0)));
    });
}
BENCHMARK(BM_AddOneEntry)->UseManualTime()->Unit(benchmark::kMicrosecond)->Repetitions(5)->ReportAggregatesOnly(true);

} // namespace

int main(int argc, char **argv)
{
    QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    // The month shown is the one the records crowd into.
    Clock::pin(QDateTime(QDate(2026, 11, 22), QTime(10, 30)));
    return BenchMeasure::runWindowBenchmarks(argc, argv);
}
