#pragma once

#include <QHash>
#include <QString>

#include <array>
#include <limits>
#include <optional>

// Due dates of a long export as the user's format writes them in local time, each stored text worked
// out once.
//
// Turning a moment into local time asks the C library, which looks at the zone file again on every
// call; over ten thousand records that was most of an export. Local offsets change only a couple of
// times a year, so the offset is asked at both ends of each UTC day met and, when they agree, used for
// every moment of that day. A day with a change, and a format with the zone's name ("%Z"), go the
// exact way for each moment. A format of the day alone is written once per local day, and the stored
// form needs no writing when the moment keeps its stored offset.
class DueDateTexts
{
public:
    explicit DueDateTexts(QString percentFormat);

    // The formatted text of a stored due date ("%Y-%m-%d %H:%M:%S %z"), or nullopt when the text is
    // not in that form or names no moment this machine can represent.
    std::optional<QString> text(const QString &stored);

private:
    std::optional<int> steadyOffsetOfDay(qint64 utcDay);
    static std::optional<QString> storedFormAt(qint64 utc, int offset);

    // Values by day (days since 1970), the days met lately in a small table in front of a hash:
    // the due dates of one export mostly fall within a few weeks, and the table is one step where
    // the hash was several.
    template<typename T>
    class ByDay
    {
    public:
        const T *find(qint64 day)
        {
            Slot &slot = m_recent[size_t(day) % Recent];
            if (slot.day == day)
                return &slot.value;
            const auto known = m_all.constFind(day);
            if (known == m_all.constEnd())
                return nullptr;
            slot = {day, *known};
            return &slot.value;
        }
        void insert(qint64 day, const T &value)
        {
            m_all.insert(day, value);
            m_recent[size_t(day) % Recent] = {day, value};
        }

    private:
        static constexpr size_t Recent = 128;
        struct Slot {
            qint64 day = std::numeric_limits<qint64>::min();
            T value{};
        };
        std::array<Slot, Recent> m_recent;
        QHash<qint64, T> m_all;
    };

    QString m_format;
    bool m_needsZoneName = false;
    // The format writes nothing but the day ("%A, %B %e, %Y").
    bool m_dayOnly = false;
    // The format is the stored form itself.
    bool m_storedForm = false;
    // A null text marks a stored text that cannot be read.
    QHash<QString, QString> m_texts;
    // UTC day -> the local offset all through it; nullopt when it changes that day.
    ByDay<std::optional<int>> m_dayOffsets;
    // Local day -> its text, for a format of the day alone.
    ByDay<QString> m_dayTexts;
};
