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

#include <QStringView>

#include <array>

namespace DateText {

namespace {

constexpr std::array<QLatin1String, 7> WeekdayNames = {
    QLatin1String("Monday"), QLatin1String("Tuesday"), QLatin1String("Wednesday"), QLatin1String("Thursday"),
    QLatin1String("Friday"), QLatin1String("Saturday"), QLatin1String("Sunday")};
constexpr std::array<QLatin1String, 12> MonthNames = {
    QLatin1String("January"), QLatin1String("February"), QLatin1String("March"),     QLatin1String("April"),
    QLatin1String("May"),     QLatin1String("June"),     QLatin1String("July"),      QLatin1String("August"),
    QLatin1String("September"), QLatin1String("October"), QLatin1String("November"), QLatin1String("December")};

// Extra spellings people use besides the full name and its first three letters. The number is the
// weekday (1 Monday .. 7 Sunday) or the month (1 .. 12).
struct Alias {
    QLatin1String text;
    int number;
};
constexpr std::array<Alias, 5> WeekdayAliases = {Alias{QLatin1String("tues"), 2}, Alias{QLatin1String("weds"), 3},
                                                 Alias{QLatin1String("thur"), 4}, Alias{QLatin1String("thurs"), 4},
                                                 Alias{QLatin1String("tue"), 2}};
constexpr std::array<Alias, 1> MonthAliases = {Alias{QLatin1String("sept"), 9}};

// The display formats the preferences offer; their output is read back whichever one is chosen.
constexpr std::array<QStringView, 3> OfferedFormats = {u"%A, %B %e, %Y", u"%a, %b %e, %Y", u"%m/%d/%y"};

// Anything longer than this is not a date someone typed; refusing it keeps every reader cheap.
constexpr qsizetype MaximumInputLength = 200;

bool isAsciiDigit(QChar c)
{
    return c.unicode() >= '0' && c.unicode() <= '9';
}

int digitValue(QChar c)
{
    return c.unicode() - '0';
}

bool isAsciiLetter(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 'a' && u <= 'z') || (u >= 'A' && u <= 'Z');
}

QChar asciiLower(QChar c)
{
    const char16_t u = c.unicode();
    return (u >= 'A' && u <= 'Z') ? QChar(char16_t(u + ('a' - 'A'))) : c;
}

// Whether `text` holds `name` at `pos`, ignoring ASCII case.
bool startsWithAt(QStringView text, qsizetype pos, QLatin1String name)
{
    if (text.size() - pos < name.size())
        return false;
    for (qsizetype i = 0; i < name.size(); ++i) {
        if (asciiLower(text[pos + i]) != asciiLower(QChar(name[i])))
            return false;
    }
    return true;
}

// The longest weekday (1..7) or month (1..12) name at `pos`, full, abbreviated or aliased; advances `pos`.
template <std::size_t N, std::size_t A>
int matchName(QStringView text, qsizetype &pos, const std::array<QLatin1String, N> &names,
              const std::array<Alias, A> &aliases)
{
    int found = 0;
    qsizetype length = 0;
    auto consider = [&](QLatin1String candidate, int number) {
        if (candidate.size() > length && startsWithAt(text, pos, candidate)) {
            found = number;
            length = candidate.size();
        }
    };
    for (std::size_t i = 0; i < N; ++i) {
        consider(names[i], int(i) + 1);
        consider(names[i].left(3), int(i) + 1);
    }
    for (const Alias &alias : aliases)
        consider(alias.text, alias.number);
    pos += length;
    return found;
}

void skipSpaces(QStringView text, qsizetype &pos)
{
    while (pos < text.size() && text[pos].isSpace())
        ++pos;
}

// Up to `maxDigits` ASCII digits after optional blanks (a space-padded "%e" day starts with one).
// Returns -1 when there is no digit; `digits` receives how many were read.
int readNumber(QStringView text, qsizetype &pos, int maxDigits, int *digits = nullptr)
{
    skipSpaces(text, pos);
    int value = 0;
    int count = 0;
    while (count < maxDigits && pos < text.size() && isAsciiDigit(text[pos])) {
        value = value * 10 + digitValue(text[pos]);
        ++pos;
        ++count;
    }
    if (digits)
        *digits = count;
    return count == 0 ? -1 : value;
}

// Two-digit years: 00-69 are this century, 70-99 the last one.
int expandYear(int value, int digits)
{
    if (digits <= 2)
        return value < 70 ? 2000 + value : 1900 + value;
    return value;
}

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
        || !two(8, fields.day) || c[10] != u' ' || !two(11, fields.hour) || c[13] != u':'
        || !two(14, fields.minute) || c[16] != u':' || !two(17, fields.second) || c[19] != u' '
        || (c[20] != u'+' && c[20] != u'-') || !two(21, offsetHours) || !two(23, offsetMinutes))
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

