// Two lists on one assignments file: a change made in one reaches the other as the rows it
// touches, so the other keeps its selection, current row and scroll position, and shows exactly
// what a fresh load of the file would.
#include "ListTestSupport.h"

#include "list/AssignmentTableModel.h"
#include "list/CellPresentation.h"
#include "store/GeneralSettings.h"

#include <QAbstractItemModelTester>
#include <QItemSelectionModel>
#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace ListTest;
using namespace AssignmentKeys;

namespace {

void edit(Fixture &f, const QString &name, const std::function<void(SidebarValues &)> &change)
{
    f.select(name);
    change(f.sidebar.values);
    ASSERT_TRUE(f.controller->sidebarEditing().editAssignment(SidebarEditing::Sender::Other));
}

// What a list opened now on the file shows, in the same filter, search and sort.
AssignmentList freshlyLoaded(const SecondWindow &like)
{
    FakeToolbar toolbar;
    toolbar.text = like.toolbar.text;
    Controller fresh;
    fresh.setToolbar(&toolbar);
    startUp(fresh);
    fresh.filterWithViews(fresh.filterBar().getSelectedTitleInSegment(0), fresh.filterBar().getSelectedTitleInSegment(1));
    return fresh.displayAssignments();
}

AssignmentList dated()
{
    return {record("Essay", {{Date, stored(2026, 11, 26)}, {Course, "English"}}),
            record("Lab report", {{Date, stored(2026, 11, 24)}, {Course, "Chemistry"}}),
            record("Reading", {{Date, stored(2026, 11, 25)}, {Course, "English"}}),
            record("Quiz", {{Date, stored(2026, 11, 27)}, {Course, "Chemistry"}})};
}

} // namespace

TEST(SharedRows, TheOtherListKeepsItsSelectionAndCurrentRowThroughEditsElsewhere)
{
    Fixture first(dated());
    SecondWindow second;
    second.select("Reading");

    // A rename that leaves the row where it is, and a date moved so a row sorts before the selection.
    edit(first, "Essay", [](SidebarValues &v) { v.name = "Essay draft"; });
    edit(first, "Quiz", [](SidebarValues &v) { v.dateText = "11/20/2026"; });
    EXPECT_EQ(second.shown(), (QStringList{"Quiz", "Lab report", "Reading", "Essay draft"}));
    EXPECT_EQ(second.selectedName(), "Reading");
    EXPECT_EQ(second.currentName(), "Reading");

    // The selected record itself edited elsewhere: it stays selected and its sidebar shows the edit.
    edit(first, "Reading", [](SidebarValues &v) { v.name = "Reading, chapter 2"; });
    EXPECT_EQ(second.selectedName(), "Reading, chapter 2");
    EXPECT_EQ(second.currentName(), "Reading, chapter 2");
    EXPECT_EQ(second.sidebar.values.name, "Reading, chapter 2");

    // Deleting another record and duplicating one elsewhere keep it too.
    first.select("Lab report");
    first.controller->editing().deleteAssignment();
    first.select("Essay draft");
    first.controller->editing().duplicateAssignment();
    EXPECT_EQ(second.shown(), (QStringList{"Quiz", "Reading, chapter 2", "Essay draft", "Essay draft"}));
    EXPECT_EQ(second.selectedName(), "Reading, chapter 2");

    // Rows apart from each other in the file deleted together: the record between them stays
    // selected in the other list.
    first.controller->selectRows({first.rowOf("Quiz"), first.rowOf("Essay draft")});
    first.controller->editing().deleteAssignment();
    EXPECT_EQ(first.shown(), (QStringList{"Reading, chapter 2", "Essay draft"}));
    EXPECT_EQ(storedNames(), (QStringList{"Reading, chapter 2", "Essay draft"}));
    EXPECT_EQ(second.shown(), (QStringList{"Reading, chapter 2", "Essay draft"}));
    EXPECT_EQ(second.selectedName(), "Reading, chapter 2");
    EXPECT_EQ(second.resets.count(), 0);
    EXPECT_EQ(second.controller.displayAssignments(), freshlyLoaded(second));
}

