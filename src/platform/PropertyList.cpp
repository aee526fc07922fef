#include "platform/PropertyList.h"

#include "platform/PropertyListBinaryReader.h"
#include "platform/PropertyListXmlReader.h"

#include <QDateTime>
#include <QFile>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QStringList>
#include <QTimeZone>
#include <QVariantHash>
#include <QVariantList>
#include <QVariantMap>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <vector>

namespace {

Q_LOGGING_CATEGORY(lcPropertyList, "quillory.platform")

const char DocumentHeader[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                              "<plist version=\"1.0\">\n";
const char DocumentFooter[] = "</plist>\n";
// Base64 characters per line inside <data>, as property-list writers have always wrapped them.
constexpr qsizetype DataLineLength = 76;
// Files above this size are mapped rather than read, so that the reader can drop the pages it has
// passed instead of holding a second copy of the whole file.
constexpr qint64 MapThreshold = qint64(1) << 20;

// Makes room for `extra` more bytes and returns where they start; the caller shrinks the array to
// what it wrote with finish().
char *grow(QByteArray &out, qsizetype extra)
{
    const qsizetype size = out.size();
    if (out.capacity() - size < extra)
        out.reserve(std::max(out.capacity() * 2, size + extra));
    out.resize(size + extra);
    return out.data() + size;
}

void finish(QByteArray &out, const char *end)
{
    out.resize(end - out.constData());
}

void appendLiteral(QByteArray &out, const char *text)
{
    out.append(text, qsizetype(std::strlen(text)));
}

void indent(QByteArray &out, int depth)
{
    if (depth > 0)
        out.append(depth, '\t');
}

// UTF-16 to UTF-8 with &, < and > escaped, in one pass straight into the output.
void appendEscaped(QByteArray &out, QStringView text)
{
    const qsizetype length = text.size();
    char *d = grow(out, length * 5);
    const char16_t *s = text.utf16();
    for (qsizetype i = 0; i < length; ++i) {
        const char16_t c = s[i];
        if (c < 0x80) {
            if (c == '&') {
                std::memcpy(d, "&amp;", 5);
                d += 5;
            } else if (c == '<') {
                std::memcpy(d, "&lt;", 4);
                d += 4;
            } else if (c == '>') {
                std::memcpy(d, "&gt;", 4);
                d += 4;
            } else {
                *d++ = char(c);
            }
        } else if (c < 0x800) {
            *d++ = char(0xC0 | (c >> 6));
            *d++ = char(0x80 | (c & 0x3F));
        } else if (QChar::isHighSurrogate(c) && i + 1 < length && QChar::isLowSurrogate(s[i + 1])) {
            const char32_t code = QChar::surrogateToUcs4(c, s[++i]);
            *d++ = char(0xF0 | (code >> 18));
            *d++ = char(0x80 | ((code >> 12) & 0x3F));
            *d++ = char(0x80 | ((code >> 6) & 0x3F));
            *d++ = char(0x80 | (code & 0x3F));
        } else {
            // A lone surrogate has no UTF-8 form; it becomes the replacement character.
            const char16_t unit = QChar::isSurrogate(c) ? char16_t(0xFFFD) : c;
            *d++ = char(0xE0 | (unit >> 12));
            *d++ = char(0x80 | ((unit >> 6) & 0x3F));
            *d++ = char(0x80 | (unit & 0x3F));
        }
    }
    finish(out, d);
}

void appendString(QByteArray &out, QStringView text, int depth)
{
    indent(out, depth);
    appendLiteral(out, "<string>");
    appendEscaped(out, text);
    appendLiteral(out, "</string>\n");
}

void appendNumber(QByteArray &out, const char *tag, const char *text, qsizetype length, int depth)
{
    indent(out, depth);
    out.append('<').append(tag).append('>');
    out.append(text, length);
    out.append("</").append(tag).append(">\n");
}

void appendInteger(QByteArray &out, qint64 number, int depth)
{
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
    appendNumber(out, "integer", buffer, result.ptr - buffer, depth);
}

void appendUnsigned(QByteArray &out, quint64 number, int depth)
{
    char buffer[24];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number);
    appendNumber(out, "integer", buffer, result.ptr - buffer, depth);
}

template<typename Real>
void appendReal(QByteArray &out, Real real, int depth)
{
    // The shortest text that reads back to the same number, whatever the locale.
    char buffer[48];
    qsizetype length = 0;
    if (std::isnan(real)) {
        length = 3;
        std::memcpy(buffer, "nan", 3);
    } else if (std::isinf(real)) {
        length = real > 0 ? 3 : 4;
        std::memcpy(buffer, real > 0 ? "inf" : "-inf", size_t(length));
    } else {
        length = std::to_chars(buffer, buffer + sizeof buffer, real).ptr - buffer;
    }
    appendNumber(out, "real", buffer, length, depth);
}

void appendDate(QByteArray &out, const QDateTime &dateTime, int depth)
{
    const QDateTime utc = dateTime.toUTC();
    const QDate date = utc.date();
    const QTime time = utc.time();
    char buffer[48];
    const int length = std::snprintf(buffer, sizeof buffer, "%04d-%02d-%02dT%02d:%02d:%02dZ", date.year(),
                                     date.month(), date.day(), time.hour(), time.minute(), time.second());
    appendNumber(out, "date", buffer, length, depth);
}

void appendData(QByteArray &out, const QByteArray &bytes, int depth)
{
    static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    indent(out, depth);
    appendLiteral(out, "<data>\n");
    const qsizetype encoded = (bytes.size() + 2) / 3 * 4;
    const qsizetype lines = (encoded + DataLineLength - 1) / DataLineLength;
    char *d = grow(out, encoded + lines * (depth + 1));
    const auto *s = reinterpret_cast<const quint8 *>(bytes.constData());
    const qsizetype size = bytes.size();
    qsizetype column = 0;
    for (qsizetype i = 0; i < size; i += 3) {
        if (column == 0) {
            std::memset(d, '\t', size_t(depth));
            d += depth;
        }
        const quint32 a = s[i];
        const quint32 b = i + 1 < size ? s[i + 1] : 0;
        const quint32 c = i + 2 < size ? s[i + 2] : 0;
        const quint32 triple = (a << 16) | (b << 8) | c;
        d[0] = alphabet[(triple >> 18) & 0x3F];
        d[1] = alphabet[(triple >> 12) & 0x3F];
        d[2] = i + 1 < size ? alphabet[(triple >> 6) & 0x3F] : '=';
        d[3] = i + 2 < size ? alphabet[triple & 0x3F] : '=';
        d += 4;
        column += 4;
        if (column == DataLineLength || i + 3 >= size) {
            *d++ = '\n';
            column = 0;
        }
    }
    finish(out, d);
    indent(out, depth);
    appendLiteral(out, "</data>\n");
}

void appendStringList(QByteArray &out, const QStringList &list, int depth)
{
    indent(out, depth);
    if (list.isEmpty()) {
        appendLiteral(out, "<array/>\n");
        return;
    }
    appendLiteral(out, "<array>\n");
    for (const QString &item : list)
        appendString(out, item, depth + 1);
    indent(out, depth);
    appendLiteral(out, "</array>\n");
}

void appendList(QByteArray &out, const QVariantList &list, int depth)
{
    indent(out, depth);
    if (list.isEmpty()) {
        appendLiteral(out, "<array/>\n");
        return;
    }
    appendLiteral(out, "<array>\n");
    for (const QVariant &item : list)
        PropertyList::appendValue(out, item, depth + 1);
    indent(out, depth);
    appendLiteral(out, "</array>\n");
}

// A dictionary from entries in key order; `key` and `value` read the entry an iterator points at. A key without a value
// (an invalid QVariant) is left out: an empty field is an absent key.
template<typename Iterator, typename Key, typename Value>
void appendDict(QByteArray &out, Iterator begin, Iterator end, Key key, Value value, int depth)
{
    indent(out, depth);
    Iterator first = begin;
    while (first != end && !value(first).isValid())
        ++first;
    if (first == end) {
        appendLiteral(out, "<dict/>\n");
        return;
    }
    appendLiteral(out, "<dict>\n");
    for (Iterator it = first; it != end; ++it) {
        const QVariant &item = value(it);
        if (!item.isValid())
            continue;
        indent(out, depth + 1);
        appendLiteral(out, "<key>");
        appendEscaped(out, key(it));
        appendLiteral(out, "</key>\n");
        PropertyList::appendValue(out, item, depth + 1);
    }
    indent(out, depth);
    appendLiteral(out, "</dict>\n");
}

void appendMap(QByteArray &out, const QVariantMap &map, int depth)
{
    // QMap iterates in key order already.
    appendDict(
        out, map.cbegin(), map.cend(), [](const auto &it) -> const QString & { return it.key(); },
        [](const auto &it) -> const QVariant & { return it.value(); }, depth);
}

void appendHash(QByteArray &out, const QVariantHash &hash, int depth)
{
    // Written in key order like a map, so the same contents always give the same bytes.
    std::vector<QVariantHash::const_iterator> entries;
    entries.reserve(size_t(hash.size()));
    for (auto it = hash.cbegin(); it != hash.cend(); ++it)
        entries.push_back(it);
    std::sort(entries.begin(), entries.end(), [](const auto &a, const auto &b) { return a.key() < b.key(); });
    appendDict(
        out, entries.begin(), entries.end(), [](const auto &it) -> const QString & { return it->key(); },
        [](const auto &it) -> const QVariant & { return it->value(); }, depth);
}

} // namespace

