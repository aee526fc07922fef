#include "list/Controller.h"

#include "list/AssignmentTableModel.h"
#include "list/CalendarObserver.h"
#include "list/CellPresentation.h"
#include "list/ColumnCatalogue.h"
#include "list/Editing.h"
#include "list/ListLog.h"
#include "list/ListTexts.h"
#include "list/SidebarEditing.h"
#include "list/ToolbarState.h"
#include "platform/Paths.h"
#include "platform/PreferencesNotifier.h"
#include "platform/UserDefaults.h"
#include "store/GeneralSettings.h"
#include "store/PreferenceKeys.h"

#include <QItemSelectionModel>

Controller::Controller(QObject *parent)
    : QObject(parent)
    , m_store(Paths::assignmentsFile())
{
    construct();
}

Controller::Controller(const QString &assignmentsPath, const QString &coursesPath, QObject *parent)
    : QObject(parent)
    , m_store(assignmentsPath)
    , m_courses(coursesPath)
{
    construct();
}

Controller::~Controller() = default;

void Controller::construct()
{
    m_layout = ColumnLayout::initial();
    m_table = new AssignmentTableModel(this);
    m_table->setLayout(m_layout);
    m_selection = new QItemSelectionModel(m_table, this);
    m_table->setSelectionModel(m_selection);
    m_table->setProjectLookup([this](const QString &identifier) { return projectFor(identifier); });
    m_editing = std::make_unique<Editing>(*this);
    m_sidebarEditing = std::make_unique<SidebarEditing>(*this);
    connect(m_table, &AssignmentTableModel::completedToggled, this,
            [this](int row) { m_editing->markAssignmentAsCompleted(row); });
    connect(m_selection, &QItemSelectionModel::selectionChanged, this, &Controller::onSelectionChanged);
    connect(UserDefaults::notifier(), &PreferencesNotifier::changed, this, &Controller::preferenceChanged);
}

void Controller::setUp()
{
    const QVariant selectors = UserDefaults().object(PreferenceKeys::SortSelectors);
    if (selectors.typeId() == QMetaType::QVariantList)
        m_sortingSelectors = selectors.toStringList();
    else
        m_sortingSelectors = {ColumnCatalogue::Date, ColumnCatalogue::Name, ColumnCatalogue::Course,
                              ColumnCatalogue::Textbook};

    updateFilterBar();
    const qint64 defaultView = UserDefaults().groupValue(PreferenceKeys::General,
                                                         PreferenceKeys::GeneralKeys::DefaultView).toLongLong();
    const qint64 index = defaultView + 1 == 3 ? 0 : defaultView + 1;
    m_filterBar.selectIndexInSegment(int(index), 0);
    updateWindowInformation();
}

void Controller::commitPendingEdit()
{
    // The edit itself filters, sorts and reselects through the calls that ask for it; it must not
    // ask again.
    if (!m_sidebar || m_committing)
        return;
    m_committing = true;
    m_sidebar->commitPendingEdit();
    m_committing = false;
}

void Controller::setAllAssignments(const AssignmentList &records)
{
    m_all = records;
    m_storeUsable = true;
    allChanged();
    filterWithViews();
    sortColumn();
}

void Controller::allChanged()
{
    m_projectIndex.reset();
    m_appliedOrder.reset();
}

// --- the display pipeline ------------------------------------------------------------------------

void Controller::filterWithViews(const std::optional<QString> &view, const std::optional<QString> &course)
{
    const QString viewTitle = view ? *view : m_filterBar.getSelectedTitleInSegment(0);
    const QString courseTitle = course ? *course : m_filterBar.getSelectedTitleInSegment(1);

    AssignmentRef kept;
    if (const int row = singleSelectedRow(); row >= 0)
        kept = Assignments::copy(m_display[row]);

    m_filtered = DisplayPipeline::filter(m_all, viewTitle, courseTitle);
    m_filteredOrder = m_appliedOrder;
    searchAssignments(SearchSender::None);

    if (kept) {
        // Every equal row is selected alone in turn, so the last of them ends selected.
        for (qsizetype row = m_display.size() - 1; row >= 0; --row)
            if (*m_display[row] == *kept) {
                selectRowAlone(int(row));
                break;
            }
    }
}

