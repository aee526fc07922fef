// How long the main window takes, with a store of 10,000 assignments, from nothing to a shown
// window whose table has painted its rows: the window's part of start-up. The floor is reading and
// parsing the same store file, which any start-up has to do; the figure that matters is the ratio.
#include "support/BenchMeasure.h"
#include "list/AssignmentTableModel.h"
#include "list/Controller.h"
#include "list/ui/AssignmentTableView.h"
#include "list/ui/MainWindow.h"
#include "platform/Paths.h"
#include "store/AssignmentStore.h"
#include "store/Preferences.h"
#include "store/StartupSequence.h"
#include "support/StoreGenerator.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

namespace {

struct Home {
    QTemporaryDir folder;
    int count = 0;

    void prepare(int records)
    {
        if (count == records)
            return;
        qputenv("HOME", QFile::encodeName(folder.path()));
        QDir().mkpath(Paths::dataFolder());
        Preferences::setAllDefaults();
        QString error;
        if (!StoreGenerator::writeStore(Paths::assignmentsFile(), records, &error))
            qFatal("cannot write the store: %s", qPrintable(error));
        count = records;
    }
};

Home &home()
{
    static Home shared;
    return shared;
}

double secondsToLoadStore()
{
    QElapsedTimer timer;
    timer.start();
    const std::optional<AssignmentList> records = AssignmentStore(Paths::assignmentsFile()).load();
    benchmark::DoNotOptimize(records);
    return double(timer.nsecsElapsed()) / 1e9;
}

void BM_WindowWithRows(benchmark::State &state)
{
    home().prepare(int(state.range(0)));
    double floor = 0;
    double total = 0;
    for (auto _ : state) {
        floor += secondsToLoadStore();
        QElapsedTimer timer;
        timer.start();
        auto window = std::make_unique<MainWindow>();
        StartupSequence::setUpWindowFromPreferences(window->startupSteps());
        window->show();
        QCoreApplication::processEvents();
        // Paints now, rows included, rather than at the next turn of the event loop.
        window->assignmentTable()->viewport()->repaint();
        const double seconds = double(timer.nsecsElapsed()) / 1e9;
        if (window->controller()->tableModel()->rowCount() == 0)
            state.SkipWithError("the table shows no rows");
        state.SetIterationTime(seconds);
        total += seconds;
        window.reset();
        QCoreApplication::processEvents();
    }
    state.counters["store_load_floor_ms"] = benchmark::Counter(floor * 1000 / double(state.iterations()));
    state.counters["ratio_to_floor"] = benchmark::Counter(total / floor);
}

// Typing one more letter in the search field with the window up: what keeps typing fluid.
void BM_SearchKeystrokeInWindow(benchmark::State &state)
{
    home().prepare(int(state.range(0)));
    auto window = std::make_unique<MainWindow>();
    StartupSequence::setUpWindowFromPreferences(window->startupSteps());
    window->show();
    QCoreApplication::processEvents();
    double floor = 0;
    double total = 0;
    const QStringList texts{QStringLiteral("e"), QStringLiteral("es"), QStringLiteral("ess"), QString()};
    int i = 0;
    for (auto _ : state) {
        floor += secondsToLoadStore() / 100; // a hundredth of a store load as the yardstick
        QElapsedTimer timer;
        timer.start();
        window->findChild<QLineEdit *>(QStringLiteral("searchField"))->setText(texts[i++ % texts.size()]);
        window->assignmentTable()->viewport()->repaint();
        const double seconds = double(timer.nsecsElapsed()) / 1e9;
        state.SetIterationTime(seconds);
        total += seconds;
    }
    state.counters["ratio_to_floor"] = benchmark::Counter(total / floor);
}

} // namespace

BENCHMARK(BM_WindowWithRows)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5)->Repetitions(3);
BENCHMARK(BM_SearchKeystrokeInWindow)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

int main(int argc, char **argv)
{
    return BenchMeasure::runWindowBenchmarks(argc, argv);
}
