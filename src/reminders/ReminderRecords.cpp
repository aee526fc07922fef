#include "reminders/ReminderRecords.h"

namespace ReminderRecords {

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

} // namespace ReminderRecords