QString Controller::searchText() const
{
    if (!m_toolbar || !m_toolbar->isSearchItemVisible())
        return QString();
    return m_toolbar->searchText().toLower();
}

QString Controller::searchScope() const
{
    return m_toolbar ? m_toolbar->searchPlaceholder() : QString();
}

void Controller::searchAssignments(SearchSender sender)
{
    AssignmentRef remembered;
    if (const int row = singleSelectedRow(); row >= 0)
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
            selectRowAlone(int(row));
    }
}

void Controller::setSearchSpecifications(const QString &menuItemTitle)
{
    if (!m_toolbar)
        return;
    m_toolbar->setSearchPlaceholder(menuItemTitle == ListTexts::All ? QString("") : menuItemTitle.toLower());
}

void Controller::selectNewItem()
{
    if (m_rebuildingFilterBar) {
        m_filterRequestedDuringRebuild = true;
        return;
    }
    const auto action = beginAction();
    filterWithViews(m_filterBar.getSelectedTitleInSegment(0), m_filterBar.getSelectedTitleInSegment(1));
}

void Controller::controlTextDidChange(bool fromSearchField)
{
    if (fromSearchField)
        searchAssignments(SearchSender::SearchField);
}

void Controller::updateFilterBar()
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

AssignmentRef Controller::actualSelectedObject() const
{
    const QList<int> rows = selectedRows();
    if (rows.isEmpty())
        return nullptr;
    const AssignmentRef record = m_display.value(rows.last());
    if (!record || !record->isSubproject())
        return record;
    return projectFor(record->string(AssignmentKeys::Subproject));
}

AssignmentList Controller::subprojectsForProject(const QString &projectIdentifier) const
{
    AssignmentList subprojects;
    for (const AssignmentRef &record : m_all) {
        const auto it = record->fields().constFind(AssignmentKeys::Subproject);
        if (it != record->fields().constEnd() && it->toString() == projectIdentifier)
            subprojects.append(record);
    }
    return subprojects;
}

qsizetype Controller::findIndexOfProjectForSubproject(const QString &projectIdentifier) const
{
    // The index of first projects is dropped whenever the list changes; the check below also
    // catches a record whose identifier changed in place.
    if (m_projectIndex) {
        const qsizetype index = m_projectIndex->value(projectIdentifier, -1);
        if (index < 0)
            return -1;
        if (index < m_all.size() && m_all[index]->string(AssignmentKeys::Project) == projectIdentifier)
            return index;
    }
    QHash<QString, qsizetype> projects;
    for (qsizetype i = 0; i < m_all.size(); ++i) {
        const auto it = m_all[i]->fields().constFind(AssignmentKeys::Project);
        if (it != m_all[i]->fields().constEnd() && !projects.contains(it->toString()))
            projects.insert(it->toString(), i);
    }
    m_projectIndex = std::move(projects);
    return m_projectIndex->value(projectIdentifier, -1);
}

AssignmentRef Controller::projectFor(const QString &projectIdentifier) const
{
    const qsizetype index = findIndexOfProjectForSubproject(projectIdentifier);
    return index < 0 ? nullptr : m_all[index];
}

std::optional<QString> Controller::getSubprojectDisplayName(const Assignment &subproject) const
{
    const AssignmentRef project = projectFor(subproject.string(AssignmentKeys::Subproject));
    if (!project)
        return std::nullopt;
    return CellPresentation::subprojectTitle(GeneralSettings::storedSubprojectTitleFormat(),
                                             project->string(AssignmentKeys::Name),
                                             subproject.string(AssignmentKeys::Name));
}

AssignmentList Controller::subprojectRows() const
{
    if (selectedRows().isEmpty())
        return {};
    const AssignmentRef target = actualSelectedObject();
    if (!target)
        return {};
    return subprojectsForProject(target->string(AssignmentKeys::Project));
}

// --- table and selection -------------------------------------------------------------------------

