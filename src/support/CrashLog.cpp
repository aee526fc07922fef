#include "support/CrashLog.h"

#include "platform/DateText.h"
#include "support/SupportLog.h"

#include <QFile>
#include <QFileInfo>

namespace CrashLog {

bool isNew(const QString &logPath, const QString &lastStartup)
{
    const QFileInfo log(logPath);
    if (!log.exists() || lastStartup.isEmpty())
        return false;
    const std::optional<QDateTime> started = DateText::fromStoredForm(lastStartup);
    if (!started) {
        qCWarning(lcSupport) << "\"Last Startup\" is not a date:" << lastStartup;
        return false;
    }
    // The stored form keeps whole seconds, rounded down: a crash within the second of the last
    // start still counts as after it.
    return log.lastModified() > *started;
}

QString read(const QString &logPath)
{
    QFile file(logPath);
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

void remove(const QString &logPath)
{
    if (QFileInfo::exists(logPath) && !QFile::remove(logPath))
        qCWarning(lcSupport) << "Could not remove the crash log" << logPath;
}

} // namespace CrashLog
