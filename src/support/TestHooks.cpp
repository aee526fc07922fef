#include "support/TestHooks.h"

#include <QByteArray>
#include <QtGlobal>

#include <cstdint>
#include <cstdlib>

namespace {
volatile int g_sink = 0;
// Not null: a sanitizer build would stop a store through null itself, before any signal; nothing is
// ever mapped at address 16, so this is a real fault in every build.
int *volatile g_nowhere = reinterpret_cast<int *>(std::uintptr_t{16});
} // namespace

namespace TestHooks {

bool enabled()
{
    return qgetenv("QUILLORY_TEST_HOOKS") == "1";
}

bool altHeld()
{
    return enabled() && qgetenv("QUILLORY_TEST_ALT_HELD") == "1";
}

void crashIfAsked()
{
    if (!enabled())
        return;
    const QByteArray kind = qgetenv("QUILLORY_TEST_CRASH");
    if (kind == "segv")
        crashWithSegmentationFault();
    else if (kind == "abort")
        crashWithAbort();
    else if (kind == "overflow")
        g_sink = crashWithStackOverflow(0);
}

void crashWithSegmentationFault()
{
    // Through a volatile pointer: the compiler cannot see its value, so this is a real fault rather
    // than a trap instruction it put in.
    *g_nowhere = 42;
    g_sink = 1;
}

void crashWithAbort()
{
    std::abort();
}

int crashWithStackOverflow(int depth)
{
    // A frame that cannot be folded away, recursing without end.
    volatile char frame[4096];
    if (g_sink == -1)
        return 0;
    frame[0] = char(depth);
    frame[sizeof frame - 1] = char(depth);
    return crashWithStackOverflow(depth + 1) + frame[0] + frame[sizeof frame - 1];
}

} // namespace TestHooks
