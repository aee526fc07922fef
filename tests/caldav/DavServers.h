#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

// Calendar servers on 127.0.0.1 for the tests, each with its own storage folder, stopped by PID.
class DavServer
{
public:
    enum class Kind { Radicale, Xandikos };
    DavServer() = default;
    ~DavServer();
    DavServer(const DavServer &) = delete;
    DavServer &operator=(const DavServer &) = delete;

    // Radicale checks the password (htpasswd, plain); Xandikos takes anyone.
    bool start(Kind kind, const QString &user = QStringLiteral("student"), const QString &password = QStringLiteral("secret"));
    void stop();
    quint16 port() const { return m_port; }
    QString address() const { return QStringLiteral("http://127.0.0.1:%1/").arg(m_port); }
    QString storage() const { return m_folder.path(); }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<QProcess> m_process;
    quint16 m_port = 0;
};

// dav_proxy.py in front of a server: "cut" after N bytes of answers, or "full" (507 to every PUT).
class FaultyProxy
{
public:
    ~FaultyProxy();
    bool start(quint16 upstream, const QString &mode, qint64 bytes = 0);
    QString address() const { return QStringLiteral("http://127.0.0.1:%1/").arg(m_port); }

private:
    std::unique_ptr<QProcess> m_process;
    quint16 m_port = 0;
};
