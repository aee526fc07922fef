#include "caldav/SyncState.h"

#include "platform/Paths.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

QString SyncState::pathFor(const QString &calendarUrl, const QString &user)
{
    const QByteArray key = QCryptographicHash::hash((calendarUrl + QLatin1Char('\n') + user).toUtf8(),
                                                    QCryptographicHash::Sha1).toHex().left(16);
    return QStringLiteral("%1/Calendar Server/%2.json").arg(Paths::dataFolder(), QString::fromLatin1(key));
}

SyncState::SyncState(QString path) : m_path(std::move(path)) {}

bool SyncState::exists() const { return QFileInfo::exists(m_path); }

void SyncState::clear()
{
    syncToken.clear();
    items.clear();
}

QString SyncState::uidForHref(const QString &href) const
{
    for (auto it = items.cbegin(); it != items.cend(); ++it)
        if (it->href == href)
            return it.key();
    return {};
}

bool SyncState::load(QString *error)
{
    clear();
    QFile file(m_path);
    if (!file.exists())
        return true;
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(file.readAll(), &parseError);
    if (!document.isObject()) {
        if (error)
            *error = parseError.errorString();
        return false;
    }
    const QJsonObject root = document.object();
    syncToken = root.value(QLatin1String("token")).toString();
    const QJsonObject all = root.value(QLatin1String("items")).toObject();
    for (auto it = all.begin(); it != all.end(); ++it) {
        const QJsonObject o = it->toObject();
        items.insert(it.key(), {o.value(QLatin1String("href")).toString(), o.value(QLatin1String("etag")).toString().toUtf8(),
                                o.value(QLatin1String("ics")).toString().toUtf8(),
                                o.value(QLatin1String("digest")).toString().toLatin1()});
    }
    return true;
}

bool SyncState::save(QString *error) const
{
    QJsonObject all;
    for (auto it = items.cbegin(); it != items.cend(); ++it)
        all.insert(it.key(), QJsonObject{{QLatin1String("href"), it->href},
                                         {QLatin1String("etag"), QString::fromUtf8(it->etag)},
                                         {QLatin1String("ics"), QString::fromUtf8(it->ics)},
                                         {QLatin1String("digest"), QString::fromLatin1(it->digest)}});
    const QJsonObject root{{QLatin1String("token"), syncToken}, {QLatin1String("items"), all}};
    QDir().mkpath(QFileInfo(m_path).absolutePath());
    QSaveFile file(m_path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(root).toJson(QJsonDocument::Compact)) < 0
        || !file.commit()) {
        if (error)
            *error = file.errorString();
        return false;
    }
    return true;
}
