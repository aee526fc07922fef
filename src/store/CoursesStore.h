#pragma once

#include <QObject>

#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <memory>
#include <optional>

class CoursesDocument;

// Keys and values of course and textbook records ("Courses and Textbooks.plist").
namespace CourseKeys {
inline const QString Type = QStringLiteral("Type");
inline const QString Name = QStringLiteral("Name");
inline const QString DisplayName = QStringLiteral("Display Name");
inline const QString Course = QStringLiteral("Course");
inline const QString Contacts = QStringLiteral("Contacts");
inline const QString DefaultTextbook = QStringLiteral("Default Textbook");
inline const QString Notes = QStringLiteral("Notes");
inline const QString Types = QStringLiteral("Types");
inline const QString CourseType = QStringLiteral("Course");
inline const QString TextbookType = QStringLiteral("Textbook");
inline const QString NewCourse = QStringLiteral("New Course");
inline const QString NewTextbook = QStringLiteral("  New Textbook");
inline const QString Indent = QStringLiteral("  ");
inline const QString NewType = QStringLiteral("New Type");
inline const QString NoTextbook = QStringLiteral("none");
// "Field1" ... "Field6"
QString field(int number);
} // namespace CourseKeys

// The student's courses with their textbooks, kept as one combined array in which each course is
// followed by its own textbooks (sorted by name, ignoring case), and the assignment types: the
// universal ones ("Universal Types.plist") and each course's own.
//
// One window's view of the shared CoursesDocument: the list as that window shows it (rows name
// records of this copy), and the changes, each made to the document's latest data and saved at
// once. A file that cannot be parsed is never overwritten: the store then refuses changes
// (isUsable() is false) until the file is replaced from outside.
class CoursesStore
{
public:
    struct CourseForm {
        QString name;
        QStringList fields = QStringList(6); // "Field1" ... "Field6"
        QVariantList contacts;
        QString defaultTextbook;             // "none" (or empty) for no default
        QString notes;
        QStringList types;
    };
    struct TextbookForm {
        QString name;
        QString course;
        QStringList fields = QStringList(5); // "Field1" ... "Field5"
        QString notes;
    };

    CoursesStore();
    CoursesStore(QString coursesPath, QString universalTypesPath, QString assignmentsPath);
    ~CoursesStore();
    CoursesStore(const CoursesStore &) = delete;
    CoursesStore &operator=(const CoursesStore &) = delete;

    // The document every window shares; observe it to learn of changes made elsewhere.
    CoursesDocument *document() const { return m_document.get(); }
    // Changes made through this store are announced with this source.
    void setSource(QObject *source) { m_source = source; }

    // Takes the document's latest data (rereading files changed on disk; missing files are empty
    // arrays).
    bool reload();
    bool isUsable() const { return m_usable; }
    // Takes the document's data if it differs from this copy: another window changed it, or
    // another program changed the files. Returns whether anything was taken. Every change below
    // does this first, so a window left open never writes an old copy back over newer data.
    bool reloadIfChangedOnDisk();
    // How many times a new copy was taken: a window compares it around a change to learn that the
    // list it shows was replaced.
    quint64 readCount() const { return m_reads; }
    // The row of a record of an earlier copy of the list: the same contents (preferring
    // `preferredRow`), else the same type and name; -1 when it is gone.
    int findRecord(const QVariantMap &record, int preferredRow) const;

    const QVariantList &getCombined() const { return m_combined; }
    QVariantMap recordAt(int row) const;
    static bool isCourse(const QVariantMap &record);

    // Course names from the file on disk, in file order; a course without a name (or with an empty
    // one) gives " ".
    QStringList getCoursesArray() const;
    // Names of the textbooks of one course, in combined order.
    QStringList textbooksOfCourse(const QString &course) const;
    // The universal types followed by the course's own types.
    QStringList typesForCourse(const QString &course) const;

    // Regroups (courses in order, each followed by its textbooks sorted case-insensitively; orphan
    // textbooks dropped) and writes the file.
    void updateCombinedArray();
    bool saveData();

    // Each returns the row of the record afterwards (for selecting it), or -1. A row names the record
    // shown at that row; when the file changed on disk meanwhile, the change is applied to that record
    // in the fresh data (found again by its contents, else by its type and name).
    int addCourse();
    int addTextbook(int selectedRow);
    // Rebuilds the course at `row` from the form. With `fromNameField`, the course's old name
    // (`originalCourse`) is replaced by the new one in every assignment on disk and every textbook.
    int editCourse(int row, const CourseForm &form, bool fromNameField);
    int editTextbook(int row, const TextbookForm &form, bool fromNameField);
    // Asks first while "Display Warning Messages" is on. Returns whether it deleted.
    bool deleteCourseOrTextbook(int row);
    // Deletes the first course of that name with its textbooks, without asking: for taking back a
    // course the program itself added. Returns whether it deleted.
    bool deleteCourseNamed(const QString &name);

    // Drag and drop within one table: the item at `from` moves to drop row `dropRow`.
    // Returns the new row of the previously selected record (`selectedRow`), or -1.
    int moveCourse(int from, int dropRow, int selectedRow);
    static void moveInList(QStringList &list, int from, int dropRow);

    QStringList universalTypes() const { return m_universalTypes; }
    // `types` is the list as last read here with one edit made to it. When the file changed on disk
    // meanwhile, that edit (an added, removed or renamed type) is made to the fresh list instead.
    bool editUniversalTypes(const QStringList &types);

    // The names a course or textbook had when it was selected, for renames.
    QString originalCourse;
    QString originalTextbook;

private:
    bool renameInAssignments(const QString &key, const QString &from, const QString &to);
    // The row that `row` named before a reload of changed files, or -1 when its record is gone.
    int rowAfterRefresh(int row);
    // The rows from `courseRow` + 1 up to the next course: the course's own textbooks.
    int groupEnd(int courseRow) const;
    void takeDocument();

    std::shared_ptr<CoursesDocument> m_document;
    QObject *m_source = nullptr;
    QString m_assignmentsPath;
    QVariantList m_combined;
    QStringList m_universalTypes;
    bool m_usable = true;
    quint64 m_reads = 0;
};
