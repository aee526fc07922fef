#pragma once

#include <QObject>
#include <QPointer>

class QSplitter;
class QVariantAnimation;
class QWidget;

// Where the details sidebar lives: in the main window's split view as its collapsible right-hand
// part, or in a floating panel of its own. Keeps "Sidebar is Attached" and "Assignment Drawer
// State" as the user leaves them.
class SidebarPlacement : public QObject
{
    Q_OBJECT
public:
    static inline const QString PanelTitle = QStringLiteral("Details");

    // `sidebar` starts in `attachedHolder`, the splitter's last widget.
    SidebarPlacement(QSplitter *splitter, QWidget *attachedHolder, QWidget *sidebar, QWidget *mainWindow);
    ~SidebarPlacement() override;

    // "Sidebar is Attached": a missing value counts as attached.
    static bool isAttachedByPreference();
    bool isAttached() const;
    bool isCollapsed() const;
    QWidget *panel() const { return m_panel; }
    QWidget *attachedHolder() const { return m_holder; }

    void detachSidebarWithAnimation(bool animate);
    void attachSidebarWithAnimation(bool animate);
    // The menu command: moves the sidebar to the other place and opens it.
    void detachSidebar();
    // The toolbar item and menu command.
    void toggleAssignmentDrawer();
    void detachSidebarAtStartup();
    // At start-up: expanded or collapsed after "Assignment Drawer State".
    void setDrawerOpen(bool open);
    bool isAnimating() const;

Q_SIGNALS:
    // The detach command's title must read "Attach Sidebar" / "Detach Sidebar".
    void attachmentChanged(bool attached);

private:
    void setSidebarView(QWidget *container);
    void collapse(bool animate);
    void expand(bool animate);
    void animateTo(int sidebarWidth);
    static void setDrawerState(bool open);

    QSplitter *m_splitter;
    QWidget *m_holder;
    QWidget *m_sidebar;
    QWidget *m_panel;
    QPointer<QVariantAnimation> m_animation;
    int m_expandedWidth = 300;
};
