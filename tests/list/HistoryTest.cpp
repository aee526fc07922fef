#include "ListTestSupport.h"

#include "calendar/DueDateMove.h"
#include "store/UndoNames.h"

#include <QFile>

#include <functional>

using namespace ListTest;
using namespace AssignmentKeys;

namespace {
QByteArray storeBytes()
{
    QFile file(Paths::assignmentsFile());
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

AssignmentList fourRecords()
{
    AssignmentList records;
    int day = 1;
    for (const char *name : {"Essay", "Lab", "Quiz", "Reading"})
        records.append(record(name, {{Date, stored(2026, 12, day)}, {DateCreated, 1000.0 + day++},
                                     {Priority, 1.0}, {DateUpdated, stored(2026, 11, 1)}}));
    records.append(record("Thesis", {{Project, "p1"}, {Date, stored(2026, 12, 20)}, {DateCreated, 2000.0},
                                     {Priority, 1.0}, {DateUpdated, stored(2026, 11, 1)}}));
    records.append(record("Outline", {{Subproject, "p1"}, {Date, stored(2026, 12, 10)}, {DateCreated, 2001.0},
                                      {Priority, 1.0}, {DateUpdated, stored(2026, 11, 1)}}));
    return records;
}

void editInSidebar(Fixture &f, const QString &name, const std::function<void(SidebarValues &)> &change,
                   SidebarEditing::Sender sender = SidebarEditing::Sender::Other)
{
    f.select(name);
    change(f.sidebar.values);
    ASSERT_TRUE(f.controller->sidebarEditing().editAssignment(sender));
}

struct Case {
    const char *undoText;
    std::function<void(Fixture &)> change;
};
} // namespace

// Every kind of change: undo gives back the file byte for byte, redo the changed one, and the
// step keeps its name both ways.
TEST(History, UndoAndRedoGiveBackTheFileExactlyForEveryKindOfChange)
{
    writeCourses({course("Math", "Algebra"), textbook("Algebra", "Math"), course("Art")});
    const QList<Case> cases{
        {"Undo Delete 3 Assignments",
         [](Fixture &f) {
             f.controller->selectRows({f.rowOf("Essay"), f.rowOf("Quiz"), f.rowOf("Reading")});
             f.controller->editing().deleteAssignment();
         }},
        {"Undo Delete Assignment",
         [](Fixture &f) {
             f.select("Lab");
             f.controller->editing().deleteAssignment();
         }},
        {"Undo Complete", [](Fixture &f) { f.controller->editing().markAssignmentAsCompleted(f.rowOf("Quiz")); }},
        {"Undo Change Due Date",
         [](Fixture &f) { editInSidebar(f, "Essay", [](SidebarValues &v) { v.dateText = "12/30/2026"; }); }},
        {"Undo Rename", [](Fixture &f) { editInSidebar(f, "Lab", [](SidebarValues &v) { v.name = "Lab report"; }); }},
        {"Undo Change Course",
         [](Fixture &f) {
             editInSidebar(f, "Lab", [](SidebarValues &v) { v.course = "Math"; }, SidebarEditing::Sender::CourseField);
         }},
        {"Undo Change Grade", [](Fixture &f) { editInSidebar(f, "Quiz", [](SidebarValues &v) { v.grade = "A"; }); }},
        {"Undo Change Notes", [](Fixture &f) { editInSidebar(f, "Quiz", [](SidebarValues &v) { v.notes = "p. 4"; }); }},
        {"Undo Add Assignment", [](Fixture &f) { f.controller->editing().addAssignment(); }},
        {"Undo Add Project", [](Fixture &f) { f.controller->editing().addProject(); }},
        {"Undo Add Subproject",
         [](Fixture &f) {
             f.select("Thesis");
             f.controller->editing().addSubproject();
         }},
        {"Undo Rename",
         [](Fixture &f) {
             f.select("Thesis");
             f.controller->editing().setSubprojectValue(0, "Name", "Draft");
         }},
        {"Undo Delete Assignment",
         [](Fixture &f) {
             f.select("Thesis");
             f.controller->editing().deleteSubproject(0);
         }},
        {"Undo Duplicate",
         [](Fixture &f) {
             f.select("Essay");
             f.controller->editing().duplicateAssignment();
         }},
        {"Undo Change Due Date",
         [](Fixture &f) {
             ASSERT_TRUE(DueDateMove::changeDueDay(*f.controller, f.controller->displayAssignments()[f.rowOf("Lab")],
                                                   QDate(2026, 12, 28)));
         }},
        {"Undo Add Recurring Assignments",
         [](Fixture &f) {
             RecurringSeries::Entries e;
             e.name = "Set %@";
             e.startingDate = "11/23/2026";
             e.weekdays[1] = true;
             e.weekInterval = "1";
             e.occurrences = "3";
             f.controller->history().nameNextChange(HistoryRecorder::AddRecurringName);
             // The series goes to the shared document, which the open list follows at once.
             ASSERT_TRUE(RecurringSeries::addMultipleAssignments(e));
             EXPECT_EQ(f.controller->history().undoText(), "Undo Add Recurring Assignments");
         }},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.undoText);
        setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
        Fixture f(fourRecords());
        f.controller->saveData();
        const QByteArray before = storeBytes();
        HistoryRecorder &history = f.controller->history();
        EXPECT_FALSE(history.canUndo());
        c.change(f);
        const QByteArray after = storeBytes();
        ASSERT_NE(after, before);
        EXPECT_EQ(history.undoText(), c.undoText);

        ASSERT_TRUE(f.controller->undo());
        EXPECT_EQ(storeBytes(), before);
        EXPECT_FALSE(history.canUndo());
        EXPECT_EQ(history.redoText(), QString(c.undoText).replace("Undo", "Redo"));
        ASSERT_TRUE(f.controller->redo());
        EXPECT_EQ(storeBytes(), after);
        ASSERT_TRUE(f.controller->undo());
        EXPECT_EQ(storeBytes(), before);
    }
}

