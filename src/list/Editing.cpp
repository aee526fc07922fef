#include "list/Editing.h"

#include "list/CalendarObserver.h"
#include "list/ColumnCatalogue.h"
#include "list/Controller.h"
#include "list/CoursesFile.h"
#include "list/DatePullDowns.h"
#include "list/ListLog.h"
#include "list/ListTexts.h"
#include "list/SidebarEditing.h"
#include "list/ToolbarState.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/UserDefaults.h"
#include "store/GeneralSettings.h"
#include "store/PreferenceKeys.h"

#include <algorithm>

using namespace AssignmentKeys;

Editing::Editing(Controller &controller)
    : m_controller(controller)
{
}

bool Editing::warningsOn() const
{
    return UserDefaults()
        .groupValue(PreferenceKeys::General, PreferenceKeys::GeneralKeys::DisplayWarningMessages)
        .toBool();
}

AssignmentRef Editing::newRecord() const
{
    AssignmentRef record = Assignments::make();
    record->set(DateUpdated, DateText::nowStoredForm());
    record->set(DateCreated, Clock::secondsSince1970());
    return record;
}

// --- adding ----------------------------------------------------------------------------------------

int Editing::addAssignment()
{
    const int format = m_controller.toolbar() ? m_controller.toolbar()->formatSegment() : 0;
    if (format == 0)
        return addAssignmentWithDate(std::nullopt);
    if (format == 1 || format == 2) {
        std::optional<QDateTime> focus;
        if (m_controller.calendar())
            focus = m_controller.calendar()->focusDate();
        return addAssignmentWithDate(focus);
    }
    return -1;
}

int Editing::addAssignmentWithDate(const std::optional<QDateTime> &date)
{
    const auto action = m_controller.beginAction();
    addRecordWithDate(date);
    return m_controller.singleSelectedRow();
}

AssignmentRef Editing::addRecordWithDate(const std::optional<QDateTime> &date)
{
    Controller &c = m_controller;
    if (!c.isStoreUsable()) {
        // Saving the list over a file that could not be read would lose everything in it.
        qCWarning(lcList) << "the store could not be read; the new assignment has nowhere to go";
        Alerts::inform(ListTexts::StoreErrorTitle, ListTexts::AddUnreadableMessage);
        return nullptr;
    }
    // Pending sidebar edits of the selected record are kept first.
    const auto action = c.beginAction();
    c.sidebarEditing().editAssignment(SidebarEditing::Sender::None);

    AssignmentRef record = newRecord();
    if (c.filterBar().getSelectedTitleInSegment(0) == ListTexts::Complete)
        record->set(Completed, true);
    const QString course = c.filterBar().getSelectedTitleInSegment(1);
    if (!course.isEmpty() && course != ListTexts::All)
        record->set(Course, course);
    if (date)
        record->set(Date, DateText::toStoredForm(*date));

    c.lists().append(record);
    c.filterWithViews();
    Q_EMIT c.sidebarCleared();

    const qsizetype row = c.displayAssignments().indexOf(record);
    if (row < 0) {
        c.sortColumn();
        c.saveAdded(record);
        return record;
    }
    // The edit below filters and sorts again before anything is drawn, so the sort is left to it;
    // it finds the new record by identity wherever it stands.
    c.selectRowAlone(int(row));
    // The course field counts as changed from nothing, which brings in the course's default textbook.
    c.sidebarEditing().courseFieldWillChangeFrom(QString(""));
    // The edit saves when it goes through; a second write of the same list would only cost time.
    const bool saved = c.sidebarEditing().editAssignment(SidebarEditing::Sender::CourseField);
    Q_EMIT c.focusNameField();
    if (!saved) {
        c.sortColumn();
        c.saveAdded(record);
    }
    const int selected = c.singleSelectedRow();
    return selected >= 0 ? c.displayAssignments()[selected] : record;
}

int Editing::addProject()
{
    const int format = m_controller.toolbar() ? m_controller.toolbar()->formatSegment() : 0;
    if (format == 0)
        return addProjectWithDate(std::nullopt);
    if ((format == 1 || format == 2) && m_controller.calendar())
        return addProjectWithDate(m_controller.calendar()->focusDate());
    return -1;
}

