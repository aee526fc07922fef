#include "platform/Clock.h"

#include <mutex>
#include <optional>

namespace {
std::mutex g_mutex;
std::optional<QDateTime> g_pinned;
} // namespace

QDateTime Clock::now()
{
    {
        std::lock_guard lock(g_mutex);
        if (g_pinned)
            return g_pinned->toLocalTime();
    }
    return QDateTime::currentDateTime();
}

double Clock::secondsSince1970()
{
    return double(now().toMSecsSinceEpoch()) / 1000.0;
}

void Clock::pin(const QDateTime &instant)
{
    std::lock_guard lock(g_mutex);
    g_pinned = instant;
}

void Clock::unpin()
{
    std::lock_guard lock(g_mutex);
    g_pinned.reset();
}

bool Clock::isPinned()
{
    std::lock_guard lock(g_mutex);
    return g_pinned.has_value();
}
