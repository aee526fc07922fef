#pragma once

#include "list/ColumnLayout.h"
#include "list/CoursesFile.h"
#include "list/DisplayLists.h"
#include "list/FilterBarModel.h"
#include "list/HistoryRecorder.h"
#include "list/PendingEdit.h"
#include "list/Sorting.h"
#include "list/TableSelection.h"
#include "store/Assignment.h"
#include "store/AssignmentsDocument.h"

#include <QObject>
#include <QStringList>

#include <memory>
#include <optional>
#include <utility>

class AssignmentTableModel;
class CalendarObserver;
class Editing;
class QItemSelectionModel;
class SidebarEditing;
class SidebarEditor;
class ToolbarState;

// The heart of the main window. It owns the parts of the list and wires them together: the three
// assignment lists with the display pipeline that derives them (DisplayLists), the table model
// with its selection (TableSelection), the commit-before-action path (PendingEdit), the editing
// from the list and from the sidebar (Editing, SidebarEditing), and itself keeps the store, the
// column layout and the window refresh. Everything here runs without a window; the main window
// draws it and forwards its events.
//
// Every change made through the list refilters, sorts and saves.
class Controller : public QObject
{
    Q_OBJECT
public:
    using SearchSender = DisplayLists::SearchSender;

    explicit Controller(QObject *parent = nullptr);
    // A store file elsewhere than the data folder (the benchmarks).
    Controller(const QString &assignmentsPath, const QString &coursesPath, QObject *parent = nullptr);
    // A controller on a document other windows share.
    Controller(std::shared_ptr<AssignmentsDocument> document, const QString &coursesPath, QObject *parent = nullptr);
    ~Controller() override;

    void setToolbar(ToolbarState *toolbar) { m_lists.setToolbar(toolbar); }
    void setCalendar(CalendarObserver *calendar) { m_lists.setCalendar(calendar); }
    void setSidebar(SidebarEditor *sidebar) { m_pendingEdit.setSidebar(sidebar); }
    ToolbarState *toolbar() const { return m_lists.toolbar(); }
    CalendarObserver *calendar() const { return m_lists.calendar(); }
    SidebarEditor *sidebar() const { return m_pendingEdit.sidebar(); }

    // The parts.
    DisplayLists &lists() { return m_lists; }
    TableSelection &selection() { return *m_selection; }
    PendingEdit &pendingEdit() { return m_pendingEdit; }
    Editing &editing() { return *m_editing; }
    SidebarEditing &sidebarEditing() { return *m_sidebarEditing; }

    // Asks the sidebar to hand over an edit still in progress. Every action that changes the
    // selection, filters, reloads or saves runs this first, so typing is never lost to it.
    void commitPendingEdit() { m_pendingEdit.commit(); }
    [[nodiscard]] auto holdPendingEdit() { return m_pendingEdit.hold(); }
    // An action also makes one step of the undo history, however often it saves.
    [[nodiscard]] auto beginAction()
    {
        auto pending = m_pendingEdit.beginAction();
        return std::pair{std::move(pending), m_history.group()};
    }

    // The sort keys read from "Sort Selectors" at start-up.
    void setSortingSelectors(const QStringList &selectors) { m_sortingSelectors = selectors; }
    QStringList sortingSelectors() const { return m_sortingSelectors; }

