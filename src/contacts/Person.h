#pragma once

#include <QString>
#include <QStringList>

// One person of the address book, with the properties the contacts field reads.
struct Person {
    QString uid;
    QString firstName;
    // Empty when the person has no last name (a company, a single-name card).
    QString lastName;
    // Every e-mail address, in the card's order.
    QStringList emails;

    bool hasLastName() const { return !lastName.isEmpty(); }
    bool operator==(const Person &) const = default;
};
