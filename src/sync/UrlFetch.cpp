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

size_t collectHeader(char *data, size_t size, size_t count, void *userData)
{
    auto *answer = static_cast<Conditional *>(userData);
    const QByteArray line = QByteArray(data, qsizetype(size * count)).trimmed();
    const qsizetype colon = line.indexOf(':');
    if (line.startsWith("HTTP/")) {
        // A redirect's headers come first; only the last answer's validators count.
        answer->etag.clear();
        answer->lastModified.clear();
    } else if (colon > 0) {
        const QByteArray name = line.left(colon).trimmed().toLower();
        if (name == "etag")
            answer->etag = line.mid(colon + 1).trimmed();
        else if (name == "last-modified")
            answer->lastModified = line.mid(colon + 1).trimmed();
    }
    return size * count;
}

} // namespace

Conditional fetchIfChanged(const QByteArray &url, const QByteArray &etag, const QByteArray &lastModified)
{
    static std::once_flag initialised;
    std::call_once(initialised, [] { curl_global_init(CURL_GLOBAL_DEFAULT); });

    Conditional answer;
    CURL *handle = curl_easy_init();
    if (!handle) {
        answer.error = QStringLiteral("libcurl could not start");
        return answer;
    }
    curl_slist *headers = nullptr;
    if (!etag.isEmpty())
        headers = curl_slist_append(headers, ("If-None-Match: " + etag).constData());
    if (!lastModified.isEmpty())
        headers = curl_slist_append(headers, ("If-Modified-Since: " + lastModified).constData());
    char message[CURL_ERROR_SIZE] = {};
    curl_easy_setopt(handle, CURLOPT_URL, url.constData());
    curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(handle, CURLOPT_FAILONERROR, 1L);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, 30L);
    curl_easy_setopt(handle, CURLOPT_TIMEOUT, 120L);
    curl_easy_setopt(handle, CURLOPT_ACCEPT_ENCODING, "");
    curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, appendBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, &answer.body);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, collectHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, &answer);
    curl_easy_setopt(handle, CURLOPT_ERRORBUFFER, message);
    const CURLcode result = curl_easy_perform(handle);
    long status = 0;
    curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_cleanup(handle);
    curl_slist_free_all(headers);
    if (result != CURLE_OK) {
        answer.error = QString::fromUtf8(message[0] ? message : curl_easy_strerror(result));
        answer.body.clear();
        qCInfo(lcSync) << "fetch failed:" << answer.error;
        return answer;
    }
    if (status == 304) {
        answer.outcome = Conditional::Outcome::NotModified;
        if (answer.etag.isEmpty())
            answer.etag = etag;
        if (answer.lastModified.isEmpty())
            answer.lastModified = lastModified;
        return answer;
    }
    answer.outcome = Conditional::Outcome::Changed;
    return answer;
}

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
