#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

// What this computer knew of the server after its last sync with one account: the collection's sync
// token and, per UID, where the item lives, its ETag, the server's own copy (so that what others added
// goes back unchanged) and a digest of the mapped fields as they were then (to tell a local change).
// One JSON file per account and calendar in the data folder, written atomically after every step,
// so an interrupted sync starts again from the last step that finished.
class SyncState
{
public:
    struct Item {
        QString href;
        QByteArray etag;
        QByteArray ics;
        QByteArray digest;
    };

    // The file for an account: "<data folder>/Calendar Server/<digest of URL and user>.json".
    static QString pathFor(const QString &calendarUrl, const QString &user);

    explicit SyncState(QString path = {});
    // False with a reason when the file exists but cannot be read (it is then left alone).
    bool load(QString *error = nullptr);
    bool save(QString *error = nullptr) const;
    bool exists() const;
    void clear();

    QString syncToken;
    QHash<QString, Item> items; // by UID
    // The UID whose item lives at `href`; empty when none.
    QString uidForHref(const QString &href) const;

private:
    QString m_path;
};
