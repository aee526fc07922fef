#include "sync/SyncArchive.h"

#include "platform/Paths.h"
#include "platform/PropertyListSaveFile.h"
#include "sync/CommandLine.h"
#include "sync/SyncLog.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThreadPool>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr auto CopyProblemLog = "problem copying application support";
const QString RefusedLink = QStringLiteral("%1 is a symbolic link; it was not followed.");
const QString RefusedForeign = QStringLiteral("%1 belongs to another user; it was not used.");
const QString CannotReplace = QStringLiteral("%1 could not be replaced: %2");
const QString UnreadableArchive = QStringLiteral("The downloaded archive could not be read: %1");
const QString MemberOutside = QStringLiteral("The downloaded archive holds a member outside tmp/Quillory/: %1");
const QString LinkOutside = QStringLiteral("The downloaded archive holds a link pointing outside tmp/Quillory/: %1");
const QString SpecialMember = QStringLiteral("The downloaded archive holds a special file: %1");
const QString CopyFailed = QStringLiteral("%1 could not be copied into the data folder: %2");
// Beside a file moved out of the unpacked tree: the data file it replaced.
constexpr char ReplacedSuffix[] = ".replaced";
// Where the temporary paths go to be freed in the background.
constexpr char DiscardPrefix[] = "/tmp/.quillory-discard-";

QByteArray local(const QString &path)
{
    QString trimmed = path;
    while (trimmed.size() > 1 && trimmed.endsWith(QLatin1Char('/')))
        trimmed.chop(1);
    return QFile::encodeName(trimmed);
}

QString systemError()
{
    return QString::fromLocal8Bit(std::strerror(errno));
}

enum class Kind { Missing, File, Folder, Link, Other };

Kind kindOf(const QString &path, uid_t *owner = nullptr)
{
    struct stat info;
    if (::lstat(local(path).constData(), &info) != 0)
        return Kind::Missing;
    if (owner)
        *owner = info.st_uid;
    if (S_ISLNK(info.st_mode))
        return Kind::Link;
    if (S_ISREG(info.st_mode))
        return Kind::File;
    if (S_ISDIR(info.st_mode))
        return Kind::Folder;
    return Kind::Other;
}

// Moves a file or folder of ours out of the way at once, under a name nobody else can have taken
// (the rename never replaces anything), and frees it on a pool thread, which the program waits for
// before it exits. The archive and the unpacked data are megabytes, and freeing them kept the user
// waiting. False when the rename cannot be made; the caller removes the path itself then.
// What a run that ended before freeing it (killed, or the computer switched off) left aside: ours,
// under the prefix, named after a process that no longer exists.
void freeLeftoversOfEndedRuns()
{
    const QByteArray prefix = QByteArray(DiscardPrefix).mid(QByteArray("/tmp/").size());
    std::error_code error;
    for (fs::directory_iterator it("/tmp", error), end; !error && it != end; it.increment(error)) {
        const std::string name = it->path().filename().string();
        if (name.rfind(prefix.toStdString(), 0) != 0)
            continue;
        const QByteArray rest = QByteArray::fromStdString(name.substr(size_t(prefix.size())));
        bool isNumber = false;
        const qint64 pid = rest.left(rest.indexOf('-')).toLongLong(&isNumber);
        struct stat info;
        if (!isNumber || pid == ::getpid() || ::lstat(it->path().c_str(), &info) != 0 || info.st_uid != ::geteuid())
            continue;
        if (::kill(pid_t(pid), 0) != 0 && errno == ESRCH) {
            std::error_code ignored;
            fs::remove_all(it->path(), ignored); // a link is removed itself, never followed
        }
    }
}

bool discardInBackground(const QByteArray &path)
{
    static std::atomic<int> counter{0};
    const QByteArray discard = DiscardPrefix + QByteArray::number(::getpid()) + '-' + QByteArray::number(++counter);
    if (::renameat2(AT_FDCWD, path.constData(), AT_FDCWD, discard.constData(), RENAME_NOREPLACE) != 0)
        return false;
    QThreadPool::globalInstance()->start([discard] {
        std::error_code error;
        fs::remove_all(fs::path(discard.toStdString()), error); // never follows links inside
        freeLeftoversOfEndedRuns();
    });
    return true;
}

