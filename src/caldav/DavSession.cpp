#include "caldav/DavSession.h"

#include <QBuffer>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

DavSession::DavSession(QString user, QString password)
    : m_network(std::make_unique<QNetworkAccessManager>())
{
    // Sent with every request: a server asks for the password only once we fail, which would double
    // the requests of a sync.
    m_authorization = "Basic " + (user + QLatin1Char(':') + password).toUtf8().toBase64();
    m_network->setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
}

DavSession::~DavSession() = default;

DavSession::Response DavSession::send(const QByteArray &method, const QUrl &url, const QByteArray &body,
                                      const Headers &headers)
{
    if (m_cancel && *m_cancel) {
        Response cancelled;
        cancelled.failure = Failure::Timeout;
        cancelled.errorText = QStringLiteral("The sync was stopped.");
        return cancelled;
    }
    QNetworkRequest request(url);
    request.setRawHeader("Authorization", m_authorization);
    request.setRawHeader("User-Agent", "Quillory");
    if (!body.isEmpty() && !request.hasRawHeader("Content-Type"))
        request.setHeader(QNetworkRequest::ContentTypeHeader,
                          method == "PUT" ? "text/calendar; charset=utf-8" : "application/xml; charset=utf-8");
    for (const auto &[name, value] : headers)
        request.setRawHeader(name, value);
    request.setTransferTimeout(m_timeoutMs);

    QBuffer *buffer = nullptr;
    if (!body.isEmpty()) {
        buffer = new QBuffer;
        buffer->setData(body);
        buffer->open(QIODevice::ReadOnly);
    }
    QNetworkReply *reply = m_network->sendCustomRequest(request, method, buffer);
    if (buffer)
        buffer->setParent(reply);
    ++m_requests;
    m_sent += body.size() + url.toEncoded().size() + method.size();
    QEventLoop loop;
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QTimer watch;
    if (m_cancel) {
        QObject::connect(&watch, &QTimer::timeout, reply, [this, reply] {
            if (*m_cancel)
                reply->abort();
        });
        watch.start(100);
    }
    if (!reply->isFinished())
        loop.exec(QEventLoop::ExcludeUserInputEvents);

    Response out;
    out.status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    out.body = reply->readAll();
    out.etag = reply->rawHeader("ETag");
    out.location = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    m_received += out.body.size();
    const QNetworkReply::NetworkError error = reply->error();
    if (out.status == 0 && error != QNetworkReply::NoError) {
        out.errorText = reply->errorString();
        switch (error) {
        case QNetworkReply::SslHandshakeFailedError:
            out.failure = Failure::Tls;
            break;
        case QNetworkReply::ConnectionRefusedError:
        case QNetworkReply::HostNotFoundError:
            out.failure = Failure::Refused;
            break;
        case QNetworkReply::TimeoutError:
        case QNetworkReply::OperationCanceledError:
            out.failure = Failure::Timeout;
            break;
        default:
            out.failure = Failure::Network;
        }
    } else if (error != QNetworkReply::NoError && out.status >= 200 && out.status < 300) {
        // The connection broke in the middle of a body that had begun well.
        out.failure = Failure::Network;
        out.errorText = reply->errorString();
    }
    delete reply;
    return out;
}
