#include "list/ui/MainMenus.h"

#include "store/Labels.h"
#include "store/PreferenceKeys.h"
#include "widgets/FieldUndo.h"
#include "widgets/Icons.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

using namespace PreferenceKeys;

namespace {
// Desktops without a preferences shortcut of their own get the one most programs use.
QKeySequence preferencesShortcut()
{
    const QKeySequence standard(QKeySequence::Preferences);
    return standard.isEmpty() ? QKeySequence(Qt::CTRL | Qt::Key_Comma) : standard;
}
} // namespace

MainMenus::MainMenus(QMainWindow *window, QMenuBar *bar)
    : QObject(window)
    , m_window(window)
{
    bar->setObjectName(QStringLiteral("mainMenuBar"));
    bar->setAccessibleName(tr("Menu bar"));

    QMenu *file = bar->addMenu(tr("&File"));
    add(file, Command::Add, AddTitle, QKeySequence::New, QStringLiteral("list-add"));
    add(file, Command::AddRecurring, AddRecurringTitle, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_N));
    add(file, Command::AddProject, AddProjectTitle, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_N));
    file->addSeparator();
    add(file, Command::ExportToiCal, ExportToiCalTitle, QKeySequence(Qt::CTRL | Qt::Key_E));
    add(file, Command::ExportToText, ExportToTextTitle, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_E));
    add(file, Command::Email, EmailTitle, QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_M), QStringLiteral("mail-send"));
    file->addSeparator();
    add(file, Command::ExportBackup, tr("Export Backup…"));
    add(file, Command::ImportBackup, tr("Import Backup…"));
    add(file, Command::ImportCalendar, tr("Import Calendar…"));
    add(file, Command::SubscribeCalendar, tr("Subscribe to Course Calendar…"));
    add(file, Command::CalendarSubscriptions, tr("Course Calendar Subscriptions…"));
    file->addSeparator();
    add(file, Command::UploadData, tr("Upload Data"));
    add(file, Command::DownloadData, tr("Download Data"));
    file->addSeparator();
    add(file, Command::Quit, tr("Quit"), QKeySequence::Quit, QStringLiteral("application-exit"));

    QMenu *edit = bar->addMenu(tr("&Edit"));
    // The titles name the step they take back; the owner sets them from the history.
    add(edit, Command::Undo, QStringLiteral("Undo"), QKeySequence::Undo, QStringLiteral("edit-undo"));
    QAction *redo = add(edit, Command::Redo, QStringLiteral("Redo"), QKeySequence::Redo, QStringLiteral("edit-redo"));
    redo->setShortcuts(FieldUndo::redoKeys());
    edit->addSeparator();
    add(edit, Command::Duplicate, DuplicateTitle, QKeySequence(Qt::CTRL | Qt::Key_D));
    add(edit, Command::Delete, DeleteTitle, QKeySequence::Delete, QStringLiteral("edit-delete"));
    edit->addSeparator();
    add(edit, Command::Find, tr("Find"), QKeySequence::Find, QStringLiteral("edit-find"));
    edit->addSeparator();
    add(edit, Command::Preferences, tr("Preferences…"), preferencesShortcut(), QStringLiteral("preferences-system"));

    QMenu *view = bar->addMenu(tr("&View"));
    add(view, Command::FormatList, ListTitle, QKeySequence(Qt::CTRL | Qt::Key_1));
    add(view, Command::FormatWeekly, WeeklyTitle, QKeySequence(Qt::CTRL | Qt::Key_2));
    add(view, Command::FormatMonthly, MonthlyTitle, QKeySequence(Qt::CTRL | Qt::Key_3));
    view->addSeparator();
    add(view, Command::GoToToday, GoToTodayTitle, QKeySequence(Qt::CTRL | Qt::Key_T));
    add(view, Command::NextMonth, NextMonthTitle, QKeySequence(Qt::CTRL | Qt::Key_BracketRight));
    add(view, Command::PreviousMonth, PreviousMonthTitle, QKeySequence(Qt::CTRL | Qt::Key_BracketLeft));
    view->addSeparator();
    add(view, Command::ToggleSidebar, ToggleSidebarTitle, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_S));
    add(view, Command::DetachSidebar, DetachSidebarTitle);
    QMenu *sidebar = view->addMenu(tr("Sidebar Tab"));
    add(sidebar, Command::DetailsTab, DetailsTitle, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_1));
    add(sidebar, Command::NotesTab, NotesTitle, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_2));
    add(sidebar, Command::SubprojectsTab, SubprojectsTitle, QKeySequence(Qt::CTRL | Qt::ALT | Qt::Key_3));
    view->addSeparator();
    add(view, Command::CustomizeToolbar, tr("Customize Toolbar…"));

    QMenu *windows = bar->addMenu(tr("&Window"));
    add(windows, Command::AssignmentsWindow, QString(), QKeySequence(Qt::CTRL | Qt::Key_0));
    add(windows, Command::CoursesWindow, QString(), QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_C));
    windows->addSeparator();
    add(windows, Command::GPACalculator, tr("GPA Calculator"));
    add(windows, Command::FinalsCalculator, tr("Finals Calculator"));

    QMenu *help = bar->addMenu(tr("&Help"));
    add(help, Command::Help, HelpTitle, QKeySequence::HelpContents, QStringLiteral("help-contents"));
    help->addSeparator();
    QAction *about = add(help, Command::About, AboutTitle, {}, QStringLiteral("help-about"));
    about->setMenuRole(QAction::AboutRole);

    m_menus = {file, edit, view, sidebar, windows, help};
    for (QMenu *menu : std::as_const(m_menus)) {
        menu->setObjectName(QStringLiteral("menu") + menu->title().remove(QLatin1Char('&')).remove(QLatin1Char(' ')));
        menu->setAccessibleName(menu->title().remove(QLatin1Char('&')));
        menu->setToolTipsVisible(true);
        connect(menu, &QMenu::aboutToShow, this, &MainMenus::aboutToValidate);
    }
    applyLabels();
}

