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

    // A changed copy replaces the record, as a sidebar edit does: the document puts it onto the file
    // as it is now (another program's change since stays), and the list moves that one row.
    const AssignmentRef changed = Assignments::copy(record);
    changed->set(AssignmentField::Date, DateText::toStoredForm(moved));
    changed->set(AssignmentField::DateUpdated, DateText::nowStoredForm());
    if (!controller.replaceShown(record, changed))
        return fail(QStringLiteral("the assignments file could not be written"));
    return true;
}

} // namespace DueDateMove
