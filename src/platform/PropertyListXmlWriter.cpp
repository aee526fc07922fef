#include "platform/PropertyListXmlWriter.h"

#include <QAssociativeIterable>
#include <QDateTime>
#include <QLoggingCategory>
#include <QSequentialIterable>
#include <QStringList>
#include <QVariantHash>
#include <QVariantList>
#include <QVariantMap>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

Q_LOGGING_CATEGORY(lcPropertyListWriter, "quillory.platform")

// Base64 characters per line inside <data>, as property-list writers have always wrapped them.
constexpr qsizetype DataLineLength = 76;
constexpr qsizetype DataLineBytes = DataLineLength / 4 * 3;
constexpr char Base64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
// Bytes collected before a write to the device.
constexpr qsizetype FlushSize = qsizetype(1) << 20;

// Two base64 characters for each 12 bits at once: half the lookups of the 6-bit alphabet.
const std::array<quint16, 4096> &base64Pairs()
{
    static const auto table = [] {
        std::array<quint16, 4096> pairs{};
        for (int i = 0; i < 4096; ++i) {
            const char two[2] = {Base64Alphabet[i >> 6], Base64Alphabet[i & 0x3F]};
            std::memcpy(&pairs[size_t(i)], two, 2);
        }
        return pairs;
    }();
    return table;
}

// ASCII that is not copied as it stands: markup characters to escape, and the control characters
// that XML 1.0 does not allow (all below 0x20 but tab and line feed; the carriage return is written
// as a reference, because XML readers turn a raw one into a line feed).
constexpr std::array<bool, 128> NeedsEscape = [] {
    std::array<bool, 128> table{};
    for (int c = 0; c < 0x20; ++c)
        table[size_t(c)] = c != '\t' && c != '\n';
    table['&'] = table['<'] = table['>'] = true;
    return table;
}();

// The years a property-list date can hold: "YYYY-MM-DDTHH:MM:SSZ" has four digits, and year 0 is
// not a year.
constexpr int FirstWritableYear = 1;
constexpr int LastWritableYear = 9999;

char *encodeGroup(char *d, quint32 triple, const std::array<quint16, 4096> &pairs)
{
    std::memcpy(d, &pairs[(triple >> 12) & 0xFFF], 2);
    std::memcpy(d + 2, &pairs[triple & 0xFFF], 2);
    return d + 4;
}

} // namespace

PropertyListXmlWriter::PropertyListXmlWriter(QByteArray &out, QIODevice *device)
    : m_out(out)
    , m_device(device)
{
    // The array's whole capacity becomes writable; its size is settled in the destructor.
    const qsizetype used = out.size();
    out.resize(std::max(out.capacity(), used + 4096));
    m_p = out.data() + used;
    m_end = out.data() + out.size();
}

PropertyListXmlWriter::~PropertyListXmlWriter()
{
    m_out.resize(m_p - m_out.constData());
}

void PropertyListXmlWriter::grow(qsizetype bytes)
{
    qsizetype used = m_p - m_out.constData();
    if (m_device && used >= FlushSize) {
        flush();
        used = 0;
        if (m_end - m_p >= bytes)
            return;
    }
    m_out.resize(std::max(m_out.size() * 2, used + bytes));
    m_p = m_out.data() + used;
    m_end = m_out.data() + m_out.size();
}

void PropertyListXmlWriter::raw(QByteArrayView bytes)
{
    std::memcpy(room(bytes.size()), bytes.data(), size_t(bytes.size()));
    m_p += bytes.size();
}

bool PropertyListXmlWriter::flush()
{
    if (!m_device)
        return true;
    const qsizetype used = m_p - m_out.constData();
    if (used > 0 && !m_deviceFailed && m_device->write(m_out.constData(), used) != used)
        m_deviceFailed = true;
    m_p = m_out.data();
    return !m_deviceFailed;
}

void PropertyListXmlWriter::tabs(int depth)
{
    if (depth <= 0)
        return;
    std::memset(room(depth), '\t', size_t(depth));
    m_p += depth;
}