// Clears a fixed temporary path so that it can be made afresh. A link there is refused and left
// alone; a real file or folder of ours is removed.
bool clearPath(const QString &path, QString *problem)
{
    uid_t owner = 0;
    const Kind kind = kindOf(path, &owner);
    if (kind == Kind::Missing)
        return true;
    if (kind == Kind::Link) {
        *problem = RefusedLink.arg(local(path));
        return false;
    }
    if (owner != ::geteuid()) {
        *problem = RefusedForeign.arg(local(path));
        return false;
    }
    if (discardInBackground(local(path)))
        return true;
    std::error_code error;
    fs::remove_all(fs::path(local(path).toStdString()), error); // never follows links inside
    if (error) {
        *problem = CannotReplace.arg(local(path), QString::fromStdString(error.message()));
        return false;
    }
    return true;
}

// mkdir fails when anything (a link planted since the clear) is there, so the folder we use is
// always the one we made.
bool makePrivateFolder(const QString &path, QString *problem)
{
    if (!clearPath(path, problem))
        return false;
    if (::mkdir(local(path).constData(), 0700) != 0) {
        *problem = CannotReplace.arg(local(path), systemError());
        return false;
    }
    return true;
}

bool makePrivateFile(const QString &path, QString *problem)
{
    if (!clearPath(path, problem))
        return false;
    const int fd = ::open(local(path).constData(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) {
        *problem = CannotReplace.arg(local(path), systemError());
        return false;
    }
    ::close(fd);
    return true;
}

// Staging: a hard link shares the file's current contents and costs nothing; the program replaces
// files by renaming new ones into place, so the staged copy stays a consistent snapshot. Across
// file systems it falls back to a real copy. "Syncing Backups" at the top is never staged.
bool stage(const fs::path &from, const fs::path &to, bool top)
{
    std::error_code error;
    bool complete = true;
    fs::directory_iterator it(from, error), end;
    if (error)
        return false;
    for (; it != end; it.increment(error)) {
        if (error)
            return false;
        const fs::path source = it->path();
        if (top && source.filename() == Paths::SyncingBackupsFolderName)
            continue;
        const fs::path target = to / source.filename();
        const auto status = it->symlink_status(error);
        if (fs::is_symlink(status)) {
            fs::copy_symlink(source, target, error);
        } else if (fs::is_directory(status)) {
            fs::create_directory(target, error);
            if (!error && !stage(source, target, false))
                complete = false;
        } else if (fs::is_regular_file(status)) {
            fs::create_hard_link(source, target, error);
            if (error) {
                error.clear();
                fs::copy_file(source, target, error);
            }
        }
        if (error) {
            qCWarning(lcSync) << "staging" << source.c_str() << QString::fromStdString(error.message());
            error.clear();
            complete = false;
        }
    }
    return complete;
}

bool isInside(const QString &name)
{
    if (name.startsWith(QLatin1Char('/')) || !name.startsWith(SyncArchive::MemberPrefix))
        return false;
    const auto parts = name.split(QLatin1Char('/'));
    return !parts.contains(QStringLiteral(".."));
}

// Where a symbolic link member points, as an archive path.
QString resolveLink(const QString &member, const QString &target)
{
    if (target.startsWith(QLatin1Char('/')))
        return target;
    const QString folder = member.section(QLatin1Char('/'), 0, -2, QString::SectionSkipEmpty);
    return QDir::cleanPath(folder + QLatin1Char('/') + target);
}

// What arrives from a server is the student's private data, whatever modes the archive carried:
// folders 0700 and files 0600 (which also drops setuid, setgid and sticky bits), owned by us. Links
// are left as they are (their own mode means nothing) and never followed.
bool makePrivate(const fs::path &folder)
{
    bool complete = ::chmod(folder.c_str(), 0700) == 0;
    std::error_code error;
    for (fs::recursive_directory_iterator it(folder, fs::directory_options::none, error), end; !error && it != end;
         it.increment(error)) {
        struct stat info;
        if (::lstat(it->path().c_str(), &info) != 0)
            continue;
        if (S_ISDIR(info.st_mode))
            complete = ::chmod(it->path().c_str(), 0700) == 0 && complete;
        else if (S_ISREG(info.st_mode))
            complete = ::chmod(it->path().c_str(), 0600) == 0 && complete;
    }
    return complete && !error;
}

// A folder the download adds to the data folder is private from the start.
bool makeFolders(const QString &path)
{
    if (QFileInfo(path).isDir())
        return true;
    const QString parent = QFileInfo(path).path();
    if (parent != path && !makeFolders(parent))
        return false;
    return ::mkdir(QFile::encodeName(path).constData(), 0700) == 0 || errno == EEXIST;
}

bool copyFileAtomically(const QString &from, const QString &to, QString *problem)
{
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly)) {
        *problem = CopyFailed.arg(from, source.errorString());
        return false;
    }
    // A link of the user's own at this name is replaced, not written through.
    if (kindOf(to) == Kind::Link)
        QFile::remove(to);
    // Written the way the program writes its own files: a temporary name a later start recognises
    // and clears should this run be killed, owner-only modes, and a rename that replaces whole.
    PropertyListSaveFile target(to);
    if (!target.open()) {
        *problem = CopyFailed.arg(from, target.errorString());
        return false;
    }
    QByteArray chunk;
    bool written = true;
    while (written && !(chunk = source.read(1 << 20)).isEmpty())
        written = target.device()->write(chunk) == chunk.size();
    if (!written || source.error() != QFileDevice::NoError) {
        *problem = CopyFailed.arg(from, written ? source.errorString() : target.device()->errorString());
        target.cancel();
        return false;
    }
    if (!target.commit()) {
        *problem = CopyFailed.arg(from, target.errorString());
        return false;
    }
    return true;
}

} // namespace

