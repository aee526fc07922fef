#pragma once

#include <QString>
#include <QVariantMap>

// The desktop's contacts program, which shows a person of the address book. GNOME Contacts is the
// one that can be pointed at a person from its command line.
namespace ContactsProgram {

inline const QString GnomeContacts = QStringLiteral("gnome-contacts");
inline const QString NotInstalledToolTip =
    QStringLiteral("No address book program is installed (GNOME Contacts opens the person here)");

// The program's path, or empty when none is installed.
QString executable();
// The arguments that open it on the record's person: by the first e-mail address when there is
// one (the most exact handle the program takes), else by a search for the name.
QStringList argumentsFor(const QVariantMap &record);
bool open(const QVariantMap &record);

} // namespace ContactsProgram
