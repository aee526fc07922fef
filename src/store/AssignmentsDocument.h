#pragma once

#include "store/Assignment.h"
#include "store/AssignmentStore.h"

#include <QObject>
#include <QString>

#include <memory>

class QFileSystemWatcher;

// The assignments of one store file, shared by every window and service of the process that shows
// or changes them. Each change goes through here: it is saved at once and announced, so every
// window shows the same records and none can write an older copy back.
//
// Changes made elsewhere (a sync download, a backup import, another copy of the program, an
// editor) are noticed by a file watcher and by refresh(), which the windows call when they become
// active; the document then rereads the file and announces a reset. A save first checks that the
// file is still the one last read or written; when it is not, the file is reread instead of being
// written over, and replace() carries its one edit over to the reread record.
//
// The `source` of a change is the object that made it, handed back with the signal so that
// object can skip the update it has already made itself.
class AssignmentsDocument : public QObject
{
    Q_OBJECT
public:
    // The one document of that file while anything holds it; a fresh one otherwise.
    static std::shared_ptr<AssignmentsDocument> open(const QString &path);
    // The data folder's store file.
    static std::shared_ptr<AssignmentsDocument> open();
    ~AssignmentsDocument() override;
    // Why this process replaced the whole file: windows that keep a history of changes end it,
    // and say why. CalendarSync: a sync with the calendar server changed records through the
    // document (it announces that itself, after the save).
    enum class Replacement { Erased, BackupImport, Download, CalendarSync };
    // This process replaced the whole file (emptied it, imported a backup, downloaded a copy): the
    // document of that file, if one is open, rereads it now and announces why.
    static void fileReplaced(const QString &path, Replacement why);

    QString path() const { return m_store.path(); }
    // False while the file on disk cannot be read: nothing is then written through this document.
    bool isUsable() const { return m_store.isUsable(); }
    // The records in order of creation. Loaded on first use.
    const AssignmentList &records();

    // How many changes the document has announced. A window that hears of a change while handling
    // another (its handler ran before the one of the change it saw first) can tell it fell behind.
    quint64 changeCount() const { return m_changes; }
    // The records the latest announced change took out: the rows removed, or the record a
    // replacement put aside. Empty after any other change.
    const AssignmentList &departed() const { return m_departed; }

    // Rereads the file when it changed since this document last read or wrote it (or was never
    // read); announces a reset then. Returns whether it reread.
    bool refresh();
    // Rereads the file whatever its stamp (after a whole-file replacement this process made).
    void reload();

    // The changes. Each saves and announces; false when nothing was written (unreadable file,
    // write failure, or the file changed underneath and was reread instead).
    bool insert(qsizetype row, const AssignmentList &added, QObject *source = nullptr);
    bool append(const AssignmentList &added, QObject *source = nullptr) { return insert(-1, added, source); }
    // Removes every record equal to one of `gone`, announced run by run of neighbouring rows and
    // saved once. Matching by contents lets the removal go onto a file replaced underneath.
    bool removeEqual(AssignmentList gone, QObject *source = nullptr);
    // Replaces `record` by `replacement`. When the file changed underneath, the reread record
    // equal to `original` (the record as it was before the edit) takes the replacement instead.
    bool replace(const AssignmentRef &record, const Assignment &original, const AssignmentRef &replacement,
                 QObject *source = nullptr);
    // The whole list changes (records edited in place, reordered, many at once).
    bool setAll(const AssignmentList &records, QObject *source = nullptr);

Q_SIGNALS:
    void rowsInserted(qsizetype first, qsizetype count, QObject *source);
    void rowsRemoved(qsizetype first, qsizetype count, QObject *source);
    void rowChanged(qsizetype row, QObject *source);
    // Everything may differ; source is null for a reread.
    void reset(QObject *source);
    // Follows the reset of a whole-file replacement this process made.
    void replaced(AssignmentsDocument::Replacement why);

private:
    explicit AssignmentsDocument(const QString &path);
    bool load();
    // Whether the file still is what this document last read or wrote; rereads it when not.
    bool isCurrentOrReload();
    bool write();
    void watch();

    AssignmentStore m_store;
    AssignmentList m_records;
    AssignmentList m_departed;
    bool m_loaded = false;
    quint64 m_changes = 0;
    QFileSystemWatcher *m_watcher = nullptr;
};
