// The stored form and format(): what goes into the files and what the list shows.

#include "DateTextTestPrinters.h"
#include "platform/Clock.h"
#include "platform/DateText.h"

#include <QLocale>
#include <gtest/gtest.h>

namespace {

QDateTime local(int y, int m, int d, int h = 0, int min = 0, int s = 0)
{
    return QDateTime(QDate(y, m, d), QTime(h, min, s));
}

QString stored(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

TEST(DateTextStoredForm, WritesLocalTimeWithTheOffsetOfThatDay)
{
    EXPECT_EQ(DateText::toStoredForm(local(2006, 9, 14)), stored("2006-09-14 00:00:00 -0400"));
    EXPECT_EQ(DateText::toStoredForm(local(2006, 12, 14, 23, 5, 9)), stored("2006-12-14 23:05:09 -0500"));
    // A moment given in UTC or another offset is written as the local clock showed it.
    EXPECT_EQ(DateText::toStoredForm(QDateTime(QDate(2006, 9, 14), QTime(4, 0), Qt::UTC)),
        stored("2006-09-14 00:00:00 -0400"));
    EXPECT_EQ(DateText::toStoredForm(QDateTime(QDate(2007, 1, 1), QTime(3, 0), Qt::OffsetFromUTC, 3600)),
        stored("2006-12-31 21:00:00 -0500"));
    EXPECT_EQ(DateText::toStoredForm(local(1969, 7, 20, 20, 17, 40)), stored("1969-07-20 20:17:40 -0400"));
    EXPECT_EQ(DateText::toStoredForm(QDateTime()), QString());
}

TEST(DateTextStoredForm, ReadsBackTheSameInstant)
{
    for (const QDateTime &moment :
        {local(2006, 9, 14), local(2006, 12, 14, 23, 5, 9), local(2008, 2, 29, 12), local(1969, 7, 20, 20, 17, 40),
            local(1900, 1, 1), local(9999, 12, 31, 23, 59, 59), local(2026, 11, 22, 10, 30)}) {
        const QString text = DateText::toStoredForm(moment);
        const auto back = DateText::fromStoredForm(text);
        ASSERT_TRUE(back) << text.toStdString();
        EXPECT_EQ(*back, moment) << text.toStdString();
        EXPECT_EQ(back->timeSpec(), Qt::LocalTime);
        EXPECT_EQ(DateText::toStoredForm(*back), text);
    }
}

TEST(DateTextStoredForm, LocalMeanTimeBeforeTheZonesStillReadsBackExactly)
{
    // Until 1883 New York kept its own mean time, 4:56:02 behind; the form holds whole minutes only.
    const QDateTime noon = local(1850, 6, 1, 12);
    ASSERT_NE(noon.offsetFromUtc() % 60, 0) << "the zone data has no local mean time here";
    const QString text = DateText::toStoredForm(noon);
    EXPECT_EQ(text.size(), 25) << text.toStdString();
    const auto back = DateText::fromStoredForm(text);
    ASSERT_TRUE(back) << text.toStdString();
    EXPECT_EQ(*back, noon) << text.toStdString();
}

TEST(DateTextStoredForm, HonoursTheOffsetWritten)
{
    // Files written elsewhere or by older versions may carry any offset; the instant is what counts.
    const auto utc = DateText::fromStoredForm(stored("2006-09-14 00:00:00 +0000"));
    ASSERT_TRUE(utc);
    EXPECT_EQ(*utc, QDateTime(QDate(2006, 9, 14), QTime(0, 0), Qt::UTC));
    EXPECT_EQ(utc->date(), QDate(2006, 9, 13));
    EXPECT_EQ(utc->time(), QTime(20, 0));

    // The same wall-clock text in winter time on a summer day is an hour later here.
    const auto winter = DateText::fromStoredForm(stored("2006-09-14 00:00:00 -0500"));
    ASSERT_TRUE(winter);
    EXPECT_EQ(*winter, local(2006, 9, 14, 1));
    EXPECT_EQ(DateText::toStoredForm(*winter), stored("2006-09-14 01:00:00 -0400"));

    const auto india = DateText::fromStoredForm(stored("2006-09-14 10:00:00 +0530"));
    ASSERT_TRUE(india);
    EXPECT_EQ(*india, QDateTime(QDate(2006, 9, 14), QTime(4, 30), Qt::UTC));
    const auto minusZero = DateText::fromStoredForm(stored("2006-09-14 04:00:00 -0000"));
    ASSERT_TRUE(minusZero);
    EXPECT_EQ(*minusZero, local(2006, 9, 14));
}

TEST(DateTextStoredForm, RejectsAnythingElse)
{
    for (const char *text : {"", " ", "2006-09-14", "2006-09-14 00:00:00", "2006-09-14 00:00:00 -04:00",
             "2006-9-14 00:00:00 -0400", "2006-09-4 00:00:00 -0400", "2006-09-14 0:00:00 -0400",
             "06-09-14 00:00:00 -0400", "2006/09/14 00:00:00 -0400", "2006-09-14T00:00:00 -0400",
             "2006-09-14 00:00:00 0400", "2006-09-14 00:00:00 -0400 ", " 2006-09-14 00:00:00 -0400",
             "2006-13-14 00:00:00 -0400", "2006-00-14 00:00:00 -0400", "2006-09-31 00:00:00 -0400",
             "2007-02-29 00:00:00 -0500", "1900-02-29 00:00:00 -0500", "2006-09-00 00:00:00 -0400",
             "2006-09-14 24:00:00 -0400", "2006-09-14 00:60:00 -0400", "2006-09-14 00:00:60 -0400",
             "2006-09-14 00:00:00 -2400", "2006-09-14 00:00:00 -0460", "0000-01-01 00:00:00 +0000",
             "2006-09-14 00:00:00 EDT00", "２００６-09-14 00:00:00 -0400", "2006-09-14 00:00:0x -0400"})
        EXPECT_FALSE(DateText::fromStoredForm(QString::fromUtf8(text))) << text;
    // Arabic-Indic digits are digits to Unicode but not to a file format.
    QString arabic = stored("2006-09-14 00:00:00 -0400");
    arabic[0] = QChar(0x0662);
    EXPECT_FALSE(DateText::fromStoredForm(arabic));
}

TEST(DateTextStoredForm, LeapDaysAndTheDayAsWritten)
{
    EXPECT_TRUE(DateText::fromStoredForm(stored("2000-02-29 00:00:00 -0500")));
    EXPECT_EQ(DateText::storedDay(stored("2006-09-14 23:00:00 +0900")), QDate(2006, 9, 14));
    EXPECT_FALSE(DateText::storedDay(stored("2006-09-14")));
}

TEST(DateTextStoredForm, TheRepeatedHourAndTheSkippedHour)
{
    // 01:30 happened twice on 2 November 2008; the offset tells the two apart.
    const auto first = DateText::fromStoredForm(stored("2008-11-02 01:30:00 -0400"));
    const auto second = DateText::fromStoredForm(stored("2008-11-02 01:30:00 -0500"));
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->secsTo(*second), 3600);
    EXPECT_EQ(DateText::toStoredForm(*first), stored("2008-11-02 01:30:00 -0400"));
    EXPECT_EQ(DateText::toStoredForm(*second), stored("2008-11-02 01:30:00 -0500"));

    // 02:30 never happened on 9 March 2008; written with the old offset it is 03:30 new time.
    const auto skipped = DateText::fromStoredForm(stored("2008-03-09 02:30:00 -0500"));
    ASSERT_TRUE(skipped);
    EXPECT_EQ(DateText::toStoredForm(*skipped), stored("2008-03-09 03:30:00 -0400"));
}

TEST(DateTextFormat, EveryDirective)
{
    // Wednesday 5 March 2008 (a leap year, so day 65), winter time.
    const QDateTime afternoon = local(2008, 3, 5, 14, 7, 9);
    EXPECT_EQ(DateText::format(afternoon, stored("%A|%a|%B|%b|%d|%e|%m|%y|%Y|%H|%I|%M|%S|%p|%j|%z|%Z|%%")),
        stored("Wednesday|Wed|March|Mar|05| 5|03|08|2008|14|02|07|09|PM|065|-0500|EST|%"));
    const QDateTime summer = local(2009, 7, 31, 0, 0, 0);
    EXPECT_EQ(DateText::format(summer, stored("%A %a %B %b %d %e %I %p %j %z %Z")),
        stored("Friday Fri July Jul 31 31 12 AM 212 -0400 EDT"));
    EXPECT_EQ(DateText::format(local(2008, 12, 31, 12), stored("%j %I %p %y")), stored("366 12 PM 08"));
    EXPECT_EQ(DateText::format(local(2000, 1, 1, 23), stored("%y %I%p %e")), stored("00 11PM  1"));
    EXPECT_EQ(
        DateText::format(QDateTime(QDate(2008, 3, 5), QTime(9, 0), Qt::UTC), stored("%H %z")), stored("09 +0000"));
    EXPECT_EQ(DateText::format(QDateTime(QDate(2008, 3, 5), QTime(9, 0), Qt::OffsetFromUTC, 19800), stored("%z")),
        stored("+0530"));
}

TEST(DateTextFormat, OtherTextStandsAsItIs)
{
    const QDateTime day = local(2008, 3, 5);
    EXPECT_EQ(DateText::format(day, stored("%q %Q %1 %")), stored("%q %Q %1 %"));
    EXPECT_EQ(DateText::format(day, stored("%%d %%%d 100%")), stored("%d %05 100%"));
    EXPECT_EQ(DateText::format(day, stored("Due: %e. %B — ½ ünd 日本")), stored("Due:  5. March — ½ ünd 日本"));
    EXPECT_EQ(DateText::format(day, QString()), QString());
    EXPECT_EQ(DateText::format(QDateTime(), stored("%Y")), QString());
}

TEST(DateTextFormat, NamesStayEnglishInAnyLocale)
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QDateTime day = local(2008, 3, 5);
    EXPECT_EQ(DateText::format(day, stored("%A %a %B %b")), stored("Wednesday Wed March Mar"));
    EXPECT_EQ(DateText::parseNatural(stored("March 5, 2008"), stored("%A, %B %e, %Y"), Clock::now()), day);
    EXPECT_FALSE(DateText::parseNatural(stored("5. März 2008"), stored("%A, %B %e, %Y"), Clock::now()));
    QLocale::setDefault(before);
}
