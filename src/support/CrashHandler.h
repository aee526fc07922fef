#pragma once

#include <QString>

// Writes the crash log when the program dies of a fatal signal (SIGSEGV, SIGABRT, SIGBUS, SIGFPE,
// SIGILL): the signal, the time, the build and a backtrace of the crashing thread. Nothing on
// Linux keeps such a log for us, and the crash reporter offers it at the next start.
//
// The handler runs on its own stack (so a stack overflow is logged too), allocates nothing, takes
// no lock and calls no Qt: everything it needs is prepared by install(). It writes the log under
// a temporary name and renames it into place, so a crash during the writing never leaves half a
// log where the reporter looks. Then it puts the signal's default action back and raises the
// signal again, so the process ends with the same signal as it would have without us (and a core
// dump, where those are on, still shows the real crash).
//
// Function names in the backtrace come from the program's dynamic symbol table (the executable is
// linked with -rdynamic); functions with internal linkage show as the nearest exported one plus an
// offset, or as a bare address.
namespace CrashHandler {

// Prepares the texts and the stack and installs the handler for the five signals. Call once, early
// in main(), on the main thread. `logPath` is the crash log's full path; `buildVersion` names the
// build, as "Quillory 1.0.0".
bool install(const QString &logPath, const QString &buildVersion);

} // namespace CrashHandler
