#include "exchange/DueDateTexts.h"

#include "platform/DateText.h"

#include <QDateTime>

namespace {

constexpr qint64 SecondsPerDay = 86400;
// Julian day of 1970-01-01.
constexpr qint64 EpochJulianDay = 2440588;

int twoDigits(const QString &text, qsizetype at)
{
    return (text.at(at).unicode() - u'0') * 10 + (text.at(at + 1).unicode() - u'0');
}

std::optional<int> localOffsetAt(qint64 utcSeconds)
{
    const QDateTime local = QDateTime::fromSecsSinceEpoch(utcSeconds, Qt::LocalTime);
    if (!local.isValid())
        return std::nullopt;
    return local.offsetFromUtc();
}

} // namespace

DueDateTexts::DueDateTexts(QString percentFormat)
    : m_format(std::move(percentFormat))
    , m_needsZoneName(m_format.contains(QLatin1String("%Z")))
{
}

std::optional<int> DueDateTexts::steadyOffsetOfDay(qint64 utcDay)
{
    const auto known = m_dayOffsets.constFind(utcDay);
    if (known != m_dayOffsets.constEnd())
        return *known;
    const auto first = localOffsetAt(utcDay * SecondsPerDay);
    const auto last = localOffsetAt(utcDay * SecondsPerDay + SecondsPerDay - 1);
    // No zone changes its offset and back again within one day, so equal ends mean one offset.
    const std::optional<int> steady = first && last && *first == *last ? first : std::nullopt;
    m_dayOffsets.insert(utcDay, steady);
    return steady;
}

std::optional<QString> DueDateTexts::text(const QString &stored)
{
    const auto known = m_texts.constFind(stored);
    if (known != m_texts.constEnd())
        return known->isNull() ? std::nullopt : std::optional<QString>(*known);

    QString result;
    // storedDay checks the whole form, the time and offset fields included.
    if (const auto day = DateText::storedDay(stored)) {
        const int offsetSign = stored.at(20) == u'-' ? -1 : 1;
        const qint64 utc = (day->toJulianDay() - EpochJulianDay) * SecondsPerDay + twoDigits(stored, 11) * 3600
            + twoDigits(stored, 14) * 60 + twoDigits(stored, 17)
            - offsetSign * (twoDigits(stored, 21) * 3600 + twoDigits(stored, 23) * 60);
        const qint64 utcDay = utc >= 0 ? utc / SecondsPerDay : (utc - SecondsPerDay + 1) / SecondsPerDay;
        const std::optional<int> offset = m_needsZoneName ? std::nullopt : steadyOffsetOfDay(utcDay);
        const QDateTime moment = offset ? QDateTime::fromSecsSinceEpoch(utc, Qt::OffsetFromUTC, *offset)
                                        : QDateTime::fromSecsSinceEpoch(utc, Qt::LocalTime);
        if (moment.isValid()) {
            result = DateText::format(moment, m_format);
            if (result.isNull())
                result = QLatin1String("");
        }
    }
    m_texts.insert(stored, result);
    return result.isNull() ? std::nullopt : std::optional<QString>(result);
}
