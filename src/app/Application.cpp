#include "Application.h"

#include "QuitSignals.h"
#include "store/Preferences.h"
#include "widgets/DialogPresenters.h"
#include "widgets/Icons.h"

#include <QApplication>
#include <QKeySequence>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QMenuBar>
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
    auto *signals_ = new QuitSignals(this);
    connect(signals_, &QuitSignals::quitRequested, this, [this](int signal) {
        qCInfo(lcApp) << "Quitting on signal" << signal;
        quit();
    });
    connect(qApp, &QCoreApplication::aboutToQuit, this, [this] { m_sequence.terminate(); });

    if (m_sequence.run() == StartupSequence::Outcome::Restarting)
        return 0;
    if (qEnvironmentVariableIsSet(QuitAfterStartupVariable))
        QTimer::singleShot(0, this, &Application::quit);
    return QApplication::exec();
}

void Application::quit()
{
    if (m_window)
        m_window->close();
    QApplication::quit();
}

void Application::restartAndQuit()
{
    m_restarting = true;
    if (!Preferences::scheduleRestart(QCoreApplication::applicationFilePath(), QCoreApplication::applicationPid()))
        qCWarning(lcApp) << "Could not schedule the restart after moving the preferences file";
}

void Application::updateWindowInformation()
{
    // The store part of the window refresh: reread, give missing priorities, save. An unreadable
    // file leaves the list empty and is not written.
    m_allAssignments = m_store.load().value_or(AssignmentList());
    AssignmentStore::addPrioritiesToAssignmentsWithoutThem(m_allAssignments);
    m_store.save(m_allAssignments);
}

void Application::showMainWindow()
{
    m_window = std::make_unique<QMainWindow>();
    m_window->setObjectName(QStringLiteral("mainWindow"));
    m_window->setWindowTitle(QStringLiteral("Quillory"));
    m_window->setAccessibleName(QStringLiteral("Quillory"));
    m_window->setWindowIcon(Icons::own(QStringLiteral("quillory")));
    QMenu *fileMenu = m_window->menuBar()->addMenu(tr("&File"));
    QAction *quitAction = fileMenu->addAction(Icons::themed(QStringLiteral("application-exit"), QString()), tr("&Quit"));
    quitAction->setShortcut(QKeySequence::Quit);
    connect(quitAction, &QAction::triggered, this, &Application::quit);
    m_window->resize(1000, 640);
    DialogPresenters::setParent(m_window.get());
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

void Application::uploadData()
{
    // Syncing hooks in here once the data folder can be uploaded.
}
