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

// Makes the child `process` starts end (SIGTERM) when this test process ends, however it ends: a
// test that crashes must not leave servers behind that hold its output open, or ctest waits for them
// until its time-out. Call before start(), and start on the main thread: the kernel signals the child
// when the *thread* that started it ends, so a child started on a worker thread would die with that
// thread (there it is left without, with a warning).
void endWithTest(QProcess &process);
// A QProcess made so.
std::unique_ptr<QProcess> serverProcess();
// Ends a child we started, if it still runs: SIGTERM to its PID, then SIGKILL if it lingers.
void stopProcess(std::unique_ptr<QProcess> &process);

// A port nobody listens on right now (a closed port, or one to start a server on).
quint16 freePort();
// True once something accepts connections on 127.0.0.1:port, waiting at most `timeoutMs`.
bool waitForPort(quint16 port, int timeoutMs = 10000);
// The port a helper script prints on its first line once it listens; 0 when none came in time.
quint16 readPortLine(QProcess &process, int timeoutMs = 10000);

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

// tests/support/mail_sink.py: an SMTP server (aiosmtpd) that keeps every message it accepts, taken
// apart by Python's own e-mail parser, or refuses every one with a 550.
class MailSink
{
public:
    struct Part {
        QString contentType;
        QString filename;
        QString disposition;
        QString charset;
        QByteArray bytes; // decoded
    };
    struct Message {
        QByteArray raw;
        QList<QPair<QString, QString>> headers;
        QStringList recipients;
        QList<Part> parts;
        // The first header of that name, compared without regard to case; null when there is none.
        QString header(const QString &name) const;
        int headerCount(const QString &name) const;
    };

    MailSink();
    ~MailSink();
    MailSink(const MailSink &) = delete;
    MailSink &operator=(const MailSink &) = delete;

    bool start(bool refuse = false, QString *error = nullptr);
    void stop();
    quint16 port() const { return m_port; }
    // Writes `home`/.msmtprc so that sendmail (msmtp-mta) run with that home delivers here.
    bool configureSendmail(const QString &home) const;
    // The messages accepted so far, oldest first.
    QList<Message> messages() const;

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_process;
    quint16 m_port = 0;
};

} // namespace LocalServers
