#include "caldav/CalDavSync.h"

#include "caldav/CalDavLog.h"
#include "caldav/Multistatus.h"
#include "caldav/SyncState.h"
#include "caldav/TodoMapping.h"
#include "platform/Clock.h"
#include "platform/DateText.h"
#include "store/Assignment.h"

namespace {

const QByteArray EtagBody = R"(<?xml version="1.0" encoding="utf-8"?>
<d:propfind xmlns:d="DAV:"><d:prop><d:getetag/></d:prop></d:propfind>)";

QByteArray syncBody(const QString &token)
{
    return R"(<?xml version="1.0" encoding="utf-8"?>
<d:sync-collection xmlns:d="DAV:"><d:sync-token>)"
           + token.toHtmlEscaped().toUtf8()
           + R"(</d:sync-token><d:sync-level>1</d:sync-level><d:prop><d:getetag/></d:prop></d:sync-collection>)";
}

QString decodedPath(const QString &href) { return QUrl(href).path(QUrl::FullyDecoded); }

constexpr int MultigetBatch = 250;

// True when the server's version is the later one: LAST-MODIFIED against "Date Updated". A version
// without a date loses to one with a date; a tie goes to the server, whose copy others already see.
bool serverIsLater(const QVariantMap &local, const TodoMapping::Todo &remote)
{
    const auto updated = DateText::fromStoredForm(local.value(AssignmentKeys::DateUpdated).toString());
    if (!remote.lastModified)
        return !updated;
    if (!updated)
        return true;
    return remote.lastModified->toSecsSinceEpoch() >= updated->toSecsSinceEpoch();
}

} // namespace

CalDavSync::CalDavSync(DavSession &session, const QUrl &calendar, SyncState &state, bool offersSyncCollection)
    : m_session(session), m_calendar(calendar), m_state(state), m_syncCollection(offersSyncCollection)
{
    if (!m_calendar.path().endsWith(QLatin1Char('/')))
        m_calendar.setPath(m_calendar.path() + QLatin1Char('/'));
}

QUrl CalDavSync::urlFor(const QString &href) const
{
    QUrl url = m_calendar;
    url.setPath(href, QUrl::DecodedMode);
    return url;
}

QString CalDavSync::hrefForUid(const QString &uid) const
{
    // UIDs we make are letters, digits and dashes; another's UID is made safe for a path.
    QString name = uid;
    for (QChar &c : name)
        if (!c.isLetterOrNumber() && c != QLatin1Char('-') && c != QLatin1Char('_') && c != QLatin1Char('.'))
            c = QLatin1Char('_');
    return m_calendar.path(QUrl::FullyDecoded) + name + QStringLiteral(".ics");
}

bool CalDavSync::fail(const DavSession::Response &r, const QString &what)
{
    if (r.failure != DavSession::Failure::None)
        m_out.error = QObject::tr("The connection to the calendar server broke while %1 (%2).").arg(what, r.errorText);
    else if (r.status == 401 || r.status == 403)
        m_out.error = QObject::tr("The calendar server refused the user name or password.");
    else if (r.status == 404)
        m_out.error = QObject::tr("The calendar is no longer on the server.  Choose another in Preferences ▸ Calendar Server.");
    else if (r.status == 507)
        m_out.error = QObject::tr("The calendar server is out of space (507 Insufficient Storage) while %1.").arg(what);
    else
        m_out.error = QObject::tr("The calendar server answered %1 while %2.").arg(r.status).arg(what);
    qCWarning(lcCalDav) << m_out.error << r.body.left(400);
    return false;
}

bool CalDavSync::list(QHash<QString, QByteArray> &changed, QSet<QString> &removed, QString &newToken, bool full)
{
    const QString self = m_calendar.path(QUrl::FullyDecoded);
    DavSession::Response r;
    bool complete = full;
    if (m_syncCollection) {
        r = m_session.send("REPORT", m_calendar, syncBody(full ? QString() : m_state.syncToken), {{"Depth", "1"}});
        if (!full && r.failure == DavSession::Failure::None && (r.status == 403 || r.status == 409 || r.status == 400)) {
            // The server forgot our token: start again from a full listing.
            r = m_session.send("REPORT", m_calendar, syncBody(QString()), {{"Depth", "1"}});
            complete = true;
        }
    } else {
        r = m_session.send("PROPFIND", m_calendar, EtagBody, {{"Depth", "1"}});
        complete = true;
    }
    if (r.status != 207 || r.failure != DavSession::Failure::None)
        return fail(r, QObject::tr("listing the calendar"));
    const Multistatus ms = Multistatus::parse(r.body);
    if (!ms.valid)
        return fail(r, QObject::tr("listing the calendar"));
    newToken = ms.syncToken;
    for (const Multistatus::Response &response : ms.responses) {
        const QString href = decodedPath(response.href);
        if (href == self || href.endsWith(QLatin1Char('/')))
            continue;
        if (response.status == 404)
            removed.insert(href);
        else if (response.has(QStringLiteral("getetag")))
            changed.insert(href, response.text(QStringLiteral("getetag")).toUtf8());
    }
    if (complete) {
        for (const SyncState::Item &item : std::as_const(m_state.items))
            if (!changed.contains(item.href))
                removed.insert(item.href);
    }
    return true;
}

