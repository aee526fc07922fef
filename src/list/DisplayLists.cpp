#include "list/DisplayLists.h"

#include "list/AssignmentTableModel.h"
#include "list/CalendarObserver.h"
#include "list/CellPresentation.h"
#include "list/ColumnCatalogue.h"
#include "list/ColumnLayout.h"
#include "list/CoursesFile.h"
#include "list/ListTexts.h"
#include "list/PendingEdit.h"
#include "list/TableSelection.h"
#include "list/ToolbarState.h"
#include "platform/UserDefaults.h"
#include "store/GeneralSettings.h"
#include "store/PreferenceKeys.h"

DisplayLists::DisplayLists(AssignmentTableModel *table, PendingEdit &pendingEdit, CoursesFile &courses,
                           const ColumnLayout &layout)
    : m_table(table)
    , m_pendingEdit(pendingEdit)
    , m_courses(courses)
    , m_layout(layout)
{
}

// --- changing allAssignments ---------------------------------------------------------------------

void DisplayLists::replaceAll(AssignmentList records)
{
    m_all = std::move(records);
    allChanged();
}

void DisplayLists::append(const AssignmentRef &record)
{
    m_all.append(record);
    allChanged();
}

void DisplayLists::replace(qsizetype index, const AssignmentRef &record)
{
    m_all[index] = record;
    allChanged();
}

void DisplayLists::allChanged()
{
    m_projectIndex.reset();
    m_appliedOrder.reset();
}

// --- the display pipeline ------------------------------------------------------------------------

void DisplayLists::filterWithViews(const std::optional<QString> &view, const std::optional<QString> &course)
{
    const QString viewTitle = view ? *view : m_filterBar.getSelectedTitleInSegment(0);
    const QString courseTitle = course ? *course : m_filterBar.getSelectedTitleInSegment(1);

    AssignmentRef kept;
    if (const int row = m_selection->singleSelectedRow(); row >= 0)
        kept = Assignments::copy(m_display[row]);

    m_filtered = DisplayPipeline::filter(m_all, viewTitle, courseTitle);
    m_lastFilter = {viewTitle, courseTitle};
    m_filteredOrder = m_appliedOrder;
    searchAssignments(SearchSender::None);

    if (kept) {
        // Every equal row is selected alone in turn, so the last of them ends selected.
        for (qsizetype row = m_display.size() - 1; row >= 0; --row)
            if (*m_display[row] == *kept) {
                m_selection->selectRowAlone(int(row));
                break;
            }
    }
}

QString DisplayLists::searchText() const
{
    if (!m_toolbar || !m_toolbar->isSearchItemVisible())
        return QString();
    return m_toolbar->searchText().toLower();
}

QString DisplayLists::searchScope() const
{
    return m_toolbar ? m_toolbar->searchPlaceholder() : QString();
}

void DisplayLists::searchAssignments(SearchSender sender)
{
    AssignmentRef remembered;
    if (const int row = m_selection->singleSelectedRow(); row >= 0)
        remembered = m_display[row];

    const QString text = searchText();
    const QString scope = text.isEmpty() ? QString() : searchScope();
    m_display = m_pipeline.search(m_filtered, text, scope);
    m_displayOrder = m_filteredOrder;
    m_lastSearch = {text, scope};
    reloadTable();
    updateCalendar();

    if (remembered && sender == SearchSender::SearchField) {
        const qsizetype row = Assignments::indexOfEqual(m_display, *remembered);
        if (row >= 0)
            m_selection->selectRowAlone(int(row));
    }
}

void DisplayLists::setSearchSpecifications(const QString &menuItemTitle)
{
    if (!m_toolbar)
        return;
    m_toolbar->setSearchPlaceholder(menuItemTitle == ListTexts::All ? QString("") : menuItemTitle.toLower());
}

