#include "reminders/ReminderSchedule.h"

#include "platform/Clock.h"
#include "platform/PreferencesNotifier.h"
#include "platform/UserDefaults.h"
#include "reminders/ReminderPlan.h"
#include "reminders/ReminderRecords.h"

#include <QSet>

#include <algorithm>

ReminderSchedule::ReminderSchedule(std::function<AssignmentList()> source, QObject *parent)
    : QObject(parent)
    , m_source(std::move(source))
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::VeryCoarseTimer);
    connect(&m_timer, &QTimer::timeout, this, &ReminderSchedule::deliverDue);
    connect(UserDefaults::notifier(), &PreferencesNotifier::changed, this,
            [this](const QString &group, const QString &key) {
                // Our own bookkeeping write must not set off another pass.
                if (group == ReminderSettings::Group && !ReminderSettings::isBookkeeping(key))
                    scheduleRecompute();
            });
}

void ReminderSchedule::start()
{
    m_started = true;
    loadSnoozed();
    const QDateTime now = Clock::now();
    const QDateTime last = ReminderSettings::lastDelivered();
    if (last.isValid() && last < now) {
        const ReminderPlan plan(ReminderSettings::load());
        const QList<Reminder> missed =
            plan.between(m_source(), last.toMSecsSinceEpoch(), now.toMSecsSinceEpoch());
        if (!missed.isEmpty()) {
            // However long the program was closed, what it missed comes as one notification.
            Reminder combined{missed.last().moment, {}, true};
            QSet<const Assignment *> seen;
            for (const Reminder &reminder : missed) {
                for (const AssignmentRef &record : reminder.assignments) {
                    if (!seen.contains(record.get())) {
                        seen.insert(record.get());
                        combined.assignments.append(record);
                    }
                }
            }
            Q_EMIT reminderDue(combined);
        }
    }
    // The first run ever starts counting from now rather than reminding of the whole past.
    ReminderSettings::setLastDelivered(now);
    recompute();
}

void ReminderSchedule::scheduleRecompute()
{
    if (!m_started || m_recomputeQueued)
        return;
    m_recomputeQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_recomputeQueued = false;
            recompute();
        },
        Qt::QueuedConnection);
}

void ReminderSchedule::recompute()
{
    const qint64 now = Clock::now().toMSecsSinceEpoch();
    const QDateTime last = ReminderSettings::lastDelivered();
    // Everything up to the last delivery has been shown; a moment between it and now is due at once.
    const qint64 after = last.isValid() ? std::min(last.toMSecsSinceEpoch(), now) : now;
    const ReminderPlan plan(ReminderSettings::load());
    m_next = plan.nextMoment(m_source(), after);
    for (const Reminder &snoozed : m_snoozed) {
        const qint64 moment = snoozed.moment.toMSecsSinceEpoch();
        if (!m_next || moment < *m_next)
            m_next = moment;
    }
    if (!m_next) {
        m_timer.stop();
        return;
    }
    m_timer.start(int(std::clamp<qint64>(*m_next - now, 0, LongestWait)));
}

void ReminderSchedule::deliverDue()
{
    const QDateTime now = Clock::now();
    const QDateTime last = ReminderSettings::lastDelivered();
    const qint64 from = last.isValid() ? last.toMSecsSinceEpoch() : now.toMSecsSinceEpoch();
    if (from < now.toMSecsSinceEpoch()) {
        const ReminderPlan plan(ReminderSettings::load());
        const QList<Reminder> due = plan.between(m_source(), from, now.toMSecsSinceEpoch());
        ReminderSettings::setLastDelivered(now);
        for (const Reminder &reminder : due)
            Q_EMIT reminderDue(reminder);
    }
    QList<Reminder> stillSnoozed;
    const AssignmentList current = m_snoozed.isEmpty() ? AssignmentList() : m_source();
    for (const Reminder &snoozed : std::as_const(m_snoozed)) {
        if (snoozed.moment > now) {
            stillSnoozed.append(snoozed);
            continue;
        }
        // Edited meanwhile, a record is reminded of as it is now; completed or deleted, not at all.
        Reminder reminder{snoozed.moment, {}, false};
        for (const AssignmentRef &record : snoozed.assignments) {
            const qsizetype index = ReminderRecords::indexOfCurrent(current, record);
            if (index >= 0 && !current[index]->isCompleted())
                reminder.assignments.append(current[index]);
        }
        if (!reminder.assignments.isEmpty())
            Q_EMIT reminderDue(reminder);
    }
    if (stillSnoozed.size() != m_snoozed.size()) {
        m_snoozed = stillSnoozed;
        saveSnoozed();
    }
    recompute();
}

void ReminderSchedule::snooze(const AssignmentList &records, qint64 milliseconds)
{
    if (records.isEmpty())
        return;
    m_snoozed.append(Reminder{Clock::now().addMSecs(milliseconds), records, false});
    saveSnoozed();
    recompute();
}

std::optional<QDateTime> ReminderSchedule::nextReminder() const
{
    if (!m_next)
        return std::nullopt;
    return QDateTime::fromMSecsSinceEpoch(*m_next);
}

void ReminderSchedule::loadSnoozed()
{
    m_snoozed.clear();
    const QVariantList stored = ReminderSettings::snoozed();
    if (stored.isEmpty())
        return;
    const AssignmentList current = m_source();
    for (const QVariant &entry : stored) {
        const QVariantMap map = entry.toMap();
        const QDateTime moment = map.value(ReminderSettings::SnoozeMomentKey).toDateTime();
        if (!moment.isValid())
            continue;
        Reminder reminder{moment, {}, false};
        const QVariantList identities = map.value(ReminderSettings::SnoozeRecordsKey).toList();
        for (const QVariant &identity : identities) {
            // A record deleted while the program was closed is simply not reminded of.
            if (const qsizetype index = ReminderRecords::indexOfIdentity(current, identity.toMap()); index >= 0)
                reminder.assignments.append(current[index]);
        }
        if (!reminder.assignments.isEmpty())
            m_snoozed.append(reminder);
    }
}

void ReminderSchedule::saveSnoozed() const
{
    QVariantList stored;
    for (const Reminder &reminder : m_snoozed) {
        QVariantList identities;
        for (const AssignmentRef &record : reminder.assignments)
            identities.append(ReminderRecords::identity(*record));
        stored.append(QVariantMap{{ReminderSettings::SnoozeMomentKey, reminder.moment},
                                  {ReminderSettings::SnoozeRecordsKey, identities}});
    }
    ReminderSettings::setSnoozed(stored);
}