bool CalDavSync::fetch(const QStringList &hrefs, QList<Remote> &out)
{
    for (qsizetype start = 0; start < hrefs.size(); start += MultigetBatch) {
        QByteArray body = R"(<?xml version="1.0" encoding="utf-8"?>
<c:calendar-multiget xmlns:d="DAV:" xmlns:c="urn:ietf:params:xml:ns:caldav"><d:prop><d:getetag/><c:calendar-data/></d:prop>)";
        for (const QString &href : hrefs.mid(start, MultigetBatch))
            body += "<d:href>" + QString::fromUtf8(urlFor(href).path(QUrl::FullyEncoded).toUtf8()).toHtmlEscaped().toUtf8() + "</d:href>";
        body += "</c:calendar-multiget>";
        const DavSession::Response r = m_session.send("REPORT", m_calendar, body, {{"Depth", "1"}});
        if (r.status != 207 || r.failure != DavSession::Failure::None)
            return fail(r, QObject::tr("receiving assignments"));
        const Multistatus ms = Multistatus::parse(r.body);
        for (const Multistatus::Response &response : ms.responses)
            if (response.has(QStringLiteral("calendar-data")))
                out.append({decodedPath(response.href), response.text(QStringLiteral("getetag")).toUtf8(),
                            response.text(QStringLiteral("calendar-data")).toUtf8()});
    }
    return true;
}

