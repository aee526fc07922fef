// The controller's side of the shared document: the changes this list makes to one or a few
// records, and how the lists take in what the document says changed, wherever the change came from.
#include "list/Controller.h"

#include "list/AssignmentTableModel.h"
#include "list/CalendarObserver.h"
#include "list/ListLog.h"
#include "list/SidebarEditing.h"
#include "store/CoursesDocument.h"

#include <algorithm>

void Controller::connectDocument()
{
    AssignmentsDocument *document = m_document.get();
    connect(document, &AssignmentsDocument::reset, this, &Controller::documentReset);
    // A download or a backup import replaced everything: no step of the history fits the new
    // records, and the menu says why.
    connect(document, &AssignmentsDocument::replaced, this,
            [this](AssignmentsDocument::Replacement why) { m_history.clear(UndoNames::after(why)); });
    connect(document, &AssignmentsDocument::rowChanged, this,
            [this](qsizetype row, QObject *source) { documentRows(RowsChange::Changed, row, 1, source); });
    connect(document, &AssignmentsDocument::rowsInserted, this,
            [this](qsizetype first, qsizetype count, QObject *source) {
                documentRows(RowsChange::Inserted, first, count, source);
            });
    connect(document, &AssignmentsDocument::rowsRemoved, this,
            [this](qsizetype first, qsizetype count, QObject *source) {
                documentRows(RowsChange::Removed, first, count, source);
            });
}

void Controller::connectCourses()
{
    m_coursesDocument = CoursesFile::document(m_courses.path());
    CoursesDocument *document = m_coursesDocument.get();
    connect(document, &CoursesDocument::coursesChanged, this, &Controller::coursesChanged);
    connect(document, &CoursesDocument::reset, this, &Controller::coursesChanged);
}

void Controller::coursesChanged()
{
    // Taken in once the change in progress is over: a course added from this list's own sidebar
    // arrives in the middle of that edit.
    if (m_coursesQueued)
        return;
    m_coursesQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_coursesQueued = false;
            if (!m_loadedOnce || !m_courses.refresh())
                return;
            // The course buttons keep their positions, so the course chosen may be another now.
            const auto action = m_pendingEdit.beginAction();
            const QList<AssignmentRef> remembered = m_selection->rememberEqual();
            m_lists.updateFilterBar();
            m_lists.filterWithViews();
            m_selection->reselectEqual(remembered);
        },
        Qt::QueuedConnection);
}

void Controller::knowDocument()
{
    m_knownSize = m_document->records().size();
    m_seenChanges = m_document->changeCount();
}

// --- changes made here ---------------------------------------------------------------------------

bool Controller::replaceRecord(const AssignmentRef &record, const Assignment &original, const AssignmentRef &replacement)
{
    const qsizetype index = m_lists.all().indexOf(record);
    if (index >= 0 && !m_document->records().contains(record)) {
        // A record this list added and has not saved yet: it goes to the document in its edited form.
        m_lists.replace(index, replacement);
        return saveAdded(replacement);
    }
    const bool saved = m_document->replace(record, original, replacement, this);
    if (saved && !m_quietSave)
        m_history.saved();
    return saved;
}

bool Controller::replaceShown(AssignmentRef record, const AssignmentRef &replacement)
{
    // Both held here: should the file have changed underneath, the reread drops the lists' records,
    // and the edit then goes to the reread record equal to the one it was made on.
    const Assignment original = *record;
    AssignmentList selected;
    for (int row : m_selection->selectedRows())
        if (row < m_lists.display().size())
            selected.append(m_lists.display()[row] == record ? replacement : m_lists.display()[row]);
    if (!replaceRecord(record, original, replacement))
        return false;
    // The lists took the change in where it sorts, or reloaded and need the filter and the sort.
    if (!m_lists.canUpdateRows()) {
        m_lists.filterWithViews();
        m_lists.sortColumn();
    }
    QList<int> rows;
    for (const AssignmentRef &kept : std::as_const(selected))
        if (const qsizetype row = m_lists.display().indexOf(kept); row >= 0)
            rows.append(int(row));
    const QList<int> before = m_selection->selectedRows();
    m_selection->selectRows(rows);
    m_lists.updateCalendar();
    // The same rows stay selected, so no selection change tells the sidebar and the calendar that
    // one of them now shows another record: told here, they show the copy and edit it, not the
    // record it replaced.
    if (selected.contains(replacement) && m_selection->selectedRows() == before)
        onSelectionChanged();
    return true;
}

bool Controller::appendRecord(const AssignmentRef &record)
{
    const bool saved = m_document->append({record}, this);
    if (saved && !m_quietSave)
        m_history.saved();
    return saved;
}

bool Controller::removeEqualRecords(const AssignmentList &records)
{
    const bool saved = m_document->removeEqual(records, this);
    if (saved && !m_quietSave)
        m_history.saved();
    return saved;
}

bool Controller::saveAdded(const AssignmentRef &record)
{
    if (m_document->records().contains(record))
        return true;
    m_listsAhead = true;
    const bool saved = m_document->append({record}, this);
    m_listsAhead = false;
    if (saved && !m_quietSave)
        m_history.saved();
    return m_document->records().contains(record);
}

// --- changes the document announces --------------------------------------------------------------

