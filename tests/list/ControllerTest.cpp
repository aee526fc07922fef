#include "ListTestSupport.h"

#include "list/AssignmentTableModel.h"
#include "platform/Clock.h"
#include "store/CoursesDocument.h"

#include <QAbstractItemModelTester>
#include <QCoreApplication>
#include <QFile>
#include <QItemSelectionModel>
#include <QThread>

#include <gtest/gtest.h>

using namespace ListTest;
using namespace AssignmentKeys;

namespace {

AssignmentList mixedStore()
{
    return {record("Essay", {{Course, "English"}, {Completed, true}, {Date, stored(2026, 11, 24)}, {Grade, "A-"}}),
            record("Lab report", {{Course, "Chemistry"}, {Date, stored(2026, 11, 23)}, {Notes, "Bring GOGGLES"}}),
            record("Reading", {{Course, "English"}, {Date, stored(2026, 11, 25)}, {Completed, false}}),
            record("Free time")};
}

} // namespace

TEST(DisplayPipeline, ViewsAndCoursesFilterAsTheBarSays)
{
    writeCourses({course("English"), textbook("Grammar", "English"), course("Chemistry")});
    Fixture f(mixedStore());
    EXPECT_EQ(f.shown(), (QStringList{"Free time", "Lab report", "Essay", "Reading"}));

    FilterBarModel &bar = f.controller->filterBar();
    bar.selectTitleInSegment("Complete", 0);
    EXPECT_EQ(f.shown(), (QStringList{"Essay"}));
    bar.selectTitleInSegment("Incomplete", 0);
    // A record without "Completed" counts as not completed.
    EXPECT_EQ(f.shown(), (QStringList{"Free time", "Lab report", "Reading"}));
    bar.selectTitleInSegment("English", 1);
    EXPECT_EQ(f.shown(), (QStringList{"Reading"}));
    EXPECT_EQ(bar.getSelectedTitleInSegment(1), "English");

    // Course "All" with a search text searches every record that passes the view.
    bar.selectTitleInSegment("All", 1);
    bar.selectTitleInSegment("All", 0);
    f.type("goggles");
    EXPECT_EQ(f.shown(), (QStringList{"Lab report"}));
    EXPECT_GT(f.calendar.updates, 0);
}

TEST(DisplayPipeline, SearchScopesAndSpaces)
{
    Fixture f(mixedStore());
    f.controller->setSearchSpecifications("Grade");
    // Choosing a scope alone leaves the list as it is.
    EXPECT_EQ(f.shown().size(), 4);
    f.type("a");
    EXPECT_EQ(f.shown(), (QStringList{"Essay"}));

    f.controller->setSearchSpecifications("All");
    f.type("re");
    EXPECT_EQ(f.shown(), (QStringList{"Free time", "Lab report", "Reading"}));
    f.type("e t"); // spaces are part of the text
    EXPECT_EQ(f.shown(), QStringList{"Free time"});
    f.type("");
    EXPECT_EQ(f.shown().size(), 4);
}

TEST(DisplayPipeline, FilterRunSelectsTheLastOfTwoEqualRecords)
{
    AssignmentRef one = record("Same", {{Date, stored(2026, 12, 1)}, {Priority, 1.0}});
    AssignmentRef two = Assignments::copy(one);
    Fixture f({one, two, record("Other", {{Date, stored(2026, 12, 2)}})});
    f.controller->selectRowAlone(0);
    f.controller->filterWithViews();
    EXPECT_EQ(f.controller->selectedRows(), QList<int>{1});
}

