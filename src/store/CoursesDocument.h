#pragma once

#include "platform/FileStamp.h"
#include "store/AssignmentsDocument.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <memory>
#include <optional>

class CoursesHistory;
class QFileSystemWatcher;

// The courses and textbooks file and the universal types file, shared by every window and service
// of the process that shows or changes them, as AssignmentsDocument is for the assignments. Each
// change goes through here: it is saved at once and announced, so every window shows the same
// courses and none can write an older copy back.
//
// Changes made elsewhere (another copy of the program, an editor) are noticed by watching both
// files and their folder, and by refresh(), which every change and reader calls first (one stat of
// each file); the document then rereads and announces a reset. Replacements this process makes
// itself (erasing, a backup import, a download) are announced through fileReplaced().
//
// A courses file that cannot be parsed is never overwritten: the document then refuses changes
// (isUsable() is false) until the file is replaced from outside. The same holds for the universal
// types file on its own (isTypesUsable()).
class CoursesDocument : public QObject
{
    Q_OBJECT
public:
    using Replacement = AssignmentsDocument::Replacement;

    // The one document of that pair of files while anything holds it; a fresh one otherwise.
    static std::shared_ptr<CoursesDocument> open(const QString &coursesPath, const QString &universalTypesPath);
    // The data folder's files.
    static std::shared_ptr<CoursesDocument> open();
    ~CoursesDocument() override;
    // This process replaced the files (emptied them, imported a backup, downloaded a copy): the
    // document of `path` (either of its files), if one is open, rereads both now and says why.
    static void fileReplaced(const QString &path, Replacement why);

    QString coursesPath() const { return m_coursesPath; }
    QString universalTypesPath() const { return m_typesPath; }
    bool isUsable();
    bool isTypesUsable();
    // Courses each followed by their own textbooks (regrouped when read; written as given).
    const QVariantList &combined();
    const QStringList &universalTypes();
    // The undo history of the changes made through this document.
    CoursesHistory &history() { return *m_history; }
    // Grows with every reread and every change: a reader compares it to know it holds the latest.
    quint64 generation() const { return m_generation; }

    // Rereads whichever file changed since this document last read or wrote it (or everything when
    // it was never read); announces a reset then. Returns whether it reread.
    bool refresh();
    // Rereads both files whatever their stamps.
    void reload();

    // The changes. Each saves and announces; false when nothing was written (an unreadable file, a
    // write failure, or the file changed underneath and was reread instead).
    bool setCombined(const QVariantList &combined, QObject *source = nullptr);
    bool setUniversalTypes(const QStringList &types, QObject *source = nullptr);

    // Courses in the order given, each followed by the textbooks whose "Course" is its name, sorted
    // by name ignoring case; textbooks of no course are dropped.
    static void regroup(QVariantList &combined);

Q_SIGNALS:
    // The courses and textbooks were changed by `source`.
    void coursesChanged(QObject *source);
    void universalTypesChanged(QObject *source);
    // Everything may differ; source is null for a reread.
    void reset(QObject *source);
    // Follows the reset of a whole-file replacement this process made.
    void replaced(CoursesDocument::Replacement why);

private:
    CoursesDocument(QString coursesPath, QString universalTypesPath);
    void ensureLoaded();
    void loadCourses();
    void loadTypes();
    void watch();

    QString m_coursesPath;
    QString m_typesPath;
    QVariantList m_combined;
    QStringList m_universalTypes;
    bool m_loaded = false;
    bool m_usable = true;
    bool m_typesUsable = true;
    std::optional<FileStamp> m_coursesStamp;
    std::optional<FileStamp> m_typesStamp;
    quint64 m_generation = 0;
    QFileSystemWatcher *m_watcher = nullptr;
    CoursesHistory *m_history = nullptr;
};
