#pragma once

#include "TestEnvironment.h"
#include "contacts/ContactRecord.h"
#include "contacts/ContactsSettings.h"

#include <QDir>
#include <QFile>
#include <QStringList>
#include <QVariantMap>

// The address book of these tests: real vCard 3.0 and 4.0 files (tests/data/contacts/book) with
// Ann Lee twice, Ann without a last name, Anne Lee, Al Bo and Zoë Ørsted.
namespace ContactsTest {

inline QString bookFolder()
{
    return TestEnvironment::fixture(QStringLiteral("contacts/book"));
}

// These tests read the folder: the desktop's address-book service is looked for only on a
// session bus, and the program's one address book is chosen once per run.
inline void withoutAddressBookService()
{
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
}

// A copy of the book in the test's home, chosen in the preferences.
inline QString useCopyOfBook()
{
    withoutAddressBookService();
    const QString target = QDir(TestEnvironment::home()).filePath(QStringLiteral("Cards"));
    QDir source(bookFolder());
    for (const QString &relative : {QStringLiteral("ann-lee.vcf"), QStringLiteral("ann.vcf"), QStringLiteral("anne-lee.vcf"),
                                    QStringLiteral("zoe.vcf"), QStringLiteral("classmates/classmates.vcf")})
        TestEnvironment::writeFile(QDir(target).filePath(relative), TestEnvironment::readFile(source.filePath(relative)));
    ContactsSettings::setFolder(target);
    return target;
}

inline QVariantMap zoe()
{
    return {{ContactRecord::FirstName, QStringLiteral("Zoë")},
            {ContactRecord::LastName, QStringLiteral("Ørsted")},
            {ContactRecord::AddressBookUID, QStringLiteral("zoe-oersted")},
            {ContactRecord::Email, QVariantList{QStringLiteral("zoe@lab.example"), QStringLiteral("zoe.orsted@mail.example"),
                                                QStringLiteral("z@ørsted.example")}},
            {ContactRecord::Origin, ContactRecord::AddressBookOrigin}};
}

} // namespace ContactsTest
