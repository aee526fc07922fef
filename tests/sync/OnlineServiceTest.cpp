#include "SyncTestSupport.h"

#include "platform/Alerts.h"
#include "support/TestEnvironment.h"
#include "sync/AGKeychain.h"
#include "sync/Hashing.h"
#include "sync/SyncArchive.h"
#include "sync/Syncing.h"
#include "sync/SyncingKeys.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

namespace {

// The service's web check answering from 127.0.0.1, and its shared FTP account on pyftpdlib.
class OnlineTest : public SyncTest
{
protected:
    void SetUp() override
    {
        SyncTest::SetUp();
        QString error;
        ASSERT_TRUE(m_web.start(&error)) << error.toStdString();
    }
    Syncing::OnlineService service(const QString &ftpHost = QStringLiteral("127.0.0.1:1")) const
    {
        Syncing::OnlineService service = Syncing::productService();
        service.ftpHost = ftpHost;
        service.webAddress = m_web.webAddress();
        return service;
    }

    LocalServers::AccountCheckServer m_web;
};

} // namespace

TEST_F(OnlineTest, AccountCheckReadsTheFirstCharacterOfTheBody)
{
    Syncing engine(service());
    const QList<std::pair<QByteArray, bool>> answers{
        {"1\n", true}, {"10", true}, {"1", true}, {"0", false}, {"", false}, {"yes", false}, {" 1", false}};
    for (const auto &[body, accepted] : answers) {
        m_web.setBody(body);
        EXPECT_EQ(engine.checkForValidOnlineUsername(QStringLiteral("alice"), QStringLiteral("password")), accepted)
            << body.toStdString();
    }
    EXPECT_EQ(m_web.requests().first(),
              QStringLiteral("/userexists.php?username=alice&password=5f4dcc3b5aa765d61d8327deb882cf99"));

    // An unreachable service refuses.
    Syncing::OnlineService nowhere = service();
    nowhere.webAddress = QStringLiteral("http://127.0.0.1:%1/").arg(LocalServers::freePort());
    m_web.setBody("1");
    EXPECT_FALSE(Syncing(nowhere).checkForValidOnlineUsername(QStringLiteral("alice"), QStringLiteral("password")));
    EXPECT_FALSE(Syncing().checkForValidOnlineUsername(QStringLiteral("alice"), QStringLiteral("password")))
        << "the product's .invalid host never answers";
}

TEST_F(OnlineTest, OnlyCharactersAUrlCannotHoldAreEscaped)
{
    Syncing engine(service());
    const QString password = QStringLiteral("pässwörd");
    EXPECT_EQ(engine.accountCheckUrl(QStringLiteral("a b&c=d?é"), password),
              (m_web.webAddress() + QStringLiteral("userexists.php?username=a%20b&c=d?%C3%A9&password=")
               + Hashing::md5HexOfText(password))
                  .toUtf8());
    m_web.setBody("1");
    EXPECT_TRUE(engine.checkForValidOnlineUsername(QStringLiteral("a b"), password));
    EXPECT_EQ(m_web.requests().last(),
              QStringLiteral("/userexists.php?username=a%20b&password=") + Hashing::md5HexOfText(password));
}

TEST_F(OnlineTest, RoundTripThroughTheSharedAccountWithAFolderPerUser)
{
    ASSERT_TRUE(sharedKeyring().isRunning());
    QTemporaryDir root;
    QDir(root.path()).mkpath(QStringLiteral("alice"));
    LocalServers::FtpServer ftp;
    const auto product = Syncing::productService();
    ASSERT_TRUE(ftp.start(root.path(), product.accountName, product.accountPassword));
    const QString user = QStringLiteral("alice");
    const QString password = QStringLiteral("her own password");
    ASSERT_TRUE(AGKeychain::addKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind, user, password));
    const QVariantMap settings{{SyncingKeys::Method, qint64(SyncingKeys::QuilloryOnline)},
                               {SyncingKeys::OnlineUsername, user}};
    Syncing engine(service(ftp.hostAndPort()));

    // Refused by the service: nothing is sent.
    writeSampleData(QStringLiteral("alice's laptop"));
    writeSettings(settings);
    EXPECT_EQ(engine.onlineUrl(false), QStringLiteral("ftp://") + ftp.hostAndPort() + QStringLiteral("/alice/"));
    EXPECT_EQ(engine.onlineUrl(true),
              QStringLiteral("ftp://") + ftp.hostAndPort() + QStringLiteral("/alice/Quillory.tar"));
    m_web.setBody("0");
    engine.uploadData();
    auto asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].message, QStringLiteral("There was a problem syncing your data:\nunable to login."));
    EXPECT_FALSE(QFileInfo::exists(root.filePath(QStringLiteral("alice/Quillory.tar"))));
    EXPECT_EQ(m_web.requests().last(),
              QStringLiteral("/userexists.php?username=alice&password=") + Hashing::md5HexOfText(password));

    m_web.setBody("1\n");
    m_sheet.clear();
    engine.uploadData();
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_TRUE(m_sheet.contains(QStringLiteral("show:Uploading Data to Quillory Online...")));
    ASSERT_TRUE(QFileInfo::exists(root.filePath(QStringLiteral("alice/Quillory.tar"))));
    const auto uploaded = snapshot(dataFolder());

    switchToSecondHome();
    writeSampleData(QStringLiteral("alice's desktop"));
    writeSettings(settings);
    m_sheet.clear();
    engine.downloadData();
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_TRUE(m_sheet.contains(QStringLiteral("show:Downloading Data from Quillory Online...")));
    EXPECT_EQ(snapshot(dataFolder()), uploaded);

    // A refused download leaves the data, and an archive left in /tmp is not unpacked instead.
    writeSampleData(QStringLiteral("alice's desktop again"));
    const auto before = snapshot(dataFolder());
    TestEnvironment::writeFile(SyncArchive::ArchivePath, "left over");
    m_web.setBody("0");
    engine.downloadData();
    EXPECT_EQ(Alerts::takeAsked().size(), 1);
    EXPECT_EQ(snapshot(dataFolder()), before);

    // No keychain item: refused before anything is fetched.
    const int requests = int(m_web.requests().size());
    writeSettings({{SyncingKeys::Method, qint64(SyncingKeys::QuilloryOnline)},
                   {SyncingKeys::OnlineUsername, QStringLiteral("nobody")}});
    EXPECT_FALSE(engine.checkForValidOnlineUser());
    EXPECT_EQ(m_web.requests().size(), requests);
    AGKeychain::deleteKeychainItem(AGKeychain::OnlinePasswordItem, AGKeychain::QuilloryKind, user);
}