CalDavSync::Outcome CalDavSync::run(const QList<QVariantMap> &records, FirstSync mode)
{
    m_out = {};
    const bool first = m_state.items.isEmpty() && m_state.syncToken.isEmpty();
    const auto finish = [this] {
        m_out.requests = m_session.requestCount();
        m_out.bytesSent = m_session.bytesSent();
        m_out.bytesReceived = m_session.bytesReceived();
        return m_out;
    };

    QHash<QString, QByteArray> changed;
    QSet<QString> removed;
    QString token;
    if (!list(changed, removed, token, first || m_state.syncToken.isEmpty()))
        return finish();

    QHash<QString, QString> uidByHref;
    for (auto it = m_state.items.cbegin(); it != m_state.items.cend(); ++it)
        uidByHref.insert(it->href, it.key());
    QStringList toFetch;
    for (auto it = changed.cbegin(); it != changed.cend(); ++it) {
        const QString uid = uidByHref.value(it.key());
        if (uid.isEmpty() || m_state.items.value(uid).etag != it.value())
            toFetch << it.key();
    }
    QList<Remote> remotes;
    if (!fetch(toFetch, remotes))
        return finish();

    QHash<QString, QVariantMap> local;
    QHash<QString, QString> projectUid;
    for (const QVariantMap &record : records) {
        const QString uid = record.value(CalDavKeys::Uid).toString();
        local.insert(uid, record);
        const QString project = record.value(AssignmentKeys::Project).toString();
        if (!project.isEmpty() && !projectUid.contains(project))
            projectUid.insert(project, uid);
    }

    QSet<QString> handled;
    QStringList toPut;
    QList<std::pair<QString, QString>> childOf; // (child, parent) told only by RELATED-TO
    const auto takeRemote = [&](const QString &uid, const TodoMapping::Todo &todo) {
        QVariantMap record = TodoMapping::merged(local.value(uid), todo);
        if (!todo.parentUid.isEmpty() && !record.contains(AssignmentKeys::Subproject))
            childOf.append({uid, todo.parentUid});
        m_out.upserts << record;
        local.insert(uid, record);
        ++m_out.received;
    };
    const auto conflict = [&](const QString &uid, const TodoMapping::Todo &todo) {
        const QVariantMap &mine = local[uid];
        const bool serverWins = serverIsLater(mine, todo);
        m_out.conflictNames << (serverWins ? mine : todo.fields).value(AssignmentKeys::Name).toString();
        m_out.conflictLosers << (serverWins ? mine : TodoMapping::merged(mine, todo));
        return serverWins;
    };

    for (const Remote &remote : std::as_const(remotes)) {
        const auto todo = TodoMapping::fromIcs(remote.ics);
        if (!todo || todo->uid.isEmpty()) {
            qCWarning(lcCalDav) << "left alone an item that is no to-do:" << remote.href;
            continue;
        }
        const QString uid = todo->uid;
        handled.insert(uid);
        const bool known = m_state.items.contains(uid);
        const QByteArray lastDigest = m_state.items.value(uid).digest;
        const QByteArray remoteDigest = TodoMapping::digest(TodoMapping::merged({}, *todo));
        m_state.items.insert(uid, {remote.href, remote.etag, remote.ics, remoteDigest});
        if (!local.contains(uid)) {
            if (first && mode == FirstSync::SendLocal) {
                const auto r = m_session.send("DELETE", urlFor(remote.href), {}, {{"If-Match", remote.etag}});
                if (!r.ok() && r.status != 404)
                    return fail(r, QObject::tr("removing an assignment")), finish();
                m_state.items.remove(uid);
                ++m_out.deletedOnServer;
            } else {
                // New on the server, or deleted here but changed there: the change wins.
                takeRemote(uid, *todo);
            }
            continue;
        }
        const QByteArray localDigest = TodoMapping::digest(local.value(uid));
        if (localDigest == remoteDigest)
            continue;
        const bool localChanged = !known || localDigest != lastDigest;
        const bool remoteChanged = !known || remoteDigest != lastDigest;
        if (!localChanged)
            takeRemote(uid, *todo);
        else if (!remoteChanged)
            toPut << uid;
        else if (first && mode == FirstSync::TakeServer)
            takeRemote(uid, *todo);
        else if (first && mode == FirstSync::SendLocal)
            toPut << uid;
        else if (conflict(uid, *todo))
            takeRemote(uid, *todo);
        else
            toPut << uid;
    }

    linkSubprojects(childOf, local, projectUid);

    for (const QString &href : std::as_const(removed)) {
        const QString uid = uidByHref.value(href);
        if (uid.isEmpty() || handled.contains(uid))
            continue;
        handled.insert(uid);
        const QByteArray lastDigest = m_state.items.value(uid).digest;
        m_state.items.remove(uid);
        if (!local.contains(uid))
            continue;
        if (TodoMapping::digest(local.value(uid)) != lastDigest) {
            toPut << uid; // changed here, deleted there: the change wins and goes back
        } else {
            m_out.removals << uid;
            local.remove(uid);
            ++m_out.deletedHere;
        }
    }

    for (const QVariantMap &record : records) {
        const QString uid = record.value(CalDavKeys::Uid).toString();
        if (handled.contains(uid) || !local.contains(uid))
            continue;
        if (!m_state.items.contains(uid)) {
            if (first && mode == FirstSync::TakeServer) {
                m_out.removals << uid;
                local.remove(uid);
                ++m_out.deletedHere;
            } else {
                toPut << uid;
            }
        } else if (TodoMapping::digest(record) != m_state.items.value(uid).digest) {
            toPut << uid;
        }
    }

    for (const QString &uid : std::as_const(toPut)) {
        const QVariantMap &record = local[uid];
        const QString parent = projectUid.value(record.value(AssignmentKeys::Subproject).toString());
        for (int attempt = 0; attempt < 2; ++attempt) {
            const bool known = m_state.items.contains(uid) && !m_state.items.value(uid).etag.isEmpty();
            const SyncState::Item item = m_state.items.value(uid);
            const QString href = item.href.isEmpty() ? hrefForUid(uid) : item.href;
            const QByteArray ics = TodoMapping::toIcs(local[uid], uid, parent, item.ics);
            const DavSession::Response r = m_session.send(
                "PUT", urlFor(href), ics,
                {known ? QPair<QByteArray, QByteArray>{"If-Match", item.etag} : QPair<QByteArray, QByteArray>{"If-None-Match", "*"}});
            if (r.ok() && r.status != 207) {
                m_state.items.insert(uid, {href, r.etag, ics, TodoMapping::digest(local[uid])});
                ++m_out.sent;
                break;
            }
            if (r.status != 412 || attempt > 0)
                return fail(r, QObject::tr("sending “%1”").arg(record.value(AssignmentKeys::Name).toString())), finish();
            // Someone wrote it since we looked, or an earlier sync sent it and stopped before it
            // could remember: read it and decide as for any change on the server.
            QList<Remote> current;
            if (!fetch({href}, current))
                return finish();
            const auto todo = current.isEmpty() ? std::nullopt : TodoMapping::fromIcs(current.first().ics);
            if (!todo) {
                m_state.items.remove(uid);
                continue;
            }
            const QByteArray remoteDigest = TodoMapping::digest(TodoMapping::merged({}, *todo));
            const QByteArray lastDigest = item.digest;
            m_state.items.insert(uid, {href, current.first().etag, current.first().ics, remoteDigest});
            if (remoteDigest == TodoMapping::digest(local[uid]))
                break;
            if (!lastDigest.isEmpty() && remoteDigest == lastDigest)
                continue; // only what we do not map changed there: send ours over it
            if (conflict(uid, *todo)) {
                takeRemote(uid, *todo);
                break;
            }
        }
    }

    // Deleted here since the last sync.
    const QStringList known = m_state.items.keys();
    for (const QString &uid : known) {
        if (local.contains(uid) || handled.contains(uid))
            continue;
        const SyncState::Item item = m_state.items.value(uid);
        const DavSession::Response r = m_session.send("DELETE", urlFor(item.href), {}, {{"If-Match", item.etag}});
        if (r.ok() || r.status == 404) {
            m_state.items.remove(uid);
            ++m_out.deletedOnServer;
        } else if (r.status == 412) {
            // Changed there after it went here: the change wins and comes back.
            QList<Remote> current;
            if (!fetch({item.href}, current))
                return finish();
            if (const auto todo = current.isEmpty() ? std::nullopt : TodoMapping::fromIcs(current.first().ics)) {
                m_state.items.insert(uid, {item.href, current.first().etag, current.first().ics,
                                           TodoMapping::digest(TodoMapping::merged({}, *todo))});
                takeRemote(uid, *todo);
            }
        } else {
            return fail(r, QObject::tr("removing an assignment")), finish();
        }
    }

    // Our own writes would come back in the next listing; take the token past them now when nobody
    // else wrote in between.
    if (m_syncCollection && !token.isEmpty() && (m_out.sent > 0 || m_out.deletedOnServer > 0)) {
        QHash<QString, QByteArray> after;
        QSet<QString> gone;
        const QString previous = m_state.syncToken;
        m_state.syncToken = token;
        QString later;
        if (list(after, gone, later, false)) {
            QHash<QString, QByteArray> etags;
            for (const SyncState::Item &item : std::as_const(m_state.items))
                etags.insert(item.href, item.etag);
            bool onlyOurs = true;
            for (auto it = after.cbegin(); it != after.cend(); ++it)
                onlyOurs = onlyOurs && etags.value(it.key()) == it.value();
            for (const QString &href : std::as_const(gone))
                onlyOurs = onlyOurs && !etags.contains(href);
            if (onlyOurs && !later.isEmpty())
                token = later;
        }
        m_out.error.clear();
        m_state.syncToken = previous;
    }
    m_state.syncToken = token;
    m_out.ok = true;
    return finish();
}

