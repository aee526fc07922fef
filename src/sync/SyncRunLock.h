#pragma once

// Syncs share fixed temporary paths, so one runs at a time in the whole program. A sequence asked
// for while another runs either waits (begin) or is refused (tryBegin). On the interface thread the
// wait keeps serving events other than user input, because the running sync may be on a worker that
// hands its progress sheet and alerts to that thread.
class SyncRunLock
{
public:
    SyncRunLock() = delete;

    static bool tryBegin();
    static void begin();
    static void end();
    static bool isHeld();
};
