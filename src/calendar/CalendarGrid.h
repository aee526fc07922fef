#pragma once

#include <QColor>
#include <QDate>
#include <QDateTime>
#include <QList>
#include <QString>

#include <optional>

// Which day goes into which of the 42 day cells of a weekly or monthly calendar, how many week rows
// a month takes and what colour each day's cell gets. Pure date arithmetic: no window needed.
namespace CalendarGrid {

enum class Mode { Monthly = 1, Weekly = 2 };

inline constexpr int CellCount = 42;
inline constexpr int DaysPerWeek = 7;

// One day cell as the grid is laid out: its number, the day it shows, the row index it is placed
// at (rows - 1 is the top row, 0 the bottom one, -1 the extra week below the visible grid), its
// weekday column (0 = Sunday) and whether its day list takes clicks.
struct Slot {
    int cell = 0;
    QDate date;
    int row = 0;
    int column = 0;
    bool enabled = false;
};

// The key under which a date's entries are kept: the local day, at midnight. Two moments of one
// day always give the same key.
QDate dateKey(const QDateTime &moment);
// That day at 00:00:00 local time (the first moment of the day where the clocks skip midnight).
QDateTime dateWithoutTime(const QDate &day);
QDateTime dateWithoutTime(const QDateTime &moment);

// The first day shown: the Sunday on or before the first of the focus month (monthly) or of the
// focus week (weekly).
QDate firstDay(const QDate &focus, Mode mode);
// The last day of the focus month (monthly) or the Saturday ending the focus week (weekly).
QDate lastDay(const QDate &focus, Mode mode);
// Week rows: 1 for a week; 4 to 6 for a month.
int rowCount(const QDate &focus, Mode mode);

// The cells in number order, as they are laid out: rows from the top (rows - 1) down to 0, then
// the one week below the grid (-1), seven days each, as long as cell numbers last. With six rows
// the extra week would need cells 42 to 48 and is left out.
QList<Slot> slots(const QDate &focus, Mode mode);

// The background of a day's cell: light grey for another month in the monthly view, a light
// blue for today (slightly transparent) and for the focus day, otherwise white.
QColor cellColor(const QDate &day, const QDate &focus, const QDate &today, Mode mode);

// The focus after a navigation button: "<" and ">" step a month (monthly) or a week (weekly),
// keeping the day of the month where the month has it; "today" gives `now` with its time of day.
// Any other title gives nothing.
std::optional<QDateTime> navigate(const QDateTime &focus, const QString &lowerCaseTitle, Mode mode,
                                  const QDateTime &now);

} // namespace CalendarGrid
