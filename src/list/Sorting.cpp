#include "list/Sorting.h"

#include "list/ColumnCatalogue.h"

#include <algorithm>
#include <vector>

namespace Sorting {

namespace {

// One key of one record, read out before sorting.
struct Key {
    enum Kind : quint8 { Missing, Number, Text };
    Kind kind = Missing;
    double number = 0;
    QString text;

    static int compare(const Key &a, const Key &b)
    {
        if (a.kind == Missing || b.kind == Missing)
            return int(a.kind != Missing) - int(b.kind != Missing);
        if (a.kind == Number && b.kind == Number)
            return a.number < b.number ? -1 : (b.number < a.number ? 1 : 0);
        // A number against a text (a hand-edited file): compare their texts.
        const QString left = a.kind == Number ? QString::number(a.number) : a.text;
        const QString right = b.kind == Number ? QString::number(b.number) : b.text;
        return left.compare(right);
    }
};

struct Entry {
    Key column;
    Key date;
    Key name;
    qsizetype index = 0;
};

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Double:
    case QMetaType::Float:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Bool:
        return true;
    default:
        return false;
    }
}

Key valueKey(const Assignment &record, const QString &key)
{
    const auto it = record.fields().constFind(key);
    if (it == record.fields().constEnd())
        return {};
    if (isNumber(*it))
        return {Key::Number, it->toDouble(), {}};
    return {Key::Text, 0, it->toString()};
}

Key textKey(const Assignment &record, const QString &key)
{
    const QString &lowered = record.lowered(key);
    if (lowered.isNull())
        return {};
    return {Key::Text, 0, lowered};
}

Entry entryFor(const Assignment &record, const QString &column, bool columnByValue, qsizetype index)
{
    Entry entry;
    entry.column = columnByValue ? valueKey(record, column) : textKey(record, column);
    entry.date = valueKey(record, AssignmentKeys::Date);
    entry.name = textKey(record, AssignmentKeys::Name);
    entry.index = index;
    return entry;
}

int compareEntries(const Entry &a, const Entry &b)
{
    if (int c = Key::compare(a.column, b.column))
        return c;
    if (int c = Key::compare(a.date, b.date))
        return c;
    return Key::compare(a.name, b.name);
}

std::vector<Entry> entriesFor(const AssignmentList &list, const Order &order)
{
    const bool byValue = comparesByValue(order.column);
    std::vector<Entry> entries;
    entries.reserve(list.size());
    for (qsizetype i = 0; i < list.size(); ++i)
        entries.push_back(entryFor(*list[i], order.column, byValue, i));
    return entries;
}

} // namespace

bool comparesByValue(const QString &column)
{
    return column == ColumnCatalogue::Date || column == ColumnCatalogue::Completed
        || column == ColumnCatalogue::Priority;
}

bool isSorted(const AssignmentList &list, const Order &order)
{
    const std::vector<Entry> entries = entriesFor(list, order);
    const int sign = order.ascending ? 1 : -1;
    for (size_t i = 1; i < entries.size(); ++i)
        if (sign * compareEntries(entries[i - 1], entries[i]) > 0)
            return false;
    return true;
}

void sort(AssignmentList &list, const Order &order)
{
    if (list.size() < 2)
        return;
    std::vector<Entry> entries = entriesFor(list, order);
    const int sign = order.ascending ? 1 : -1;
    const auto less = [sign](const Entry &a, const Entry &b) { return sign * compareEntries(a, b) < 0; };

    // The longest prefix already in order; only what follows it needs sorting, then one merge.
    // A stable sort of the tail merged stably after the prefix is exactly a stable sort of all.
    size_t prefix = 1;
    while (prefix < entries.size() && !less(entries[prefix], entries[prefix - 1]))
        ++prefix;
    if (prefix == entries.size())
        return;
    std::stable_sort(entries.begin() + qsizetype(prefix), entries.end(), less);
    std::inplace_merge(entries.begin(), entries.begin() + qsizetype(prefix), entries.end(), less);

    AssignmentList sorted;
    sorted.reserve(list.size());
    for (const Entry &entry : entries)
        sorted.append(list[entry.index]);
    list = std::move(sorted);
}

} // namespace Sorting
