#include "caldav/CalDavAccount.h"

#include "caldav/CalDavLog.h"
#include "caldav/DavSession.h"
#include "caldav/Multistatus.h"

#include <QUuid>

namespace {

using CalDavAccount::Discovery;
using CalDavAccount::Problem;

const QByteArray PrincipalBody = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:"><d:prop><d:current-user-principal/></d:prop></d:propfind>)";
const QByteArray HomeBody = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav"><d:prop><c:calendar-home-set/></d:prop></d:propfind>)";
const QByteArray CalendarsBody = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav"><d:prop><d:resourcetype/><d:displayname/>
<c:supported-calendar-component-set/><d:supported-report-set/></d:prop></d:propfind>)";

bool failed(const DavSession::Response &r, Discovery &out)
{
    if (r.failure == DavSession::Failure::Tls) {
        out.problem = Problem::Tls;
        out.message = QObject::tr("The server's certificate could not be trusted, so nothing was sent to it (%1).").arg(r.errorText);
    } else if (r.failure != DavSession::Failure::None) {
        out.problem = Problem::Address;
        out.message = QObject::tr("No calendar server answers at that address (%1).").arg(r.errorText);
    } else if (r.status == 401 || r.status == 403) {
        out.problem = Problem::Password;
        out.message = QObject::tr("The server refused the user name or password.");
    } else if (r.status == 207) {
        return false;
    } else {
        out.problem = Problem::NotCalDav;
        out.message = QObject::tr("That address does not lead to a calendar server (it answered %1).").arg(r.status);
    }
    return true;
}

// PROPFIND, following the redirects a well-known address answers with.
DavSession::Response propfind(DavSession &session, QUrl &url, const QByteArray &body, int depth)
{
    for (int hops = 0;; ++hops) {
        DavSession::Response r = session.send("PROPFIND", url, body, {{"Depth", QByteArray::number(depth)}});
        if (hops < 5 && (r.status == 301 || r.status == 302 || r.status == 307 || r.status == 308) && r.location.isValid()) {
            url = url.resolved(r.location);
            continue;
        }
        return r;
    }
}

CalDavAccount::Calendar calendarFrom(const Multistatus::Response &response, const QUrl &base)
{
    CalDavAccount::Calendar calendar;
    calendar.url = base.resolved(QUrl(response.href));
    calendar.name = response.text(QStringLiteral("displayname"));
    if (calendar.name.isEmpty())
        calendar.name = calendar.url.path().section(QLatin1Char('/'), -2, -2);
    const auto components = response.properties.value(QStringLiteral("supported-calendar-component-set")).components;
    // A calendar that names no components takes all of them.
    calendar.holdsTodos = components.isEmpty() || components.contains(QLatin1String("VTODO"));
    calendar.offersSyncCollection = response.properties.value(QStringLiteral("supported-report-set"))
                                        .descendants.contains(QLatin1String("sync-collection"));
    return calendar;
}

} // namespace

QUrl CalDavAccount::normalisedAddress(const QString &typed)
{
    QString text = typed.trimmed();
    if (!text.contains(QLatin1String("://")))
        text.prepend(QLatin1String("https://"));
    QUrl url(text);
    if (url.path().isEmpty())
        url.setPath(QStringLiteral("/"));
    return url;
}

