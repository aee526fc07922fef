#include "Application.h"

#include "QuitSignals.h"
#include "caldav/ui/CalDavSyncCommand.h"
#include "caldav/ui/CalendarServerPane.h"
#include "list/ui/MainMenus.h"
#include "list/ui/MainToolbar.h"
#include "list/ui/MainWindow.h"
#include "store/AssignmentsDocument.h"
#include "store/Preferences.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "reminders/ui/ReminderDelivery.h"
#include "reminders/ui/RemindersPane.h"
#include "support/TestHooks.h"
#include "support/ui/CrashReporter.h"
#include "sync/Syncing.h"
#include "sync/ui/SyncProgressSheet.h"
#include "sync/ui/SyncingPrefs.h"
#include "widgets/DialogPresenters.h"

#include <QApplication>
#include <QDialog>
#include <QLoggingCategory>
#include <QSessionManager>
#include <QThread>
#include <QTimer>

Q_LOGGING_CATEGORY(lcApp, "quillory.app")

namespace {
// Automation (tests, scripted checks): quit through the normal quit path as soon as the window is up.
const char *QuitAfterStartupVariable = "QUILLORY_QUIT_AFTER_STARTUP";
} // namespace

Application::Application()
    : m_sequence(*this)
{
}

Application::~Application() = default;

int Application::run()
{
    DialogPresenters::install();
    SyncProgressSheet::install();
    // The preferences window hosts the syncing pane without knowing its class.
    SyncingPrefs::registerWithPreferencesWindow();
    RemindersPane::registerWithPreferencesWindow();
    CalendarServerPane::registerWithPreferencesWindow();
    auto *signals_ = new QuitSignals(this);
    connect(signals_, &QuitSignals::quitRequested, this, [this](int signal) {
        qCInfo(lcApp) << "Quitting on signal" << signal;
        quitFromOutside();
    });
    // A session that ends asks first; nobody will be there to answer a question afterwards.
    connect(qApp, &QGuiApplication::commitDataRequest, this, [this](QSessionManager &) {
        qCInfo(lcApp) << "Quitting as the session ends";
        quitFromOutside();
    });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] {
        m_inEventLoop = false;
        if (m_calendarSync)
            m_calendarSync->syncBeforeQuit();
        m_sequence.terminate();
    });
    // "Quit" in a sync warning takes the normal quit path.
    Syncing::setQuitHandler([this] { quitFromSync(); });

    if (m_sequence.run() != StartupSequence::Outcome::Started) {
        // Restarting, or stopped during the download: the start never completed, so nothing is
        // uploaded, and there is nothing else to do on the way out.
        return 0;
    }
    if (qEnvironmentVariableIsSet(QuitAfterStartupVariable) || m_quitRequested)
        QTimer::singleShot(0, this, &Application::quit);
    // The crash tests make the running program die here, once it is fully up.
    QTimer::singleShot(0, this, &TestHooks::crashIfAsked);
    m_inEventLoop = true;
    return QApplication::exec();
}

void Application::quitFromSync()
{
    // The toolbar's upload asks from its own thread.
    if (QThread::currentThread() != thread()) {
        QMetaObject::invokeMethod(this, [this] { quitFromSync(); }, Qt::QueuedConnection);
        return;
    }
    m_quitRequested = true;
    quitSoon();
}

void Application::quitFromOutside()
{
    m_quitRequested = true;
    Alerts::cancelForQuit();
    // Every modal question open now (an alert, a file panel, a sheet) gets its cancel answer; the
    // code that asked it goes on from there, and the quit follows once it has.
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        auto *dialog = qobject_cast<QDialog *>(window);
        if (dialog && dialog->isVisible() && dialog->windowModality() != Qt::NonModal)
            dialog->done(QDialog::Rejected);
    }
    quitSoon();
}

void Application::quitSoon()
{
    // During start-up the event loop does not run yet: the start-up sees the request after the
    // download, or run() does once the window is up. During the quit path it is on its way already.
    if (m_inEventLoop)
        QTimer::singleShot(0, this, &Application::quit);
}

void Application::quit()
{
    // Closing the main window asks for the quit too; one quit is enough.
    if (m_quitting)
        return;
    m_quitting = true;
    // A crash report left unsent is not offered again.
    if (m_crashReporter)
        m_crashReporter->close();
    if (m_window)
        m_window->close();
    QApplication::quit();
    m_quitting = false;
}

MainWindow &Application::window()
{
    // Made on first use, so that every step finds the window whatever the order of the steps.
    if (!m_window) {
        // The one assignments document of this process, opened after the start-up repair: every
        // window and service that opens the data folder's file from now on shares it.
        if (!m_assignments)
            m_assignments = AssignmentsDocument::open();
        m_window = std::make_unique<MainWindow>();
        DialogPresenters::setParent(m_window.get());
        connect(m_window.get(), &MainWindow::quitRequested, this, &Application::quit);
    }
    return *m_window;
}

void Application::restartAndQuit()
{
    m_restarting = true;
    if (!Preferences::scheduleRestart(QCoreApplication::applicationFilePath(), QCoreApplication::applicationPid()))
        qCWarning(lcApp) << "Could not schedule the restart after moving the preferences file";
}

WindowStartupHooks &Application::windowSteps()
{
    return window().startupSteps();
}

void Application::checkCrashLog(const QString &lastStartup)
{
    // A window of the main window's, so that it stays in front of it once that comes up.
    auto *reporter = new CrashReporter(&window());
    reporter->setAttribute(Qt::WA_DeleteOnClose);
    if (reporter->checkForCrashLog(Paths::crashLog(), lastStartup))
        m_crashReporter = reporter;
    else
        delete reporter;
}

void Application::showMainWindow()
{
    MainWindow &main = window();
    main.show();
    main.raise();
    main.activateWindow();
    // The crash report came up first; it stays in sight on top of the main window, also where
    // no window manager keeps a window above its owner.
    if (m_crashReporter) {
        m_crashReporter->raise();
        m_crashReporter->activateWindow();
    }
    // Reminders start with the window: missed ones are shown now, once.
    ReminderDelivery::install(&main);
    // The calendar server: its command in the File menu and the toolbar, and a sync now.
    if (!m_calendarSync) {
        m_calendarSync = new CalDavSyncCommand(&main, &main);
        m_calendarSync->addTo(main.menus()->menus().value(0), main.menus()->action(MainMenus::Command::Quit),
                              main.mainToolbar()->itemAction(ToolbarCatalogue::CalendarSync));
        m_calendarSync->syncAtStart();
    }
    Q_EMIT mainWindowShown(&main);
}

void Application::downloadData()
{
    // A quit asked for before the download (at an earlier alert) skips it.
    if (!m_quitRequested)
        Syncing::sharedController()->downloadData();
    if (Syncing::sharedController()->quitWasChosen())
        m_quitRequested = true;
}

bool Application::startupMayGoOn()
{
    if (m_quitRequested)
        qCInfo(lcApp) << "Start-up stopped: quitting";
    return !m_quitRequested;
}

void Application::uploadData()
{
    Syncing::sharedController()->uploadData();
}
