#include "exchange/Backup.h"

#include "exchange/AutomaticBackups.h"
#include "exchange/BackupWriter.h"
#include "exchange/RecordMatch.h"
#include "platform/Alerts.h"
#include "platform/DateText.h"
#include "platform/FilePanels.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/Assignment.h"
#include "store/AssignmentsDocument.h"
#include "store/CoursesDocument.h"
#include "store/Labels.h"
#include "store/PreferenceKeys.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <optional>
#include <unistd.h>

Q_LOGGING_CATEGORY(lcBackup, "quillory.exchange.backup")

namespace {

const QString DuplicateMessagePrefix = QStringLiteral("Duplicate ");
const QString DuplicateTextStart = QStringLiteral("The backup data contains one or more ");
const QString DuplicateTextMiddle =
    QStringLiteral(" which already exist in Quillory.  Would you like to keep both copies of the ");
const QString DuplicateTextEnd = QStringLiteral(", or just one copy?");
const QString StagingSuffix = QStringLiteral(".importing");
const QString KeptSuffix = QStringLiteral(".before-import");
const QString DamagedSuffix = QStringLiteral(".damaged");

enum class FileState { Missing, Read, Unreadable };

// A data file's root array. A missing file is an empty list.
FileState readList(const QString &path, QVariantList &list, QString *error = nullptr)
{
    list.clear();
    if (!QFileInfo::exists(path))
        return FileState::Missing;
    QString why;
    const auto parsed = PropertyList::readFile(path, &why);
    if (!parsed || parsed->typeId() != QMetaType::QVariantList) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(path, parsed ? QStringLiteral("the root is not an array") : why);
        return FileState::Unreadable;
    }
    list = parsed->toList();
    return FileState::Read;
}

QByteArray localPath(const QString &path)
{
    return QFile::encodeName(path);
}

// Keeps a file that does not parse under "<name>.damaged" (numbered when taken) before it is
// replaced, so that nothing the student had is ever lost to an import.
bool keepDamaged(const QString &path)
{
    QString target = path + DamagedSuffix;
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = path + DamagedSuffix + QStringLiteral("-%1").arg(n);
    if (!QFile::copy(path, target)) {
        qCWarning(lcBackup) << "Could not keep the unreadable data file" << path << "as" << target;
        return false;
    }
    qCWarning(lcBackup) << "Kept the unreadable data file" << path << "as" << target;
    return true;
}

} // namespace

Backup *Backup::sharedController()
{
    static Backup *instance = new Backup;
    return instance;
}

void Backup::exportToBackup()
{
    const QString path = FilePanels::runSave({Paths::home(), SuggestedFileName, QString()});
    if (path.isEmpty())
        return;
    QString error;
    if (!exportBackupToFile(path, &error)) {
        qCWarning(lcBackup) << "Backup export failed:" << error;
        Alerts::inform(ErrorTitle, ExportFailedMessage + QLatin1Char(' ') + error);
    }
}

bool Backup::exportBackupToFile(const QString &path, QString *error)
{
    return BackupWriter::write(path, {Paths::assignmentsFile(), Paths::coursesFile(), Paths::universalTypesFile()},
                               error);
}

Backup::ImportOutcome Backup::importFromBackup()
{
    const QString path = FilePanels::runOpen({Paths::home()});
    if (path.isEmpty())
        return ImportOutcome::Cancelled;
    return importFromFile(path);
}

