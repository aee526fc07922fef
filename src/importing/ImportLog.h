#pragma once

#include <QLoggingCategory>

// Diagnostics of calendar imports ("quillory.importing").
Q_DECLARE_LOGGING_CATEGORY(lcImporting)
