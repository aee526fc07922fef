#include "DavServers.h"
#include "LocalServers.h"
#include "SyncSandbox.h"
#include "TestEnvironment.h"

#include "caldav/CalDavSettings.h"
#include "caldav/CalDavSyncRunner.h"
#include "caldav/ui/CalDavSyncCommand.h"
#include "caldav/ui/CalendarServerPane.h"
#include "platform/Paths.h"
#include "store/Assignment.h"
#include "store/AssignmentsDocument.h"

#include <QAbstractButton>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace {

// Pictures of the pane's states for a person to look at, when QUILLORY_SHOTS names a folder.
void shoot(QWidget *widget, const QString &name)
{
    const QString folder = qEnvironmentVariable("QUILLORY_SHOTS");
    if (!folder.isEmpty())
        widget->grab().save(folder + QLatin1Char('/') + name + QStringLiteral(".png"));
}

template<typename T>
T *child(QWidget *parent, const char *name)
{
    T *found = parent->findChild<T *>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
}

bool waitUntil(const std::function<bool()> &condition, int ms = 20000)
{
    return QTest::qWaitFor(condition, ms);
}

} // namespace

TEST(CalendarServerPane, CheckFindsCreatesAndChoosesThenTheCommandSyncs)
{
    // The process-wide keyring: a keyring of this test's own would take its bus away at the end,
    // and the bus connection that libsecret leaves open ends the process when its bus goes.
    ASSERT_TRUE(sharedKeyring().isRunning());
    DavServer server;
    ASSERT_TRUE(server.start(DavServer::Kind::Radicale, "student", "secret"));

    CalendarServerPane pane;
    pane.resize(520, 420);
    pane.show();
    auto *address = child<QLineEdit>(&pane, "calendarServerAddress");
    auto *user = child<QLineEdit>(&pane, "calendarServerUser");
    auto *password = child<QLineEdit>(&pane, "calendarServerPassword");
    auto *status = child<QLabel>(&pane, "calendarServerStatus");
    auto *calendars = child<QListWidget>(&pane, "calendarServerCalendars");
    auto *create = child<QPushButton>(&pane, "calendarServerCreate");
    EXPECT_FALSE(create->isEnabled());
    shoot(&pane, "pane-empty");

    // A refused password says so, and saves nothing.
    QTest::keyClicks(address, server.address());
    QTest::keyClicks(user, "student");
    QTest::keyClicks(password, "wrong");
    QTest::mouseClick(child<QPushButton>(&pane, "calendarServerCheck"), Qt::LeftButton);
    EXPECT_EQ(status->text(), "Checking…");
    shoot(&pane, "pane-checking");
    ASSERT_TRUE(waitUntil([&] { return !pane.isChecking(); }));
    EXPECT_EQ(status->text(), "The server refused the user name or password.");
    shoot(&pane, "pane-error");
    EXPECT_FALSE(CalDavSettings::load().isComplete());

    password->clear();
    QTest::keyClicks(password, "secret");
    QTest::keyClick(password, Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !pane.isChecking(); }));
    EXPECT_EQ(calendars->count(), 0);
    ASSERT_TRUE(create->isEnabled()) << status->text().toStdString();
    QTest::mouseClick(create, Qt::LeftButton);
    ASSERT_TRUE(waitUntil([&] { return !pane.isChecking() && calendars->count() == 1; }));
    EXPECT_EQ(calendars->item(0)->text(), "Quillory");
    EXPECT_FALSE(create->isEnabled());
    shoot(&pane, "pane-found");
    const CalDavSettings saved = CalDavSettings::load();
    EXPECT_TRUE(saved.isComplete());
    EXPECT_EQ(saved.calendarName, "Quillory");
    EXPECT_EQ(CalDavSettings::password("student"), "secret");
    EXPECT_FALSE(TestEnvironment::readFile(TestEnvironment::home() + "/Library/Preferences/com.brevandt.Quillory.plist").contains("secret"));

    // The command: the first sync asks how to begin, then says what it did.
    QDir().mkpath(Paths::dataFolder());
    const auto document = AssignmentsDocument::open();
    ASSERT_TRUE(document->setAll({Assignments::make({{AssignmentKeys::Name, "Essay"}}),
                                  Assignments::make({{AssignmentKeys::Name, "Lab"}})}));
    QWidget window;
    window.resize(700, 500);
    window.show();
    CalDavSyncCommand command(&window);
    // The question comes once the server's count is in; it is answered as a person would.
    QString question;
    QTimer answer;
    QObject::connect(&answer, &QTimer::timeout, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box || box->objectName() != "calendarFirstSync")
            return;
        question = box->informativeText();
        for (QAbstractButton *button : box->buttons())
            if (button->text() == "Merge")
                button->click();
    });
    answer.start(50);
    command.action()->trigger();
    ASSERT_TRUE(waitUntil([&] { return command.lastSummary() != nullptr; }));
    answer.stop();
    EXPECT_TRUE(question.contains("This computer has 2 assignments; the calendar has 0 to-dos.")) << question.toStdString();
    auto *summary = qobject_cast<QMessageBox *>(command.lastSummary());
    EXPECT_EQ(summary->informativeText(), "2 sent, 0 received");
    QTest::qWait(100);
    shoot(summary, "sync-summary");
    summary->accept();
}
