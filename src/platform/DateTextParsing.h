#pragma once

#include <QDate>
#include <QLatin1String>
#include <QString>
#include <QStringView>

#include <array>
#include <optional>

// The readers behind DateText's parsing functions, and the English names its writer shares with them.
// Only DateText uses this; everything else goes through DateText.h.
namespace DateTextParsing {

// Weekdays from Monday (QDate::dayOfWeek() - 1), months from January; the abbreviations are the first
// three letters. English whatever the locale, as the files and the pull-down menus expect.
inline constexpr std::array<QLatin1String, 7> WeekdayNames
    = {QLatin1String("Monday"), QLatin1String("Tuesday"), QLatin1String("Wednesday"), QLatin1String("Thursday"),
        QLatin1String("Friday"), QLatin1String("Saturday"), QLatin1String("Sunday")};
inline constexpr std::array<QLatin1String, 12> MonthNames
    = {QLatin1String("January"), QLatin1String("February"), QLatin1String("March"), QLatin1String("April"),
        QLatin1String("May"), QLatin1String("June"), QLatin1String("July"), QLatin1String("August"),
        QLatin1String("September"), QLatin1String("October"), QLatin1String("November"), QLatin1String("December")};

// The display formats the preferences offer; their output is read back whichever one is chosen.
inline constexpr std::array<QStringView, 3> OfferedFormats = {u"%A, %B %e, %Y", u"%a, %b %e, %Y", u"%m/%d/%y"};

// Digits in files and typed dates are ASCII only (Unicode has many other digits).
inline bool isAsciiDigit(QChar c)
{
    return c.unicode() >= '0' && c.unicode() <= '9';
}

inline int digitValue(QChar c)
{
    return c.unicode() - '0';
}

// A day written with a "%" format (the directives of DateText::format), read as the format says; times and
// zones are checked and dropped, a weekday name is checked to be one and ignored. No year: `currentYear`.
std::optional<QDate> withFormat(QStringView text, QStringView format, int currentYear);

// Numbers and month names in the usual orders: month/day[/year], day month [year], year-month-day.
std::optional<QDate> freeForm(QStringView text, int currentYear);

// today, tomorrow, yesterday, now and [this|next|last] weekday, from `today`. `words` is lower case and
// single-spaced.
std::optional<QDate> relative(const QString &words, const QDate &today);

} // namespace DateTextParsing
