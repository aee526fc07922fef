#include "SyncTestSupport.h"

#include "sync/AGKeychain.h"

#include <gtest/gtest.h>

namespace {

const QString Online = AGKeychain::OnlinePasswordItem;
const QString Kind = AGKeychain::QuilloryKind;

// Each test uses user names of its own: the keychain lives as long as the test program.
QString user(const char *name)
{
    return QString::fromUtf8(testing::UnitTest::GetInstance()->current_test_info()->name()) + QLatin1Char('-')
        + QString::fromUtf8(name);
}

} // namespace

TEST(AGKeychain, AddCountReadModifyDelete)
{
    ASSERT_TRUE(sharedKeyring().isRunning());
    const QString alice = user("alice");
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(Online, Kind, alice), 0);
    EXPECT_EQ(AGKeychain::getPasswordFromKeychainItem(Online, Kind, alice), QStringLiteral("error"));
    EXPECT_FALSE(AGKeychain::modifyKeychainItem(Online, Kind, alice, QStringLiteral("x")));
    EXPECT_TRUE(AGKeychain::deleteKeychainItem(Online, Kind, alice)) << "nothing to delete counts as done";

    ASSERT_TRUE(AGKeychain::addKeychainItem(Online, Kind, alice, QStringLiteral("first pässword")));
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(Online, Kind, alice), 1);
    EXPECT_EQ(AGKeychain::getPasswordFromKeychainItem(Online, Kind, alice), QStringLiteral("first pässword"));

    // All three attributes must match.
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(AGKeychain::InternetPasswordItem, Kind, alice), 0);
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(Online, QStringLiteral("Other"), alice), 0);
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(Online, Kind, user("bob")), 0);

    ASSERT_TRUE(AGKeychain::modifyKeychainItem(Online, Kind, alice, QStringLiteral("second")));
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(Online, Kind, alice), 1);
    EXPECT_EQ(AGKeychain::getPasswordFromKeychainItem(Online, Kind, alice), QStringLiteral("second"));

    EXPECT_TRUE(AGKeychain::deleteKeychainItem(Online, Kind, alice));
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(Online, Kind, alice), 0);
}

TEST(AGKeychain, SeveralMatchesReadAndModifyTheFirstAndDeleteTheLast)
{
    ASSERT_TRUE(sharedKeyring().isRunning());
    const QString carol = user("carol");
    ASSERT_TRUE(AGKeychain::addKeychainItem(Online, Kind, carol, QStringLiteral("older")));
    ASSERT_TRUE(AGKeychain::addKeychainItem(Online, Kind, carol, QStringLiteral("newer")));
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(Online, Kind, carol), 2);
    EXPECT_EQ(AGKeychain::getPasswordFromKeychainItem(Online, Kind, carol), QStringLiteral("older"));

    ASSERT_TRUE(AGKeychain::modifyKeychainItem(Online, Kind, carol, QStringLiteral("changed")));
    EXPECT_EQ(AGKeychain::getPasswordFromKeychainItem(Online, Kind, carol), QStringLiteral("changed"));

    ASSERT_TRUE(AGKeychain::deleteKeychainItem(Online, Kind, carol)); // the newest goes
    EXPECT_EQ(AGKeychain::checkForExistanceOfKeychainItem(Online, Kind, carol), 1);
    EXPECT_EQ(AGKeychain::getPasswordFromKeychainItem(Online, Kind, carol), QStringLiteral("changed"));
    EXPECT_TRUE(AGKeychain::deleteKeychainItem(Online, Kind, carol));
}

TEST(AGKeychain, LongPasswordsAreReadBackCutTo1023Bytes)
{
    ASSERT_TRUE(sharedKeyring().isRunning());
    const QString dave = user("dave");
    const QString longPassword(1500, QLatin1Char('p'));
    ASSERT_TRUE(AGKeychain::addKeychainItem(Online, Kind, dave, longPassword));
    EXPECT_EQ(AGKeychain::getPasswordFromKeychainItem(Online, Kind, dave), longPassword.left(1023));

    // A cut through a two-byte character drops what is left of it instead of inventing one.
    const QString erin = user("erin");
    const QString umlauts = QString(1022, QLatin1Char('a')) + QStringLiteral("ää");
    ASSERT_TRUE(AGKeychain::addKeychainItem(Online, Kind, erin, umlauts));
    EXPECT_EQ(AGKeychain::getPasswordFromKeychainItem(Online, Kind, erin), QString(1022, QLatin1Char('a')));
}
