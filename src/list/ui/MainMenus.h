#pragma once

#include <QHash>
#include <QKeySequence>
#include <QObject>
#include <QString>

class QAction;
class QMainWindow;
class QMenu;
class QMenuBar;

// The main window's menu bar: every command with its standard shortcut, and the rules that enable
// each item just before a menu opens. An item's rule is found by its title, so items with the same
// title in any menu follow the same rule. The shortcuts act only while the main window (or a window
// the owner adds them to, such as the detached sidebar) is the active window.
class MainMenus : public QObject
{
    Q_OBJECT
public:
    // Command names: also the objectNames of the actions ("menu" + name).
    enum class Command {
        Add, AddRecurring, AddProject, Duplicate, Delete, Email, Find,
        ExportToiCal, ExportToText, ExportBackup, ImportBackup, UploadData, DownloadData, Quit,
        Preferences, CustomizeToolbar,
        FormatList, FormatWeekly, FormatMonthly, GoToToday, NextMonth, PreviousMonth,
        ToggleSidebar, DetachSidebar, DetailsTab, NotesTab, SubprojectsTab,
        AssignmentsWindow, CoursesWindow, GPACalculator, FinalsCalculator, About, Help,
        ImportCalendar, SubscribeCalendar, CalendarSubscriptions, Undo, Redo,
    };

    // Fixed titles of the items whose rules are looked up by title.
    static inline const QString DeleteTitle = QStringLiteral("Delete");
    static inline const QString EmailTitle = QStringLiteral("Email…");
    static inline const QString DuplicateTitle = QStringLiteral("Duplicate");
    static inline const QString DetailsTitle = QStringLiteral("Details");
    static inline const QString NotesTitle = QStringLiteral("Notes");
    static inline const QString SubprojectsTitle = QStringLiteral("Subprojects");
    static inline const QString ExportToiCalTitle = QStringLiteral("Export to iCal…");
    static inline const QString ExportToTextTitle = QStringLiteral("Export to Text…");
    static inline const QString ToggleSidebarTitle = QStringLiteral("Toggle Sidebar");
    static inline const QString DetachSidebarTitle = QStringLiteral("Detach Sidebar");
    static inline const QString AttachSidebarTitle = QStringLiteral("Attach Sidebar");
    static inline const QString AddTitle = QStringLiteral("Add");
    static inline const QString AddRecurringTitle = QStringLiteral("Add Recurring…");
    static inline const QString AddProjectTitle = QStringLiteral("Add Project");
    static inline const QString ListTitle = QStringLiteral("List");
    static inline const QString WeeklyTitle = QStringLiteral("Weekly");
    static inline const QString MonthlyTitle = QStringLiteral("Monthly");
    static inline const QString GoToTodayTitle = QStringLiteral("Go To Today");
    static inline const QString NextMonthTitle = QStringLiteral("Next Month");
    static inline const QString PreviousMonthTitle = QStringLiteral("Previous Month");
    static inline const QString HelpTitle = QStringLiteral("Quillory Help");
    static inline const QString AboutTitle = QStringLiteral("About Quillory");

    // What the rules look at.
    struct State {
        bool workingWindowKey = true;
        int selectedRows = 0;
        int rows = 0;
        int enabledSidebarTabs = 2;
        int formatIndex = 0;
        // The keyboard is in the sidebar's subprojects table, where Del belongs to the table.
        bool subprojectsHaveKeyboard = false;
    };

    MainMenus(QMainWindow *window, QMenuBar *bar);

    QAction *action(Command command) const { return m_actions.value(command); }
    QList<QMenu *> menus() const { return m_menus; }
    // Applies the rules to every item (the menus also do it before they open).
    void validate(const State &state);
    // Whether the rule for an item title enables it.
    static bool isEnabled(const QString &title, const State &state);
    // Commands that have nothing behind them yet stay disabled, with a tool tip saying so.
    void setUnavailable(Command command, const QString &why);
    // The window items read the user's labels.
    void applyLabels();

Q_SIGNALS:
    void triggered(MainMenus::Command command);
    // A menu is about to open: the owner supplies the state and calls validate().
    void aboutToValidate();

private:
    QAction *add(QMenu *menu, Command command, const QString &title, const QKeySequence &shortcut = {},
                 const QString &themeIcon = QString());

    QMainWindow *m_window;
    QList<QMenu *> m_menus;
    QHash<Command, QAction *> m_actions;
    QHash<Command, QString> m_unavailable;
};