bool SyncArchive::archiveExists()
{
    return kindOf(ArchivePath) != Kind::Missing;
}

void SyncArchive::removeArchive()
{
    uid_t owner = 0;
    const Kind kind = kindOf(ArchivePath, &owner);
    if (kind == Kind::Missing)
        return;
    // A link is removed itself, never what it points to.
    if (kind != Kind::File || owner != ::geteuid() || !discardInBackground(local(ArchivePath)))
        ::unlink(local(ArchivePath).constData());
}

void SyncArchive::removeUnpackFolder()
{
    QString ignored;
    if (kindOf(UnpackFolder) == Kind::Link)
        return; // someone else's link: not ours to remove, and never followed
    clearPath(UnpackFolder, &ignored);
}

bool SyncArchive::compress(const QString &dataFolder, QString *problem)
{
    if (!makePrivateFolder(StagingFolder, problem) || !makePrivateFile(ArchivePath, problem)) {
        if (kindOf(StagingFolder) == Kind::Folder) {
            QString ignored;
            clearPath(StagingFolder, &ignored);
        }
        return false;
    }
    if (!stage(fs::path(QFile::encodeName(dataFolder).toStdString()), fs::path(local(StagingFolder).toStdString()),
               true))
        qCWarning(lcSync) << CopyProblemLog;

    const auto tar = CommandLine::run(TarPath, {QStringLiteral("-cf"), ArchivePath, StagingFolder});
    if (tar.exitStatus != 0)
        qCWarning(lcSync) << "tar:" << tar.output.trimmed();
    QString ignored;
    clearPath(StagingFolder, &ignored);
    return true;
}

bool SyncArchive::prepareForDownload(QString *problem)
{
    return makePrivateFile(ArchivePath, problem);
}

std::optional<QString> SyncArchive::checkMembers(const QString &archivePath)
{
    // --absolute-names lists the names as stored, leading "/" and ".." included, which is what
    // needs checking; the warnings tar prints go elsewhere.
    const QString asStored = QStringLiteral("--absolute-names");
    // The two listings read the same file and do not depend on each other: they run side by side.
    CommandLine::Outcome names;
    std::thread namesListing(
        [&] { names = CommandLine::run(TarPath, {asStored, QStringLiteral("-tf"), archivePath}, false); });
    // The long listing's words ("link to") follow the locale: read it in the C locale.
    const auto details = CommandLine::run(TarPath, {asStored, QStringLiteral("-tvf"), archivePath}, false,
                                          {QStringLiteral("LC_ALL=C")});
    namesListing.join();
    if (names.exitStatus != 0)
        return UnreadableArchive.arg(CommandLine::run(TarPath, {QStringLiteral("-tf"), archivePath}).output.trimmed());
    const QStringList nameLines = names.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    const QStringList detailLines = details.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (details.exitStatus != 0 || nameLines.size() != detailLines.size())
        return UnreadableArchive.arg(details.output.trimmed());

    for (qsizetype i = 0; i < nameLines.size(); ++i) {
        const QString &name = nameLines[i];
        if (!isInside(name) && name != MemberPrefix)
            return MemberOutside.arg(name);
        const QString &line = detailLines[i];
        const QChar type = line.isEmpty() ? QChar() : line.front();
        if (type == QLatin1Char('-') || type == QLatin1Char('d'))
            continue;
        QString separator;
        if (type == QLatin1Char('l'))
            separator = QStringLiteral(" -> ");
        else if (type == QLatin1Char('h'))
            separator = QStringLiteral(" link to ");
        else
            return SpecialMember.arg(name);
        const QString marker = QLatin1Char(' ') + name + separator;
        const qsizetype at = line.indexOf(marker);
        if (at < 0)
            return UnreadableArchive.arg(line);
        const QString target = line.mid(at + marker.size());
        const QString resolved = type == QLatin1Char('l') ? resolveLink(name, target) : target;
        if (!isInside(resolved + QLatin1Char('/')) || target.split(QLatin1Char('/')).contains(QStringLiteral("..")))
            return LinkOutside.arg(name + separator + target);
    }
    return std::nullopt;
}