QAction *MainMenus::add(QMenu *menu, Command command, const QString &title, const QKeySequence &shortcut,
                        const QString &themeIcon)
{
    QAction *action = menu->addAction(title);
    action->setObjectName(QStringLiteral("menuCommand%1").arg(int(command)));
    if (!shortcut.isEmpty())
        action->setShortcut(shortcut);
    if (!themeIcon.isEmpty())
        action->setIcon(QIcon::fromTheme(themeIcon));
    // A shortcut typed in another window (the courses window, a calculator) is that window's: the
    // list's commands answer only in the main window and the windows it lends them to. Commands that
    // only open a window or quit work from every window, as the other windows have no menus.
    static const QList<Command> everywhere{Command::Quit, Command::Preferences, Command::AssignmentsWindow,
                                           Command::CoursesWindow, Command::GPACalculator,
                                           Command::FinalsCalculator, Command::About,
                                           Command::Help};
    action->setShortcutContext(everywhere.contains(command) ? Qt::ApplicationShortcut : Qt::WindowShortcut);
    m_window->addAction(action);
    connect(action, &QAction::triggered, this, [this, command] { Q_EMIT triggered(command); });
    m_actions.insert(command, action);
    return action;
}

void MainMenus::applyLabels()
{
    m_actions.value(Command::AssignmentsWindow)->setText(Labels::plural(LabelKeys::Assignment)
                                                         + QStringLiteral(" Window"));
    m_actions.value(Command::CoursesWindow)->setText(Labels::plural(LabelKeys::Course) + QStringLiteral(" and ")
                                                     + Labels::plural(LabelKeys::Textbook) + QStringLiteral(" Window"));
}

bool MainMenus::isEnabled(const QString &title, const State &state)
{
    const bool key = state.workingWindowKey;
    if (title == DeleteTitle)
        return key && state.selectedRows > 0 && !state.subprojectsHaveKeyboard;
    if (title == EmailTitle || title == DuplicateTitle || title == DetailsTitle
        || title == NotesTitle)
        return key && state.selectedRows > 0;
    if (title == SubprojectsTitle)
        return key && state.selectedRows > 0 && state.enabledSidebarTabs == 3;
    if (title == ExportToiCalTitle || title == ExportToTextTitle)
        return key && state.rows > 0;
    if (title == ToggleSidebarTitle || title == DetachSidebarTitle || title == AttachSidebarTitle || title == AddTitle
        || title == AddRecurringTitle || title == AddProjectTitle || title == ListTitle || title == WeeklyTitle
        || title == MonthlyTitle)
        return key;
    if (title == GoToTodayTitle || title == NextMonthTitle || title == PreviousMonthTitle)
        return key && state.formatIndex > 0;
    return true;
}

void MainMenus::setUnavailable(Command command, const QString &why)
{
    m_unavailable.insert(command, why);
    if (QAction *action = m_actions.value(command)) {
        action->setEnabled(false);
        action->setToolTip(why);
        action->setStatusTip(why);
    }
}

void MainMenus::validate(const State &state)
{
    for (auto it = m_actions.cbegin(); it != m_actions.cend(); ++it)
        it.value()->setEnabled(!m_unavailable.contains(it.key()) && isEnabled(it.value()->text(), state));
}
