// One record's name edited in the sidebar of one list while a second list is open on the same
// assignments file, timed until both lists show it (the document tells every list at once, so the
// edit returns with both tables updated). 10,000 records.
//
// The floor, measured alternately in the same run, is one save of the same records to another file:
// the least the edit can cost, since every change is saved at once. Reported as medians
// ("median_ms", "floor_ms") and their ratio.
//
// Run with --benchmark_repetitions=5 --benchmark_report_aggregates_only=true.

#include "list/AssignmentTableModel.h"
#include "list/Controller.h"
#include "list/ListStartupSteps.h"
#include "list/SidebarEditing.h"
#include "list/SidebarValues.h"
#include "list/ToolbarState.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/AssignmentStore.h"
#include "store/PreferenceKeys.h"
#include "store/StartupSequence.h"
#include "support/BenchMeasure.h"
#include "support/StoreGenerator.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

struct Toolbar : ToolbarState {
    bool isSearchItemVisible() const override { return true; }
    QString searchText() const override { return QString(); }
    QString searchPlaceholder() const override { return QString(); }
    void setSearchPlaceholder(const QString &) override {}
    int formatSegment() const override { return 0; }
};

struct Sidebar : SidebarEditor {
    SidebarValues values;
    SidebarValues sidebarValues() const override { return values; }
    void setSidebarValues(const SidebarValues &shown) override { values = shown; }
};

// One list window without a window: the controller set up the way the program starts one.
struct List {
    Toolbar toolbar;
    Sidebar sidebar;
    Controller controller;
    List()
    {
        controller.setToolbar(&toolbar);
        controller.setSidebar(&sidebar);
        ListStartupSteps steps(controller);
        StartupSequence::setUpWindowFromPreferences(steps);
    }
};

void BM_EditNameWithSecondListOpen(benchmark::State &state)
{
    QTemporaryDir home;
    qputenv("HOME", QFile::encodeName(home.path()));
    UserDefaults::dropCaches();
    QDir().mkpath(Paths::dataFolder());
    PropertyList::writeFile(Paths::assignmentsFile(), StoreGenerator::assignments(int(state.range(0))));
    UserDefaults().set(PreferenceKeys::General, QVariantMap{{"Default View", 2}, {"Date Format", "%A, %B %e, %Y"}});

    List editing;
    List watching;
    // An assignment of its own (not a project or a subproject), halfway down the list.
    int row = editing.controller.tableModel()->rowCount() / 2;
    while (editing.controller.displayAssignments()[row]->isProject()
           || editing.controller.displayAssignments()[row]->isSubproject())
        ++row;
    editing.controller.selectRowAlone(row);
    watching.controller.selectRowAlone(row / 2);
    AssignmentStore floorStore(home.filePath("floor.plist"));

    std::vector<double> edits;
    std::vector<double> saves;
    int i = 0;
    for (auto _ : state) {
        saves.push_back(BenchMeasure::Pair::time([&] { floorStore.save(editing.controller.document().records()); }));
        const double ms = BenchMeasure::Pair::time([&] {
            editing.sidebar.values.name = (i++ % 2) ? QStringLiteral("Chapter 7 questions")
                                                    : QStringLiteral("Chapter 7 questions, revised");
            editing.controller.sidebarEditing().editAssignment(SidebarEditing::Sender::Other);
        });
        edits.push_back(ms);
        state.SetIterationTime(ms / 1000.0);
    }
    // The second list shows the edited record.
    const int edited = editing.controller.singleSelectedRow();
    if (edited < 0
        || !watching.controller.tableModel()->rows().contains(editing.controller.displayAssignments().value(edited)))
        state.SkipWithError("the second list does not show the edit");
    const double edit = BenchMeasure::Pair::median(edits);
    const double save = BenchMeasure::Pair::median(saves);
    state.counters["median_ms"] = edit;
    state.counters["floor_ms"] = save;
    state.counters["ratio"] = save > 0 ? edit / save : 0.0;
}

} // namespace

BENCHMARK(BM_EditNameWithSecondListOpen)->Arg(10000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(30);

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
