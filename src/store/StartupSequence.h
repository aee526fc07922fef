#pragma once

#include <QString>
#include <QStringList>

// The start-up steps that set up the main window from the preferences and fill it, in the order
// they are asked for. The program's main window implements them, and so does a list without a
// window (tests, benchmarks); the defaults do nothing, so a test can record the order.
class WindowStartupHooks
{
public:
    virtual ~WindowStartupHooks() = default;
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
};

// What the start-up sequence asks of the rest of the program around the window's steps, in the
// order it asks. Syncing and the crash reporter implement these; the defaults do nothing.
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
    // The main window's steps; asked for after the download and the store's repair, so the window
    // can be made only then.
    virtual WindowStartupHooks &windowSteps() = 0;
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

    // The part of run() after the preferences were repaired and before the crash-log check: the
    // window is set up from the preferences and filled. The program runs it from run(); a test or
    // benchmark that needs no download or repair runs it on its own, through the same code.
    static void setUpWindowFromPreferences(WindowStartupHooks &window);
    // The filter bar's view at start-up: the one after "Default View", wrapping to the first.
    static int startupViewIndex(qint64 defaultView);

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
