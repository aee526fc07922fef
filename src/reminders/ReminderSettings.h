#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariantList>

// The reminder preferences, kept in their own dictionary "Preferences - Reminders" beside the
// program's other groups, so that earlier versions (which keep unknown keys) carry them along and
// nothing they read changes.
struct ReminderSettings {
    static inline const QString Group = QStringLiteral("Preferences - Reminders");
    static inline const QString EnabledKey = QStringLiteral("Enabled");
    static inline const QString EveningBeforeKey = QStringLiteral("Evening Before");
    static inline const QString LeadMinutesKey = QStringLiteral("Lead Minutes");
    static inline const QString KeepInTrayKey = QStringLiteral("Keep Running in Tray");
    static inline const QString LastDeliveredKey = QStringLiteral("Last Delivered");
    // Reminders snoozed and not yet shown again: an array of dictionaries, each the moment and the
    // records it is about (as ReminderRecords::identity gives them), so a snooze survives a restart.
    static inline const QString SnoozedKey = QStringLiteral("Snoozed");
    static inline const QString SnoozeMomentKey = QStringLiteral("Moment");
    static inline const QString SnoozeRecordsKey = QStringLiteral("Assignments");
    // The program's own bookkeeping in the group, which no choice of the student's depends on.
    static bool isBookkeeping(const QString &key) { return key == LastDeliveredKey || key == SnoozedKey; }

    // The hour of the evening-before reminder.
    static constexpr int EveningHour = 18;

    bool enabled = true;
    // A reminder at 18:00 on the day before the due day.
    bool eveningBefore = true;
    // Reminders this many minutes before the due moment (positive, no repeats).
    QList<int> leadMinutes{120};
    bool keepInTray = false;

    static ReminderSettings load();
    // Writes the choices; the last-delivered moment in the same dictionary stays as it is.
    void save() const;

    // The moment up to which every reminder has been shown; invalid when none ever was.
    static QDateTime lastDelivered();
    static void setLastDelivered(const QDateTime &moment);
    // The snoozed reminders as stored (see SnoozedKey).
    static QVariantList snoozed();
    static void setSnoozed(const QVariantList &snoozed);
};
