#include "list/CellPresentation.h"

#include "list/ColumnCatalogue.h"
#include "list/ListTexts.h"
#include "platform/DateText.h"
#include "store/PreferenceKeys.h"

namespace CellPresentation {

std::optional<QDate> dueDay(const Assignment &record)
{
    const std::optional<QDateTime> due = record.dueDate();
    if (!due)
        return std::nullopt;
    return due->toLocalTime().date();
}

qint64 daysLeft(const QDateTime &due, const QDate &today)
{
    const QDateTime local = due.toLocalTime();
    qint64 days = today.daysTo(local.date());
    // Counting whole days from midnight: a moment later in a day before today is less than a full
    // day further back.
    if (days < 0 && local.time() > QTime(0, 0))
        ++days;
    return days;
}

QString subprojectTitle(const QString &format, const QString &projectName, const QString &subprojectName)
{
    QString title = format;
    title.replace(ListTexts::ProjectPlaceholder, projectName);
    title.replace(ListTexts::SubprojectPlaceholder, subprojectName);
    return title;
}

namespace {

bool sameDayAsPrevious(const Assignment &record, const Assignment *previous, const PresentationSettings &settings)
{
    if (settings.displayDuplicateDates || !previous)
        return false;
    const std::optional<QDate> day = dueDay(record);
    const std::optional<QDate> previousDay = dueDay(*previous);
    return day && previousDay && *day == *previousDay;
}

} // namespace

QVariant dateCellText(const Assignment &record, const Assignment *previous, const PresentationSettings &settings)
{
    const std::optional<QDateTime> due = record.dueDate();
    if (!due)
        return record.value(AssignmentField::Date);
    if (sameDayAsPrevious(record, previous, settings))
        return QString("");
    return DateText::format(due->toLocalTime(), settings.dateFormat);
}

QVariant daysLeftCellText(const Assignment &record, const Assignment *previous,
                          const PresentationSettings &settings)
{
    const std::optional<QDateTime> due = record.dueDate();
    if (!due)
        return record.value(ColumnCatalogue::DaysLeft);
    if (sameDayAsPrevious(record, previous, settings))
        return QString("");
    return QString::number(daysLeft(*due, settings.today));
}

std::optional<QColor> textColor(const Assignment &record, const QString &column, bool selected,
                                const PresentationSettings &settings)
{
    using namespace PreferenceKeys::ColorKeys;
    if (selected)
        return QColor(Qt::white);

    std::optional<QColor> color = settings.color(AllOthers);
    switch (settings.colorFormat) {
    case PresentationSettings::ByDueDate:
        if (const std::optional<QDate> due = dueDay(record)) {
            const QDate &today = settings.today;
            // A missing entry here gives the default colour, not "All Others"; only "Due in Two
            // Days" is looked for before it is used.
            if (*due <= today)
                color = settings.color(PastDue);
            if (*due == today)
                color = settings.color(DueToday);
            if (*due == today.addDays(1))
                color = settings.color(DueTomorrow);
            if (*due == today.addDays(2) && settings.hasColor(DueInTwoDays))
                color = settings.color(DueInTwoDays);
        }
        break;
    case PresentationSettings::ByCourse:
    case PresentationSettings::ByType:
    case PresentationSettings::ByPriority: {
        if (column == ColumnCatalogue::Date)
            break;
        QString key;
        if (settings.colorFormat == PresentationSettings::ByCourse)
            key = record.string(AssignmentField::Course);
        else if (settings.colorFormat == PresentationSettings::ByType)
            key = record.string(AssignmentField::Type);
        else if (record.has(AssignmentField::Priority))
            key = QString::number(record.value(AssignmentField::Priority).toDouble());
        if (!key.isNull() && settings.hasColor(key))
            color = settings.color(key);
        break;
    }
    default:
        break;
    }
    if (record.isCompleted())
        color = settings.color(Completed);
    return color;
}

QColor bandColor()
{
    static const QColor band = QColor::fromRgbF(237.0f / 255.0f, 243.0f / 255.0f, 254.0f / 255.0f, 1.0f);
    return band;
}

} // namespace CellPresentation
