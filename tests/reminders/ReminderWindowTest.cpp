#include "NotificationDaemon.h"
#include "TestEnvironment.h"
#include "list/ui/MainWindowTestSupport.h"

#include "list/Editing.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "reminders/DesktopNotifications.h"
#include "reminders/ReminderRecords.h"
#include "reminders/ReminderSchedule.h"
#include "reminders/ReminderSettings.h"
#include "reminders/ui/ReminderDelivery.h"
#include "reminders/ui/RemindersPane.h"
#include "store/ui/PreferencesWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QToolBar>
#include <QToolButton>
#include <QSignalSpy>

using namespace ListTest;
using namespace WindowTest;

namespace {

// Today is Sunday 2026-11-22, 10:30.
QVariantMap dueToday(int hour)
{
    return {{AssignmentKeys::Date, stored(2026, 11, 22, hour)}};
}

} // namespace

TEST(ReminderWindow, MarkCompleteAndOpenFromTheDaemonActOnTheMainWindowAndSave)
{
    freshPreferences();
    writeStore({record("Essay", dueToday(14)), record("Lab", dueToday(16)), record("Reading", dueToday(20))});
    NotificationDaemon daemon;
    QString error;
    ASSERT_TRUE(daemon.start({{QStringLiteral("Essay"), DesktopNotifications::CompleteAction},
                              {QStringLiteral("Lab"), DesktopNotifications::OpenAction}},
                             &error))
        << qPrintable(error);
    Window w;
    ReminderDelivery delivery(w.window.get(), daemon.connection());
    EXPECT_EQ(delivery.schedule().nextReminder(), QDateTime(QDate(2026, 11, 22), QTime(12, 0)));

    // Two hours before the essay is due its reminder comes; the daemon's action completes it.
    Clock::pin(QDateTime(QDate(2026, 11, 22), QTime(12, 0, 30)));
    delivery.schedule().deliverDue();
    ASSERT_TRUE(daemon.waitForDisplayed(1));
    EXPECT_EQ(daemon.received().last().summary, QStringLiteral("Essay"));
    ASSERT_TRUE(daemon.dunstctl({QStringLiteral("action"), QStringLiteral("0")}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return storedNamed("Essay").value(AssignmentKeys::Completed).toInt() == 1; },
                                10000));
    EXPECT_FALSE(storedNamed("Lab").contains(AssignmentKeys::Completed));
    // Completing it was a change to the list: the schedule moved on to the lab.
    QCoreApplication::processEvents();
    EXPECT_EQ(delivery.schedule().nextReminder(), QDateTime(QDate(2026, 11, 22), QTime(14, 0)));

    // The lab's "Open" selects it in the window, whatever was selected before.
    w.select("Reading");
    daemon.dunstctl({QStringLiteral("close-all")});
    Clock::pin(QDateTime(QDate(2026, 11, 22), QTime(14, 0, 30)));
    delivery.schedule().deliverDue();
    ASSERT_TRUE(daemon.waitForDisplayed(1));
    ASSERT_TRUE(daemon.dunstctl({QStringLiteral("action"), QStringLiteral("0")}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return w.controller()->singleSelectedRow() == w.rowOf("Lab"); }, 10000));
    EXPECT_TRUE(w.window->isVisible());
}

TEST(ReminderWindow, MarkCompleteReachesAnAssignmentTheSearchHides)
{
    freshPreferences();
    writeStore({record("Essay", dueToday(14)), record("Lab", dueToday(16))});
    NotificationDaemon daemon;
    QString error;
    ASSERT_TRUE(daemon.start({}, &error)) << qPrintable(error);
    Window w;
    ReminderDelivery delivery(w.window.get(), daemon.connection());
    const AssignmentList &all = w.controller()->allAssignments();
    const AssignmentRef essay = *std::find_if(all.begin(), all.end(), [](const AssignmentRef &r) {
        return r->value(AssignmentKeys::Name).toString() == QStringLiteral("Essay");
    });

    // The student is searching for the lab when the essay's reminder is answered.
    QTest::keyClicks(w.toolbar()->searchField(), "Lab");
    ASSERT_LT(w.rowOf("Essay"), 0);
    delivery.complete({essay});
    EXPECT_EQ(storedNamed("Essay").value(AssignmentKeys::Completed).toInt(), 1);
    EXPECT_FALSE(storedNamed("Lab").contains(AssignmentKeys::Completed));
}

