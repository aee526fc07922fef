#include "ListTestSupport.h"

#include "list/DatePullDowns.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"

#include <gtest/gtest.h>

using namespace ListTest;
using namespace AssignmentKeys;

TEST(Editing, AddFollowsTheFilterAndTheCoursesDefaultTextbook)
{
    writeCourses({course("Math", "Algebra"), textbook("Algebra", "Math"), course("Art", "none")});
    Fixture f;
    f.controller->filterBar().selectTitleInSegment("Complete", 0);
    f.controller->filterBar().selectTitleInSegment("Math", 1);
    const int row = f.controller->editing().addAssignment();
    ASSERT_EQ(row, 0);
    const AssignmentRef added = f.controller->displayAssignments()[row];
    EXPECT_TRUE(added->isCompleted());
    EXPECT_EQ(added->string(Course), "Math");
    EXPECT_EQ(added->string(Textbook), "Algebra");
    EXPECT_EQ(f.sidebar.values.textbook, "Algebra");
    EXPECT_FALSE(added->has(Date));
    EXPECT_EQ(added->string(DateUpdated), DateText::nowStoredForm());
    EXPECT_EQ(readStore().size(), 1);

    // In the "All" course nothing is set.
    f.controller->filterBar().selectTitleInSegment("All", 1);
    f.controller->filterBar().selectTitleInSegment("All", 0);
    f.controller->clearSelection();
    const AssignmentRef plain = f.controller->displayAssignments()[f.controller->editing().addAssignment()];
    EXPECT_FALSE(plain->has(Course));
    EXPECT_FALSE(plain->has(Textbook));
}

TEST(Editing, SidebarEditsStoreOnlyWhatIsFilledAndACourseChangeClearsTheTextbook)
{
    writeCourses({course("Art", "none"), course("Math", "Algebra")});
    // A key the sidebar does not show (written by a feed import, another device or a later
    // version) outlives every edit.
    const QVariantMap feed{{"Feed", "https://school.example/cal.ics"}, {"UID", "e1"}};
    Fixture f({record("Essay", {{Course, "Math"}, {Textbook, "Algebra"}, {Grade, "B"}, {Priority, 2.0},
                                {"Calendar Import", feed}})});
    f.select("Essay");
    EXPECT_EQ(f.sidebar.values.grade, "B");
    f.sidebar.values.grade.clear();
    f.sidebar.values.dateText = "12/24/2026";
    ASSERT_TRUE(f.controller->sidebarEditing().editAssignment(SidebarEditing::Sender::Other));
    QVariantMap saved = storedNamed("Essay");
    EXPECT_FALSE(saved.contains(Grade));
    EXPECT_EQ(saved.value(Date).toString(), stored(2026, 12, 24));
    EXPECT_EQ(f.controller->selectedRows(), QList<int>{0});
    EXPECT_EQ(saved.value("Calendar Import").toMap(), feed);

    // A course whose default textbook is "none": the textbook is stored as "".
    f.sidebar.values.course = "Art";
    ASSERT_TRUE(f.controller->sidebarEditing().editAssignment(SidebarEditing::Sender::CourseField));
    saved = storedNamed("Essay");
    EXPECT_EQ(saved.value(Course).toString(), "Art");
    EXPECT_TRUE(saved.contains(Textbook));
    EXPECT_EQ(saved.value(Textbook).toString(), "");
    EXPECT_EQ(saved.value("Calendar Import").toMap(), feed);

    // A date text that names no day leaves the record as it was.
    f.sidebar.values.dateText = "someday";
    EXPECT_FALSE(f.controller->sidebarEditing().editAssignment(SidebarEditing::Sender::Other));
    EXPECT_EQ(storedNamed("Essay"), saved);
}

TEST(Editing, ProjectEditsPropagateToSubprojects)
{
    const QString id = stored(2026, 11, 1, 9);
    Fixture f({record("Paper", {{Project, id}, {Course, "Math"}, {"Later Key", 7}}),
               record("Outline", {{Subproject, id}, {Course, "Math"}, {File, "/tmp/x"}, {Contacts, QVariantList{"a"}},
                                  {Date, stored(2026, 12, 1)}, {"Later Key", "own"}})});
    f.select("Paper");
    f.sidebar.values.course = "History";
    f.sidebar.values.notes = "shared notes";
    ASSERT_TRUE(f.controller->sidebarEditing().editAssignment(SidebarEditing::Sender::Other));
    const QVariantMap outline = storedNamed("Outline");
    EXPECT_EQ(outline.value(Course).toString(), "History");
    EXPECT_EQ(outline.value(Notes).toString(), "shared notes");
    EXPECT_EQ(outline.value(Subproject).toString(), id);
    EXPECT_EQ(outline.value(Date).toString(), stored(2026, 12, 1));
    EXPECT_FALSE(outline.contains(File));
    EXPECT_FALSE(outline.contains(Contacts));
    EXPECT_FALSE(outline.contains(DateCreated));
    // Keys the program does not know stay with the record they belong to.
    EXPECT_EQ(outline.value("Later Key").toString(), "own");
    EXPECT_EQ(storedNamed("Paper").value("Later Key").toInt(), 7);
}