    // --- the lists -------------------------------------------------------------------------------
    const AssignmentList &allAssignments() const { return m_lists.all(); }
    const AssignmentList &filteredAssignments() const { return m_lists.filtered(); }
    const AssignmentList &displayAssignments() const { return m_lists.display(); }
    const QVariantList &coursesAndTextbooks() const { return m_courses.records(); }
    QString coursesFilePath() const { return m_courses.path(); }
    bool isStoreUsable() const { return m_document->isUsable(); }
    AssignmentsDocument &document() const { return *m_document; }
    // The changes of one or a few records: each goes to the document, which saves it and tells every
    // list, this one included, which rows came, went or changed. The lists take them in place when
    // they can, and reload otherwise; either way they are filtered, searched and sorted afterwards.
    //
    // Puts `replacement` in the place of `record` in the document (or, when the file changed
    // underneath, of the reread record equal to `original`).
    bool replaceRecord(const AssignmentRef &record, const Assignment &original, const AssignmentRef &replacement);
    // An action of this list that changed one record (`replacement` is its changed copy): saved as
    // above, then shown as the action leaves it, the rows selected before still selected (the copy
    // in the record's place) and the calendar redrawn.
    bool replaceShown(AssignmentRef record, const AssignmentRef &replacement);
    bool appendRecord(const AssignmentRef &record);
    // Removes these records and every record equal to one of them.
    bool removeEqualRecords(const AssignmentList &records);
    // A record the lists took in before the document had it (an assignment being added) goes to
    // the document; the lists stay as they are, and the caller filters and sorts.
    bool saveAdded(const AssignmentRef &record);
    // Replaces the whole store in memory (for loading and the tests), then filters and sorts.
    void setAllAssignments(const AssignmentList &records);

    // --- the display pipeline --------------------------------------------------------------------
    void filterWithViews(const std::optional<QString> &view = std::nullopt,
                         const std::optional<QString> &course = std::nullopt)
    {
        m_lists.filterWithViews(view, course);
    }
    void searchAssignments(SearchSender sender = SearchSender::None) { m_lists.searchAssignments(sender); }
    // A scope menu item was chosen: "All" clears the placeholder, any other title becomes it in
    // lower case. The list changes only with the next keystroke.
    void setSearchSpecifications(const QString &menuItemTitle) { m_lists.setSearchSpecifications(menuItemTitle); }
    // Every filter-bar button's action.
    void selectNewItem() { m_lists.selectNewItem(); }
    // A text field changed; only the toolbar's search field searches.
    void controlTextDidChange(bool fromSearchField) { m_lists.controlTextDidChange(fromSearchField); }
    void updateFilterBar() { m_lists.updateFilterBar(); }
    FilterBarModel &filterBar() { return m_lists.filterBar(); }

    AssignmentRef actualSelectedObject() const { return m_lists.actualSelectedObject(); }
    AssignmentList subprojectsForProject(const QString &projectIdentifier) const
    {
        return m_lists.subprojectsForProject(projectIdentifier);
    }
    qsizetype findIndexOfProjectForSubproject(const QString &projectIdentifier) const
    {
        return m_lists.findIndexOfProjectForSubproject(projectIdentifier);
    }
    // The first project with that identifier, or none.
    AssignmentRef projectFor(const QString &projectIdentifier) const { return m_lists.projectFor(projectIdentifier); }
    std::optional<QString> getSubprojectDisplayName(const Assignment &subproject) const
    {
        return m_lists.getSubprojectDisplayName(subproject);
    }
    // The subprojects table: the subprojects of the selected record's project; none without a
    // selection.
    AssignmentList subprojectRows() const { return m_lists.subprojectRows(); }

    // --- table and selection ---------------------------------------------------------------------
    AssignmentTableModel *tableModel() const { return m_table; }
    QItemSelectionModel *selectionModel() const { return m_selection->model(); }
    QList<int> selectedRows() const { return m_selection->selectedRows(); }
    // The row of the only selected row, or -1 with none or several.
    int singleSelectedRow() const { return m_selection->singleSelectedRow(); }
    void selectRowAlone(int row) { m_selection->selectRowAlone(row); }
    void selectRows(const QList<int> &rows) { m_selection->selectRows(rows); }
    void clearSelection() { m_selection->clear(); }

    // --- sorting and columns ---------------------------------------------------------------------
    // Sorts by the given column (a second time on the stored column reverses), or with none
    // re-applies the stored sort.
    void sortColumn(const std::optional<QString> &column = std::nullopt) { m_lists.sortColumn(column); }
    // A click on a header: image columns do nothing; any other sorts and sets didJustSort.
    void didClickTableColumn(const QString &identifier) { m_lists.didClickTableColumn(identifier); }
    bool didJustSort() const { return m_lists.didJustSort(); }
    void clearDidJustSort() { m_lists.clearDidJustSort(); }
    // The order the list is in: the column the header shows its arrow in, and the direction.
    Sorting::Order sortIndicator() const { return m_lists.sortIndicator(); }
    // The widget resized or dragged a column; both save the whole layout.
    void columnDidResize(int column, double width);
    void columnDidMove(int from, int to);
    // Rebuilds the shown columns from "Preferences - User Columns Ordering", then sorts.
    void rebuildColumns();

