#pragma once

#include "store/StartupSequence.h"

#include <QObject>

#include <memory>

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
    void setUpWindow(bool drawerOpen) override;
    void setUpFilterBar(int viewIndex) override;
    void selectFormat(int format) override;
    void updateWindowInformation() override;
    void showMainWindow() override;
    void uploadData() override;

private:
    void quit();
    MainWindow &window();

    StartupSequence m_sequence;
    std::unique_ptr<MainWindow> m_window;
    bool m_restarting = false;
    bool m_quitChosenDuringStartup = false;
    bool m_quitting = false;
};
