#pragma once

#include <QString>

// The words the user may rename throughout the program ("Preferences - Labels"). Plurals are made by
// appending "s" and nothing else (Class -> "Classs"), everywhere.
namespace Labels {

// The stored label for a key of "Preferences - Labels", or its default when none is stored.
QString label(const QString &key);
// label(key) + "s"
QString plural(const QString &key);
// The default text of a label key ("CourseField1" -> "Units", "Student ID" -> "Concentration").
QString defaultLabel(const QString &key);

} // namespace Labels