TEST(ReminderWindow, ThePaneSavesEveryChoiceAndKeepsLeadTimesItDoesNotOffer)
{
    freshPreferences();
    ReminderSettings handSet;
    handSet.leadMinutes = {45, 120};
    handSet.save();
    RemindersPane::registerWithPreferencesWindow();
    PreferencesWindow window;
    window.setAnimated(false);
    window.show();
    ASSERT_TRUE(window.setTabView(RemindersPane::Identifier));
    ASSERT_NE(window.toolbarItem(RemindersPane::Identifier), nullptr);
    // Every pane's item fits on the toolbar, none behind the overflow button, at the panes' width.
    auto *toolbar = window.findChild<QToolBar *>();
    for (QToolButton *button : toolbar->findChildren<QToolButton *>(Qt::FindDirectChildrenOnly)) {
        if (button->defaultAction())
            EXPECT_TRUE(button->isVisible()) << button->objectName().toStdString();
        else
            EXPECT_FALSE(button->isVisible()) << "the overflow button shows";
    }
    EXPECT_EQ(window.width(), PreferencesWindow::PaneWidth);
    ASSERT_TRUE(window.setTabView(PreferencesWindow::GeneralIdentifier));
    EXPECT_EQ(window.width(), PreferencesWindow::PaneWidth);
    ASSERT_TRUE(window.setTabView(RemindersPane::Identifier));
    QWidget *pane = window.currentView();
    ASSERT_NE(pane, nullptr);
    for (QCheckBox *box : pane->findChildren<QCheckBox *>())
        EXPECT_FALSE(box->accessibleName().isEmpty()) << box->objectName().toStdString();

    auto *enabled = pane->findChild<QCheckBox *>(QStringLiteral("remindersEnabled"));
    auto *hour = pane->findChild<QCheckBox *>(QStringLiteral("remindersLead60"));
    auto *twoHours = pane->findChild<QCheckBox *>(QStringLiteral("remindersLead120"));
    auto *evening = pane->findChild<QCheckBox *>(QStringLiteral("remindersEveningBefore"));
    auto *tray = pane->findChild<QCheckBox *>(QStringLiteral("remindersKeepInTray"));
    ASSERT_TRUE(enabled && hour && twoHours && evening && tray);
    EXPECT_TRUE(twoHours->isChecked());
    EXPECT_FALSE(hour->isChecked());
    EXPECT_FALSE(tray->isChecked());

    QTest::mouseClick(hour, Qt::LeftButton, {}, QPoint(8, hour->height() / 2));
    QTest::mouseClick(twoHours, Qt::LeftButton, {}, QPoint(8, twoHours->height() / 2));
    QTest::mouseClick(evening, Qt::LeftButton, {}, QPoint(8, evening->height() / 2));
    QTest::mouseClick(tray, Qt::LeftButton, {}, QPoint(8, tray->height() / 2));
    ReminderSettings saved = ReminderSettings::load();
    EXPECT_EQ(saved.leadMinutes, QList<int>({45, 60}));
    EXPECT_FALSE(saved.eveningBefore);
    EXPECT_TRUE(saved.keepInTray);

    // Off, the lead times cannot be changed, and nothing is reminded of.
    QTest::mouseClick(enabled, Qt::LeftButton, {}, QPoint(8, enabled->height() / 2));
    EXPECT_FALSE(ReminderSettings::load().enabled);
    EXPECT_FALSE(hour->isEnabled());
    EXPECT_EQ(ReminderSettings::load().leadMinutes, QList<int>({45, 60}));
    // The program's own groups are as the first start wrote them.
    EXPECT_TRUE(Preferences::hasAllGroups());
}

