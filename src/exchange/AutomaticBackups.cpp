#include "exchange/AutomaticBackups.h"

#include "exchange/Backup.h"
#include "platform/DateText.h"
#include "platform/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>

Q_LOGGING_CATEGORY(lcAutomaticBackups, "quillory.exchange.backup.automatic")

QString AutomaticBackups::path()
{
    return QStringLiteral("%1/%2.plist").arg(Paths::syncingBackupsFolder(), DateText::nowStoredForm()).trimmed();
}

bool AutomaticBackups::write(const QString &path, QString *error)
{
    const QString folder = Paths::syncingBackupsFolder();
    if (!QFileInfo(folder).isDir() && !QDir().mkdir(folder))
        qCWarning(lcAutomaticBackups) << "could not make" << folder;
    QString target = path;
    const QString stem = path.endsWith(QLatin1String(".plist")) ? path.chopped(6) : path;
    for (int n = 2; QFileInfo(target).exists() || QFileInfo(target).isSymLink(); ++n)
        target = stem + QStringLiteral("_%1.plist").arg(n); // "_" sorts after ".": newer after older
    const bool written = Backup::sharedController()->exportBackupToFile(target, error);
    prune();
    return written;
}

void AutomaticBackups::prune()
{
    const QString folder = Paths::syncingBackupsFolder();
    const QDir dir(folder);
    const auto filters = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    QStringList names = dir.entryList(filters, QDir::Unsorted);
    std::sort(names.begin(), names.end());
    while (names.size() > MaximumKept) {
        const QString entryPath = QStringLiteral("%1/%2").arg(folder, names.first());
        const QFileInfo entry(entryPath);
        const bool removed
            = entry.isDir() && !entry.isSymLink() ? QDir(entryPath).removeRecursively() : QFile::remove(entryPath);
        if (!removed) {
            qCWarning(lcAutomaticBackups) << "could not remove old backup" << entryPath;
            break;
        }
        names.removeFirst();
    }
}
