#include "list/ui/CalendarSubscriptionRefresher.h"

#include "importing/CalendarFeedParser.h"
#include "importing/CalendarSubscriptions.h"
#include "importing/ImportLog.h"
#include "list/Controller.h"
#include "list/ui/CalendarImport.h"
#include "platform/Clock.h"

#include <QFutureWatcher>
#include <QPointer>
#include <QTimer>
#include <QUrl>
#include <QtConcurrent/QtConcurrentRun>

CalendarSubscriptionRefresher::CalendarSubscriptionRefresher(Controller &controller, QObject *parent)
    : QObject(parent)
    , m_controller(controller)
    , m_timer(new QTimer(this))
{
    m_timer->setInterval(CalendarSubscriptions::RefreshHours * 3600 * 1000);
    connect(m_timer, &QTimer::timeout, this, &CalendarSubscriptionRefresher::refreshAll);
    m_timer->start();
    // Once the event loop runs, so that start-up is not held up by the network.
    QTimer::singleShot(0, this, &CalendarSubscriptionRefresher::refreshAll);
}

void CalendarSubscriptionRefresher::refreshAll()
{
    for (const CalendarSubscriptions::Subscription &s : CalendarSubscriptions::load())
        fetch(s.url, s.etag, s.lastModified, false);
}

void CalendarSubscriptionRefresher::refresh(const QString &url)
{
    if (const std::optional<CalendarSubscriptions::Subscription> s = CalendarSubscriptions::find(url))
        fetch(s->url, s->etag, s->lastModified, false);
}

void CalendarSubscriptionRefresher::subscribe(const QString &url)
{
    fetch(url, {}, {}, true);
}

void CalendarSubscriptionRefresher::fetch(const QString &url, const QByteArray &etag, const QByteArray &lastModified,
                                          bool isNew)
{
    if (m_running.contains(url))
        return;
    m_running.insert(url);
    auto *watcher = new QFutureWatcher<UrlFetch::Conditional>(this);
    connect(watcher, &QFutureWatcher<UrlFetch::Conditional>::finished, this, [this, watcher, url, isNew] {
        const UrlFetch::Conditional answer = watcher->result();
        watcher->deleteLater();
        m_running.remove(url);
        fetched(url, answer, isNew);
    });
    const QByteArray encoded = url.toUtf8();
    watcher->setFuture(
        QtConcurrent::run([encoded, etag, lastModified] { return UrlFetch::fetchIfChanged(encoded, etag, lastModified); }));
}

void CalendarSubscriptionRefresher::fetched(const QString &url, const UrlFetch::Conditional &answer, bool isNew)
{
    using Outcome = UrlFetch::Conditional::Outcome;
    if (answer.outcome == Outcome::Failed) {
        qCWarning(lcImporting) << "calendar" << url << "not fetched:" << answer.error;
        Q_EMIT refreshed(url, {}, answer.error.isEmpty() ? QStringLiteral("The calendar could not be fetched.")
                                                           : answer.error);
        return;
    }
    if (answer.outcome == Outcome::NotModified) {
        CalendarSubscriptions::remember(url, answer.etag, answer.lastModified, Clock::now());
        Q_EMIT refreshed(url, {}, QString());
        return;
    }
    if (!isNew && !CalendarSubscriptions::find(url)) {
        // Removed while its fetch was under way: the student no longer wants anything from it.
        Q_EMIT refreshed(url, {}, QStringLiteral("The subscription was removed, so nothing was imported."));
        return;
    }
    QString error;
    const std::optional<FeedContents> contents = CalendarFeedParser::parse(answer.body, &error);
    if (!contents) {
        // The validators are not kept: the next check fetches the whole feed again.
        qCWarning(lcImporting) << "calendar" << url << "not read:" << error;
        Q_EMIT refreshed(url, {}, error);
        return;
    }
    if (isNew)
        CalendarSubscriptions::add(url);
    m_controller.commitPendingEdit();
    m_controller.updateWindowInformation();
    if (!m_controller.isStoreUsable()) {
        // Kept unread: once the store is whole again the next check brings the feed in.
        Q_EMIT refreshed(url, {}, QStringLiteral("The assignments file could not be read, so nothing was imported."));
        return;
    }
    const std::optional<CalendarSubscriptions::Subscription> known = CalendarSubscriptions::find(url);
    const QStringList imported = known ? known->importedUids : QStringList();
    // Feed addresses carry the student's private token (in the path or the query); records travel in
    // backups and syncs, so they name only the site the entry came from.
    const QString source = QUrl(url).host();
    const ImportPlan plan = ImportPlan::make(*contents, m_controller.allAssignments(),
                                             CalendarImport::courseNames(m_controller.coursesAndTextbooks()), source,
                                             QSet<QString>(imported.cbegin(), imported.cend()));
    const ImportPlan::Result result = CalendarImport::apply(m_controller, plan);
    qCInfo(lcImporting) << "calendar" << url << ":" << result.added << "added," << result.updated << "updated";
    CalendarSubscriptions::remember(url, answer.etag, answer.lastModified, Clock::now(), result.addedUids);
    Q_EMIT refreshed(url, result, QString());
}
