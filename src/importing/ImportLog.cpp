#include "importing/ImportLog.h"

Q_LOGGING_CATEGORY(lcImporting, "quillory.importing")
