// GLib before Qt: its headers use the word "signals".
#include <libebook-contacts/libebook-contacts.h>

#include "contacts/EContactPerson.h"

namespace {
QString text(EContact *contact, EContactField field)
{
    return QString::fromUtf8(static_cast<const char *>(e_contact_get_const(contact, field))).trimmed();
}
} // namespace

Person personFromEContact(EContact *contact)
{
    Person person;
    person.uid = text(contact, E_CONTACT_UID);
    person.firstName = text(contact, E_CONTACT_GIVEN_NAME);
    person.lastName = text(contact, E_CONTACT_FAMILY_NAME);
    auto *emails = static_cast<GList *>(e_contact_get(contact, E_CONTACT_EMAIL));
    for (GList *item = emails; item; item = item->next) {
        const QString address = QString::fromUtf8(static_cast<const char *>(item->data)).trimmed();
        if (!address.isEmpty())
            person.emails.append(address);
    }
    g_list_free_full(emails, g_free);
    return person;
}
