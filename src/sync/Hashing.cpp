#include <openssl/evp.h>

#include "sync/Hashing.h"
#include "sync/SyncLog.h"

namespace Hashing {

namespace {

QByteArray digest(const EVP_MD *algorithm, QByteArrayView bytes)
{
    unsigned char out[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    // EVP_Digest is the one-shot form: no context to leak on an early return.
    if (EVP_Digest(bytes.data(), size_t(bytes.size()), out, &length, algorithm, nullptr) != 1) {
        qCWarning(lcSync) << "digest failed";
        return {};
    }
    return QByteArray(reinterpret_cast<const char *>(out), int(length));
}

} // namespace

QByteArray md5(QByteArrayView bytes)
{
    return digest(EVP_md5(), bytes);
}

QByteArray sha1(QByteArrayView bytes)
{
    return digest(EVP_sha1(), bytes);
}

QString md5Hex(QByteArrayView bytes)
{
    return QString::fromLatin1(md5(bytes).toHex());
}

QString sha1Hex(QByteArrayView bytes)
{
    return QString::fromLatin1(sha1(bytes).toHex());
}

QString md5HexOfText(const QString &text)
{
    return md5Hex(text.toUtf8());
}

QString sha1HexOfText(const QString &text)
{
    return sha1Hex(text.toUtf8());
}

} // namespace Hashing
