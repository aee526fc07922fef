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

} // namespace UrlFetch