namespace PropertyList {

std::optional<QVariant> parse(QByteArrayView bytes, QString *error)
{
    if (PropertyListBinaryReader::isBinary(bytes))
        return PropertyListBinaryReader::read(bytes, error);
    PropertyListXmlReader reader(bytes);
    return reader.read(error);
}

std::optional<QVariant> readFile(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("Could not read %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    QString message;
    std::optional<QVariant> value;
    const qint64 size = file.size();
    uchar *mapped = size >= MapThreshold ? file.map(0, size) : nullptr;
    if (mapped) {
        const QByteArrayView bytes(reinterpret_cast<const char *>(mapped), qsizetype(size));
        if (PropertyListBinaryReader::isBinary(bytes)) {
            value = PropertyListBinaryReader::read(bytes, &message);
        } else {
            PropertyListXmlReader reader(bytes);
            reader.setReleasePassedPages(true);
            value = reader.read(&message);
        }
        file.unmap(mapped);
    } else {
        const QByteArray bytes = file.readAll();
        if (file.error() != QFileDevice::NoError) {
            if (error)
                *error = QStringLiteral("Could not read %1: %2").arg(path, file.errorString());
            return std::nullopt;
        }
        value = parse(bytes, &message);
    }
    if (!value && error)
        *error = QStringLiteral("%1: %2").arg(path, message);
    return value;
}

QByteArray documentHeader()
{
    return QByteArray::fromRawData(DocumentHeader, qsizetype(sizeof DocumentHeader - 1));
}

QByteArray documentFooter()
{
    return QByteArray::fromRawData(DocumentFooter, qsizetype(sizeof DocumentFooter - 1));
}

QByteArray toXml(const QVariant &root)
{
    QByteArray out;
    out.reserve(4096);
    out.append(DocumentHeader, qsizetype(sizeof DocumentHeader - 1));
    appendValue(out, root, 0);
    out.append(DocumentFooter, qsizetype(sizeof DocumentFooter - 1));
    return out;
}

void appendValue(QByteArray &out, const QVariant &value, int depth)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        indent(out, depth);
        appendLiteral(out, value.toBool() ? "<true/>\n" : "<false/>\n");
        return;
    case QMetaType::Int:
    case QMetaType::Long:
    case QMetaType::LongLong:
    case QMetaType::Short:
    case QMetaType::Char:
    case QMetaType::SChar:
        appendInteger(out, value.toLongLong(), depth);
        return;
    case QMetaType::UInt:
    case QMetaType::ULong:
    case QMetaType::ULongLong:
    case QMetaType::UShort:
    case QMetaType::UChar:
        appendUnsigned(out, value.toULongLong(), depth);
        return;
    case QMetaType::Double:
        appendReal(out, value.toDouble(), depth);
        return;
    case QMetaType::Float:
        appendReal(out, value.value<float>(), depth);
        return;
    case QMetaType::QString:
        appendString(out, *static_cast<const QString *>(value.constData()), depth);
        return;
    case QMetaType::QByteArray:
        appendData(out, *static_cast<const QByteArray *>(value.constData()), depth);
        return;
    case QMetaType::QDateTime: {
        const QDateTime dateTime = value.toDateTime();
        if (dateTime.isValid())
            appendDate(out, dateTime, depth);
        else
            appendString(out, QStringView(), depth);
        return;
    }
    case QMetaType::QDate: {
        const QDate date = value.toDate();
        if (date.isValid())
            appendDate(out, date.startOfDay(Qt::UTC), depth);
        else
            appendString(out, QStringView(), depth);
        return;
    }
    case QMetaType::QVariantList:
        appendList(out, *static_cast<const QVariantList *>(value.constData()), depth);
        return;
    case QMetaType::QStringList:
        appendStringList(out, *static_cast<const QStringList *>(value.constData()), depth);
        return;
    case QMetaType::QVariantMap:
        appendMap(out, *static_cast<const QVariantMap *>(value.constData()), depth);
        return;
    case QMetaType::QVariantHash:
        appendHash(out, *static_cast<const QVariantHash *>(value.constData()), depth);
        return;
    default:
        break;
    }
    // Anything else that Qt can see as a list, a map or text (QByteArrayList, QUrl, QChar, ...).
    if (QMetaType::canView(value.metaType(), QMetaType::fromType<QAssociativeIterable>())) {
        appendMap(out, value.toMap(), depth);
        return;
    }
    if (QMetaType::canView(value.metaType(), QMetaType::fromType<QSequentialIterable>())) {
        appendList(out, value.toList(), depth);
        return;
    }
    if (value.isValid() && value.canConvert<QString>()) {
        appendString(out, value.toString(), depth);
        return;
    }
    qCWarning(lcPropertyList) << "No property-list form for a value of type" << value.metaType().name()
                              << "- written as an empty string";
    appendString(out, QStringView(), depth);
}

bool writeFile(const QString &path, const QVariant &root, QString *error)
{
    return writeBytes(path, toXml(root), error);
}

bool writeBytes(const QString &path, const QByteArray &bytes, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        if (error)
            *error = QStringLiteral("Could not write %1: %2").arg(path, file.errorString());
        return false;
    }
    if (file.write(bytes) != bytes.size()) {
        if (error)
            *error = QStringLiteral("Could not write %1: %2").arg(path, file.errorString());
        file.cancelWriting();
        return false;
    }
    // commit() syncs the new file to disk before renaming it over the old one.
    if (!file.commit()) {
        if (error)
            *error = QStringLiteral("Could not write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace PropertyList
