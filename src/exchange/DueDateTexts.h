#pragma once

#include <QHash>
#include <QString>

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

    QString m_format;
    bool m_needsZoneName = false;
    // The format writes nothing but the day ("%A, %B %e, %Y").
    bool m_dayOnly = false;
    // The format is the stored form itself.
    bool m_storedForm = false;
    // A null text marks a stored text that cannot be read.
    QHash<QString, QString> m_texts;
    // UTC day -> the local offset all through it; nullopt when it changes that day.
    QHash<qint64, std::optional<int>> m_dayOffsets;
    // Local day (days since 1970) -> its text, for a format of the day alone.
    QHash<qint64, QString> m_dayTexts;
};
