#include "support/ReportRedaction.h"

#include <QUrl>
#include <QUrlQuery>
#include <QVariantList>
#include <QVariantMap>

#include <algorithm>

namespace ReportRedaction {

namespace {
const QString Removed = QStringLiteral("…");
// Longer path segments than this are taken for tokens even without a digit.
constexpr qsizetype LongestWord = 20;

bool mayBeToken(const QString &segment)
{
    if (segment.size() > LongestWord)
        return true;
    return std::any_of(segment.cbegin(), segment.cend(), [](QChar c) { return c.isDigit(); });
}
} // namespace

QString withoutSecrets(const QString &text)
{
    static const QStringList schemes{QStringLiteral("http"),   QStringLiteral("https"), QStringLiteral("webcal"),
                                     QStringLiteral("webcals"), QStringLiteral("ftp"),   QStringLiteral("ftps")};
    const QString trimmed = text.trimmed();
    const qsizetype colon = trimmed.indexOf(QLatin1Char(':'));
    if (colon <= 0 || !schemes.contains(trimmed.left(colon).toLower()) || trimmed.contains(QLatin1Char(' ')))
        return text;
    QUrl url(trimmed, QUrl::TolerantMode);
    if (!url.isValid() || url.host().isEmpty())
        return text;
    if (!url.userInfo().isEmpty())
        url.setUserInfo(Removed);
    if (url.hasFragment())
        url.setFragment(Removed);
    if (url.hasQuery()) {
        QUrlQuery query(url);
        QList<std::pair<QString, QString>> items = query.queryItems(QUrl::FullyDecoded);
        for (auto &[key, value] : items)
            value = value.isEmpty() ? value : Removed;
        query.setQueryItems(items);
        url.setQuery(query);
    }
    QStringList segments = url.path(QUrl::FullyDecoded).split(QLatin1Char('/'));
    for (QString &segment : segments) {
        if (!mayBeToken(segment))
            continue;
        // A file name keeps its extension: ".ics" tells what the address served.
        const qsizetype dot = segment.lastIndexOf(QLatin1Char('.'));
        const QString extension = dot > 0 && segment.size() - dot <= 5 ? segment.mid(dot) : QString();
        segment = Removed + (mayBeToken(extension) ? QString() : extension);
    }
    url.setPath(segments.join(QLatin1Char('/')), QUrl::DecodedMode);
    const QString result = url.toDisplayString(QUrl::PrettyDecoded);
    return result == trimmed ? text : result;
}

QVariant withoutSecrets(const QVariant &value, bool *changed)
{
    switch (value.typeId()) {
    case QMetaType::QString: {
        const QString text = value.toString();
        const QString kept = withoutSecrets(text);
        if (kept == text)
            return value;
        *changed = true;
        return kept;
    }
    case QMetaType::QVariantList: {
        QVariantList list = value.toList();
        for (QVariant &item : list)
            item = withoutSecrets(item, changed);
        return list;
    }
    case QMetaType::QVariantMap: {
        QVariantMap map = value.toMap();
        for (auto it = map.begin(); it != map.end(); ++it)
            it.value() = withoutSecrets(it.value(), changed);
        return map;
    }
    default:
        return value;
    }
}

} // namespace ReportRedaction
