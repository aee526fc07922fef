#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

// What tells a file rewritten by someone else from the one read earlier: an atomic write makes a
// new inode, and any write changes the modification time or the size. Cheap enough (one stat) to
// ask before every write and at every window activation.
struct FileStamp {
    qint64 size = -1;
    qint64 mtimeNs = 0;
    quint64 inode = 0;
    bool operator==(const FileStamp &) const = default;

    // The file's stamp now, or nullopt when it does not exist or cannot be looked at.
    static std::optional<FileStamp> of(const QString &path);
};
