#include "reminders/ReminderRecords.h"

namespace ReminderRecords {

std::optional<int> overrideOf(const Assignment &record)
{
    const QVariant stored = record.value(OverrideKey);
    if (!stored.isValid())
        return std::nullopt;
    bool ok = false;
    const qlonglong minutes = stored.toLongLong(&ok);
    // A hand-edited value that is no whole number of minutes in range is no override at all.
    if (!ok || minutes < 0 || minutes > LongestLeadMinutes)
        return std::nullopt;
    return int(minutes);
}

qsizetype indexOfCurrent(const AssignmentList &list, const AssignmentRef &record)
{
    if (const qsizetype same = list.indexOf(record); same >= 0)
        return same;
    if (const qsizetype equal = Assignments::indexOfEqual(list, *record); equal >= 0)
        return equal;
    const QVariant created = record->value(AssignmentKeys::DateCreated);
    if (!created.isValid())
        return -1;
    qsizetype found = -1;
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (list[i]->value(AssignmentKeys::DateCreated) == created) {
            // Two records of the same moment (an old version's import): neither is taken for it.
            if (found >= 0)
                return -1;
            found = i;
        }
    }
    return found;
}

QVariantMap identity(const Assignment &record)
{
    if (record.has(AssignmentKeys::DateCreated))
        return {{AssignmentKeys::DateCreated, record.value(AssignmentKeys::DateCreated)}};
    QVariantMap kept;
    for (const QString &key : {AssignmentKeys::Name, AssignmentKeys::Date})
        if (record.has(key))
            kept.insert(key, record.value(key));
    return kept;
}

qsizetype indexOfIdentity(const AssignmentList &list, const QVariantMap &identity)
{
    if (identity.isEmpty())
        return -1;
    const QVariant created = identity.value(AssignmentKeys::DateCreated);
    qsizetype found = -1;
    for (qsizetype i = 0; i < list.size(); ++i) {
        const Assignment &record = *list[i];
        const bool same = created.isValid()
                              ? record.value(AssignmentKeys::DateCreated) == created
                              : !record.has(AssignmentKeys::DateCreated)
                                    && record.value(AssignmentKeys::Name) == identity.value(AssignmentKeys::Name)
                                    && record.value(AssignmentKeys::Date) == identity.value(AssignmentKeys::Date);
        if (!same)
            continue;
        if (!created.isValid())
            return i;
        if (found >= 0)
            return -1;
        found = i;
    }
    return found;
}

} // namespace ReminderRecords
