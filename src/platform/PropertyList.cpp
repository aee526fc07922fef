#include "platform/PropertyList.h"

#include "platform/PropertyListBinaryReader.h"
#include "platform/PropertyListXmlReader.h"
#include "platform/PropertyListXmlWriter.h"

#include <QFile>
#include <QSaveFile>

namespace {

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

bool failedWrite(const QString &path, const QSaveFile &file, QString *error)
{
    if (error)
        *error = QStringLiteral("Could not write %1: %2").arg(path, file.errorString());
    return false;
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
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return failedWrite(path, file, error);
    QByteArray buffer;
    buffer.reserve(WriteBufferSize);
    {
        PropertyListXmlWriter writer(buffer, &file);
        writer.raw(QByteArrayView(DocumentHeader, qsizetype(sizeof DocumentHeader - 1)));
        writer.value(root, 0);
        writer.raw(QByteArrayView(DocumentFooter, qsizetype(sizeof DocumentFooter - 1)));
        if (!writer.flush()) {
            failedWrite(path, file, error);
            file.cancelWriting();
            return false;
        }
    }
    // commit() syncs the new file to disk before renaming it over the old one.
    return file.commit() || failedWrite(path, file, error);
}

bool writeBytes(const QString &path, const QByteArray &bytes, QString *error)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return failedWrite(path, file, error);
    if (file.write(bytes) != bytes.size()) {
        failedWrite(path, file, error);
        file.cancelWriting();
        return false;
    }
    // commit() syncs the new file to disk before renaming it over the old one.
    return file.commit() || failedWrite(path, file, error);
}

} // namespace PropertyList
