#include "list/ui/MainWindowCommands.h"

#include "list/HistoryRecorder.h"
#include "list/ui/MainWindow.h"

#include "calculators/ui/FinalsCalculator.h"
#include "calculators/ui/GPACalculator.h"
#include "exchange/Backup.h"
#include "exchange/ui/ExchangeCommands.h"
#include "list/AssignmentTableModel.h"
#include "list/Controller.h"
#include "list/Editing.h"
#include "list/FilterBarModel.h"
#include "list/ui/AboutDialog.h"
#include "list/ui/AssignmentTableView.h"
#include "list/ui/CalendarImport.h"
#include "list/ui/CalendarSubscriptionRefresher.h"
#include "list/ui/CalendarSubscriptionsWindow.h"
#include "list/ui/SubscribeCalendarSheet.h"
#include "list/ui/DetailsSidebar.h"
#include "list/ui/FilterBar.h"
#include "list/ui/FormatControl.h"
#include "list/ui/HelpWindow.h"
#include "list/ui/MainToolbar.h"
#include "list/ui/MainWindowStartupSteps.h"
#include "list/ui/MultipleAssignmentsSheet.h"
#include "list/ui/SidebarForm.h"
#include "list/ui/SidebarPlacement.h"
#include "list/ui/ToolbarCatalogue.h"
#include "list/ui/ToolbarCustomizationPalette.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"
#include "store/UndoNames.h"
#include "store/ui/CoursesAndTextbooks.h"
#include "store/ui/PreferencesWindow.h"
#include "sync/Syncing.h"
#include "sync/ui/SyncingPrefs.h"
#include "widgets/AnimatingTabView.h"
#include "calendar/ui/BVCalendarView.h"
#include "calendar/ui/CalendarController.h"
#include "widgets/DialogPresenters.h"
#include "widgets/FieldUndo.h"
#include "widgets/Icons.h"

#include <QCloseEvent>
#include <QItemSelectionModel>
#include <QMenu>
#include <QMenuBar>
#include <QSplitter>
#include <QVBoxLayout>

using Command = MainMenus::Command;

MainWindowCommands::MainWindowCommands(MainWindow &window)
    : QObject(&window)
    , m_window(window)
{
    FieldUndo::install();
}

void MainWindowCommands::undoOrRedo(bool undo)
{
    // Typing goes back in the field first, as it would with the field's own shortcut.
    if (FieldUndo::inField(undo))
        return;
    // A sidebar edit still in progress is kept first; it is then the step that goes.
    Controller *controller = m_window.controller();
    controller->commitPendingEdit();
    // A step may take back or bring again courses (an import's new ones): the filter bar and the
    // course choices follow the courses file.
    if (undo ? controller->undo() : controller->redo())
        controller->updateWindowInformation();
}

void MainWindowCommands::validateHistory()
{
    HistoryRecorder &history = m_window.controller()->history();
    const bool key = m_window.isWorkingWindowKey();
    QAction *undo = m_window.menus()->action(Command::Undo);
    QAction *redo = m_window.menus()->action(Command::Redo);
    const bool fieldUndo = FieldUndo::fieldWithOwnStep(true);
    const bool fieldRedo = FieldUndo::fieldWithOwnStep(false);
    undo->setText(fieldUndo ? FieldUndo::UndoTypingTitle : history.undoText());
    undo->setEnabled(fieldUndo || (key && history.canUndo()));
    redo->setText(fieldRedo ? FieldUndo::RedoTypingTitle : history.redoText());
    redo->setEnabled(fieldRedo || (key && history.canRedo()));
}

void MainWindowCommands::showWindow(QWidget *window)
{
    // What these windows change is on disk; the refresh when this window is active again reads it.
    window->show();
    window->raise();
    window->activateWindow();
}

void MainWindowCommands::showAbout()
{
    // One box at a time; asking again brings it to the front.
    if (!m_about) {
        m_about = new AboutDialog(&m_window);
        m_about->setAttribute(Qt::WA_DeleteOnClose);
    }
    showWindow(m_about);
}

AssignmentList MainWindowCommands::selectedRecords() const
{
    AssignmentList records;
    for (int row : m_window.controller()->selectedRows())
        records.append(m_window.controller()->displayAssignments().value(row));
    return records;
}