// UTF-16 to UTF-8 with &, < and > escaped, in one pass straight into the output.
void PropertyListXmlWriter::escaped(QStringView text)
{
    const qsizetype length = text.size();
    char *d = room(length * 5);
    const char16_t *s = text.utf16();
    // Most text is plain ASCII with nothing to escape: two branch-free passes (a check, then a
    // narrowing copy) that the compiler vectorises beat one branchy pass over each character.
    bool plain = true;
    for (qsizetype i = 0; i < length; ++i) {
        const char16_t c = s[i];
        plain &= (c < 0x80) & ((c >= 0x20) | (c == '\t') | (c == '\n')) & (c != '&') & (c != '<') & (c != '>');
    }
    if (plain) {
        for (qsizetype i = 0; i < length; ++i)
            d[i] = char(s[i]);
        m_p = d + length;
        return;
    }
    for (qsizetype i = 0; i < length; ++i) {
        const char16_t c = s[i];
        if (c < 0x80) {
            if (!NeedsEscape[c]) {
                *d++ = char(c);
            } else if (c == '&') {
                std::memcpy(d, "&amp;", 5);
                d += 5;
            } else if (c == '<' || c == '>') {
                std::memcpy(d, c == '<' ? "&lt;" : "&gt;", 4);
                d += 4;
            } else if (c == '\r') {
                std::memcpy(d, "&#13;", 5);
                d += 5;
            }
            // Any other control character has no form in XML 1.0, not even as a reference.
        } else if (c < 0x800) {
            *d++ = char(0xC0 | (c >> 6));
            *d++ = char(0x80 | (c & 0x3F));
        } else if (QChar::isHighSurrogate(c) && i + 1 < length && QChar::isLowSurrogate(s[i + 1])) {
            const char32_t code = QChar::surrogateToUcs4(c, s[++i]);
            *d++ = char(0xF0 | (code >> 18));
            *d++ = char(0x80 | ((code >> 12) & 0x3F));
            *d++ = char(0x80 | ((code >> 6) & 0x3F));
            *d++ = char(0x80 | (code & 0x3F));
        } else if (c < 0xFFFE) {
            // A lone surrogate has no UTF-8 form; it becomes the replacement character.
            const char16_t unit = QChar::isSurrogate(c) ? char16_t(0xFFFD) : c;
            *d++ = char(0xE0 | (unit >> 12));
            *d++ = char(0x80 | ((unit >> 6) & 0x3F));
            *d++ = char(0x80 | (unit & 0x3F));
        }
        // U+FFFE and U+FFFF are not characters XML allows: left out.
    }
    m_p = d;
}

void PropertyListXmlWriter::string(QStringView text, int depth)
{
    tabs(depth);
    literal("<string>");
    escaped(text);
    literal("</string>\n");
}

void PropertyListXmlWriter::number(std::string_view open, const char *text, qsizetype length,
                                   std::string_view close, int depth)
{
    tabs(depth);
    char *d = room(qsizetype(open.size() + close.size()) + length);
    std::memcpy(d, open.data(), open.size());
    d += open.size();
    std::memcpy(d, text, size_t(length));
    d += length;
    std::memcpy(d, close.data(), close.size());
    m_p = d + close.size();
}

void PropertyListXmlWriter::integer(qint64 value, int depth)
{
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    number("<integer>", buffer, result.ptr - buffer, "</integer>\n", depth);
}

void PropertyListXmlWriter::unsignedInteger(quint64 value, int depth)
{
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
    number("<integer>", buffer, result.ptr - buffer, "</integer>\n", depth);
}

namespace {

// The shortest text that reads back to the same number, whatever the locale; "nan", "inf" and
// "-inf" for the values that have no digits.
template<typename Real>
qsizetype realText(char (&buffer)[48], Real value)
{
    if (std::isnan(value)) {
        std::memcpy(buffer, "nan", 3);
        return 3;
    }
    if (std::isinf(value)) {
        std::memcpy(buffer, value > 0 ? "inf" : "-inf", value > 0 ? 3 : 4);
        return value > 0 ? 3 : 4;
    }
    return std::to_chars(buffer, buffer + sizeof buffer, value).ptr - buffer;
}

} // namespace

