#include "store/ui/PreferencesWindow.h"

#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"
#include "store/ui/AssignmentWindowPane.h"
#include "store/ui/GeneralPane.h"
#include "store/ui/LabelsPane.h"
#include "store/ui/PersonalInfoPane.h"
#include "store/ui/AdditionalPanes.h"
#include "store/ui/SyncingPaneHost.h"
#include "widgets/Icons.h"
#include "widgets/ToolbarOverflow.h"

#include <QAction>
#include <QActionGroup>
#include <QCloseEvent>
#include <QPropertyAnimation>
#include <QShowEvent>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>

namespace {
const QString ToolbarIdentifier = QStringLiteral("prefsToolbar");
const QString WindowTitle = QStringLiteral("Preferences");
const QString SyncUnavailableToolTip = QStringLiteral("Syncing is not available in this build");
constexpr int AnimationMilliseconds = 200;

QPointer<PreferencesWindow> g_shared;
} // namespace

PreferencesWindow::PreferencesWindow(QWidget *parent)
    : QMainWindow(parent)
{
    setObjectName(QStringLiteral("preferencesWindow"));
    setWindowTitle(WindowTitle);
    setAccessibleName(WindowTitle);
    buildToolbar();
    setCentralWidget(new QWidget);
    resize(PaneWidth, 300);
}

PreferencesWindow::~PreferencesWindow()
{
    // The syncing pane's view is shared for the whole run: it must outlive this window.
    if (m_syncView && centralWidget() == m_syncView) {
        takeCentralWidget();
        m_syncView->hide();
        m_syncView->setParent(nullptr);
    }
}

PreferencesWindow *PreferencesWindow::sharedController()
{
    if (!g_shared)
        g_shared = new PreferencesWindow;
    return g_shared;
}

QAction *PreferencesWindow::addItem(const QString &identifier, const QString &label, const QString &toolTip,
                                    const QString &themeIcon, const QString &fallbackIcon)
{
    QAction *action = m_toolbar->addAction(Icons::themed(themeIcon, fallbackIcon), label);
    action->setObjectName(identifier);
    action->setToolTip(toolTip);
    action->setCheckable(true);
    m_group->addAction(action);
    if (QWidget *button = m_toolbar->widgetForAction(action)) {
        button->setObjectName(identifier + QStringLiteral("Button"));
        button->setAccessibleName(label);
        button->setAccessibleDescription(toolTip);
    }
    connect(action, &QAction::triggered, this, [this, identifier] { setTabView(identifier); });
    m_items.insert(identifier, action);
    return action;
}

void PreferencesWindow::buildToolbar()
{
    m_toolbar = addToolBar(WindowTitle);
    ToolbarOverflow::nameOverflowButton(m_toolbar);
    m_toolbar->setObjectName(ToolbarIdentifier);
    m_toolbar->setAccessibleName(WindowTitle);
    m_toolbar->setMovable(false);
    m_toolbar->setFloatable(false);
    m_toolbar->toggleViewAction()->setEnabled(false);
    m_toolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_toolbar->setIconSize(QSize(32, 32));
    setContextMenuPolicy(Qt::NoContextMenu);
    m_group = new QActionGroup(this);
    m_group->setExclusive(true);

    addItem(GeneralIdentifier, QStringLiteral("General"),
            QStringLiteral("Manage the General preferences of the application"), QStringLiteral("preferences-system"),
            QStringLiteral("prefs-general"));
    addItem(AssignmentWindowIdentifier, QStringLiteral("Main Window"),
            QStringLiteral("Change the colors and the columns that are shown in the main window"),
            QStringLiteral("preferences-desktop-theme"), QStringLiteral("prefs-main-window"));
    addItem(PersonalInfoIdentifier, QStringLiteral("Personal Info"),
            QStringLiteral("Change your personal information that displays in the sidebar"),
            QStringLiteral("preferences-desktop-personal"), QStringLiteral("prefs-personal-info"));
    addItem(LabelsIdentifier, QStringLiteral("Labels"), QStringLiteral("Customize the labels throughout the program"),
            QStringLiteral("preferences-desktop-font"), QStringLiteral("prefs-labels"));
    QAction *sync = addItem(SyncingIdentifier, QStringLiteral("Sync"),
                            QStringLiteral("Synchronize your data amongst multiple computers"),
                            QStringLiteral("emblem-synchronizing"), QStringLiteral("prefs-sync"));
    if (!SyncingPaneHost::isAvailable()) {
        sync->setEnabled(false);
        sync->setToolTip(SyncUnavailableToolTip);
    }
    for (const AdditionalPanes::Pane &extra : AdditionalPanes::registered())
        addItem(extra.identifier, extra.label, extra.toolTip, extra.themeIcon, extra.fallbackIcon);
    fitToolbar();
}

void PreferencesWindow::fitToolbar()
{
    // With the panes other parts of the program add, the labels under the icons may be wider than
    // the panes, and the last ones would hide behind the toolbar's overflow button. The items move
    // closer together first, then the labels get smaller, down to a size still easily read; only
    // then does the window grow wider than the panes (see windowWidth()).
    m_toolbar->ensurePolished();
    if (m_toolbar->sizeHint().width() <= PaneWidth)
        return;
    m_toolbar->setStyleSheet(QStringLiteral("QToolBar { spacing: 0px; }"));
    QFont font = m_toolbar->font();
    if (font.pointSizeF() <= 0)
        return;
    const qreal smallest = std::max<qreal>(7.0, font.pointSizeF() * 0.8);
    while (m_toolbar->sizeHint().width() > PaneWidth && font.pointSizeF() - 0.5 >= smallest) {
        font.setPointSizeF(font.pointSizeF() - 0.5);
        m_toolbar->setFont(font);
        for (QToolButton *button : m_toolbar->findChildren<QToolButton *>())
            button->setFont(font);
    }
}

