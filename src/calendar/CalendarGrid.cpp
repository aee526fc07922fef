#include "calendar/CalendarGrid.h"

#include "calendar/CalendarTexts.h"

namespace CalendarGrid {

namespace {
// QDate::dayOfWeek() counts Monday 1 ... Sunday 7; the grid's columns start on Sunday.
int sundayBasedWeekday(const QDate &day)
{
    return day.dayOfWeek() % DaysPerWeek;
}
} // namespace

QDate dateKey(const QDateTime &moment)
{
    return moment.toLocalTime().date();
}

QDateTime dateWithoutTime(const QDate &day)
{
    return day.startOfDay();
}

QDateTime dateWithoutTime(const QDateTime &moment)
{
    return dateKey(moment).startOfDay();
}

QDate firstDay(const QDate &focus, Mode mode)
{
    const QDate start = mode == Mode::Monthly ? QDate(focus.year(), focus.month(), 1) : focus;
    return start.addDays(-sundayBasedWeekday(start));
}

QDate lastDay(const QDate &focus, Mode mode)
{
    if (mode == Mode::Monthly)
        return QDate(focus.year(), focus.month(), focus.daysInMonth());
    return firstDay(focus, mode).addDays(DaysPerWeek - 1);
}

int rowCount(const QDate &focus, Mode mode)
{
    if (mode == Mode::Weekly)
        return 1;
    // Counting whole weeks from the Sunday that opens the grid while the next week still starts
    // in the month; the first week may begin in the month before and still counts.
    QDate day = firstDay(focus, mode);
    int rows = 0;
    do {
        day = day.addDays(DaysPerWeek);
        ++rows;
    } while (day.month() == focus.month() && day.year() == focus.year());
    return rows;
}

QList<Slot> slots(const QDate &focus, Mode mode)
{
    QList<Slot> result;
    result.reserve(CellCount);
    const int rows = rowCount(focus, mode);
    QDate day = firstDay(focus, mode);
    int cell = 0;
    for (int row = rows - 1; row >= -1; --row) {
        for (int column = 0; column < DaysPerWeek; ++column) {
            if (cell < CellCount) {
                Slot slot;
                slot.cell = cell;
                slot.date = day;
                slot.row = row;
                slot.column = column;
                // Days of another month take no clicks, in the weekly view as well.
                slot.enabled = day.month() == focus.month() && day.year() == focus.year();
                result.append(slot);
            }
            ++cell;
            day = day.addDays(1);
        }
    }
    return result;
}

QColor cellColor(const QDate &day, const QDate &focus, const QDate &today, Mode mode)
{
    if (mode == Mode::Monthly && (day.month() != focus.month() || day.year() != focus.year()))
        return QColor::fromRgbF(0.96f, 0.96f, 0.96f, 1.0f);
    if (day == today)
        return QColor::fromRgbF(0.92f, 0.95f, 0.98f, 0.9f);
    if (day == focus)
        return QColor::fromRgbF(0.92f, 0.95f, 0.98f, 1.0f);
    return QColor(Qt::white);
}

std::optional<QDateTime> navigate(const QDateTime &focus, const QString &lowerCaseTitle, Mode mode,
                                  const QDateTime &now)
{
    const int direction = lowerCaseTitle == CalendarTexts::PreviousButton ? -1
        : lowerCaseTitle == CalendarTexts::NextButton                     ? 1
                                                                          : 0;
    if (direction != 0)
        return mode == Mode::Monthly ? focus.addMonths(direction) : focus.addDays(direction * DaysPerWeek);
    if (lowerCaseTitle == CalendarTexts::TodayAction)
        return now;
    return std::nullopt;
}

} // namespace CalendarGrid
