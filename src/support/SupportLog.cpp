#include "support/SupportLog.h"

Q_LOGGING_CATEGORY(lcSupport, "quillory.support")
