#pragma once

#include "calendar/CalendarEntry.h"
#include "calendar/CalendarGrid.h"

#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QList>
#include <QString>

#include <optional>

// What a calendar view shows and has selected, apart from the drawing: the entries of every day
// (in the order they were added; a moved entry goes to the end of its new day) and the selected
// entry's title, day and record.
class CalendarData
{
public:
    // Appends an entry under the day of `date`.
    void add(const AssignmentRef &object, const QString &title, const QDate &date);
    void add(const AssignmentRef &object, const QString &title, const QDateTime &date)
    {
        add(object, title, CalendarGrid::dateKey(date));
    }
    void removeAll() { m_days.clear(); }

    // The entries of a day; empty when it has none.
    const QList<CalendarEntry> &entries(const QDate &day) const;
    qsizetype count(const QDate &day) const { return entries(day).size(); }
    const QHash<QDate, QList<CalendarEntry>> &dataDictionary() const { return m_days; }

    // --- the selection ---------------------------------------------------------------------------
    const std::optional<QString> &selectedTitle() const { return m_selectedTitle; }
    const std::optional<QDate> &selectedDate() const { return m_selectedDate; }
    const AssignmentRef &selectedObject() const { return m_selectedObject; }

    // Row `row` of a day's list (row 0 is the day number) becomes the selection. Rows that name no
    // entry change nothing and give false.
    bool setSelectedEventToDate(const QDate &day, int row);
    // Clears the selection. True when a title and a day had both been selected, which is when the
    // views tell their delegate.
    bool clearSelection();
    // The last entry of the day standing for that very record, or -1.
    qsizetype lastIndexOfObject(const QDate &day, const AssignmentRef &object) const;

    // Moves the selected entry (the first of its day with the selected title and the very selected
    // record) to the end of `day` and selects it there. Its new row, or nothing when the entry
    // could not be found, in which case nothing changed.
    std::optional<int> moveSelectedEventToDate(const QDate &day);

private:
    QHash<QDate, QList<CalendarEntry>> m_days;
    std::optional<QString> m_selectedTitle;
    std::optional<QDate> m_selectedDate;
    AssignmentRef m_selectedObject;
};
