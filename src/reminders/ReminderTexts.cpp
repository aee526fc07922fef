#include "reminders/ReminderTexts.h"

#include <QLocale>
#include <QStringList>

namespace ReminderTexts {

namespace {
QString nameOf(const Assignment &record)
{
    const QString name = record.string(AssignmentKeys::Name).trimmed();
    return name.isEmpty() ? Untitled : name;
}

QDate dueDay(const Assignment &record)
{
    const auto due = record.dueDate();
    return due ? due->toLocalTime().date() : QDate();
}
} // namespace

QString dayWords(const QDate &day, const QDate &today)
{
    const qint64 days = today.daysTo(day);
    if (days == 0)
        return QStringLiteral("today");
    if (days == 1)
        return QStringLiteral("tomorrow");
    if (days == -1)
        return QStringLiteral("yesterday");
    // Fixed English names: the program's texts are English whatever the locale.
    return QStringLiteral("on ") + QLocale::c().toString(day, QStringLiteral("dddd, MMMM d"));
}

QString dueWords(const QDateTime &due, const QDateTime &now)
{
    const QDateTime local = due.toLocalTime();
    const QString when = dayWords(local.date(), now.toLocalTime().date()) + QStringLiteral(" at ") +
                         QLocale::c().toString(local.time(), QStringLiteral("h:mm AP"));
    return (due < now ? QStringLiteral("was due ") : QStringLiteral("due ")) + when;
}

QString title(const Reminder &reminder, const QDateTime &now)
{
    if (reminder.missed)
        return MissedTitle;
    if (reminder.assignments.size() == 1)
        return nameOf(*reminder.assignments.first());
    // One day for all of them reads "due tomorrow"; mixed days only say how many.
    const QDate first = reminder.assignments.isEmpty() ? QDate() : dueDay(*reminder.assignments.first());
    bool sameDay = first.isValid();
    for (const AssignmentRef &record : reminder.assignments)
        sameDay = sameDay && dueDay(*record) == first;
    const QString count = QString::number(reminder.assignments.size()) + QStringLiteral(" assignments due");
    if (!sameDay)
        return count + QStringLiteral(" soon");
    return count + QLatin1Char(' ') + dayWords(first, now.toLocalTime().date());
}

QString body(const Reminder &reminder, const QDateTime &now)
{
    if (reminder.assignments.size() == 1 && !reminder.missed) {
        const auto due = reminder.assignments.first()->dueDate();
        QString text = due ? dueWords(*due, now) : QString();
        if (!text.isEmpty())
            text[0] = text[0].toUpper();
        return text;
    }
    QStringList lines;
    for (const AssignmentRef &record : reminder.assignments) {
        const auto due = record->dueDate();
        lines.append(due ? nameOf(*record) + QStringLiteral(", ") + dueWords(*due, now) : nameOf(*record));
    }
    return lines.join(QLatin1Char('\n'));
}

} // namespace ReminderTexts
