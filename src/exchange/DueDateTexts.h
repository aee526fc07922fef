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
// exact way for each moment.
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
    // A null text marks a stored text that cannot be read.
    QHash<QString, QString> m_texts;
    // UTC day -> the local offset all through it; nullopt when it changes that day.
    QHash<qint64, std::optional<int>> m_dayOffsets;
};
