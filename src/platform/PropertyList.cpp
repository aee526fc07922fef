#include "platform/PropertyList.h"

#include "platform/PropertyListBinaryReader.h"
#include "platform/PropertyListSaveFile.h"
#include "platform/PropertyListXmlReader.h"
#include "platform/PropertyListXmlWriter.h"

#include <QFile>
#include <QLoggingCategory>
#include <QStringDecoder>

#include <cstring>

namespace {

Q_LOGGING_CATEGORY(lcPropertyList, "quillory.platform")

const char DocumentHeader[] = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                              "<plist version=\"1.0\">\n";
const char DocumentFooter[] = "</plist>\n";
// Files above this size are mapped rather than read, so that the reader can drop the pages it has
// passed instead of holding a second copy of the whole file.
constexpr qint64 MapThreshold = qint64(1) << 20;
// A little above the writer's flush size, so that its buffer never needs to grow.
constexpr qsizetype WriteBufferSize = (qsizetype(1) << 20) + (qsizetype(1) << 16);
// How far into the file the XML declaration is looked for.
constexpr qsizetype DeclarationWindow = 512;

bool failedWrite(const QString &path, const QString &why, QString *error)
{
    if (error)
        *error = QStringLiteral("Could not write %1: %2").arg(path, why);
    return false;
}

// The encoding an XML document is in, from its byte-order mark or its declaration; empty for UTF-8
// (and for ASCII, which is UTF-8). `skip` receives the length of a byte-order mark.
QByteArray declaredEncoding(QByteArrayView bytes, qsizetype &skip)
{
    skip = 0;
    const auto starts = [&](const char *prefix, qsizetype length) {
        return bytes.size() >= length && std::memcmp(bytes.data(), prefix, size_t(length)) == 0;
    };
    if (starts("\xEF\xBB\xBF", 3))
        return {};
    if (starts("\xFF\xFE\0\0", 4) || starts("\0\0\xFE\xFF", 4)) {
        skip = 4;
        return bytes[0] == '\xFF' ? "UTF-32LE" : "UTF-32BE";
    }
    if (starts("\xFF\xFE", 2) || starts("\xFE\xFF", 2)) {
        skip = 2;
        return bytes[0] == '\xFF' ? "UTF-16LE" : "UTF-16BE";
    }
    // UTF-16 without a mark still starts with "<?" in two-byte units.
    if (starts("<\0?\0", 4))
        return "UTF-16LE";
    if (starts("\0<\0?", 4))
        return "UTF-16BE";
    if (!starts("<?xml", 5))
        return {};
    const QByteArrayView head = bytes.first(std::min(bytes.size(), DeclarationWindow));
    const qsizetype end = head.indexOf("?>");
    if (end < 0)
        return {};
    const QByteArrayView declaration = head.first(end);
    const qsizetype at = declaration.indexOf("encoding");
    if (at < 0)
        return {};
    qsizetype i = at + 8;
    while (i < declaration.size() && (declaration[i] == ' ' || declaration[i] == '\t' || declaration[i] == '\n' || declaration[i] == '\r' || declaration[i] == '='))
        ++i;
    if (i >= declaration.size() || (declaration[i] != '"' && declaration[i] != '\''))
        return {};
    const char quote = declaration[i];
    const qsizetype close = declaration.indexOf(quote, i + 1);
    if (close < 0)
        return {};
    const QByteArray name = declaration.sliced(i + 1, close - i - 1).toByteArray();
    const QByteArray lower = name.toLower();
    // A declaration readable byte by byte cannot be right about a two- or four-byte encoding.
    if (lower == "utf-8" || lower == "utf8" || lower == "us-ascii" || lower == "ascii" || lower.startsWith("utf-16")
        || lower.startsWith("utf-32") || lower.startsWith("ucs-"))
        return {};
    return name;
}

std::optional<QVariant> parseUtf8(QByteArrayView bytes, QString *error, bool releasePages, bool *textWillChange)
{
    if (PropertyListBinaryReader::isBinary(bytes))
        return PropertyListBinaryReader::read(bytes, error, textWillChange);
    PropertyListXmlReader reader(bytes);
    reader.setReleasePassedPages(releasePages);
    auto value = reader.read(error);
    *textWillChange = value && reader.textWillChange();
    return value;
}

// Reads the bytes in whatever encoding they declare: anything but UTF-8 is converted first.
std::optional<QVariant> parseAny(QByteArrayView bytes, QString *error, bool releasePages, PropertyList::ReadReport *report)
{
    bool textWillChange = false;
    std::optional<QVariant> value;
    qsizetype skip = 0;
    const QByteArray encoding = PropertyListBinaryReader::isBinary(bytes) ? QByteArray() : declaredEncoding(bytes, skip);
    if (encoding.isEmpty()) {
        value = parseUtf8(bytes, error, releasePages, &textWillChange);
    } else {
        QStringDecoder decoder(encoding.constData());
        if (!decoder.isValid()) {
            if (error)
                *error = QStringLiteral("the file is written in the encoding \"%1\", which cannot be read here")
                             .arg(QString::fromLatin1(encoding));
            return std::nullopt;
        }
        const QString text = decoder.decode(bytes.sliced(skip));
        const QByteArray utf8 = text.toUtf8();
        value = parseUtf8(utf8, error, false, &textWillChange);
        textWillChange = textWillChange || decoder.hasError();
    }
    if (report)
        report->textWillChange = value && textWillChange;
    return value;
}

} // namespace

