#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
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

// What a successful read noticed that writing the value back would not keep exactly.
struct ReadReport {
    // Text that was not valid in the file's encoding (read as U+FFFD), lone surrogates (written as
    // U+FFFD) or characters that XML cannot hold (left out when written).
    bool textWillChange = false;
};

// Parses XML or binary property-list bytes. On failure returns nullopt and, when asked, a message
// saying why; there is never a partial result.
//
// XML is read in the encoding its declaration names (UTF-8 when it names none, UTF-16 or UTF-32
// with a byte-order mark). A binary list whose shared references would write out far larger than
// the file itself (more than MaxExpandedObjects values, or more than MaxExpansion times the file's
// size and at least MinExpandedLimit bytes) is refused: every save writes the value whole.
std::optional<QVariant> parse(QByteArrayView bytes, QString *error = nullptr, ReadReport *report = nullptr);

// Reads and parses a file. A missing or unreadable file is a failure like a malformed one.
std::optional<QVariant> readFile(const QString &path, QString *error = nullptr, ReadReport *report = nullptr);

// The limits on what a binary property list may expand to. A store of 100,000 records is about
// three million values and 150 MB of XML.
inline constexpr quint64 MaxExpandedObjects = 50'000'000;
inline constexpr quint64 MaxExpansion = 64;
inline constexpr quint64 MinExpandedLimit = quint64(16) << 20;

// Dates are written as "YYYY-MM-DDTHH:MM:SSZ", which has room for the years 1 to 9999 only; the
// readers refuse anything else, and so does writeFile().
bool isWritableDate(const QDateTime &moment);

// A complete XML document for the value. A date outside the writable years is written as the
// nearest writable one, with a warning; writeFile() refuses such a value instead.
QByteArray toXml(const QVariant &root);

// The document's fixed opening (XML declaration, DOCTYPE, <plist version="1.0">, newline) and
// closing ("</plist>" and newline), so that callers can assemble a document from cached pieces.
QByteArray documentHeader();
QByteArray documentFooter();

// Appends the XML of one value, indented by `depth` tabs and ending in a newline, exactly as
// toXml() would write it at that depth.
void appendValue(QByteArray &out, const QVariant &value, int depth);

// Writes the value as XML, atomically: the old file stays whole until the new one is complete and
// synced to disk. Parent folders are not created. The file is readable by its owner only, and its
// temporary copy is named so that removeLeftovers() recognises it.
bool writeFile(const QString &path, const QVariant &root, QString *error = nullptr);

// The same atomic write for bytes already serialised.
bool writeBytes(const QString &path, const QByteArray &bytes, QString *error = nullptr);

// Removes from `folder` the temporary copies that writeFile() and writeBytes() of processes no
// longer running left behind (a kill between writing and renaming). Returns how many went.
int removeLeftovers(const QString &folder);

// Copies the file to `copy` (atomically, owner-only) unless `copy` already exists: the original of a
// file about to be written back with some of its text changed. Logs what it did; false when no copy
// could be made.
bool keepOriginalOnce(const QString &path, const QString &copy);

} // namespace PropertyList
