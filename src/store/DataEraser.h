#pragma once

#include <QString>

// "Delete All Data": the assignments, the courses and textbooks and the universal types become
// empty arrays on disk. The preferences are not touched.
namespace DataEraser {

// Writes the three empty arrays atomically, creating the data folder when needed. Returns false
// (with the paths that failed in `error`) when any write failed; the others are still written.
bool deleteAllData(QString *error = nullptr);

} // namespace DataEraser
