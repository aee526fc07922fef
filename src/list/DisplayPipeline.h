#pragma once

#include "store/Assignment.h"

#include <QString>

#include <unordered_map>
#include <vector>

// The two derivations between the controller's lists: the view and course filter
// (allAssignments -> filteredAssignments) and the search (filteredAssignments ->
// displayAssignments). The search keeps, beside the filtered list, the lower-cased text of each
// record's six searchable fields joined into one string, so a keystroke costs one substring test
// per record; each entry is checked against its record's revision, so an edited record is never
// searched by stale text.
class DisplayPipeline
{
public:
    // The records of `all` that pass the view ("Incomplete", "Complete", anything else passes
    // all) and the course ("All" passes all; otherwise exact equality of "Course"), in order.
    static AssignmentList filter(const AssignmentList &all, const QString &view, const QString &course);

    // The records of `filtered` of which a field within `scope` contains `loweredText`; all of
    // them when the text is empty. `scope` is "" (every field) or a scope word ("name", ...).
    AssignmentList search(const AssignmentList &filtered, const QString &loweredText, const QString &scope);

    // The searchable fields in the order they are tested, with their scope words.
    struct Field {
        const QString &key;
        const QString &scope;
    };
    static const std::vector<Field> &fields();

private:
    struct Joined {
        quint64 revision = 0;
        const Assignment *record = nullptr;
        QString text;
    };
    const QString &joinedText(qsizetype index, const Assignment &record);

    std::vector<Joined> m_joined;
    // Texts of records that were filtered out or moved since, so a filter change does not join
    // every record again; pruned when it outgrows the records.
    std::unordered_map<quint64, QString> m_byRevision;
};
