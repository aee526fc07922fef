#pragma once

#include "platform/UserDefaults.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// The course calendars the student subscribed to, kept in the preferences under a key of their own
// (an array of dictionaries: the address, and the validators of the last answer so an unchanged
// feed costs the server a 304 and us nothing).
class CalendarSubscriptions
{
public:
    static inline const QString PreferencesKey = QStringLiteral("Calendar Subscriptions");
    static inline const QString UrlKey = QStringLiteral("URL");
    static inline const QString EtagKey = QStringLiteral("ETag");
    static inline const QString LastModifiedKey = QStringLiteral("Last-Modified");
    static inline const QString CheckedKey = QStringLiteral("Last Checked");
    static inline const QString ImportedKey = QStringLiteral("Imported UIDs");
    // How often a running program looks at its feeds again.
    static constexpr int RefreshHours = 4;

    struct Subscription {
        QString url;
        QByteArray etag;
        QByteArray lastModified;
        QDateTime lastChecked;
        QStringList importedUids; // every entry this feed ever added, so a deleted one stays deleted
    };

    static QList<Subscription> load();
    static void save(const QList<Subscription> &subscriptions);
    // Adds an address (an existing one is kept as it is). Returns the stored form.
    static QString add(const QString &url);
    // Records what the last fetch of `url` answered.
    static void remember(const QString &url, const QByteArray &etag, const QByteArray &lastModified,
                         const QDateTime &checked, const QStringList &addedUids = {});
    static std::optional<Subscription> find(const QString &url);
    // Forgets the address; the assignments it brought in stay where they are. False if it was not kept.
    static bool remove(const QString &url);
    // Forgets every subscription with the entries each brought in. Deleting all data does this: the
    // feeds' entries would otherwise count as deleted by the student, and subscribing again would
    // bring none of them back. Kept in the header, for the windows that delete data to call without
    // linking the import.
    static void forgetAll()
    {
        UserDefaults defaults;
        if (defaults.contains(PreferencesKey))
            defaults.remove(PreferencesKey);
    }
    // The address for showing: feed addresses carry the student's private token in the path or the
    // query, so long path segments and query values are cut to their first few characters.
    static QString displayUrl(const QString &url);

    // The address as it is fetched: webcal:// and webcals:// become https://, blanks are trimmed.
    // nullopt (with the reason) for anything that is not an http(s) or webcal address with a host.
    static std::optional<QString> normalizedUrl(const QString &typed, QString *error);
};
