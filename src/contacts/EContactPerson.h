#pragma once

#include "contacts/Person.h"

// Only for the address-book sources; keeps GLib out of every other header.
typedef struct _EContact EContact;

// The properties the contacts field reads, from a parsed card.
Person personFromEContact(EContact *contact);
