#include "SyncTestSupport.h"

#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/UserDefaults.h"
#include "support/TestEnvironment.h"
#include "sync/AGKeychain.h"
#include "sync/Hashing.h"
#include "sync/Syncing.h"
#include "sync/SyncingKeys.h"
#include "sync/ui/BusyIndicator.h"
#include "sync/ui/SyncingPrefs.h"
#include "list/ui/MainMenus.h"
#include "list/ui/MainWindow.h"
#include "store/StartupSequence.h"

#include <QAction>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

namespace {

class SyncingPrefsTest : public SyncTest
{
protected:
    void SetUp() override
    {
        SyncTest::SetUp();
        ASSERT_TRUE(sharedKeyring().isRunning());
        QString error;
        ASSERT_TRUE(m_web.start(&error)) << error.toStdString();
        Syncing::OnlineService service = Syncing::productService();
        service.ftpHost = QStringLiteral("127.0.0.1:%1").arg(LocalServers::freePort());
        service.webAddress = m_web.webAddress();
        m_engine = std::make_unique<Syncing>(service);
        // Each test has user names of its own: the keychain outlives the test.
        m_user = QString::fromUtf8(testing::UnitTest::GetInstance()->current_test_info()->name());
    }
    void TearDown() override
    {
        while (AGKeychain::checkForExistanceOfKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind,
                                                           m_user))
            AGKeychain::deleteKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind, m_user);
        m_web.stop();
        SyncTest::TearDown();
    }

    template<typename T>
    static T *child(SyncingPrefs &pane, const char *name)
    {
        T *found = pane.findChild<T *>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    static void choose(SyncingPrefs &pane, int method)
    {
        QComboBox *popup = child<QComboBox>(pane, "syncingMethod");
        popup->setCurrentIndex(method);
        Q_EMIT popup->activated(method);
    }
    static QVariantMap saved() { return UserDefaults().dictionary(SyncingKeys::Group); }
    static QString keychainPassword(const QString &user)
    {
        return AGKeychain::getPasswordFromKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind, user);
    }

    LocalServers::AccountCheckServer m_web;
    std::unique_ptr<Syncing> m_engine;
    QString m_user;
};

} // namespace

TEST_F(SyncingPrefsTest, EachMethodHasItsTabAndHeightAndSavesOnlyItsKeys)
{
    writeSettings({{SyncingKeys::Method, qint64(2)},
                   {SyncingKeys::FTPName, QStringLiteral("me")},
                   {SyncingKeys::FTPServer, QStringLiteral("ftp.example.com")},
                   {SyncingKeys::FTPPath, QStringLiteral("/planner/")},
                   {SyncingKeys::OnlineUsername, QStringLiteral("old")}});
    SyncingPrefs pane(m_engine.get());
    // Loading saves at once, and a save replaces the whole dictionary.
    EXPECT_EQ(saved(), (QVariantMap{{SyncingKeys::Method, qint64(2)}}));
    EXPECT_EQ(pane.getWindowHeight(), 300);
    EXPECT_EQ(pane.height(), 300);
    EXPECT_EQ(pane.width(), 400);

    auto *details = child<QTabWidget>(pane, "detailsTabView");
    const QList<std::tuple<int, int, bool>> methods{{0, 135, false}, {1, 455, true}, {3, 175, true}, {2, 300, true}};
    for (const auto &[method, height, visible] : methods) {
        SCOPED_TRACE(method);
        choose(pane, method);
        EXPECT_EQ(pane.getViewSize(), height);
        EXPECT_EQ(pane.height(), height);
        EXPECT_EQ(details->isVisibleTo(&pane), visible);
        if (visible) {
            EXPECT_EQ(details->currentIndex(), method - 1);
        }
        QVariantMap expected{{SyncingKeys::Method, qint64(method)}};
        if (method == 1)
            expected.insert(SyncingKeys::OnlineUsername, QString());
        EXPECT_EQ(saved(), expected);
    }
    // The FTP fields are neither read nor stored.
    QTest::keyClicks(child<QLineEdit>(pane, "ftpServer"), QStringLiteral("ftp.example.com"));
    choose(pane, 2);
    EXPECT_EQ(saved(), (QVariantMap{{SyncingKeys::Method, qint64(2)}}));

    SyncingPrefs::setSyncingDefaults();
    EXPECT_EQ(saved(), (QVariantMap{{SyncingKeys::Method, qint64(0)}}));
}

