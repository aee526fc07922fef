// What a student types into a date field.

#include "DateTextTestPrinters.h"
#include "platform/DateText.h"
#include "support/TestEnvironment.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

const QString LongFormat = QStringLiteral("%A, %B %e, %Y");
const QString ShortFormat = QStringLiteral("%a, %b %e, %Y");
const QString NumericFormat = QStringLiteral("%m/%d/%y");

// The day read, or an invalid date when nothing was read; checks that every answer is a local midnight.
QDate read(const char *text, const QString &format = LongFormat, QDateTime now = TestEnvironment::pinnedNow())
{
    const auto moment = DateText::parseNatural(QString::fromUtf8(text), format, now);
    if (!moment)
        return {};
    EXPECT_EQ(moment->timeSpec(), Qt::LocalTime) << text;
    EXPECT_EQ(moment->time(), QTime(0, 0)) << text;
    return moment->date();
}

} // namespace

TEST(DateTextNatural, RelativeWords)
{
    // The pinned now is Sunday 22 November 2026, 10:30.
    EXPECT_EQ(read("today"), QDate(2026, 11, 22));
    EXPECT_EQ(read("  TODAY \t"), QDate(2026, 11, 22));
    EXPECT_EQ(read("Now"), QDate(2026, 11, 22));
    EXPECT_EQ(read("tomorrow"), QDate(2026, 11, 23));
    EXPECT_EQ(read("Yesterday"), QDate(2026, 11, 21));
    EXPECT_EQ(read("tomorrow", LongFormat, QDateTime(QDate(2008, 12, 31), QTime(23, 59))), QDate(2009, 1, 1));
    EXPECT_EQ(read("yesterday", LongFormat, QDateTime(QDate(2008, 3, 1), QTime(0, 0))), QDate(2008, 2, 29));
}

TEST(DateTextNatural, WeekdayNames)
{
    EXPECT_EQ(read("sunday"), QDate(2026, 11, 22)); // today is Sunday
    EXPECT_EQ(read("Monday"), QDate(2026, 11, 23));
    EXPECT_EQ(read("mon"), QDate(2026, 11, 23));
    EXPECT_EQ(read("SAT"), QDate(2026, 11, 28));
    EXPECT_EQ(read("tues"), QDate(2026, 11, 24));
    EXPECT_EQ(read("thurs"), QDate(2026, 11, 26));
    EXPECT_EQ(read("this friday"), QDate(2026, 11, 27));
    EXPECT_EQ(read("next sunday"), QDate(2026, 11, 29));
    EXPECT_EQ(read("next  Monday"), QDate(2026, 11, 23));
    EXPECT_EQ(read("next sat"), QDate(2026, 11, 28));
    EXPECT_EQ(read("last sunday"), QDate(2026, 11, 15));
    EXPECT_EQ(read("last saturday"), QDate(2026, 11, 21));
    // Across a month and a year end.
    EXPECT_EQ(read("friday", LongFormat, QDateTime(QDate(2008, 12, 30), QTime(12, 0))), QDate(2009, 1, 2));
    for (const char *text : {"next", "last", "mondays", "monday monday", "next week", "mo"})
        EXPECT_FALSE(read(text).isValid()) << text;
}

TEST(DateTextNatural, MonthDayYearWithSlashesDashesAndBlanks)
{
    EXPECT_EQ(read("3/5/2008"), QDate(2008, 3, 5));
    EXPECT_EQ(read("03/05/08"), QDate(2008, 3, 5));
    EXPECT_EQ(read("3-1-2008"), QDate(2008, 3, 1));
    EXPECT_EQ(read("3 01 2008"), QDate(2008, 3, 1));
    EXPECT_EQ(read("12 31 2008"), QDate(2008, 12, 31));
    EXPECT_EQ(read(" 3/5/2008\t"), QDate(2008, 3, 5));
    EXPECT_EQ(read("3/5"), QDate(2026, 3, 5));
    EXPECT_EQ(read("12-25"), QDate(2026, 12, 25));
    EXPECT_EQ(read("2/29", LongFormat, QDateTime(QDate(2028, 1, 10), QTime(9, 0))), QDate(2028, 2, 29));
    EXPECT_FALSE(read("2/29").isValid()); // 2026 is no leap year
}

TEST(DateTextNatural, TwoDigitYears)
{
    EXPECT_EQ(read("1/1/00"), QDate(2000, 1, 1));
    EXPECT_EQ(read("1/1/69"), QDate(2069, 1, 1));
    EXPECT_EQ(read("1/1/70"), QDate(1970, 1, 1));
    EXPECT_EQ(read("1/1/99"), QDate(1999, 1, 1));
    EXPECT_EQ(read("1/1/5"), QDate(2005, 1, 1));
    EXPECT_EQ(read("Jan 1 99"), QDate(1999, 1, 1));
    EXPECT_EQ(read("12/31/99", NumericFormat), QDate(1999, 12, 31));
}