Discovery CalDavAccount::discover(DavSession &session, const QString &address)
{
    Discovery out;
    QUrl url = normalisedAddress(address);
    if (!url.isValid() || url.host().isEmpty() || (url.scheme() != QLatin1String("https") && url.scheme() != QLatin1String("http"))) {
        out.problem = Problem::Address;
        out.message = QObject::tr("That is not a server address.");
        return out;
    }
    DavSession::Response r = propfind(session, url, PrincipalBody, 0);
    Multistatus ms = Multistatus::parse(r.body);
    QString principal = ms.responses.value(0).properties.value(QStringLiteral("current-user-principal")).hrefs.value(0);
    if (r.failure == DavSession::Failure::None && r.status != 401 && principal.isEmpty()) {
        QUrl wellKnown = url.resolved(QUrl(QStringLiteral("/.well-known/caldav")));
        DavSession::Response w = propfind(session, wellKnown, PrincipalBody, 0);
        if (w.status == 207) {
            url = wellKnown;
            r = w;
            ms = Multistatus::parse(r.body);
            principal = ms.responses.value(0).properties.value(QStringLiteral("current-user-principal")).hrefs.value(0);
        }
    }
    if (failed(r, out))
        return out;
    if (principal.isEmpty()) {
        out.problem = Problem::NotCalDav;
        out.message = QObject::tr("That address does not lead to a calendar server.");
        return out;
    }
    QUrl principalUrl = url.resolved(QUrl(principal));
    r = propfind(session, principalUrl, HomeBody, 0);
    if (failed(r, out))
        return out;
    ms = Multistatus::parse(r.body);
    const QString home = ms.responses.value(0).properties.value(QStringLiteral("calendar-home-set")).hrefs.value(0);
    if (home.isEmpty()) {
        out.problem = Problem::NotCalDav;
        out.message = QObject::tr("The server keeps no calendars for this account.");
        return out;
    }
    out.home = principalUrl.resolved(QUrl(home));
    QUrl homeUrl = out.home;
    r = propfind(session, homeUrl, CalendarsBody, 1);
    if (failed(r, out))
        return out;
    ms = Multistatus::parse(r.body);
    bool anyCalendar = false;
    for (const Multistatus::Response &response : ms.responses) {
        if (!response.properties.value(QStringLiteral("resourcetype")).children.contains(QLatin1String("calendar")))
            continue;
        anyCalendar = true;
        Calendar calendar = calendarFrom(response, homeUrl);
        if (calendar.holdsTodos)
            out.calendars << calendar;
    }
    qCInfo(lcCalDav) << "found" << out.calendars.size() << "to-do calendars of" << (anyCalendar ? "some" : "none");
    return out;
}

Discovery CalDavAccount::describe(DavSession &session, const QUrl &calendar)
{
    Discovery out;
    QUrl url = calendar;
    const DavSession::Response r = propfind(session, url, CalendarsBody, 0);
    if (r.status == 404) {
        out.problem = Problem::Server;
        out.message = QObject::tr("The calendar is no longer on the server.  Choose another in Preferences ▸ Calendar Server.");
        return out;
    }
    if (failed(r, out))
        return out;
    const Multistatus ms = Multistatus::parse(r.body);
    if (ms.responses.isEmpty()) {
        out.problem = Problem::NotCalDav;
        out.message = QObject::tr("The calendar could not be read.");
        return out;
    }
    out.calendars << calendarFrom(ms.responses.first(), url);
    return out;
}

Discovery CalDavAccount::createCalendar(DavSession &session, const QUrl &home, const QString &name)
{
    Discovery out;
    QString base = home.toString();
    if (!base.endsWith(QLatin1Char('/')))
        base += QLatin1Char('/');
    const QUrl url(base + QUuid::createUuid().toString(QUuid::WithoutBraces) + QLatin1Char('/'));
    QByteArray escaped = name.toHtmlEscaped().toUtf8();
    const QByteArray body = R"(<?xml version="1.0" encoding="utf-8"?>
<c:mkcalendar xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav"><d:set><d:prop><d:displayname>)"
                            + escaped + R"(</d:displayname>
<c:supported-calendar-component-set><c:comp name="VTODO"/></c:supported-calendar-component-set></d:prop></d:set></c:mkcalendar>)";
    const DavSession::Response r = session.send("MKCALENDAR", url, body);
    if (r.status == 401 || r.failure != DavSession::Failure::None) {
        failed(r, out);
        return out;
    }
    if (r.status != 201) {
        out.problem = Problem::NoTodos;
        out.message = QObject::tr("The server would not make a to-do calendar (it answered %1).").arg(r.status);
        return out;
    }
    out.home = home;
    out.calendars << Calendar{url, name, true, true};
    return describe(session, url).problem == Problem::None ? out : describe(session, url);
}
