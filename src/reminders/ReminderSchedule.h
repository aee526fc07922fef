#pragma once

#include "reminders/Reminder.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <optional>

// Keeps one timer, set for the next reminder of all assignments, rather than one per assignment.
// Whenever the assignments or the reminder preferences change, the next moment is worked out again
// (once per turn of the event loop, however many changes came in it).
//
// The moment up to which reminders have been shown is kept in the preferences, so what fell while
// the program was closed is shown once at the next start, and never twice.
class ReminderSchedule : public QObject
{
    Q_OBJECT
public:
    // `source` gives the current list of all assignments.
    explicit ReminderSchedule(std::function<AssignmentList()> source, QObject *parent = nullptr);

    // Shows the reminders missed since the last run (as one notification), then sets the timer.
    void start();
    // Asks for the next moment to be worked out again at the next turn of the event loop.
    void scheduleRecompute();
    // Works out the next moment now and sets the timer for it.
    void recompute();
    // Shows every reminder whose moment has come (the timer calls this).
    void deliverDue();
    // The same records are reminded of again after `milliseconds`.
    // The snooze is kept in the preferences until it is shown, so a restart does not lose it.
    void snooze(const AssignmentList &records, qint64 milliseconds = 60 * 60 * 1000);

    // The moment the timer is set for; nullopt when nothing is coming.
    std::optional<QDateTime> nextReminder() const;
    const QTimer &timer() const { return m_timer; }

    // The longest the timer waits before looking again, so that a suspended machine or a changed
    // clock is noticed within this time.
    static constexpr qint64 LongestWait = 60 * 60 * 1000;

Q_SIGNALS:
    void reminderDue(const Reminder &reminder);

private:
    void loadSnoozed();
    void saveSnoozed() const;

    std::function<AssignmentList()> m_source;
    QTimer m_timer;
    std::optional<qint64> m_next;
    QList<Reminder> m_snoozed;
    bool m_recomputeQueued = false;
    bool m_started = false;
};
