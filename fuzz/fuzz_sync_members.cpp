#include "sync/SyncArchive.h"

#include <QCoreApplication>
#include <QFile>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// The check of a downloaded archive's member list, on whatever bytes arrive as the archive. The
// listing comes from /usr/bin/tar, so each input costs two child processes: this target is slow by
// nature and meant for long runs by hand.
Q_LOGGING_CATEGORY(lcSync, "quillory.sync")

namespace {

QTemporaryDir *g_folder = nullptr;

} // namespace

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv)
{
    static QCoreApplication application(*argc, *argv);
    g_folder = new QTemporaryDir;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = g_folder->filePath(QStringLiteral("Quillory.tar"));
    QFile archive(path);
    if (!archive.open(QIODevice::WriteOnly | QIODevice::Truncate))
        std::abort();
    archive.write(reinterpret_cast<const char *>(data), qint64(size));
    archive.close();
    (void)SyncArchive::checkMembers(path);
    return 0;
}
