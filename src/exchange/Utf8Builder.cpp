#include "exchange/Utf8Builder.h"

#include "exchange/ChunkWriter.h"

#include <QIODevice>
#include <QSaveFile>

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

Utf8Builder::Utf8Builder(qsizetype expectedBytes)
{
    adopt(QByteArray(std::max<qsizetype>(expectedBytes, 64), Qt::Uninitialized));
}

void Utf8Builder::adopt(QByteArray bytes)
{
    m_bytes = std::move(bytes);
    m_data = m_bytes.data();
    m_capacity = m_bytes.size();
}

namespace {
// Small enough to stay in the cache between being written and being copied out, large enough that
// the system calls do not count.
constexpr qsizetype ChunkBytes = 128 * 1024;
} // namespace

Utf8Builder::Utf8Builder(QIODevice *sink)
    : m_writer(std::make_unique<ChunkWriter>(sink, ChunkBytes))
{
    adopt(QByteArray(ChunkBytes, Qt::Uninitialized));
}

Utf8Builder::~Utf8Builder() = default;

void Utf8Builder::flush()
{
    if (m_used > 0)
        adopt(m_writer->exchange(std::move(m_bytes), m_used));
    m_used = 0;
}

void Utf8Builder::makeRoom(qsizetype bytes)
{
    if (m_writer)
        flush();
    // One piece longer than the chunk (a very long note) gets room of its own.
    if (m_used + bytes > m_capacity) {
        m_bytes.resize(std::max(m_capacity * 2, m_used + bytes));
        adopt(std::move(m_bytes));
    }
}

bool Utf8Builder::writeFile(const QString &path, const std::function<void(Utf8Builder &)> &make, QString *error)
{
    QSaveFile file(path);
    bool written = false;
    if (file.open(QIODevice::WriteOnly)) {
        Utf8Builder out(&file);
        make(out);
        if (out.finish())
            written = file.commit();
        else
            file.cancelWriting();
    }
    if (!written && error)
        *error = file.errorString();
    return written;
}

bool Utf8Builder::finish()
{
    if (!m_writer)
        return true;
    flush();
    return m_writer->finish();
}

Utf8Builder &Utf8Builder::operator+=(QStringView text)
{
    // Encoded here, character by character: the pieces are short, and the general encoder's set-up
    // for each one cost more than the encoding.
    char *const start = room(3 * text.size());
    char *out = start;
    const char16_t *from = text.utf16();
    const char16_t *const end = from + text.size();
    while (from != end) {
#if defined(__SSE2__)
        // Runs of plain ASCII, eight characters at a time.
        while (end - from >= 8) {
            const __m128i chunk = _mm_loadu_si128(reinterpret_cast<const __m128i *>(from));
            const __m128i high = _mm_and_si128(chunk, _mm_set1_epi16(short(0xFF80)));
            if (_mm_movemask_epi8(_mm_cmpeq_epi16(high, _mm_setzero_si128())) != 0xFFFF)
                break;
            _mm_storel_epi64(reinterpret_cast<__m128i *>(out), _mm_packus_epi16(chunk, chunk));
            out += 8;
            from += 8;
        }
        if (from == end)
            break;
#endif
        const char16_t c = *from;
        if (c < 0x80) {
            *out++ = char(c);
            ++from;
        } else if (c < 0x800) {
            *out++ = char(0xC0 | (c >> 6));
            *out++ = char(0x80 | (c & 0x3F));
            ++from;
        } else if (!QChar::isSurrogate(c)) {
            *out++ = char(0xE0 | (c >> 12));
            *out++ = char(0x80 | ((c >> 6) & 0x3F));
            *out++ = char(0x80 | (c & 0x3F));
            ++from;
        } else if (QChar::isHighSurrogate(c) && end - from >= 2 && QChar::isLowSurrogate(from[1])) {
            const char32_t code = QChar::surrogateToUcs4(c, from[1]);
            *out++ = char(0xF0 | (code >> 18));
            *out++ = char(0x80 | ((code >> 12) & 0x3F));
            *out++ = char(0x80 | ((code >> 6) & 0x3F));
            *out++ = char(0x80 | (code & 0x3F));
            from += 2;
        } else {
            *out++ = '?'; // a lone surrogate, as QString::toUtf8() writes it
            ++from;
        }
    }
    m_used += out - start;
    return *this;
}

Utf8Builder &Utf8Builder::appendWide(QLatin1Char c)
{
    const char16_t wide = c.unicode();
    return *this += QStringView(&wide, 1);
}

QByteArray Utf8Builder::take()
{
    m_bytes.truncate(m_used);
    QByteArray bytes = std::exchange(m_bytes, QByteArray());
    m_data = nullptr;
    m_capacity = 0;
    m_used = 0;
    return bytes;
}
