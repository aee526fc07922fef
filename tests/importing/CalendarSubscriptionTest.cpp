#include "list/ui/MainWindowTestSupport.h"

#include "importing/CalendarSubscriptions.h"
#include "importing/ImportPlan.h"
#include "list/ui/CalendarSubscriptionRefresher.h"
#include "list/ui/CalendarSubscriptionsWindow.h"
#include "list/ui/SubscribeCalendarSheet.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/UserDefaults.h"
#include "store/ui/GeneralPane.h"
#include "support/LocalServers.h"
#include "sync/UrlFetch.h"

#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>

using namespace ListTest;
using namespace WindowTest;
using Outcome = UrlFetch::Conditional::Outcome;

namespace {

// tests/importing/feed_server.py serving a folder on 127.0.0.1, stopped with the object.
class FeedServer
{
public:
    FeedServer()
    {
        m_port = LocalServers::freePort();
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        LocalServers::endWithTest(m_process);
        m_process.start(QStringLiteral("/usr/bin/python3"),
                        {QStringLiteral(QUILLORY_TEST_DATA_DIR "/../importing/feed_server.py"), QString::number(m_port),
                         m_folder.path()});
        EXPECT_TRUE(LocalServers::waitForPort(m_port));
    }
    ~FeedServer()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    // Puts a fixture up as feed.ics, dated `secondsAgo` in the past (Last-Modified has whole seconds).
    void serve(const QString &fixture, int secondsAgo)
    {
        const QString path = m_folder.filePath(QStringLiteral("feed.ics"));
        QFile::remove(path);
        QFile::copy(TestEnvironment::fixture(QStringLiteral("importing/") + fixture), path);
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        file.setFileTime(QDateTime::currentDateTimeUtc().addSecs(-secondsAgo), QFileDevice::FileModificationTime);
    }
    QString url() const { return QStringLiteral("http://127.0.0.1:%1/feed.ics").arg(m_port); }
    QStringList requests() const
    {
        return QString::fromUtf8(TestEnvironment::readFile(m_folder.filePath(QStringLiteral("requests.log"))))
            .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    quint16 m_port = 0;
};

// The main window over a store of one assignment of the student's own, with a feed server serving
// the first version of a course calendar.
class SubscribedWindow : public testing::Test
{
protected:
    void SetUp() override
    {
        freshPreferences();
        writeStore({record("Own assignment")});
        server.serve(QStringLiteral("feed-before.ics"), 60);
        w = std::make_unique<Window>();
        refresher = w->window->findChild<CalendarSubscriptionRefresher *>();
        ASSERT_NE(refresher, nullptr);
        done = std::make_unique<QSignalSpy>(refresher, &CalendarSubscriptionRefresher::refreshed);
    }
    // Subscribes as the sheet does and waits for the first fetch to be imported.
    void subscribe(const QString &url)
    {
        refresher->subscribe(url);
        ASSERT_TRUE(done->wait(10000));
        done->clear();
    }

