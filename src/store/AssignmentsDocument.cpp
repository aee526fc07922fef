#include "store/AssignmentsDocument.h"

#include "platform/Paths.h"

#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QSet>
#include <QLoggingCategory>

#include <algorithm>
#include <utility>

Q_DECLARE_LOGGING_CATEGORY(lcStore)

namespace {
// The documents alive now, by path. Weak, so a document goes with its last holder and a later
// open() reads the file afresh.
QHash<QString, std::weak_ptr<AssignmentsDocument>> &openDocuments()
{
    static QHash<QString, std::weak_ptr<AssignmentsDocument>> documents;
    return documents;
}
} // namespace

std::shared_ptr<AssignmentsDocument> AssignmentsDocument::open(const QString &path)
{
    const QString key = QFileInfo(path).absoluteFilePath();
    if (std::shared_ptr<AssignmentsDocument> existing = openDocuments().value(key).lock())
        return existing;
    std::shared_ptr<AssignmentsDocument> document(new AssignmentsDocument(path));
    openDocuments().insert(key, document);
    return document;
}

void AssignmentsDocument::fileReplaced(const QString &path, Replacement why)
{
    if (std::shared_ptr<AssignmentsDocument> document = openDocuments().value(QFileInfo(path).absoluteFilePath()).lock()) {
        document->reload();
        Q_EMIT document->replaced(why);
    }
}

std::shared_ptr<AssignmentsDocument> AssignmentsDocument::open()
{
    return open(Paths::assignmentsFile());
}

AssignmentsDocument::AssignmentsDocument(const QString &path)
    : m_store(path)
    , m_watcher(new QFileSystemWatcher(this))
{
    connect(m_watcher, &QFileSystemWatcher::fileChanged, this, [this] {
        // An atomic rename replaces the watched inode, and the watcher drops the path with it.
        watch();
        if (m_loaded)
            refresh();
    });
}

AssignmentsDocument::~AssignmentsDocument()
{
    const QString key = QFileInfo(m_store.path()).absoluteFilePath();
    auto &documents = openDocuments();
    const auto it = documents.constFind(key);
    if (it != documents.cend() && it->expired())
        documents.erase(it);
}

void AssignmentsDocument::watch()
{
    if (!m_watcher->files().contains(m_store.path()) && QFileInfo::exists(m_store.path()))
        m_watcher->addPath(m_store.path());
}

const AssignmentList &AssignmentsDocument::records()
{
    if (!m_loaded)
        load();
    return m_records;
}

bool AssignmentsDocument::load()
{
    m_loaded = true;
    m_departed.clear();
    watch();
    std::optional<AssignmentList> loaded = m_store.load();
    if (!loaded) {
        m_records.clear();
        return false;
    }
    // The repair writes only when a record was missing its priority, so an unchanged file stays
    // unchanged and the next refresh can skip the reload.
    const bool repaired = AssignmentStore::addPrioritiesToAssignmentsWithoutThem(*loaded);
    m_records = std::move(*loaded);
    if (repaired)
        m_store.save(m_records);
    return true;
}

bool AssignmentsDocument::refresh()
{
    if (m_loaded && m_store.isUnchangedSinceLastAccess())
        return false;
    load();
    ++m_changes;
    Q_EMIT reset(nullptr);
    return true;
}

void AssignmentsDocument::reload()
{
    load();
    ++m_changes;
    Q_EMIT reset(nullptr);
}

bool AssignmentsDocument::isCurrentOrReload()
{
    if (!m_loaded) {
        load();
        return m_store.isUsable();
    }
    if (m_store.isUnchangedSinceLastAccess())
        return true;
    qCInfo(lcStore) << "The assignments file changed on disk; reading it instead of writing over it";
    reload();
    return false;
}

bool AssignmentsDocument::write()
{
    if (!m_store.isUsable()) {
        qCWarning(lcStore) << "Not saving: the assignments file on disk could not be read";
        return false;
    }
    const bool saved = m_store.save(m_records);
    watch();
    return saved;
}

