#include "sync/SyncRunLock.h"

#include <QCoreApplication>
#include <QThread>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace {
std::mutex g_mutex;
std::condition_variable g_ended;
bool g_held = false;
} // namespace

bool SyncRunLock::tryBegin()
{
    std::lock_guard lock(g_mutex);
    if (g_held)
        return false;
    g_held = true;
    return true;
}

void SyncRunLock::begin()
{
    QCoreApplication *app = QCoreApplication::instance();
    const bool onInterfaceThread = app && QThread::currentThread() == app->thread();
    std::unique_lock lock(g_mutex);
    while (g_held) {
        if (!onInterfaceThread) {
            g_ended.wait(lock);
            continue;
        }
        lock.unlock();
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        lock.lock();
        g_ended.wait_for(lock, std::chrono::milliseconds(20));
    }
    g_held = true;
}

void SyncRunLock::end()
{
    {
        std::lock_guard lock(g_mutex);
        g_held = false;
    }
    g_ended.notify_all();
}

bool SyncRunLock::isHeld()
{
    std::lock_guard lock(g_mutex);
    return g_held;
}
