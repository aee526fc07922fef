#include "caldav/CalDavSettings.h"

#include "platform/UserDefaults.h"
#include "sync/AGKeychain.h"

#include <QVariantMap>

CalDavSettings CalDavSettings::load()
{
    const QVariantMap group = UserDefaults().dictionary(Group);
    CalDavSettings s;
    s.address = group.value(AddressKey).toString();
    s.user = group.value(UserKey).toString();
    s.calendarUrl = group.value(CalendarUrlKey).toString();
    s.calendarName = group.value(CalendarNameKey).toString();
    s.syncCollection = group.value(SyncCollectionKey).toBool();
    return s;
}

void CalDavSettings::save() const
{
    UserDefaults().set(Group, QVariantMap{{AddressKey, address},
                                          {UserKey, user},
                                          {CalendarUrlKey, calendarUrl},
                                          {CalendarNameKey, calendarName},
                                          {SyncCollectionKey, syncCollection}});
}

QString CalDavSettings::password(const QString &user)
{
    if (AGKeychain::checkForExistanceOfKeychainItem(KeychainItem, AGKeychain::QuilloryKind, user) == 0)
        return {};
    const QString password = AGKeychain::getPasswordFromKeychainItem(KeychainItem, AGKeychain::QuilloryKind, user);
    return password == AGKeychain::ErrorText ? QString() : password;
}

bool CalDavSettings::storePassword(const QString &user, const QString &password)
{
    if (AGKeychain::checkForExistanceOfKeychainItem(KeychainItem, AGKeychain::QuilloryKind, user) > 0)
        return AGKeychain::modifyKeychainItem(KeychainItem, AGKeychain::QuilloryKind, user, password);
    return AGKeychain::addKeychainItem(KeychainItem, AGKeychain::QuilloryKind, user, password);
}
