#include "reminders/DesktopNotifications.h"

#include "platform/Clock.h"
#include "reminders/ReminderRecords.h"
#include "reminders/ReminderTexts.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QLoggingCategory>

Q_LOGGING_CATEGORY(lcReminders, "quillory.reminders")

namespace {
// How long a notification stays before the service may hide it: long enough to be read (ms).
constexpr int ExpireTimeout = 30000;
} // namespace

DesktopNotifications::DesktopNotifications(QObject *parent)
    : DesktopNotifications(QDBusConnection::sessionBus(), parent)
{
}

DesktopNotifications::DesktopNotifications(const QDBusConnection &connection, QObject *parent)
    : QObject(parent)
    , m_connection(connection)
{
    // Only the service's own signals count: a connection watching the name's owner ignores the same
    // signal sent by anyone else on the bus.
    m_connection.connect(Service, Path, Interface, QStringLiteral("ActionInvoked"), this,
                         SLOT(actionInvoked(uint, QString)));
    m_connection.connect(Service, Path, Interface, QStringLiteral("NotificationClosed"), this,
                         SLOT(notificationClosed(uint, uint)));
}

void DesktopNotifications::show(const Reminder &reminder)
{
    if (!m_connection.isConnected()) {
        qCWarning(lcReminders) << "no session bus: a reminder was not shown";
        return;
    }
    if (m_bodyMarkup) {
        notify(reminder);
        return;
    }
    // Whether the body is read as markup decides whether "&" must be written "&amp;": the service
    // is asked once, and reminders wait for its answer.
    m_waiting.append(reminder);
    if (m_waiting.size() > 1)
        return;
    QDBusMessage ask = QDBusMessage::createMethodCall(Service, Path, Interface, QStringLiteral("GetCapabilities"));
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(ask), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
        watcher->deleteLater();
        QDBusPendingReply<QStringList> reply = *watcher;
        m_bodyMarkup = !reply.isError() && reply.value().contains(QStringLiteral("body-markup"));
        for (const Reminder &waiting : std::exchange(m_waiting, {}))
            notify(waiting);
    });
}

void DesktopNotifications::notify(const Reminder &reminder)
{
    const QDateTime now = Clock::now();
    const QString body = ReminderTexts::body(reminder, now);
    QDBusMessage call = QDBusMessage::createMethodCall(Service, Path, Interface, QStringLiteral("Notify"));
    const QStringList actions{DefaultAction, OpenLabel,     OpenAction,  OpenLabel,
                              CompleteAction, CompleteLabel, SnoozeAction, SnoozeLabel};
    const QVariantMap hints{{QStringLiteral("desktop-entry"), DesktopEntry},
                            {QStringLiteral("category"), QStringLiteral("x-quillory.reminder")},
                            {QStringLiteral("urgency"), QVariant::fromValue(uchar(1))}};
    call << AppName << uint(0) << DesktopEntry << ReminderTexts::title(reminder, now)
         << (*m_bodyMarkup ? body.toHtmlEscaped() : body) << actions << hints << ExpireTimeout;
    auto *watcher = new QDBusPendingCallWatcher(m_connection.asyncCall(call), this);
    const AssignmentList records = reminder.assignments;
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, records] {
        watcher->deleteLater();
        QDBusPendingReply<uint> reply = *watcher;
        if (reply.isError()) {
            qCWarning(lcReminders) << "the notification service refused a reminder:" << reply.error().message();
            return;
        }
        const uint id = reply.value();
        m_open.insert(id, records);
        Q_EMIT shown(id);
        const auto early = std::exchange(m_early, {});
        for (const auto &[earlyId, action] : early)
            actionInvoked(earlyId, action);
    });
}

void DesktopNotifications::actionInvoked(uint id, const QString &action)
{
    const auto found = m_open.constFind(id);
    if (found == m_open.constEnd()) {
        // Ours, but the answer to Notify is still on its way; or another program's notification.
        if (m_early.size() < 16)
            m_early.append({id, action});
        return;
    }
    const AssignmentList records = *found;
    if (action == OpenAction || action == DefaultAction)
        Q_EMIT openRequested(records);
    else if (action == CompleteAction)
        Q_EMIT completeRequested(records);
    else if (action == SnoozeAction)
        Q_EMIT snoozeRequested(records);
}

void DesktopNotifications::notificationClosed(uint id, uint)
{
    m_open.remove(id);
    m_early.removeIf([id](const auto &early) { return early.first == id; });
}

void DesktopNotifications::withdrawStale(const AssignmentList &current)
{
    if (m_open.isEmpty() || !m_connection.isConnected())
        return;
    QList<uint> stale;
    for (auto it = m_open.begin(); it != m_open.end(); ++it) {
        AssignmentList live;
        for (const AssignmentRef &record : std::as_const(it.value())) {
            const qsizetype index = ReminderRecords::indexOfCurrent(current, record);
            if (index >= 0 && !current[index]->isCompleted())
                live.append(current[index]);
        }
        if (live.isEmpty())
            stale.append(it.key());
        else
            it.value() = live;
    }
    for (uint id : std::as_const(stale)) {
        m_open.remove(id);
        QDBusMessage call = QDBusMessage::createMethodCall(Service, Path, Interface, QStringLiteral("CloseNotification"));
        call << id;
        m_connection.call(call, QDBus::NoBlock);
    }
}
