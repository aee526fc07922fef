#include "store/CoursesHistory.h"

#include "store/AssignmentsDocument.h"
#include "store/CoursesDocument.h"
#include "store/UndoNames.h"

#include <QLoggingCategory>
#include <QSet>

Q_DECLARE_LOGGING_CATEGORY(lcStore)

CoursesHistory::CoursesHistory(CoursesDocument &document)
    : QObject(&document)
    , m_document(document)
{
}

CoursesHistory::~CoursesHistory() = default;

CoursesHistory::State CoursesHistory::current() const
{
    return {m_document.combined(), m_document.universalTypes()};
}

void CoursesHistory::begin(const QString &name)
{
    if (m_depth++ > 0)
        return;
    m_document.refresh();
    m_open = Step{name, current(), {}, {}};
    m_changedOutside = false;
}

void CoursesHistory::end()
{
    if (--m_depth > 0 || !m_open)
        return;
    Step step = std::move(*m_open);
    m_open.reset();
    // The files were reread during the action: what it changed cannot be told from what came.
    if (m_changedOutside)
        return;
    step.after = current();
    if (step.after == step.before)
        return;
    m_undo.append(std::move(step));
    m_redo.clear();
    m_clearedReason.clear();
    Q_EMIT changed();
}

void CoursesHistory::renamedAssignments(const std::shared_ptr<AssignmentsDocument> &document,
                                        const AssignmentList &records, const QString &key, const QString &from,
                                        const QString &to)
{
    if (m_open && !records.isEmpty())
        m_open->renames.append({document, records, key, from, to});
}

void CoursesHistory::documentChanged()
{
    if (m_applying || m_open)
        return;
    clear(UndoNames::CantUndoAfterOutsideChange);
}

void CoursesHistory::clear(const QString &reason)
{
    if (m_applying)
        return;
    if (m_open)
        m_changedOutside = true;
    // The menu says why only where there was something to take back. A sync or an import says so
    // even when the files' change was noticed first as a change from elsewhere.
    if (m_undo.isEmpty() && m_redo.isEmpty()) {
        if (m_clearedReason == UndoNames::CantUndoAfterOutsideChange && reason != m_clearedReason) {
            m_clearedReason = reason;
            Q_EMIT changed();
        }
        return;
    }
    m_undo.clear();
    m_redo.clear();
    m_clearedReason = reason;
    Q_EMIT changed();
}

QString CoursesHistory::undoText() const
{
    return UndoNames::undoText(m_undo.isEmpty() ? QString() : m_undo.last().name, m_clearedReason);
}

QString CoursesHistory::redoText() const
{
    return UndoNames::redoText(m_redo.isEmpty() ? QString() : m_redo.last().name);
}

bool CoursesHistory::undo(QObject *source)
{
    if (m_undo.isEmpty() || m_open)
        return false;
    // Taken off only once done: a step that no longer fits ends the history with it.
    const Step step = m_undo.last();
    if (!apply(step, true, source))
        return false;
    m_undo.removeLast();
    m_redo.append(step);
    Q_EMIT changed();
    return true;
}

bool CoursesHistory::redo(QObject *source)
{
    if (m_redo.isEmpty() || m_open)
        return false;
    // Taken off only once done: a step that no longer fits ends the history with it.
    const Step step = m_redo.last();
    if (!apply(step, false, source))
        return false;
    m_redo.removeLast();
    m_undo.append(step);
    Q_EMIT changed();
    return true;
}

bool CoursesHistory::apply(const Step &step, bool back, QObject *source)
{
    const State &from = back ? step.after : step.before;
    const State &to = back ? step.before : step.after;
    // Another program may have changed the files since: the step then no longer fits them.
    m_document.refresh();
    if (current() != from) {
        qCInfo(lcStore) << "The courses changed since the step was made; the history ends here";
        clear(UndoNames::CantUndoAfterOutsideChange);
        return false;
    }
    m_applying = true;
    bool written = true;
    if (to.combined != from.combined)
        written = m_document.setCombined(to.combined, source);
    if (written && to.types != from.types)
        written = m_document.setUniversalTypes(to.types, source);
    m_applying = false;
    if (!written) {
        clear(UndoNames::CantUndoAfterOutsideChange);
        return false;
    }
    // Only the very records the rename changed, and only while they still hold its name: an
    // assignment given that name since keeps it.
    for (const Rename &rename : step.renames) {
        const QString &was = back ? rename.to : rename.from;
        const QString &becomes = back ? rename.from : rename.to;
        rename.document->refresh();
        if (!rename.document->isUsable())
            continue;
        const AssignmentList &records = rename.document->records();
        const QSet<const Assignment *> present = [&records] {
            QSet<const Assignment *> set;
            set.reserve(records.size());
            for (const AssignmentRef &record : records)
                set.insert(record.get());
            return set;
        }();
        bool renamed = false;
        for (const AssignmentRef &record : rename.records) {
            if (present.contains(record.get()) && record->value(rename.key).toString() == was) {
                record->set(rename.key, becomes);
                renamed = true;
            }
        }
        if (renamed)
            rename.document->setAll(records, source);
    }
    return true;
}
