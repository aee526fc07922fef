#include "TestEnvironment.h"
#include "support/CourseRecords.h"

#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/MainWindowSettings.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/ui/AssignmentWindowPane.h"
#include "store/ui/ColorWell.h"
#include "store/ui/PersonalInfoPane.h"
#include "store/ui/PreferencesWindow.h"
#include "store/ui/SyncingPaneHost.h"
#include "sync/ui/SyncingPrefs.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <gtest/gtest.h>

#include <memory>

namespace {

class PreferencesWindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        Preferences::setAllDefaults();
        SyncingPaneHost::unregisterPane();
    }
    void TearDown() override { SyncingPaneHost::unregisterPane(); }
    std::unique_ptr<PreferencesWindow> open()
    {
        auto window = std::make_unique<PreferencesWindow>();
        window->setAnimated(false);
        window->move(100, 120);
        window->show();
        return window;
    }
    static QString lastShown() { return UserDefaults().string(PreferenceKeys::LastShownPane); }
};

} // namespace

TEST_F(PreferencesWindowTest, EveryPaneItemIsDrawnAndNamedAndAnUnknownPaneIsRefused)
{
    auto window = open();
    auto *toolbar = window->findChild<QToolBar *>(QStringLiteral("prefsToolbar"));
    ASSERT_NE(toolbar, nullptr);
    ASSERT_EQ(toolbar->actions().size(), 5);
    for (QAction *item : toolbar->actions()) {
        EXPECT_FALSE(item->icon().isNull()) << item->objectName().toStdString();
        EXPECT_EQ(toolbar->widgetForAction(item)->accessibleName(), item->text());
    }
    EXPECT_FALSE(window->setTabView(QStringLiteral("Nonsense")));
    EXPECT_EQ(window->currentPane(), QStringLiteral("General"));
}

TEST_F(PreferencesWindowTest, SwitchingRemembersThePaneResizesAtWidth400KeepingTheTopAndReloads)
{
    auto window = open();
    EXPECT_EQ(window->currentPane(), QStringLiteral("General"));
    EXPECT_EQ(lastShown(), QStringLiteral("General"));
    ASSERT_NE(window->currentView(), nullptr);
    EXPECT_EQ(window->currentView()->objectName(), QStringLiteral("generalView"));
    const int top = window->geometry().top();
    const int toolbar = window->findChild<QToolBar *>(QStringLiteral("prefsToolbar"))->sizeHint().height();

    window->toolbarItem(QStringLiteral("PersonalInfo"))->trigger();
    EXPECT_EQ(lastShown(), QStringLiteral("PersonalInfo"));
    auto *pane = qobject_cast<PreferencePane *>(window->currentView());
    ASSERT_NE(pane, nullptr);
    EXPECT_EQ(pane->objectName(), QStringLiteral("personalInfoView"));
    EXPECT_EQ(window->geometry().width(), 400);
    EXPECT_EQ(window->geometry().height(), toolbar + pane->getViewSize());
    EXPECT_EQ(window->geometry().top(), top);
    const int personalHeight = window->geometry().height();

    window->setTabView(QStringLiteral("Labels"));
    EXPECT_GT(window->geometry().height(), personalHeight); // twenty fields need more room
    EXPECT_EQ(window->geometry().top(), top);

    // Coming back makes the pane afresh from what is stored now.
    QPointer<QWidget> old = window->currentView();
    QVariantMap info{{QStringLiteral("Name"), QStringLiteral("Ada")},
                     {QStringLiteral("School"), QString()},
                     {QStringLiteral("Student ID"), QString()}};
    UserDefaults().set(PreferenceKeys::PersonalInfo, info);
    window->setTabView(QStringLiteral("PersonalInfo"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(old.isNull());
    EXPECT_EQ(window->findChild<QLineEdit *>(QStringLiteral("personalName"))->text(), QStringLiteral("Ada"));

    // The next opening shows the stored pane.
    window.reset();
    auto again = open();
    EXPECT_EQ(again->currentPane(), QStringLiteral("PersonalInfo"));
    EXPECT_TRUE(again->toolbarItem(QStringLiteral("PersonalInfo"))->isChecked());
}

TEST_F(PreferencesWindowTest, TheWindowFollowsTheNumberOfColourRows)
{
    QVariantList combined;
    for (int i = 1; i <= 12; ++i)
        combined.append(CourseRecords::course(QString::number(i)));
    QDir().mkpath(Paths::dataFolder());
    ASSERT_TRUE(PropertyList::writeFile(Paths::coursesFile(), combined));
    auto window = open();
    window->setTabView(QStringLiteral("AssignmentWindow"));
    const int top = window->geometry().top();
    const int byDueDate = window->height();
    auto *format = window->findChild<QComboBox *>(QStringLiteral("colorFormat"));
    ASSERT_NE(format, nullptr);
    format->setCurrentIndex(1);
    EXPECT_GT(window->height(), byDueDate);
    EXPECT_EQ(window->geometry().top(), top);
    EXPECT_EQ(window->width(), 400);
    format->setCurrentIndex(0);
    EXPECT_EQ(window->height(), byDueDate);
}

TEST_F(PreferencesWindowTest, AnimatedResizeEndsAtThePaneHeightWithThePaneInPlace)
{
    auto window = std::make_unique<PreferencesWindow>();
    window->show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window->isResizing(); }, 3000));
    window->setTabView(QStringLiteral("Labels"));
    EXPECT_TRUE(window->isResizing());
    EXPECT_EQ(window->currentView(), nullptr); // an empty view while the window moves
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window->isResizing(); }, 3000));
    ASSERT_NE(window->currentView(), nullptr);
    EXPECT_EQ(window->currentView()->objectName(), QStringLiteral("labelsView"));
    EXPECT_EQ(window->width(), 400);
    // Switching again before the end leaves no stray pane behind.
    window->setTabView(QStringLiteral("General"));
    window->setTabView(QStringLiteral("PersonalInfo"));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window->isResizing(); }, 3000));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(window->findChildren<PreferencePane *>().size(), 1);
    EXPECT_EQ(window->currentView()->objectName(), QStringLiteral("personalInfoView"));
}

