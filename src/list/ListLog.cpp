#include "list/ListLog.h"

Q_LOGGING_CATEGORY(lcList, "quillory.list")