int Editing::addProjectWithDate(const std::optional<QDateTime> &date)
{
    Controller &c = m_controller;
    const auto action = c.beginAction();
    const AssignmentRef added = addRecordWithDate(std::nullopt);
    if (!added)
        return -1;
    const AssignmentRef record = Assignments::copy(added);
    if (date)
        record->set(Date, DateText::toStoredForm(*date));
    record->set(Project, DateText::nowStoredForm());
    c.replaceShown(added, record);
    const qsizetype row = c.displayAssignments().indexOf(record);
    if (row >= 0)
        c.selectRowAlone(int(row));
    Q_EMIT c.focusNameField();
    return int(row);
}

void Editing::addSubproject()
{
    Controller &c = m_controller;
    const auto action = c.beginAction();
    const QList<int> rows = c.selectedRows();
    if (rows.isEmpty())
        return;
    AssignmentRef project = c.displayAssignments()[rows.last()];
    if (project->isSubproject())
        project = c.projectFor(project->string(Subproject));
    if (!project || !project->isProject())
        return;

    c.clearSelection();
    const AssignmentRef added = addRecordWithDate(std::nullopt);
    if (!added)
        return;
    const AssignmentRef record = Assignments::copy(added);
    record->set(Subproject, project->string(Project));
    record->set(Name, QString(""));
    for (const QString &key : {Course, Textbook, Grade, Type, Priority})
        if (project->has(key))
            record->set(key, project->value(key));
    c.replaceShown(added, record);
    Q_EMIT c.subprojectsChanged();
    const qsizetype row = c.displayAssignments().indexOf(record);
    if (row >= 0)
        c.selectRowAlone(int(row));
    Q_EMIT c.showSubprojectsTab();
}

void Editing::deleteSubprojects(const QList<int> &subprojectRows, bool ask)
{
    Controller &c = m_controller;
    const auto action = c.beginAction();
    const QList<int> rows = c.selectedRows();
    if (rows.isEmpty())
        return;
    const AssignmentRef selected = c.displayAssignments()[rows.last()];
    const bool selectedWasProject = selected->isProject();
    const AssignmentRef project
        = selected->isSubproject() ? c.projectFor(selected->string(Subproject)) : selected;
    if (!project)
        return;
    const AssignmentList subprojects = c.subprojectsForProject(project->string(Project));
    AssignmentList doomed;
    for (int row : subprojectRows)
        if (row >= 0 && row < subprojects.size() && !doomed.contains(subprojects[row]))
            doomed.append(subprojects[row]);
    if (doomed.isEmpty())
        return;
    if (ask && warningsOn()
        && !Alerts::askYesNo(ListTexts::WarningTitle,
                             doomed.size() == 1 ? ListTexts::DeleteOneQuestion : ListTexts::DeleteManyQuestion))
        return;
    c.removeEqualRecords(doomed);
    Q_EMIT c.subprojectsChanged();
    c.clearSelection();
    if (selectedWasProject) {
        const qsizetype projectRow = c.displayAssignments().indexOf(project);
        if (projectRow >= 0)
            c.selectRowAlone(int(projectRow));
    }
}

void Editing::setSubprojectValue(int row, const QString &column, const QVariant &value)
{
    Controller &c = m_controller;
    // The cell being stored is the edit in progress; nothing else in the sidebar can be.
    const auto hold = c.holdPendingEdit();
    const AssignmentRef project = c.actualSelectedObject();
    if (!project)
        return;
    const AssignmentList subprojects = c.subprojectsForProject(project->string(Project));
    if (row < 0 || row >= subprojects.size())
        return;
    // A changed copy replaces the subproject, so the change goes onto the file as it is now.
    const AssignmentRef subproject = Assignments::copy(subprojects[row]);
    if (column == ColumnCatalogue::Name) {
        subproject->set(Name, value.toString());
    } else if (column == ColumnCatalogue::Date) {
        std::optional<QDateTime> date;
        if (value.typeId() == QMetaType::QDateTime)
            date = value.toDateTime();
        else if (!value.toString().isEmpty())
            date = DateText::parseNatural(value.toString(), GeneralSettings::storedDateFormat(), Clock::now());
        if (date && date->isValid())
            subproject->set(Date, DateText::toStoredForm(*date));
        else if (value.toString().isEmpty())
            subproject->remove(Date);
        else
            return; // a text that names no date changes nothing
    } else if (column == ColumnCatalogue::Completed) {
        subproject->set(Completed, value.toBool());
    } else {
        return;
    }
    for (const QString &key : {Course, Textbook, Grade, Type})
        if (project->has(key))
            subproject->set(key, project->value(key));
    c.replaceShown(subprojects[row], subproject);
    Q_EMIT c.subprojectsChanged();
}

