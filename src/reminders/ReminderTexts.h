#pragma once

#include "reminders/Reminder.h"

#include <QString>

// What a reminder notification says. One assignment: its name, and when it is due. Several at
// the same moment: how many, and when ("3 assignments due tomorrow"), with their names below.
namespace ReminderTexts {

inline const QString Untitled = QStringLiteral("Untitled assignment");
inline const QString MissedTitle = QStringLiteral("Reminders while Quillory was closed");

QString title(const Reminder &reminder, const QDateTime &now);
QString body(const Reminder &reminder, const QDateTime &now);
// "today", "tomorrow", "yesterday" or "on Friday, March 6", seen from `now`.
QString dayWords(const QDate &day, const QDate &today);
// "due tomorrow at 9:00 AM", "was due today at 9:00 AM".
QString dueWords(const QDateTime &due, const QDateTime &now);

} // namespace ReminderTexts