void MainWindowCommands::performToolbarItem(const QString &identifier)
{
    using namespace ToolbarCatalogue;
    static const QHash<QString, Command> commands{
        {AddItem, Command::Add},           {AddMultipleItem, Command::AddRecurring},
        {AddProjectItem, Command::AddProject}, {RemoveItem, Command::Delete},
        {EmailItem, Command::Email},       {ToggleDrawer, Command::ToggleSidebar},
        {Preferences, Command::Preferences}, {CoursesWindow, Command::CoursesWindow},
        {FinalsCalc, Command::FinalsCalculator}, {GPACalc, Command::GPACalculator},
        {ExportToiCal, Command::ExportToiCal}, {ExportToText, Command::ExportToText},
    };
    // A toolbar click takes no focus: the sidebar's edit in progress is handed over first.
    m_window.controller()->commitPendingEdit();
    if (identifier == SyncData) {
        // The toolbar's upload runs on a thread of its own; the window stays usable meanwhile.
        Syncing::sharedController()->syncData();
        return;
    }
    if (commands.contains(identifier))
        perform(commands.value(identifier));
}

void MainWindowCommands::perform(Command command)
{
    // Menu shortcuts leave the keyboard where it is: the sidebar's edit in progress is handed to
    // the list before any command acts on the list, exports it or uploads it.
    if (command == Command::Undo || command == Command::Redo) {
        undoOrRedo(command == Command::Undo);
        m_window.validateCommands();
        return;
    }
    m_window.controller()->commitPendingEdit();
    switch (command) {
    case Command::Undo:
    case Command::Redo:
        break;
    case Command::Add:
        m_window.controller()->editing().addAssignment();
        break;
    case Command::AddRecurring:
        addMultiple();
        break;
    case Command::AddProject:
        m_window.controller()->editing().addProject();
        break;
    case Command::Duplicate:
        m_window.controller()->editing().duplicateAssignment();
        break;
    case Command::Delete:
        if (!m_window.controller()->selectedRows().isEmpty())
            m_window.controller()->editing().deleteAssignment();
        break;
    case Command::Email:
        if (!m_window.controller()->selectedRows().isEmpty())
            ExchangeCommands::emailAssignment(selectedRecords());
        break;
    case Command::Find:
        if (m_window.mainToolbar()->isSearchItemVisible()) {
            m_window.mainToolbar()->searchField()->setFocus(Qt::ShortcutFocusReason);
            m_window.mainToolbar()->searchField()->selectAll();
        }
        break;
    case Command::ExportToiCal:
        ExchangeCommands::exportAssignmentsToiCal(&m_window, m_window.controller()->displayAssignments());
        break;
    case Command::ExportToText:
        if (!m_window.controller()->displayAssignments().isEmpty())
            ExchangeCommands::exportAssignmentsToText(&m_window, m_window.controller()->displayAssignments());
        break;
    case Command::ExportBackup:
        ExchangeCommands::exportToBackup();
        break;
    case Command::ImportBackup:
        ExchangeCommands::importFromBackup();
        break;
    case Command::ImportCalendar:
        CalendarImport::chooseAndPreview(&m_window, *m_window.controller());
        break;
    case Command::SubscribeCalendar:
        (new SubscribeCalendarSheet(&m_window, *m_window.findChild<CalendarSubscriptionRefresher *>()))->open();
        break;
    case Command::CalendarSubscriptions:
        (new CalendarSubscriptionsWindow(&m_window, *m_window.findChild<CalendarSubscriptionRefresher *>()))->show();
        break;
    case Command::Quit:
        Q_EMIT m_window.quitRequested();
        break;
    case Command::CustomizeToolbar:
        m_window.mainToolbar()->runCustomizationPalette();
        break;
    case Command::FormatList:
        m_window.mainToolbar()->setFormatSegment(0);
        m_window.setFormatView(0);
        break;
    case Command::FormatWeekly:
        m_window.mainToolbar()->setFormatSegment(1);
        m_window.setFormatView(1);
        break;
    case Command::FormatMonthly:
        m_window.mainToolbar()->setFormatSegment(2);
        m_window.setFormatView(2);
        break;
    case Command::ToggleSidebar:
        m_window.sidebarPlacement()->toggleAssignmentDrawer();
        break;
    case Command::DetachSidebar:
        m_window.sidebarPlacement()->detachSidebar();
        break;
    case Command::DetailsTab:
    case Command::NotesTab:
    case Command::SubprojectsTab:
        if (m_window.sidebarPlacement()->isAttached() && m_window.sidebarPlacement()->isCollapsed())
            m_window.sidebarPlacement()->toggleAssignmentDrawer();
        m_window.sidebar()->showTab(command == Command::DetailsTab ? SidebarForm::DetailsTab
                           : command == Command::NotesTab ? SidebarForm::NotesTab
                                                          : SidebarForm::SubprojectsTab);
        break;
    case Command::AssignmentsWindow:
        m_window.show();
        m_window.raise();
        m_window.activateWindow();
        break;
    case Command::GPACalculator:
        showWindow(GPACalculator::sharedController());
        break;
    case Command::FinalsCalculator:
        showWindow(FinalsCalculator::sharedController());
        break;
    case Command::About:
        showAbout();
        break;
    case Command::Help:
        showWindow(HelpWindow::sharedController());
        break;
    case Command::UploadData:
        Syncing::sharedController()->uploadData();
        break;
    case Command::DownloadData:
        if (!SyncingPrefs::confirmDownload())
            break;
        // The download replaced the files; the refresh reads them.
        Syncing::sharedController()->downloadData();
        m_window.controller()->history().clear(UndoNames::CantUndoAfterSync);
        m_window.refresh();
        break;
    case Command::Preferences:
        showWindow(PreferencesWindow::sharedController());
        break;
    case Command::CoursesWindow:
        showWindow(CoursesAndTextbooks::sharedController());
        break;
    case Command::GoToToday:
        changeCalendarDate(QStringLiteral("today"));
        break;
    case Command::NextMonth:
        changeCalendarDate(QStringLiteral(">"));
        break;
    case Command::PreviousMonth:
        changeCalendarDate(QStringLiteral("<"));
        break;
    }
    m_window.validateCommands();
}

