#include "platform/Paths.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <sys/stat.h>

namespace Paths {

QString home()
{
    return QDir::homePath();
}

QString dataFolder()
{
    return home() + QStringLiteral("/Library/Application Support/Quillory");
}

static QString inDataFolder(const char *name)
{
    return dataFolder() + QLatin1Char('/') + QLatin1String(name);
}

QString assignmentsFile()
{
    return inDataFolder(AssignmentsFileName);
}

QString coursesFile()
{
    return inDataFolder(CoursesFileName);
}

QString universalTypesFile()
{
    return inDataFolder(UniversalTypesFileName);
}

QString iCalExportFile()
{
    return inDataFolder(ICalExportFileName);
}

QString syncingBackupsFolder()
{
    return inDataFolder(SyncingBackupsFolderName);
}

QString preferencesFolder()
{
    return home() + QStringLiteral("/Library/Preferences");
}

QString preferencesFile(const QString &domain)
{
    return preferencesFolder() + QLatin1Char('/') + domain + QStringLiteral(".plist");
}

QString crashLog()
{
    return home() + QStringLiteral("/Library/Logs/CrashReporter/Quillory.crash.log");
}

bool makePrivateFolder(const QString &path)
{
    const QString clean = QDir::cleanPath(QDir(path).absolutePath());
    QStringList missing;
    QString folder = clean;
    struct stat info;
    while (::stat(QFile::encodeName(folder).constData(), &info) != 0 && errno == ENOENT) {
        missing.prepend(folder);
        const qsizetype slash = folder.lastIndexOf(QLatin1Char('/'));
        if (slash <= 0)
            break;
        folder.truncate(slash);
    }
    for (const QString &each : missing) {
        const QByteArray name = QFile::encodeName(each);
        if (::mkdir(name.constData(), 0700) != 0 && errno != EEXIST)
            return false;
        // The umask may have taken bits away; the owner needs all three.
        ::chmod(name.constData(), 0700);
    }
    return QFileInfo(clean).isDir();
}

} // namespace Paths
