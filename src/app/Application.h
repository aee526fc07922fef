#pragma once

#include "store/AssignmentStore.h"
#include "store/StartupSequence.h"

#include <QObject>

#include <memory>

class QMainWindow;

// The program's delegate: runs the start-up sequence, owns the main window and runs the quit path
// when the program ends (Quit command, window closed, SIGTERM or SIGINT).
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
    void updateWindowInformation() override;
    void showMainWindow() override;
    void uploadData() override;

private:
    void quit();

    StartupSequence m_sequence;
    AssignmentStore m_store;
    AssignmentList m_allAssignments;
    std::unique_ptr<QMainWindow> m_window;
    bool m_restarting = false;
};
