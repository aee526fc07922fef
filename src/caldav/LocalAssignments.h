#pragma once

#include <QList>
#include <QPointer>
#include <QStringList>
#include <QVariantMap>

class Controller;

// The one place where the calendar-server sync reads and changes the assignments of this computer.
// Records are matched by CalDavKeys::Uid. Everything here runs on the interface thread.
class LocalAssignments
{
public:
    explicit LocalAssignments(Controller *controller);

    bool isUsable() const;
    // Gives every record without a UID a new one (and saves), so that a sync cut short can find
    // what it already sent by UID.
    void ensureUids();
    // Plain copies of all records, for the worker thread.
    QList<QVariantMap> records() const;
    // Replaces the records whose UID an upsert carries (adding those that have none here), removes
    // those named, then refilters and saves once.
    void apply(const QList<QVariantMap> &upserts, const QStringList &removals);

private:
    QPointer<Controller> m_controller;
};