Backup::ImportOutcome Backup::importFromFile(const QString &path)
{
    // A file that is not a property-list array counts as an empty list whose three lists are empty
    // (Replace then empties the data, Merge keeps it); a missing file or one with fewer than three
    // lists stops once the lists are taken.
    bool notAnArray = false;
    QVariantList backup;
    if (QFileInfo::exists(path)) {
        QString why;
        const auto parsed = PropertyList::readFile(path, &why);
        if (parsed && parsed->typeId() == QMetaType::QVariantList) {
            backup = parsed->toList();
        } else {
            notAnArray = true;
            qCWarning(lcBackup) << "The backup" << path << "is not a property-list array:"
                                << (parsed ? QStringLiteral("its root is not an array") : why);
        }
    }

    const QString answer = Alerts::run({QString(), ImportMessage, ImportInformative,
                                        {MergeButton, ReplaceButton, CancelButton}, Alerts::Style::Warning});
    const bool replace = answer == ReplaceButton;
    if (answer != MergeButton && !replace)
        return ImportOutcome::Cancelled;

    std::array<QVariantList, 3> lists;
    if (!notAnArray) {
        if (backup.size() < 3) {
            qCWarning(lcBackup) << "The backup" << path << "holds" << backup.size() << "lists, not three; nothing imported";
            return ImportOutcome::NotABackup;
        }
        for (int i = 0; i < 3; ++i) {
            if (backup.at(i).typeId() != QMetaType::QVariantList) {
                qCWarning(lcBackup) << "List" << i << "of the backup" << path << "is not an array; nothing imported";
                return ImportOutcome::NotABackup;
            }
            lists[i] = backup.at(i).toList();
        }
    }

    const QStringList files = {Paths::assignmentsFile(), Paths::coursesFile(), Paths::universalTypesFile()};
    std::array<QVariantList, 3> current;
    std::array<FileState, 3> states;
    for (int i = 0; i < 3; ++i)
        states[i] = readList(files.at(i), current[i]);

    QString error;
    if (replace) {
        bool anyUnreadable = false;
        for (int i = 0; i < 3; ++i) {
            anyUnreadable = anyUnreadable || states[i] == FileState::Unreadable;
            if (states[i] == FileState::Unreadable && !keepDamaged(files.at(i))) {
                Alerts::inform(ErrorTitle, ImportFailedMessage);
                return ImportOutcome::WriteFailed;
            }
        }
        // A wrong file or a wrong choice must be undoable: the data replaced goes to the automatic
        // backups first (a file that does not parse was kept beside itself above instead).
        const bool anyData = std::any_of(states.begin(), states.end(), [](FileState state) { return state == FileState::Read; });
        if (anyData && !anyUnreadable && !AutomaticBackups::write(AutomaticBackups::path(), &error)) {
            qCWarning(lcBackup) << "Not replacing: the current data could not be backed up:" << error;
            Alerts::inform(ErrorTitle, ImportFailedMessage);
            return ImportOutcome::WriteFailed;
        }
        if (!writeDataFiles(lists[0], lists[1], lists[2], &error)) {
            qCWarning(lcBackup) << "Replacing the data from" << path << "failed:" << error;
            Alerts::inform(ErrorTitle, ImportFailedMessage);
            return ImportOutcome::WriteFailed;
        }
        AssignmentsDocument::fileReplaced(Paths::assignmentsFile(), AssignmentsDocument::Replacement::BackupImport);
        CoursesDocument::fileReplaced(Paths::coursesFile(), CoursesDocument::Replacement::BackupImport);
        Q_EMIT dataFilesReplaced();
        return ImportOutcome::Replaced;
    }

    for (int i = 0; i < 3; ++i) {
        if (states[i] == FileState::Unreadable) {
            qCWarning(lcBackup) << "Not merging: the data file" << files.at(i) << "does not parse";
            Alerts::inform(ErrorTitle, DataUnreadableMessage);
            return ImportOutcome::DataUnreadable;
        }
    }

    std::optional<bool> keepOnlyOne;
    const QVariantList assignments = mergeAssignments(lists[0], current[0], DateText::nowStoredForm(), [&] {
        if (!keepOnlyOne)
            keepOnlyOne = showDuplicateAssignmentsPanel();
        return *keepOnlyOne;
    });
    if (!writeDataFiles(assignments, appendAbsent(lists[1], current[1]), appendAbsent(lists[2], current[2]),
                        &error)) {
        qCWarning(lcBackup) << "Merging" << path << "failed:" << error;
        Alerts::inform(ErrorTitle, ImportFailedMessage);
        return ImportOutcome::WriteFailed;
    }
    AssignmentsDocument::fileReplaced(Paths::assignmentsFile(), AssignmentsDocument::Replacement::BackupImport);
    CoursesDocument::fileReplaced(Paths::coursesFile(), CoursesDocument::Replacement::BackupImport);
    Q_EMIT dataFilesReplaced();
    return ImportOutcome::Merged;
}