TEST(DisplayPipeline, SubprojectsShowTheirTitleAndSelectTheirProject)
{
    const QString id = stored(2026, 11, 1, 9);
    AssignmentRef project = record("%s", {{Project, id}, {Date, stored(2026, 12, 1)}});
    AssignmentRef lab = record("Lab", {{Subproject, id}, {Date, stored(2026, 12, 2)}});
    AssignmentRef orphan = record("Alone", {{Subproject, "gone"}, {Date, stored(2026, 12, 3)}});
    Fixture f({project, lab, orphan});
    AssignmentTableModel *model = f.controller->tableModel();
    const int labRow = f.rowOf("Lab");
    EXPECT_EQ(model->cellText(labRow, "Name").toString(), "Lab - Lab");
    EXPECT_EQ(model->cellText(f.rowOf("Alone"), "Name").toString(), "Alone");
    EXPECT_EQ(f.controller->getSubprojectDisplayName(*lab), "Lab - Lab");
    // An empty title format is honoured, not replaced by the built-in one.
    setGeneral(PreferenceKeys::GeneralKeys::SubprojectTitleFormat, QString(""));
    EXPECT_EQ(f.controller->getSubprojectDisplayName(*lab), "");
    QCoreApplication::processEvents(); // the table reads the settings afresh on the next turn
    EXPECT_EQ(model->cellText(labRow, "Name").toString(), "");
    setGeneral(PreferenceKeys::GeneralKeys::SubprojectTitleFormat, QString("%p - %s"));

    // No selection: the subprojects table is empty.
    EXPECT_TRUE(f.controller->subprojectRows().isEmpty());
    f.controller->selectRowAlone(labRow);
    EXPECT_EQ(f.controller->actualSelectedObject()->string(Name), "%s");
    EXPECT_EQ(names(f.controller->subprojectRows()), QStringList{"Lab"});
    EXPECT_EQ(f.controller->sidebarEditing().fill().enabledTabs, 3);
    EXPECT_EQ(f.controller->sidebarEditing().fill().subprojectRow, 0);
    f.select("Alone");
    EXPECT_EQ(f.controller->actualSelectedObject(), nullptr);
    EXPECT_EQ(f.controller->sidebarEditing().fill().mode, SidebarEditing::Fill::Mode::Nothing);
}

TEST(DisplayPipeline, FilterBarKeepsPositionsWhenCoursesChange)
{
    writeCourses({course("Art"), course("Math")});
    Fixture f({record("x", {{Course, "Math"}})});
    f.controller->filterBar().selectTitleInSegment("Math", 1);
    EXPECT_EQ(f.shown(), QStringList{"x"});
    // A course inserted before the chosen one: the kept position now names it.
    writeCourses({course("Art"), course("Biology"), course("Math")});
    f.controller->updateFilterBar();
    EXPECT_EQ(f.controller->filterBar().getSelectedTitleInSegment(1), "Biology");
    EXPECT_EQ(f.shown(), QStringList());
}

TEST(DisplayPipeline, ACourseChangedInAnotherWindowReachesTheFilterBarAtOnce)
{
    writeCourses({course("Art"), course("Math")});
    Fixture f({record("x", {{Course, "Math"}})});
    f.controller->filterBar().selectTitleInSegment("Math", 1);
    // The courses window renames Math and adds a course: no activation, no call into the list.
    const std::shared_ptr<CoursesDocument> document = CoursesDocument::open();
    ASSERT_TRUE(document->setCombined({course("Art"), course("Maths"), course("Physics")}));
    QCoreApplication::processEvents();
    FilterBarModel &bar = f.controller->filterBar();
    EXPECT_EQ(bar.getSelectedTitleInSegment(1), "Maths");
    bar.selectTitleInSegment("Physics", 1);
    EXPECT_EQ(bar.getSelectedTitleInSegment(1), "Physics");
    EXPECT_EQ(f.shown(), QStringList());
}

TEST(DisplayPipeline, DefaultViewSelectsTheNextViewWrapping)
{
    writeStore({});
    // A stored value outside the three views (an earlier version, a hand-edited file) still
    // names one of them, counted round from the first.
    const QList<std::pair<qint64, QString>> cases{
        {0, "Incomplete"}, {1, "Complete"}, {2, "All"}, {4, "Complete"}, {5, "All"}, {-1, "All"}, {-3, "Incomplete"}};
    for (const auto &[stored, shown] : cases) {
        setGeneral(PreferenceKeys::GeneralKeys::DefaultView, stored);
        Controller controller;
        startUp(controller);
        EXPECT_EQ(controller.filterBar().getSelectedTitleInSegment(0), shown) << stored;
    }
}

