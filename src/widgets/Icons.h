#pragma once

#include <QIcon>
#include <QString>

// Icons come from the desktop's freedesktop icon theme, so the program looks at home; when the
// theme lacks a name, the program's own artwork compiled in under :/icons is used instead.
namespace Icons {

// `themeName` is a freedesktop icon name ("list-add", "edit-delete"); `fallback` names a file in
// :/icons without its extension.
QIcon themed(const QString &themeName, const QString &fallback);

// The program's own artwork only (":/icons/<name>.svg" or ".png").
QIcon own(const QString &name);

} // namespace Icons
