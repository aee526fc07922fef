#pragma once

#include "list/ColumnLayout.h"
#include "list/CoursesFile.h"
#include "list/DisplayPipeline.h"
#include "list/FilterBarModel.h"
#include "list/Sorting.h"
#include "store/Assignment.h"
#include "store/AssignmentStore.h"

#include <QHash>
#include <QObject>
#include <QScopeGuard>
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

// The heart of the main window: the three assignment lists, the filter bar's model, the table
// model with its selection, the sort and the column layout, and the window refresh. Everything here
// runs without a window; the main window draws it and forwards its events.
//
//   allAssignments       every record of the store, kept in the sort order
//   filteredAssignments  those that pass the view and course chosen in the filter bar
//   displayAssignments   those that also match the search: the table's rows
//
// The lists share their records. Every change made through the list refilters, sorts and saves.
class Controller : public QObject
{
    Q_OBJECT
public:
    enum class SearchSender { None, SearchField };

    explicit Controller(QObject *parent = nullptr);
    // A store file elsewhere than the data folder (the benchmarks).
    Controller(const QString &assignmentsPath, const QString &coursesPath, QObject *parent = nullptr);
    ~Controller() override;

    void setToolbar(ToolbarState *toolbar) { m_toolbar = toolbar; }
    void setCalendar(CalendarObserver *calendar) { m_calendar = calendar; }
    void setSidebar(SidebarEditor *sidebar) { m_sidebar = sidebar; }
    ToolbarState *toolbar() const { return m_toolbar; }
    CalendarObserver *calendar() const { return m_calendar; }
    SidebarEditor *sidebar() const { return m_sidebar; }
    // Asks the sidebar to hand over an edit still in progress. Every action that changes the
    // selection, filters, reloads or saves runs this first, so typing is never lost to it.
    void commitPendingEdit();
    // Holds commits off without committing: for an edit that is itself the pending one (a cell of
    // the subprojects table).
    [[nodiscard]] auto holdPendingEdit()
    {
        return qScopeGuard([this, outer = std::exchange(m_committing, true)] { m_committing = outer; });
    }
    // The start of an action: commits the pending edit once, then holds further commits off until
    // the returned guard goes, so the action's own reselections and reloads hand nothing over.
    [[nodiscard]] auto beginAction()
    {
        commitPendingEdit();
        return holdPendingEdit();
    }

    // Start-up: reads "Sort Selectors", builds the filter bar and sets its view from
    // "Default View" (+1, where 3 wraps to 0), then loads the store.
    void setUp();

    // --- the lists -------------------------------------------------------------------------------
    const AssignmentList &allAssignments() const { return m_all; }
    const AssignmentList &filteredAssignments() const { return m_filtered; }
    const AssignmentList &displayAssignments() const { return m_display; }
    const QVariantList &coursesAndTextbooks() const { return m_courses.records(); }
    bool isStoreUsable() const { return m_storeUsable; }
    // Replaces the whole store in memory (for loading and the tests), then filters and sorts.
    void setAllAssignments(const AssignmentList &records);

    // --- the display pipeline --------------------------------------------------------------------
    // A missing title means the filter bar's current choice in that segment.
    void filterWithViews(const std::optional<QString> &view = std::nullopt,
                         const std::optional<QString> &course = std::nullopt);
    void searchAssignments(SearchSender sender = SearchSender::None);
    // A scope menu item was chosen: "All" clears the placeholder, any other title becomes it in
    // lower case. The list changes only with the next keystroke.
    void setSearchSpecifications(const QString &menuItemTitle);
    // Every filter-bar button's action.
    void selectNewItem();
    // A text field changed; only the toolbar's search field searches.
    void controlTextDidChange(bool fromSearchField);
    void updateFilterBar();
    FilterBarModel &filterBar() { return m_filterBar; }

    AssignmentRef actualSelectedObject() const;
    AssignmentList subprojectsForProject(const QString &projectIdentifier) const;
    qsizetype findIndexOfProjectForSubproject(const QString &projectIdentifier) const;
    // The first project with that identifier, or none.
    AssignmentRef projectFor(const QString &projectIdentifier) const;
    std::optional<QString> getSubprojectDisplayName(const Assignment &subproject) const;

