// Dates as the program writes, shows and reads them.
//
// What a student may type into a date field (parseNatural). Case never matters, blanks around the text are
// ignored, and the answer is always the local midnight of the day meant:
//
//   today, tomorrow, yesterday, now          relative to the `now` handed in
//   monday ... sunday, mon ... sun            the coming such day: today when today is that day
//     (also tues, thur, thurs, weds)
//   this monday                               the same as a bare "monday"
//   next monday                               the first Monday after today (a week ahead when today is Monday)
//   last monday                               the last Monday before today
//   anything the display format writes       read back with that format, whatever it is ("%A, %B %e, %Y",
//                                             "%a, %b %e, %Y", "%m/%d/%y" or a custom one); the weekday name
//                                             in such a text is accepted and ignored in favour of the date
//   the three offered display formats        always, even when another format is chosen
//   3/5/2008  03/05/08  3-5-2008  3 05 2008   month, day, year; two-digit years 00-69 are 2000-2069,
//                                             70-99 are 1970-1999
//   3/5  3-5                                  month and day of the current year
//   Mar/ 5/2008                               what the month, day and year pull-down menus put together
//   March 5, 2008  Mar 5 2008  March 5th      month name (full, three letters, or "Sept") then day [then year]
//   5 March 2008  5th of March                day then month name [then year]
//   Wednesday, March 5, 2008                 a leading weekday name is ignored in favour of the date
//   2008-03-05  2008/03/05  20080305          year, month, day
//   2008-03-05 00:00:00 -0400                 the stored form: the day as written, whatever its offset
//
// Anything else, and any day that does not exist (February 30, month 13), reads as no date. Every reader
// here walks the text once without backtracking, so no input can make it slow, and nothing depends on the
// locale: month and weekday names are English, digits are ASCII.

#include "platform/DateText.h"

#include "platform/Clock.h"
#include "platform/DateTextParsing.h"

