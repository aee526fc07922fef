#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

// Dates as the program writes, shows and reads them.
namespace DateText {

// The stored form of due dates, "Date Updated" and project identifiers: "%Y-%m-%d %H:%M:%S %z",
// for example "2006-09-14 00:00:00 -0400".
inline constexpr auto StoredFormat = "%Y-%m-%d %H:%M:%S %z";

// The moment in the local time zone, in the stored form.
QString toStoredForm(const QDateTime &moment);
// Clock::now() in the stored form.
QString nowStoredForm();
// Reads the stored form back exactly (the offset is honoured). nullopt when the text is not in
// that form.
std::optional<QDateTime> fromStoredForm(const QString &text);
// The year, month and day as written in a stored form, whatever its offset (what a calendar file takes
// as the day of an assignment). nullopt when the text is not in that form.
std::optional<QDate> storedDay(const QString &text);

// Formats with the "%"-style directives the program uses anywhere:
//   %A %a  weekday name, full / abbreviated (English)      %B %b  month name, full / abbreviated
//   %d     day of month, 01-31                              %e     day of month, space padded " 1"-"31"
//   %m     month 01-12     %y  year 00-99     %Y  year      %H     hour 00-23   %I  hour 01-12
//   %M     minute 00-59    %S  second 00-59   %p  AM / PM   %j     day of year 001-366
//   %z     offset "-0400"  %Z  zone abbreviation             %%     a percent sign
// Any other "%x" is written as it stands, and so is a lone "%" at the end. The moment is written in its
// own time zone or offset (the program's dates are local). An invalid moment gives an empty text.
QString format(const QDateTime &moment, const QString &percentFormat);

// Reads back a day written with `percentFormat` (the same directives as format(); a weekday name in the
// text is checked to be one and otherwise ignored, times and zones are checked and dropped). A format
// without a year reads as `currentYear`. nullopt when the text does not fit or names no real day.
std::optional<QDate> parseWithFormat(const QString &text, const QString &percentFormat, int currentYear);

// Reads what a student types into a date field. See DateText.cpp for the accepted forms; the
// result is the local midnight of the day meant, or nullopt when the text names no date.
// `displayFormat` is the user's "Date Format", whose own output is always read back.
// `now` anchors relative words (today, tomorrow, weekday names) and gives the year when none is typed.
// A day that does not exist never rolls over into the next month: "4 31 2008" and "2/30" are nullopt.
// Where the clocks skip midnight the result is the first moment of that day.
std::optional<QDateTime> parseNatural(const QString &text, const QString &displayFormat, const QDateTime &now);

} // namespace DateText
