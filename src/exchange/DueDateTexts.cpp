#include "exchange/DueDateTexts.h"

#include "platform/DateText.h"

#include <QDateTime>

namespace {

constexpr qint64 SecondsPerDay = 86400;
// Julian day of 1970-01-01.
constexpr qint64 EpochJulianDay = 2440588;
// Directives whose text depends on the day alone.
constexpr QLatin1StringView DayDirectives("AaBbdemyYj%");

int twoDigits(const QString &text, qsizetype at)
{
    return (text.at(at).unicode() - u'0') * 10 + (text.at(at + 1).unicode() - u'0');
}

qint64 floorDivide(qint64 value, qint64 by)
{
    return value >= 0 ? value / by : (value - by + 1) / by;
}

std::optional<int> localOffsetAt(qint64 utcSeconds)
{
    const QDateTime local = QDateTime::fromSecsSinceEpoch(utcSeconds, Qt::LocalTime);
    if (!local.isValid())
        return std::nullopt;
    return local.offsetFromUtc();
}

bool writesDayOnly(const QString &format)
{
    for (qsizetype i = 0; i + 1 < format.size(); ++i) {
        if (format.at(i) != u'%')
            continue;
        if (!DayDirectives.contains(format.at(i + 1)))
            return false;
        ++i;
    }
    return true;
}

} // namespace

DueDateTexts::DueDateTexts(QString percentFormat)
    : m_format(std::move(percentFormat))
    , m_needsZoneName(m_format.contains(QLatin1String("%Z")))
    , m_dayOnly(writesDayOnly(m_format))
    , m_storedForm(m_format == QLatin1String(DateText::StoredFormat))
{
}

std::optional<int> DueDateTexts::steadyOffsetOfDay(qint64 utcDay)
{
    if (const auto *known = m_dayOffsets.find(utcDay))
        return *known;
    const auto first = localOffsetAt(utcDay * SecondsPerDay);
    const auto last = localOffsetAt(utcDay * SecondsPerDay + SecondsPerDay - 1);
    // No zone changes its offset and back again within one day, so equal ends mean one offset.
    const std::optional<int> steady = first && last && *first == *last ? first : std::nullopt;
    m_dayOffsets.insert(utcDay, steady);
    return steady;
}

std::optional<QString> DueDateTexts::storedFormAt(qint64 utc, int offset)
{
    // "%Y-%m-%d %H:%M:%S %z" written by hand, the way the formatter writes it: a store kept in
    // another zone than the machine's has a different text for nearly every record.
    const qint64 local = utc + offset;
    const qint64 days = floorDivide(local, SecondsPerDay);
    const int secondsOfDay = int(local - days * SecondsPerDay);
    int year = 0;
    int month = 0;
    int day = 0;
    QDate::fromJulianDay(days + EpochJulianDay).getDate(&year, &month, &day);
    if (year < 0 || year > 9999)
        return std::nullopt;
    const int magnitude = offset < 0 ? -offset : offset;
    char16_t text[25];
    qsizetype at = 0;
    auto two = [&](int value) {
        text[at++] = char16_t(u'0' + value / 10);
        text[at++] = char16_t(u'0' + value % 10);
    };
    auto put = [&](char16_t c) { text[at++] = c; };
    two(year / 100);
    two(year % 100);
    put(u'-');
    two(month);
    put(u'-');
    two(day);
    put(u' ');
    two(secondsOfDay / 3600);
    put(u':');
    two(secondsOfDay % 3600 / 60);
    put(u':');
    two(secondsOfDay % 60);
    put(u' ');
    put(offset < 0 ? u'-' : u'+');
    two(magnitude / 3600);
    two(magnitude % 3600 / 60);
    return QString(reinterpret_cast<const QChar *>(text), at);
}

std::optional<QString> DueDateTexts::text(const QString &stored)
{
    // storedDay checks the whole form, the time and offset fields included.
    const auto day = DateText::storedDay(stored);
    if (!day)
        return std::nullopt;
    const int storedOffset = (stored.at(20) == u'-' ? -1 : 1) * (twoDigits(stored, 21) * 3600 + twoDigits(stored, 23) * 60);
    const qint64 utc = (day->toJulianDay() - EpochJulianDay) * SecondsPerDay + twoDigits(stored, 11) * 3600
        + twoDigits(stored, 14) * 60 + twoDigits(stored, 17) - storedOffset;
    const std::optional<int> offset = m_needsZoneName ? std::nullopt : steadyOffsetOfDay(floorDivide(utc, SecondsPerDay));

    if (offset) {
        // Written in the offset it was stored with, the stored text is already the local one ("-0000"
        // excepted, which is written "+0000").
        if (m_storedForm && *offset == storedOffset && !(storedOffset == 0 && stored.at(20) == u'-'))
            return stored;
        if (m_storedForm) {
            if (auto text = storedFormAt(utc, *offset))
                return text;
        }
        if (m_dayOnly) {
            // Many due dates share a day; a format of the day alone is written once per day.
            const qint64 localDay = floorDivide(utc + *offset, SecondsPerDay);
            if (const QString *known = m_dayTexts.find(localDay))
                return *known;
            const QDateTime moment = QDateTime::fromSecsSinceEpoch(utc, Qt::OffsetFromUTC, *offset);
            if (!moment.isValid())
                return std::nullopt;
            QString text = DateText::format(moment, m_format);
            m_dayTexts.insert(localDay, text);
            return text;
        }
    }

    const auto known = m_texts.constFind(stored);
    if (known != m_texts.constEnd())
        return known->isNull() ? std::nullopt : std::optional<QString>(*known);
    const QDateTime moment = offset ? QDateTime::fromSecsSinceEpoch(utc, Qt::OffsetFromUTC, *offset)
                                    : QDateTime::fromSecsSinceEpoch(utc, Qt::LocalTime);
    QString result;
    if (moment.isValid()) {
        result = DateText::format(moment, m_format);
        if (result.isNull())
            result = QLatin1String("");
    }
    m_texts.insert(stored, result);
    return result.isNull() ? std::nullopt : std::optional<QString>(result);
}
