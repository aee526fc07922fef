#include "exchange/ChunkWriter.h"

#include <QFileDevice>
#include <QIODevice>

#include <fcntl.h>

#include <system_error>

namespace {
// Three buffers: one being filled, one being written, one ready for whichever side comes first.
constexpr int Buffers = 3;
} // namespace

ChunkWriter::ChunkWriter(QIODevice *sink, qsizetype chunkBytes)
    : m_sink(sink)
    , m_file(qobject_cast<QFileDevice *>(sink))
{
    for (int i = 0; i < Buffers - 1; ++i)
        m_free.emplace_back(chunkBytes, Qt::Uninitialized);
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::system_error &) {
        // No thread to be had (a process at its limit): the chunks are written as they come.
    }
}

ChunkWriter::~ChunkWriter()
{
    finish();
}

QByteArray ChunkWriter::exchange(QByteArray filled, qsizetype used)
{
    if (!m_thread.joinable()) {
        m_failed = m_failed || !write(filled.constData(), used);
        return filled;
    }
    std::unique_lock lock(m_mutex);
    m_queued.emplace_back(std::move(filled), used);
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !m_free.empty(); });
    QByteArray empty = std::move(m_free.back());
    m_free.pop_back();
    return empty;
}

bool ChunkWriter::finish()
{
    {
        std::unique_lock lock(m_mutex);
        m_finishing = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
    return !m_failed;
}

bool ChunkWriter::write(const char *bytes, qsizetype size)
{
    if (m_sink->write(bytes, size) != size)
        return false;
    // A file is to be flushed to the disk when it is committed; starting the disk's work on each
    // chunk now lets it go on while the next chunks are made, instead of all of it being waited for
    // at the end.
    if (m_file && m_file->flush()) {
        const int descriptor = m_file->handle();
        if (descriptor >= 0)
            ::sync_file_range(descriptor, m_written, size, SYNC_FILE_RANGE_WRITE);
    }
    m_written += size;
    return true;
}

void ChunkWriter::run()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return !m_queued.empty() || m_finishing; });
        if (m_queued.empty())
            return; // finishing, and everything is written
        auto [bytes, used] = std::move(m_queued.front());
        m_queued.pop_front();
        const bool skip = m_failed;
        lock.unlock();
        const bool ok = skip || write(bytes.constData(), used);
        lock.lock();
        m_failed = m_failed || !ok;
        m_free.push_back(std::move(bytes));
        m_changed.notify_all();
    }
}