// ---- Reading with a "%" format -----------------------------------------------------------------------------

struct ParsedFields {
    int year = 0;
    bool hasYear = false;
    int month = 0;
    int day = 0;
    int dayOfYear = 0;
};

// Matches a literal character of the format, ignoring ASCII case.
bool matchLiteral(QStringView text, qsizetype &pos, QChar expected)
{
    if (pos >= text.size() || asciiLower(text[pos]) != asciiLower(expected))
        return false;
    ++pos;
    return true;
}

bool readRanged(QStringView text, qsizetype &pos, int maxDigits, int low, int high, int &value)
{
    value = readNumber(text, pos, maxDigits);
    return value >= low && value <= high;
}

// One directive of the format against the text at `pos`. Time-of-day fields are checked and dropped:
// the answer is always a day.
bool matchDirective(QChar directive, QStringView text, qsizetype &pos, ParsedFields &fields)
{
    int value = 0;
    int digits = 0;
    switch (directive.unicode()) {
    case 'A':
    case 'a':
        return matchName(text, pos, WeekdayNames, WeekdayAliases) != 0;
    case 'B':
    case 'b':
        fields.month = matchName(text, pos, MonthNames, MonthAliases);
        return fields.month != 0;
    case 'd':
    case 'e':
        return readRanged(text, pos, 2, 1, 31, fields.day);
    case 'm':
        return readRanged(text, pos, 2, 1, 12, fields.month);
    case 'y':
    case 'Y':
        value = readNumber(text, pos, directive == u'y' ? 2 : 4, &digits);
        if (value < 0)
            return false;
        fields.year = expandYear(value, digits);
        fields.hasYear = true;
        return true;
    case 'j':
        return readRanged(text, pos, 3, 1, 366, fields.dayOfYear);
    case 'H':
        return readRanged(text, pos, 2, 0, 23, value);
    case 'I':
        return readRanged(text, pos, 2, 1, 12, value);
    case 'M':
        return readRanged(text, pos, 2, 0, 59, value);
    case 'S':
        return readRanged(text, pos, 2, 0, 60, value);
    case 'p':
        skipSpaces(text, pos);
        if (!matchLiteral(text, pos, u'a') && !matchLiteral(text, pos, u'p'))
            return false;
        return matchLiteral(text, pos, u'm');
    case 'z': {
        skipSpaces(text, pos);
        if (!matchLiteral(text, pos, u'+') && !matchLiteral(text, pos, u'-'))
            return false;
        if (readNumber(text, pos, 2, &digits) < 0 || digits != 2)
            return false;
        matchLiteral(text, pos, u':');
        return readNumber(text, pos, 2, &digits) >= 0 && digits == 2;
    }
    case 'Z': {
        // A zone abbreviation such as "EST", or "UTC-04:00" for a fixed offset. Only letters unless an
        // offset follows "UTC" or "GMT", so that a "-" or digits after the zone stay for the next directive.
        const qsizetype start = pos;
        while (pos < text.size() && isAsciiLetter(text[pos]))
            ++pos;
        const QStringView name = text.mid(start, pos - start);
        if ((name.compare(QLatin1String("UTC"), Qt::CaseInsensitive) == 0
             || name.compare(QLatin1String("GMT"), Qt::CaseInsensitive) == 0)
            && pos + 1 < text.size() && (text[pos] == u'+' || text[pos] == u'-') && isAsciiDigit(text[pos + 1])) {
            ++pos;
            readNumber(text, pos, 2);
            if (pos + 1 < text.size() && text[pos] == u':' && isAsciiDigit(text[pos + 1])) {
                ++pos;
                readNumber(text, pos, 2);
            }
        }
        return true;
    }
    case '%':
        return matchLiteral(text, pos, u'%');
    default:
        // An unknown directive is written as it stands, so it is read as it stands.
        return matchLiteral(text, pos, u'%') && matchLiteral(text, pos, directive);
    }
}