TEST_F(SyncingPrefsTest, TypingChecksAQuarterSecondAfterTheLastKeystroke)
{
    SyncingPrefs pane(m_engine.get());
    choose(pane, 1);
    auto *user = child<QLineEdit>(pane, "onlineUsername");
    auto *password = child<QLineEdit>(pane, "onlinePassword");
    auto *spinner = child<BusyIndicator>(pane, "confirmationProgressIndicator");
    auto *download = child<QPushButton>(pane, "downloadButton");
    m_web.setBody("1\n");

    // A user name without a password spins and never checks.
    QTest::keyClicks(user, m_user);
    EXPECT_TRUE(spinner->isAnimating());
    EXPECT_FALSE(pane.hasPendingCheck());
    QTest::qWait(400);
    EXPECT_TRUE(m_web.requests().isEmpty());
    EXPECT_EQ(pane.shownImage(), QString());
    EXPECT_FALSE(download->isEnabled());

    QTest::keyClicks(password, QStringLiteral("secre"));
    EXPECT_TRUE(pane.hasPendingCheck());
    QTest::qWait(100);
    QTest::keyClicks(password, QStringLiteral("t"));
    // Every keystroke starts the quarter second again.
    const auto timers = pane.findChildren<QTimer *>(QStringLiteral("checkTimer"));
    const auto pending = std::count_if(timers.begin(), timers.end(), [](QTimer *t) { return t->isActive(); });
    EXPECT_EQ(pending, 1);
    for (QTimer *timer : timers) {
        if (timer->isActive()) {
            EXPECT_GT(timer->remainingTime(), 200);
        }
    }
    EXPECT_TRUE(m_web.requests().isEmpty());
    QTRY_VERIFY_WITH_TIMEOUT(!pane.hasPendingCheck(), 2000);
    ASSERT_EQ(m_web.requests().size(), 1);
    EXPECT_EQ(m_web.requests().first(), QStringLiteral("/userexists.php?username=%1&password=%2")
                                            .arg(m_user, Hashing::md5HexOfText(QStringLiteral("secret"))));
    EXPECT_EQ(pane.shownImage(), QStringLiteral("GreenCheck"));
    EXPECT_FALSE(spinner->isAnimating());
    EXPECT_TRUE(download->isEnabled());
    // Accepted: the user name is saved, the password goes to the keychain and nowhere else.
    EXPECT_EQ(saved(), (QVariantMap{{SyncingKeys::Method, qint64(1)}, {SyncingKeys::OnlineUsername, m_user}}));
    EXPECT_EQ(keychainPassword(m_user), QStringLiteral("secret"));
    EXPECT_FALSE(TestEnvironment::readFile(UserDefaults().path()).contains("secret"));

    // A changed password that the service refuses: red cross, no download, the keychain keeps the old one.
    m_web.setBody("0");
    QTest::keyClicks(password, QStringLiteral("2"));
    EXPECT_EQ(pane.shownImage(), QString());
    EXPECT_FALSE(download->isEnabled());
    QTRY_VERIFY_WITH_TIMEOUT(!pane.hasPendingCheck(), 2000);
    EXPECT_EQ(pane.shownImage(), QStringLiteral("RedX"));
    EXPECT_FALSE(download->isEnabled());
    EXPECT_EQ(keychainPassword(m_user), QStringLiteral("secret"));

    // Accepted again: the new password replaces the old in the one item.
    m_web.setBody("1");
    QTest::keyClicks(password, QStringLiteral("3"));
    QTRY_VERIFY_WITH_TIMEOUT(!pane.hasPendingCheck(), 2000);
    EXPECT_EQ(pane.shownImage(), QStringLiteral("GreenCheck"));
    EXPECT_EQ(keychainPassword(m_user), QStringLiteral("secret23"));
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind,
                                                          m_user),
              1);

    // Another method drops the user name from the dictionary; the keychain item stays.
    choose(pane, 2);
    EXPECT_EQ(saved(), (QVariantMap{{SyncingKeys::Method, qint64(2)}}));
    EXPECT_EQ(keychainPassword(m_user), QStringLiteral("secret23"));
}

