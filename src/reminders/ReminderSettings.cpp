#include "reminders/ReminderSettings.h"

#include "platform/UserDefaults.h"

#include <algorithm>

namespace {
QVariantMap storedGroup()
{
    return UserDefaults().dictionary(ReminderSettings::Group);
}
} // namespace

ReminderSettings ReminderSettings::load()
{
    const QVariantMap group = storedGroup();
    ReminderSettings settings;
    if (group.contains(EnabledKey))
        settings.enabled = group.value(EnabledKey).toBool();
    if (group.contains(EveningBeforeKey))
        settings.eveningBefore = group.value(EveningBeforeKey).toBool();
    if (group.contains(KeepInTrayKey))
        settings.keepInTray = group.value(KeepInTrayKey).toBool();
    if (group.contains(LeadMinutesKey)) {
        // A hand-edited list may hold anything: only positive whole minutes count, once each.
        settings.leadMinutes.clear();
        const QVariantList stored = group.value(LeadMinutesKey).toList();
        for (const QVariant &value : stored) {
            bool ok = false;
            const qlonglong minutes = value.toLongLong(&ok);
            if (ok && minutes > 0 && minutes <= 60 * 24 * 60 && !settings.leadMinutes.contains(int(minutes)))
                settings.leadMinutes.append(int(minutes));
        }
        std::sort(settings.leadMinutes.begin(), settings.leadMinutes.end());
    }
    return settings;
}

void ReminderSettings::save() const
{
    QVariantMap group = storedGroup();
    group.insert(EnabledKey, enabled);
    group.insert(EveningBeforeKey, eveningBefore);
    group.insert(KeepInTrayKey, keepInTray);
    QVariantList minutes;
    for (int lead : leadMinutes)
        minutes.append(qint64(lead));
    group.insert(LeadMinutesKey, minutes);
    UserDefaults().set(Group, group);
}

QDateTime ReminderSettings::lastDelivered()
{
    return storedGroup().value(LastDeliveredKey).toDateTime();
}

void ReminderSettings::setLastDelivered(const QDateTime &moment)
{
    QVariantMap group = storedGroup();
    group.insert(LastDeliveredKey, moment);
    UserDefaults().set(Group, group);
}

QVariantList ReminderSettings::snoozed()
{
    return storedGroup().value(SnoozedKey).toList();
}

void ReminderSettings::setSnoozed(const QVariantList &snoozed)
{
    QVariantMap group = storedGroup();
    if (snoozed.isEmpty() && !group.contains(SnoozedKey))
        return;
    if (snoozed.isEmpty())
        group.remove(SnoozedKey);
    else
        group.insert(SnoozedKey, snoozed);
    UserDefaults().set(Group, group);
}
