#include "list/Sorting.h"

#include "list/ColumnCatalogue.h"

#include <QHash>

#include <algorithm>
#include <optional>
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

// The fast form of the keys: the column and the date as ranks among their distinct values (so
// most comparisons compare two integers), the name as the record's cached lowered text.
struct RankedEntry {
    qint64 column = -1; // -1: missing
    qint64 date = -1;
    const QString *name = nullptr;
    qsizetype index = 0;
};

// Ranks of one key over the list: equal values share a rank, ranks follow the key's order, and a
// missing value is -1. nullopt when the values cannot be ranked as one kind (numbers mixed with
// text), which the general comparison handles.
std::optional<std::vector<qint64>> rankKey(const AssignmentList &list, const QString &key, bool byValue)
{
    std::vector<qint64> ids(size_t(list.size()), -1);
    bool sawNumber = false;
    bool sawText = false;
    QHash<QString, qint64> textIds;
    std::vector<QString> texts;
    std::vector<std::pair<double, qsizetype>> numbers;
    for (qsizetype i = 0; i < list.size(); ++i) {
        const Assignment &record = *list[i];
        if (!byValue) {
            const QString &lowered = record.lowered(key);
            if (lowered.isNull())
                continue;
            sawText = true;
            auto it = textIds.constFind(lowered);
            if (it == textIds.constEnd()) {
                it = textIds.insert(lowered, qint64(texts.size()));
                texts.push_back(lowered);
            }
            ids[size_t(i)] = *it;
            continue;
        }
        const auto it = record.fields().constFind(key);
        if (it == record.fields().constEnd())
            continue;
        if (isNumber(*it)) {
            sawNumber = true;
            numbers.emplace_back(it->toDouble(), i);
        } else {
            sawText = true;
            const QString text = it->toString();
            auto found = textIds.constFind(text);
            if (found == textIds.constEnd()) {
                found = textIds.insert(text, qint64(texts.size()));
                texts.push_back(text);
            }
            ids[size_t(i)] = *found;
        }
    }
    if (sawNumber && sawText)
        return std::nullopt;
    std::vector<qint64> ranks(size_t(list.size()), -1);
    if (sawNumber) {
        std::sort(numbers.begin(), numbers.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
        qint64 rank = -1;
        for (size_t j = 0; j < numbers.size(); ++j) {
            if (j == 0 || numbers[j - 1].first < numbers[j].first)
                ++rank;
            ranks[size_t(numbers[j].second)] = rank;
        }
        return ranks;
    }
    std::vector<qint64> order(texts.size());
    for (size_t j = 0; j < order.size(); ++j)
        order[j] = qint64(j);
    std::sort(order.begin(), order.end(), [&texts](qint64 a, qint64 b) { return texts[size_t(a)] < texts[size_t(b)]; });
    std::vector<qint64> rankOfId(texts.size());
    for (size_t j = 0; j < order.size(); ++j)
        rankOfId[size_t(order[j])] = qint64(j);
    for (size_t i = 0; i < ids.size(); ++i)
        if (ids[i] >= 0)
            ranks[i] = rankOfId[size_t(ids[i])];
    return ranks;
}

int compareRanked(const RankedEntry &a, const RankedEntry &b)
{
    if (a.column != b.column)
        return a.column < b.column ? -1 : 1;
    if (a.date != b.date)
        return a.date < b.date ? -1 : 1;
    if (!a.name || !b.name)
        return int(a.name != nullptr) - int(b.name != nullptr);
    return a.name->compare(*b.name);
}

template<typename E, typename Compare>
void sortEntries(std::vector<E> &entries, AssignmentList &list, Compare compare, bool ascending)
{
    const int sign = ascending ? 1 : -1;
    const auto less = [sign, &compare](const E &a, const E &b) { return sign * compare(a, b) < 0; };
    // The longest prefix already in order; only what follows it needs sorting, then one merge.
    // A stable sort of the tail merged stably after the prefix is exactly a stable sort of all.
    size_t prefix = 1;
    while (prefix < entries.size() && !less(entries[prefix], entries[prefix - 1]))
        ++prefix;
    if (prefix >= entries.size())
        return;
    std::stable_sort(entries.begin() + qsizetype(prefix), entries.end(), less);
    std::inplace_merge(entries.begin(), entries.begin() + qsizetype(prefix), entries.end(), less);
    AssignmentList sorted;
    sorted.reserve(list.size());
    for (const E &entry : entries)
        sorted.append(list[entry.index]);
    list = std::move(sorted);
}

} // namespace

bool comparesByValue(const QString &column)
{
    return column == ColumnCatalogue::Date || column == ColumnCatalogue::Completed
        || column == ColumnCatalogue::Priority;
}

bool isSorted(const AssignmentList &list, const Order &order)
{
    AssignmentList copy = list;
    sort(copy, order);
    for (qsizetype i = 0; i < list.size(); ++i)
        if (copy[i] != list[i])
            return false;
    return true;
}

void sort(AssignmentList &list, const Order &order)
{
    if (list.size() < 2)
        return;
    const std::optional<std::vector<qint64>> columnRanks
        = rankKey(list, order.column, comparesByValue(order.column));
    const std::optional<std::vector<qint64>> dateRanks = rankKey(list, AssignmentKeys::Date, true);
    if (columnRanks && dateRanks) {
        std::vector<RankedEntry> entries(size_t(list.size()));
        for (qsizetype i = 0; i < list.size(); ++i) {
            const QString &name = list[i]->lowered(AssignmentKeys::Name);
            entries[size_t(i)] = {(*columnRanks)[size_t(i)], (*dateRanks)[size_t(i)], name.isNull() ? nullptr : &name, i};
        }
        sortEntries(entries, list, compareRanked, order.ascending);
        return;
    }
    std::vector<Entry> entries = entriesFor(list, order);
    sortEntries(entries, list, compareEntries, order.ascending);
}

} // namespace Sorting