TEST_F(SyncingPrefsTest, LoadingFillsTheFieldsFromTheSettingsAndKeychainAndChecks)
{
    ASSERT_TRUE(AGKeychain::addKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind, m_user,
                                            QStringLiteral("stored")));
    writeSettings({{SyncingKeys::Method, qint64(1)}, {SyncingKeys::OnlineUsername, m_user}});
    m_web.setBody("1");
    SyncingPrefs pane(m_engine.get());
    EXPECT_EQ(child<QLineEdit>(pane, "onlineUsername")->text(), m_user);
    EXPECT_EQ(child<QLineEdit>(pane, "onlinePassword")->text(), QStringLiteral("stored"));
    EXPECT_EQ(child<QTabWidget>(pane, "detailsTabView")->currentIndex(), 0);
    EXPECT_TRUE(pane.hasPendingCheck());
    QTRY_VERIFY_WITH_TIMEOUT(!pane.hasPendingCheck(), 2000);
    EXPECT_EQ(pane.shownImage(), QStringLiteral("GreenCheck"));
    EXPECT_EQ(m_web.requests().size(), 1);
}

TEST_F(SyncingPrefsTest, ClosingWithAnUnconfirmedOnlineAccountSwitchesSyncingOff)
{
    SyncingPrefs pane(m_engine.get());
    choose(pane, 1);
    m_web.setBody("0");
    QTest::keyClicks(child<QLineEdit>(pane, "onlineUsername"), m_user);
    QTest::keyClicks(child<QLineEdit>(pane, "onlinePassword"), QStringLiteral("wrong"));
    QTRY_VERIFY_WITH_TIMEOUT(!pane.hasPendingCheck(), 2000);
    EXPECT_EQ(pane.shownImage(), QStringLiteral("RedX"));
    pane.preferencesPanelWillClose();
    EXPECT_EQ(child<QComboBox>(pane, "syncingMethod")->currentIndex(), 0);
    EXPECT_EQ(saved(), (QVariantMap{{SyncingKeys::Method, qint64(0)}}));

    // A confirmed account stays on.
    choose(pane, 1);
    m_web.setBody("1");
    QTest::keyClicks(child<QLineEdit>(pane, "onlinePassword"), QStringLiteral("!"));
    QTRY_VERIFY_WITH_TIMEOUT(!pane.hasPendingCheck(), 2000);
    pane.preferencesPanelWillClose();
    EXPECT_EQ(saved().value(SyncingKeys::Method), QVariant(qint64(1)));

    // Other methods are left as they are.
    choose(pane, 2);
    pane.preferencesPanelWillClose();
    EXPECT_EQ(saved().value(SyncingKeys::Method), QVariant(qint64(2)));
}

// The pane's button and the File menu's item ask the same question before anything is touched.
TEST_F(SyncingPrefsTest, DownloadAsksFirstFromThePaneAndFromTheFileMenu)
{
    writeSampleData(QStringLiteral("local"));
    SyncingPrefs pane(m_engine.get());
    writeSettings({{SyncingKeys::Method, qint64(3)}});
    MainWindow window;
    StartupSequence::setUpWindowFromPreferences(window.startupSteps());
    QAction *download = window.menus()->action(MainMenus::Command::DownloadData);
    ASSERT_NE(download, nullptr);

    const std::function<void()> ways[] = {[&] { pane.downloadDataFromServer(); }, [&] { download->trigger(); }};
    for (const auto &ask : ways) {
        const auto before = snapshot(dataFolder(), true);
        Alerts::queueAnswer(SyncingPrefs::NoButton);
        ask();
        const auto asked = Alerts::takeAsked();
        ASSERT_EQ(asked.size(), 1);
        EXPECT_EQ(asked[0].title, QStringLiteral("Download Data"));
        EXPECT_EQ(asked[0].message, QStringLiteral("Are you sure you want to download your data from Quillory "
                                                   "Online?  Doing so will overwrite any data that you have on this "
                                                   "computer."));
        EXPECT_EQ(asked[0].buttons, (QStringList{QStringLiteral("Yes"), QStringLiteral("No")}));
        EXPECT_TRUE(m_sheet.isEmpty());
        EXPECT_EQ(snapshot(dataFolder(), true), before) << "not even a backup before the answer";

        Alerts::queueAnswer(SyncingPrefs::YesButton);
        ask();
        EXPECT_EQ(m_sheet.value(0), QStringLiteral("show:Downloading Data..."));
        Alerts::takeAsked();
        m_sheet.clear();
    }
}