void CalDavSync::linkSubprojects(const QList<std::pair<QString, QString>> &childOf, QHash<QString, QVariantMap> &local,
                                 QHash<QString, QString> &projectUid)
{
    using namespace AssignmentKeys;
    const auto upsert = [&](const QVariantMap &record) {
        const QString uid = record.value(CalDavKeys::Uid).toString();
        local.insert(uid, record);
        const auto made = std::find_if(m_out.upserts.begin(), m_out.upserts.end(),
                                       [&](const QVariantMap &r) { return r.value(CalDavKeys::Uid) == uid; });
        if (made != m_out.upserts.end())
            *made = record;
        else
            m_out.upserts << record;
    };
    for (const auto &[child, parent] : childOf) {
        if (!local.contains(child) || !local.contains(parent) || child == parent)
            continue;
        QVariantMap parentRecord = local.value(parent);
        QVariantMap childRecord = local.value(child);
        // One level only: a subproject has no subprojects, and a project is nobody's subproject.
        if (parentRecord.contains(Subproject) || childRecord.contains(Project) || childRecord.contains(Subproject))
            continue;
        QString identifier = parentRecord.value(Project).toString();
        if (identifier.isEmpty()) {
            // A project is known by the moment it was made, in the stored date form; a second
            // made in the same second takes the next free one.
            QDateTime moment = Clock::now();
            while (projectUid.contains(identifier = DateText::toStoredForm(moment)))
                moment = moment.addSecs(1);
            parentRecord.insert(Project, identifier);
            projectUid.insert(identifier, parent);
            upsert(parentRecord);
        }
        childRecord.insert(Subproject, identifier);
        upsert(childRecord);
    }
}

int CalDavSync::countItems(DavSession &session, const QUrl &calendar)
{
    const DavSession::Response r = session.send("PROPFIND", calendar, EtagBody, {{"Depth", "1"}});
    if (r.status != 207)
        return -1;
    int count = 0;
    const QString self = calendar.path(QUrl::FullyDecoded);
    for (const Multistatus::Response &response : Multistatus::parse(r.body).responses) {
        const QString href = decodedPath(response.href);
        count += href != self && !href.endsWith(QLatin1Char('/')) ? 1 : 0;
    }
    return count;
}
