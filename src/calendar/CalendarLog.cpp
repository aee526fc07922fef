#include "calendar/CalendarLog.h"

Q_LOGGING_CATEGORY(lcCalendar, "quillory.calendar")
