#include "caldav/CalDavLog.h"

Q_LOGGING_CATEGORY(lcCalDav, "quillory.caldav")
