#pragma once

#include <QByteArrayView>
#include <QString>
#include <QVariant>

#include <optional>

// The binary half of PropertyList::parse ("bplist00"): the same QVariants as the XML reader makes,
// within the limits on expansion that PropertyList.h names.
namespace PropertyListBinaryReader {

bool isBinary(QByteArrayView bytes);
// `textWillChange` is set when a string holds what the XML writer cannot write as it is.
std::optional<QVariant> read(QByteArrayView bytes, QString *error, bool *textWillChange = nullptr);

} // namespace PropertyListBinaryReader
