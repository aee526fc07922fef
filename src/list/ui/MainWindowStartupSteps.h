#pragma once

#include "list/ListStartupSteps.h"

class MainWindow;

// The main window's start-up steps: the sidebar's placement, the filter bar, the format control
// and the first refresh. The program runs them from its start-up sequence; tests and benchmarks
// run the same sequence's window part over a window of their own.
class MainWindowStartupSteps : public ListStartupSteps
{
public:
    explicit MainWindowStartupSteps(MainWindow &window);

    void setUpWindow(bool drawerOpen) override;
    void selectFormat(int format) override;
    void updateWindowInformation() override;

private:
    MainWindow &m_window;
};
