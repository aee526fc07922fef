#include "list/ui/SidebarPlacement.h"

#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"

#include <QCloseEvent>
#include <QEasingCurve>
#include <QLayout>
#include <QSplitter>
#include <QVBoxLayout>
#include <QVariantAnimation>

using namespace PreferenceKeys;

namespace {
constexpr int AnimationMs = 200;

// The floating panel: closing it with its title-bar button counts as closing the sidebar.
class DetachedSidebarWindow : public QWidget
{
public:
    explicit DetachedSidebarWindow(QWidget *parent)
        : QWidget(parent, Qt::Tool)
    {
        setObjectName(QStringLiteral("detachedSidebarWindow"));
        setAccessibleName(SidebarPlacement::PanelTitle);
        setWindowTitle(SidebarPlacement::PanelTitle);
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        resize(320, 520);
    }

protected:
    void closeEvent(QCloseEvent *event) override
    {
        if (UserDefaults().contains(SidebarIsAttached) && !UserDefaults().boolValue(SidebarIsAttached))
            UserDefaults().set(AssignmentDrawerState, Closed);
        QWidget::closeEvent(event);
    }
};
} // namespace

SidebarPlacement::SidebarPlacement(QSplitter *splitter, QWidget *attachedHolder, QWidget *sidebar, QWidget *mainWindow)
    : QObject(mainWindow)
    , m_splitter(splitter)
    , m_holder(attachedHolder)
    , m_sidebar(sidebar)
    , m_panel(new DetachedSidebarWindow(mainWindow))
{
    m_splitter->setCollapsible(m_splitter->indexOf(m_holder), true);
    m_splitter->setCollapsible(0, false);
}

SidebarPlacement::~SidebarPlacement() = default;

bool SidebarPlacement::isAttachedByPreference()
{
    UserDefaults defaults;
    return !defaults.contains(SidebarIsAttached) || defaults.boolValue(SidebarIsAttached);
}

bool SidebarPlacement::isAttached() const
{
    return m_sidebar->parentWidget() == m_holder;
}

bool SidebarPlacement::isCollapsed() const
{
    const QList<int> sizes = m_splitter->sizes();
    return sizes.size() < 2 || sizes.last() == 0;
}

bool SidebarPlacement::isAnimating() const
{
    return m_animation && m_animation->state() == QAbstractAnimation::Running;
}

void SidebarPlacement::setDrawerState(bool open)
{
    UserDefaults().set(AssignmentDrawerState, open ? Open : Closed);
}

void SidebarPlacement::animateTo(int sidebarWidth)
{
    if (m_animation)
        m_animation->stop();
    const int total = m_splitter->width() - m_splitter->handleWidth();
    auto *animation = new QVariantAnimation(this);
    animation->setStartValue(m_splitter->sizes().value(1));
    animation->setEndValue(sidebarWidth);
    animation->setDuration(AnimationMs);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    connect(animation, &QVariantAnimation::valueChanged, this, [this, total](const QVariant &value) {
        m_splitter->setSizes({std::max(0, total - value.toInt()), value.toInt()});
    });
    m_animation = animation;
    animation->start(QAbstractAnimation::DeleteWhenStopped);
}

void SidebarPlacement::collapse(bool animate)
{
    const QList<int> sizes = m_splitter->sizes();
    if (sizes.value(1) > 0)
        m_expandedWidth = sizes.value(1);
    // The window keeps its size; the list takes the room.
    if (animate && m_splitter->isVisible())
        animateTo(0);
    else
        m_splitter->setSizes({sizes.value(0) + sizes.value(1), 0});
}

void SidebarPlacement::expand(bool animate)
{
    const int width = std::max(m_expandedWidth, m_sidebar->minimumSizeHint().width());
    if (animate && m_splitter->isVisible()) {
        animateTo(width);
    } else {
        const int total = std::max(m_splitter->width(), width * 3);
        m_splitter->setSizes({total - width, width});
    }
}

void SidebarPlacement::setSidebarView(QWidget *container)
{
    if (m_sidebar->parentWidget() == container)
        return;
    container->layout()->addWidget(m_sidebar);
    m_sidebar->show();
}

void SidebarPlacement::detachSidebarWithAnimation(bool animate)
{
    collapse(animate);
    m_panel->show();
    m_panel->raise();
    m_panel->activateWindow();
    UserDefaults().set(SidebarIsAttached, false);
    Q_EMIT attachmentChanged(false);
}

void SidebarPlacement::attachSidebarWithAnimation(bool animate)
{
    expand(animate);
    m_panel->hide();
    UserDefaults().set(SidebarIsAttached, true);
    Q_EMIT attachmentChanged(true);
}

void SidebarPlacement::detachSidebar()
{
    if (isAttachedByPreference() && isAttached()) {
        setSidebarView(m_panel);
        detachSidebarWithAnimation(false);
    } else if (isAttachedByPreference()) {
        // The key says attached but the split view is empty: detach again.
        setSidebarView(m_panel);
        detachSidebarWithAnimation(false);
    } else {
        setSidebarView(m_holder);
        attachSidebarWithAnimation(false);
    }
    setDrawerState(true);
}

void SidebarPlacement::toggleAssignmentDrawer()
{
    if (!isAttachedByPreference()) {
        if (!m_panel->isVisible()) {
            setSidebarView(m_panel);
            m_panel->show();
            m_panel->raise();
            setDrawerState(true);
        } else {
            m_panel->hide();
            setDrawerState(false);
        }
        return;
    }
    if (isCollapsed()) {
        expand(true);
        setDrawerState(true);
    } else {
        collapse(true);
        setDrawerState(false);
    }
}

void SidebarPlacement::detachSidebarAtStartup()
{
    UserDefaults defaults;
    if (defaults.contains(SidebarIsAttached) && !defaults.boolValue(SidebarIsAttached)) {
        setSidebarView(m_panel);
        detachSidebarWithAnimation(true);
    }
}

void SidebarPlacement::setDrawerOpen(bool open)
{
    if (open)
        expand(false);
    else
        collapse(false);
}
