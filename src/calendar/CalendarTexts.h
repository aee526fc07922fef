#pragma once

#include <QString>
#include <QStringList>

// The fixed texts of the weekly and monthly calendars.
namespace CalendarTexts {

// The one type on the pasteboard of a drag between days. Its data only marks the drag: the moved
// entry is the calendar's selection.
inline const QString DragType = QStringLiteral("CalendarDragAndDropDataType");

inline const QString PreviousButton = QStringLiteral("<");
inline const QString NextButton = QStringLiteral(">");
inline const QString TodayButton = QStringLiteral("Today");
// The navigation buttons are told apart by their title in lower case.
inline const QString TodayAction = QStringLiteral("today");

// The month title: full month name and year ("March 2008").
inline const QString TitleFormat = QStringLiteral("%B %Y");

inline const QStringList WeekdayNames = {QStringLiteral("Sunday"),   QStringLiteral("Monday"),
                                         QStringLiteral("Tuesday"),  QStringLiteral("Wednesday"),
                                         QStringLiteral("Thursday"), QStringLiteral("Friday"),
                                         QStringLiteral("Saturday")};

// The one column of a day's list.
inline const QString ColumnIdentifier = QStringLiteral("column");

// What setActiveCalendar() understands.
inline const QString Weekly = QStringLiteral("Weekly");
inline const QString Monthly = QStringLiteral("Monthly");

inline const QString MoveError = QStringLiteral("There was an error moving the event.");

// The font of the day lists; where it is not installed Qt picks the closest sans serif.
inline const QString DayFontFamily = QStringLiteral("Lucida Grande");

// What a screen reader says for a day cell ("Sunday, November 22, 2026") and how many entries it
// holds.
inline const QString AccessibleDayFormat = QStringLiteral("%A, %B %e, %Y");
inline const QString AccessibleEntryCount = QStringLiteral("%1 entries");
inline const QString AccessibleTitle = QStringLiteral("Month shown");
inline const QString AccessiblePreviousMonth = QStringLiteral("Previous month");
inline const QString AccessibleNextMonth = QStringLiteral("Next month");
inline const QString AccessiblePreviousWeek = QStringLiteral("Previous week");
inline const QString AccessibleNextWeek = QStringLiteral("Next week");
inline const QString AccessibleToday = QStringLiteral("Go to today");

} // namespace CalendarTexts
