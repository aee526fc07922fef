#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>

#include <functional>

// Backups of all of the student's data in one file: a property list whose root is an array of three
// arrays, the contents of "Assignments.plist", "Courses and Textbooks.plist" and
// "Universal Types.plist" in that order. Restoring replaces the data files with the backup's lists or
// merges the two. Both directions work on the files in the data folder, not on the lists in memory;
// after an import the main window rereads the files (it listens to dataFilesReplaced()).
class Backup : public QObject
{
    Q_OBJECT

public:
    // Texts of the import's questions.
    static inline const QString ImportMessage = QStringLiteral("Import from Backup");
    static inline const QString ImportInformative = QStringLiteral(
        "Would you like to replace all old data with the backed up data, or would you rather merge the data into "
        "Quillory?");
    static inline const QString MergeButton = QStringLiteral("Merge");
    static inline const QString ReplaceButton = QStringLiteral("Replace");
    static inline const QString CancelButton = QStringLiteral("Cancel");
    static inline const QString KeepOnlyOneButton = QStringLiteral("Keep Only One");
    static inline const QString KeepBothButton = QStringLiteral("Keep Both");
    static inline const QString SuggestedFileName = QStringLiteral("Quillory Backup");
    // Our own messages for what the data folder cannot take.
    static inline const QString ErrorTitle = QStringLiteral("Backup Error");
    static inline const QString ExportFailedMessage = QStringLiteral("The backup could not be written.");
    static inline const QString ImportFailedMessage = QStringLiteral("The backup could not be imported.  Your data has not been changed.");
    static inline const QString DataUnreadableMessage = QStringLiteral("Your current data cannot be read, so the backup cannot be merged into it.  Nothing has been changed.");

    enum class ImportOutcome {
        Cancelled,   // the panel or the first alert was cancelled: nothing written
        NotABackup,  // the file holds fewer than three lists: nothing written
        Replaced,
        Merged,
        WriteFailed, // nothing of the data folder changed
        DataUnreadable, // a current data file does not parse; a merge would lose it: nothing written
    };

    static Backup *sharedController();

    // Save panel in the home folder proposing "Quillory Backup", then exportBackupToFile().
    void exportToBackup();
    // Writes the backup of the current data files to `path`, atomically. A missing data file counts
    // as an empty list; a data file that exists but does not parse fails the export (a backup that
    // silently lacked it would be worse than none).
    bool exportBackupToFile(const QString &path, QString *error = nullptr);

    // Open panel, the Merge / Replace / Cancel question, then the chosen import.
    ImportOutcome importFromBackup();
    // The same from the question on, for a file already chosen.
    ImportOutcome importFromFile(const QString &path);

    // The duplicate question: true for "Keep Only One", false for "Keep Both".
    bool showDuplicateAssignmentsPanel();

    // The assignments of a merge, in order: the backup's records (without their "Date Updated",
    // given `stamp` instead), then every current record that is not a duplicate of one of them, and
    // the duplicates too when the answer to `keepOnlyOne` (asked at the first duplicate met) is
    // false. Duplicates are whole-record equal leaving "Date Updated" out.
    static QVariantList mergeAssignments(const QVariantList &backup, const QVariantList &current,
                                         const QString &stamp, const std::function<bool()> &keepOnlyOne);
    // `backup` followed by every element of `current` it does not already hold.
    static QVariantList appendAbsent(const QVariantList &backup, const QVariantList &current);

Q_SIGNALS:
    // The data files were written by an import; whoever shows them should reread them.
    void dataFilesReplaced();

private:
    Backup() = default;
    bool writeDataFiles(const QVariantList &assignments, const QVariantList &courses, const QVariantList &types,
                        QString *error);
};
