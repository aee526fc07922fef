#include "platform/FileStamp.h"

#include <QFile>

#include <sys/stat.h>

std::optional<FileStamp> FileStamp::of(const QString &path)
{
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return std::nullopt;
    return FileStamp{qint64(info.st_size), qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec,
                     quint64(info.st_ino)};
}