    FeedServer server;
    std::unique_ptr<Window> w;
    CalendarSubscriptionRefresher *refresher = nullptr;
    std::unique_ptr<QSignalSpy> done;
};

} // namespace

TEST(CalendarSubscription, AddressesAreTakenAsCourseSitesShowThem)
{
    QString error;
    EXPECT_EQ(CalendarSubscriptions::normalizedUrl(" webcal://lms.example.edu/feeds/calendars/user_x.ics ", &error),
              QStringLiteral("https://lms.example.edu/feeds/calendars/user_x.ics"));
    EXPECT_EQ(CalendarSubscriptions::normalizedUrl("https://moodle.example.org/calendar/export_execute.php?authtoken=a1",
                                                   &error),
              QStringLiteral("https://moodle.example.org/calendar/export_execute.php?authtoken=a1"));
    for (const QString &bad : {QStringLiteral(""), QStringLiteral("ftp://example.edu/x.ics"), QStringLiteral("calendar"),
                               QStringLiteral("https://")}) {
        error.clear();
        EXPECT_FALSE(CalendarSubscriptions::normalizedUrl(bad, &error)) << bad.toStdString();
        EXPECT_TRUE(error.contains("is not a calendar address")) << error.toStdString();
    }
}

TEST(CalendarSubscription, AnUnchangedFeedAnswersNotModified)
{
    FeedServer server;
    server.serve(QStringLiteral("feed-before.ics"), 60);
    const UrlFetch::Conditional first = UrlFetch::fetchIfChanged(server.url().toUtf8(), {}, {});
    ASSERT_EQ(first.outcome, Outcome::Changed) << first.error.toStdString();
    EXPECT_TRUE(first.body.startsWith("BEGIN:VCALENDAR"));
    EXPECT_FALSE(first.etag.isEmpty());
    EXPECT_FALSE(first.lastModified.isEmpty());

    EXPECT_EQ(UrlFetch::fetchIfChanged(server.url().toUtf8(), first.etag, {}).outcome, Outcome::NotModified);
    EXPECT_EQ(UrlFetch::fetchIfChanged(server.url().toUtf8(), {}, first.lastModified).outcome, Outcome::NotModified);

    server.serve(QStringLiteral("feed-after.ics"), 0);
    const UrlFetch::Conditional changed = UrlFetch::fetchIfChanged(server.url().toUtf8(), first.etag, first.lastModified);
    EXPECT_EQ(changed.outcome, Outcome::Changed);
    EXPECT_NE(changed.etag, first.etag);

    const QByteArray closed = QStringLiteral("http://127.0.0.1:%1/feed.ics").arg(LocalServers::freePort()).toUtf8();
    const UrlFetch::Conditional failed = UrlFetch::fetchIfChanged(closed, {}, {});
    EXPECT_EQ(failed.outcome, Outcome::Failed);
    EXPECT_FALSE(failed.error.isEmpty());
}

TEST_F(SubscribedWindow, SubscribingImportsAndLaterChecksFollowTheFeed)
{

    w->window->perform(MainMenus::Command::SubscribeCalendar);
    auto *sheet = w->window->findChild<SubscribeCalendarSheet *>();
    ASSERT_NE(sheet, nullptr);
    QTest::keyClicks(sheet->addressField(), server.url());
    QTest::mouseClick(sheet->subscribeButton(), Qt::LeftButton);
    ASSERT_TRUE(done->wait(10000));
    EXPECT_TRUE(done->takeFirst().at(2).toString().isEmpty());
    QTRY_VERIFY(!sheet->isVisible());
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].message, "Subscribed.  4 added, 0 updated.  The calendar is checked again every 4 hours.");
    EXPECT_EQ(storedNames(true), QStringList({"Essay 3", "Lab 9", "Outline", "Own assignment", "Peer review"}));
    EXPECT_TRUE(w->shown().contains("Outline"));
    // The feed's address (with its private token) stays in the preferences, not in every record.
    EXPECT_EQ(storedNamed("Outline").value(ImportKeys::Record).toMap().value(ImportKeys::Source).toString(),
              "127.0.0.1");
    const QList<CalendarSubscriptions::Subscription> kept = CalendarSubscriptions::load();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(kept[0].url, server.url());
    EXPECT_FALSE(kept[0].etag.isEmpty());

    // Nothing changed: the check sends the validators and the store is left alone.
    const QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());
    refresher->refreshAll();
    ASSERT_TRUE(done->wait(10000));
    EXPECT_TRUE(server.requests().last().startsWith("304 /feed.ics \"")) << server.requests().last().toStdString();
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);

    // The feed changes; the student renamed the essay and deleted the lab meanwhile, so only the rest
    // follows and the lab stays deleted.
    AssignmentList remaining;
    for (const AssignmentRef &r : w->controller()->allAssignments()) {
        if (r->string(AssignmentKeys::Name) == QLatin1String("Essay 3"))
            r->set(AssignmentKeys::Name, QStringLiteral("Essay 3 (draft)"));
        if (r->string(AssignmentKeys::Name) != QLatin1String("Lab 9"))
            remaining.append(r);
    }
    w->controller()->setAllAssignments(remaining);
    w->controller()->saveData();
    server.serve(QStringLiteral("feed-after.ics"), 0);
    refresher->refreshAll();
    ASSERT_TRUE(done->wait(10000));
    EXPECT_TRUE(server.requests().last().startsWith("200 /feed.ics \"")) << server.requests().last().toStdString();
    EXPECT_EQ(storedNames(true), QStringList({"Annotated outline", "Essay 3 (draft)", "Final essay", "Own assignment",
                                          "Peer review"}));
    EXPECT_EQ(storedNamed("Essay 3 (draft)").value(AssignmentKeys::Date).toString(), stored(2026, 12, 2));
    EXPECT_TRUE(w->shown().contains("Final essay"));
}

