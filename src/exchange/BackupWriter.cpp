#include "exchange/BackupWriter.h"

#include "platform/PropertyList.h"
#include "platform/PropertyListXmlReader.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <thread>

namespace {

bool isXmlSpace(char c)
{
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

qsizetype skipSpace(QByteArrayView bytes, qsizetype at)
{
    while (at < bytes.size() && isXmlSpace(bytes[at]))
        ++at;
    return at;
}

// The root <array> element of an XML property list exactly as the file holds it, when the document
// around it is the plain one: an optional XML declaration in UTF-8, an optional DOCTYPE without an
// internal subset (entities it declared would not reach another document), <plist ...>, the array,
// </plist>, with nothing but blanks in between. Whitespace inside a property list means nothing,
// so the element can be nested as it is in another document. Anything else gives nullopt.
std::optional<QByteArrayView> plainRootArray(QByteArrayView bytes)
{
    qsizetype at = skipSpace(bytes, 0);
    auto follows = [&](QByteArrayView text) { return bytes.sliced(at).startsWith(text); };
    if (follows("<?xml")) {
        const qsizetype end = bytes.indexOf("?>", at);
        if (end < 0)
            return std::nullopt;
        const QByteArray declaration = bytes.sliced(at, end - at).toByteArray().toLower();
        if (declaration.contains("encoding") && !declaration.contains("\"utf-8\"")
            && !declaration.contains("'utf-8'"))
            return std::nullopt;
        at = skipSpace(bytes, end + 2);
    }
    if (follows("<!DOCTYPE")) {
        const qsizetype end = bytes.indexOf('>', at);
        if (end < 0 || bytes.sliced(at, end - at).contains('['))
            return std::nullopt;
        at = skipSpace(bytes, end + 1);
    }
    if (!follows("<plist") || at + 6 >= bytes.size() || !(isXmlSpace(bytes[at + 6]) || bytes[at + 6] == '>'))
        return std::nullopt;
    const qsizetype open = bytes.indexOf('>', at);
    if (open < 0 || bytes[open - 1] == '/')
        return std::nullopt;
    const qsizetype begin = skipSpace(bytes, open + 1);

    qsizetype end = bytes.size();
    while (end > begin && isXmlSpace(bytes[end - 1]))
        --end;
    const QByteArrayView close("</plist>");
    if (!bytes.sliced(begin, end - begin).endsWith(close))
        return std::nullopt;
    end -= close.size();
    while (end > begin && isXmlSpace(bytes[end - 1]))
        --end;
    const QByteArrayView element = bytes.sliced(begin, end - begin);
    const bool opensArray = element.startsWith("<array")
        && (element.size() > 6 && (element[6] == '>' || element[6] == '/' || isXmlSpace(element[6])));
    if (!opensArray || !(element.endsWith("</array>") || element.endsWith("/>")))
        return std::nullopt;
    return element;
}

// One data file's root array, ready to go into a backup document at depth one. Every file is
// checked by the property-list reader's own rules, so a file that does not read stops the backup as
// it always has; a plain XML property list has its own bytes nested, which spares making and writing
// every record again. A missing file is an empty list.
struct DataFilePiece {
    QString path;
    QFile file;
    QByteArray read;        // the file's bytes when they could not be mapped
    QByteArrayView bytes;   // the whole file, mapped or read
    QByteArrayView element; // the bytes to nest, when the file is plain
    QByteArray written;     // or the list written out again
};

bool failedPiece(const DataFilePiece &piece, const QString &why, QString *error)
{
    if (error)
        *error = QStringLiteral("%1: %2").arg(piece.path, why);
    return false;
}

bool openDataFile(DataFilePiece &piece, QString *error)
{
    if (!QFileInfo::exists(piece.path)) {
        PropertyList::appendValue(piece.written, QVariantList{}, 1);
        return true;
    }
    piece.file.setFileName(piece.path);
    if (piece.file.open(QIODevice::ReadOnly)) {
        const qint64 size = piece.file.size();
        if (uchar *mapped = size > 0 ? piece.file.map(0, size) : nullptr) {
            piece.bytes = QByteArrayView(reinterpret_cast<const char *>(mapped), qsizetype(size));
        } else {
            piece.read = piece.file.readAll();
            piece.bytes = piece.read;
        }
    }
    if (piece.file.error() != QFileDevice::NoError)
        return failedPiece(piece, piece.file.errorString(), error);
    if (const auto element = plainRootArray(piece.bytes))
        piece.element = *element;
    return true;
}

bool plainPieceReads(const DataFilePiece &piece)
{
    PropertyListXmlReader checker(piece.bytes);
    checker.setCheckOnly(true);
    return checker.read(nullptr).has_value();
}

// The full reading: it says why a file does not read, or gives the list to write out again.
bool rewritePiece(DataFilePiece &piece, QString *error)
{
    piece.element = {};
    QString why;
    const auto parsed = PropertyList::parse(piece.bytes, &why);
    if (!parsed || parsed->typeId() != QMetaType::QVariantList)
        return failedPiece(piece, parsed ? QStringLiteral("the root is not an array") : why, error);
    PropertyList::appendValue(piece.written, *parsed, 1);
    return true;
}

// Writes the document and gives it its name only when `accepted` says so once every byte is out.
bool writeBackupDocument(const QString &path, const std::array<DataFilePiece, 3> &pieces,
                         const std::function<bool()> &accepted, QString *error)
{
    QSaveFile out(path);
    auto failed = [&] {
        if (error)
            *error = QStringLiteral("%1: %2").arg(path, out.errorString());
        return false;
    };
    if (!out.open(QIODevice::WriteOnly))
        return failed();
    bool written = out.write(PropertyList::documentHeader() + "<array>\n") >= 0;
    for (const DataFilePiece &piece : pieces) {
        if (piece.element.isEmpty()) {
            written = written && out.write(piece.written) == piece.written.size();
        } else {
            written = written && out.write("\t", 1) == 1
                && out.write(piece.element.data(), piece.element.size()) == piece.element.size()
                && out.write("\n", 1) == 1;
        }
    }
    written = written && out.write("</array>\n" + PropertyList::documentFooter()) >= 0;
    if (!written) {
        failed();
        out.cancelWriting();
        return false;
    }
    if (!accepted()) {
        out.cancelWriting();
        return false;
    }
    // commit() puts the backup on disk before it takes its name.
    return out.commit() || failed();
}

} // namespace

bool BackupWriter::write(const QString &path, const QStringList &files, QString *error)
{
    std::array<DataFilePiece, 3> pieces;
    for (int i = 0; i < 3; ++i) {
        pieces[i].path = files.at(i);
        if (!openDataFile(pieces[i], error))
            return false;
        if (pieces[i].element.isEmpty() && pieces[i].written.isEmpty() && !rewritePiece(pieces[i], error))
            return false;
    }
    // Checking the plain files is work for the processor, writing the document mostly waiting for
    // the disk: they go side by side, and the document is kept only when every check passed. A
    // thread of its own, not the pool's: the backup itself may be running on the pool.
    std::array<bool, 3> reads = {true, true, true};
    std::thread checks([&pieces, &reads] {
        for (int i = 0; i < 3; ++i)
            reads[i] = pieces[i].element.isEmpty() || plainPieceReads(pieces[i]);
    });
    bool joined = false;
    auto allRead = [&] {
        checks.join();
        joined = true;
        return std::all_of(reads.begin(), reads.end(), [](bool ok) { return ok; });
    };
    const bool written = writeBackupDocument(path, pieces, allRead, error);
    if (!joined)
        checks.join();
    if (written || std::all_of(reads.begin(), reads.end(), [](bool ok) { return ok; }))
        return written;
    for (int i = 0; i < 3; ++i) {
        if (!reads[i] && !rewritePiece(pieces[i], error))
            return false;
    }
    return writeBackupDocument(path, pieces, [] { return true; }, error);
}