TEST(Sorting, HeaderClicksDirectionsAndTheSelection)
{
    Fixture f({record("b", {{Course, "Math"}, {Date, stored(2026, 12, 2)}}),
               record("a", {{Course, "Art"}, {Date, stored(2026, 12, 2)}}),
               record("c", {{Course, "Math"}, {Date, stored(2026, 12, 1)}})});
    // First launch: by due date, ties by name.
    EXPECT_EQ(f.shown(), (QStringList{"c", "a", "b"}));
    EXPECT_EQ(UserDefaults().string(PreferenceKeys::SortColumn), "Date");

    f.select("b");
    f.controller->didClickTableColumn("Course");
    EXPECT_TRUE(f.controller->didJustSort());
    EXPECT_EQ(f.shown(), (QStringList{"a", "c", "b"}));
    EXPECT_EQ(f.controller->selectedRows(), QList<int>{2});
    f.controller->didClickTableColumn("Course");
    EXPECT_EQ(f.shown(), (QStringList{"b", "c", "a"}));
    EXPECT_EQ(UserDefaults().string(PreferenceKeys::SortDirection), "Descending");
    EXPECT_EQ(f.controller->selectedRows(), QList<int>{0});

    // A different column after a descending sort starts ascending.
    f.controller->didClickTableColumn("Name");
    EXPECT_EQ(f.shown(), (QStringList{"a", "b", "c"}));
    EXPECT_TRUE(f.controller->sortIndicator().ascending);
}

TEST(Sorting, AHiddenSortColumnSortsByDueDateAndKeepsTheStoredKeys)
{
    UserDefaults().set(PreferenceKeys::SortColumn, "Course");
    UserDefaults().set(PreferenceKeys::SortDirection, "Descending");
    UserDefaults().set(PreferenceKeys::UserColumnsOrdering,
                       QVariantList{QVariantMap{{"Identifier", "Name"}, {"Width", 120}},
                                    QVariantMap{{"Identifier", "Date"}, {"Width", 208}}});
    Fixture f({record("b", {{Course, "Art"}, {Date, stored(2026, 12, 2)}}),
               record("a", {{Course, "Math"}, {Date, stored(2026, 12, 3)}})});
    EXPECT_EQ(f.controller->tableModel()->columnCount(), 2);
    // Course is not shown: due date ascending, and the stored keys stay as they were.
    EXPECT_EQ(f.shown(), (QStringList{"b", "a"}));
    EXPECT_EQ(UserDefaults().string(PreferenceKeys::SortColumn), "Course");
}

TEST(TableModel, PassesTheModelTesterThroughChanges)
{
    writeCourses({course("Math")});
    Fixture f(mixedStore());
    QAbstractItemModelTester tester(f.controller->tableModel(), QAbstractItemModelTester::FailureReportingMode::Fatal);
    f.type("e");
    f.controller->didClickTableColumn("Name");
    f.controller->filterBar().selectTitleInSegment("Complete", 0);
    f.controller->filterBar().selectTitleInSegment("All", 0);
    f.select("Essay");
    f.controller->editing().markAssignmentAsCompleted();
    f.controller->columnDidMove(0, 2);
    f.controller->columnDidResize(1, 150);
    f.type("");
    EXPECT_EQ(f.controller->tableModel()->rowCount(), 4);
}

