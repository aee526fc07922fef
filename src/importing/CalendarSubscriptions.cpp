#include "importing/CalendarSubscriptions.h"

#include "platform/UserDefaults.h"

#include <QUrl>
#include <QVariantMap>

QList<CalendarSubscriptions::Subscription> CalendarSubscriptions::load()
{
    QList<Subscription> subscriptions;
    for (const QVariant &value : UserDefaults().array(PreferencesKey)) {
        const QVariantMap entry = value.toMap();
        const QString url = entry.value(UrlKey).toString();
        if (url.isEmpty())
            continue;
        subscriptions.append({url, entry.value(EtagKey).toString().toUtf8(),
                              entry.value(LastModifiedKey).toString().toUtf8(), entry.value(CheckedKey).toDateTime(),
                              entry.value(ImportedKey).toStringList()});
    }
    return subscriptions;
}

void CalendarSubscriptions::save(const QList<Subscription> &subscriptions)
{
    QVariantList entries;
    for (const Subscription &s : subscriptions) {
        QVariantMap entry{{UrlKey, s.url}};
        if (!s.etag.isEmpty())
            entry.insert(EtagKey, QString::fromUtf8(s.etag));
        if (!s.lastModified.isEmpty())
            entry.insert(LastModifiedKey, QString::fromUtf8(s.lastModified));
        if (s.lastChecked.isValid())
            entry.insert(CheckedKey, s.lastChecked);
        if (!s.importedUids.isEmpty())
            entry.insert(ImportedKey, s.importedUids);
        entries.append(entry);
    }
    UserDefaults().set(PreferencesKey, entries);
}

QString CalendarSubscriptions::add(const QString &url)
{
    QList<Subscription> subscriptions = load();
    for (const Subscription &s : subscriptions)
        if (s.url == url)
            return url;
    subscriptions.append({url, {}, {}, {}, {}});
    save(subscriptions);
    return url;
}

void CalendarSubscriptions::remember(const QString &url, const QByteArray &etag, const QByteArray &lastModified,
                                     const QDateTime &checked, const QStringList &addedUids)
{
    QList<Subscription> subscriptions = load();
    for (Subscription &s : subscriptions) {
        if (s.url != url)
            continue;
        s.etag = etag;
        s.lastModified = lastModified;
        s.lastChecked = checked;
        s.importedUids += addedUids;
    }
    save(subscriptions);
}

std::optional<CalendarSubscriptions::Subscription> CalendarSubscriptions::find(const QString &url)
{
    for (const Subscription &s : load())
        if (s.url == url)
            return s;
    return std::nullopt;
}

bool CalendarSubscriptions::remove(const QString &url)
{
    QList<Subscription> subscriptions = load();
    const qsizetype before = subscriptions.size();
    subscriptions.removeIf([&url](const Subscription &s) { return s.url == url; });
    if (subscriptions.size() == before)
        return false;
    save(subscriptions);
    return true;
}

namespace {
// Tokens are long random runs; ordinary path words (calendar, feeds, export.php) are short.
QString shortened(const QString &part)
{
    constexpr int Kept = 4;
    constexpr int Longest = 16;
    return part.size() > Longest ? part.left(Kept) + QStringLiteral("…") : part;
}
} // namespace

QString CalendarSubscriptions::displayUrl(const QString &url)
{
    const QUrl parsed(url);
    if (!parsed.isValid() || parsed.host().isEmpty())
        return shortened(url);
    QStringList segments = parsed.path(QUrl::FullyDecoded).split(QLatin1Char('/'));
    for (QString &segment : segments) {
        // A file name keeps its extension so the feed still reads as a calendar.
        const qsizetype dot = segment.lastIndexOf(QLatin1Char('.'));
        if (dot > 0 && segment.size() - dot <= 5)
            segment = shortened(segment.left(dot)) + segment.mid(dot);
        else
            segment = shortened(segment);
    }
    QString shown = parsed.scheme() + QStringLiteral("://") + parsed.host();
    if (parsed.port() != -1)
        shown += QLatin1Char(':') + QString::number(parsed.port());
    shown += segments.join(QLatin1Char('/'));
    if (parsed.hasQuery()) {
        QStringList pairs;
        for (const QString &pair : parsed.query(QUrl::FullyDecoded).split(QLatin1Char('&'))) {
            const qsizetype equals = pair.indexOf(QLatin1Char('='));
            // Every value may be a secret (authtoken=, key=, user=…), so each is cut, however short.
            pairs.append(equals < 0 ? shortened(pair)
                                    : pair.left(equals + 1) + (pair.size() > equals + 1 ? QStringLiteral("…") : QString()));
        }
        shown += QLatin1Char('?') + pairs.join(QLatin1Char('&'));
    }
    return shown;
}

std::optional<QString> CalendarSubscriptions::normalizedUrl(const QString &typed, QString *error)
{
    QString text = typed.trimmed();
    if (text.startsWith(QLatin1String("webcal://"), Qt::CaseInsensitive))
        text = QStringLiteral("https://") + text.mid(9);
    else if (text.startsWith(QLatin1String("webcals://"), Qt::CaseInsensitive))
        text = QStringLiteral("https://") + text.mid(10);
    const QUrl url(text, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    if (!url.isValid() || url.host().isEmpty() || (scheme != QLatin1String("https") && scheme != QLatin1String("http"))) {
        *error = QStringLiteral("“%1” is not a calendar address.  Enter an address that begins with https:// or "
                                "webcal://, as the course site shows it.")
                     .arg(typed.trimmed());
        return std::nullopt;
    }
    return QString::fromUtf8(url.toEncoded());
}
