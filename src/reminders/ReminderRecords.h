#pragma once

#include "store/Assignment.h"

// A notification stays on screen while its assignment is edited, and every edit puts a changed
// copy in the record's place. These find the record a reminder was about in the list as it is now.
namespace ReminderRecords {

// The index in `list` of the same record, or of an equal one, or else of the one record created at
// the same moment ("Date Created" is given once, when a record is made or duplicated); -1 if none.
qsizetype indexOfCurrent(const AssignmentList &list, const AssignmentRef &record);

} // namespace ReminderRecords
