#pragma once

#include <QDBusConnection>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

class QProcess;

// A real notification daemon (dunst) for the tests, on its own X display (Xvfb) and its own
// session bus (dbus-daemon), all started here and stopped by their PIDs when the object goes.
// Every notification dunst receives is written by a dunst rule's script to a log the test reads
// back; `action` makes dunst itself invoke a notification's action.
class NotificationDaemon
{
public:
    struct Received {
        QString appName;
        QString summary;
        QString body;
        QString icon;
    };

    NotificationDaemon();
    ~NotificationDaemon();
    NotificationDaemon(const NotificationDaemon &) = delete;
    NotificationDaemon &operator=(const NotificationDaemon &) = delete;

    // `actionRules`: summary -> action name that dunst invokes as the notification's default action.
    // `markup`: whether dunst reads bodies as markup (and says so in its capabilities).
    bool start(const QList<std::pair<QString, QString>> &actionRules, QString *error, bool markup = true);
    QDBusConnection connection() const;
    QList<Received> received() const;
    // dunstctl, against this daemon.
    bool dunstctl(const QStringList &arguments, QString *output = nullptr) const;
    // Whether, within ten seconds, dunst shows exactly `count` notifications.
    bool waitForDisplayed(int count) const;
    QString display() const { return m_display; }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_xvfb;
    std::unique_ptr<QProcess> m_bus;
    std::unique_ptr<QProcess> m_dunst;
    QString m_display;
    QString m_address;
    QString m_connectionName;
    QProcessEnvironment m_environment;
};