QList<int> Controller::selectedRows() const
{
    QList<int> rows;
    for (const QModelIndex &index : m_selection->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

int Controller::singleSelectedRow() const
{
    const QModelIndexList rows = m_selection->selectedRows();
    return rows.size() == 1 ? rows.first().row() : -1;
}

void Controller::selectRowAlone(int row)
{
    // The pending edit may sort the rows again; the row asked for is found again by its record (the
    // edited record, replaced by the edit, stays selected).
    if (const AssignmentRef wanted = m_display.value(row); wanted && m_sidebar && !m_committing) {
        const int selected = singleSelectedRow();
        const bool wantedSelected = selected == row;
        commitPendingEdit();
        row = int(m_display.indexOf(wanted));
        if (row < 0 && wantedSelected)
            row = singleSelectedRow();
    }
    if (row < 0 || row >= m_table->rowCount() || m_table->columnCount() == 0)
        return;
    m_selection->select(m_table->index(row, 0), QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void Controller::selectRows(const QList<int> &requested)
{
    QList<int> rows = requested;
    if (m_sidebar && !m_committing) {
        AssignmentList wanted;
        for (int row : requested)
            if (const AssignmentRef record = m_display.value(row))
                wanted.append(record);
        commitPendingEdit();
        rows.clear();
        for (const AssignmentRef &record : std::as_const(wanted))
            if (const qsizetype row = m_display.indexOf(record); row >= 0)
                rows.append(int(row));
    }
    QItemSelection selection;
    for (int row : rows)
        if (row >= 0 && row < m_table->rowCount() && m_table->columnCount() > 0)
            selection.select(m_table->index(row, 0), m_table->index(row, m_table->columnCount() - 1));
    m_selection->select(selection, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void Controller::clearSelection()
{
    commitPendingEdit();
    m_selection->clearSelection();
}

void Controller::reloadTable()
{
    const bool hadSelection = m_selection->hasSelection();
    m_table->setRows(m_display);
    // A reset drops the selection without a signal; the sidebar must still hear of it.
    if (hadSelection)
        onSelectionChanged();
}

void Controller::onSelectionChanged()
{
    m_didJustSort = false;
    m_sidebarEditing->tableViewSelectionDidChange();
    Q_EMIT selectionDidChange();
}

void Controller::updateCalendar()
{
    if (m_calendar)
        m_calendar->updateCalendar();
}

void Controller::rememberSelection(QList<AssignmentRef> &records) const
{
    for (int row : selectedRows())
        records.append(Assignments::copy(m_display[row]));
}

void Controller::reselectEqual(const QList<AssignmentRef> &records)
{
    QList<int> rows;
    for (const AssignmentRef &record : records) {
        const qsizetype row = Assignments::indexOfEqual(m_display, *record);
        if (row >= 0)
            rows.append(int(row));
    }
    if (!rows.isEmpty())
        selectRows(rows);
}

// --- store and refresh ---------------------------------------------------------------------------

void Controller::saveData()
{
    if (!m_storeUsable) {
        qCWarning(lcList) << "the store could not be read; not writing over" << m_store.path();
        return;
    }
    m_store.save(m_all);
}

bool Controller::loadStore()
{
    QString error;
    std::optional<AssignmentList> records = m_store.load(&error);
    m_loadedOnce = true;
    if (!records) {
        qCWarning(lcList) << "cannot read" << m_store.path() << ":" << error;
        m_storeUsable = false;
        m_all.clear();
        allChanged();
        return false;
    }
    m_storeUsable = true;
    m_all = std::move(*records);
    allChanged();
    // The repair writes only when a record was missing its priority, so an unchanged file stays
    // unchanged and the next refresh can skip the reload.
    if (AssignmentStore::addPrioritiesToAssignmentsWithoutThem(m_all))
        saveData();
    return true;
}

QStringList Controller::personalInformation()
{
    using namespace PreferenceKeys;
    const QVariantMap info = UserDefaults().dictionary(PersonalInfo);
    QStringList shown;
    for (const QString &key : {PersonalInfoKeys::Name, PersonalInfoKeys::School, PersonalInfoKeys::StudentID}) {
        const QString value = info.value(key).toString();
        if (!value.isEmpty())
            shown.append(value.toLower());
    }
    return shown;
}

// --- sorting and columns -------------------------------------------------------------------------

Sorting::Order Controller::storedOrder()
{
    using namespace PreferenceKeys;
    UserDefaults defaults;
    if (!defaults.contains(SortColumn) || !defaults.contains(SortDirection))
        defaults.setMany({{SortColumn, ColumnCatalogue::Date}, {SortDirection, Ascending}});
    return {defaults.string(SortColumn), defaults.string(SortDirection) != Descending};
}

void Controller::sortColumn(const std::optional<QString> &column)
{
    AssignmentRef remembered;
    if (const int row = singleSelectedRow(); row >= 0)
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
            selectRowAlone(int(row));
    }
}

void Controller::applyOrder(const Sorting::Order &order)
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

void Controller::didClickTableColumn(const QString &identifier)
{
    if (ColumnCatalogue::isImageColumn(identifier) || !ColumnCatalogue::find(identifier))
        return;
    const auto action = beginAction();
    sortColumn(identifier);
    m_didJustSort = true;
}

void Controller::columnDidResize(int column, double width)
{
    if (column < 0 || column >= m_layout.count())
        return;
    m_layout.setWidth(column, width);
    m_table->setColumnWidth(column, m_layout.widthAt(column));
    m_layout.save();
}

void Controller::columnDidMove(int from, int to)
{
    if (from < 0 || from >= m_layout.count() || to < 0 || to >= m_layout.count())
        return;
    m_layout.move(from, to);
    m_table->moveColumnTo(from, to);
    m_layout.save();
}

void Controller::rebuildColumns()
{
    if (const std::optional<ColumnLayout> layout = ColumnLayout::load()) {
        m_layout = *layout;
        m_table->setLayout(m_layout);
    }
    m_didJustSort = false;
    sortColumn();
}

void Controller::updateWindowInformation()
{
    const auto action = beginAction();
    QList<AssignmentRef> remembered;
    rememberSelection(remembered);

    // Nothing on disk changed since this program last read or wrote it, and neither did the
    // layout, the sort or the search: the lists are already what a reload would make of them.
    const bool storeChanged = !m_loadedOnce || !m_storeUsable || !m_store.isUnchangedSinceLastAccess();
    const bool coursesChanged = m_courses.refresh();
    const std::optional<ColumnLayout> layout = ColumnLayout::load();
    const bool layoutChanged = layout && *layout != m_layout;
    const Sorting::Order wanted = m_layout.indexOf(storedOrder().column) >= 0
        ? storedOrder()
        : Sorting::Order{ColumnCatalogue::Date, true};
    const bool sorted = m_appliedOrder && *m_appliedOrder == wanted && m_displayOrder == m_appliedOrder;
    const QString text = searchText();
    const bool searchSame = m_lastSearch == std::make_pair(text, text.isEmpty() ? QString() : searchScope());
    if (storeChanged || coursesChanged || layoutChanged || !sorted || !searchSame) {
        if (storeChanged)
            loadStore();
        filterWithViews();
        rebuildColumns();
        updateFilterBar();
        filterWithViews();
        reselectEqual(remembered);
    }
    Q_EMIT m_table->headerDataChanged(Qt::Horizontal, 0, std::max(0, m_table->columnCount() - 1));
    Q_EMIT labelsChanged();
}

void Controller::preferenceChanged(const QString &group, const QString &key)
{
    using namespace PreferenceKeys;
    const bool presentation = group == Colors || (group.isEmpty() && key == ColorFormat)
        || (group == General
            && (key == GeneralKeys::DateFormat || key == GeneralKeys::DisplayDuplicateDates
                || key == GeneralKeys::AlternateRowColors || key == GeneralKeys::SubprojectTitleFormat
                || key.isEmpty()));
    if (presentation) {
        // The cells read the preferences as they are drawn; they only need drawing again.
        m_table->refreshPresentation();
        return;
    }
    if (group == Labels || group == PersonalInfo) {
        Q_EMIT m_table->headerDataChanged(Qt::Horizontal, 0, std::max(0, m_table->columnCount() - 1));
        Q_EMIT labelsChanged();
        return;
    }
    if (group.isEmpty() && (key == UserColumns || key == UserColumnsOrdering)) {
        // The columns pane changed the shown columns. This controller saves the layout itself on
        // every resize and move; what it wrote is what it shows, and is left alone.
        const std::optional<ColumnLayout> layout = ColumnLayout::load();
        if (layout && *layout != m_layout) {
            const auto action = beginAction();
            rebuildColumns();
        }
    }
}