bool AssignmentsDocument::insert(qsizetype row, const AssignmentList &added, QObject *source)
{
    if (!isCurrentOrReload())
        return false;
    const qsizetype first = row < 0 || row > m_records.size() ? m_records.size() : row;
    for (qsizetype i = 0; i < added.size(); ++i)
        m_records.insert(first + i, added[i]);
    const bool saved = write();
    m_departed.clear();
    if (!added.isEmpty()) {
        ++m_changes;
        Q_EMIT rowsInserted(first, added.size(), source);
    }
    return saved;
}

bool AssignmentsDocument::removeEqual(AssignmentList gone, QObject *source)
{
    // `gone` is held by value: when the file changed underneath, the reread frees the records the
    // caller took from its lists, and the removal then matches the reread ones by their contents.
    if (!isCurrentOrReload() && !m_store.isUsable())
        return false;
    // The document's own records that go, found once. A record that is one of `gone` needs no
    // comparing, so removing most of a long list stays quick.
    QSet<const Assignment *> given;
    for (const AssignmentRef &record : std::as_const(gone))
        given.insert(record.get());
    AssignmentList doomed;
    QSet<const Assignment *> doomedAt;
    for (const AssignmentRef &record : std::as_const(m_records)) {
        const bool goes = given.contains(record.get())
            || std::any_of(gone.cbegin(), gone.cend(), [&](const AssignmentRef &g) { return *g == *record; });
        if (goes) {
            doomed.append(record); // held, so no address in doomedAt can come back as another record
            doomedAt.insert(record.get());
        }
    }
    if (doomed.isEmpty())
        return false;
    // From the back, so the rows not yet announced keep their numbers. Each run is taken out just
    // before it is announced: a window hearing it sees the records as the signal says. A window
    // may hand over an edit of its own meanwhile; a record it replaced is no longer the one asked
    // for and stays, with that edit.
    qsizetype at = m_records.size();
    while (!doomedAt.isEmpty()) {
        qsizetype end = std::min(at, m_records.size());
        while (end > 0 && !doomedAt.contains(m_records[end - 1].get()))
            --end;
        if (end == 0)
            break;
        qsizetype first = end - 1;
        while (first > 0 && doomedAt.contains(m_records[first - 1].get()))
            --first;
        m_departed = m_records.mid(first, end - first);
        for (const AssignmentRef &record : std::as_const(m_departed))
            doomedAt.remove(record.get());
        m_records.remove(first, end - first);
        const qsizetype expected = m_records.size();
        ++m_changes;
        Q_EMIT rowsRemoved(first, end - first, source);
        // A handler that changed the number of records may have moved them: look again from the end.
        at = m_records.size() == expected ? first : m_records.size();
    }
    return write();
}

bool AssignmentsDocument::replace(const AssignmentRef &record, const Assignment &original,
                                  const AssignmentRef &replacement, QObject *source)
{
    if (!m_store.isUsable() && m_loaded)
        return false;
    qsizetype row = -1;
    if (m_loaded && m_store.isUnchangedSinceLastAccess()) {
        row = m_records.indexOf(record);
    } else {
        // The file was replaced underneath: the edit goes to the reread record it was made on, and
        // what the file now holds is kept.
        reload();
        if (!m_store.isUsable())
            return false;
        row = Assignments::indexOfEqual(m_records, original);
    }
    if (row < 0) {
        qCWarning(lcStore) << "The edited assignment is no longer in the file";
        return false;
    }
    m_departed = {std::exchange(m_records[row], replacement)};
    const bool saved = write();
    ++m_changes;
    Q_EMIT rowChanged(row, source);
    return saved;
}

bool AssignmentsDocument::setAll(const AssignmentList &records, QObject *source)
{
    if (!isCurrentOrReload())
        return false;
    m_records = records;
    m_departed.clear();
    const bool saved = write();
    ++m_changes;
    Q_EMIT reset(source);
    return saved;
}
