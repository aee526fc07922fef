#include "NotificationDaemon.h"
#include "TestEnvironment.h"

#include "platform/Clock.h"
#include "platform/DateText.h"
#include "reminders/DesktopNotifications.h"

#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

AssignmentRef assignment(const QString &name, const QDateTime &due)
{
    return Assignments::make({{AssignmentKeys::Name, name}, {AssignmentKeys::Date, DateText::toStoredForm(due)}});
}

const QDateTime Tomorrow9(QDate(2026, 11, 23), QTime(9, 0));

} // namespace

TEST(DesktopNotifications, ARealDaemonReceivesTheGroupedReminder)
{
  for (const bool markup : {true, false}) {
    SCOPED_TRACE(markup ? "markup" : "plain text");
    NotificationDaemon daemon;
    QString error;
    ASSERT_TRUE(daemon.start({}, &error, markup)) << qPrintable(error);
    DesktopNotifications notifications(daemon.connection());
    QSignalSpy shown(&notifications, &DesktopNotifications::shown);
    Reminder reminder{Clock::now(), {assignment("Essay & outline", Tomorrow9), assignment("Lab", Tomorrow9)}, false};
    notifications.show(reminder);
    ASSERT_TRUE(shown.wait(10000));
    ASSERT_TRUE(QTest::qWaitFor([&] { return !daemon.received().isEmpty(); }, 10000));
    const auto received = daemon.received();
    ASSERT_EQ(received.size(), 1);
    EXPECT_EQ(received[0].appName, QStringLiteral("Quillory"));
    EXPECT_EQ(received[0].summary, QStringLiteral("2 assignments due tomorrow"));
    // Read as markup, the ampersand goes as an entity; as plain text, as it is.
    EXPECT_EQ(received[0].body, (markup ? QStringLiteral("Essay &amp; outline") : QStringLiteral("Essay & outline")) +
                                    QStringLiteral(", due tomorrow at 9:00 AM\nLab, due tomorrow at 9:00 AM"));
    EXPECT_TRUE(daemon.waitForDisplayed(1));
  }
}

TEST(DesktopNotifications, EachActionInvokedByTheDaemonComesBackWithItsAssignments)
{
    // dunst invokes, as a notification's default action, the action its rule names.
    NotificationDaemon daemon;
    QString error;
    ASSERT_TRUE(daemon.start({{QStringLiteral("Lab"), DesktopNotifications::CompleteAction},
                              {QStringLiteral("Essay"), DesktopNotifications::SnoozeAction},
                              {QStringLiteral("Reading"), DesktopNotifications::OpenAction}},
                             &error))
        << qPrintable(error);
    DesktopNotifications notifications(daemon.connection());
    QSignalSpy shown(&notifications, &DesktopNotifications::shown);
    QSignalSpy opened(&notifications, &DesktopNotifications::openRequested);
    QSignalSpy completed(&notifications, &DesktopNotifications::completeRequested);
    QSignalSpy snoozed(&notifications, &DesktopNotifications::snoozeRequested);

    struct Case {
        QString name;
        QSignalSpy *spy;
    };
    const QList<Case> cases{{"Lab", &completed}, {"Essay", &snoozed}, {"Reading", &opened}, {"Poster", &opened}};
    for (const Case &item : cases) {
        SCOPED_TRACE(item.name.toStdString());
        const AssignmentRef record = assignment(item.name, Tomorrow9);
        const qsizetype before = opened.size() + completed.size() + snoozed.size();
        notifications.show(Reminder{Clock::now(), {record}, false});
        ASSERT_TRUE(shown.wait(10000));
        ASSERT_TRUE(daemon.waitForDisplayed(1));
        ASSERT_TRUE(daemon.dunstctl({QStringLiteral("action"), QStringLiteral("0")}));
        ASSERT_TRUE(item.spy->wait(10000) || item.spy->size() > 0);
        EXPECT_EQ(opened.size() + completed.size() + snoozed.size(), before + 1);
        const auto records = item.spy->last().at(0).value<AssignmentList>();
        ASSERT_EQ(records.size(), 1);
        EXPECT_EQ(records[0].get(), record.get());
        // The daemon closes it after the action; the next case starts from an empty screen.
        daemon.dunstctl({QStringLiteral("close-all")});
        ASSERT_TRUE(QTest::qWaitFor([&] { return notifications.openCount() == 0; }, 10000));
    }
}
