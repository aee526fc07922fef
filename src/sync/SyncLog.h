#pragma once

#include <QLoggingCategory>

// Diagnostics of syncing and its helpers ("quillory.sync").
Q_DECLARE_LOGGING_CATEGORY(lcSync)