bool SyncArchive::mergeCopy(const QString &from, const QString &to, QString *problem, bool move)
{
    if (!makeFolders(to)) {
        *problem = CopyFailed.arg(from, QStringLiteral("the data folder cannot be made"));
        return false;
    }
    QDir source(from);
    const auto entries = source.entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    bool complete = true;
    for (const QFileInfo &entry : entries) {
        const QString target = to + QLatin1Char('/') + entry.fileName();
        if (entry.isSymLink()) {
            std::error_code error;
            const fs::path link(QFile::encodeName(target).toStdString());
            fs::remove(link, error);
            fs::copy_symlink(QFile::encodeName(entry.filePath()).toStdString(), link, error);
            if (error) {
                *problem = CopyFailed.arg(entry.filePath(), QString::fromStdString(error.message()));
                complete = false;
            }
        } else if (entry.isDir()) {
            if (!mergeCopy(entry.filePath(), target, problem, move))
                complete = false;
        } else if (entry.isFile()) {
            bool moved = false;
            if (move) {
                const Kind replaced = kindOf(target);
                const QByteArray source = QFile::encodeName(entry.filePath());
                // The file replaced keeps a name beside the moved one until the source tree is
                // removed: renaming over its last name would free its megabytes then and there,
                // with the user waiting.
                if (replaced == Kind::File)
                    ::link(QFile::encodeName(target).constData(), source + ReplacedSuffix);
                moved = replaced != Kind::Folder && ::rename(source.constData(), QFile::encodeName(target).constData()) == 0;
            }
            if (!moved && !copyFileAtomically(entry.filePath(), target, problem))
                complete = false;
        }
    }
    return complete;
}

SyncArchive::Unpacked SyncArchive::unpack(QString *problem)
{
    uid_t owner = 0;
    const Kind kind = kindOf(ArchivePath, &owner);
    if (kind == Kind::Missing)
        return Unpacked::NoArchive;
    if (kind == Kind::Link)
        *problem = RefusedLink.arg(local(ArchivePath));
    else if (kind != Kind::File || owner != ::geteuid())
        *problem = RefusedForeign.arg(local(ArchivePath));
    else if (const auto refusal = checkMembers(ArchivePath))
        *problem = *refusal;
    else if (makePrivateFolder(UnpackFolder, problem)) {
        // Owners and modes from the archive are not taken over (root's tar would by default).
        const auto tar = CommandLine::run(TarPath, {QStringLiteral("--no-same-owner"), QStringLiteral("--no-same-permissions"),
                                                    QStringLiteral("-xf"), ArchivePath, QStringLiteral("-C"),
                                                    QStringLiteral("/tmp/")});
        if (tar.exitStatus != 0)
            qCWarning(lcSync) << "tar:" << tar.output.trimmed();
        if (!makePrivate(fs::path(local(UnpackFolder).toStdString())))
            qCWarning(lcSync) << "could not make every unpacked file private";
        return Unpacked::Ready;
    }
    return Unpacked::Refused; // the caller tells the user, and the log, why
}

void SyncArchive::mergeUnpacked(const QString &dataFolder)
{
    if (kindOf(UnpackedDataFolder) != Kind::Folder)
        return;
    // Archives never carry backups; one that did must not replace the local safety copies.
    std::error_code ignored;
    fs::remove_all(fs::path(local(UnpackedDataFolder + QLatin1String(Paths::SyncingBackupsFolderName)).toStdString()),
                   ignored);
    QString problem;
    if (!mergeCopy(UnpackedDataFolder, dataFolder, &problem, true))
        qCWarning(lcSync) << problem;
}

void SyncArchive::removeArchiveFile()
{
    // A link planted at the path is not ours to remove.
    if (kindOf(ArchivePath) == Kind::File)
        removeArchive();
}

void SyncArchive::cleanUp()
{
    removeArchiveFile();
    removeUnpackFolder();
}

bool SyncArchive::uncompress(const QString &dataFolder, QString *problem)
{
    const Unpacked unpacked = unpack(problem);
    if (unpacked == Unpacked::Ready)
        mergeUnpacked(dataFolder);
    cleanUp();
    return unpacked != Unpacked::Refused;
}
