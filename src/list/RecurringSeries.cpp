#include "list/RecurringSeries.h"

#include "list/ListLog.h"
#include "list/ListTexts.h"
#include "platform/Alerts.h"
#include "platform/Clock.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "store/Assignment.h"
#include "store/AssignmentsDocument.h"
#include "store/GeneralSettings.h"
#include "store/PreferenceKeys.h"

namespace {

const QString NoBeginningDate = QStringLiteral("Please enter a beginning date.");
const QString BadBeginningDate = QStringLiteral("Please enter a valid beginning date.");
const QString NoWeekday = QStringLiteral("Please select at least one day of the week.");
const QString NoWeekInterval = QStringLiteral("Please enter a week interval.");
const QString NoMonthDay = QStringLiteral("Please select at least one day of the month.");
const QString NoOccurrences = QStringLiteral("Please enter a number of occurances.");
const QString NoEndingDate = QStringLiteral("Please enter an ending date.");
const QString BadEndingDate = QStringLiteral("Please enter a valid ending date.");
const QString EndingBeforeStart = QStringLiteral("Please enter an ending date that is after the starting date.");
const QString NumberPlaceholder = QStringLiteral("%@");

// A day of the month that no checked box names is looked for at most this long before a counted
// series gives up (every day that can occur at all occurs within two months).
constexpr int MaximumDaysWithoutOccurrence = 366;
// A weekly series whose interval does not move it forward (0 or less) stops after this many days
// without reaching a new day.
constexpr int MaximumStepsWithoutProgress = 14;
// More occurrences than anyone could mean is a typing slip; the series is cut there rather than
// filling the memory.
constexpr int MaximumOccurrences = 10000;

std::optional<QDateTime> readDate(const QString &text)
{
    return DateText::parseNatural(text, GeneralSettings::storedDateFormat(), Clock::now());
}

// The text fields' integer value: leading digits, 0 when there are none.
int intValue(const QString &text)
{
    const QString trimmed = text.trimmed();
    qsizetype end = 0;
    if (end < trimmed.size() && (trimmed[end] == u'-' || trimmed[end] == u'+'))
        ++end;
    while (end < trimmed.size() && trimmed[end].isDigit() && end < 10)
        ++end;
    return trimmed.left(end).toInt();
}

// 0 Sunday ... 6 Saturday
int weekdayIndex(const QDateTime &day)
{
    return day.date().dayOfWeek() % 7;
}

// One step of the weekly rules: the next day, and on reaching a Sunday the jump over the weeks
// the interval skips (before Sunday itself is tested).
void weeklyStep(QDateTime &day, int interval)
{
    day = day.addDays(1);
    if (weekdayIndex(day) == 0)
        day = day.addDays(qint64(interval) * 7 - 7);
}

} // namespace

bool RecurringSeries::isDayChecked(const DayGrid &grid, int day)
{
    const int row = day / 7;
    const int column = day % 7 - 1;
    return row >= 0 && row < GridRows && column >= 0 && column < GridColumns && grid[row][column];
}

std::optional<QString> RecurringSeries::checkForValidEntry(const Entries &entries)
{
    if (entries.startingDate.isEmpty())
        return NoBeginningDate;
    const std::optional<QDateTime> start = readDate(entries.startingDate);
    if (!start)
        return BadBeginningDate;
    if (entries.repeat == Repeat::Weekly) {
        if (std::none_of(entries.weekdays.begin(), entries.weekdays.end(), [](bool on) { return on; }))
            return NoWeekday;
        if (entries.weekInterval.isEmpty())
            return NoWeekInterval;
    } else {
        bool any = false;
        for (const auto &row : entries.dayGrid)
            for (bool on : row)
                any = any || on;
        if (!any)
            return NoMonthDay;
    }
    if (entries.end == End::AfterOccurrences) {
        if (entries.occurrences.isEmpty())
            return NoOccurrences;
    } else {
        if (entries.endingDate.isEmpty())
            return NoEndingDate;
        const std::optional<QDateTime> ending = readDate(entries.endingDate);
        if (!ending)
            return BadEndingDate;
        if (*ending < *start)
            return EndingBeforeStart;
    }
    return std::nullopt;
}

QList<QDateTime> RecurringSeries::weeklyEndAfter(const QDateTime &start, const std::array<bool, 7> &weekdays,
                                                 int interval, int count)
{
    QList<QDateTime> dates;
    if (std::none_of(weekdays.begin(), weekdays.end(), [](bool on) { return on; }))
        return dates;
    QDateTime day = start.addDays(-1);
    for (int i = 1; i <= count; ++i) {
        do
            weeklyStep(day, interval);
        while (!weekdays[weekdayIndex(day)]);
        dates.append(day);
    }
    return dates;
}

