#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>
#include <QUrl>

#include <atomic>

#include <memory>

class QNetworkAccessManager;

// WebDAV requests to one account, one at a time, each waited for. A session lives on the thread
// that runs the sync (never the interface thread), so waiting blocks nobody.
class DavSession
{
public:
    enum class Failure { None, Network, Tls, Refused, Timeout };
    struct Response {
        int status = 0;
        QByteArray body;
        QByteArray etag;
        QUrl location;
        Failure failure = Failure::None;
        QString errorText;
        bool ok() const { return failure == Failure::None && status >= 200 && status < 300; }
    };
    using Headers = QList<QPair<QByteArray, QByteArray>>;

    DavSession(QString user, QString password);
    ~DavSession();

    Response send(const QByteArray &method, const QUrl &url, const QByteArray &body = {}, const Headers &headers = {});

    // For the bench and the summary: what went over the wire.
    int requestCount() const { return m_requests; }
    qint64 bytesSent() const { return m_sent; }
    qint64 bytesReceived() const { return m_received; }
    void setTimeoutMs(int ms) { m_timeoutMs = ms; }
    // Raised by another thread (the program is quitting): the request under way stops within a
    // tenth of a second, and every later one fails at once.
    void setCancelFlag(std::shared_ptr<std::atomic_bool> cancel) { m_cancel = std::move(cancel); }

private:
    std::unique_ptr<QNetworkAccessManager> m_network;
    QByteArray m_authorization;
    int m_requests = 0;
    qint64 m_sent = 0;
    qint64 m_received = 0;
    int m_timeoutMs = 60000;
    std::shared_ptr<std::atomic_bool> m_cancel;
};
