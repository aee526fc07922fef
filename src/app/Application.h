#pragma once

#include "store/StartupSequence.h"

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <memory>

class AssignmentsDocument;

class CrashReporter;
class MainWindow;

// The program's delegate: runs the start-up sequence, which builds and fills the main window, and
// runs the quit path when the program ends (Quit command, main window closed, SIGTERM or SIGINT).
class Application : public QObject, public StartupHooks
{
    Q_OBJECT
public:
    Application();
    ~Application() override;

    // Returns the exit code.
    int run();

    // StartupHooks
    void restartAndQuit() override;
    void downloadData() override;
    bool startupMayGoOn() override;
    WindowStartupHooks &windowSteps() override;
    void checkCrashLog(const QString &lastStartup) override;
    void showMainWindow() override;
    void uploadData() override;

Q_SIGNALS:
    // The main window is on screen; files handed to the program wait for this.
    void mainWindowShown(QWidget *window);

private:
    void quit();
    // A quit asked for from outside (SIGTERM, SIGINT, the session ending): open alerts and other
    // modal questions are closed with their cancel answer, later ones are not asked, and the
    // normal quit path runs, now or, during start-up, once start-up has stopped or finished.
    void quitFromOutside();
    // "Quit" chosen in a sync warning.
    void quitFromSync();
    void quitSoon();
    MainWindow &window();

    StartupSequence m_sequence;
    std::shared_ptr<AssignmentsDocument> m_assignments;
    std::unique_ptr<MainWindow> m_window;
    QPointer<CrashReporter> m_crashReporter;
    QPointer<class CalDavSyncCommand> m_calendarSync;
    bool m_restarting = false;
    bool m_quitRequested = false;
    bool m_inEventLoop = false;
    bool m_quitting = false;
};