QVariant Editing::subprojectCell(int row, const QString &column) const
{
    const AssignmentList rows = m_controller.subprojectRows();
    if (row < 0 || row >= rows.size())
        return {};
    const Assignment &record = *rows[row];
    if (column == ColumnCatalogue::Date) {
        if (const std::optional<QDateTime> due = record.dueDate())
            return DateText::format(due->toLocalTime(), GeneralSettings::storedDateFormat());
    }
    return record.value(column);
}

// --- duplicating, deleting, completing --------------------------------------------------------------

void Editing::duplicateAssignment()
{
    Controller &c = m_controller;
    if (!c.isStoreUsable())
        return;
    // The copy takes what the user is typing into the sidebar.
    const auto action = c.beginAction();
    const QList<int> rows = c.selectedRows();
    if (rows.isEmpty())
        return;
    // Every key is copied, "Project" and "Subproject" too: a duplicated project shares its
    // subprojects with the record it came from.
    const AssignmentRef copy = Assignments::copy(c.displayAssignments()[rows.last()]);
    copy->set(DateUpdated, DateText::nowStoredForm());
    copy->set(DateCreated, Clock::secondsSince1970());
    c.history().nameNextChange(HistoryRecorder::DuplicateName);
    // The lists take the copy in at its sorted place when it passes the filter and the search.
    c.appendRecord(copy);
    c.lists().updateCalendar();
}

void Editing::deleteAssignment()
{
    Controller &c = m_controller;
    const auto action = c.beginAction();
    const QList<int> rows = c.selectedRows();
    if (rows.isEmpty())
        return;
    if (warningsOn()
        && !Alerts::askYesNo(ListTexts::WarningTitle,
                             rows.size() == 1 ? ListTexts::DeleteOneQuestion : ListTexts::DeleteManyQuestion))
        return;

    AssignmentList doomed;
    for (int row : rows)
        doomed.append(c.displayAssignments()[row]);
    for (qsizetype i = 0, selected = doomed.size(); i < selected; ++i)
        if (doomed[i]->isProject())
            doomed.append(c.subprojectsForProject(doomed[i]->string(Project)));

    // The lists lose the records where they stand, the filter is not run again, and the other rows
    // stay as they are.
    c.removeEqualRecords(doomed);
    c.clearSelection();
    Q_EMIT c.sidebarNoSelection();
    c.lists().updateCalendar();
}

void Editing::completeRecord(qsizetype index)
{
    Controller &c = m_controller;
    if (index < 0 || index >= c.allAssignments().size() || c.allAssignments()[index]->isCompleted())
        return;
    const auto action = c.beginAction();
    const AssignmentRef record = c.allAssignments()[index];
    const AssignmentRef completed = Assignments::copy(record);
    completed->set(Completed, true);
    replaceAndPlace(record, completed);
}

void Editing::markAssignmentAsCompleted(int row)
{
    Controller &c = m_controller;
    if (row >= 0 && row < c.displayAssignments().size()) {
        // The pending edit may sort again: the clicked row is found again by its record, and the
        // edited record (replaced by the edit) is the selected row afterwards.
        const AssignmentRef clicked = c.displayAssignments()[row];
        const bool clickedSelected = c.singleSelectedRow() == row;
        c.commitPendingEdit();
        row = int(c.displayAssignments().indexOf(clicked));
        if (row < 0 && clickedSelected)
            row = c.singleSelectedRow();
        if (row < 0)
            return;
    }
    const auto action = c.beginAction();
    if (row < 0) {
        const QList<int> rows = c.selectedRows();
        if (rows.isEmpty())
            return;
        row = rows.last();
    }
    if (row >= c.displayAssignments().size())
        return;
    const AssignmentRef record = c.displayAssignments()[row];
    const qsizetype index = Assignments::indexOfEqual(c.allAssignments(), *record);
    if (index < 0)
        return;
    const AssignmentRef toggled = Assignments::copy(record);
    toggled->set(Completed, !record->isCompleted());
    replaceAndPlace(c.allAssignments()[index], toggled);
}

void Editing::replaceAndPlace(AssignmentRef record, const AssignmentRef &replacement)
{
    Controller &c = m_controller;
    // The lists take the change in where it sorts; should they not be in order for that, they
    // are filtered and sorted. The record and its contents are held here: a reread of a file
    // changed underneath drops the lists' copies.
    const Assignment original = *record;
    c.replaceRecord(record, original, replacement);
    Q_EMIT c.subprojectsChanged();
    if (c.lists().canUpdateRows()) {
        c.lists().updateCalendar();
    } else {
        c.filterWithViews();
        c.sortColumn();
    }
}
