#include "store/AssignmentsDocument.h"

#include "platform/Paths.h"

#include <QFileInfo>
#include <QFileSystemWatcher>
#include <QHash>
#include <QLoggingCategory>

#include <algorithm>

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
    if (!added.isEmpty()) {
        ++m_changes;
        Q_EMIT rowsInserted(first, added.size(), source);
    }
    return saved;
}

bool AssignmentsDocument::remove(const AssignmentRef &record, QObject *source)
{
    if (!isCurrentOrReload())
        return false;
    const qsizetype row = m_records.indexOf(record);
    if (row < 0)
        return false;
    m_records.removeAt(row);
    const bool saved = write();
    ++m_changes;
    Q_EMIT rowsRemoved(row, 1, source);
    return saved;
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
    m_records[row] = replacement;
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
    const bool saved = write();
    ++m_changes;
    Q_EMIT reset(source);
    return saved;
}