QList<QDateTime> RecurringSeries::weeklyEndOnDate(const QDateTime &start, const std::array<bool, 7> &weekdays,
                                                  int interval, const QDateTime &ending)
{
    QList<QDateTime> dates;
    const QDateTime last = ending.addDays(-1);
    QDateTime day = start.addDays(-1);
    QDateTime furthest = day;
    int stepsWithoutProgress = 0;
    while (true) {
        weeklyStep(day, interval);
        if (day > last)
            break;
        if (day > furthest) {
            furthest = day;
            stepsWithoutProgress = 0;
        } else if (++stepsWithoutProgress > MaximumStepsWithoutProgress) {
            qCWarning(lcList) << "recurring series: a week interval of" << interval << "never reaches the end";
            break;
        }
        if (weekdays[weekdayIndex(day)])
            dates.append(day);
    }
    return dates;
}

QList<QDateTime> RecurringSeries::monthlyEndAfter(const QDateTime &start, const DayGrid &grid, int count)
{
    QList<QDateTime> dates;
    QDateTime day = start.addDays(-1);
    for (int i = 1; i <= count; ++i) {
        int searched = 0;
        do {
            day = day.addDays(1);
            if (++searched > MaximumDaysWithoutOccurrence) {
                qCWarning(lcList) << "recurring series: no checked day of the month can occur; stopping after"
                                  << dates.size() << "occurrences";
                return dates;
            }
        } while (!isDayChecked(grid, day.date().day()));
        dates.append(day);
    }
    return dates;
}

QList<QDateTime> RecurringSeries::monthlyEndOnDate(const QDateTime &start, const DayGrid &grid,
                                                   const QDateTime &ending)
{
    QList<QDateTime> dates;
    const QDateTime last = ending.addDays(-1);
    QDateTime day = start.addDays(-1);
    while (true) {
        day = day.addDays(1);
        // Stops on reaching the day before the ending date, so neither is an occurrence. (With an
        // ending date equal to the starting date that day lies behind the start: nothing occurs.)
        if (day >= last)
            break;
        if (isDayChecked(grid, day.date().day()))
            dates.append(day);
    }
    return dates;
}

QList<QDateTime> RecurringSeries::occurrenceDates(const Entries &entries)
{
    const std::optional<QDateTime> start = readDate(entries.startingDate);
    if (!start)
        return {};
    const int interval = intValue(entries.weekInterval);
    if (entries.end == End::AfterOccurrences) {
        const int count = std::min(intValue(entries.occurrences), MaximumOccurrences);
        return entries.repeat == Repeat::Weekly ? weeklyEndAfter(*start, entries.weekdays, interval, count)
                                                : monthlyEndAfter(*start, entries.dayGrid, count);
    }
    const std::optional<QDateTime> ending = readDate(entries.endingDate);
    if (!ending)
        return {};
    return entries.repeat == Repeat::Weekly ? weeklyEndOnDate(*start, entries.weekdays, interval, *ending)
                                            : monthlyEndOnDate(*start, entries.dayGrid, *ending);
}

QVariantList RecurringSeries::generate(const Entries &entries)
{
    using namespace AssignmentKeys;
    QVariantList records;
    const QList<QDateTime> dates = occurrenceDates(entries);
    for (qsizetype i = 0; i < dates.size(); ++i) {
        QVariantMap record;
        if (!entries.name.isEmpty())
            record.insert(Name, QString(entries.name).replace(NumberPlaceholder, QString::number(i + 1)));
        record.insert(Date, DateText::toStoredForm(dates[i]));
        for (const auto &[key, text] : {std::pair{Course, entries.course}, std::pair{Textbook, entries.textbook},
                                        std::pair{Type, entries.type}, std::pair{Grade, entries.grade}})
            if (!text.isEmpty())
                record.insert(key, text);
        record.insert(Completed, entries.completed);
        if (!entries.notes.isEmpty())
            record.insert(Notes, entries.notes);
        record.insert(DateUpdated, DateText::nowStoredForm());
        record.insert(DateCreated, Clock::secondsSince1970());
        records.append(record);
    }
    return records;
}

bool RecurringSeries::addMultipleAssignments(const Entries &entries, const QString &path)
{
    if (const std::optional<QString> problem = checkForValidEntry(entries)) {
        Alerts::inform(ListTexts::WarningTitle, *problem);
        return false;
    }
    const std::shared_ptr<AssignmentsDocument> document
        = path.isEmpty() ? AssignmentsDocument::open() : AssignmentsDocument::open(path);
    document->refresh();
    if (!document->isUsable()) {
        // Writing the series over a file that could not be read would lose everything in it.
        qCWarning(lcList) << "recurring series not stored: cannot read" << document->path();
        Alerts::inform(ListTexts::StoreErrorTitle, ListTexts::RecurringUnreadableMessage);
        return false;
    }
    AssignmentList added;
    for (const QVariant &record : generate(entries))
        added.append(Assignments::make(record.toMap()));
    if (!document->append(added)) {
        Alerts::inform(ListTexts::StoreErrorTitle, ListTexts::RecurringUnwritableMessage);
        return false;
    }
    return true;
}
