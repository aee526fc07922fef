#pragma once

#include "store/Assignment.h"

#include <QDBusConnection>
#include <QObject>
#include <QPointer>

class DesktopNotifications;
class MainWindow;
class QSystemTrayIcon;
class ReminderSchedule;

// Brings reminders to the running program: the schedule over the main window's assignments,
// shown through the desktop's notification service, whose actions act on the main window ("Open"
// shows and selects the assignment, "Mark Complete" completes it through the list's own editing,
// which saves). With "Keep Running in Tray" on, closing the main window with its title bar hides it
// behind an icon in the notification area instead of quitting, so reminders keep coming.
class ReminderDelivery : public QObject
{
    Q_OBJECT
public:
    ReminderDelivery(MainWindow *window, const QDBusConnection &bus);
    ~ReminderDelivery() override;

    // Once per run, when the main window first shows.
    static ReminderDelivery *install(MainWindow *window);

    ReminderSchedule &schedule() { return *m_schedule; }
    DesktopNotifications &notifications() { return *m_notifications; }
    QSystemTrayIcon *trayIcon() const { return m_tray; }

    void open(const AssignmentList &records);
    void complete(const AssignmentList &records);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void updateTray();
    void scheduleWithdrawal();
    // The row the record stands in now, or -1.
    int displayedRow(const AssignmentRef &record) const;

    QPointer<MainWindow> m_window;
    QObject *m_windowObject; // for comparing only, never dereferenced
    ReminderSchedule *m_schedule;
    DesktopNotifications *m_notifications;
    QSystemTrayIcon *m_tray = nullptr;
    bool m_withdrawalQueued = false;
};
