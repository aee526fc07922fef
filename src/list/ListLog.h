#pragma once

#include <QLoggingCategory>

// Diagnostics of the assignment list ("quillory.list").
Q_DECLARE_LOGGING_CATEGORY(lcList)
