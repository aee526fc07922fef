#include "platform/Paths.h"

#include <QDir>

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

} // namespace Paths
