#include "exchange/ExportFields.h"

#include "store/Assignment.h"

ExportFields ExportFields::of(const QVariantMap &record)
{
    // One search per key. Walking the whole record in order looks cheaper but is not: stepping from
    // node to node of the tree costs more than the few searches an export needs.
    auto find = [&record](const QString &key) -> const QVariant * {
        const auto it = record.constFind(key);
        return it == record.constEnd() ? nullptr : &it.value();
    };
    ExportFields found;
    found.name = find(AssignmentKeys::Name);
    found.date = find(AssignmentKeys::Date);
    found.course = find(AssignmentKeys::Course);
    found.textbook = find(AssignmentKeys::Textbook);
    found.type = find(AssignmentKeys::Type);
    found.grade = find(AssignmentKeys::Grade);
    found.completed = find(AssignmentKeys::Completed);
    found.notes = find(AssignmentKeys::Notes);
    return found;
}
