#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariantList>

#include <array>
#include <optional>

// A series of assignments made at once (the recurring sheet): the same fields for every occurrence,
// with due dates from a weekly or monthly rule that ends after a count or at a date. The series is
// appended to "Assignments.plist" on disk; the main list picks it up at its next refresh.
class RecurringSeries
{
public:
    enum class Repeat { Weekly = 0, Monthly = 1 };
    enum class End { AfterOccurrences = 0, OnDate = 1 };

    // The day-of-month grid: five rows of seven check boxes. The box for day d is at row d / 7,
    // column d % 7 - 1, so days 7, 14, 21 and 28 have no box and never occur.
    static constexpr int GridRows = 5;
    static constexpr int GridColumns = 7;
    using DayGrid = std::array<std::array<bool, GridColumns>, GridRows>;

    struct Entries {
        QString name; // every "%@" becomes the occurrence number
        QString course;
        QString textbook;
        bool completed = false;
        QString type;
        QString grade;
        QString notes;
        Repeat repeat = Repeat::Weekly;
        End end = End::AfterOccurrences;
        QString startingDate; // as typed
        std::array<bool, 7> weekdays{}; // 0 Sunday ... 6 Saturday
        QString weekInterval;
        DayGrid dayGrid{};
        QString occurrences;
        QString endingDate; // as typed
    };

    // The first problem with the entries, in the order the sheet checks them, or nullopt.
    static std::optional<QString> checkForValidEntry(const Entries &entries);

    // The occurrences' due dates by the rule the entries select; the entries must be valid.
    static QList<QDateTime> occurrenceDates(const Entries &entries);
    // The records of the series.
    static QVariantList generate(const Entries &entries);

    // Validates (showing the first problem in a "Warning" with "OK"), generates, and appends the
    // records to the store file at `path`. False when the entries were refused or the file could
    // not be read or written; a file that does not parse is left as it is.
    static bool addMultipleAssignments(const Entries &entries, const QString &path = QString());

    // The four rules, from a start day and what they need.
    static QList<QDateTime> weeklyEndAfter(const QDateTime &start, const std::array<bool, 7> &weekdays, int interval,
                                           int count);
    static QList<QDateTime> weeklyEndOnDate(const QDateTime &start, const std::array<bool, 7> &weekdays,
                                            int interval, const QDateTime &ending);
    static QList<QDateTime> monthlyEndAfter(const QDateTime &start, const DayGrid &grid, int count);
    static QList<QDateTime> monthlyEndOnDate(const QDateTime &start, const DayGrid &grid, const QDateTime &ending);

    // Whether the grid's box for a day of the month is checked.
    static bool isDayChecked(const DayGrid &grid, int day);
};
