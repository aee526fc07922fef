#include "contacts/AddressBook.h"

#include "contacts/ContactsSettings.h"
#include "contacts/EdsAddressBook.h"
#include "contacts/VCardFolderBook.h"

#include <memory>

AddressBook &AddressBook::shared()
{
    static const std::unique_ptr<AddressBook> book = []() -> std::unique_ptr<AddressBook> {
        if (std::unique_ptr<EdsAddressBook> eds = EdsAddressBook::connect())
            return eds;
        return std::make_unique<VCardFolderBook>(&ContactsSettings::folder);
    }();
    return *book;
}
