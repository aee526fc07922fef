#include "store/ColumnKeys.h"

#include <QList>

namespace ColumnKeys {

namespace {
struct Stored {
    QString identifier;
    int initialWidth;
};

const QList<Stored> &columns()
{
    static const QList<Stored> columns = {
        {Completed, 20}, {Name, 100},    {Date, 100},     {DaysLeft, 30}, {Course, 100},
        {Textbook, 100}, {Type, 100},    {Grade, 100},    {Priority, 40}, {Notes, 20},
        {Contacts, 20},  {File, 20},     {Snapshot, 20},
    };
    return columns;
}
} // namespace

const QStringList &all()
{
    static const QStringList identifiers = [] {
        QStringList all;
        for (const Stored &column : columns())
            all.append(column.identifier);
        return all;
    }();
    return identifiers;
}

int initialWidth(const QString &identifier)
{
    for (const Stored &column : columns())
        if (column.identifier == identifier)
            return column.initialWidth;
    return 100;
}

} // namespace ColumnKeys
