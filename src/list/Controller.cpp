#include "list/Controller.h"

#include "list/AssignmentTableModel.h"
#include "list/Editing.h"
#include "list/ListLog.h"
#include "list/SidebarEditing.h"
#include "platform/Paths.h"
#include "platform/PreferencesNotifier.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

Controller::Controller(QObject *parent)
    : QObject(parent)
    , m_document(AssignmentsDocument::open())
    , m_history([this] { return m_document->records(); })
    , m_table(new AssignmentTableModel(this))
    , m_lists(m_table, m_pendingEdit, m_courses, m_layout)
{
    construct();
}

Controller::Controller(const QString &assignmentsPath, const QString &coursesPath, QObject *parent)
    : QObject(parent)
    , m_document(AssignmentsDocument::open(assignmentsPath))
    , m_history([this] { return m_document->records(); })
    , m_courses(coursesPath)
    , m_table(new AssignmentTableModel(this))
    , m_lists(m_table, m_pendingEdit, m_courses, m_layout)
{
    construct();
}

Controller::Controller(std::shared_ptr<AssignmentsDocument> document, const QString &coursesPath, QObject *parent)
    : QObject(parent)
    , m_document(std::move(document))
    , m_history([this] { return m_document->records(); })
    , m_courses(coursesPath)
    , m_table(new AssignmentTableModel(this))
    , m_lists(m_table, m_pendingEdit, m_courses, m_layout)
{
    construct();
}

Controller::~Controller() = default;

void Controller::construct()
{
    m_layout = ColumnLayout::initial();
    m_table->setLayout(m_layout);
    m_selection = new TableSelection(m_table, m_lists.display(), m_pendingEdit, this);
    m_lists.setSelection(m_selection);
    m_table->setProjectLookup([this](const QString &identifier) { return m_lists.projectFor(identifier); });
    m_editing = std::make_unique<Editing>(*this);
    m_sidebarEditing = std::make_unique<SidebarEditing>(*this);
    connect(m_table, &AssignmentTableModel::completedToggled, this,
            [this](int row) { m_editing->markAssignmentAsCompleted(row); });
    connect(m_selection, &TableSelection::changed, this, &Controller::onSelectionChanged);
    connect(UserDefaults::notifier(), &PreferencesNotifier::changed, this, &Controller::preferenceChanged);
    connectDocument();
    connectCourses();
}

void Controller::setAllAssignments(const AssignmentList &records)
{
    m_lists.replaceAll(records);
    m_lists.filterWithViews();
    m_lists.sortColumn();
}

void Controller::onSelectionChanged()
{
    m_lists.clearDidJustSort();
    m_sidebarEditing->tableViewSelectionDidChange();
    Q_EMIT selectionDidChange();
}

void Controller::headersChanged()
{
    Q_EMIT m_table->headerDataChanged(Qt::Horizontal, 0, std::max(0, m_table->columnCount() - 1));
}

// --- store and refresh ---------------------------------------------------------------------------

bool Controller::saveData()
{
    if (!m_document->isUsable()) {
        qCWarning(lcList) << "the store could not be read; not writing over" << m_document->path();
        return false;
    }
    const bool saved = m_document->setAll(m_lists.all(), this);
    if (saved && !m_quietSave)
        m_history.saved();
    return saved;
}

bool Controller::applyHistory(bool undo)
{
    const auto action = m_pendingEdit.beginAction();
    if (!m_document->isUsable())
        return false;
    const std::optional<HistoryRecorder::Applied> applied
        = undo ? m_history.undo(m_document->records()) : m_history.redo(m_document->records());
    if (!applied)
        return false;
    // The history follows the document, in the file's order: the records go back where the step
    // saw them saved, so the file is the one it was; the list sorts them for showing afterwards.
    m_lists.replaceAll(applied->list);
    m_quietSave = true;
    saveData();
    m_quietSave = false;
    // What was saved is the history's new starting point.
    m_history.reloaded();
    m_lists.filterWithViews();
    m_lists.sortColumn();
    m_selection->clear();
    Q_EMIT sidebarNoSelection();
    m_lists.reloadTable();
    QList<int> rows;
    for (const AssignmentRef &record : applied->restored)
        if (const qsizetype row = m_lists.display().indexOf(record); row >= 0)
            rows.append(int(row));
    if (!rows.isEmpty())
        m_selection->selectRows(rows);
    m_lists.updateCalendar();
    Q_EMIT subprojectsChanged();
    return true;
}

bool Controller::loadStore(bool rebaseHistory)
{
    m_loadedOnce = true;
    const AssignmentList &records = m_document->records();
    knowDocument();
    if (!m_document->isUsable()) {
        qCWarning(lcList) << "cannot read" << m_document->path();
        m_lists.replaceAll({});
        return false;
    }
    m_lists.replaceAll(records);
    if (rebaseHistory)
        m_history.reloaded();
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

// --- columns -------------------------------------------------------------------------------------

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
    m_lists.clearDidJustSort();
    m_lists.sortColumn();
}

void Controller::updateWindowInformation()
{
    const auto action = m_pendingEdit.beginAction();
    const QList<AssignmentRef> remembered = m_selection->rememberEqual();

    // Nothing on disk changed since this program last read or wrote it, and neither did the
    // layout, the sort or the search: the lists are already what a reload would make of them.
    m_refreshing = true;
    const bool storeChanged = m_document->refresh() || !m_loadedOnce;
    m_refreshing = false;
    const bool coursesChanged = m_courses.refresh();
    const std::optional<ColumnLayout> layout = ColumnLayout::load();
    const bool layoutChanged = layout && *layout != m_layout;
    const bool current = m_lists.isCurrent();
    if (storeChanged || coursesChanged || layoutChanged || !current) {
        if (storeChanged)
            loadStore();
        m_lists.filterWithViews();
        rebuildColumns();
        m_lists.updateFilterBar();
        m_lists.filterWithViews();
        m_selection->reselectEqual(remembered);
    }
    headersChanged();
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
        headersChanged();
        Q_EMIT labelsChanged();
        return;
    }
    if (group.isEmpty() && (key == UserColumns || key == UserColumnsOrdering)) {
        // The columns pane changed the shown columns. This controller saves the layout itself on
        // every resize and move; what it wrote is what it shows, and is left alone.
        const std::optional<ColumnLayout> layout = ColumnLayout::load();
        if (layout && *layout != m_layout) {
            const auto action = m_pendingEdit.beginAction();
            rebuildColumns();
        }
    }
}
