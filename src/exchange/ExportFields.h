#pragma once

#include "store/Assignment.h"

#include <QString>
#include <QVariant>
#include <QVariantMap>

// The fields an export writes, each found once per record instead of once per use. A field the
// record does not have is a null pointer.
struct ExportFields {
    const QVariant *name = nullptr;
    const QVariant *date = nullptr;
    const QVariant *course = nullptr;
    const QVariant *textbook = nullptr;
    const QVariant *type = nullptr;
    const QVariant *grade = nullptr;
    const QVariant *completed = nullptr;
    const QVariant *notes = nullptr;

    static ExportFields of(const QVariantMap &record);

    // Calls each(record, fields) for every record of the list in order, null entries skipped.
    //
    // A long export spends most of its time waiting for memory: every record is a tree of separately
    // allocated nodes, and every text value another allocation, none of them in the cache after ten
    // thousand others. Walking one record at a time waits for each node in turn. Here the records a
    // little ahead are asked for early, in stages (the record, its map, its first node), a handful
    // of records are walked side by side so that their nodes are fetched together, and their texts
    // are asked for before the first of them is written.
    template<typename Each>
    static void forEach(const AssignmentList &records, Each &&each);

    // The string a value holds, when it holds one (the usual case); null otherwise.
    static const QString *stringIn(const QVariant *value)
    {
        return value && value->metaType() == QMetaType::fromType<QString>()
            ? static_cast<const QString *>(value->constData())
            : nullptr;
    }
    // Appends the value as text (nothing for an absent one), without a copy when it is text.
    template<typename Out>
    static void append(Out &out, const QVariant *value)
    {
        if (const QString *text = stringIn(value))
            out += *text;
        else if (value)
            out += value->toString();
    }

private:
    static constexpr qsizetype Block = 8;
    // Fills out[0..count) for records[0..count).
    static void ofBlock(const AssignmentRef *records, qsizetype count, ExportFields *out);
    // Asks for the memory the blocks after the one starting at `from` will need.
    static void prefetchAhead(const AssignmentList &records, qsizetype from);
};

template<typename Each>
void ExportFields::forEach(const AssignmentList &records, Each &&each)
{
    ExportFields block[Block];
    for (qsizetype from = 0; from < records.size(); from += Block) {
        const qsizetype count = std::min(Block, records.size() - from);
        prefetchAhead(records, from);
        ofBlock(records.constData() + from, count, block);
        for (qsizetype i = 0; i < count; ++i) {
            if (const AssignmentRef &record = records[from + i])
                each(*record, block[i]);
        }
    }
}
