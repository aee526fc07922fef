#include "exchange/ExportFields.h"

#include <cstring>

namespace {

// The key compared with one an export writes, inline: this runs for every node of every record.
template<qsizetype N>
bool is(const QString &key, const char16_t (&name)[N])
{
    return std::memcmp(key.constData(), name, (N - 1) * sizeof(char16_t)) == 0;
}

// Files the value under its key when the key is one an export writes. The length tells most keys
// apart before any characters are compared.
void take(ExportFields &found, const QString &key, const QVariant *value)
{
    switch (key.size()) {
    case 4:
        if (is(key, u"Name"))
            found.name = value;
        else if (is(key, u"Date"))
            found.date = value;
        else if (is(key, u"Type"))
            found.type = value;
        break;
    case 5:
        if (is(key, u"Grade"))
            found.grade = value;
        else if (is(key, u"Notes"))
            found.notes = value;
        break;
    case 6:
        if (is(key, u"Course"))
            found.course = value;
        break;
    case 8:
        if (is(key, u"Textbook"))
            found.textbook = value;
        break;
    case 9:
        if (is(key, u"Completed"))
            found.completed = value;
        break;
    default:
        break;
    }
}

void prefetchText(const QVariant *value)
{
    if (const QString *text = ExportFields::stringIn(value))
        __builtin_prefetch(text->constData());
}

// A map is one pointer to its shared data, which holds the tree's header (root, first and last
// node). Reading that pointer lets the data be asked for without waiting for it.
static_assert(sizeof(QVariantMap) == sizeof(void *));
const char *sharedDataOf(const QVariantMap &map)
{
    const char *data = nullptr;
    std::memcpy(&data, &map, sizeof data);
    return data;
}

void prefetchRecord(const AssignmentRef &record)
{
    __builtin_prefetch(record.get());
}

// The map's shared data, and the lines before it into the second-level cache: a record read from a
// file has its nodes and their texts allocated one after the other and its shared data last, so
// the kilobyte before that data is most of the record. (Asking for memory never faults, whatever
// lies there.)
constexpr int CacheLine = 64;
constexpr int LinesBeforeMap = 16;
void prefetchMap(const AssignmentRef &record)
{
    if (!record)
        return;
    if (const char *data = sharedDataOf(record->fields())) {
        __builtin_prefetch(data);
        __builtin_prefetch(data + 48);
        for (int line = 1; line <= LinesBeforeMap; ++line)
            __builtin_prefetch(data - CacheLine * line, 0, 2);
    }
}

// The first node of the tree, and the lines after it: a map read from a file has its nodes and
// their texts allocated one after the other, in key order.
void prefetchFirstNodes(const AssignmentRef &record)
{
    if (!record || record->fields().isEmpty())
        return;
    const char *first = reinterpret_cast<const char *>(&record->fields().constBegin().key());
    for (int line = 0; line < 4; ++line)
        __builtin_prefetch(first + CacheLine * line);
}

} // namespace

void ExportFields::prefetchAhead(const AssignmentList &records, qsizetype from)
{
    auto stage = [&](qsizetype blocksAhead, void (*prefetch)(const AssignmentRef &)) {
        const qsizetype start = from + blocksAhead * Block;
        const qsizetype end = std::min(records.size(), start + Block);
        for (qsizetype i = start; i < end; ++i)
            prefetch(records[i]);
    };
    // Each stage reads only what the stage before asked for, two blocks earlier.
    stage(6, prefetchRecord);
    stage(4, prefetchMap);
    stage(2, prefetchFirstNodes);
}

ExportFields ExportFields::of(const QVariantMap &record)
{
    ExportFields found;
    for (auto it = record.constBegin(); it != record.constEnd(); ++it)
        take(found, it.key(), &it.value());
    return found;
}

void ExportFields::ofBlock(const AssignmentRef *records, qsizetype count, ExportFields *out)
{
    struct Cursor {
        QVariantMap::const_iterator at, end;
    };
    Cursor cursors[Block];
    for (qsizetype i = 0; i < count; ++i) {
        out[i] = ExportFields();
        if (records[i]) {
            const QVariantMap &fields = records[i]->fields();
            cursors[i] = {fields.constBegin(), fields.constEnd()};
        } else {
            cursors[i] = {};
        }
    }
    // One node of each record in turn: the records' walks do not wait for one another.
    for (bool more = true; more;) {
        more = false;
        for (qsizetype i = 0; i < count; ++i) {
            Cursor &cursor = cursors[i];
            if (cursor.at == cursor.end)
                continue;
            take(out[i], cursor.at.key(), &cursor.at.value());
            ++cursor.at;
            more = true;
        }
    }
    for (qsizetype i = 0; i < count; ++i) {
        const ExportFields &fields = out[i];
        prefetchText(fields.name);
        prefetchText(fields.date);
        prefetchText(fields.course);
        prefetchText(fields.textbook);
        prefetchText(fields.type);
        prefetchText(fields.grade);
        prefetchText(fields.notes);
    }
}
