#include "contacts/ContactRecord.h"

namespace ContactRecord {

bool isRecord(const QVariant &token)
{
    return token.typeId() == QMetaType::QVariantMap;
}

QString displayString(const QVariant &token)
{
    if (!isRecord(token))
        return token.toString();
    const QVariantMap record = token.toMap();
    const auto part = [&](const QString &key) {
        return record.contains(key) ? record.value(key).toString() : AbsentValue;
    };
    return QStringLiteral("%1 %2").arg(part(FirstName), part(LastName));
}

QVariantMap recordFor(const Person &person)
{
    QVariantList addresses;
    for (const QString &address : person.emails)
        addresses.append(address);
    return {{FirstName, person.firstName},
            {LastName, person.lastName},
            {AddressBookUID, person.uid},
            {Email, addresses},
            {Origin, AddressBookOrigin}};
}

QStringList emails(const QVariantMap &record)
{
    QStringList addresses;
    for (const QVariant &address : record.value(Email).toList())
        addresses.append(address.toString());
    return addresses;
}

} // namespace ContactRecord
