#pragma once

#include "store/AssignmentField.h"

#include <QString>
#include <QStringList>

// The assignment-table columns as the preferences store them ("User Columns" and "User Columns
// Ordering"): their identifiers, the order the Main Window pane lists them in and the width each gets
// when first shown. Each identifier but "Days Left" is the record key the column shows. How a column looks
// (header, cell kind, limits) belongs to the table, in list/ColumnCatalogue.
namespace ColumnKeys {

inline const QString &Completed = fieldKey(AssignmentField::Completed);
inline const QString &Name = fieldKey(AssignmentField::Name);
inline const QString &Date = fieldKey(AssignmentField::Date);
inline const QString DaysLeft = QStringLiteral("Days Left");
inline const QString &Course = fieldKey(AssignmentField::Course);
inline const QString &Textbook = fieldKey(AssignmentField::Textbook);
inline const QString &Type = fieldKey(AssignmentField::Type);
inline const QString &Grade = fieldKey(AssignmentField::Grade);
inline const QString &Priority = fieldKey(AssignmentField::Priority);
inline const QString &Notes = fieldKey(AssignmentField::Notes);
inline const QString &Contacts = fieldKey(AssignmentField::Contacts);
inline const QString &File = fieldKey(AssignmentField::File);
inline const QString &Snapshot = fieldKey(AssignmentField::Snapshot);

// Every column identifier, in the order the table's catalogue lists them.
const QStringList &all();
// The width a column gets when it is first shown; 100 for an identifier no column has.
int initialWidth(const QString &identifier);

} // namespace ColumnKeys
