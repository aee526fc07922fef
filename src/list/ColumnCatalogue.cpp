#include "list/ColumnCatalogue.h"

#include "list/ListTexts.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"

namespace ColumnCatalogue {

const QList<Column> &all()
{
    using K = CellKind;
    namespace L = PreferenceKeys::LabelKeys;
    static const QList<Column> columns = {
        {Completed, QString(), K::CheckBox, 20, 20, {}},
        {Name, QStringLiteral("Name"), K::Text, 50, 0, {}},
        {Date, QStringLiteral("Due Date"), K::Text, 50, 0, {}},
        {DaysLeft, QString(), K::Text, 30, 30, {}},
        {Course, QStringLiteral("Course"), K::Text, 50, 0, L::Course},
        {Textbook, QStringLiteral("Textbook"), K::Text, 50, 0, L::Textbook},
        {Type, QStringLiteral("Type"), K::Text, 50, 0, L::Type},
        {Grade, QStringLiteral("Grade"), K::Text, 50, 0, L::Grade},
        {Priority, QStringLiteral("Priority"), K::Text, 40, 40, {}},
        {Notes, QString(), K::Image, 20, 20, {}},
        {Contacts, QString(), K::Image, 20, 20, {}},
        {File, QString(), K::Image, 20, 20, {}},
        {Snapshot, QString(), K::Image, 20, 20, {}},
    };
    return columns;
}

const Column *find(const QString &identifier)
{
    for (const Column &column : all())
        if (column.identifier == identifier)
            return &column;
    return nullptr;
}

bool isImageColumn(const QString &identifier)
{
    const Column *column = find(identifier);
    return column && column->kind == CellKind::Image;
}

QString imageName(const QString &identifier)
{
    if (identifier == Notes)
        return ListTexts::NotesImage;
    if (identifier == Contacts)
        return ListTexts::ContactsImage;
    if (identifier == File)
        return ListTexts::FileImage;
    if (identifier == Snapshot)
        return ListTexts::SnapshotImage;
    return QString();
}

QString headerText(const QString &identifier)
{
    const Column *column = find(identifier);
    if (!column)
        return QString();
    if (!column->labelKey.isEmpty())
        return Labels::label(column->labelKey);
    return column->headerText;
}

} // namespace ColumnCatalogue
