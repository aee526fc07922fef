#include "platform/DateTextParsing.h"

#include <QVarLengthArray>

namespace DateTextParsing {

namespace {

// Extra spellings people use besides the full name and its first three letters. The number is the
// weekday (1 Monday .. 7 Sunday) or the month (1 .. 12).
struct Alias {
    QLatin1String text;
    int number;
};
constexpr std::array<Alias, 5> WeekdayAliases = {Alias {QLatin1String("tues"), 2}, Alias {QLatin1String("weds"), 3},
    Alias {QLatin1String("thur"), 4}, Alias {QLatin1String("thurs"), 4}, Alias {QLatin1String("tue"), 2}};
constexpr std::array<Alias, 1> MonthAliases = {Alias {QLatin1String("sept"), 9}};

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
int matchName(
    QStringView text, qsizetype &pos, const std::array<QLatin1String, N> &names, const std::array<Alias, A> &aliases)
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

} // namespace

std::optional<QDate> withFormat(QStringView text, QStringView format, int currentYear)
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

namespace {

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
            Token token {Token::Number, 0, 0, false};
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
                tokens.append(Token {Token::Month, month, 0, false});
            else if (weekday && weekdayEnd == word.size())
                tokens.append(Token {Token::Weekday, weekday, 0, false});
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

} // namespace

std::optional<QDate> freeForm(QStringView text, int currentYear)
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

std::optional<QDate> relative(const QString &words, const QDate &today)
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

} // namespace DateTextParsing
