#pragma once

#include "caldav/CalDavSync.h"

#include <QFutureWatcher>
#include <QHash>
#include <QObject>
#include <QTimer>

#include <atomic>
#include <memory>

class LocalAssignments;

// Runs syncs with the calendar server of the preferences, one at a time, on a worker thread, and
// applies what they bring on the interface thread: the losers of conflicts to the automatic backups
// first, then the records, then the state (so that a program killed in between syncs again from
// the last state that matched the records).
class CalDavSyncRunner : public QObject
{
    Q_OBJECT
public:
    explicit CalDavSyncRunner(LocalAssignments *local, QObject *parent = nullptr);
    ~CalDavSyncRunner() override;

    bool isConfigured() const;
    bool isRunning() const { return m_watcher.isRunning(); }
    // True before the first sync of the configured account and calendar: ask how to begin.
    bool isFirstSync() const;

    // Starts a sync unless one runs (then another follows it). False when no account is set.
    bool start(CalDavSync::FirstSync mode = CalDavSync::FirstSync::Merge);
    // A sync a few seconds after the last edit.
    void scheduleAfterEdit();
    // Waits (at most `ms`) for a running sync and applies it; for quitting. A sync still running
    // then is stopped (what it sent is found again by the next one) and nothing of it is applied.
    void finish(int ms);

    // "3 sent, 2 received, 1 conflict kept in backups"
    static QString summaryText(const CalDavSync::Outcome &outcome);
    // Writes the versions that lost, beside the current records, as one automatic backup.
    static bool backUpLosers(const QList<QVariantMap> &current, const QList<QVariantMap> &losers, QString *path = nullptr);

    void setDebounceMs(int ms) { m_debounce.setInterval(ms); }

Q_SIGNALS:
    void started();
    // `message` is the summary, or what went wrong.
    void finished(bool ok, const QString &message, const CalDavSync::Outcome &outcome);

private:
    struct Result;
    void done();
    // Takes out of what the sync brings every record edited here (`records`, as they are now) while
    // it ran: the edit is later, so it stays and the next sync sends it; the server's version goes
    // to the backups.
    QList<QVariantMap> keepEditsMadeDuringTheSync(CalDavSync::Outcome &outcome, const QList<QVariantMap> &records) const;

    LocalAssignments *m_local;
    QFutureWatcher<std::shared_ptr<Result>> m_watcher;
    QTimer m_debounce;
    // The records as the running sync was given them, by UID.
    QHash<QString, QVariantMap> m_given;
    bool m_again = false;
    bool m_discard = false;
    std::shared_ptr<std::atomic_bool> m_cancel;
};