bool Controller::waitsToTakeIn()
{
    // A refresh this controller runs itself reloads afterwards.
    if (m_refreshing || !m_loadedOnce)
        return true;
    // Changed again while the lists take in a change (an edit handed over from the sidebar): they
    // are brought in line once that is done.
    if (m_takingIn) {
        m_fellBehind = true;
        return true;
    }
    return false;
}

void Controller::documentReset(QObject *source)
{
    // A whole list this controller saved is the one it shows.
    if (source == this) {
        knowDocument();
        return;
    }
    if (waitsToTakeIn())
        return;
    if (m_document->changeCount() == m_seenChanges)
        return;
    reloadFromDocument(true);
}

void Controller::documentRows(RowsChange change, qsizetype first, qsizetype count, QObject *source)
{
    const bool own = source == this;
    if (own && m_listsAhead) {
        knowDocument();
        return;
    }
    if (waitsToTakeIn())
        return;
    const quint64 heard = m_document->changeCount();
    // Taken in already: a list that heard a later change first reloaded then.
    if (heard == m_seenChanges)
        return;
    m_takingIn = true;
    m_fellBehind = false;
    // An edit still in this list's sidebar goes to the document first, so it is neither lost nor
    // written over the change that arrived. This list's own changes come inside an action.
    const auto action = own ? m_pendingEdit.hold() : m_pendingEdit.beginAction();

    QList<DisplayLists::RowChange> changes;
    const bool known = !m_fellBehind && heard == m_seenChanges + 1 && m_document->changeCount() == heard
        && rowChanges(change, first, count, changes);
    // A project's row stands for its subprojects too: their titles carry its name, and an edit of
    // a project rewrites its subprojects in place. A project with subprojects reloads.
    const auto withSubprojects = [this](const AssignmentRef &record) {
        return record && record->isProject()
            && !m_lists.subprojectsForProject(record->string(AssignmentField::Project)).isEmpty();
    };
    const bool projects = std::any_of(changes.cbegin(), changes.cend(), [&](const DisplayLists::RowChange &row) {
        return withSubprojects(row.gone) || withSubprojects(row.came);
    });
    const bool inPlace = known && !projects && m_lists.canUpdateRows();
    if (inPlace) {
        m_lists.updateRows(changes, m_document->records());
        knowDocument();
        // The history takes in what changed elsewhere; what this list changed, its action records.
        if (!own)
            m_history.reloaded();
        rowsTakenIn(changes, own);
    }
    m_takingIn = false;
    if (!inPlace || m_fellBehind) {
        // A record replaced by its edit is still the one selected, though it no longer equals
        // what was selected.
        const AssignmentRef edited = known && change == RowsChange::Changed ? changes.first().gone : nullptr;
        const bool editedWasSelected
            = edited && m_selection->selectedRows().contains(int(m_lists.display().indexOf(edited)));
        reloadFromDocument(!own);
        const int row = editedWasSelected ? int(m_lists.display().indexOf(changes.first().came)) : -1;
        if (QList<int> rows = m_selection->selectedRows(); row >= 0 && !rows.contains(row)) {
            rows.append(row);
            m_selection->selectRows(rows);
        }
    }
}

bool Controller::rowChanges(RowsChange change, qsizetype first, qsizetype count,
                            QList<DisplayLists::RowChange> &changes) const
{
    const AssignmentList &records = m_document->records();
    const AssignmentList &departed = m_document->departed();
    switch (change) {
    case RowsChange::Inserted:
        if (m_knownSize + count != records.size() || first < 0 || first + count > records.size())
            return false;
        for (qsizetype i = first; i < first + count; ++i)
            changes.append({nullptr, records[i]});
        break;
    case RowsChange::Removed:
        if (m_knownSize - count != records.size() || departed.size() != count || first < 0 || first > records.size())
            return false;
        for (const AssignmentRef &gone : departed)
            changes.append({gone, nullptr});
        break;
    case RowsChange::Changed:
        if (m_knownSize != records.size() || departed.size() != 1 || first < 0 || first >= records.size())
            return false;
        changes.append({departed.first(), records[first]});
        break;
    }
    return true;
}

void Controller::rowsTakenIn(const QList<DisplayLists::RowChange> &changes, bool own)
{
    bool subprojects = false;
    for (const DisplayLists::RowChange &row : changes)
        subprojects = subprojects || (row.gone && row.gone->isSubproject()) || (row.came && row.came->isSubproject());
    if (subprojects)
        Q_EMIT subprojectsChanged();
    // This list's own actions redraw the calendar and fill the sidebar as they finish.
    if (own)
        return;
    m_lists.updateCalendar();
    // A selected record changed elsewhere: the sidebar shows it as it is now.
    const QList<int> selected = m_selection->selectedRows();
    for (const DisplayLists::RowChange &row : changes) {
        if (!row.came || !row.gone)
            continue;
        const qsizetype shown = m_lists.display().indexOf(row.came);
        if (shown >= 0 && selected.contains(int(shown))) {
            onSelectionChanged();
            break;
        }
    }
}

void Controller::reloadFromDocument(bool foreign)
{
    const auto action = m_pendingEdit.beginAction();
    const QList<AssignmentRef> remembered = m_selection->rememberEqual();
    loadStore(foreign);
    m_lists.filterWithViews();
    m_lists.sortColumn();
    m_lists.updateFilterBar();
    m_lists.filterWithViews();
    m_selection->reselectEqual(remembered);
    m_lists.updateCalendar();
}
