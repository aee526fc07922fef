#pragma once

#include <plist/plist.h>

#include <QByteArray>

// libplist as an independent writer of the files the reader must take.
namespace LibplistFiles {

// The binary property list libplist writes for `root`, which is freed.
inline QByteArray toBinary(plist_t root)
{
    char *bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    plist_free(root);
    const QByteArray binary(bytes, qsizetype(length));
    plist_to_bin_free(bytes);
    return binary;
}

} // namespace LibplistFiles