void DisplayLists::selectNewItem()
{
    if (m_rebuildingFilterBar) {
        m_filterRequestedDuringRebuild = true;
        return;
    }
    const auto action = m_pendingEdit.beginAction();
    filterWithViews(m_filterBar.getSelectedTitleInSegment(0), m_filterBar.getSelectedTitleInSegment(1));
}

void DisplayLists::controlTextDidChange(bool fromSearchField)
{
    if (fromSearchField)
        searchAssignments(SearchSender::SearchField);
}

void DisplayLists::updateFilterBar()
{
    const int view = m_filterBar.getSelectedIndexInSegment(0);
    const int course = m_filterBar.getSelectedIndexInSegment(1);

    // Re-selecting the kept positions sends the buttons' action; while the bar is rebuilt those
    // filter runs are folded into one at the end.
    m_rebuildingFilterBar = true;
    m_filterRequestedDuringRebuild = false;
    m_filterBar.removeAllItems();
    const auto action = [this] { selectNewItem(); };
    m_filterBar.addItemsWithTitles(
        {ListTexts::All, ListTexts::Incomplete, ListTexts::Complete, ListTexts::Divider, ListTexts::All}, action);
    m_courses.refresh();
    const QStringList courses = CoursesFile::courseNames(m_courses.records());
    if (!courses.isEmpty())
        m_filterBar.addItemsWithTitles(courses, action);
    m_filterBar.selectIndexInSegment(view, 0);
    m_filterBar.selectIndexInSegment(course, 1);
    m_rebuildingFilterBar = false;
    if (m_filterRequestedDuringRebuild) {
        m_filterRequestedDuringRebuild = false;
        selectNewItem();
    }
}

void DisplayLists::reloadTable()
{
    m_selection->reloadTable();
}

void DisplayLists::updateCalendar()
{
    if (m_calendar)
        m_calendar->updateCalendar();
}

AssignmentRef DisplayLists::actualSelectedObject() const
{
    const QList<int> rows = m_selection->selectedRows();
    if (rows.isEmpty())
        return nullptr;
    const AssignmentRef record = m_display.value(rows.last());
    if (!record || !record->isSubproject())
        return record;
    return projectFor(record->string(AssignmentField::Subproject));
}

AssignmentList DisplayLists::subprojectsForProject(const QString &projectIdentifier) const
{
    AssignmentList subprojects;
    for (const AssignmentRef &record : m_all) {
        if (record->has(AssignmentField::Subproject)
            && record->value(AssignmentField::Subproject).toString() == projectIdentifier)
            subprojects.append(record);
    }
    return subprojects;
}

qsizetype DisplayLists::findIndexOfProjectForSubproject(const QString &projectIdentifier) const
{
    // The index of first projects is dropped whenever the list changes; the check below also
    // catches a record whose identifier changed in place.
    if (m_projectIndex) {
        const qsizetype index = m_projectIndex->value(projectIdentifier, -1);
        if (index < 0)
            return -1;
        if (index < m_all.size() && m_all[index]->string(AssignmentField::Project) == projectIdentifier)
            return index;
    }
    QHash<QString, qsizetype> projects;
    for (qsizetype i = 0; i < m_all.size(); ++i) {
        const Assignment &record = *m_all[i];
        if (!record.has(AssignmentField::Project))
            continue;
        const QString identifier = record.value(AssignmentField::Project).toString();
        if (!projects.contains(identifier))
            projects.insert(identifier, i);
    }
    m_projectIndex = std::move(projects);
    return m_projectIndex->value(projectIdentifier, -1);
}

AssignmentRef DisplayLists::projectFor(const QString &projectIdentifier) const
{
    const qsizetype index = findIndexOfProjectForSubproject(projectIdentifier);
    return index < 0 ? nullptr : m_all[index];
}

