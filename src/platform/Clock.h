#pragma once

#include <QDateTime>

// The one source of "now" in the program. Tests pin it to a fixed instant; the running program reads
// the system clock. Safe to call from any thread.
class Clock
{
public:
    static QDateTime now();
    // Seconds since 1970-01-01 00:00:00 UTC, with fraction.
    static double secondsSince1970();

    static void pin(const QDateTime &instant);
    static void unpin();
    static bool isPinned();
};
