#pragma once

#include <QLoggingCategory>

// The camera's diagnostics: one plain line for each capture step that fails.
Q_DECLARE_LOGGING_CATEGORY(lcCamera)
