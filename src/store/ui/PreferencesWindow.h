#pragma once

#include <QHash>
#include <QMainWindow>
#include <QPointer>

class PreferencePane;
class QAction;
class QActionGroup;
class QPropertyAnimation;
class QToolBar;

// The preferences window: a toolbar of five panes (General, Main Window, Personal Info, Labels,
// Sync), then any that other parts of the program registered (AdditionalPanes). Each switch makes the pane afresh from the stored settings, resizes the window to the
// pane's height at a fixed width with its top edge kept in place, and remembers the pane.
class PreferencesWindow : public QMainWindow
{
    Q_OBJECT
public:
    static constexpr int PaneWidth = 400;

    inline static const QString GeneralIdentifier = QStringLiteral("General");
    inline static const QString AssignmentWindowIdentifier = QStringLiteral("AssignmentWindow");
    inline static const QString PersonalInfoIdentifier = QStringLiteral("PersonalInfo");
    inline static const QString LabelsIdentifier = QStringLiteral("Labels");
    inline static const QString SyncingIdentifier = QStringLiteral("Syncing");

    explicit PreferencesWindow(QWidget *parent = nullptr);
    ~PreferencesWindow() override;

    static PreferencesWindow *sharedController();

    // `setTabView:`: shows the pane with that identifier. Returns false for an unknown or
    // unavailable pane.
    bool setTabView(const QString &identifier);
    QString currentPane() const { return m_current; }
    // The view being shown (null while the window is between panes).
    QWidget *currentView() const;
    QAction *toolbarItem(const QString &identifier) const { return m_items.value(identifier); }

    // Animates the resizing (on by default; tests and screenshots turn it off).
    void setAnimated(bool animated) { m_animated = animated; }
    bool isResizing() const;

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void buildToolbar();
    void fitToolbar();
    // The panes' width, unless the toolbar cannot be made to fit it.
    int windowWidth() const;
    QAction *addItem(const QString &identifier, const QString &label, const QString &toolTip,
                     const QString &themeIcon, const QString &fallbackIcon);
    void leaveCurrentPane();
    void resizeToPane(int paneHeight, QWidget *view);
    void paneSizeChanged();
    void installView(QWidget *view);

    QToolBar *m_toolbar;
    QActionGroup *m_group;
    QHash<QString, QAction *> m_items;
    QString m_current;
    QPointer<PreferencePane> m_pane;
    QPointer<QWidget> m_syncView;
    QPointer<QPropertyAnimation> m_animation;
    bool m_animated = true;
};