bool Backup::showDuplicateAssignmentsPanel()
{
    const QString plural = Labels::plural(PreferenceKeys::LabelKeys::Assignment);
    const QString lower = plural.toLower();
    const QString answer =
        Alerts::run({QString(), DuplicateMessagePrefix + plural,
                     DuplicateTextStart + lower + DuplicateTextMiddle + lower + DuplicateTextEnd,
                     {KeepOnlyOneButton, KeepBothButton}, Alerts::Style::Warning});
    // Only an explicit "Keep Both" doubles records; a dismissed alert takes the default.
    return answer != KeepBothButton;
}

QVariantList Backup::mergeAssignments(const QVariantList &backup, const QVariantList &current, const QString &stamp,
                                      const std::function<bool()> &keepOnlyOne)
{
    const QString &skip = AssignmentKeys::DateUpdated;
    QVariantList result;
    result.reserve(backup.size() + current.size());
    for (const QVariant &record : backup) {
        if (record.typeId() == QMetaType::QVariantMap) {
            QVariantMap fields = record.toMap();
            fields.insert(skip, stamp);
            result.append(QVariant(fields));
        } else {
            result.append(record);
        }
    }

    const RecordMatch::Index index(backup, skip);
    for (const QVariant &record : current) {
        if (index.contains(record) && keepOnlyOne())
            continue;
        result.append(record);
    }
    return result;
}

QVariantList Backup::appendAbsent(const QVariantList &backup, const QVariantList &current)
{
    QVariantList result = backup;
    const RecordMatch::Index index(backup);
    for (const QVariant &value : current) {
        if (!index.contains(value))
            result.append(value);
    }
    return result;
}

// The three files change together or not at all: each new file is first written in full beside its
// target, and only when all three are on disk are they moved over the old ones, each move atomic.
// Should a move fail half-way, the files already moved are put back from the links kept of them.
bool Backup::writeDataFiles(const QVariantList &assignments, const QVariantList &courses, const QVariantList &types,
                            QString *error)
{
    const QStringList targets = {Paths::assignmentsFile(), Paths::coursesFile(), Paths::universalTypesFile()};
    const std::array<const QVariantList *, 3> contents = {&assignments, &courses, &types};
    if (!QDir().mkpath(Paths::dataFolder())) {
        if (error)
            *error = QStringLiteral("cannot create the data folder %1").arg(Paths::dataFolder());
        return false;
    }

    auto removeAll = [&](const QString &suffix) {
        for (const QString &target : targets)
            QFile::remove(target + suffix);
    };

    for (int i = 0; i < 3; ++i) {
        if (!PropertyList::writeBytes(targets.at(i) + StagingSuffix, PropertyList::toXml(*contents[i]), error)) {
            removeAll(StagingSuffix);
            return false;
        }
    }

    std::array<bool, 3> hadOld = {};
    removeAll(KeptSuffix);
    for (int i = 0; i < 3; ++i) {
        hadOld[i] = QFileInfo::exists(targets.at(i));
        if (hadOld[i] && ::link(localPath(targets.at(i)).constData(), localPath(targets.at(i) + KeptSuffix).constData())
                             != 0) {
            if (error)
                *error = QStringLiteral("cannot keep %1 while replacing it: %2")
                             .arg(targets.at(i), QString::fromLocal8Bit(std::strerror(errno)));
            removeAll(KeptSuffix);
            removeAll(StagingSuffix);
            return false;
        }
    }

    for (int i = 0; i < 3; ++i) {
        if (::rename(localPath(targets.at(i) + StagingSuffix).constData(), localPath(targets.at(i)).constData()) == 0)
            continue;
        if (error)
            *error = QStringLiteral("cannot replace %1: %2").arg(targets.at(i), QString::fromLocal8Bit(std::strerror(errno)));
        for (int j = 0; j < i; ++j) {
            if (hadOld[j])
                ::rename(localPath(targets.at(j) + KeptSuffix).constData(), localPath(targets.at(j)).constData());
            else
                QFile::remove(targets.at(j));
        }
        removeAll(KeptSuffix);
        removeAll(StagingSuffix);
        return false;
    }
    removeAll(KeptSuffix);
    return true;
}
