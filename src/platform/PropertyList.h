#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QVariant>

#include <optional>

// Property lists <-> QVariant.
//
// Types map exactly, both ways: string <-> QString, real <-> double, integer <-> qint64,
// true/false <-> bool, data <-> QByteArray, date <-> QDateTime (UTC), array <-> QVariantList,
// dict <-> QVariantMap. A real stays a real and an integer an integer, so a record read and written
// back is byte-for-byte the same record (backup merging compares whole records).
//
// Reals are written with the shortest text that reads back to the same double, independent of the
// locale. XML property lists are read and written; binary ones are read only.
namespace PropertyList {

// Parses XML or binary property-list bytes. On failure returns nullopt and, when asked, a message
// saying why; there is never a partial result.
std::optional<QVariant> parse(QByteArrayView bytes, QString *error = nullptr);

// Reads and parses a file. A missing or unreadable file is a failure like a malformed one.
std::optional<QVariant> readFile(const QString &path, QString *error = nullptr);

// A complete XML document for the value.
QByteArray toXml(const QVariant &root);

// The document's fixed opening (XML declaration, DOCTYPE, <plist version="1.0">, newline) and
// closing ("</plist>" and newline), so that callers can assemble a document from cached pieces.
QByteArray documentHeader();
QByteArray documentFooter();

// Appends the XML of one value, indented by `depth` tabs and ending in a newline, exactly as
// toXml() would write it at that depth.
void appendValue(QByteArray &out, const QVariant &value, int depth);

// Writes the value as XML, atomically: the old file stays whole until the new one is complete and
// synced to disk. Parent folders are not created.
bool writeFile(const QString &path, const QVariant &root, QString *error = nullptr);

// The same atomic write for bytes already serialised.
bool writeBytes(const QString &path, const QByteArray &bytes, QString *error = nullptr);

} // namespace PropertyList
