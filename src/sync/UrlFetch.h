#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// A synchronous fetch of a URL's body as text, on the calling thread, through libcurl. Redirects
// are followed. nullopt when nothing came back: the host did not answer or was not found, the
// transfer broke off, or the server answered with an error status.
namespace UrlFetch {

// `url` is already percent-escaped; it is used byte for byte.
std::optional<QString> bodyOf(const QByteArray &url, QString *error = nullptr);

// A conditional fetch for feeds polled again and again: the validators of the last answer go out
// as If-None-Match and If-Modified-Since, and an unchanged feed answers 304 without a body.
struct Conditional {
    enum class Outcome { Changed, NotModified, Failed };
    Outcome outcome = Outcome::Failed;
    QByteArray body;
    QByteArray etag;         // of this answer (or the one sent, when not modified)
    QByteArray lastModified;
    QString error;
};
Conditional fetchIfChanged(const QByteArray &url, const QByteArray &etag, const QByteArray &lastModified);

} // namespace UrlFetch
