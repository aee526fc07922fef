#pragma once

#include <QByteArrayView>
#include <QString>
#include <QVariant>

#include <optional>

// The binary half of PropertyList::parse ("bplist00"), read with libplist and turned into the same
// QVariants as the XML reader makes.
namespace PropertyListBinaryReader {

bool isBinary(QByteArrayView bytes);
std::optional<QVariant> read(QByteArrayView bytes, QString *error);

} // namespace PropertyListBinaryReader