TEST_F(SubscribedWindow, AFeedThatCannotBeFetchedOrReadChangesNothing)
{
    server.serve(QStringLiteral("truncated.ics"), 60);
    const QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());

    w->window->perform(MainMenus::Command::SubscribeCalendar);
    auto *sheet = w->window->findChild<SubscribeCalendarSheet *>();
    ASSERT_NE(sheet, nullptr);
    QTest::keyClicks(sheet->addressField(), "ftp://example.edu/x.ics");
    QTest::mouseClick(sheet->subscribeButton(), Qt::LeftButton);
    EXPECT_TRUE(sheet->statusLabel()->text().contains("is not a calendar address"));

    sheet->addressField()->setText(server.url());
    QTest::mouseClick(sheet->subscribeButton(), Qt::LeftButton);
    ASSERT_TRUE(done->wait(10000));
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->statusLabel()->text(), "The calendar could not be subscribed to.  The calendar file is cut short: "
                                            "it does not end with END:VCALENDAR.  Nothing was imported.");
    EXPECT_TRUE(sheet->subscribeButton()->isEnabled());

    sheet->addressField()->setText(QStringLiteral("http://127.0.0.1:%1/feed.ics").arg(LocalServers::freePort()));
    QTest::mouseClick(sheet->subscribeButton(), Qt::LeftButton);
    ASSERT_TRUE(done->wait(10000));
    EXPECT_TRUE(sheet->statusLabel()->text().startsWith("The calendar could not be subscribed to."));
    EXPECT_TRUE(CalendarSubscriptions::load().isEmpty());
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);
    sheet->reject();
}

TEST(CalendarSubscription, ShownAddressesHideTheirTokens)
{
    EXPECT_EQ(CalendarSubscriptions::displayUrl("https://lms.example.edu/feeds/calendars/user_8f3kQ2pLx91ZtT0a.ics"),
              "https://lms.example.edu/feeds/calendars/user….ics");
    EXPECT_EQ(CalendarSubscriptions::displayUrl(
                  "https://moodle.example.org/calendar/export_execute.php?userid=42&authtoken=a1b2c3&preset_what=all"),
              "https://moodle.example.org/calendar/export_execute.php?userid=…&authtoken=…&preset_what=…");
    EXPECT_EQ(CalendarSubscriptions::displayUrl("http://127.0.0.1:8080/feed.ics"), "http://127.0.0.1:8080/feed.ics");
}

