#pragma once

#include "store/Assignment.h"

#include <QDateTime>

// One notification to show: the assignments whose reminders fall at the same moment, grouped so
// that three assignments due tomorrow make one notification, not three.
struct Reminder {
    QDateTime moment;
    AssignmentList assignments;
    // Fell while the program was not running; shown once at the next start.
    bool missed = false;
};