std::optional<QDate> parseFields(QStringView text, QStringView format, int currentYear)
{
    ParsedFields fields;
    qsizetype pos = 0;
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar f = format[i];
        if (f == u'%' && i + 1 < format.size()) {
            if (!matchDirective(format[++i], text, pos, fields))
                return std::nullopt;
        } else if (f.isSpace()) {
            skipSpaces(text, pos);
        } else if (!matchLiteral(text, pos, f)) {
            return std::nullopt;
        }
    }
    skipSpaces(text, pos);
    if (pos != text.size())
        return std::nullopt;
    const int year = fields.hasYear ? fields.year : currentYear;
    if (fields.month != 0 && fields.day != 0) {
        const QDate date(year, fields.month, fields.day);
        return date.isValid() ? std::optional<QDate>(date) : std::nullopt;
    }
    if (fields.dayOfYear != 0 && fields.hasYear) {
        const QDate first(year, 1, 1);
        if (!first.isValid() || fields.dayOfYear > first.daysInYear())
            return std::nullopt;
        return first.addDays(fields.dayOfYear - 1);
    }
    return std::nullopt;
}

// ---- Free-form dates ---------------------------------------------------------------------------------------

struct Token {
    enum Kind { Number, Month, Weekday } kind;
    int value;
    int digits; // Numbers only.
    bool ordinal; // "5th"
};

// Splits the text into numbers and month or weekday names. Blanks, "/", "-", "," and "." separate them;
// "of" (as in "5th of March") is a filler. Anything else means the text is not a date of this kind.
bool tokenize(QStringView text, QVarLengthArray<Token, 8> &tokens)
{
    constexpr qsizetype MaximumTokens = 6;
    qsizetype pos = 0;
    while (pos < text.size()) {
        const QChar c = text[pos];
        if (c.isSpace() || c == u'/' || c == u'-' || c == u',' || c == u'.') {
            ++pos;
            continue;
        }
        if (tokens.size() == MaximumTokens)
            return false;
        if (isAsciiDigit(c)) {
            Token token{Token::Number, 0, 0, false};
            while (pos < text.size() && isAsciiDigit(text[pos])) {
                if (++token.digits > 8)
                    return false;
                token.value = token.value * 10 + digitValue(text[pos++]);
            }
            for (auto suffix : {QLatin1String("st"), QLatin1String("nd"), QLatin1String("rd"), QLatin1String("th")}) {
                if (startsWithAt(text, pos, suffix)) {
                    pos += 2;
                    token.ordinal = true;
                    break;
                }
            }
            tokens.append(token);
        } else if (isAsciiLetter(c)) {
            qsizetype end = pos;
            while (end < text.size() && isAsciiLetter(text[end]))
                ++end;
            const QStringView word = text.mid(pos, end - pos);
            qsizetype monthEnd = 0;
            qsizetype weekdayEnd = 0;
            const int month = matchName(word, monthEnd, MonthNames, MonthAliases);
            const int weekday = matchName(word, weekdayEnd, WeekdayNames, WeekdayAliases);
            if (month && monthEnd == word.size())
                tokens.append(Token{Token::Month, month, 0, false});
            else if (weekday && weekdayEnd == word.size())
                tokens.append(Token{Token::Weekday, weekday, 0, false});
            else if (word.compare(QLatin1String("of"), Qt::CaseInsensitive) != 0)
                return false;
            pos = end;
        } else {
            return false;
        }
    }
    return true;
}

bool isDay(const Token &t)
{
    return t.kind == Token::Number && t.digits <= 2;
}

bool isPlainNumber(const Token &t, int maxDigits)
{
    return t.kind == Token::Number && !t.ordinal && t.digits <= maxDigits;
}

// A year token: one, two or four digits.
bool yearOf(const Token &t, int &year)
{
    if (t.kind != Token::Number || t.ordinal || t.digits == 3 || t.digits > 4)
        return false;
    year = expandYear(t.value, t.digits);
    return true;
}

