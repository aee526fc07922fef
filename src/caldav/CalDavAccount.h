#pragma once

#include <QList>
#include <QString>
#include <QUrl>

class DavSession;

// Finding the to-do calendars of an account: the address as typed, else its well-known CalDAV
// address, then the current user's principal, its calendar home, and the calendars in it.
namespace CalDavAccount {

struct Calendar {
    QUrl url;
    QString name;
    bool holdsTodos = false;
    bool offersSyncCollection = false;
};

enum class Problem { None, Address, Password, Tls, NotCalDav, NoTodos, Server };

struct Discovery {
    Problem problem = Problem::None;
    QString message; // what the user reads when problem != None
    QUrl home;
    QList<Calendar> calendars; // those that hold to-dos
};

// "example.org" means https://example.org/.
QUrl normalisedAddress(const QString &typed);
Discovery discover(DavSession &session, const QString &address);
// The calendar's properties; problem set when it is gone (404) or unreadable.
Discovery describe(DavSession &session, const QUrl &calendar);
// MKCALENDAR "Quillory" (for to-dos) in the home; the new calendar, or a problem.
Discovery createCalendar(DavSession &session, const QUrl &home, const QString &name);

inline const QString DefaultCalendarName = QStringLiteral("Quillory");

} // namespace CalDavAccount
