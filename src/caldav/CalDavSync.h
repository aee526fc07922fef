#pragma once

#include "caldav/DavSession.h"

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

class SyncState;

// One sync of the assignments with one calendar: what changed on the server (sync-collection where
// offered, else ETags), what changed here (digests of the mapped fields against the last sync), and
// the writes both ways. Runs on a worker thread on plain copies of the records; what the records
// must become comes back in the outcome for the interface thread to apply.
//
// Every item's address is the calendar plus its UID, and every record has its UID before the sync
// starts, so a sync cut short after a PUT finds that item by UID the next time (If-None-Match
// refuses the second create) instead of making it twice.
class CalDavSync
{
public:
    enum class FirstSync { Merge, TakeServer, SendLocal };

    struct Outcome {
        bool ok = false;
        QString error;
        int sent = 0;
        int received = 0;
        int deletedOnServer = 0;
        int deletedHere = 0;
        QStringList conflictNames;
        QList<QVariantMap> conflictLosers; // the versions that lost, for the backups
        QList<QVariantMap> upserts;        // records to add or replace here (matched by UID)
        QStringList removals;              // UIDs of records to remove here
        int requests = 0;
        qint64 bytesSent = 0;
        qint64 bytesReceived = 0;
    };

    CalDavSync(DavSession &session, const QUrl &calendar, SyncState &state, bool offersSyncCollection);

    // `records` must all carry CalDavKeys::Uid. `mode` counts only when the state is empty (first
    // sync of this account and calendar).
    Outcome run(const QList<QVariantMap> &records, FirstSync mode = FirstSync::Merge);

    // The number of items in the calendar, for the first-sync question; -1 when it cannot be read.
    static int countItems(DavSession &session, const QUrl &calendar);

private:
    struct Remote {
        QString href;
        QByteArray etag;
        QByteArray ics;
    };
    bool list(QHash<QString, QByteArray> &changed, QSet<QString> &removed, QString &newToken, bool full);
    bool fetch(const QStringList &hrefs, QList<Remote> &out);
    QUrl urlFor(const QString &href) const;
    QString hrefForUid(const QString &uid) const;
    bool fail(const DavSession::Response &r, const QString &what);
    void saveState();
    // Received to-dos whose parent a phone named only by RELATED-TO;RELTYPE=PARENT (child, parent):
    // the parent becomes a project and the child its subproject, as upserts here.
    void linkSubprojects(const QList<std::pair<QString, QString>> &childOf, QHash<QString, QVariantMap> &local,
                         QHash<QString, QString> &projectUid);

    DavSession &m_session;
    QUrl m_calendar;
    SyncState &m_state;
    bool m_syncCollection;
    Outcome m_out;
    int m_unsavedSteps = 0;
};
