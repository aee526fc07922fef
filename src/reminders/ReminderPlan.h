#pragma once

#include "reminders/Reminder.h"
#include "reminders/ReminderRecords.h"
#include "reminders/ReminderSettings.h"

#include <QHash>
#include <QList>

#include <optional>

// Works out when the reminders of a list of assignments fall. Only assignments that are not
// completed and have a due date get reminders; an assignment's own override (ReminderRecords)
// replaces the preferences' lead times for it. Moments are milliseconds since 1970 (UTC), so a
// pass over ten thousand records compares integers; the evening-before moment, which needs the
// time zone, is worked out once per due day.
class ReminderPlan
{
public:
    explicit ReminderPlan(ReminderSettings settings);

    const ReminderSettings &settings() const { return m_settings; }

    // Calls fn(moment) for each distinct reminder moment of one record later than `after`, whether
    // or not the record is completed: callers ask that only of a moment they would take, since
    // it means reading the record's fields, while the due date is cached. For the same reason a
    // record due by `after` (every reminder comes before the due moment) is passed over at once:
    // most of a long-used store lies there.
    template<typename Fn>
    void forEachMoment(const Assignment &record, qint64 after, Fn &&fn) const;

    // The earliest reminder moment strictly after `after`; nullopt when none is left.
    std::optional<qint64> nextMoment(const AssignmentList &list, qint64 after) const;
    // Every reminder with its moment in (from, to], one per moment, earliest first; records keep
    // the list's order inside each.
    QList<Reminder> between(const AssignmentList &list, qint64 from, qint64 to) const;

private:
    qint64 eveningBefore(const QDateTime &due) const;

    ReminderSettings m_settings;
    QList<qint64> m_leadMilliseconds;
    mutable QHash<qint64, qint64> m_eveningByDay;
};

template<typename Fn>
void ReminderPlan::forEachMoment(const Assignment &record, qint64 after, Fn &&fn) const
{
    if (!m_settings.enabled)
        return;
    const std::optional<qint64> moment = record.dueMoment();
    if (!moment || *moment <= after)
        return;
    const qint64 dueMoment = *moment;
    const std::optional<QDateTime> due = record.dueDate();
    qint64 given[8];
    int count = 0;
    auto offer = [&](qint64 moment) {
        for (int i = 0; i < count; ++i) {
            if (given[i] == moment)
                return;
        }
        if (count < 8)
            given[count++] = moment;
        if (moment > after)
            fn(moment);
    };
    // The record's own choice from the sidebar stands in place of the preferences.
    if (const std::optional<int> own = ReminderRecords::overrideOf(record)) {
        if (*own > 0)
            offer(dueMoment - qint64(*own) * 60 * 1000);
        return;
    }
    if (m_settings.eveningBefore)
        offer(eveningBefore(*due));
    for (qint64 lead : m_leadMilliseconds)
        offer(dueMoment - lead);
}
