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
#include "list/ui/MainWindowCommands.h"
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
#include "widgets/Icons.h"

#include <QApplication>
#include <QCloseEvent>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QSplitter>
#include <QVBoxLayout>

using Command = MainMenus::Command;
using namespace PreferenceKeys;

namespace {
constexpr QSize InitialSize{1060, 660};
} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_controller(new Controller(this))
    , m_toolbar(new MainToolbar(this))
    , m_menus(new MainMenus(this, menuBar()))
    , m_commands(new MainWindowCommands(*this))
{
    setObjectName(QStringLiteral("mainWindow"));
    setAccessibleName(WindowTitle);
    setWindowTitle(WindowTitle);
    setWindowIcon(Icons::own(QStringLiteral("quillory")));
    setUnifiedTitleAndToolBarOnMac(true);
    addToolBar(Qt::TopToolBarArea, m_toolbar);
    m_controller->setToolbar(m_toolbar);
    buildCentralArea();
    connectController();
    resize(InitialSize);
    validateCommands();
    new CalendarSubscriptionRefresher(*m_controller, this); // keeps subscribed course calendars current
}

MainWindow::~MainWindow()
{
    // Focus moves while the widgets go; the application must not call back into this window then.
    disconnect(qApp, nullptr, this, nullptr);
    // The controller outlives the widgets that registered with it; it must not call them.
    m_controller->setSidebar(nullptr);
    m_controller->setToolbar(nullptr);
    m_controller->setCalendar(nullptr);
}

void MainWindow::buildCentralArea()
{
    m_filterBar = new FilterBar(&m_controller->filterBar());
    m_table = new AssignmentTableView(m_controller);
    m_formats = new AnimatingTabView;
    m_formats->setObjectName(QStringLiteral("formattingTabView"));
    m_formats->setAccessibleName(tr("Assignments view"));
    m_formats->addTab(m_table, FormatControl::ListTitle);
    // The weekly and monthly calendars show the same displayed assignments as the list.
    // Each main window has its own pair (the program has one window; tests make many).
    m_calendars = new CalendarController(this);
    m_calendars->setController(m_controller);
    m_controller->setCalendar(m_calendars);
    m_formats->addTab(m_calendars->weeklyView(), FormatControl::WeeklyTitle);
    m_formats->addTab(m_calendars->monthlyView(), FormatControl::MonthlyTitle);
    connect(m_calendars, &CalendarController::openAssignmentRequested, this, [this] {
        m_placement->setDrawerOpen(true);
        m_sidebar->focusName();
    });

    auto *mainView = new QWidget;
    mainView->setObjectName(QStringLiteral("mainView"));
    auto *mainLayout = new QVBoxLayout(mainView);
    mainLayout->setContentsMargins(0, 0, 0, 0);
    mainLayout->setSpacing(0);
    mainLayout->addWidget(m_filterBar);
    mainLayout->addWidget(m_formats, 1);

    m_sidebar = new DetailsSidebar(m_controller);
    auto *holder = new QWidget;
    holder->setObjectName(QStringLiteral("drawerSplitSubview"));
    auto *holderLayout = new QVBoxLayout(holder);
    holderLayout->setContentsMargins(0, 0, 0, 0);
    holderLayout->addWidget(m_sidebar);

    m_splitter = new QSplitter(Qt::Horizontal);
    m_splitter->setObjectName(QStringLiteral("mainSplitView"));
    m_splitter->setAccessibleName(tr("List and sidebar"));
    m_splitter->addWidget(mainView);
    m_splitter->addWidget(holder);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 0);
    setCentralWidget(m_splitter);
    m_placement = new SidebarPlacement(m_splitter, holder, m_sidebar, this);
    m_splitter->setSizes({InitialSize.width() - 310, 310});

    connect(m_placement, &SidebarPlacement::attachmentChanged, this, [this](bool attached) {
        m_menus->action(Command::DetachSidebar)->setText(attached ? MainMenus::DetachSidebarTitle
                                                                  : MainMenus::AttachSidebarTitle);
    });
    connect(m_toolbar, &MainToolbar::itemTriggered, this, &MainWindow::performToolbarItem);
    connect(m_toolbar, &MainToolbar::searchTextEdited, this, [this] { m_controller->controlTextDidChange(true); });
    connect(m_toolbar, &MainToolbar::searchScopeChosen, m_controller, &Controller::setSearchSpecifications);
    connect(m_toolbar, &MainToolbar::formatChosen, this, &MainWindow::setFormatView);
    connect(m_toolbar, &MainToolbar::customizationFinished, this, &MainWindow::validateCommands);
    // The detached sidebar is a working window too: the list's shortcuts answer there.
    m_placement->panel()->addActions(actions());
    connect(m_menus, &MainMenus::triggered, this, [this](Command command) {
        // Checked again at the moment it comes: only while a working window is in front.
        validateCommands();
        if (m_menus->action(command)->isEnabled())
            perform(command);
    });
    connect(m_menus, &MainMenus::aboutToValidate, this, &MainWindow::validateCommands);
    connect(m_table, &AssignmentTableView::addRequested, this, [this] { perform(Command::Add); });
    connect(m_table, &AssignmentTableView::contextMenuWanted, m_commands, &MainWindowCommands::showContextMenu);
    connect(m_filterBar, &FilterBar::overflowMenuUsed, m_controller, &Controller::updateFilterBar);
    connect(m_filterBar, &FilterBar::widthChanged, m_controller, &Controller::updateFilterBar);
}

