#pragma once

#include "list/PresentationSettings.h"
#include "store/Assignment.h"

#include <QColor>
#include <QDate>
#include <QString>

#include <optional>

// What a cell of the assignment table shows and in which colour, just before it is drawn.
namespace CellPresentation {

// The record's due day in local time, or nullopt when it has no readable "Date".
std::optional<QDate> dueDay(const Assignment &record);

// Whole days from today (local midnight) to the due moment, the fraction dropped toward zero.
qint64 daysLeft(const QDateTime &due, const QDate &today);

// The title shown for a subproject: the format with every "%p" replaced by the parent's name, then
// every "%s" by the subproject's (so a "%s" in the project's name is replaced too).
QString subprojectTitle(const QString &format, const QString &projectName, const QString &subprojectName);

// Text of a "Date" or "Days Left" cell: the formatted due date or the days left; blank when
// duplicate dates are hidden and the row above (`previous`, null on the first row) is due the same
// day. The stored value (possibly none) when the record has no readable date.
QVariant dateCellText(const Assignment &record, const Assignment *previous, const PresentationSettings &settings);
QVariant daysLeftCellText(const Assignment &record, const Assignment *previous,
                          const PresentationSettings &settings);

// The text colour of a cell by the colour scheme; nullopt is the default text colour.
std::optional<QColor> textColor(const Assignment &record, const QString &column, bool selected,
                                const PresentationSettings &settings);

// The colour of the bands behind alternate due days.
QColor bandColor();

} // namespace CellPresentation
