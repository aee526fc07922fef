#pragma once

#include "reminders/Reminder.h"

#include <QDBusConnection>
#include <QHash>
#include <QObject>

#include <optional>

// Shows reminders through the desktop's notification service (org.freedesktop.Notifications on the
// session bus: GNOME Shell, Plasma, dunst, xfce4-notifyd ...), with three actions: "Open",
// "Mark Complete" and "Snooze 1 hour". Clicking the notification itself opens, as "Open" does.
//
// Calls are asynchronous, so a service that hangs never holds up the window. Without a service
// the reminder is logged and dropped.
class DesktopNotifications : public QObject
{
    Q_OBJECT
public:
    static inline const QString Service = QStringLiteral("org.freedesktop.Notifications");
    static inline const QString Path = QStringLiteral("/org/freedesktop/Notifications");
    static inline const QString Interface = QStringLiteral("org.freedesktop.Notifications");
    static inline const QString AppName = QStringLiteral("Quillory");
    static inline const QString DesktopEntry = QStringLiteral("com.brevandt.Quillory");

    static inline const QString OpenAction = QStringLiteral("open");
    static inline const QString CompleteAction = QStringLiteral("complete");
    static inline const QString SnoozeAction = QStringLiteral("snooze");
    static inline const QString DefaultAction = QStringLiteral("default");
    static inline const QString OpenLabel = QStringLiteral("Open");
    static inline const QString CompleteLabel = QStringLiteral("Mark Complete");
    static inline const QString SnoozeLabel = QStringLiteral("Snooze 1 hour");

    explicit DesktopNotifications(QObject *parent = nullptr);
    DesktopNotifications(const QDBusConnection &connection, QObject *parent = nullptr);

    // Hands the reminder to the service.
    void show(const Reminder &reminder);
    // Notifications shown and not yet closed, by the service's id.
    int openCount() const { return int(m_open.size()); }
    // Takes back every notification shown whose assignments are all completed or gone from
    // `current` (the list as it is now); the others follow their records' current versions.
    void withdrawStale(const AssignmentList &current);

Q_SIGNALS:
    // The service answered a show with its id.
    void shown(uint id);
    void openRequested(const AssignmentList &records);
    void completeRequested(const AssignmentList &records);
    void snoozeRequested(const AssignmentList &records);

private Q_SLOTS:
    void actionInvoked(uint id, const QString &action);
    void notificationClosed(uint id, uint reason);

private:
    void notify(const Reminder &reminder);

    QDBusConnection m_connection;
    std::optional<bool> m_bodyMarkup;
    QList<Reminder> m_waiting;
    QHash<uint, AssignmentList> m_open;
    // Actions can arrive before the answer to Notify has: they wait for it.
    QList<std::pair<uint, QString>> m_early;
};