void PropertyListXmlWriter::real(double value, int depth)
{
    char buffer[48];
    number("<real>", buffer, realText(buffer, value), "</real>\n", depth);
}

void PropertyListXmlWriter::realFromFloat(float value, int depth)
{
    // A float's own shortest text (0.1, not 0.10000000149011612): what the program meant.
    char buffer[48];
    number("<real>", buffer, realText(buffer, value), "</real>\n", depth);
}

void PropertyListXmlWriter::date(const QDateTime &dateTime, int depth)
{
    QDateTime utc = dateTime.toUTC();
    const int year = utc.date().year();
    if (year < FirstWritableYear || year > LastWritableYear) {
        m_wroteUnreadable = true;
        qCWarning(lcPropertyListWriter) << "A date outside the years 1 to 9999 cannot be written; the nearest one is"
                                        << "written instead:" << utc;
        utc = year < FirstWritableYear ? QDateTime(QDate(FirstWritableYear, 1, 1), QTime(0, 0), Qt::UTC)
                                       : QDateTime(QDate(LastWritableYear, 12, 31), QTime(23, 59, 59), Qt::UTC);
    }
    const QDate day = utc.date();
    const QTime time = utc.time();
    char buffer[64];
    const int length = std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02dZ", day.year(),
                                     day.month(), day.day(), time.hour(), time.minute(), time.second());
    number("<date>", buffer, length, "</date>\n", depth);
}

void PropertyListXmlWriter::data(const QByteArray &bytes, int depth)
{
    tabs(depth);
    literal("<data>\n");
    const qsizetype size = bytes.size();
    const qsizetype lines = (size + DataLineBytes - 1) / DataLineBytes;
    char *d = room(lines * (DataLineLength + depth + 1));
    const auto *s = reinterpret_cast<const quint8 *>(bytes.constData());
    const auto &pairs = base64Pairs();
    qsizetype i = 0;
    // Whole lines: 57 bytes make 76 characters.
    for (; i + DataLineBytes <= size; i += DataLineBytes) {
        std::memset(d, '\t', size_t(depth));
        d += depth;
        for (qsizetype j = i; j < i + DataLineBytes; j += 3)
            d = encodeGroup(d, (quint32(s[j]) << 16) | (quint32(s[j + 1]) << 8) | s[j + 2], pairs);
        *d++ = '\n';
    }
    if (i < size) {
        std::memset(d, '\t', size_t(depth));
        d += depth;
        for (; i + 3 <= size; i += 3)
            d = encodeGroup(d, (quint32(s[i]) << 16) | (quint32(s[i + 1]) << 8) | s[i + 2], pairs);
        if (i < size) {
            const quint32 b = i + 1 < size ? s[i + 1] : 0;
            d = encodeGroup(d, (quint32(s[i]) << 16) | (b << 8), pairs);
            d[-1] = '=';
            if (i + 1 >= size)
                d[-2] = '=';
        }
        *d++ = '\n';
    }
    m_p = d;
    tabs(depth);
    literal("</data>\n");
}

void PropertyListXmlWriter::list(const QVariantList &items, int depth)
{
    tabs(depth);
    if (items.isEmpty()) {
        literal("<array/>\n");
        return;
    }
    literal("<array>\n");
    for (const QVariant &item : items)
        value(item, depth + 1);
    tabs(depth);
    literal("</array>\n");
}

void PropertyListXmlWriter::stringList(const QStringList &items, int depth)
{
    tabs(depth);
    if (items.isEmpty()) {
        literal("<array/>\n");
        return;
    }
    literal("<array>\n");
    for (const QString &item : items)
        string(item, depth + 1);
    tabs(depth);
    literal("</array>\n");
}

void PropertyListXmlWriter::entry(QStringView key, const QVariant &item, int depth)
{
    tabs(depth);
    literal("<key>");
    escaped(key);
    literal("</key>\n");
    value(item, depth);
}

void PropertyListXmlWriter::beginDictionary(int depth)
{
    tabs(depth);
    literal("<dict>\n");
}

void PropertyListXmlWriter::endDictionary(int depth)
{
    tabs(depth);
    literal("</dict>\n");
}

