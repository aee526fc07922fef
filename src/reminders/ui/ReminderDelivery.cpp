#include "reminders/ui/ReminderDelivery.h"

#include "list/AssignmentTableModel.h"
#include "list/Controller.h"
#include "list/Editing.h"
#include "list/ui/MainWindow.h"
#include "platform/PreferencesNotifier.h"
#include "platform/UserDefaults.h"
#include "reminders/DesktopNotifications.h"
#include "reminders/ReminderRecords.h"
#include "reminders/ReminderSchedule.h"
#include "reminders/ReminderSettings.h"
#include "widgets/Icons.h"

#include <QApplication>
#include <QCloseEvent>
#include <QIcon>
#include <QMenu>
#include <QSystemTrayIcon>

ReminderDelivery::ReminderDelivery(MainWindow *window, const QDBusConnection &bus)
    : QObject(window)
    , m_window(window)
    , m_windowObject(window)
{
    Controller *controller = window->controller();
    m_schedule = new ReminderSchedule([controller] { return controller->allAssignments(); }, this);
    m_notifications = new DesktopNotifications(bus, this);
    connect(m_schedule, &ReminderSchedule::reminderDue, m_notifications, &DesktopNotifications::show);
    connect(m_notifications, &DesktopNotifications::openRequested, this, &ReminderDelivery::open);
    connect(m_notifications, &DesktopNotifications::completeRequested, this, &ReminderDelivery::complete);
    connect(m_notifications, &DesktopNotifications::snoozeRequested, this,
            [this](const AssignmentList &records) { m_schedule->snooze(records); });

    // Every change to the list (an edit, a completion, a reload after another window wrote the
    // store) reaches the table model; the next reminder is worked out again after it.
    AssignmentTableModel *model = controller->tableModel();
    // A notification still on screen for an assignment completed or deleted meanwhile is taken back.
    const auto changed = [this] {
        m_schedule->scheduleRecompute();
        scheduleWithdrawal();
    };
    connect(model, &QAbstractItemModel::modelReset, this, changed);
    connect(model, &QAbstractItemModel::layoutChanged, this, changed);
    connect(model, &QAbstractItemModel::dataChanged, this, changed);
    connect(model, &QAbstractItemModel::rowsInserted, this, changed);
    connect(model, &QAbstractItemModel::rowsRemoved, this, changed);

    connect(UserDefaults::notifier(), &PreferencesNotifier::changed, this, [this](const QString &group, const QString &key) {
        if (group == ReminderSettings::Group && !ReminderSettings::isBookkeeping(key))
            updateTray();
    });
    window->installEventFilter(this);
    updateTray();
    m_schedule->start();
}

ReminderDelivery::~ReminderDelivery() = default;

ReminderDelivery *ReminderDelivery::install(MainWindow *window)
{
    if (auto *existing = window->findChild<ReminderDelivery *>(QString(), Qt::FindDirectChildrenOnly))
        return existing;
    return new ReminderDelivery(window, QDBusConnection::sessionBus());
}

void ReminderDelivery::scheduleWithdrawal()
{
    // Once per turn of the event loop, however many rows changed in it.
    if (m_withdrawalQueued || m_notifications->openCount() == 0)
        return;
    m_withdrawalQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_withdrawalQueued = false;
            if (m_window)
                m_notifications->withdrawStale(m_window->controller()->allAssignments());
        },
        Qt::QueuedConnection);
}

int ReminderDelivery::displayedRow(const AssignmentRef &record) const
{
    return int(ReminderRecords::indexOfCurrent(m_window->controller()->displayAssignments(), record));
}

void ReminderDelivery::open(const AssignmentList &records)
{
    if (!m_window)
        return;
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
    Controller *controller = m_window->controller();
    QList<int> rows;
    for (const AssignmentRef &record : records) {
        if (const int row = displayedRow(record); row >= 0)
            rows.append(row);
    }
    if (rows.size() == 1)
        controller->selectRowAlone(rows.first());
    else if (!rows.isEmpty())
        controller->selectRows(rows);
}

void ReminderDelivery::complete(const AssignmentList &records)
{
    if (!m_window)
        return;
    Controller *controller = m_window->controller();
    // Typing in the sidebar is kept before anything is replaced.
    controller->commitPendingEdit();
    for (const AssignmentRef &record : records) {
        // Found afresh each time: completing one sorts and replaces rows.
        if (const int row = displayedRow(record); row >= 0) {
            if (!controller->displayAssignments()[row]->isCompleted())
                controller->editing().markAssignmentAsCompleted(row);
            continue;
        }
        // Hidden by the view, the course filter or the search: completed all the same.
        controller->editing().completeRecord(ReminderRecords::indexOfCurrent(controller->allAssignments(), record));
    }
}

void ReminderDelivery::updateTray()
{
    const bool wanted = ReminderSettings::load().keepInTray && QSystemTrayIcon::isSystemTrayAvailable();
    if (!wanted) {
        delete m_tray;
        m_tray = nullptr;
        return;
    }
    if (m_tray)
        return;
    // The installed program icon, or the one compiled in where the program is not installed.
    m_tray = new QSystemTrayIcon(Icons::themed(QStringLiteral("com.brevandt.Quillory"), QStringLiteral("quillory")), this);
    m_tray->setToolTip(QStringLiteral("Quillory"));
    auto *menu = new QMenu;
    connect(m_tray, &QObject::destroyed, menu, &QObject::deleteLater);
    menu->addAction(QStringLiteral("Show Quillory"), this, [this] { open({}); });
    // The window's own close (not the title bar's) takes the normal quit path.
    menu->addAction(QIcon::fromTheme(QStringLiteral("application-exit")), QStringLiteral("Quit"), this, [this] {
        if (m_window)
            m_window->close();
    });
    m_tray->setContextMenu(menu);
    connect(m_tray, &QSystemTrayIcon::activated, this, [this](QSystemTrayIcon::ActivationReason reason) {
        if (reason == QSystemTrayIcon::Trigger || reason == QSystemTrayIcon::DoubleClick)
            open({});
    });
    m_tray->show();
}

bool ReminderDelivery::eventFilter(QObject *watched, QEvent *event)
{
    // Only the title bar's close (spontaneous) hides to the tray; the quit path closes the window
    // itself, and that close goes through as always.
    // The window is compared as a QObject: this filter also sees the events of the window's own
    // destruction, when it is no longer a MainWindow.
    if (event->type() == QEvent::Close && event->spontaneous() && m_tray && watched == m_windowObject) {
        m_window->controller()->commitPendingEdit();
        m_window->hide();
        event->ignore();
        return true;
    }
    return QObject::eventFilter(watched, event);
}
