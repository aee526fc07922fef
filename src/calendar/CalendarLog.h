#pragma once

#include <QLoggingCategory>

// Diagnostics of the calendar views ("quillory.calendar").
Q_DECLARE_LOGGING_CATEGORY(lcCalendar)
