#include "calendar/DueDateMove.h"

#include "calendar/CalendarLog.h"
#include "list/Controller.h"
#include "platform/DateText.h"

#include <algorithm>

namespace DueDateMove {

bool changeDueDay(Controller &controller, const AssignmentRef &record, const QDate &day, QString *error)
{
    const auto fail = [error](const QString &reason) {
        qCWarning(lcCalendar) << "due date not changed:" << reason;
        if (error)
            *error = reason;
        return false;
    };
    if (!record || !day.isValid())
        return fail(QStringLiteral("no assignment or no day"));
    if (!controller.isStoreUsable())
        return fail(QStringLiteral("the assignments file could not be read"));
    const AssignmentList &all = controller.allAssignments();
    if (std::none_of(all.cbegin(), all.cend(), [&record](const AssignmentRef &r) { return r == record; }))
        return fail(QStringLiteral("the assignment is no longer in the store"));

    QTime timeOfDay(0, 0);
    if (const std::optional<QDateTime> due = record->dueDate())
        timeOfDay = due->toLocalTime().time();
    QDateTime moved(day, timeOfDay);
    // Where the clocks skip that time on the new day, the first moment of the day is as close as
    // the day allows.
    if (!moved.isValid())
        moved = day.startOfDay();

    record->set(AssignmentField::Date, DateText::toStoredForm(moved));
    record->set(AssignmentField::DateUpdated, DateText::nowStoredForm());
    // The record changed in place: hand the whole list back so the controller drops what it knew
    // about the order, refilters and sorts, with the selection kept.
    controller.setAllAssignments(all);
    controller.saveData();
    return true;
}

} // namespace DueDateMove
