#include "list/ui/MainWindowStartupSteps.h"

#include "list/ui/MainToolbar.h"
#include "list/ui/MainWindow.h"
#include "list/ui/SidebarPlacement.h"

MainWindowStartupSteps::MainWindowStartupSteps(MainWindow &window)
    : ListStartupSteps(*window.controller())
    , m_window(window)
{
}

void MainWindowStartupSteps::setUpWindow(bool drawerOpen)
{
    m_window.sidebarPlacement()->setDrawerOpen(drawerOpen);
    m_window.sidebarPlacement()->detachSidebarAtStartup();
}

void MainWindowStartupSteps::selectFormat(int format)
{
    if (format >= 0 && format <= 2)
        m_window.mainToolbar()->setFormatSegment(format);
    m_window.setFormatView(m_window.mainToolbar()->formatSegment());
}

void MainWindowStartupSteps::updateWindowInformation()
{
    // Reads the store (an unreadable file leaves the list empty and is never written), gives
    // missing priorities, and fills the window.
    m_window.refresh();
}
