#pragma once

#include "store/ColumnKeys.h"

#include <QList>
#include <QString>
#include <QStringList>

// Every column the assignment table knows and how it looks. The identifiers, their order and first
// widths are the stored preferences' (store/ColumnKeys); the identifier is also the record key the
// column shows.
namespace ColumnCatalogue {

enum class CellKind { CheckBox, Text, Image };

struct Column {
    QString identifier;
    QString headerText; // before the user's labels are applied
    CellKind kind = CellKind::Text;
    int minimumWidth = 0;
    int maximumWidth = 0; // 0: no maximum
    // The label key whose text replaces the header on every window refresh, or empty.
    QString labelKey;
};

using ColumnKeys::Completed;
using ColumnKeys::Name;
using ColumnKeys::Date;
using ColumnKeys::DaysLeft;
using ColumnKeys::Course;
using ColumnKeys::Textbook;
using ColumnKeys::Type;
using ColumnKeys::Grade;
using ColumnKeys::Priority;
using ColumnKeys::Notes;
using ColumnKeys::Contacts;
using ColumnKeys::File;
using ColumnKeys::Snapshot;

// In the order of ColumnKeys::all().
const QList<Column> &all();
// nullptr for an identifier the catalogue lacks.
const Column *find(const QString &identifier);
bool isImageColumn(const QString &identifier);
// The image shown in an attachment column when the record has the key; empty otherwise.
QString imageName(const QString &identifier);
// The header text with the user's labels applied ("Course", "Textbook", "Type", "Grade").
QString headerText(const QString &identifier);

} // namespace ColumnCatalogue
