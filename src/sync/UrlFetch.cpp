#include <curl/curl.h>

#include "sync/SyncLog.h"
#include "sync/UrlFetch.h"

#include <mutex>

namespace UrlFetch {

namespace {

size_t appendBody(char *data, size_t size, size_t count, void *userData)
{
    static_cast<QByteArray *>(userData)->append(data, qsizetype(size * count));
    return size * count;
}

} // namespace

std::optional<QString> bodyOf(const QByteArray &url, QString *error)
{
    static std::once_flag initialised;
    std::call_once(initialised, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });

    CURL *handle = curl_easy_init();
    if (!handle) {
        if (error)
            *error = QStringLiteral("libcurl could not start");
        return std::nullopt;
    }
    QByteArray body;
    char message[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(handle, CURLOPT_URL, url.constData());
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, appendBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &body);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, message);
    const CURLcode result = curl_easy_perform(handle);
    curl_easy_cleanup(handle);
    if (result != CURLE_OK) {
        const QString text = QString::fromUtf8(message[0] ? message : curl_easy_strerror(result));
        qCInfo(lcSync) << "fetch failed:" << text;
        if (error)
            *error = text;
        return std::nullopt;
    }
    return QString::fromUtf8(body);
}

} // namespace UrlFetch
