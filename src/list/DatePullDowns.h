#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

// The month, day and year pull-down menus of a date editor (the sidebar's and the recurring sheet's).
namespace DatePullDowns {

// "%b" of the first day of each month of 2005: "Jan" ... "Dec".
QStringList monthTitles();
// The days of the month titled `monthTitle` in 2005, written "%e" (" 1" ... "31"). 2005 is not a
// leap year, so February always offers 28 days. Empty for an unknown title.
QStringList dayTitles(const QString &monthTitle);
// Twelve years, from six before the current year to five after it.
QStringList yearTitles(int currentYear);
// The day menu rebuilt for a month, with the remembered day title selected again when the new menu
// has it: returns the title that ends selected, or "" when none does.
QString reselectDay(const QString &monthTitle, const QString &rememberedDay);
// What the three menus show for a date: "%b", "%e", "%Y".
void titlesFor(const QDateTime &date, QString &month, QString &day, QString &year);
// The text the menus put into the date field: month, "/", day, "/", year.
QString fieldText(const QString &month, const QString &day, const QString &year);

} // namespace DatePullDowns