void PropertyListXmlWriter::emptyDictionary(int depth)
{
    tabs(depth);
    literal("<dict/>\n");
}

// A key without a value (an invalid QVariant) is left out of a dictionary: an empty field is an
// absent key.
void PropertyListXmlWriter::map(const QVariantMap &entries, int depth)
{
    tabs(depth);
    auto first = entries.cbegin();
    while (first != entries.cend() && !first.value().isValid())
        ++first;
    if (first == entries.cend()) {
        literal("<dict/>\n");
        return;
    }
    literal("<dict>\n");
    // QMap iterates in key order, the order property lists keep.
    for (auto it = first; it != entries.cend(); ++it) {
        if (it.value().isValid())
            entry(it.key(), it.value(), depth + 1);
    }
    tabs(depth);
    literal("</dict>\n");
}

void PropertyListXmlWriter::hash(const QVariantHash &entries, int depth)
{
    // Written in key order like a map, so the same contents always give the same bytes.
    std::vector<QVariantHash::const_iterator> sorted;
    sorted.reserve(size_t(entries.size()));
    for (auto it = entries.cbegin(); it != entries.cend(); ++it) {
        if (it.value().isValid())
            sorted.push_back(it);
    }
    tabs(depth);
    if (sorted.empty()) {
        literal("<dict/>\n");
        return;
    }
    std::sort(sorted.begin(), sorted.end(), [](const auto &a, const auto &b) { return a.key() < b.key(); });
    literal("<dict>\n");
    for (const auto &it : sorted)
        entry(it.key(), it.value(), depth + 1);
    tabs(depth);
    literal("</dict>\n");
}

void PropertyListXmlWriter::value(const QVariant &item, int depth)
{
    switch (item.typeId()) {
    case QMetaType::QString:
        string(*static_cast<const QString *>(item.constData()), depth);
        return;
    case QMetaType::Double:
        real(*static_cast<const double *>(item.constData()), depth);
        return;
    case QMetaType::Bool:
        tabs(depth);
        if (item.toBool())
            literal("<true/>\n");
        else
            literal("<false/>\n");
        return;
    case QMetaType::QVariantMap:
        map(*static_cast<const QVariantMap *>(item.constData()), depth);
        return;
    case QMetaType::QVariantList:
        list(*static_cast<const QVariantList *>(item.constData()), depth);
        return;
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
        integer(item.toLongLong(), depth);
        return;
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
    case QMetaType::UChar:
        unsignedInteger(item.toULongLong(), depth);
        return;
    case QMetaType::Float:
        realFromFloat(item.value<float>(), depth);
        return;
    case QMetaType::QByteArray:
        data(*static_cast<const QByteArray *>(item.constData()), depth);
        return;
    case QMetaType::QDateTime: {
        const QDateTime dateTime = item.toDateTime();
        if (dateTime.isValid())
            date(dateTime, depth);
        else
            string(QStringView(), depth);
        return;
    }
    case QMetaType::QDate: {
        // A day on its own is that day's midnight, UTC.
        const QDate day = item.toDate();
        if (day.isValid())
            date(day.startOfDay(Qt::UTC), depth);
        else
            string(QStringView(), depth);
        return;
    }
    case QMetaType::QStringList:
        stringList(*static_cast<const QStringList *>(item.constData()), depth);
        return;
    case QMetaType::QVariantHash:
        hash(*static_cast<const QVariantHash *>(item.constData()), depth);
        return;
    default:
        break;
    }
    // Anything else that Qt can see as a map, a list or text (QByteArrayList, QUrl, QChar, ...).
    if (QMetaType::canView(item.metaType(), QMetaType::fromType<QAssociativeIterable>())) {
        map(item.toMap(), depth);
        return;
    }
    if (QMetaType::canView(item.metaType(), QMetaType::fromType<QSequentialIterable>())) {
        list(item.toList(), depth);
        return;
    }
    if (item.isValid() && item.canConvert<QString>()) {
        string(item.toString(), depth);
        return;
    }
    qCWarning(lcPropertyListWriter) << "No property-list form for a value of type" << item.metaType().name()
                                    << "- written as an empty string";
    string(QStringView(), depth);
}