    // --- undo ------------------------------------------------------------------------------------
    HistoryRecorder &history() { return m_history; }
    // Undoes / redoes the last step: the records go back through the path every change takes
    // (filter, sort, save, calendar), and the records it brought back are selected.
    bool undo() { return applyHistory(true); }
    bool redo() { return applyHistory(false); }

    // --- store and refresh -----------------------------------------------------------------------
    // Writes the whole list; false when nothing was written (the file could not be read, the
    // write failed, or the file had changed on disk and was read instead).
    bool saveData();
    // The refresh run when the main window becomes key: reload what changed on disk, repair
    // priorities, filter, columns, sort, filter bar, labels.
    void updateWindowInformation();
    // "Preferences - Personal Info" values in lower case, those that are not empty.
    static QStringList personalInformation();
    // A preference was written (by this or any other window): redraws what it decides, without
    // reloading the store. Connected to the preferences' change signal.
    void preferenceChanged(const QString &group, const QString &key);

Q_SIGNALS:
    // The sidebar should show nothing selected / be emptied.
    void sidebarNoSelection();
    void sidebarCleared();
    // A fresh record wants its name typed.
    void focusNameField();
    // The subprojects table's rows changed.
    void subprojectsChanged();
    // The sidebar should show its subprojects tab.
    void showSubprojectsTab();
    // The textbook choices of the sidebar for a course.
    void textbookChoicesChanged(const QStringList &textbooks);
    // Labels, personal information or headers may read differently.
    void labelsChanged();
    // The selection of the main table changed (after didJustSort was cleared).
    void selectionDidChange();

private:
    void construct();
    void onSelectionChanged();
    // Reads the document's records into the lists; the history starts again from them unless this
    // list made the change itself.
    bool loadStore(bool rebaseHistory = true);
    // Another window, a service or the file itself changed the document (ControllerDocument.cpp).
    enum class RowsChange { Inserted, Removed, Changed };
    void connectDocument();
    // The courses changed, here or elsewhere: the filter bar's course buttons follow.
    void connectCourses();
    void coursesChanged();
    // True when a change of the document is to be taken in later, not now.
    bool waitsToTakeIn();
    void documentReset(QObject *source);
    void documentRows(RowsChange change, qsizetype first, qsizetype count, QObject *source);
    bool rowChanges(RowsChange change, qsizetype first, qsizetype count, QList<DisplayLists::RowChange> &changes) const;
    void rowsTakenIn(const QList<DisplayLists::RowChange> &changes, bool own);
    void reloadFromDocument(bool foreign);
    void knowDocument();
    void headersChanged();
    bool applyHistory(bool undo);

    std::shared_ptr<AssignmentsDocument> m_document;
    HistoryRecorder m_history;
    bool m_loadedOnce = false;
    bool m_refreshing = false;
    bool m_quietSave = false;
    // How many records the document held when this list last took them in, and how many changes
    // that was. A count, not a copy: a copy would make the document copy its whole list at its
    // next change.
    qsizetype m_knownSize = 0;
    quint64 m_seenChanges = 0;
    // A change of the document is being taken in; one heard meanwhile means the lists fell behind.
    bool m_takingIn = false;
    bool m_fellBehind = false;
    // This list's own change that its lists already show.
    bool m_listsAhead = false;
    CoursesFile m_courses;
    std::shared_ptr<CoursesDocument> m_coursesDocument;
    bool m_coursesQueued = false;
    ColumnLayout m_layout;
    AssignmentTableModel *m_table;
    PendingEdit m_pendingEdit;
    DisplayLists m_lists;
    TableSelection *m_selection = nullptr;
    QStringList m_sortingSelectors;
    std::unique_ptr<Editing> m_editing;
    std::unique_ptr<SidebarEditing> m_sidebarEditing;
};
