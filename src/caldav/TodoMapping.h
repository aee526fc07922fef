#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

// Keys the calendar-server sync adds to an assignment record. Older versions keep them as unknown keys.
namespace CalDavKeys {
inline const QString Uid = QStringLiteral("CalDAV UID");
} // namespace CalDavKeys

// One assignment as one VTODO, read and written with libical. Writing starts from the server's last
// copy of the item, so whatever a phone or the server added that we do not map (alarms, other
// properties, other components) goes back unchanged.
namespace TodoMapping {

// The record keys that travel to the server. "Date Updated" travels as LAST-MODIFIED but is not
// compared: it changes whenever anything is saved.
const QStringList &mappedKeys();

// What a VTODO says, in record terms.
struct Todo {
    QString uid;
    QVariantMap fields; // only mapped keys; an absent key is an empty field
    std::optional<QDateTime> lastModified;
    QString parentUid; // RELATED-TO;RELTYPE=PARENT
};

// A digest of the mapped fields: equal digests, equal content as far as the server is concerned.
QByteArray digest(const QVariantMap &recordFields);

// The calendar object for a record. `previousIcs` is the server's copy (may be empty);
// `parentUid` is the UID of a subproject's project (empty otherwise).
QByteArray toIcs(const QVariantMap &recordFields, const QString &uid, const QString &parentUid,
                 const QByteArray &previousIcs);

// The first VTODO of a calendar object; nullopt when it does not parse or holds no VTODO.
std::optional<Todo> fromIcs(const QByteArray &ics);

// The record after taking the server's version: mapped keys replaced, the rest (file, snapshot,
// contacts, creation date, unknown keys) kept.
QVariantMap merged(const QVariantMap &local, const Todo &remote);

} // namespace TodoMapping
