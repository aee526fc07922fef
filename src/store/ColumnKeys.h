#pragma once

#include <QString>
#include <QStringList>

// The assignment-table columns as the preferences store them ("User Columns" and "User Columns
// Ordering"): their identifiers, the order the Main Window pane lists them in and the width each gets
// when first shown. Each identifier is also the record key the column shows. How a column looks
// (header, cell kind, limits) belongs to the table, in list/ColumnCatalogue.
namespace ColumnKeys {

inline const QString Completed = QStringLiteral("Completed");
inline const QString Name = QStringLiteral("Name");
inline const QString Date = QStringLiteral("Date");
inline const QString DaysLeft = QStringLiteral("Days Left");
inline const QString Course = QStringLiteral("Course");
inline const QString Textbook = QStringLiteral("Textbook");
inline const QString Type = QStringLiteral("Type");
inline const QString Grade = QStringLiteral("Grade");
inline const QString Priority = QStringLiteral("Priority");
inline const QString Notes = QStringLiteral("Notes");
inline const QString Contacts = QStringLiteral("Contacts");
inline const QString File = QStringLiteral("File");
inline const QString Snapshot = QStringLiteral("Snapshot");

// Every column identifier, in the order the table's catalogue lists them.
const QStringList &all();
// The width a column gets when it is first shown; 100 for an identifier no column has.
int initialWidth(const QString &identifier);

} // namespace ColumnKeys
