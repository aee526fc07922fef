#pragma once

#include "store/Assignment.h"

#include <QDate>
#include <QString>

// One line of a day's list: the day it is kept under, the text shown (empty when none was given)
// and the assignment it stands for (none when none was given).
struct CalendarEntry {
    QDate date;
    QString title;
    AssignmentRef object;
};
