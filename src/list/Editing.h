#pragma once

#include "store/Assignment.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

class Controller;

// The changes the user makes to assignments from the main window other than the sidebar's edits
// (SidebarEditing): adding assignments, projects and subprojects, editing the subprojects table,
// duplicating, deleting and marking completed. Each changes allAssignments, filters,
// sorts and saves through the controller.
class Editing
{
public:
    explicit Editing(Controller &controller);

    // Adds by the format control: no date in the list, the calendar's focus date in a calendar.
    // Returns the new row, or -1.
    int addAssignment();
    int addAssignmentWithDate(const std::optional<QDateTime> &date);
    int addProject();
    int addProjectWithDate(const std::optional<QDateTime> &date);
    void addSubproject();
    // Deletes the subproject at `row` of the subprojects table, without asking.
    void deleteSubproject(int row) { deleteSubprojects({row}, false); }
    // Deletes the subprojects at these rows of the subprojects table; with `ask`, first asks as
    // deleting from the list does while "Display Warning Messages" is on.
    void deleteSubprojects(const QList<int> &rows, bool ask);
    // A subprojects-table cell was edited: "Name", "Date" (a date, a text, or empty to remove) or
    // "Completed".
    void setSubprojectValue(int row, const QString &column, const QVariant &value);
    // The value the subprojects table shows in a cell.
    QVariant subprojectCell(int row, const QString &column) const;

    void duplicateAssignment();
    // Asks first while "Display Warning Messages" is on; deletes projects with their subprojects.
    void deleteAssignment();
    // The completed box of `row` was clicked (-1: the selected row).
    void markAssignmentAsCompleted(int row = -1);
    // Completes the record at `index` of all assignments, shown or not (a reminder's action may
    // name one that the view or the search hides), and saves.
    void completeRecord(qsizetype index);

private:
    AssignmentRef addRecordWithDate(const std::optional<QDateTime> &date);
    AssignmentRef newRecord() const;
    bool warningsOn() const;
    // Puts `replacement` in the place of `record` (one edit of one record) and saves.
    void replaceAndPlace(AssignmentRef record, const AssignmentRef &replacement);

    Controller &m_controller;
};