TEST(DateTextNatural, MonthNames)
{
    EXPECT_EQ(read("Mar/ 5/2008"), QDate(2008, 3, 5)); // the pull-down menus
    EXPECT_EQ(read("Dec/31/2009"), QDate(2009, 12, 31));
    EXPECT_EQ(read("March/ 5/2008"), QDate(2008, 3, 5));
    EXPECT_EQ(read("March 5, 2008"), QDate(2008, 3, 5));
    EXPECT_EQ(read("Mar 5 2008"), QDate(2008, 3, 5));
    EXPECT_EQ(read("mar. 5, 2008"), QDate(2008, 3, 5));
    EXPECT_EQ(read("5 March 2008"), QDate(2008, 3, 5));
    EXPECT_EQ(read("5 mar"), QDate(2026, 3, 5));
    EXPECT_EQ(read("March 5th"), QDate(2026, 3, 5));
    EXPECT_EQ(read("5th of March, 2008"), QDate(2008, 3, 5));
    EXPECT_EQ(read("Sept 9, 2008"), QDate(2008, 9, 9));
    EXPECT_EQ(read("MAY 31 2008"), QDate(2008, 5, 31));
    EXPECT_EQ(read("Thursday, May 1, 2008", ShortFormat), QDate(2008, 5, 1));
    EXPECT_EQ(read("Sun Nov 22 2026"), QDate(2026, 11, 22));
}

TEST(DateTextNatural, IsoAndStoredForms)
{
    EXPECT_EQ(read("2008-03-05"), QDate(2008, 3, 5));
    EXPECT_EQ(read("2008/3/5"), QDate(2008, 3, 5));
    EXPECT_EQ(read("20080305"), QDate(2008, 3, 5));
    EXPECT_EQ(read("2008-03-05 00:00:00 -0400"), QDate(2008, 3, 5));
    // The stored form's own day, whatever offset it was written with.
    EXPECT_EQ(read("2006-09-14 23:00:00 +0900"), QDate(2006, 9, 14));
    EXPECT_EQ(read("2006-09-14 00:00:00 +0000", NumericFormat), QDate(2006, 9, 14));
}

TEST(DateTextNatural, NoSuchDay)
{
    for (const char *text :
        {"", "   ", "hello", "2/30/2008", "13/1/2008", "0/1/2008", "1/0/2008", "2/29/2007", "4/31/2008", "4 31 2008",
            "Feb 30, 2008", "32 March", "Mar 2008", "March", "2008", "3/5/208", "3/5/20080", "2008-13-01", "2008-02-30",
            "3/5/2008 extra", "3:5:2008", "1/2/3/4", "Monday March", "March 5, 2008 Monday", "5 5 March",
            "2006-09-14 00:00:00 -04:00x", "3/5/2008!", "３/５/2008", "00000000", "5th", "3rd/5/2008"})
        EXPECT_FALSE(read(text).isValid()) << text;
    EXPECT_FALSE(DateText::parseNatural(QString(300, u'1'), LongFormat, TestEnvironment::pinnedNow()));
}

TEST(DateTextNatural, TheOfferedDisplayFormatsAreReadBack)
{
    for (const QString &format : {LongFormat, ShortFormat, NumericFormat, QStringLiteral("%d.%m.%Y")}) {
        EXPECT_EQ(read("Wednesday, March  5, 2008", format), QDate(2008, 3, 5)) << format.toStdString();
        EXPECT_EQ(read("wed, mar 5, 2008", format), QDate(2008, 3, 5)) << format.toStdString();
        EXPECT_EQ(read("03/05/08", format), QDate(2008, 3, 5)) << format.toStdString();
    }
    // A weekday that does not fit the date is overlooked in favour of the date.
    EXPECT_EQ(read("Monday, March 5, 2008"), QDate(2008, 3, 5));
    EXPECT_EQ(read("Fri, Feb 29, 2008", ShortFormat), QDate(2008, 2, 29));
    EXPECT_FALSE(read("Friday, February 30, 2008").isValid());
    EXPECT_FALSE(read("Someday, March 5, 2008").isValid());
}

