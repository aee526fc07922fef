#include "list/Sorting.h"

#include "list/ColumnCatalogue.h"

#include <QHash>

#include <algorithm>
#include <map>
#include <optional>
#include <type_traits>
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

struct KeyCache::Data {
    std::vector<const Assignment *> records;
    std::vector<quint64> revisions;
    // Ranks by key, "t" or "v" (text or value) before the key's name; nullopt when the key cannot
    // be ranked. A node map: the sort holds references to three entries while adding them.
    std::map<QString, std::optional<std::vector<qint64>>> ranks;

    // Makes the cache describe `list`, dropping every rank when the records or their revisions differ.
    void follow(const AssignmentList &list)
    {
        bool same = records.size() == size_t(list.size());
        for (qsizetype i = 0; same && i < list.size(); ++i)
            same = records[size_t(i)] == list[i].get() && revisions[size_t(i)] == list[i]->revision();
        if (same)
            return;
        records.resize(size_t(list.size()));
        revisions.resize(size_t(list.size()));
        for (qsizetype i = 0; i < list.size(); ++i) {
            records[size_t(i)] = list[i].get();
            revisions[size_t(i)] = list[i]->revision();
        }
        ranks.clear();
    }

    const std::optional<std::vector<qint64>> &ranksOf(const AssignmentList &list, const QString &key, bool byValue)
    {
        const QString id = (byValue ? QLatin1Char('v') : QLatin1Char('t')) + key;
        auto it = ranks.find(id);
        if (it == ranks.end())
            it = ranks.emplace(id, rankKey(list, key, byValue)).first;
        return it->second;
    }

    // The list was reordered: position j now holds what position order[j] held.
    void permute(const std::vector<qsizetype> &order)
    {
        const auto apply = [&order](auto &values) {
            std::remove_reference_t<decltype(values)> moved(values.size());
            for (size_t j = 0; j < order.size(); ++j)
                moved[j] = values[size_t(order[j])];
            values = std::move(moved);
        };
        apply(records);
        apply(revisions);
        for (auto &[id, values] : ranks)
            if (values)
                apply(*values);
    }
};

KeyCache::KeyCache() : d(std::make_unique<Data>()) {}
KeyCache::~KeyCache() = default;

KeyCache::Data &dataOf(KeyCache &cache)
{
    return *cache.d;
}

void sort(AssignmentList &list, const Order &order, KeyCache *cache)
{
    if (list.size() < 2)
        return;
    KeyCache local;
    KeyCache::Data &keys = dataOf(cache ? *cache : local);
    keys.follow(list);
    const auto &columnRanks = keys.ranksOf(list, order.column, comparesByValue(order.column));
    const auto &dateRanks = keys.ranksOf(list, AssignmentKeys::Date, true);
    const auto &nameRanks = keys.ranksOf(list, AssignmentKeys::Name, false);
    // Three ranks, each plus one so a missing value is 0, in 21 bits each.
    constexpr int Bits = 21;
    if (columnRanks && dateRanks && nameRanks && list.size() < (qsizetype(1) << Bits) - 1) {
        const size_t count = size_t(list.size());
        std::vector<std::pair<quint64, qsizetype>> packed(count);
        for (size_t i = 0; i < count; ++i) {
            const quint64 key = (quint64((*columnRanks)[i] + 1) << (2 * Bits))
                | (quint64((*dateRanks)[i] + 1) << Bits) | quint64((*nameRanks)[i] + 1);
            // Descending reverses the keys; equal keys keep their order either way, as in a stable sort.
            packed[i] = {order.ascending ? key : ~key, qsizetype(i)};
        }
        if (std::is_sorted(packed.begin(), packed.end()))
            return;
        std::sort(packed.begin(), packed.end());
        std::vector<qsizetype> permutation(count);
        AssignmentList sorted;
        sorted.reserve(list.size());
        for (size_t j = 0; j < count; ++j) {
            permutation[j] = packed[j].second;
            sorted.append(list[packed[j].second]);
        }
        list = std::move(sorted);
        keys.permute(permutation);
        return;
    }
    std::vector<Entry> entries = entriesFor(list, order);
    sortEntries(entries, list, compareEntries, order.ascending);
    // The general path does not keep the cache in step with the new order.
    keys.follow(list);
}

} // namespace Sorting
