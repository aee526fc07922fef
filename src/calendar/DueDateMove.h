#pragma once

#include "store/Assignment.h"

#include <QDate>
#include <QString>

class Controller;

// An entry dragged to another day of the calendar: the assignment takes that day as its due day.
namespace DueDateMove {

// Gives `record` the due day `day`, keeping the time of day it was due at (an assignment due at
// 23:59 stays due at 23:59), stamps "Date Updated", then refilters, sorts and saves through the
// controller. Refuses, with a reason, a record that is no longer in the store and a store that
// could not be read (which must never be written over).
bool changeDueDay(Controller &controller, const AssignmentRef &record, const QDate &day, QString *error = nullptr);

} // namespace DueDateMove
