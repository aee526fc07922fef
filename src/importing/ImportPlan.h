#pragma once

#include "importing/FeedEvent.h"
#include "store/Assignment.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QStringList>

// What an assignment remembers of the calendar entry it came from, under one record key of its own
// (older versions keep unknown keys as they are). The dictionary holds the entry's UID and the
// name, date and notes as last imported: when the record's own values still equal them, the student
// has not edited it, and a changed entry may update it.
namespace ImportKeys {
inline const QString &Record = fieldKey(AssignmentField::CalendarImport);
inline const QString Uid = QStringLiteral("UID");
inline const QString Source = QStringLiteral("Source");
inline const QString Name = QStringLiteral("Name");
inline const QString Date = QStringLiteral("Date");
inline const QString Notes = QStringLiteral("Notes");
} // namespace ImportKeys

// The preview of an import: for every entry of a calendar, whether it would be added, would update
// the assignment imported from it earlier, or is skipped, and why. Nothing changes until apply(),
// which adds and updates only the chosen items and never removes a record.
class ImportPlan
{
public:
    enum class Action { Add, Update, Skip };
    struct Item {
        Action action = Action::Add;
        QString uid;
        QString name;
        QString course;         // empty: none
        bool newCourse = false; // `course` is not yet one of the student's courses
        QString date;           // stored form; empty: no due date
        bool allDay = false;
        QString notes;
        bool completed = false;
        QString reason;         // what changes, or why it is skipped
        bool chosen = true;     // the preview's check box; skipped items start unchosen
        // An occurrence of a repeating entry that continues the one assignment an earlier version
        // made of the whole series: that assignment's UID (the series' own). Updating it moves the
        // record to the occurrence's UID.
        QString formerUid;
    };
    struct Result {
        int added = 0;
        int updated = 0;
        QStringList newCourses; // courses the applied items need that the student does not have yet
        QStringList addedUids;
    };

    // Plans `contents` against the store's records and the student's course names. An entry in
    // `deletedIfMissing` (the UIDs a subscription brought in before) whose assignment is gone was
    // deleted by the student, and is not brought back.
    static ImportPlan make(const FeedContents &contents, const AssignmentList &records, const QStringList &courses,
                           const QString &source, const QSet<QString> &deletedIfMissing = {});

    QList<Item> &items() { return m_items; }
    const QList<Item> &items() const { return m_items; }
    int count(Action action) const;
    QString source() const { return m_source; }

    // Adds and updates the chosen items in `records` (appending new ones, as new assignments always
    // are). Each item is checked again against the records as they are now, so a record edited or
    // imported since the preview was made is left alone. `courses` as in make().
    Result apply(AssignmentList &records, const QStringList &courses) const;

    // The imported entry's UID of a record, or empty.
    static QString uidOf(const Assignment &record);
    // True when the record's name, date and notes are still those last imported.
    static bool isUnedited(const Assignment &record);

private:
    QList<Item> m_items;
    QString m_source;
};