TEST(TableModel, CellsCheckBoxesBandsAndWhiteSelection)
{
    setGeneral(PreferenceKeys::GeneralKeys::AlternateRowColors, true);
    setGeneral(PreferenceKeys::GeneralKeys::DateFormat, "%m/%d/%y");
    UserDefaults().set(PreferenceKeys::UserColumnsOrdering,
                       QVariantList{QVariantMap{{"Identifier", "Completed"}, {"Width", 20}},
                                    QVariantMap{{"Identifier", "Date"}, {"Width", 100}},
                                    QVariantMap{{"Identifier", "Days Left"}, {"Width", 30}},
                                    QVariantMap{{"Identifier", "Notes"}, {"Width", 20}},
                                    QVariantMap{{"Identifier", "Priority"}, {"Width", 40}}});
    Fixture f({record("1", {{Date, stored(2026, 11, 23)}, {Notes, ""}}),
               record("2", {{Date, stored(2026, 11, 23, 8)}, {Completed, true}}),
               record("3", {{Date, stored(2026, 11, 24)}}), record("4", {{Date, stored(2026, 11, 25)}}),
               record("5", {{Date, stored(2026, 11, 25, 9)}})});
    AssignmentTableModel *m = f.controller->tableModel();
    EXPECT_EQ(m->data(m->index(0, 1)).toString(), "11/23/26");
    EXPECT_EQ(m->data(m->index(0, 2)).toString(), "1");
    EXPECT_EQ(m->data(m->index(1, 1)).toString(), "");
    EXPECT_EQ(m->data(m->index(1, 0), Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_EQ(m->data(m->index(0, 4)).toString(), "1");
    // Days D1, D1, D2, D3, D3: only the third row is banded.
    QList<bool> bands;
    for (int row = 0; row < 5; ++row)
        bands.append(m->data(m->index(row, 0), AssignmentTableModel::DayBandRole).toBool());
    EXPECT_EQ(bands, (QList<bool>{false, false, true, false, false}));

    f.controller->selectRowAlone(3);
    EXPECT_EQ(m->data(m->index(3, 1), Qt::ForegroundRole).value<QColor>(), QColor(Qt::white));

    // A preference change shows on the next redraw.
    setGeneral(PreferenceKeys::GeneralKeys::DisplayDuplicateDates, true);
    m->refreshPresentation();
    EXPECT_EQ(m->data(m->index(1, 1)).toString(), "11/23/26");
}

TEST(Refresh, ReloadsWhatChangedOnDiskAndRepairsPriorities)
{
    Fixture f({record("a", {{Priority, 3.0}})});
    EXPECT_EQ(f.shown(), QStringList{"a"});
    AssignmentList before = f.controller->allAssignments();

    // Unchanged files: the very same records stay.
    f.controller->updateWindowInformation();
    EXPECT_EQ(f.controller->allAssignments(), before);

    // Another window wrote the file: the refresh brings the change in and repairs priorities.
    QThread::msleep(10);
    QVariantList onDisk = readStore();
    onDisk.append(QVariantMap{{"Name", "written elsewhere"}});
    PropertyList::writeFile(Paths::assignmentsFile(), onDisk);
    f.select("a");
    f.controller->updateWindowInformation();
    EXPECT_EQ(f.shown(), (QStringList{"a", "written elsewhere"}));
    EXPECT_EQ(f.controller->selectedRows(), QList<int>{0});
    EXPECT_DOUBLE_EQ(readStore()[1].toMap().value("Priority").toDouble(), 1.0);
}

TEST(Refresh, AnUnreadableStoreShowsNothingAndIsNeverOverwritten)
{
    Fixture f({record("a")});
    const QByteArray damaged = "<plist><array><dict><key>Name</key>";
    QFile file(Paths::assignmentsFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(damaged);
    file.close();

    f.controller->updateWindowInformation();
    EXPECT_FALSE(f.controller->isStoreUsable());
    EXPECT_TRUE(f.shown().isEmpty());
    EXPECT_EQ(f.controller->editing().addAssignmentWithDate(std::nullopt), -1);
    f.controller->saveData();
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), damaged);

    // Replaced from outside: the next refresh reads it again.
    writeStore({record("restored")});
    f.controller->updateWindowInformation();
    EXPECT_EQ(f.shown(), QStringList{"restored"});
}