namespace DateText {

using DateTextParsing::digitValue;
using DateTextParsing::isAsciiDigit;
using DateTextParsing::MonthNames;
using DateTextParsing::WeekdayNames;

namespace {

// Anything longer than this is not a date someone typed; refusing it keeps every reader cheap.
constexpr qsizetype MaximumInputLength = 200;

// Days since 1970-01-01 of a proleptic Gregorian date (Howard Hinnant's days_from_civil).
qint64 daysFromCivil(int year, int month, int day)
{
    year -= month <= 2 ? 1 : 0;
    const qint64 era = (year >= 0 ? year : year - 399) / 400;
    const int yearOfEra = int(year - era * 400);
    const int dayOfYear = (153 * (month + (month > 2 ? -3 : 9)) + 2) / 5 + day - 1;
    const int dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

bool isLeapYear(int year)
{
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

int daysInMonth(int year, int month)
{
    static constexpr int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return month == 2 && isLeapYear(year) ? 29 : lengths[month - 1];
}

std::optional<QDateTime> localMidnight(int year, int month, int day)
{
    const QDate date(year, month, day);
    if (!date.isValid())
        return std::nullopt;
    // startOfDay copes with zones whose clocks skip midnight on the day they change.
    QDateTime midnight = date.startOfDay();
    if (!midnight.isValid())
        return std::nullopt;
    return midnight;
}

// ---- The stored form ---------------------------------------------------------------------------------------

struct StoredFields {
    int year, month, day, hour, minute, second, offsetSeconds;
};

// "YYYY-MM-DD HH:MM:SS +HHMM", exactly 25 characters. Read by hand because it runs for every record on
// every sort and redraw.
bool readStoredFields(QStringView text, StoredFields &fields)
{
    if (text.size() != 25)
        return false;
    const QChar *c = text.data();
    auto two = [c](int at, int &value) {
        if (!isAsciiDigit(c[at]) || !isAsciiDigit(c[at + 1]))
            return false;
        value = digitValue(c[at]) * 10 + digitValue(c[at + 1]);
        return true;
    };
    int century = 0, yearInCentury = 0, offsetHours = 0, offsetMinutes = 0;
    if (!two(0, century) || !two(2, yearInCentury) || c[4] != u'-' || !two(5, fields.month) || c[7] != u'-'
        || !two(8, fields.day) || c[10] != u' ' || !two(11, fields.hour) || c[13] != u':' || !two(14, fields.minute)
        || c[16] != u':' || !two(17, fields.second) || c[19] != u' ' || (c[20] != u'+' && c[20] != u'-')
        || !two(21, offsetHours) || !two(23, offsetMinutes))
        return false;
    fields.year = century * 100 + yearInCentury;
    if (fields.year < 1 || fields.month < 1 || fields.month > 12 || fields.day < 1
        || fields.day > daysInMonth(fields.year, fields.month) || fields.hour > 23 || fields.minute > 59
        || fields.second > 59 || offsetHours > 23 || offsetMinutes > 59)
        return false;
    fields.offsetSeconds = (offsetHours * 3600 + offsetMinutes * 60) * (c[20] == u'-' ? -1 : 1);
    return true;
}

// Appends `value` with at least `width` digits, padded with `pad`.
void appendNumber(QString &out, qint64 value, int width, QChar pad = u'0')
{
    char16_t buffer[24];
    int length = 0;
    const bool negative = value < 0;
    quint64 magnitude = negative ? quint64(0) - quint64(value) : quint64(value);
    do {
        buffer[length++] = char16_t(u'0' + magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    if (negative)
        out += u'-';
    for (int i = length; i < width; ++i)
        out += pad;
    while (length > 0)
        out += QChar(buffer[--length]);
}

void appendOffset(QString &out, int offsetSeconds)
{
    out += offsetSeconds < 0 ? u'-' : u'+';
    const int magnitude = offsetSeconds < 0 ? -offsetSeconds : offsetSeconds;
    appendNumber(out, magnitude / 3600, 2);
    appendNumber(out, magnitude % 3600 / 60, 2);
}

} // namespace

QString toStoredForm(const QDateTime &moment)
{
    if (!moment.isValid())
        return {};
    QDateTime local = moment.toLocalTime();
    int offset = local.offsetFromUtc();
    if (offset % 60 != 0) {
        // Local mean time before the zones (New York was 4:56:02 behind) has seconds the form cannot
        // hold; writing the clock of the whole-minute offset keeps the instant exact.
        offset = offset / 60 * 60;
        local = moment.toOffsetFromUtc(offset);
    }
    const QDate date = local.date();
    const QTime time = local.time();
    QString out;
    out.reserve(25);
    appendNumber(out, date.year(), 4);
    out += u'-';
    appendNumber(out, date.month(), 2);
    out += u'-';
    appendNumber(out, date.day(), 2);
    out += u' ';
    appendNumber(out, time.hour(), 2);
    out += u':';
    appendNumber(out, time.minute(), 2);
    out += u':';
    appendNumber(out, time.second(), 2);
    out += u' ';
    appendOffset(out, offset);
    return out;
}

QString nowStoredForm()
{
    return toStoredForm(Clock::now());
}

std::optional<QDateTime> fromStoredForm(const QString &text)
{
    StoredFields f;
    if (!readStoredFields(text, f))
        return std::nullopt;
    const qint64 seconds
        = daysFromCivil(f.year, f.month, f.day) * 86400 + f.hour * 3600 + f.minute * 60 + f.second - f.offsetSeconds;
    QDateTime moment = QDateTime::fromSecsSinceEpoch(seconds, Qt::LocalTime);
    if (!moment.isValid())
        return std::nullopt;
    return moment;
}

std::optional<QDate> storedDay(const QString &text)
{
    StoredFields f;
    if (!readStoredFields(text, f))
        return std::nullopt;
    return QDate(f.year, f.month, f.day);
}

QString format(const QDateTime &moment, const QString &percentFormat)
{
    if (!moment.isValid())
        return {};
    const QDate date = moment.date();
    const QTime time = moment.time();
    QString out;
    out.reserve(percentFormat.size() + 16);
    const qsizetype size = percentFormat.size();
    for (qsizetype i = 0; i < size; ++i) {
        const QChar c = percentFormat[i];
        if (c != u'%' || i + 1 == size) {
            out += c;
            continue;
        }
        const QChar directive = percentFormat[++i];
        switch (directive.unicode()) {
        case 'A':
            out += WeekdayNames[date.dayOfWeek() - 1];
            break;
        case 'a':
            out += WeekdayNames[date.dayOfWeek() - 1].left(3);
            break;
        case 'B':
            out += MonthNames[date.month() - 1];
            break;
        case 'b':
            out += MonthNames[date.month() - 1].left(3);
            break;
        case 'd':
            appendNumber(out, date.day(), 2);
            break;
        case 'e':
            appendNumber(out, date.day(), 2, u' ');
            break;
        case 'm':
            appendNumber(out, date.month(), 2);
            break;
        case 'y':
            appendNumber(out, (date.year() % 100 + 100) % 100, 2);
            break;
        case 'Y':
            appendNumber(out, date.year(), 4);
            break;
        case 'H':
            appendNumber(out, time.hour(), 2);
            break;
        case 'I':
            appendNumber(out, time.hour() % 12 == 0 ? 12 : time.hour() % 12, 2);
            break;
        case 'M':
            appendNumber(out, time.minute(), 2);
            break;
        case 'S':
            appendNumber(out, time.second(), 2);
            break;
        case 'p':
            out += time.hour() < 12 ? QLatin1String("AM") : QLatin1String("PM");
            break;
        case 'j':
            appendNumber(out, date.dayOfYear(), 3);
            break;
        case 'z':
            appendOffset(out, moment.offsetFromUtc());
            break;
        case 'Z':
            out += moment.timeZoneAbbreviation();
            break;
        case '%':
            out += u'%';
            break;
        default:
            out += c;
            out += directive;
            break;
        }
    }
    return out;
}

std::optional<QDate> parseWithFormat(const QString &text, const QString &percentFormat, int currentYear)
{
    const QStringView trimmed = QStringView(text).trimmed();
    if (trimmed.isEmpty() || trimmed.size() > MaximumInputLength)
        return std::nullopt;
    return DateTextParsing::withFormat(trimmed, percentFormat, currentYear);
}

std::optional<QDateTime> parseNatural(const QString &text, const QString &displayFormat, const QDateTime &now)
{
    const QStringView trimmed = QStringView(text).trimmed();
    if (trimmed.isEmpty() || trimmed.size() > MaximumInputLength)
        return std::nullopt;
    const QDate today = (now.isValid() ? now : Clock::now()).toLocalTime().date();
    const int currentYear = today.year();

    auto midnightOf = [](const std::optional<QDate> &day) -> std::optional<QDateTime> {
        if (!day)
            return std::nullopt;
        return localMidnight(day->year(), day->month(), day->day());
    };

    if (auto day = DateTextParsing::relative(trimmed.toString().simplified().toLower(), today))
        return midnightOf(day);
    if (!displayFormat.isEmpty()) {
        if (auto day = DateTextParsing::withFormat(trimmed, displayFormat, currentYear))
            return midnightOf(day);
    }
    for (QStringView offered : DateTextParsing::OfferedFormats) {
        if (displayFormat == offered)
            continue;
        if (auto day = DateTextParsing::withFormat(trimmed, offered, currentYear))
            return midnightOf(day);
    }
    StoredFields stored;
    if (readStoredFields(trimmed, stored))
        return localMidnight(stored.year, stored.month, stored.day);
    return midnightOf(DateTextParsing::freeForm(trimmed, currentYear));
}

} // namespace DateText