TEST(Editing, SubprojectsAddToTheProjectOfASelectedSubproject)
{
    const QString id = stored(2026, 11, 1, 9);
    Fixture f({record("Paper", {{Project, id}, {Course, "Math"}, {Priority, 3.0}}),
               record("Outline", {{Subproject, id}})});
    f.select("Outline");
    f.controller->editing().addSubproject();
    // The subprojects table lists them in store order, which is the sorted order: the new, unnamed
    // one first.
    const AssignmentList subprojects = f.controller->subprojectsForProject(id);
    ASSERT_EQ(names(subprojects), (QStringList{"", "Outline"}));
    EXPECT_EQ(subprojects[0]->string(Course), "Math");
    EXPECT_EQ(subprojects[0]->value(Priority).toDouble(), 3.0);
    EXPECT_EQ(readStore().size(), 3);
    EXPECT_EQ(f.controller->actualSelectedObject()->string(Name), "Paper");
    // The sidebar shows that project, so what the student types next goes to it as it is, and a
    // save of the sidebar as shown changes nothing.
    EXPECT_EQ(f.sidebar.values.name, "Paper");
    f.controller->sidebarEditing().editAssignment(SidebarEditing::Sender::Other);
    EXPECT_EQ(storedNamed("Paper").value(Project).toString(), id);

    // Naming and dating it in the subprojects table.
    f.select("Paper");
    f.controller->editing().setSubprojectValue(0, "Name", "Draft");
    f.select("Paper");
    ASSERT_EQ(names(f.controller->subprojectRows()), (QStringList{"Draft", "Outline"}));
    f.controller->editing().setSubprojectValue(0, "Date", "12/2/2026");
    EXPECT_EQ(storedNamed("Draft").value(Date).toString(), stored(2026, 12, 2));
    f.select("Paper");
    ASSERT_EQ(names(f.controller->subprojectRows()), (QStringList{"Outline", "Draft"}));
    EXPECT_EQ(f.controller->editing().subprojectCell(1, "Date").toString(), "Wednesday, December  2, 2026");

    // Deleting a subproject asks nothing; the project stays selected.
    f.select("Paper");
    f.controller->editing().deleteSubproject(0);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_EQ(names(f.controller->subprojectsForProject(id)), QStringList{"Draft"});
    EXPECT_EQ(f.controller->actualSelectedObject()->string(Name), "Paper");
}

TEST(Editing, DeletingAsksAndTakesSubprojectsAlong)
{
    setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, true);
    const QString id = stored(2026, 11, 1, 9);
    Fixture f({record("Paper", {{Project, id}}), record("Outline", {{Subproject, id}}), record("Other"),
               record("Copy"), record("Copy")});
    f.select("Paper");
    Alerts::queueAnswer("No");
    f.controller->editing().deleteAssignment();
    EXPECT_EQ(readStore().size(), 5);
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].buttons, (QStringList{"Yes", "No"}));

    Alerts::queueAnswer("Yes");
    f.controller->editing().deleteAssignment();
    EXPECT_EQ(f.shown(), (QStringList{"Copy", "Copy", "Other"}));
    // Deleting one of two equal records takes both.
    f.select("Copy");
    Alerts::queueAnswer("Yes");
    f.controller->editing().deleteAssignment();
    EXPECT_EQ(f.shown(), QStringList{"Other"});
    EXPECT_EQ(storedNames(), QStringList{"Other"});
    // A keystroke afterwards does not bring the deleted records back.
    f.type("");
    EXPECT_EQ(f.shown(), QStringList{"Other"});
}

TEST(Editing, DuplicateCompleteAndDateButtons)
{
    const QString id = stored(2026, 11, 1, 9);
    Fixture f({record("Paper", {{Project, id}, {Date, stored(2026, 11, 30, 14)}}), record("Outline", {{Subproject, id}})});
    // The stepper goes back from the stored date.
    f.select("Paper");
    f.controller->sidebarEditing().decreaseDate();
    EXPECT_EQ(storedNamed("Paper").value(Date).toString(), stored(2026, 11, 29));

    f.select("Paper");
    f.controller->editing().duplicateAssignment();
    EXPECT_EQ(readStore().size(), 3);
    // Both projects list the same subprojects.
    EXPECT_EQ(f.controller->subprojectsForProject(id).size(), 1);

    f.select("Outline");
    f.controller->editing().markAssignmentAsCompleted();
    EXPECT_TRUE(storedNamed("Outline").value(Completed).toBool());
}

TEST(Editing, DatePullDownsUse2005AndKeepTheDayWhenTheyCan)
{
    EXPECT_EQ(DatePullDowns::dayTitles("Feb").size(), 28);
    EXPECT_EQ(DatePullDowns::dayTitles("Jan").first(), " 1");
    EXPECT_EQ(DatePullDowns::reselectDay("Mar", "31"), "31");
    EXPECT_EQ(DatePullDowns::reselectDay("Apr", "31"), "");
    EXPECT_EQ(DatePullDowns::yearTitles(2026).first(), "2020");
    EXPECT_EQ(DatePullDowns::yearTitles(2026).size(), 12);

    Fixture f({record("Essay", {{Date, stored(2026, 1, 31)}})});
    f.select("Essay");
    EXPECT_EQ(f.sidebar.values.monthTitle, "Jan");
    EXPECT_EQ(f.sidebar.values.dayTitle, "31");
    f.sidebar.values.monthTitle = "Apr";
    f.controller->sidebarEditing().changeDateWithPullDownBoxes(true);
    EXPECT_EQ(f.sidebar.values.dayTitle, "");
    EXPECT_EQ(storedNamed("Essay").value(Date).toString(), stored(2026, 1, 31));
    f.sidebar.values.dayTitle = " 5";
    f.controller->sidebarEditing().changeDateWithPullDownBoxes(false);
    EXPECT_EQ(storedNamed("Essay").value(Date).toString(), stored(2026, 4, 5));
}