TEST_F(PreferencesWindowTest, ShowsTheSyncingPaneAtItsHeightAndGivesItBack)
{
    // As the program does at start-up.
    SyncingPrefs::registerWithPreferencesWindow();
    auto window = open();
    ASSERT_TRUE(window->setTabView(QStringLiteral("Syncing")));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window->isResizing(); }, 3000));
    QWidget *view = window->currentView();
    ASSERT_EQ(view, SyncingPrefs::sharedController());
    const int toolbar = window->findChild<QToolBar *>(QStringLiteral("prefsToolbar"))->sizeHint().height();
    // No syncing is set up: the pane's smallest height.
    EXPECT_EQ(window->height(), toolbar + 135);
    EXPECT_EQ(window->width(), 400);
    window->setTabView(QStringLiteral("Labels"));
    EXPECT_EQ(view->parent(), nullptr);
    window->setTabView(QStringLiteral("Syncing"));
    window.reset();
    EXPECT_EQ(SyncingPrefs::sharedController()->parent(), nullptr);
}

TEST_F(PreferencesWindowTest, HostsARegisteredSyncingPaneWithoutOwningIt)
{
    auto syncView = std::make_unique<QWidget>();
    syncView->setObjectName(QStringLiteral("syncingView"));
    int closings = 0;
    SyncingPaneHost::registerPane({[&] { return syncView.get(); }, [] { return 135; }, [&] { ++closings; }});
    auto window = open();
    ASSERT_TRUE(window->toolbarItem(QStringLiteral("Syncing"))->isEnabled());
    ASSERT_TRUE(window->setTabView(QStringLiteral("Syncing")));
    EXPECT_EQ(window->currentView(), syncView.get());
    EXPECT_EQ(lastShown(), QStringLiteral("Syncing"));
    const int toolbar = window->findChild<QToolBar *>(QStringLiteral("prefsToolbar"))->sizeHint().height();
    EXPECT_EQ(window->height(), toolbar + 135);

    window->setTabView(QStringLiteral("General"));
    EXPECT_EQ(closings, 1);
    EXPECT_EQ(syncView->parent(), nullptr);
    EXPECT_FALSE(syncView->isVisible());
    window->setTabView(QStringLiteral("Syncing"));
    window->close();
    EXPECT_EQ(closings, 2);
    window.reset(); // the shared pane outlives the window
    EXPECT_EQ(syncView->parent(), nullptr);
}

TEST_F(PreferencesWindowTest, ColourRowsFollowTheCoursesWhenTheWindowComesToTheFrontAndStaleRowsWriteNothing)
{
    using CourseRecords::course;
    QDir().mkpath(Paths::dataFolder());
    ASSERT_TRUE(PropertyList::writeFile(Paths::coursesFile(), QVariantList{course(QStringLiteral("Math"))}));
    UserDefaults().set(PreferenceKeys::ColorFormat, qint64(1));
    UserDefaults().set(PreferenceKeys::LastShownPane, QStringLiteral("AssignmentWindow"));
    auto window = open();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    auto *pane = qobject_cast<AssignmentWindowPane *>(window->currentView());
    ASSERT_NE(pane, nullptr);
    ASSERT_EQ(pane->shownCategoryRows(), 1);

    // The courses change in another window; this one is brought to the front again.
    QWidget other;
    other.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    ASSERT_TRUE(PropertyList::writeFile(Paths::coursesFile(),
                                        QVariantList{course(QStringLiteral("Math")), course(QStringLiteral("Art"))}));
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    pane = qobject_cast<AssignmentWindowPane *>(window->currentView());
    ASSERT_NE(pane, nullptr);
    EXPECT_EQ(pane->shownCategoryRows(), 2);
    ASSERT_NE(pane->well(QStringLiteral("Art")), nullptr);

    // Renamed on disk with no activation in between: the old row's colour goes nowhere.
    ASSERT_TRUE(PropertyList::writeFile(Paths::coursesFile(),
                                        QVariantList{course(QStringLiteral("Math")), course(QStringLiteral("Arts"))}));
    pane->well(QStringLiteral("Art"))->chooseColor(QColor(255, 0, 0));
    EXPECT_TRUE(MainWindowSettings::colorText(QStringLiteral("Art")).isNull());
    EXPECT_NE(pane->well(QStringLiteral("Arts")), nullptr);
    pane->well(QStringLiteral("Arts"))->chooseColor(QColor(255, 0, 0));
    EXPECT_EQ(MainWindowSettings::colorText(QStringLiteral("Arts")), QStringLiteral("NSCalibratedRGBColorSpace 1 0 0 1"));
}
