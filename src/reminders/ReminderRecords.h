#pragma once

#include "store/Assignment.h"

#include <optional>

// A notification stays on screen while its assignment is edited, and every edit puts a changed
// copy in the record's place. These find the record a reminder was about in the list as it is now.
namespace ReminderRecords {

// The record key of an assignment's own reminder, set in the details sidebar: absent, the reminder
// preferences apply; 0, the assignment is never reminded of; a positive number, one reminder that
// many minutes before it is due, in place of the preferences' lead times and evening.
inline const QString OverrideKey = QStringLiteral("Reminder Lead Minutes");
// The longest lead time an override may hold (sixty days), as the preferences allow.
constexpr qint64 LongestLeadMinutes = 60 * 24 * 60;
// An override read from a record: nullopt when there is none or it is not a usable number.
std::optional<int> overrideOf(const Assignment &record);

// The index in `list` of the same record, or of an equal one, or else of the one record created at
// the same moment ("Date Created" is given once, when a record is made or duplicated); -1 if none.
qsizetype indexOfCurrent(const AssignmentList &list, const AssignmentRef &record);

// What is kept of a record to find it again after a restart: "Date Created", or else its name and
// due date (a record of an old version may lack the first).
QVariantMap identity(const Assignment &record);
// The index in `list` of the record `identity` describes; -1 if none, or if "Date Created" is shared.
qsizetype indexOfIdentity(const AssignmentList &list, const QVariantMap &identity);

} // namespace ReminderRecords