TEST_F(SubscribedWindow, ARemovedSubscriptionIsNoLongerCheckedAndItsAssignmentsStay)
{
    subscribe(server.url());

    w->window->perform(MainMenus::Command::CalendarSubscriptions);
    auto *window = w->window->findChild<CalendarSubscriptionsWindow *>();
    ASSERT_NE(window, nullptr);
    QTreeWidget *list = window->list();
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(list->topLevelItem(0)->text(0), server.url());
    EXPECT_NE(list->topLevelItem(0)->text(1), "Not yet");

    // Subscribed meanwhile (from the sheet, or another window): the open list follows.
    const QString secret = server.url() + QStringLiteral("?authtoken=Zq81mB0x");
    refresher->subscribe(secret);
    ASSERT_TRUE(done->wait(10000));
    done->clear();
    ASSERT_EQ(list->topLevelItemCount(), 2);
    EXPECT_EQ(list->topLevelItem(1)->text(0), server.url() + QStringLiteral("?authtoken=…"));

    // Delete asks first; cancelling keeps it.
    const QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());
    list->setCurrentItem(list->topLevelItem(0));
    list->setFocus();
    Alerts::queueAnswer(QStringLiteral("Cancel"));
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(CalendarSubscriptions::load().size(), 2);
    Alerts::queueAnswer(CalendarSubscriptionsWindow::RemoveTitle);
    QTest::keyClick(list, Qt::Key_Delete);
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 2);
    EXPECT_EQ(asked[1].informativeText,
              "The calendar will no longer be checked.  Assignments it already added stay in your list.");
    const QList<CalendarSubscriptions::Subscription> kept = CalendarSubscriptions::load();
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(kept[0].url, secret);
    ASSERT_EQ(list->topLevelItemCount(), 1);
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);

    // The next round asks only the feed still subscribed, and the removed one's entries are untouched.
    const qsizetype asked0 = server.requests().size();
    server.serve(QStringLiteral("feed-after.ics"), 0);
    refresher->refreshAll();
    ASSERT_TRUE(done->wait(10000));
    QTest::qWait(200);
    const QStringList requests = server.requests().mid(asked0);
    ASSERT_EQ(requests.size(), 1) << requests.join(" | ").toStdString();
    EXPECT_TRUE(requests[0].startsWith("200 /feed.ics?authtoken=Zq81mB0x ")) << requests[0].toStdString();
    EXPECT_TRUE(storedNames(true).contains("Lab 9"));

    // Check Now goes through the same path for the one selected.
    done->clear();
    list->setCurrentItem(list->topLevelItem(0));
    QTest::mouseClick(window->checkNowButton(), Qt::LeftButton);
    ASSERT_TRUE(done->wait(10000));
    EXPECT_TRUE(server.requests().last().startsWith("304 /feed.ics?authtoken=Zq81mB0x "));
    EXPECT_TRUE(window->statusLabel()->text().endsWith("checked: 0 added, 0 updated.")) << window->statusLabel()->text().toStdString();
    window->close();
}

TEST_F(SubscribedWindow, AFeedRemovedWhileItIsFetchedImportsNothing)
{
    subscribe(server.url());

    server.serve(QStringLiteral("feed-after.ics"), 0);
    const QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());
    refresher->refresh(server.url());
    ASSERT_TRUE(CalendarSubscriptions::remove(server.url()));
    ASSERT_TRUE(done->wait(10000));
    EXPECT_EQ(done->first().at(2).toString(), "The subscription was removed, so nothing was imported.");
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);
    EXPECT_TRUE(CalendarSubscriptions::load().isEmpty());
}

TEST_F(SubscribedWindow, DeletingAllDataForgetsTheSubscriptionsSoSubscribingAgainBringsEverythingBack)
{
    subscribe(server.url());
    ASSERT_EQ(storedNames(true).size(), 5);
    GeneralPane pane;
    Alerts::queueAnswer(QStringLiteral("Delete All Data"));
    pane.findChild<QPushButton *>(QStringLiteral("deleteAllData"))->click();
    Alerts::takeAsked();
    EXPECT_TRUE(readStore().isEmpty());
    EXPECT_TRUE(CalendarSubscriptions::load().isEmpty());

    // Kept, the subscription would take every entry it brought in for deleted by the student.
    subscribe(server.url());
    EXPECT_EQ(storedNames(true), QStringList({"Essay 3", "Lab 9", "Outline", "Peer review"}));
}
