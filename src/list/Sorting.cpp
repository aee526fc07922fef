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

Key valueKey(const Assignment &record, const AssignmentKey &key)
{
    const QVariant *it = record.find(key);
    if (!it)
        return {};
    if (isNumber(*it))
        return {Key::Number, it->toDouble(), {}};
    return {Key::Text, 0, it->toString()};
}

Key textKey(const Assignment &record, const AssignmentKey &key)
{
    const QString &lowered = record.lowered(key);
    if (lowered.isNull())
        return {};
    return {Key::Text, 0, lowered};
}

Entry entryFor(const Assignment &record, const AssignmentKey &column, bool columnByValue, qsizetype index)
{
    static const AssignmentKey date(AssignmentField::Date);
    static const AssignmentKey name(AssignmentField::Name);
    Entry entry;
    entry.column = columnByValue ? valueKey(record, column) : textKey(record, column);
    entry.date = valueKey(record, date);
    entry.name = textKey(record, name);
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
    const AssignmentKey column(order.column);
    std::vector<Entry> entries;
    entries.reserve(list.size());
    for (qsizetype i = 0; i < list.size(); ++i)
        entries.push_back(entryFor(*list[i], column, byValue, i));
    return entries;
}

// Ranks of one key over a list: equal values share a rank, ranks follow the key's order, and a
// missing value is -1. A rank is the value's index among the sorted distinct values kept beside
// them, which may also hold values no record has any more: ranks need only keep the order.
struct Ranked {
    std::vector<qint64> ranks;
    std::vector<double> numbers;
    std::vector<QString> texts;

    // Gives the value a rank, inserting it among the distinct values when new (every higher rank
    // moves up by one). False when it would mix numbers with text.
    bool place(size_t position, const Key &key)
    {
        if (key.kind == Key::Missing) {
            ranks[position] = -1;
            return true;
        }
        qint64 rank = 0;
        bool inserted = false;
        if (key.kind == Key::Number) {
            if (!texts.empty())
                return false;
            const auto it = std::lower_bound(numbers.begin(), numbers.end(), key.number);
            rank = it - numbers.begin();
            if (it == numbers.end() || key.number < *it) {
                numbers.insert(it, key.number);
                inserted = true;
            }
        } else {
            if (!numbers.empty())
                return false;
            const auto it = std::lower_bound(texts.begin(), texts.end(), key.text);
            rank = it - texts.begin();
            if (it == texts.end() || key.text < *it) {
                texts.insert(it, key.text);
                inserted = true;
            }
        }
        if (inserted)
            for (qint64 &other : ranks)
                if (other >= rank)
                    ++other;
        ranks[position] = rank;
        return true;
    }
};

