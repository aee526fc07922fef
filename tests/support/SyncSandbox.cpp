#include "SyncSandbox.h"

#include "sync/AGKeychain.h"
#include "sync/SyncArchive.h"
#include "sync/SyncingKeys.h"

#include <QDir>
#include <gtest/gtest.h>

namespace {

class KeyringEnvironment : public testing::Environment
{
public:
    void SetUp() override
    {
        QString error;
        if (!sharedKeyring().start(&error))
            ADD_FAILURE() << "private keyring: " << error.toStdString();
    }
    void TearDown() override { sharedKeyring().stop(); }
};

// Registered before main() runs the tests, so the bus exists before anything connects to one.
const auto *g_keyringEnvironment = testing::AddGlobalTestEnvironment(new KeyringEnvironment);

void clearTemporaryPaths()
{
    SyncArchive::removeArchive();
    SyncArchive::removeUnpackFolder();
    QDir(SyncArchive::StagingFolder).removeRecursively();
}

} // namespace

LocalServers::PrivateKeyring &sharedKeyring()
{
    static LocalServers::PrivateKeyring keyring;
    return keyring;
}

namespace SyncSandbox {

void setFtpPassword(const QString &password)
{
    const auto &item = AGKeychain::InternetPasswordItem;
    const auto &kind = AGKeychain::QuilloryKind;
    if (AGKeychain::checkForExistanceOfKeychainItem(item, kind, FtpUser))
        ASSERT_TRUE(AGKeychain::modifyKeychainItem(item, kind, FtpUser, password));
    else
        ASSERT_TRUE(AGKeychain::addKeychainItem(item, kind, FtpUser, password));
}

QVariantMap ftpSettings(const QString &hostAndPort, const QString &path)
{
    return {{SyncingKeys::Method, qint64(SyncingKeys::FTPServerMethod)},
            {SyncingKeys::FTPName, FtpUser},
            {SyncingKeys::FTPServer, hostAndPort},
            {SyncingKeys::FTPPath, path}};
}

void PathsLock::take()
{
    m_lock = std::make_unique<QLockFile>(QStringLiteral("/tmp/quillory-sync-tests.lock"));
    m_lock->setStaleLockTime(0);
    ASSERT_TRUE(m_lock->lock());
    clearTemporaryPaths();
}

void PathsLock::release()
{
    if (!m_lock)
        return;
    clearTemporaryPaths();
    m_lock.reset();
}

} // namespace SyncSandbox