std::optional<QString> DisplayLists::getSubprojectDisplayName(const Assignment &subproject) const
{
    const AssignmentRef project = projectFor(subproject.string(AssignmentField::Subproject));
    if (!project)
        return std::nullopt;
    return CellPresentation::subprojectTitle(GeneralSettings::storedSubprojectTitleFormat(),
                                             project->string(AssignmentField::Name),
                                             subproject.string(AssignmentField::Name));
}

AssignmentList DisplayLists::subprojectRows() const
{
    if (m_selection->selectedRows().isEmpty())
        return {};
    const AssignmentRef target = actualSelectedObject();
    if (!target)
        return {};
    return subprojectsForProject(target->string(AssignmentField::Project));
}

// --- sorting -------------------------------------------------------------------------------------

Sorting::Order DisplayLists::storedOrder()
{
    using namespace PreferenceKeys;
    UserDefaults defaults;
    if (!defaults.contains(SortColumn) || !defaults.contains(SortDirection))
        defaults.setMany({{SortColumn, ColumnCatalogue::Date}, {SortDirection, Ascending}});
    return {defaults.string(SortColumn), defaults.string(SortDirection) != Descending};
}

void DisplayLists::sortColumn(const std::optional<QString> &column)
{
    AssignmentRef remembered;
    if (const int row = m_selection->singleSelectedRow(); row >= 0)
        remembered = m_display[row];

    const Sorting::Order stored = storedOrder();
    Sorting::Order order;
    bool shown = true;
    if (column) {
        order = {*column, *column == stored.column ? !stored.ascending : true};
    } else if (m_layout.indexOf(stored.column) >= 0) {
        order = stored;
    } else {
        // The stored column is hidden: sort by due date and name, and keep the stored keys.
        order = {ColumnCatalogue::Date, true};
        shown = false;
    }

    applyOrder(order);
    if (shown) {
        m_sortIndicator = order;
        // Written only when it changed: every store change sorts again, and a write costs a sync.
        if (order != stored)
            UserDefaults().setMany({{PreferenceKeys::SortColumn, order.column},
                                    {PreferenceKeys::SortDirection,
                                     order.ascending ? PreferenceKeys::Ascending : PreferenceKeys::Descending}});
    } else {
        m_sortIndicator = {QString(), true};
    }
    Q_EMIT m_table->headerDataChanged(Qt::Horizontal, 0, std::max(0, m_table->columnCount() - 1));

    reloadTable();
    if (remembered) {
        const qsizetype row = Assignments::indexOfEqual(m_display, *remembered);
        if (row >= 0)
            m_selection->selectRowAlone(int(row));
    }
}

void DisplayLists::applyOrder(const Sorting::Order &order)
{
    // With no filter or search narrowing the list the two lists hold the same records in the same
    // order: one sort serves both.
    const bool same = m_display.size() == m_all.size() && std::equal(m_display.cbegin(), m_display.cend(), m_all.cbegin());
    Sorting::sort(m_all, order, &m_allKeys);
    if (same)
        m_display = m_all;
    else
        Sorting::sort(m_display, order, &m_displayKeys);
    allChanged();
    m_appliedOrder = order;
    m_displayOrder = order;
}

void DisplayLists::didClickTableColumn(const QString &identifier)
{
    if (ColumnCatalogue::isImageColumn(identifier) || !ColumnCatalogue::find(identifier))
        return;
    const auto action = m_pendingEdit.beginAction();
    sortColumn(identifier);
    m_didJustSort = true;
}

bool DisplayLists::isCurrent() const
{
    const Sorting::Order wanted = m_layout.indexOf(storedOrder().column) >= 0
        ? storedOrder()
        : Sorting::Order{ColumnCatalogue::Date, true};
    const bool sorted = m_appliedOrder && *m_appliedOrder == wanted && m_displayOrder == m_appliedOrder;
    const QString text = searchText();
    const bool searchSame = m_lastSearch == std::make_pair(text, text.isEmpty() ? QString() : searchScope());
    return sorted && searchSame;
}
