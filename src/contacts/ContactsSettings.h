#pragma once

#include <QString>

// Where the address book's vCard files are, when the desktop runs no address-book service. Kept in
// a preference group of its own so the groups every installation shares stay as they are.
namespace ContactsSettings {

inline const QString Group = QStringLiteral("Preferences - Contacts");
inline const QString FolderKey = QStringLiteral("Address Book Folder");

// ~/.local/share/contacts (under $XDG_DATA_HOME when set): the layout vdirsyncer and khard use.
QString defaultFolder();
// The chosen folder, or the default when none is chosen.
QString folder();
void setFolder(const QString &path);

} // namespace ContactsSettings
