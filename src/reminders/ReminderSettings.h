#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

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
};