int PreferencesWindow::windowWidth() const
{
    return std::max(PaneWidth, m_toolbar->sizeHint().width());
}

QWidget *PreferencesWindow::currentView() const
{
    if (m_animation)
        return nullptr;
    return centralWidget();
}

bool PreferencesWindow::isResizing() const
{
    return m_animation != nullptr;
}

void PreferencesWindow::leaveCurrentPane()
{
    if (m_pane)
        m_pane->preferencesPanelWillClose();
    if (m_current == SyncingIdentifier && m_syncView) {
        if (const auto &hooks = SyncingPaneHost::registeredPane(); hooks.preferencesPanelWillClose)
            hooks.preferencesPanelWillClose();
    }
    if (m_syncView && centralWidget() == m_syncView) {
        takeCentralWidget();
        m_syncView->hide();
        m_syncView->setParent(nullptr);
    }
    // The old pane goes with the empty view that replaces it.
    setCentralWidget(new QWidget);
    m_pane = nullptr;
}

bool PreferencesWindow::setTabView(const QString &identifier)
{
    PreferencePane *pane = nullptr;
    if (identifier == GeneralIdentifier)
        pane = new GeneralPane;
    else if (identifier == AssignmentWindowIdentifier)
        pane = new AssignmentWindowPane;
    else if (identifier == PersonalInfoIdentifier)
        pane = new PersonalInfoPane;
    else if (identifier == LabelsIdentifier)
        pane = new LabelsPane;
    else if (const AdditionalPanes::Pane *extra = AdditionalPanes::find(identifier); extra && extra->make)
        pane = extra->make();
    else if (identifier != SyncingIdentifier || !SyncingPaneHost::isAvailable())
        return false;

    if (m_animation) {
        m_animation->stop();
        delete m_animation;
    }
    leaveCurrentPane();
    m_current = identifier;
    if (QAction *item = m_items.value(identifier))
        item->setChecked(true);
    UserDefaults().set(PreferenceKeys::LastShownPane, identifier);

    if (pane) {
        m_pane = pane;
        pane->updateLabels();
        connect(pane, &PreferencePane::viewSizeChanged, this, &PreferencesWindow::paneSizeChanged);
        resizeToPane(pane->getViewSize(), pane);
    } else {
        const auto &hooks = SyncingPaneHost::registeredPane();
        m_syncView = hooks.currentView();
        resizeToPane(hooks.getViewSize ? hooks.getViewSize() : m_syncView->sizeHint().height(), m_syncView);
    }
    return true;
}

void PreferencesWindow::paneSizeChanged()
{
    if (!m_pane || m_animation)
        return;
    const QRect target(geometry().topLeft(), QSize(windowWidth(), m_toolbar->sizeHint().height() + m_pane->getViewSize()));
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    setGeometry(target);
    setFixedSize(target.size());
}

void PreferencesWindow::resizeToPane(int paneHeight, QWidget *view)
{
    // The top edge stays where it is; the window grows or shrinks at the bottom.
    const QRect target(geometry().topLeft(), QSize(windowWidth(), m_toolbar->sizeHint().height() + paneHeight));
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    if (!m_animated || !isVisible() || geometry() == target) {
        setGeometry(target);
        installView(view);
        return;
    }
    auto *animation = new QPropertyAnimation(this, "geometry", this);
    animation->setDuration(AnimationMilliseconds);
    animation->setStartValue(geometry());
    animation->setEndValue(target);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    QPointer<QWidget> guarded(view);
    connect(animation, &QPropertyAnimation::finished, this, [this, animation, guarded, target] {
        animation->deleteLater();
        m_animation = nullptr;
        setGeometry(target);
        if (guarded)
            installView(guarded);
    });
    // A pane that is replaced before the animation ends must not be leaked.
    connect(animation, &QObject::destroyed, view, [guarded, this] {
        if (guarded && guarded->parent() == nullptr && guarded != m_syncView)
            guarded->deleteLater();
    });
    m_animation = animation;
    animation->start();
}

void PreferencesWindow::installView(QWidget *view)
{
    setCentralWidget(view);
    view->show();
    setFixedSize(geometry().size());
}

void PreferencesWindow::showEvent(QShowEvent *event)
{
    QMainWindow::showEvent(event);
    if (event->spontaneous())
        return;
    QString stored = UserDefaults().string(PreferenceKeys::LastShownPane);
    if (!m_items.contains(stored) || !m_items.value(stored)->isEnabled())
        stored = GeneralIdentifier;
    setTabView(stored);
}

void PreferencesWindow::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    // Coming to the front again: the pane shows what other windows changed meanwhile (the courses
    // and types behind the colour rows, the columns dragged in the main window).
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && m_pane && !m_animation)
        m_pane->reloadFromSettings();
}

void PreferencesWindow::closeEvent(QCloseEvent *event)
{
    if (m_pane)
        m_pane->preferencesPanelWillClose();
    if (m_current == SyncingIdentifier) {
        if (const auto &hooks = SyncingPaneHost::registeredPane(); hooks.preferencesPanelWillClose)
            hooks.preferencesPanelWillClose();
    }
    QMainWindow::closeEvent(event);
}
