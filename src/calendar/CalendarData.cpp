#include "calendar/CalendarData.h"

void CalendarData::add(const AssignmentRef &object, const QString &title, const QDate &date)
{
    m_days[date].append(CalendarEntry{date, title, object});
}

const QList<CalendarEntry> &CalendarData::entries(const QDate &day) const
{
    static const QList<CalendarEntry> none;
    const auto it = m_days.constFind(day);
    return it == m_days.constEnd() ? none : *it;
}

bool CalendarData::setSelectedEventToDate(const QDate &day, int row)
{
    const QList<CalendarEntry> &list = entries(day);
    const qsizetype index = qsizetype(row) - 1;
    if (index < 0 || index >= list.size())
        return false;
    const CalendarEntry &entry = list[index];
    m_selectedTitle = entry.title;
    m_selectedDate = entry.date;
    m_selectedObject = entry.object;
    return true;
}

bool CalendarData::clearSelection()
{
    const bool hadSelection = m_selectedTitle.has_value() && m_selectedDate.has_value();
    m_selectedTitle.reset();
    m_selectedDate.reset();
    m_selectedObject.reset();
    return hadSelection;
}

qsizetype CalendarData::lastIndexOfObject(const QDate &day, const AssignmentRef &object) const
{
    const QList<CalendarEntry> &list = entries(day);
    for (qsizetype i = list.size() - 1; i >= 0; --i)
        if (list[i].object == object)
            return i;
    return -1;
}

std::optional<int> CalendarData::moveSelectedEventToDate(const QDate &day)
{
    if (!m_selectedTitle || !m_selectedDate)
        return std::nullopt;
    const auto from = m_days.find(*m_selectedDate);
    if (from == m_days.end())
        return std::nullopt;
    QList<CalendarEntry> &list = *from;
    qsizetype found = -1;
    for (qsizetype i = 0; i < list.size(); ++i)
        if (list[i].title == *m_selectedTitle && list[i].object == m_selectedObject) {
            found = i;
            break;
        }
    if (found < 0)
        return std::nullopt;

    CalendarEntry entry = list.takeAt(found);
    if (list.isEmpty())
        m_days.erase(from);
    entry.date = day;
    QList<CalendarEntry> &target = m_days[day];
    target.append(entry);
    const int row = int(target.size());
    setSelectedEventToDate(day, row);
    return row;
}
