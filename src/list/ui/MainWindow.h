#pragma once

#include "list/ui/MainMenus.h"
#include "list/ui/MultipleAssignmentsSheet.h"
#include "store/Assignment.h"

#include <QMainWindow>
#include <QMenu>
#include <QPointer>

#include <memory>

class AboutDialog;
class AssignmentTableView;
class Controller;
class DetailsSidebar;
class FilterBar;
class MainToolbar;
class MainWindowCommands;
class MainWindowStartupSteps;
class MultipleAssignmentsSheet;
class QSplitter;
class AnimatingTabView;
class SidebarPlacement;
class WindowStartupHooks;

// The main window: toolbar, filter bar, the list (or a calendar) and the details sidebar, over the
// list's Controller. The window draws the controller's state and forwards the user's commands to
// it; whenever the window becomes active it runs the refresh, which rereads what other windows
// wrote to disk.
class MainWindow : public QMainWindow
{
    Q_OBJECT
public:
    static inline const QString WindowTitle = QStringLiteral("Quillory");
    static inline const QString NotAvailableYet = QStringLiteral("Not available yet");

    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // This window's steps of the start-up sequence.
    WindowStartupHooks &startupSteps();

    // The window refresh: reload, columns, sort, filter bar, labels and personal details.
    void refresh();

    // Commands.
    void perform(MainMenus::Command command);
    void performToolbarItem(const QString &identifier);
    void setFormatView(int segment);
    void addMultiple();
    // Validation of the menus and the toolbar against the current state.
    void validateCommands();

    Controller *controller() const { return m_controller; }
    MainToolbar *mainToolbar() const { return m_toolbar; }
    FilterBar *filterBar() const { return m_filterBar; }
    AssignmentTableView *assignmentTable() const { return m_table; }
    DetailsSidebar *sidebar() const { return m_sidebar; }
    MainMenus *menus() const { return m_menus; }
    SidebarPlacement *sidebarPlacement() const { return m_placement; }
    AnimatingTabView *formattingTabView() const { return m_formats; }
    class CalendarController *calendarController() const { return m_calendars; }
    QSplitter *splitView() const { return m_splitter; }
    MultipleAssignmentsSheet *recurringSheet() const;
    // The About box while it is open (for tests), or nullptr.
    AboutDialog *aboutDialog() const;
    // The contextual menu last built for the table (for tests), or nullptr.
    QMenu *lastContextMenu() const;
    bool isWorkingWindowKey() const;

Q_SIGNALS:
    void quitRequested();

protected:
    bool event(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void buildCentralArea();
    void connectController();
    MainMenus::State menuState() const;

    Controller *m_controller;
    MainToolbar *m_toolbar;
    MainMenus *m_menus;
    FilterBar *m_filterBar = nullptr;
    AssignmentTableView *m_table = nullptr;
    DetailsSidebar *m_sidebar = nullptr;
    QSplitter *m_splitter = nullptr;
    AnimatingTabView *m_formats = nullptr;
    class CalendarController *m_calendars = nullptr;
    SidebarPlacement *m_placement = nullptr;
    MainWindowCommands *m_commands;
    bool m_refreshing = false;
    std::unique_ptr<MainWindowStartupSteps> m_startupSteps;
};
