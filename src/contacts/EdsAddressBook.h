#pragma once

#include "contacts/AddressBook.h"

#include <memory>

// The address books of Evolution Data Server (GNOME's contacts, CardDAV and other online
// accounts), searched through its address-book client. Only made when the registry answers on the
// session bus and at least one enabled address book connects.
class EdsAddressBook : public AddressBook
{
public:
    ~EdsAddressBook() override;

    // None when no session bus, no registry or no address book answers.
    static std::unique_ptr<EdsAddressBook> connect();

    QList<Person> personsMatching(const QString &firstNamePrefix,
                                  const std::optional<QString> &lastNameSuffix = std::nullopt) override;
    QString description() const override;

private:
    struct Clients;
    explicit EdsAddressBook(std::unique_ptr<Clients> clients);
    std::unique_ptr<Clients> m_clients;
};