TEST(ReminderWindow, ANotificationOnScreenIsTakenBackWhenItsAssignmentIsCompletedOrDeleted)
{
    freshPreferences();
    writeStore({record("Essay", dueToday(14)), record("Lab", dueToday(16)), record("Reading", dueToday(20))});
    NotificationDaemon daemon;
    QString error;
    ASSERT_TRUE(daemon.start({}, &error)) << qPrintable(error);
    Window w;
    ReminderDelivery delivery(w.window.get(), daemon.connection());
    QSignalSpy shown(&delivery.notifications(), &DesktopNotifications::shown);

    Clock::pin(QDateTime(QDate(2026, 11, 22), QTime(12, 0, 30)));
    delivery.schedule().deliverDue();
    ASSERT_TRUE(shown.wait(10000));
    ASSERT_TRUE(daemon.waitForDisplayed(1));
    // Another row's edit leaves the essay's notification where it is.
    w.select("Reading");
    w.controller()->editing().markAssignmentAsCompleted();
    QCoreApplication::processEvents();
    ASSERT_TRUE(daemon.waitForDisplayed(1));
    w.controller()->editing().markAssignmentAsCompleted(w.rowOf("Essay"));
    EXPECT_TRUE(daemon.waitForDisplayed(0));
    EXPECT_EQ(delivery.notifications().openCount(), 0);

    Clock::pin(QDateTime(QDate(2026, 11, 22), QTime(14, 0, 30)));
    delivery.schedule().deliverDue();
    ASSERT_TRUE(shown.wait(10000));
    ASSERT_TRUE(daemon.waitForDisplayed(1));
    w.select("Lab");
    Alerts::queueAnswer("Yes");
    w.controller()->editing().deleteAssignment();
    ASSERT_LT(w.rowOf("Lab"), 0);
    EXPECT_TRUE(daemon.waitForDisplayed(0));
}

TEST(ReminderWindow, TheSidebarsReminderChoiceIsStoredWithTheAssignmentAndScheduled)
{
    freshPreferences();
    // Due days without a time, as the sidebar's date field (no time in its format) stores them.
    writeStore({record("Essay", {{AssignmentKeys::Date, stored(2026, 11, 24, 0)}}),
                record("Lab", {{AssignmentKeys::Date, stored(2026, 11, 25, 0)}})});
    Window w;
    NotificationDaemon daemon;
    QString error;
    ASSERT_TRUE(daemon.start({}, &error)) << qPrintable(error);
    ReminderDelivery delivery(w.window.get(), daemon.connection());
    EXPECT_EQ(delivery.schedule().nextReminder(), QDateTime(QDate(2026, 11, 23), QTime(18, 0)));

    QComboBox *remind = w.form()->reminderField;
    EXPECT_FALSE(remind->accessibleName().isEmpty());
    w.select("Essay");
    EXPECT_EQ(remind->currentText(), QStringLiteral("Default"));
    // The name is still being typed when the pull-down is chosen: both reach the record.
    w.form()->nameField->setFocus();
    w.form()->nameField->setText(QStringLiteral("Essay draft"));
    remind->setCurrentIndex(remind->findText(QStringLiteral("None")));
    Q_EMIT remind->activated(remind->currentIndex());
    QCoreApplication::processEvents();
    EXPECT_EQ(storedNamed("Essay draft").value(ReminderRecords::OverrideKey).toInt(), 0);
    EXPECT_EQ(delivery.schedule().nextReminder(), QDateTime(QDate(2026, 11, 24), QTime(18, 0)));

    w.select("Lab");
    remind->setCurrentIndex(remind->findText(QStringLiteral("1 day before")));
    Q_EMIT remind->activated(remind->currentIndex());
    QCoreApplication::processEvents();
    EXPECT_EQ(storedNamed("Lab").value(ReminderRecords::OverrideKey).toInt(), 24 * 60);
    EXPECT_EQ(delivery.schedule().nextReminder(), QDateTime(QDate(2026, 11, 24), QTime(0, 0)));
    // Other edits keep the choice, and the pull-down shows each record's own.
    w.form()->gradeField->setText(QStringLiteral("A"));
    Q_EMIT w.form()->gradeField->editingFinished();
    EXPECT_EQ(storedNamed("Lab").value(ReminderRecords::OverrideKey).toInt(), 24 * 60);
    w.select("Essay draft");
    EXPECT_EQ(remind->currentText(), QStringLiteral("None"));
    w.select("Lab");
    EXPECT_EQ(remind->currentText(), QStringLiteral("1 day before"));
}
