#pragma once

#include "store/Assignment.h"

#include <QString>

#include <array>
#include <unordered_map>
#include <vector>

// The two derivations between the controller's lists: the view and course filter
// (allAssignments -> filteredAssignments) and the search (filteredAssignments ->
// displayAssignments).
//
// The search keeps the lower-cased text of each record's six searchable fields in one shared
// buffer, with the bounds of every field, so a keystroke costs one substring search per record
// (a Boyer-Moore matcher built once per keystroke) over memory read in order, and a scope searches
// only its own field. Each entry is checked against its record's revision, so an edited record is
// never searched by stale text. When the text grows from the last one over the same records, only
// the last matches are searched again: a record that did not contain the shorter text cannot
// contain the longer one.
class DisplayPipeline
{
public:
    // The records of `all` that pass the view ("Incomplete", "Complete", anything else passes
    // all) and the course ("All" passes all; otherwise exact equality of "Course"), in order.
    static AssignmentList filter(const AssignmentList &all, const QString &view, const QString &course);
    // Whether one record passes that filter.
    static bool passes(const Assignment &record, const QString &view, const QString &course);
    // Whether one record matches the search for `loweredText` within `scope`, as search() decides.
    static bool matches(const Assignment &record, const QString &loweredText, const QString &scope);

    // The records of `filtered` of which a field within `scope` contains `loweredText`; all of
    // them when the text is empty. `scope` is "" (every field) or a scope word ("name", ...).
    AssignmentList search(const AssignmentList &filtered, const QString &loweredText, const QString &scope);

    // The searchable fields in the order they are tested, with their scope words.
    struct Field {
        AssignmentField key;
        const QString &scope;
    };
    static const std::vector<Field> &fields();
    static constexpr int FieldCount = 6;

private:
    // Where one record's text lies in m_text: field f spans [ends[f-1] + 1, ends[f]) with
    // ends[-1] = begin - 1; fields are separated by one separator character.
    struct Span {
        qsizetype begin = 0;
        std::array<qsizetype, FieldCount> ends{};
    };
    struct Entry {
        const Assignment *record = nullptr;
        quint64 revision = 0;
        Span span;
    };

    // Brings m_entries in line with `filtered`; false when any entry had to change.
    bool refresh(const AssignmentList &filtered);
    Span append(const Assignment &record);
    void compact();

    QString m_text;
    std::vector<Entry> m_entries;
    // Texts in m_text of records that were filtered out or moved since, so a filter change or a
    // sort does not join every record again; dropped when the buffer is compacted.
    std::unordered_map<quint64, Span> m_byRevision;
    qsizetype m_liveLength = 0;

    // The last search, for narrowing: its text, scope and the positions that matched.
    QString m_lastText;
    QString m_lastScope;
    std::vector<qsizetype> m_lastHits;
    bool m_lastValid = false;
};
