#pragma once

#include <QByteArray>
#include <QString>

#include <functional>

class QIODevice;

// The text of an export as it is made: pieces are appended to a UTF-16 string, and for a file the
// string is turned into UTF-8 and written a chunk at a time, so a long export holds one chunk of
// its text and not the whole of it twice over (once in UTF-16, once in UTF-8).
//
// A chunk is cut only where an entry ends, never inside one: the text is encoded exactly as the
// whole would be, a character written as two UTF-16 units never being split between two chunks.
class ExportText
{
public:
    // The whole text kept in memory, taken with takeUtf8().
    ExportText() = default;
    // The text written to `device` in chunks; finish() writes the rest.
    explicit ExportText(QIODevice *device);
    ExportText(const ExportText &) = delete;
    ExportText &operator=(const ExportText &) = delete;

    // Where the pieces go.
    QString &text() { return m_text; }
    // Marks the end of an entry: a full chunk is written to the device here.
    void entryEnd()
    {
        if (m_device && m_text.size() >= ChunkCharacters)
            writeChunk();
    }
    // Writes what is left to the device; false when any write to it failed. After a failure
    // nothing more is written.
    bool finish();
    // The text in UTF-8, as a file would hold it; the text is empty afterwards.
    QByteArray takeUtf8();

    // Writes the text that `make` appends to `path` atomically: whatever was at `path` stays whole
    // unless the new text was written in full. False, with the reason in `error`, on failure.
    static bool writeFile(const QString &path, const std::function<void(ExportText &)> &make,
                          QString *error = nullptr);

private:
    // Large enough that the writes cost nothing beside the making, small enough to stay in the
    // cache between being made and being encoded.
    static constexpr qsizetype ChunkCharacters = 32 * 1024;

    void writeChunk();

    QString m_text;
    QIODevice *m_device = nullptr;
    bool m_failed = false;
};
