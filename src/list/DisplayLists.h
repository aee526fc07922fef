#pragma once

#include "list/DisplayPipeline.h"
#include "list/FilterBarModel.h"
#include "list/Sorting.h"
#include "store/Assignment.h"

#include <QHash>
#include <QString>

#include <optional>
#include <utility>

class AssignmentTableModel;
class CalendarObserver;
class ColumnLayout;
class CoursesFile;
class PendingEdit;
class TableSelection;
class ToolbarState;

// The three assignment lists and the display pipeline that derives them, which the controller
// drives:
//
//   allAssignments       every record of the store, kept in the sort order
//   filteredAssignments  those that pass the view and course chosen in the filter bar
//   displayAssignments   those that also match the search: the table's rows
//
// The lists share their records. The filter bar's model, the search in the toolbar's field and the
// sort by a column of the layout live here; the table shows displayAssignments.
class DisplayLists
{
public:
    enum class SearchSender { None, SearchField };

    DisplayLists(AssignmentTableModel *table, PendingEdit &pendingEdit, CoursesFile &courses,
                 const ColumnLayout &layout);

    void setToolbar(ToolbarState *toolbar) { m_toolbar = toolbar; }
    void setCalendar(CalendarObserver *calendar) { m_calendar = calendar; }
    ToolbarState *toolbar() const { return m_toolbar; }
    CalendarObserver *calendar() const { return m_calendar; }
    // The table's selection, made over displayAssignments once the lists exist.
    void setSelection(TableSelection *selection) { m_selection = selection; }

    const AssignmentList &all() const { return m_all; }
    const AssignmentList &filtered() const { return m_filtered; }
    const AssignmentList &display() const { return m_display; }

    // --- changing allAssignments -----------------------------------------------------------------
    // Each of these forgets what was known about the list's order and projects; the caller then
    // filters, sorts and saves as its action requires.
    void replaceAll(AssignmentList records);
    void append(const AssignmentRef &record);
    void replace(qsizetype index, const AssignmentRef &record);
    // Records of allAssignments were changed in place.
    void allChanged();

    // --- precise updates -------------------------------------------------------------------------
    // Whether the lists stand as a filter, search and sort run would leave them now, so that a few
    // records that came, went or changed can be put in place without running the pipeline again.
    bool canUpdateRows() const;
    // One record that went (`gone`), came (`came`), or both (a record replaced by its edit).
    struct RowChange {
        AssignmentRef gone;
        AssignmentRef came;
    };
    // Takes the records that went out of the lists and puts those that came at their sorted places
    // when they pass the filter and the search; records that sort equal stand in `fileOrder`'s order,
    // as the stable sort of a reload leaves them. The table hears of each row that came, went,
    // moved or changed. Only when canUpdateRows().
    void updateRows(const QList<RowChange> &changes, const AssignmentList &fileOrder);

    // --- the display pipeline --------------------------------------------------------------------
    // A missing title means the filter bar's current choice in that segment.
    void filterWithViews(const std::optional<QString> &view = std::nullopt,
                         const std::optional<QString> &course = std::nullopt);
    void searchAssignments(SearchSender sender = SearchSender::None);
    void setSearchSpecifications(const QString &menuItemTitle);
    void selectNewItem();
    void controlTextDidChange(bool fromSearchField);
    void updateFilterBar();
    FilterBarModel &filterBar() { return m_filterBar; }
    void reloadTable();
    void updateCalendar();

    AssignmentRef actualSelectedObject() const;
    AssignmentList subprojectsForProject(const QString &projectIdentifier) const;
    qsizetype findIndexOfProjectForSubproject(const QString &projectIdentifier) const;
    AssignmentRef projectFor(const QString &projectIdentifier) const;
    std::optional<QString> getSubprojectDisplayName(const Assignment &subproject) const;
    AssignmentList subprojectRows() const;

    // --- sorting ---------------------------------------------------------------------------------
    void sortColumn(const std::optional<QString> &column = std::nullopt);
    void didClickTableColumn(const QString &identifier);
    bool didJustSort() const { return m_didJustSort; }
    void clearDidJustSort() { m_didJustSort = false; }
    Sorting::Order sortIndicator() const { return m_sortIndicator; }
    // The stored sort ("Sort Column", "Sort Direction"), written with by-date ascending when absent.
    static Sorting::Order storedOrder();

    // Whether the lists are what a filter, sort and search run would make of them now: sorted by
    // the order the stored one stands for with this layout, and searched for the field's text.
    bool isCurrent() const;

private:
    QString searchText() const;
    QString searchScope() const;
    void applyOrder(const Sorting::Order &order);
    qsizetype sortedPosition(const AssignmentList &list, const AssignmentRef &record,
                             const AssignmentList &fileOrder) const;

    AssignmentTableModel *m_table;
    PendingEdit &m_pendingEdit;
    CoursesFile &m_courses;
    const ColumnLayout &m_layout;
    TableSelection *m_selection = nullptr;
    ToolbarState *m_toolbar = nullptr;
    CalendarObserver *m_calendar = nullptr;

    AssignmentList m_all;
    AssignmentList m_filtered;
    AssignmentList m_display;
    DisplayPipeline m_pipeline;

    FilterBarModel m_filterBar;
    bool m_rebuildingFilterBar = false;
    bool m_filterRequestedDuringRebuild = false;

    Sorting::Order m_sortIndicator{fieldKey(AssignmentField::Date), true};
    // The orders allAssignments, filteredAssignments and displayAssignments are known to be in.
    std::optional<Sorting::Order> m_appliedOrder;
    // The sort keys of allAssignments and of displayAssignments, kept between sorts.
    Sorting::KeyCache m_allKeys;
    Sorting::KeyCache m_displayKeys;
    std::optional<Sorting::Order> m_filteredOrder;
    std::optional<Sorting::Order> m_displayOrder;
    std::pair<QString, QString> m_lastSearch;
    // The view and course of the last filter run.
    std::pair<QString, QString> m_lastFilter;
    bool m_didJustSort = false;

    mutable std::optional<QHash<QString, qsizetype>> m_projectIndex;
};
