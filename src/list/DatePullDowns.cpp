#include "list/DatePullDowns.h"

#include "list/ListTexts.h"
#include "platform/DateText.h"

namespace DatePullDowns {

namespace {
constexpr int MenuYear = 2005;
}

QStringList monthTitles()
{
    QStringList titles;
    for (int month = 1; month <= 12; ++month)
        titles.append(DateText::format(QDateTime(QDate(MenuYear, month, 1), QTime(0, 0)), ListTexts::MonthTitleFormat));
    return titles;
}

QStringList dayTitles(const QString &monthTitle)
{
    const int month = int(monthTitles().indexOf(monthTitle)) + 1;
    if (month < 1)
        return {};
    QStringList titles;
    const int days = QDate(MenuYear, month, 1).daysInMonth();
    for (int day = 1; day <= days; ++day)
        titles.append(DateText::format(QDateTime(QDate(MenuYear, month, day), QTime(0, 0)), ListTexts::DayTitleFormat));
    return titles;
}

QStringList yearTitles(int currentYear)
{
    QStringList titles;
    for (int year = currentYear - 6; year <= currentYear + 5; ++year)
        titles.append(QString::number(year));
    return titles;
}

QString reselectDay(const QString &monthTitle, const QString &rememberedDay)
{
    return dayTitles(monthTitle).contains(rememberedDay) ? rememberedDay : QString();
}

void titlesFor(const QDateTime &date, QString &month, QString &day, QString &year)
{
    month = DateText::format(date, ListTexts::MonthTitleFormat);
    day = DateText::format(date, ListTexts::DayTitleFormat);
    year = DateText::format(date, ListTexts::YearTitleFormat);
}

QString fieldText(const QString &month, const QString &day, const QString &year)
{
    return month + QLatin1Char('/') + day + QLatin1Char('/') + year;
}

} // namespace DatePullDowns
