#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <functional>
#include <memory>

class ChunkWriter;
class QIODevice;

// A long text built straight into UTF-8: each piece is encoded as it is appended, so no UTF-16 copy
// of the whole text (twice its size) is built and converted at the end.
//
// Built for a file, the text goes out in chunks as it grows, written on another thread while the
// next chunk is made: the whole file is never held in memory, and the writing mostly overlaps the
// making.
class Utf8Builder
{
public:
    // The whole text in memory, taken at the end.
    explicit Utf8Builder(qsizetype expectedBytes);
    // The text written to `sink` as it grows; finish() writes the rest.
    explicit Utf8Builder(QIODevice *sink);
    ~Utf8Builder();
    Utf8Builder(const Utf8Builder &) = delete;
    Utf8Builder &operator=(const Utf8Builder &) = delete;

    Utf8Builder &operator+=(QStringView text);
    Utf8Builder &operator+=(const QString &text) { return *this += QStringView(text); }
    Utf8Builder &operator+=(QLatin1Char c)
    {
        if (c.unicode() >= 0x80)
            return appendWide(c);
        *room(1) = c.toLatin1();
        ++m_used;
        return *this;
    }

    // Writes the text `make` appends to `path` atomically, streamed as it is made; false, with the
    // reason in `error`, when the file could not be written (whatever was at `path` stays as it was).
    static bool writeFile(const QString &path, const std::function<void(Utf8Builder &)> &make,
                          QString *error = nullptr);

    // The bytes; the builder is empty afterwards.
    QByteArray take();
    // Writes what is left to the sink and waits for all of it to be written; false when any write
    // to it failed. Once a write has failed, nothing more is written.
    bool finish();

private:
    char *room(qsizetype bytes)
    {
        if (m_used + bytes > m_capacity)
            makeRoom(bytes);
        return m_data + m_used;
    }
    void makeRoom(qsizetype bytes);
    void flush();
    // Takes `bytes` as the buffer, keeping its address and size at hand: the appends are many and
    // short, and asking the array each time (which checks whether it is shared) showed.
    void adopt(QByteArray bytes);
    Utf8Builder &appendWide(QLatin1Char c);

    QByteArray m_bytes;
    char *m_data = nullptr;
    qsizetype m_capacity = 0;
    qsizetype m_used = 0;
    std::unique_ptr<ChunkWriter> m_writer;
};