TEST(History, UndoingADeleteSelectsTheRecordsAgainAndStepsUndoInTurn)
{
    setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    Fixture f(fourRecords());
    f.controller->saveData();
    const QByteArray start = storeBytes();
    f.controller->editing().markAssignmentAsCompleted(f.rowOf("Essay"));
    const QByteArray completed = storeBytes();
    f.controller->selectRows({f.rowOf("Lab"), f.rowOf("Quiz")});
    f.controller->editing().deleteAssignment();
    EXPECT_EQ(f.controller->history().undoText(), "Undo Delete 2 Assignments");

    ASSERT_TRUE(f.controller->undo());
    QStringList selected;
    for (int row : f.controller->selectedRows())
        selected.append(f.shown()[row]);
    selected.sort();
    EXPECT_EQ(selected, QStringList({"Lab", "Quiz"}));
    EXPECT_EQ(storeBytes(), completed);
    EXPECT_EQ(f.controller->history().undoText(), "Undo Complete");
    ASSERT_TRUE(f.controller->undo());
    EXPECT_EQ(storeBytes(), start);
    EXPECT_EQ(f.controller->history().undoText(), "Undo");
    EXPECT_FALSE(f.controller->undo());

    // A new change after an undo ends what could be redone.
    ASSERT_TRUE(f.controller->history().canRedo());
    editInSidebar(f, "Lab", [](SidebarValues &v) { v.grade = "C"; });
    EXPECT_FALSE(f.controller->history().canRedo());
    EXPECT_EQ(f.controller->history().redoText(), "Redo");

    // Undoing an addition leaves nothing selected.
    f.controller->editing().addAssignment();
    ASSERT_TRUE(f.controller->undo());
    EXPECT_TRUE(f.controller->selectedRows().isEmpty());
}

TEST(History, ClearingNamesWhyAndRecordsChangedElsewhereEndTheHistory)
{
    setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    Fixture f(fourRecords());
    // However the file was replaced (a download from the menu, the preferences or at start, a
    // backup import), the open list's history ends and says why.
    const struct {
        AssignmentsDocument::Replacement why;
        const char *deleted;
        const char *text;
    } replacements[]{{AssignmentsDocument::Replacement::Download, "Lab", "Can't Undo After Sync"},
                     {AssignmentsDocument::Replacement::BackupImport, "Essay", "Can't Undo After Import"}};
    for (const auto &r : replacements) {
        f.select(r.deleted);
        f.controller->editing().deleteAssignment();
        ASSERT_TRUE(f.controller->history().canUndo());
        AssignmentsDocument::fileReplaced(Paths::assignmentsFile(), r.why);
        EXPECT_FALSE(f.controller->history().canUndo());
        EXPECT_EQ(f.controller->history().undoText(), r.text);
        EXPECT_FALSE(f.controller->undo());
    }

    // A record the step changed was rewritten by another window: undo cannot find it, and says so.
    editInSidebar(f, "Quiz", [](SidebarValues &v) { v.grade = "B"; });
    QVariantList records = readStore();
    for (QVariant &entry : records) {
        QVariantMap map = entry.toMap();
        if (map.value(Name) == "Quiz")
            map.insert(Grade, "F");
        entry = map;
    }
    PropertyList::writeFile(Paths::assignmentsFile(), records);
    f.controller->updateWindowInformation();
    const QByteArray outside = storeBytes();
    EXPECT_FALSE(f.controller->undo());
    EXPECT_EQ(storeBytes(), outside);
    EXPECT_EQ(f.controller->history().undoText(), UndoNames::CantUndoAfterOutsideChange);
}
