#pragma once

#include <QStringList>

// An edit made to a list of types in a table that showed an older copy of the list, made again on
// the newer copy: what the courses window does when the universal types file was replaced while it
// showed the list.
namespace TypeListEdits {

// `after` is `before` with one edit made by the types table: a type added, removed or renamed, or
// one type moved. The same edit made to `fresh`, a newer copy of the list; `fresh` unchanged when
// the edit cannot be told or does not apply.
QStringList sameEditOn(const QStringList &before, const QStringList &after, QStringList fresh);

} // namespace TypeListEdits