TEST(SharedRows, ARecordEditedOutOfTheOtherListsFilterOrSearchLeavesIt)
{
    writeCourses({course("English"), course("Chemistry")});
    Fixture first(dated());
    SecondWindow second;
    second.controller.filterBar().selectTitleInSegment("Incomplete", 0);
    second.controller.filterBar().selectTitleInSegment("English", 1);
    second.select("Reading");
    second.resets.clear();

    // Completed elsewhere: gone from the incomplete view.
    first.controller->editing().markAssignmentAsCompleted(first.rowOf("Essay"));
    EXPECT_EQ(second.shown(), QStringList{"Reading"});
    // Moved to another course: gone; moved into this one: shown where it sorts.
    edit(first, "Quiz", [](SidebarValues &v) { v.course = "English"; });
    EXPECT_EQ(second.shown(), (QStringList{"Reading", "Quiz"}));
    edit(first, "Reading", [](SidebarValues &v) { v.course = "Chemistry"; });
    EXPECT_EQ(second.shown(), QStringList{"Quiz"});
    EXPECT_EQ(second.resets.count(), 0);

    // The search: a rename out of it hides the record, a rename into it shows it.
    second.controller.filterBar().selectTitleInSegment("All", 0);
    second.controller.filterBar().selectTitleInSegment("All", 1);
    second.toolbar.text = "re";
    second.controller.controlTextDidChange(true);
    ASSERT_EQ(second.shown(), (QStringList{"Lab report", "Reading"}));
    second.resets.clear();
    edit(first, "Lab report", [](SidebarValues &v) { v.name = "Lab notes"; });
    edit(first, "Quiz", [](SidebarValues &v) { v.name = "Quiz review"; });
    EXPECT_EQ(second.shown(), (QStringList{"Reading", "Quiz review"}));
    EXPECT_EQ(second.resets.count(), 0);
    EXPECT_EQ(second.controller.displayAssignments(), freshlyLoaded(second));
}

TEST(SharedRows, ASubprojectChangedElsewhereReachesItsProjectInTheOtherList)
{
    const QString id = stored(2026, 11, 1);
    Fixture first({record("Paper", {{Project, id}, {Date, stored(2026, 12, 1)}}),
                   record("Outline", {{Subproject, id}, {Date, stored(2026, 11, 20)}}),
                   record("Sources", {{Subproject, id}, {Date, stored(2026, 11, 22)}})});
    SecondWindow second;
    second.select("Paper");
    QSignalSpy subprojects(&second.controller, &Controller::subprojectsChanged);

    // The project's subprojects table in the other list follows a subproject completed here.
    first.controller->editing().markAssignmentAsCompleted(first.rowOf("Outline"));
    EXPECT_GE(subprojects.count(), 1);
    const AssignmentList rows = second.controller.subprojectRows();
    ASSERT_EQ(rows.size(), 2);
    EXPECT_TRUE(rows[0]->isCompleted());
    EXPECT_EQ(second.selectedName(), "Paper");

    // A subproject deleted here leaves the other list's project with one.
    first.select("Sources");
    first.controller->editing().deleteAssignment();
    EXPECT_EQ(second.controller.subprojectRows().size(), 1);
    EXPECT_EQ(second.shown(), (QStringList{"Outline", "Paper"}));

    // The project renamed here: the subproject's row in the other list is titled by the new name.
    edit(first, "Paper", [](SidebarValues &v) { v.name = "Thesis"; });
    const int outline = int(second.shown().indexOf("Outline"));
    ASSERT_GE(outline, 0);
    EXPECT_EQ(second.controller.tableModel()->cellText(outline, "Name").toString(),
              CellPresentation::subprojectTitle(GeneralSettings::storedSubprojectTitleFormat(), "Thesis", "Outline"));
    EXPECT_EQ(second.selectedName(), "Thesis");
}

TEST(SharedRows, RowsTakenInStandWhereAFreshLoadSortsThem)
{
    // Equal keys (the same date and name) stand in file order, in either direction.
    Fixture first({record("b", {{Date, stored(2026, 11, 25)}, {Course, "Math"}}),
                   record("a", {{Date, stored(2026, 11, 25)}, {Course, "Art"}}),
                   record("a", {{Date, stored(2026, 11, 25)}, {Course, "Biology"}}), record("c"),
                   record("d", {{Date, stored(2026, 11, 23)}})});
    SecondWindow second;
    second.controller.didClickTableColumn("Course");
    second.controller.didClickTableColumn("Course");
    ASSERT_EQ(names(second.controller.displayAssignments()), (QStringList{"b", "a", "a", "d", "c"}));
    second.resets.clear();

    first.select("c");
    first.controller->editing().duplicateAssignment();
    edit(first, "d", [](SidebarValues &v) { v.course = "Art"; });
    first.controller->editing().markAssignmentAsCompleted(first.rowOf("b"));
    first.toolbar.format = 0;
    first.controller->editing().addAssignmentWithDate(QDateTime(QDate(2026, 11, 25), QTime(0, 0)));
    EXPECT_EQ(second.controller.displayAssignments(), freshlyLoaded(second));
    EXPECT_EQ(second.controller.displayAssignments().size(), 7);
    EXPECT_EQ(second.controller.allAssignments(), freshlyLoaded(second));
    EXPECT_EQ(second.resets.count(), 0);
}