// nullopt when the values cannot be ranked as one kind (numbers mixed with text), which the
// general comparison handles.
std::optional<Ranked> rankKey(const AssignmentList &list, const QString &name, bool byValue)
{
    const AssignmentKey key(name);
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
        const QVariant *it = record.find(key);
        if (!it)
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
    Ranked ranked;
    ranked.ranks.assign(size_t(list.size()), -1);
    if (sawNumber) {
        std::sort(numbers.begin(), numbers.end(), [](const auto &a, const auto &b) { return a.first < b.first; });
        for (size_t j = 0; j < numbers.size(); ++j) {
            if (j == 0 || numbers[j - 1].first < numbers[j].first)
                ranked.numbers.push_back(numbers[j].first);
            ranked.ranks[size_t(numbers[j].second)] = qint64(ranked.numbers.size()) - 1;
        }
        return ranked;
    }
    std::vector<qint64> order(texts.size());
    for (size_t j = 0; j < order.size(); ++j)
        order[j] = qint64(j);
    std::sort(order.begin(), order.end(), [&texts](qint64 a, qint64 b) { return texts[size_t(a)] < texts[size_t(b)]; });
    std::vector<qint64> rankOfId(texts.size());
    ranked.texts.reserve(texts.size());
    for (size_t j = 0; j < order.size(); ++j) {
        rankOfId[size_t(order[j])] = qint64(j);
        ranked.texts.push_back(std::move(texts[size_t(order[j])]));
    }
    for (size_t i = 0; i < ids.size(); ++i)
        if (ids[i] >= 0)
            ranked.ranks[i] = rankOfId[size_t(ids[i])];
    return ranked;
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

int compare(const Assignment &a, const Assignment &b, const Order &order)
{
    const bool byValue = comparesByValue(order.column);
    const AssignmentKey column(order.column);
    const int c = compareEntries(entryFor(a, column, byValue, 0), entryFor(b, column, byValue, 0));
    return order.ascending ? c : -c;
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
    std::map<QString, std::optional<Ranked>> ranks;

    static Key keyOf(const Assignment &record, const QString &id, const AssignmentKey &key)
    {
        return id.front() == QLatin1Char('v') ? valueKey(record, key) : textKey(record, key);
    }

    // Makes the cache describe `list`. Records still there keep their ranks wherever they moved;
    // a few new or changed ones are ranked among them; many start every key afresh.
    void follow(const AssignmentList &list)
    {
        const size_t count = size_t(list.size());
        bool same = records.size() == count;
        for (size_t i = 0; same && i < count; ++i)
            same = records[i] == list[qsizetype(i)].get() && revisions[i] == list[qsizetype(i)]->revision();
        if (same)
            return;

        // Where each record was before, or -1.
        std::vector<qsizetype> from(count, -1);
        // Earlier positions by revision in an open-addressed table: one block rather than a node
        // per record, so a reordered list of 100,000 costs no small allocations. Revisions start at
        // 1, so 0 marks an empty slot.
        std::vector<std::pair<quint64, size_t>> byRevision;
        size_t mask = 0;
        const auto slotOf = [&](quint64 revision) { return size_t((revision * 0x9E3779B97F4A7C15ull) >> 20) & mask; };
        size_t fresh = 0;
        for (size_t i = 0; i < count; ++i) {
            const Assignment *record = list[qsizetype(i)].get();
            if (i < records.size() && records[i] == record && revisions[i] == record->revision()) {
                from[i] = qsizetype(i);
                continue;
            }
            if (byRevision.empty() && !records.empty()) {
                size_t size = 16;
                while (size < 2 * records.size())
                    size *= 2;
                mask = size - 1;
                byRevision.assign(size, {0, 0});
                for (size_t j = 0; j < records.size(); ++j) {
                    size_t slot = slotOf(revisions[j]);
                    while (byRevision[slot].first != 0 && byRevision[slot].first != revisions[j])
                        slot = (slot + 1) & mask;
                    if (byRevision[slot].first == 0) // the first of equal revisions stays, as before
                        byRevision[slot] = {revisions[j], j};
                }
            }
            bool found = false;
            if (!byRevision.empty()) {
                size_t slot = slotOf(record->revision());
                while (byRevision[slot].first != 0 && byRevision[slot].first != record->revision())
                    slot = (slot + 1) & mask;
                if (byRevision[slot].first != 0 && records[byRevision[slot].second] == record) {
                    from[i] = qsizetype(byRevision[slot].second);
                    found = true;
                }
            }
            if (!found)
                ++fresh;
        }
        if (fresh > count / 8 + 16) {
            ranks.clear();
        } else {
            for (auto it = ranks.begin(); it != ranks.end();) {
                std::optional<Ranked> &ranked = it->second;
                bool kept = ranked && ranked->numbers.size() + ranked->texts.size() < 2 * count + 1024;
                if (kept) {
                    const AssignmentKey key(it->first.mid(1));
                    std::vector<qint64> moved(count, -1);
                    for (size_t i = 0; i < count; ++i)
                        if (from[i] >= 0)
                            moved[i] = ranked->ranks[size_t(from[i])];
                    ranked->ranks = std::move(moved);
                    for (size_t i = 0; kept && i < count; ++i)
                        if (from[i] < 0)
                            kept = ranked->place(i, keyOf(*list[qsizetype(i)], it->first, key));
                }
                it = kept ? std::next(it) : ranks.erase(it); // ranked afresh when next asked for
            }
        }
        records.resize(count);
        revisions.resize(count);
        for (size_t i = 0; i < count; ++i) {
            records[i] = list[qsizetype(i)].get();
            revisions[i] = list[qsizetype(i)]->revision();
        }
    }

    const std::optional<Ranked> &ranksOf(const AssignmentList &list, const QString &key, bool byValue)
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
        for (auto &[id, ranked] : ranks)
            if (ranked)
                apply(ranked->ranks);
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
    const auto fits = [](const std::optional<Ranked> &ranked) {
        return ranked && qint64(ranked->numbers.size() + ranked->texts.size()) < (qint64(1) << Bits) - 1;
    };
    if (fits(columnRanks) && fits(dateRanks) && fits(nameRanks)) {
        const size_t count = size_t(list.size());
        std::vector<std::pair<quint64, qsizetype>> packed(count);
        for (size_t i = 0; i < count; ++i) {
            const quint64 key = (quint64(columnRanks->ranks[i] + 1) << (2 * Bits))
                | (quint64(dateRanks->ranks[i] + 1) << Bits) | quint64(nameRanks->ranks[i] + 1);
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
