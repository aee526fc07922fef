#pragma once

#include "contacts/Person.h"

#include <QVariant>
#include <QVariantMap>

// A contact token is either a contact record (a dictionary with the keys below) or a plain text.
// Records are kept exactly as they came: keys the field does not know stay in them.
namespace ContactRecord {

inline const QString FirstName = QStringLiteral("firstName");
inline const QString LastName = QStringLiteral("lastName");
inline const QString AddressBookUID = QStringLiteral("addressbookUID");
inline const QString Email = QStringLiteral("email");
inline const QString Origin = QStringLiteral("origin");
inline const QString FacebookUID = QStringLiteral("facebookUID");
inline const QString AddressBookOrigin = QStringLiteral("AddressBook");
inline const QString FacebookOrigin = QStringLiteral("Facebook");
// How a record prints a value it lacks.
inline const QString AbsentValue = QStringLiteral("(null)");

bool isRecord(const QVariant &token);
// "first last" for a record (an absent value as "(null)"); any other token as its text.
QString displayString(const QVariant &token);
// The record made for a person found in the address book.
QVariantMap recordFor(const Person &person);
QStringList emails(const QVariantMap &record);

} // namespace ContactRecord
