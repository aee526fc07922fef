#include "reminders/ReminderPlan.h"

#include <QMap>

#include <limits>

ReminderPlan::ReminderPlan(ReminderSettings settings)
    : m_settings(std::move(settings))
{
    for (int minutes : m_settings.leadMinutes)
        m_leadMilliseconds.append(qint64(minutes) * 60 * 1000);
}

qint64 ReminderPlan::eveningBefore(const QDateTime &due) const
{
    const QDate day = due.toLocalTime().date();
    const qint64 key = day.toJulianDay();
    auto found = m_eveningByDay.constFind(key);
    if (found == m_eveningByDay.constEnd()) {
        const QDateTime evening(day.addDays(-1), QTime(ReminderSettings::EveningHour, 0));
        found = m_eveningByDay.insert(key, evening.toMSecsSinceEpoch());
    }
    return *found;
}

std::optional<qint64> ReminderPlan::nextMoment(const AssignmentList &list, qint64 after) const
{
    qint64 best = std::numeric_limits<qint64>::max();
    for (const AssignmentRef &record : list) {
        // -1: not read yet.
        int completed = -1;
        forEachMoment(*record, after, [&](qint64 moment) {
            if (moment >= best)
                return;
            if (completed < 0)
                completed = record->isCompleted() ? 1 : 0;
            if (completed == 0)
                best = moment;
        });
    }
    if (best == std::numeric_limits<qint64>::max())
        return std::nullopt;
    return best;
}

QList<Reminder> ReminderPlan::between(const AssignmentList &list, qint64 from, qint64 to) const
{
    QMap<qint64, AssignmentList> byMoment;
    for (const AssignmentRef &record : list) {
        int completed = -1;
        forEachMoment(*record, from, [&](qint64 moment) {
            if (moment > to)
                return;
            if (completed < 0)
                completed = record->isCompleted() ? 1 : 0;
            if (completed == 0)
                byMoment[moment].append(record);
        });
    }
    QList<Reminder> reminders;
    for (auto it = byMoment.cbegin(); it != byMoment.cend(); ++it)
        reminders.append(Reminder{QDateTime::fromMSecsSinceEpoch(it.key()), it.value(), false});
    return reminders;
}
