#pragma once

#include <QString>

// The crash log left by the last run that died, and whether it is new.
namespace CrashLog {

// True when `logPath` exists, `lastStartup` (the preferences' "Last Startup", in the stored date
// form) is set and reads as a date, and the log was modified strictly after that moment. A first
// start ever (no "Last Startup") offers nothing, nor does a log that was there already at the
// last start.
bool isNew(const QString &logPath, const QString &lastStartup);

// The whole log as text; empty when it cannot be read.
QString read(const QString &logPath);

// Removes the log if it is there.
void remove(const QString &logPath);

} // namespace CrashLog
