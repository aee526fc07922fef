#pragma once

#include <QDateTime>
#include <QList>
#include <QString>

// One event or to-do of a course calendar, as the import needs it: already reduced to the program's
// terms (plain-text notes, a due moment in local time or an all-day date).
struct FeedEvent {
    // The calendar's UID, or a key made from the summary and the start when the feed gives none, so
    // that importing the same file again still finds the same assignment.
    QString uid;
    // For one occurrence of a repeating entry, the series' own UID (which earlier versions, taking a
    // series as one entry, kept in the record); empty otherwise.
    QString seriesUid;
    QString summary;
    QString notes;          // DESCRIPTION reduced to text, with the URL property appended
    QDateTime due;          // local; invalid when the entry has no date
    bool allDay = false;    // a DATE value: `due` is local midnight of that day
    bool isTodo = false;
    bool completed = false; // a to-do marked COMPLETED
    bool cancelled = false; // STATUS:CANCELLED
};

struct FeedContents {
    QString calendarName; // X-WR-CALNAME, when the feed names itself
    QList<FeedEvent> events;
};
