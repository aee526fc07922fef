#pragma once

#include "importing/ImportPlan.h"
#include "sync/UrlFetch.h"

#include <QObject>
#include <QSet>
#include <QString>

class Controller;
class QTimer;

// Keeps the subscribed course calendars current: at start and every few hours each feed is fetched
// on a worker thread (a conditional request, so an unchanged feed answers 304 and nothing more
// happens), and back on the interface thread a changed feed is planned and applied through the
// controller: new entries are added, changed ones updated unless the student edited them, nothing
// is ever removed. A feed that cannot be fetched or read changes nothing.
class CalendarSubscriptionRefresher : public QObject
{
    Q_OBJECT
public:
    explicit CalendarSubscriptionRefresher(Controller &controller, QObject *parent = nullptr);

    // Fetches every subscription now (those already under way are not asked twice).
    void refreshAll();
    // Fetches one kept subscription now (nothing for an address no longer kept).
    void refresh(const QString &url);
    bool isFetching(const QString &url) const { return m_running.contains(url); }
    // Fetches a new address; it is kept as a subscription once it answers with a readable calendar.
    void subscribe(const QString &url);
    bool isBusy() const { return !m_running.isEmpty(); }

Q_SIGNALS:
    // A fetch of `url` ended; `error` is empty when the feed was read (changed or not).
    void refreshed(const QString &url, const ImportPlan::Result &result, const QString &error);

private:
    void fetch(const QString &url, const QByteArray &etag, const QByteArray &lastModified, bool isNew);
    void fetched(const QString &url, const UrlFetch::Conditional &answer, bool isNew);

    Controller &m_controller;
    QTimer *m_timer;
    QSet<QString> m_running;
};
