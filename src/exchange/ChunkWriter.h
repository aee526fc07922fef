#pragma once

#include <QByteArray>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <vector>

class QFileDevice;
class QIODevice;

// Writes chunks of a long text to a device on a thread of its own, so that making the next chunk
// and handing the last one to the system go on at the same time. A few buffers go round between
// the two: the maker blocks only when every one of them is waiting to be written.
//
// The device is written from the writer's thread only, and not touched there after finish().
class ChunkWriter
{
public:
    ChunkWriter(QIODevice *sink, qsizetype chunkBytes);
    ~ChunkWriter();
    ChunkWriter(const ChunkWriter &) = delete;
    ChunkWriter &operator=(const ChunkWriter &) = delete;

    // Queues the first `used` bytes of `filled` for writing and gives back an empty buffer of at
    // least the chunk's size.
    QByteArray exchange(QByteArray filled, qsizetype used);
    // Waits until everything queued is written; false when any write failed. Once one has failed,
    // the rest is dropped unwritten.
    bool finish();

private:
    void run();
    bool write(const char *bytes, qsizetype size);

    QIODevice *m_sink;
    QFileDevice *m_file; // the sink when it is a file, for starting its flush to the disk early
    qint64 m_written = 0; // bytes written so far, where the next chunk goes in the file
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::pair<QByteArray, qsizetype>> m_queued;
    std::vector<QByteArray> m_free;
    bool m_writing = false;
    bool m_finishing = false;
    bool m_failed = false;
    std::thread m_thread;
};