void MainWindowCommands::changeCalendarDate(const QString &title)
{
    BVCalendarView *view = m_window.calendarController()->activeView();
    if (view && m_window.formattingTabView()->currentIndex() > 0)
        view->changeDateIncrementally(title);
}


void MainWindowCommands::addMultiple()
{
    if (!m_recurringSheet) {
        m_recurringSheet = new MultipleAssignmentsSheet(&m_window);
        // The series goes to the shared document, which the list follows at once; the name is
        // for this series only, whether or not the sheet added one.
        connect(m_recurringSheet, &QDialog::finished, &m_window, [this] {
            m_window.controller()->history().nameNextChange(QString());
        });
    }
    m_window.controller()->history().nameNextChange(HistoryRecorder::AddRecurringName);
    m_recurringSheet->showMultiplePanel();
}

void MainWindowCommands::showContextMenu(const QPoint &globalPosition, bool onRow)
{
    if (m_contextMenu)
        m_contextMenu->deleteLater();
    m_window.validateCommands();
    auto *menu = new QMenu(&m_window);
    menu->setObjectName(onRow ? QStringLiteral("rowContextMenu") : QStringLiteral("tableContextMenu"));
    menu->setAccessibleName(tr("Assignment commands"));
    if (onRow) {
        menu->addAction(m_window.menus()->action(Command::Duplicate));
        menu->addAction(m_window.menus()->action(Command::Delete));
        menu->addAction(m_window.menus()->action(Command::Email));
        menu->addSeparator();
        QAction *subproject = menu->addAction(tr("Add Subproject"));
        subproject->setObjectName(QStringLiteral("contextAddSubproject"));
        const AssignmentRef record = m_window.controller()->actualSelectedObject();
        subproject->setEnabled(record && record->isProject() && m_window.controller()->selectedRows().size() == 1);
        connect(subproject, &QAction::triggered, this, [this] { m_window.controller()->editing().addSubproject(); });
    } else {
        menu->addAction(m_window.menus()->action(Command::Add));
        menu->addAction(m_window.menus()->action(Command::AddRecurring));
        menu->addAction(m_window.menus()->action(Command::AddProject));
    }
    menu->addSeparator();
    menu->addAction(m_window.menus()->action(Command::ExportToiCal));
    menu->addAction(m_window.menus()->action(Command::ExportToText));
    m_contextMenu = menu;
    menu->popup(globalPosition);
}
