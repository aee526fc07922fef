#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

class QProcess;

// Real servers on 127.0.0.1 for the tests, each started by the test that needs it and stopped by
// its PID when the object goes (or at stop()).
namespace LocalServers {

// A port nobody listens on right now (a closed port, or one to start a server on).
quint16 freePort();
// True once something accepts connections on 127.0.0.1:port, waiting at most `timeoutMs`.
bool waitForPort(quint16 port, int timeoutMs = 10000);

// pyftpdlib serving `root` with one writable account.
class FtpServer
{
public:
    FtpServer() = default;
    ~FtpServer();
    FtpServer(const FtpServer &) = delete;
    FtpServer &operator=(const FtpServer &) = delete;

    bool start(const QString &root, const QString &user, const QString &password, QString *error = nullptr);
    void stop();
    quint16 port() const { return m_port; }
    // "127.0.0.1:PORT", as a host is typed into the settings.
    QString hostAndPort() const;

private:
    std::unique_ptr<QProcess> m_process;
    quint16 m_port = 0;
};

// tests/support/account_check_server.py: answers /userexists.php with a body the test sets.
class AccountCheckServer
{
public:
    AccountCheckServer();
    ~AccountCheckServer();
    AccountCheckServer(const AccountCheckServer &) = delete;
    AccountCheckServer &operator=(const AccountCheckServer &) = delete;

    bool start(QString *error = nullptr);
    void stop();
    void setBody(const QByteArray &body);
    // The request paths received so far ("/userexists.php?username=...").
    QStringList requests() const;
    // "http://127.0.0.1:PORT/"
    QString webAddress() const;

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_process;
    quint16 m_port = 0;
};

// A private D-Bus session bus with gnome-keyring-daemon's Secret Service on it, its keyring
// unlocked and kept in a temporary folder. start() points this process's
// DBUS_SESSION_BUS_ADDRESS at the private bus (before anything connects to a bus); stop() puts the
// old value back.
class PrivateKeyring
{
public:
    PrivateKeyring();
    ~PrivateKeyring();
    PrivateKeyring(const PrivateKeyring &) = delete;
    PrivateKeyring &operator=(const PrivateKeyring &) = delete;

    bool start(QString *error = nullptr);
    void stop();
    bool isRunning() const;

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_bus;
    std::unique_ptr<QProcess> m_keyring;
    QByteArray m_previousAddress;
    bool m_hadAddress = false;
    bool m_addressChanged = false;
};

} // namespace LocalServers
