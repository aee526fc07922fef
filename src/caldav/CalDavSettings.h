#pragma once

#include <QString>

// The calendar-server account, in its own group of the preferences file ("Preferences - Calendar
// Server"); the password lives only in the keychain, under the user name.
struct CalDavSettings {
    static inline const QString Group = QStringLiteral("Preferences - Calendar Server");
    static inline const QString AddressKey = QStringLiteral("Server Address");
    static inline const QString UserKey = QStringLiteral("User Name");
    static inline const QString CalendarUrlKey = QStringLiteral("Calendar");
    static inline const QString CalendarNameKey = QStringLiteral("Calendar Name");
    static inline const QString SyncCollectionKey = QStringLiteral("Sync Collection");
    static inline const QString KeychainItem = QStringLiteral("Calendar Server Password");

    QString address;
    QString user;
    QString calendarUrl;
    QString calendarName;
    bool syncCollection = false;

    bool isComplete() const { return !address.isEmpty() && !user.isEmpty() && !calendarUrl.isEmpty(); }

    static CalDavSettings load();
    void save() const;
    static QString password(const QString &user);
    static bool storePassword(const QString &user, const QString &password);
};