TEST(DateTextNatural, CustomFormatsWinOverTheUsualReading)
{
    // Day first: the student sees 05/03/2008 for 5 March and must get 5 March back.
    EXPECT_EQ(read("05/03/2008", QStringLiteral("%d/%m/%Y")), QDate(2008, 3, 5));
    EXPECT_EQ(read("05/03/2008"), QDate(2008, 5, 3));
    EXPECT_EQ(read("13/03/2008", QStringLiteral("%d/%m/%Y")), QDate(2008, 3, 13));
    EXPECT_EQ(read("05.03.2008", QStringLiteral("%d.%m.%Y")), QDate(2008, 3, 5));
    EXPECT_EQ(read("20080305", QStringLiteral("%Y%m%d")), QDate(2008, 3, 5));
    EXPECT_EQ(read("065/2008", QStringLiteral("%j/%Y")), QDate(2008, 3, 5));
    EXPECT_EQ(read("366/2008", QStringLiteral("%j/%Y")), QDate(2008, 12, 31));
    EXPECT_FALSE(read("366/2007", QStringLiteral("%j/%Y")).isValid());
    EXPECT_EQ(read("March  5", QStringLiteral("%B %e")), QDate(2026, 3, 5));
    EXPECT_EQ(read("03/05/2008 02:07 pm", QStringLiteral("%m/%d/%Y %I:%M %p")), QDate(2008, 3, 5));
    EXPECT_FALSE(read("03/05/2008 13:07 pm", QStringLiteral("%m/%d/%Y %I:%M %p")).isValid());
    EXPECT_EQ(read("2008-03-05 14:07:09 -0500 EST", QStringLiteral("%Y-%m-%d %H:%M:%S %z %Z")), QDate(2008, 3, 5));
    EXPECT_EQ(read("Due 5 (Mar) 100% 2008", QStringLiteral("Due %e (%b) 100%% %Y")), QDate(2008, 3, 5));
    EXPECT_EQ(read("week %U: 5 Mar 2008 %", QStringLiteral("week %U: %e %b %Y %")), QDate(2008, 3, 5));
    EXPECT_EQ(DateText::parseWithFormat(QStringLiteral("UTC-04:00/05/03"), QStringLiteral("%Z/%d/%m"), 2011),
        QDate(2011, 3, 5));
    EXPECT_FALSE(DateText::parseWithFormat(QStringLiteral("14:00"), QStringLiteral("%H:%M"), 2011));
}

TEST(DateTextNatural, MidnightOnDaylightSavingDays)
{
    const auto spring = DateText::parseNatural(QStringLiteral("3/9/2008"), LongFormat, TestEnvironment::pinnedNow());
    ASSERT_TRUE(spring);
    EXPECT_EQ(DateText::toStoredForm(*spring), QStringLiteral("2008-03-09 00:00:00 -0500"));
    const auto autumn = DateText::parseNatural(QStringLiteral("11/2/2008"), LongFormat, TestEnvironment::pinnedNow());
    ASSERT_TRUE(autumn);
    EXPECT_EQ(DateText::toStoredForm(*autumn), QStringLiteral("2008-11-02 00:00:00 -0400"));
    EXPECT_EQ(autumn->secsTo(autumn->addDays(1)), 25 * 3600);
}

TEST(DateTextNatural, FormattedDaysReadBackOverManyDays)
{
    // Fifteen months from December 2027: both clock changes, a leap day and two year ends. The time of day
    // written is dropped on reading.
    const QStringList formats = {LongFormat, ShortFormat, NumericFormat, QStringLiteral("%d.%m.%Y"),
        QStringLiteral("%b/%e/%Y %I%p"), QString::fromLatin1(DateText::StoredFormat), QStringLiteral("%a %j %Y")};
    QDateTime moment(QDate(2027, 12, 1), QTime(17, 45));
    for (int i = 0; i < 460; ++i, moment = moment.addDays(1)) {
        for (const QString &format : formats) {
            const QString text = DateText::format(moment, format);
            const auto back = DateText::parseNatural(text, format, TestEnvironment::pinnedNow());
            ASSERT_TRUE(back) << text.toStdString() << " with " << format.toStdString();
            EXPECT_EQ(back->date(), moment.date()) << text.toStdString();
            EXPECT_EQ(back->time(), QTime(0, 0)) << text.toStdString();
            // The three offered formats are understood whichever one is chosen.
            if (i % 7 == 0 && (format == LongFormat || format == ShortFormat || format == NumericFormat)) {
                EXPECT_EQ(read(text.toUtf8().constData(), LongFormat), moment.date()) << text.toStdString();
                EXPECT_EQ(read(text.toUtf8().constData(), NumericFormat), moment.date()) << text.toStdString();
            }
        }
    }
}

TEST(DateTextNatural, MidnightThatTheClockSkips)
{
    // In São Paulo the clocks jumped from 00:00 to 01:00 on 4 November 2018: that day starts at 01:00.
    const QByteArray before = qgetenv("TZ");
    qputenv("TZ", "America/Sao_Paulo");
    tzset();
    const auto day = DateText::parseNatural(QStringLiteral("11/4/2018"), LongFormat, TestEnvironment::pinnedNow());
    const qint64 seconds = day ? day->toSecsSinceEpoch() : 0;
    const QString written = day ? DateText::toStoredForm(*day) : QString();
    qputenv("TZ", before);
    tzset();
    ASSERT_TRUE(day);
    EXPECT_EQ(seconds, QDateTime(QDate(2018, 11, 4), QTime(3, 0), Qt::UTC).toSecsSinceEpoch());
    EXPECT_EQ(written, QStringLiteral("2018-11-04 01:00:00 -0200"));
}