    // The subprojects table: the subprojects of the selected record's project; none without a
    // selection.
    AssignmentList subprojectRows() const;

    // --- table and selection ---------------------------------------------------------------------
    AssignmentTableModel *tableModel() const { return m_table; }
    QItemSelectionModel *selectionModel() const { return m_selection; }
    QList<int> selectedRows() const;
    // The row of the only selected row, or -1 with none or several.
    int singleSelectedRow() const;
    void selectRowAlone(int row);
    void selectRows(const QList<int> &rows);
    void clearSelection();

    // --- sorting and columns ---------------------------------------------------------------------
    // Sorts by the given column (a second time on the stored column reverses), or with none
    // re-applies the stored sort.
    void sortColumn(const std::optional<QString> &column = std::nullopt);
    // A click on a header: image columns do nothing; any other sorts and sets didJustSort.
    void didClickTableColumn(const QString &identifier);
    bool didJustSort() const { return m_didJustSort; }
    void clearDidJustSort() { m_didJustSort = false; }
    // The order the list is in: the column the header shows its arrow in, and the direction.
    Sorting::Order sortIndicator() const { return m_sortIndicator; }
    QStringList sortingSelectors() const { return m_sortingSelectors; }
    // The widget resized or dragged a column; both save the whole layout.
    void columnDidResize(int column, double width);
    void columnDidMove(int from, int to);
    // Rebuilds the shown columns from "Preferences - User Columns Ordering", then sorts.
    void rebuildColumns();

    // --- store and refresh -----------------------------------------------------------------------
    void saveData();
    // The refresh run when the main window becomes key: reload what changed on disk, repair
    // priorities, filter, columns, sort, filter bar, labels.
    void updateWindowInformation();
    // "Preferences - Personal Info" values in lower case, those that are not empty.
    static QStringList personalInformation();
    // A preference was written (by this or any other window): redraws what it decides, without
    // reloading the store. Connected to the preferences' change signal.
    void preferenceChanged(const QString &group, const QString &key);

    Editing &editing() { return *m_editing; }
    SidebarEditing &sidebarEditing() { return *m_sidebarEditing; }

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
    friend class Editing;
    friend class SidebarEditing;

    void construct();
    void allChanged();
    void reloadTable();
    void onSelectionChanged();
    void updateCalendar();
    QString searchText() const;
    QString searchScope() const;
    bool loadStore();
    Sorting::Order storedOrder();
    void applyOrder(const Sorting::Order &order);
    void rememberSelection(QList<AssignmentRef> &records) const;
    void reselectEqual(const QList<AssignmentRef> &records);

    AssignmentStore m_store;
    bool m_storeUsable = true;
    bool m_loadedOnce = false;
    AssignmentList m_all;
    AssignmentList m_filtered;
    AssignmentList m_display;
    DisplayPipeline m_pipeline;
    CoursesFile m_courses;

    FilterBarModel m_filterBar;
    bool m_rebuildingFilterBar = false;
    bool m_filterRequestedDuringRebuild = false;

    AssignmentTableModel *m_table = nullptr;
    QItemSelectionModel *m_selection = nullptr;

    ColumnLayout m_layout;
    Sorting::Order m_sortIndicator{QStringLiteral("Date"), true};
    // The orders allAssignments, filteredAssignments and displayAssignments are known to be in.
    std::optional<Sorting::Order> m_appliedOrder;
    // The sort keys of allAssignments and of displayAssignments, kept between sorts.
    Sorting::KeyCache m_allKeys;
    Sorting::KeyCache m_displayKeys;
    std::optional<Sorting::Order> m_filteredOrder;
    std::optional<Sorting::Order> m_displayOrder;
    std::pair<QString, QString> m_lastSearch;
    bool m_didJustSort = false;
    bool m_committing = false;
    QStringList m_sortingSelectors;

    mutable std::optional<QHash<QString, qsizetype>> m_projectIndex;

    ToolbarState *m_toolbar = nullptr;
    CalendarObserver *m_calendar = nullptr;
    SidebarEditor *m_sidebar = nullptr;
    std::unique_ptr<Editing> m_editing;
    std::unique_ptr<SidebarEditing> m_sidebarEditing;
};
