#include "Application.h"

#include "QuitSignals.h"
#include "list/ui/MainWindow.h"
#include "store/Preferences.h"
#include "sync/Syncing.h"
#include "sync/ui/SyncProgressSheet.h"
#include "widgets/DialogPresenters.h"

#include <QApplication>
#include <QLoggingCategory>
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
    auto *signals_ = new QuitSignals(this);
    connect(signals_, &QuitSignals::quitRequested, this, [this](int signal) {
        qCInfo(lcApp) << "Quitting on signal" << signal;
        quit();
    });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { m_sequence.terminate(); });
    // "Quit" in a sync warning takes the normal quit path.
    Syncing::setQuitHandler([this] { QTimer::singleShot(0, this, &Application::quit); });

    if (m_sequence.run() == StartupSequence::Outcome::Restarting)
        return 0;
    if (qEnvironmentVariableIsSet(QuitAfterStartupVariable) || m_quitChosenDuringStartup)
        QTimer::singleShot(0, this, &Application::quit);
    return QApplication::exec();
}

void Application::quit()
{
    // Closing the main window asks for the quit too; one quit is enough.
    if (m_quitting)
        return;
    m_quitting = true;
    if (m_window)
        m_window->close();
    QApplication::quit();
    m_quitting = false;
}

MainWindow &Application::window()
{
    // Made on first use, so that every step finds the window whatever the order of the steps.
    if (!m_window) {
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

void Application::setUpWindow(bool drawerOpen)
{
    window().setUpWindow(drawerOpen);
}

void Application::setUpFilterBar(int viewIndex)
{
    window().setUpFilterBar(viewIndex);
}

void Application::selectFormat(int format)
{
    window().selectFormat(format);
}

void Application::updateWindowInformation()
{
    // Reads the store (an unreadable file leaves the list empty and is never written), gives missing
    // priorities, and fills the window.
    window().refresh();
}

void Application::showMainWindow()
{
    MainWindow &main = window();
    main.show();
    main.raise();
    main.activateWindow();
}

void Application::downloadData()
{
    Syncing::sharedController()->downloadData();
    m_quitChosenDuringStartup = Syncing::sharedController()->quitWasChosen();
}

void Application::uploadData()
{
    Syncing::sharedController()->uploadData();
}