namespace PropertyList {

std::optional<QVariant> parse(QByteArrayView bytes, QString *error, ReadReport *report)
{
    return parseAny(bytes, error, false, report);
}

std::optional<QVariant> readFile(const QString &path, QString *error, ReadReport *report)
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
        value = parseAny(bytes, &message, true, report);
        file.unmap(mapped);
    } else {
        const QByteArray bytes = file.readAll();
        if (file.error() != QFileDevice::NoError) {
            if (error)
                *error = QStringLiteral("Could not read %1: %2").arg(path, file.errorString());
            return std::nullopt;
        }
        value = parseAny(bytes, &message, false, report);
    }
    if (!value && error)
        *error = QStringLiteral("%1: %2").arg(path, message);
    return value;
}

bool isWritableDate(const QDateTime &moment)
{
    if (!moment.isValid())
        return false;
    const int year = moment.toUTC().date().year();
    return year >= 1 && year <= 9999;
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
    PropertyListXmlWriter(out).value(root, 0);
    out.append(DocumentFooter, qsizetype(sizeof DocumentFooter - 1));
    return out;
}

void appendValue(QByteArray &out, const QVariant &value, int depth)
{
    PropertyListXmlWriter(out).value(value, depth);
}

bool writeFile(const QString &path, const QVariant &root, QString *error)
{
    // Serialised straight into the file a megabyte at a time: a large store never exists whole in
    // memory as text.
    PropertyListSaveFile file(path);
    if (!file.open())
        return failedWrite(path, file.errorString(), error);
    QByteArray buffer;
    buffer.reserve(WriteBufferSize);
    {
        PropertyListXmlWriter writer(buffer, file.device());
        writer.raw(QByteArrayView(DocumentHeader, qsizetype(sizeof DocumentHeader - 1)));
        writer.value(root, 0);
        writer.raw(QByteArrayView(DocumentFooter, qsizetype(sizeof DocumentFooter - 1)));
        if (writer.wroteUnreadable()) {
            file.cancel();
            return failedWrite(path, QStringLiteral("it holds a date outside the years 1 to 9999"), error);
        }
        if (!writer.flush()) {
            const QString why = file.device()->errorString();
            file.cancel();
            return failedWrite(path, why, error);
        }
    }
    return file.commit() || failedWrite(path, file.errorString(), error);
}

bool writeBytes(const QString &path, const QByteArray &bytes, QString *error)
{
    PropertyListSaveFile file(path);
    if (!file.open())
        return failedWrite(path, file.errorString(), error);
    if (file.device()->write(bytes) != bytes.size()) {
        const QString why = file.device()->errorString();
        file.cancel();
        return failedWrite(path, why, error);
    }
    return file.commit() || failedWrite(path, file.errorString(), error);
}

int removeLeftovers(const QString &folder)
{
    return PropertyListSaveFile::removeLeftovers(folder);
}

bool keepOriginalOnce(const QString &path, const QString &copy)
{
    if (QFile::exists(copy))
        return true;
    QFile original(path);
    if (!original.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = original.readAll();
    QString error;
    if (original.error() != QFileDevice::NoError || !writeBytes(copy, bytes, &error)) {
        qCWarning(lcPropertyList) << "Could not keep a copy of" << path << ":" << (error.isEmpty() ? original.errorString() : error);
        return false;
    }
    qCWarning(lcPropertyList) << "Kept the original of" << path << "as" << copy
                              << "before writing it back: some of its text could not be kept exactly";
    return true;
}

} // namespace PropertyList