void MainWindow::connectController()
{
    connect(m_controller->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &MainWindow::validateCommands);
    connect(m_controller->tableModel(), &QAbstractItemModel::modelReset, this, &MainWindow::validateCommands);
    connect(m_controller, &Controller::labelsChanged, this, [this] {
        m_menus->applyLabels();
        validateCommands();
    });
    // Which window is in front, and where the keyboard is, decide what the commands may do.
    // An import replaces the files on disk whoever started it (the menu, a file handed over by a
    // second start); the list rereads them at once rather than at the next activation.
    connect(Backup::sharedController(), &Backup::dataFilesReplaced, this, [this] {
        // What the backup brought is no step of this list's history: nothing before it can be undone.
        m_controller->history().clear(UndoNames::CantUndoAfterImport);
        refresh();
    });
    connect(&m_controller->history(), &HistoryRecorder::changed, this, &MainWindow::validateCommands);
    connect(qApp, &QApplication::focusChanged, this, &MainWindow::validateCommands);
    connect(qApp, &QGuiApplication::focusWindowChanged, this, &MainWindow::validateCommands);
    // The program losing the focus hands the sidebar's edit in progress to the list.
    connect(qApp, &QGuiApplication::applicationStateChanged, this, [this](Qt::ApplicationState state) {
        if (state != Qt::ApplicationActive)
            m_sidebar->commitEdit();
    });
}

// --- start-up ----------------------------------------------------------------------------------------

WindowStartupHooks &MainWindow::startupSteps()
{
    if (!m_startupSteps)
        m_startupSteps = std::make_unique<MainWindowStartupSteps>(*this);
    return *m_startupSteps;
}

void MainWindow::refresh()
{
    if (m_refreshing)
        return;
    m_refreshing = true;
    m_controller->updateWindowInformation();
    m_menus->applyLabels();
    validateCommands();
    m_refreshing = false;
}

bool MainWindow::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate)
        refresh();
    else if (event->type() == QEvent::WindowDeactivate)
        validateCommands();
    return QMainWindow::event(event);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (m_controller->singleSelectedRow() >= 0)
        m_sidebar->commitEdit();
    m_placement->panel()->hide();
    QMainWindow::closeEvent(event);
    // The Window menu that brings the list back lives on this window: closing it ends the program,
    // through the same quit path as the Quit command.
    if (event->isAccepted())
        Q_EMIT quitRequested();
}

// --- validation --------------------------------------------------------------------------------------

bool MainWindow::isWorkingWindowKey() const
{
    const QWidget *active = QApplication::activeWindow();
    // Without a window system that reports activation (offscreen), the main window counts as key
    // while it is shown and no other window of ours is active.
    if (!active)
        return isVisible();
    return active == this || active == m_placement->panel();
}

MainMenus::State MainWindow::menuState() const
{
    MainMenus::State state;
    state.workingWindowKey = isWorkingWindowKey();
    state.selectedRows = int(m_controller->selectedRows().size());
    state.rows = m_controller->tableModel()->rowCount();
    state.enabledSidebarTabs = m_sidebar->enabledTabCount();
    state.formatIndex = m_formats->currentIndex();
    const QWidget *focus = QApplication::focusWidget();
    const QWidget *subprojects = m_sidebar->form()->subprojectsTable;
    state.subprojectsHaveKeyboard = focus && (focus == subprojects || subprojects->isAncestorOf(focus));
    return state;
}

void MainWindow::validateCommands()
{
    const MainMenus::State state = menuState();
    m_menus->validate(state);
    m_commands->validateHistory();
    m_toolbar->validate(state.selectedRows, state.rows);
}

// --- commands ----------------------------------------------------------------------------------------

void MainWindow::setFormatView(int segment)
{
    if (segment < 0 || segment >= m_formats->count())
        segment = 0;
    m_toolbar->setFormatSegment(segment);
    // The list leaves the active calendar as it is; the calendars make themselves active.
    if (segment == 1)
        m_calendars->setActiveCalendar(QStringLiteral("Weekly"));
    else if (segment == 2)
        m_calendars->setActiveCalendar(QStringLiteral("Monthly"));
    m_calendars->updateCalendar();
    // The transition the user chose plays on every switch.
    const QVariant transition = UserDefaults().groupValue(General, GeneralKeys::MainWindowTransition);
    m_formats->setTransition(transition.isValid() ? int(transition.toLongLong()) : AnimatingTabView::kDefaultTransition);
    if (m_formats->currentIndex() != segment)
        m_formats->selectTabViewItem(segment, QGuiApplication::queryKeyboardModifiers());
    validateCommands();
}

// --- commands ----------------------------------------------------------------------------------------

void MainWindow::perform(Command command)
{
    m_commands->perform(command);
}

void MainWindow::performToolbarItem(const QString &identifier)
{
    m_commands->performToolbarItem(identifier);
}

void MainWindow::addMultiple()
{
    m_commands->addMultiple();
}

MultipleAssignmentsSheet *MainWindow::recurringSheet() const
{
    return m_commands->recurringSheet();
}

AboutDialog *MainWindow::aboutDialog() const
{
    return m_commands->aboutDialog();
}

QMenu *MainWindow::lastContextMenu() const
{
    return m_commands->lastContextMenu();
}
