#include "list/HistoryRecorder.h"

#include <QHash>
#include <QSet>

using namespace AssignmentKeys;

namespace {
bool same(const Assignment &a, const Assignment &b)
{
    return a.revision() == b.revision() || a == b;
}

// The keys in which two states of a record differ; the bookkeeping date is not a change of its own.
QSet<QString> changedKeys(const Assignment &before, const Assignment &after)
{
    QSet<QString> keys;
    const QVariantMap beforeFields = before.fields();
    const QVariantMap afterFields = after.fields();
    for (const QVariantMap *map : {&beforeFields, &afterFields})
        for (auto it = map->cbegin(); it != map->cend(); ++it)
            if (before.value(it.key()) != after.value(it.key()) && it.key() != DateUpdated)
                keys.insert(it.key());
    // A sidebar edit writes an unticked box as false where the key was absent: no change to name.
    if (before.isCompleted() == after.isCompleted())
        keys.remove(Completed);
    return keys;
}
} // namespace

HistoryRecorder::HistoryRecorder(std::function<AssignmentList()> current, QObject *parent)
    : QObject(parent)
    , m_current(std::move(current))
{
}

void HistoryRecorder::saved()
{
    if (m_depth > 0) {
        m_dirty = true;
        return;
    }
    record();
}

void HistoryRecorder::reloaded()
{
    if (!m_nextName.isEmpty())
        record();
    else
        rebase();
    m_nextName.clear();
    m_nextCompanion.reset();
}

void HistoryRecorder::closeGroup()
{
    if (m_dirty) {
        m_dirty = false;
        record();
    }
    m_nextName.clear();
    m_nextCompanion.reset();
}

void HistoryRecorder::rebase()
{
    // The copies become those of the current records. Most saves change a few records: the copies
    // of the unchanged ends are kept (a record at the same revision is the same record), so one
    // edit costs a few copies rather than one of every record.
    const AssignmentList list = m_current();
    const qsizetype oldSize = m_saved.size();
    const qsizetype newSize = list.size();
    qsizetype prefix = 0;
    while (prefix < oldSize && prefix < newSize && m_saved[prefix].revision() == list[prefix]->revision())
        ++prefix;
    qsizetype suffix = 0;
    while (suffix < oldSize - prefix && suffix < newSize - prefix
           && m_saved[oldSize - 1 - suffix].revision() == list[newSize - 1 - suffix]->revision())
        ++suffix;
    // In between, a record still at a revision held here is that copy (a record deleted or moved
    // around it): it is moved, not copied again.
    QHash<quint64, qsizetype> held;
    held.reserve(oldSize - prefix - suffix);
    for (qsizetype i = prefix; i < oldSize - suffix; ++i)
        held.insert(m_saved[i].revision(), i);
    QList<Assignment> middle;
    middle.reserve(newSize - prefix - suffix);
    for (qsizetype i = prefix; i < newSize - suffix; ++i) {
        if (const auto it = held.find(list[i]->revision()); it != held.end()) {
            middle.append(std::move(m_saved[*it]));
            held.erase(it);
        } else {
            middle.append(*list[i]);
        }
    }
    m_saved.remove(prefix, oldSize - prefix - suffix);
    m_saved.insert(prefix, middle.size(), Assignment());
    for (qsizetype i = 0; i < middle.size(); ++i)
        m_saved[prefix + i] = std::move(middle[i]);
}

void HistoryRecorder::clear(const QString &reason)
{
    m_undo.clear();
    m_redo.clear();
    m_clearedReason = reason;
    m_nextName.clear();
    m_nextCompanion.reset();
    rebase();
    Q_EMIT changed();
}

void HistoryRecorder::record()
{
    const AssignmentList now = m_current();
    const qsizetype oldSize = m_saved.size();
    const qsizetype newSize = now.size();
    // Most changes touch a few records: only the stretch between the unchanged ends is compared.
    qsizetype prefix = 0;
    while (prefix < oldSize && prefix < newSize && same(m_saved[prefix], *now[prefix]))
        ++prefix;
    qsizetype suffix = 0;
    while (suffix < oldSize - prefix && suffix < newSize - prefix
           && same(m_saved[oldSize - 1 - suffix], *now[newSize - 1 - suffix]))
        ++suffix;

    // Records that only moved (a changed date sorts a record elsewhere) are matched and left out:
    // by revision first, and by their text only where that leaves some unmatched on both sides.
    QMultiHash<quint64, qsizetype> byRevision;
    QList<bool> matched(oldSize - prefix - suffix, false);
    for (qsizetype i = prefix; i < oldSize - suffix; ++i)
        byRevision.insert(m_saved[i].revision(), i);
    const auto take = [&](auto &hash, const auto &key) {
        for (auto it = hash.find(key); it != hash.end() && it.key() == key; ++it)
            if (!matched[*it - prefix]) {
                matched[*it - prefix] = true;
                return true;
            }
        return false;
    };
    QList<qsizetype> unmatched;
    for (qsizetype i = prefix; i < newSize - suffix; ++i)
        if (!take(byRevision, now[i]->revision()))
            unmatched.append(i);
    if (!unmatched.isEmpty()) {
        QMultiHash<QByteArray, qsizetype> byText;
        for (qsizetype i = prefix; i < oldSize - suffix; ++i)
            if (!matched[i - prefix])
                byText.insert(m_saved[i].xml(), i);
        if (!byText.isEmpty())
            unmatched.removeIf([&](qsizetype i) { return take(byText, now[i]->xml()); });
    }
    Step step;
    for (qsizetype i : std::as_const(unmatched))
        step.after.append({i, *now[i]});
    for (qsizetype i = prefix; i < oldSize - suffix; ++i)
        if (!matched[i - prefix])
            step.before.append({i, m_saved[i]});
    rebase();
    std::shared_ptr<Companion> companion = std::exchange(m_nextCompanion, nullptr);
    if (step.before.isEmpty() && step.after.isEmpty())
        return;
    step.name = m_nextName.isEmpty() ? describe(step) : m_nextName;
    step.companion = std::move(companion);
    m_nextName.clear();
    m_undo.append(step);
    m_redo.clear();
    m_clearedReason.clear();
    Q_EMIT changed();
}

