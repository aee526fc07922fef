#include "DavServers.h"

#include "LocalServers.h"

#include <QDeadlineTimer>
#include <QFile>

DavServer::~DavServer() { stop(); }

bool DavServer::start(Kind kind, const QString &user, const QString &password)
{
    m_port = LocalServers::freePort();
    m_process = LocalServers::serverProcess();
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->setStandardOutputFile(QProcess::nullDevice());
    const QString port = QString::number(m_port);
    if (kind == Kind::Radicale) {
        QFile users(m_folder.filePath(QStringLiteral("users")));
        if (!users.open(QIODevice::WriteOnly))
            return false;
        users.write((user + QLatin1Char(':') + password + QLatin1Char('\n')).toUtf8());
        users.close();
        m_process->start(QStringLiteral("/usr/bin/radicale"),
                         {QStringLiteral("--config"), QString(), QStringLiteral("--server-hosts"), QStringLiteral("127.0.0.1:") + port,
                          QStringLiteral("--storage-filesystem-folder"), m_folder.filePath(QStringLiteral("collections")),
                          QStringLiteral("--auth-type"), QStringLiteral("htpasswd"), QStringLiteral("--auth-htpasswd-filename"),
                          users.fileName(), QStringLiteral("--auth-htpasswd-encryption"), QStringLiteral("plain"),
                          QStringLiteral("--logging-level"), QStringLiteral("warning")});
    } else {
        m_process->start(QStringLiteral("/usr/bin/xandikos"),
                         {QStringLiteral("--defaults"), QStringLiteral("-d"), m_folder.filePath(QStringLiteral("dav")),
                          QStringLiteral("-l"), QStringLiteral("127.0.0.1"), QStringLiteral("-p"), port});
    }
    if (!m_process->waitForStarted(5000) || !LocalServers::waitForPort(m_port, 20000)) {
        stop();
        return false;
    }
    return true;
}

void DavServer::stop() { LocalServers::stopProcess(m_process); }

FaultyProxy::~FaultyProxy() { LocalServers::stopProcess(m_process); }

bool FaultyProxy::start(quint16 upstream, const QString &mode, qint64 bytes)
{
    m_process = LocalServers::serverProcess();
    m_process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process->start(QStringLiteral("/usr/bin/python3"), {QStringLiteral(QUILLORY_CALDAV_TEST_DIR "/dav_proxy.py"),
                                                         QString::number(upstream), mode, QString::number(bytes)});
    m_port = LocalServers::readPortLine(*m_process);
    return m_port != 0 && LocalServers::waitForPort(m_port);
}