std::optional<QDate> parseFreeForm(QStringView text, int currentYear)
{
    QVarLengthArray<Token, 8> tokens;
    if (!tokenize(text, tokens) || tokens.isEmpty())
        return std::nullopt;
    // A weekday in front of a date ("Wednesday, March 5, 2008") is ignored in favour of the date.
    qsizetype first = tokens.size() > 1 && tokens[0].kind == Token::Weekday ? 1 : 0;
    const Token *t = tokens.data() + first;
    const qsizetype n = tokens.size() - first;
    for (qsizetype i = 0; i < n; ++i) {
        if (t[i].kind == Token::Weekday)
            return std::nullopt;
    }
    int year = currentYear;
    int month = 0;
    int day = 0;
    if (n == 1 && isPlainNumber(t[0], 8) && t[0].digits == 8) {
        year = t[0].value / 10000;
        month = t[0].value / 100 % 100;
        day = t[0].value % 100;
    } else if (n == 3 && isPlainNumber(t[0], 4) && t[0].digits == 4 && isPlainNumber(t[1], 2) && isDay(t[2])) {
        year = t[0].value;
        month = t[1].value;
        day = t[2].value;
    } else if ((n == 2 || n == 3) && isPlainNumber(t[0], 2) && isDay(t[1])) {
        month = t[0].value;
        day = t[1].value;
        if (n == 3 && !yearOf(t[2], year))
            return std::nullopt;
    } else if ((n == 2 || n == 3) && t[0].kind == Token::Month && isDay(t[1])) {
        month = t[0].value;
        day = t[1].value;
        if (n == 3 && !yearOf(t[2], year))
            return std::nullopt;
    } else if ((n == 2 || n == 3) && isDay(t[0]) && t[1].kind == Token::Month) {
        day = t[0].value;
        month = t[1].value;
        if (n == 3 && !yearOf(t[2], year))
            return std::nullopt;
    } else {
        return std::nullopt;
    }
    const QDate date(year, month, day);
    return date.isValid() ? std::optional<QDate>(date) : std::nullopt;
}

// today, tomorrow, yesterday, now and [this|next|last] weekday. `words` is lower case, single-spaced.
std::optional<QDate> parseRelative(const QString &words, const QDate &today)
{
    if (words == QLatin1String("today") || words == QLatin1String("now"))
        return today;
    if (words == QLatin1String("tomorrow"))
        return today.addDays(1);
    if (words == QLatin1String("yesterday"))
        return today.addDays(-1);

    QStringView rest(words);
    enum { Coming, Next, Last } which = Coming;
    if (rest.startsWith(QLatin1String("next "))) {
        which = Next;
        rest = rest.mid(5);
    } else if (rest.startsWith(QLatin1String("last "))) {
        which = Last;
        rest = rest.mid(5);
    } else if (rest.startsWith(QLatin1String("this "))) {
        rest = rest.mid(5);
    }
    qsizetype pos = 0;
    const int weekday = matchName(rest, pos, WeekdayNames, WeekdayAliases);
    if (weekday == 0 || pos != rest.size())
        return std::nullopt;
    const int ahead = (weekday - today.dayOfWeek() + 7) % 7;
    const int behind = (today.dayOfWeek() - weekday + 7) % 7;
    switch (which) {
    case Coming:
        return today.addDays(ahead);
    case Next:
        return today.addDays(ahead == 0 ? 7 : ahead);
    case Last:
        return today.addDays(behind == 0 ? -7 : -behind);
    }
    return std::nullopt;
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
    const qint64 seconds = daysFromCivil(f.year, f.month, f.day) * 86400 + f.hour * 3600 + f.minute * 60 + f.second
        - f.offsetSeconds;
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
    return parseFields(trimmed, percentFormat, currentYear);
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

    if (auto day = parseRelative(trimmed.toString().simplified().toLower(), today))
        return midnightOf(day);
    if (!displayFormat.isEmpty()) {
        if (auto day = parseFields(trimmed, displayFormat, currentYear))
            return midnightOf(day);
    }
    for (QStringView offered : OfferedFormats) {
        if (displayFormat == offered)
            continue;
        if (auto day = parseFields(trimmed, offered, currentYear))
            return midnightOf(day);
    }
    StoredFields stored;
    if (readStoredFields(trimmed, stored))
        return localMidnight(stored.year, stored.month, stored.day);
    return midnightOf(parseFreeForm(trimmed, currentYear));
}

} // namespace DateText
