#include "platform/PropertyListSaveFile.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QRegularExpression>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <unistd.h>

namespace {

Q_LOGGING_CATEGORY(lcSaveFile, "quillory.platform")

const QString TemporaryMarker = QStringLiteral(".quillory-tmp-");
constexpr mode_t PrivateFileMode = 0600;
constexpr int RandomLength = 6;
constexpr int CreateAttempts = 100;

QString randomSuffix()
{
    static const char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789";
    QString suffix;
    for (int i = 0; i < RandomLength; ++i)
        suffix += QLatin1Char(alphabet[QRandomGenerator::global()->bounded(int(sizeof alphabet - 1))]);
    return suffix;
}

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

bool syncFolder(const QString &folder)
{
    const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

bool processIsRunning(qint64 pid)
{
    if (pid <= 0 || pid > std::numeric_limits<pid_t>::max())
        return false;
    // EPERM: it runs, as another user.
    return ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
}

} // namespace

PropertyListSaveFile::PropertyListSaveFile(QString path)
    : m_path(std::move(path))
{
}

PropertyListSaveFile::~PropertyListSaveFile()
{
    if (m_open)
        cancel();
}

bool PropertyListSaveFile::fail(const QString &what)
{
    m_error = what;
    return false;
}

bool PropertyListSaveFile::open()
{
    const QFileInfo target(m_path);
    const QString prefix = target.absolutePath() + QStringLiteral("/.") + target.fileName() + TemporaryMarker
        + QString::number(::getpid()) + QLatin1Char('-');
    for (int attempt = 0; attempt < CreateAttempts; ++attempt) {
        const QString candidate = prefix + randomSuffix();
        const int fd = ::open(QFile::encodeName(candidate).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                              PrivateFileMode);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return fail(systemError());
        }
        // The umask can only take bits away, but be exact whatever it is.
        ::fchmod(fd, PrivateFileMode);
        if (!m_file.open(fd, QIODevice::WriteOnly, QFileDevice::AutoCloseHandle)) {
            ::close(fd);
            ::unlink(QFile::encodeName(candidate).constData());
            return fail(m_file.errorString());
        }
        m_temporaryPath = candidate;
        m_open = true;
        return true;
    }
    return fail(QStringLiteral("no free temporary name"));
}

bool PropertyListSaveFile::commit()
{
    if (!m_open)
        return fail(QStringLiteral("the file is not open"));
    if (!m_file.flush()) {
        const QString why = m_file.errorString();
        cancel();
        return fail(why);
    }
    if (::fsync(m_file.handle()) != 0) {
        const QString why = systemError();
        cancel();
        return fail(why);
    }
    m_file.close();
    if (::rename(QFile::encodeName(m_temporaryPath).constData(), QFile::encodeName(m_path).constData()) != 0) {
        const QString why = systemError();
        ::unlink(QFile::encodeName(m_temporaryPath).constData());
        m_open = false;
        return fail(why);
    }
    m_open = false;
    // The rename itself is only durable once the folder is synced.
    syncFolder(QFileInfo(m_path).absolutePath());
    return true;
}

void PropertyListSaveFile::cancel()
{
    if (!m_open)
        return;
    m_file.close();
    ::unlink(QFile::encodeName(m_temporaryPath).constData());
    m_open = false;
}

bool PropertyListSaveFile::isTemporaryName(const QString &name, qint64 *pid)
{
    static const QRegularExpression pattern(QStringLiteral("^\\..+\\.quillory-tmp-([0-9]{1,10})-[A-Za-z0-9]{%1}$")
                                                .arg(RandomLength));
    const auto match = pattern.match(name);
    if (!match.hasMatch())
        return false;
    if (pid)
        *pid = match.captured(1).toLongLong();
    return true;
}

int PropertyListSaveFile::removeLeftovers(const QString &folder)
{
    int removed = 0;
    const QStringList names = QDir(folder).entryList({QStringLiteral(".*") + TemporaryMarker + QLatin1Char('*')},
                                                     QDir::Files | QDir::Hidden | QDir::System);
    for (const QString &name : names) {
        qint64 pid = 0;
        if (!isTemporaryName(name, &pid) || pid == ::getpid() || processIsRunning(pid))
            continue;
        const QString path = folder + QLatin1Char('/') + name;
        struct stat info;
        // Only plain files of our own: never a link, never someone else's file.
        if (::lstat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISREG(info.st_mode)
            || info.st_uid != ::geteuid())
            continue;
        if (::unlink(QFile::encodeName(path).constData()) == 0) {
            ++removed;
            qCInfo(lcSaveFile) << "Removed" << path << "left by process" << pid << "which no longer runs";
        }
    }
    return removed;
}
