#pragma once

#include "contacts/Person.h"

#include <QList>
#include <QString>

#include <optional>

// The desktop's address book as the contacts field searches it: persons whose first name begins
// with a text and, optionally, whose last name ends with another, both ignoring case. Results keep
// the book's own order, so "the first of them" means the same on every call.
class AddressBook
{
public:
    virtual ~AddressBook() = default;

    virtual QList<Person> personsMatching(const QString &firstNamePrefix,
                                          const std::optional<QString> &lastNameSuffix = std::nullopt) = 0;
    // Where the persons come from, for the configuration report and the preferences pane.
    virtual QString description() const = 0;

    // The book of this desktop: Evolution Data Server's address books when its registry answers on
    // the session bus, otherwise the vCard folder chosen in the preferences. Decided once per run.
    static AddressBook &shared();
};
