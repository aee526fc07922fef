#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// MD5 and SHA-1 digests of byte buffers and of text (taken as its UTF-8 bytes), as raw bytes or as
// lower-case hexadecimal. The online account check sends the MD5 hex of the password.
namespace Hashing {

QByteArray md5(QByteArrayView bytes);
QByteArray sha1(QByteArrayView bytes);

// 32 (MD5) or 40 (SHA-1) lower-case hexadecimal digits.
QString md5Hex(QByteArrayView bytes);
QString sha1Hex(QByteArrayView bytes);

// The same for text: its UTF-8 bytes, nothing lost on the way.
QString md5HexOfText(const QString &text);
QString sha1HexOfText(const QString &text);

} // namespace Hashing
