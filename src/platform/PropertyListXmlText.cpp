#include "platform/PropertyListXmlText.h"

#include <QStringDecoder>

#include <charconv>
#include <cstring>

namespace {

// Short strings (keys, course names, types, grades) repeat across records: they are made once and
// shared, which saves an allocation per value and a good part of the result's memory.
constexpr qsizetype InternMaxSize = 32;
constexpr quint32 InternSlots = 1024;

const QString &emptyString()
{
    // Not a null QString: a value that is present but empty must stay distinguishable from an
    // absent one.
    static const QString empty = QStringLiteral("");
    return empty;
}

} // namespace

struct PropertyListXmlText::InternCache {
    struct Slot {
        QString value;
        quint32 hash = 0;
        qsizetype size = -1;
        char bytes[InternMaxSize];
    };
    Slot slots[InternSlots];
};

PropertyListXmlText::PropertyListXmlText() = default;

PropertyListXmlText::~PropertyListXmlText() = default;

// Whether the bytes are UTF-8 text that XML can hold as it is. Almost all text is printable ASCII,
// which a branch-free pass settles; only the rest is decoded.
bool PropertyListXmlText::writableUtf8(const char *data, qsizetype size)
{
    const auto *p = reinterpret_cast<const quint8 *>(data);
    bool plain = true;
    for (qsizetype i = 0; i < size; ++i) {
        const quint8 c = p[i];
        plain &= ((c >= 0x20) & (c < 0x80)) | (c == '\t') | (c == '\n') | (c == '\r');
    }
    if (plain)
        return true;
    for (qsizetype i = 0; i < size;) {
        const quint8 c = p[i];
        if (c < 0x80) {
            if (c < 0x20 && c != '\t' && c != '\n' && c != '\r')
                return false;
            ++i;
            continue;
        }
        int extra = 0;
        char32_t code = 0;
        char32_t least = 0;
        if (c >= 0xC2 && c <= 0xDF) {
            extra = 1;
            code = c & 0x1F;
            least = 0x80;
        } else if (c >= 0xE0 && c <= 0xEF) {
            extra = 2;
            code = c & 0x0F;
            least = 0x800;
        } else if (c >= 0xF0 && c <= 0xF4) {
            extra = 3;
            code = c & 0x07;
            least = 0x10000;
        } else {
            return false;
        }
        if (size - i <= extra)
            return false;
        for (int k = 1; k <= extra; ++k) {
            if ((p[i + k] & 0xC0) != 0x80)
                return false;
            code = (code << 6) | (p[i + k] & 0x3F);
        }
        if (code < least || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF) || code == 0xFFFE || code == 0xFFFF)
            return false;
        i += extra + 1;
    }
    return true;
}

// UTF-8 to QString, keeping a leading U+FEFF: QString::fromUtf8 takes it for a byte-order mark and
// drops it, so a string that starts with one would lose it on every read.
QString PropertyListXmlText::fromUtf8(const char *data, qsizetype size)
{
    if (size >= 3 && std::memcmp(data, "\xEF\xBB\xBF", 3) == 0) {
        QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::ConvertInitialBom);
        return decoder(QByteArrayView(data, size));
    }
    return QString::fromUtf8(data, size);
}

QString PropertyListXmlText::make(const char *data, qsizetype size)
{
    if (size == 0)
        return emptyString();
    if (!m_textWillChange && !writableUtf8(data, size))
        m_textWillChange = true;
    if (size > InternMaxSize)
        return fromUtf8(data, size);
    quint32 hash = 2166136261u;
    for (qsizetype i = 0; i < size; ++i)
        hash = (hash ^ quint8(data[i])) * 16777619u;
    if (!m_intern)
        m_intern = std::make_unique<InternCache>();
    InternCache::Slot &slot = m_intern->slots[hash & (InternSlots - 1)];
    if (slot.hash != hash || slot.size != size || std::memcmp(slot.bytes, data, size_t(size)) != 0) {
        slot.value = fromUtf8(data, size);
        slot.hash = hash;
        slot.size = size;
        std::memcpy(slot.bytes, data, size_t(size));
    }
    return slot.value;
}

PropertyListXmlText::Entity PropertyListXmlText::appendEntity(std::string_view entity, std::string &out)
{
    if (entity == "amp") {
        out += '&';
    } else if (entity == "lt") {
        out += '<';
    } else if (entity == "gt") {
        out += '>';
    } else if (entity == "quot") {
        out += '"';
    } else if (entity == "apos") {
        out += '\'';
    } else if (entity.size() >= 2 && entity[0] == '#') {
        const bool hex = entity[1] == 'x';
        const char *first = entity.data() + (hex ? 2 : 1);
        const char *last = entity.data() + entity.size();
        quint32 code = 0;
        const auto result = std::from_chars(first, last, code, hex ? 16 : 10);
        if (first == last || result.ec != std::errc() || result.ptr != last || code == 0 || code > 0x10FFFF
            || (code >= 0xD800 && code <= 0xDFFF))
            return Entity::InvalidReference;
        if (code < 0x80) {
            out += char(code);
        } else if (code < 0x800) {
            out += char(0xC0 | (code >> 6));
            out += char(0x80 | (code & 0x3F));
        } else if (code < 0x10000) {
            out += char(0xE0 | (code >> 12));
            out += char(0x80 | ((code >> 6) & 0x3F));
            out += char(0x80 | (code & 0x3F));
        } else {
            out += char(0xF0 | (code >> 18));
            out += char(0x80 | ((code >> 12) & 0x3F));
            out += char(0x80 | ((code >> 6) & 0x3F));
            out += char(0x80 | (code & 0x3F));
        }
    } else {
        return Entity::Unknown;
    }
    return Entity::Appended;
}
