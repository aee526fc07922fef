#pragma once

#include "store/Assignment.h"

#include <QList>
#include <QStringList>
#include <QVariantMap>

#include <memory>

class AssignmentsDocument;
class QObject;

// The one place where the calendar-server sync reads and changes the assignments of this computer.
// Records are matched by CalDavKeys::Uid. Everything here runs on the interface thread.
//
// The sync works on the shared assignments document, not on a window's list: what it writes is
// no step of any window's history (an undo must not take back what the server sent, or the next
// sync would send the undo back), and a change made by the sync ends every history with "Can't
// Undo After Sync". Saves are checked against the file's stamp, so a file changed underneath is
// reread, never written over.
class LocalAssignments
{
public:
    // `source` is handed to the document with every change, so that its owner can tell the sync's
    // own changes from the others.
    explicit LocalAssignments(std::shared_ptr<AssignmentsDocument> document, QObject *source = nullptr);
    ~LocalAssignments();

    bool isUsable() const;
    // Gives every record without a UID a new one (and saves), so that a sync cut short can find
    // what it already sent by UID. False when records lacked one and could not be saved.
    bool ensureUids();
    // Plain copies of all records, for the worker thread.
    QList<QVariantMap> records() const;
    // Replaces the records whose UID an upsert carries (adding those that have none here), removes
    // those named, and saves once. False when nothing could be written (the file is unreadable, or
    // changed underneath and was reread instead): the sync must then not count these as done.
    bool apply(const QList<QVariantMap> &upserts, const QStringList &removals);

private:
    bool save(const AssignmentList &records);

    std::shared_ptr<AssignmentsDocument> m_document;
    QObject *m_source;
};
