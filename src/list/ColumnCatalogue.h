#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// Every column the assignment table knows. The identifier is also the record key the column shows.
namespace ColumnCatalogue {

enum class CellKind { CheckBox, Text, Image };

struct Column {
    QString identifier;
    QString headerText; // before the user's labels are applied
    CellKind kind = CellKind::Text;
    int minimumWidth = 0;
    int maximumWidth = 0; // 0: no maximum
    int initialWidth = 0;
    // The label key whose text replaces the header on every window refresh, or empty.
    QString labelKey;
};

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

// In the order the catalogue lists them.
const QList<Column> &all();
// nullptr for an identifier the catalogue lacks.
const Column *find(const QString &identifier);
bool isImageColumn(const QString &identifier);
// The image shown in an attachment column when the record has the key; empty otherwise.
QString imageName(const QString &identifier);
// The header text with the user's labels applied ("Course", "Textbook", "Type", "Grade").
QString headerText(const QString &identifier);

} // namespace ColumnCatalogue
