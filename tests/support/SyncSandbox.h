#pragma once

#include "LocalServers.h"

#include <QLockFile>
#include <QString>
#include <QVariantMap>

#include <memory>

// What every test of the sync engine needs, whether it drives the engine in-process or the whole
// program: a Secret Service of its own, the engine's fixed paths below /tmp to itself, and the
// account of the user's FTP server.

// The Secret Service of this test program, on a private bus started before the first test (linking
// this file in registers that) and stopped after the last.
LocalServers::PrivateKeyring &sharedKeyring();

namespace SyncSandbox {

const QString FtpUser = QStringLiteral("student");
const QString FtpPassword = QStringLiteral("ftp secret");

// Stores `password` for FtpUser as the program's "Internet Password" keychain item.
void setFtpPassword(const QString &password);
// The sync settings of an FTP server at "host:port" with the remote folder `path`.
QVariantMap ftpSettings(const QString &hostAndPort, const QString &path);

// The engine works on fixed paths below /tmp: every test that lets it run holds this lock, so that
// two runs of the suites on one computer never share them, and starts and ends with them cleared.
class PathsLock
{
public:
    void take();
    void release();

private:
    std::unique_ptr<QLockFile> m_lock;
};

} // namespace SyncSandbox
