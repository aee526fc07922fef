#pragma once

#include <QString>
#include <QStringList>

// What the start-up sequence asks of the rest of the program, in the order it asks. The main
// window, syncing and the crash reporter implement these; the defaults do nothing, so a test can
// record the order, and parts that do not exist yet simply have no step.
class StartupHooks
{
public:
    virtual ~StartupHooks() = default;
    // The earlier version's preferences file was moved: start again (the sequence then stops).
    virtual void restartAndQuit() {}
    virtual void downloadData() {}
    // Asked right after the download: false when the user chose to quit during it (or the program
    // was told to quit). Start-up then ends there, unfinished, so the quit path uploads nothing.
    virtual bool startupMayGoOn() { return true; }
    virtual void createLists() {}
    virtual void setUpDateFormatter(const QString &dateFormat) { Q_UNUSED(dateFormat) }
    // Toolbar, sidebar (open or closed, attached or not), placeholders, pull-down menus, buttons.
    virtual void setUpWindow(bool drawerOpen) { Q_UNUSED(drawerOpen) }
    virtual void setSortSelectors(const QStringList &selectors) { Q_UNUSED(selectors) }
    // The filter bar, with its view segment at `viewIndex`; then the format control's choice
    // (-1 when the preferences name none) and the main view switched to it.
    virtual void setUpFilterBar(int viewIndex) { Q_UNUSED(viewIndex) }
    virtual void selectFormat(int format) { Q_UNUSED(format) }
    virtual void finishWindowSetUp() {}
    virtual void updateWindowInformation() {}
    virtual void updateCalendar() {}
    virtual void checkCrashLog(const QString &lastStartup) { Q_UNUSED(lastStartup) }
    virtual void showMainWindow() {}
    virtual void uploadData() {}
};

// The order in which the program starts and stops.
class StartupSequence
{
public:
    enum class Outcome { Started, Restarting, Stopped };

    explicit StartupSequence(StartupHooks &hooks);

    // Runs every step up to showing the main window; afterwards
    // programDidSuccessfullyStartUp() is true, unless the program is restarting itself.
    Outcome run();

    // The quit path: uploads the data folder, but only after a successful start-up. Every change
    // was saved when it was made, so nothing else is saved here. Runs at most once.
    void terminate();

    bool programDidSuccessfullyStartUp() const { return m_started; }

    static const QStringList DefaultSortSelectors;

private:
    StartupHooks &m_hooks;
    bool m_started = false;
    bool m_terminated = false;
};