QString HistoryRecorder::describe(const Step &step)
{
    const qsizetype gone = step.before.size();
    const qsizetype came = step.after.size();
    const auto counted = [](const QString &verb, qsizetype n) {
        return n == 1 ? verb + QStringLiteral(" Assignment") : QStringLiteral("%1 %2 Assignments").arg(verb).arg(n);
    };
    if (gone == 0) {
        if (came == 1 && step.after[0].value.isSubproject())
            return QStringLiteral("Add Subproject");
        if (came == 1 && step.after[0].value.isProject())
            return QStringLiteral("Add Project");
        return counted(QStringLiteral("Add"), came);
    }
    if (came == 0)
        return counted(QStringLiteral("Delete"), gone);
    if (gone != came)
        return EditMultipleName;
    // Changed records: each state before is paired with the one after made at the same moment.
    QSet<QString> keys;
    bool completedNow = true;
    for (const Record &before : step.before) {
        const Record *after = &step.after[0];
        for (const Record &candidate : step.after)
            if (candidate.value.value(DateCreated) == before.value.value(DateCreated))
                after = &candidate;
        keys.unite(changedKeys(before.value, after->value));
        completedNow = completedNow && after->value.isCompleted();
    }
    static const QList<std::pair<QString, QString>> names{
        {Date, QStringLiteral("Change Due Date")},   {Name, QStringLiteral("Rename")},
        {Course, QStringLiteral("Change Course")},   {Textbook, QStringLiteral("Change Textbook")},
        {Type, QStringLiteral("Change Type")},       {Grade, QStringLiteral("Change Grade")},
        {Priority, QStringLiteral("Change Priority")}, {Notes, QStringLiteral("Change Notes")},
        {Contacts, QStringLiteral("Change Contacts")}, {File, QStringLiteral("Change File")},
        {Snapshot, QStringLiteral("Change Snapshot")}, {Project, QStringLiteral("Make Project")},
    };
    if (keys == QSet<QString>{Completed})
        return completedNow ? QStringLiteral("Complete") : QStringLiteral("Mark Not Completed");
    // A course brings its default textbook along; the course is what the user changed.
    if (keys.contains(Course) && keys.size() <= 2 && (keys.size() == 1 || keys.contains(Textbook)))
        return names[2].second;
    if (keys.size() == 1)
        for (const auto &[key, name] : names)
            if (keys.contains(key))
                return name;
    return gone == 1 ? QStringLiteral("Edit Assignment") : EditMultipleName;
}

QString HistoryRecorder::undoText() const
{
    return UndoNames::undoText(m_undo.isEmpty() ? QString() : m_undo.last().name, m_clearedReason);
}

QString HistoryRecorder::redoText() const
{
    return UndoNames::redoText(m_redo.isEmpty() ? QString() : m_redo.last().name);
}

std::optional<HistoryRecorder::Applied> HistoryRecorder::undo(const AssignmentList &list)
{
    if (m_undo.isEmpty())
        return std::nullopt;
    m_nextName.clear();
    const Step step = m_undo.takeLast();
    std::optional<Applied> applied = apply(list, step.after, step.before);
    if (!applied) {
        clear(UndoNames::CantUndoAfterOutsideChange);
        return std::nullopt;
    }
    if (step.companion && step.companion->undone)
        step.companion->undone(applied->list);
    m_redo.append(step);
    Q_EMIT changed();
    return applied;
}

std::optional<HistoryRecorder::Applied> HistoryRecorder::redo(const AssignmentList &list)
{
    if (m_redo.isEmpty())
        return std::nullopt;
    m_nextName.clear();
    const Step step = m_redo.takeLast();
    std::optional<Applied> applied = apply(list, step.before, step.after);
    if (!applied) {
        clear(UndoNames::CantUndoAfterOutsideChange);
        return std::nullopt;
    }
    if (step.companion && step.companion->redone)
        step.companion->redone(applied->list);
    m_undo.append(step);
    Q_EMIT changed();
    return applied;
}

std::optional<HistoryRecorder::Applied> HistoryRecorder::apply(const AssignmentList &list,
                                                               const QList<Record> &remove,
                                                               const QList<Record> &insert)
{
    // Each record to take out is looked for where the step left it first, then anywhere.
    QList<bool> taken(list.size(), false);
    for (const Record &gone : remove) {
        qsizetype at = -1;
        if (gone.position < list.size() && !taken[gone.position] && same(*list[gone.position], gone.value))
            at = gone.position;
        for (qsizetype i = 0; at < 0 && i < list.size(); ++i)
            if (!taken[i] && same(*list[i], gone.value))
                at = i;
        if (at < 0)
            return std::nullopt;
        taken[at] = true;
    }
    Applied applied;
    applied.list.reserve(list.size() - remove.size() + insert.size());
    for (qsizetype i = 0; i < list.size(); ++i)
        if (!taken[i])
            applied.list.append(list[i]);
    // Positions ascend, so each record goes back where it stood among those before it.
    for (const Record &back : insert) {
        const AssignmentRef record = Assignments::make(back.value.fields());
        applied.list.insert(std::min(back.position, applied.list.size()), record);
        applied.restored.append(record);
    }
    return applied;
}
