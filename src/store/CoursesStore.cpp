#include "store/CoursesStore.h"

#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/Assignment.h"
#include "store/AssignmentStore.h"
#include "store/AssignmentsDocument.h"
#include "store/CoursesDocument.h"
#include "store/CoursesHistory.h"
#include "store/PreferenceKeys.h"
#include "store/TypeListEdits.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSet>

#include <algorithm>


Q_DECLARE_LOGGING_CATEGORY(lcStore)

namespace {
const QString WarningTitle = QStringLiteral("Warning");
const QString DeleteCourseQuestion = QStringLiteral("Are you sure you want to delete this course?");
const QString DeleteTextbookQuestion = QStringLiteral("Are you sure you want to delete this textbook?");

// The keys a course's or a textbook's form sets; a record may hold others (written by another
// version of the program), which the form leaves alone.
QStringList formKeys(bool course)
{
    QStringList keys{CourseKeys::Name, CourseKeys::DisplayName, CourseKeys::Type, CourseKeys::Notes};
    for (int i = 1; i <= (course ? 6 : 5); ++i)
        keys.append(CourseKeys::field(i));
    if (course)
        keys += {CourseKeys::Contacts, CourseKeys::DefaultTextbook, CourseKeys::Types};
    else
        keys.append(CourseKeys::Course);
    return keys;
}

// The record a form's edit leaves, made on the latest copy: each field the form changed from what
// it was filled with (`base`) takes the form's value, and every other key keeps the latest one,
// which another window may have changed meanwhile.
QVariantMap editedOnLatest(const QVariantMap &base, const QVariantMap &form, QVariantMap latest, bool course)
{
    for (const QString &key : formKeys(course)) {
        if (base.contains(key) == form.contains(key) && base.value(key) == form.value(key))
            continue;
        if (form.contains(key))
            latest.insert(key, form.value(key));
        else
            latest.remove(key);
    }
    return latest;
}
} // namespace

QString CourseKeys::field(int number)
{
    return QStringLiteral("Field%1").arg(number);
}

CoursesStore::CoursesStore()
    : CoursesStore(Paths::coursesFile(), Paths::universalTypesFile(), Paths::assignmentsFile())
{
}

CoursesStore::CoursesStore(QString coursesPath, QString universalTypesPath, QString assignmentsPath)
    : m_document(CoursesDocument::open(coursesPath, universalTypesPath))
    , m_assignmentsPath(std::move(assignmentsPath))
{
    reload();
}

CoursesStore::~CoursesStore() = default;

void CoursesStore::takeDocument()
{
    ++m_reads;
    m_combined = m_document->combined();
    m_universalTypes = m_document->universalTypes();
    m_usable = m_document->isUsable();
}

bool CoursesStore::reload()
{
    m_document->refresh();
    takeDocument();
    return m_usable;
}

bool CoursesStore::reloadIfChangedOnDisk()
{
    m_document->refresh();
    // Compared by contents rather than by a count of changes: a window that answers another's
    // change with a change of its own does so in the middle of that other change.
    if (m_document->combined() == m_combined && m_document->universalTypes() == m_universalTypes
        && m_document->isUsable() == m_usable)
        return false;
    takeDocument();
    return true;
}

int CoursesStore::findRecord(const QVariantMap &record, int preferredRow) const
{
    if (record.isEmpty())
        return -1;
    if (recordAt(preferredRow) == record)
        return preferredRow;
    if (const qsizetype same = m_combined.indexOf(record); same >= 0)
        return int(same);
    const bool course = isCourse(record);
    for (int row = 0; row < m_combined.size(); ++row) {
        const QVariantMap other = m_combined[row].toMap();
        if (isCourse(other) == course && other.value(CourseKeys::Name) == record.value(CourseKeys::Name)
            && (course || other.value(CourseKeys::Course) == record.value(CourseKeys::Course)))
            return row;
    }
    return -1;
}

int CoursesStore::rowAfterRefresh(int row)
{
    const QVariantMap shown = recordAt(row);
    if (!reloadIfChangedOnDisk())
        return shown.isEmpty() ? -1 : row;
    return findRecord(shown, row);
}

int CoursesStore::groupEnd(int courseRow) const
{
    int end = courseRow + 1;
    while (end < m_combined.size() && !isCourse(m_combined[end].toMap()))
        ++end;
    return end;
}

QVariantMap CoursesStore::recordAt(int row) const
{
    return row >= 0 && row < m_combined.size() ? m_combined[row].toMap() : QVariantMap();
}

bool CoursesStore::isCourse(const QVariantMap &record)
{
    return record.value(CourseKeys::Type).toString() == CourseKeys::CourseType;
}

QStringList CoursesStore::getCoursesArray() const
{
    QStringList names;
    // The latest data, whatever this copy shows.
    m_document->refresh();
    for (const QVariant &value : m_document->combined()) {
        const QVariantMap record = value.toMap();
        if (!isCourse(record))
            continue;
        const QString name = record.value(CourseKeys::Name).toString();
        names.append(name.isEmpty() ? QStringLiteral(" ") : name);
    }
    return names;
}

QStringList CoursesStore::textbooksOfCourse(const QString &course) const
{
    QStringList names;
    for (const QVariant &value : m_combined) {
        const QVariantMap record = value.toMap();
        if (!isCourse(record) && record.value(CourseKeys::Course).toString() == course)
            names.append(record.value(CourseKeys::Name).toString());
    }
    return names;
}

QStringList CoursesStore::typesForCourse(const QString &course) const
{
    QStringList types = m_universalTypes;
    for (const QVariant &value : m_combined) {
        const QVariantMap record = value.toMap();
        if (isCourse(record) && record.value(CourseKeys::Name).toString() == course) {
            types += record.value(CourseKeys::Types).toStringList();
            break;
        }
    }
    return types;
}

void CoursesStore::updateCombinedArray()
{
    CoursesDocument::regroup(m_combined);
    saveData();
}

bool CoursesStore::saveData()
{
    if (!m_usable) {
        qCWarning(lcStore) << "Not saving courses: the file on disk could not be read";
        return false;
    }
    return m_document->setCombined(m_combined, m_source);
}

int CoursesStore::addCourse()
{
    reloadIfChangedOnDisk();
    if (!m_usable)
        return -1;
    m_combined.append(QVariantMap{{CourseKeys::Name, QString()},
                                  {CourseKeys::DisplayName, CourseKeys::NewCourse},
                                  {CourseKeys::Type, CourseKeys::CourseType}});
    // Courses keep their order, so the new one is the last course after regrouping.
    updateCombinedArray();
    for (int row = int(m_combined.size()) - 1; row >= 0; --row) {
        if (isCourse(m_combined[row].toMap()))
            return row;
    }
    return -1;
}

int CoursesStore::addTextbook(int selectedRow)
{
    const QVariantMap selected = recordAt(rowAfterRefresh(selectedRow));
    if (!m_usable || selected.isEmpty())
        return -1;
    const QString course = isCourse(selected) ? selected.value(CourseKeys::Name).toString()
                                              : selected.value(CourseKeys::Course).toString();
    const QVariantMap textbook{{CourseKeys::Name, QString()},
                               {CourseKeys::DisplayName, CourseKeys::NewTextbook},
                               {CourseKeys::Type, CourseKeys::TextbookType},
                               {CourseKeys::Course, course}};
    qsizetype at = m_combined.size();
    for (qsizetype i = m_combined.size() - 1; i >= 0; --i) {
        const QVariantMap record = m_combined[i].toMap();
        if (isCourse(record) && record.value(CourseKeys::Name).toString() == course) {
            at = i + 1;
            break;
        }
    }
    m_combined.insert(at, textbook);
    updateCombinedArray();
    return int(m_combined.indexOf(textbook));
}

bool CoursesStore::renameInAssignments(const QString &key, const QString &from, const QString &to)
{
    // Through the shared document, so every window showing the assignments sees the new name at
    // once and none of them writes the old one back.
    const std::shared_ptr<AssignmentsDocument> document = AssignmentsDocument::open(m_assignmentsPath);
    document->refresh();
    if (!document->isUsable()) {
        qCWarning(lcStore) << "Assignments not renamed: the assignments file cannot be read";
        return false;
    }
    AssignmentList renamed;
    for (const AssignmentRef &record : document->records()) {
        if (record->has(key) && record->value(key).toString() == from) {
            record->set(key, to);
            renamed.append(record);
        }
    }
    // An undo of the rename names back exactly these.
    m_document->history().renamedAssignments(document, renamed, key, from, to);
    return renamed.isEmpty() || document->setAll(document->records());
}

int CoursesStore::editCourse(int row, const CourseForm &form, bool fromNameField)
{
    // What the form was filled with: the fields it changed since are the edit.
    const QVariantMap base = recordAt(row);
    const bool wasCourse = isCourse(base);
    row = rowAfterRefresh(row);
    if (!m_usable || !wasCourse)
        return -1;
    if (row < 0) {
        // The course went from the file while its form was open: what was typed comes back as a
        // course of its own rather than being lost.
        m_combined.append(base);
        row = int(m_combined.size()) - 1;
    }
    const QVariantMap old = recordAt(row);
    if (!isCourse(old))
        return -1;
    QVariantMap record{{CourseKeys::Name, form.name},
                       {CourseKeys::DisplayName, form.name.isEmpty() ? CourseKeys::NewCourse : form.name},
                       {CourseKeys::Type, CourseKeys::CourseType}};
    for (int i = 0; i < 6 && i < form.fields.size(); ++i) {
        if (!form.fields[i].isEmpty())
            record.insert(CourseKeys::field(i + 1), form.fields[i]);
    }
    if (!form.contacts.isEmpty())
        record.insert(CourseKeys::Contacts, form.contacts);
    if (!form.defaultTextbook.isEmpty() && form.defaultTextbook != CourseKeys::NoTextbook)
        record.insert(CourseKeys::DefaultTextbook, form.defaultTextbook);
    if (!form.notes.isEmpty())
        record.insert(CourseKeys::Notes, form.notes);
    if (!form.types.isEmpty())
        record.insert(CourseKeys::Types, form.types);

    if (fromNameField && originalCourse != form.name) {
        // A course that had no name yet was named: no assignment can have meant it, however many
        // name no course at all.
        if (!originalCourse.isEmpty())
            renameInAssignments(AssignmentKeys::Course, originalCourse, form.name);
        // The course's own textbooks are the rows right after it (another course of the same name
        // keeps its own).
        for (int i = row + 1, end = groupEnd(row); i < end; ++i) {
            QVariantMap textbook = m_combined[i].toMap();
            textbook.insert(CourseKeys::Course, form.name);
            m_combined[i] = textbook;
        }
        saveData();
        originalCourse = form.name;
    }

    // Courses keep their order, so the edited one is still the same course by position.
    int courseIndex = 0;
    for (int i = 0; i < row; ++i)
        courseIndex += isCourse(m_combined[i].toMap()) ? 1 : 0;
    m_combined[row] = editedOnLatest(base, record, m_combined[row].toMap(), true);
    CoursesDocument::regroup(m_combined);
    saveData();
    for (int i = 0, seen = 0; i < m_combined.size(); ++i) {
        if (isCourse(m_combined[i].toMap()) && seen++ == courseIndex)
            return i;
    }
    return -1;
}

int CoursesStore::editTextbook(int row, const TextbookForm &form, bool fromNameField)
{
    const QVariantMap shown = recordAt(row);
    if (shown.isEmpty() || isCourse(shown))
        return -1;
    row = rowAfterRefresh(row);
    if (!m_usable)
        return -1;
    if (row < 0) {
        // Gone from the file meanwhile: the textbook comes back under its course if that exists.
        m_combined.append(shown);
        row = int(m_combined.size()) - 1;
    }
    QVariantMap record{{CourseKeys::Name, form.name},
                       {CourseKeys::DisplayName,
                        form.name.isEmpty() ? CourseKeys::NewTextbook : CourseKeys::Indent + form.name},
                       {CourseKeys::Type, CourseKeys::TextbookType},
                       {CourseKeys::Course, form.course}};
    for (int i = 0; i < 5 && i < form.fields.size(); ++i) {
        if (!form.fields[i].isEmpty())
            record.insert(CourseKeys::field(i + 1), form.fields[i]);
    }
    if (!form.notes.isEmpty())
        record.insert(CourseKeys::Notes, form.notes);

    if (fromNameField && originalTextbook != form.name) {
        // Naming a new textbook renames nothing: "" is what every assignment without a textbook
        // holds after a course change.
        if (!originalTextbook.isEmpty())
            renameInAssignments(QStringLiteral("Textbook"), originalTextbook, form.name);
        originalTextbook = form.name;
    }
    const QVariantMap edited = editedOnLatest(shown, record, m_combined[row].toMap(), false);
    m_combined[row] = edited;
    CoursesDocument::regroup(m_combined);
    saveData();
    return int(m_combined.indexOf(edited));
}

bool CoursesStore::deleteCourseOrTextbook(int row)
{
    const QVariantMap record = recordAt(row);
    if (!m_usable || record.isEmpty())
        return false;
    const bool course = isCourse(record);
    if (UserDefaults().groupValue(PreferenceKeys::General, PreferenceKeys::GeneralKeys::DisplayWarningMessages).toBool()
        && !Alerts::askYesNo(WarningTitle, course ? DeleteCourseQuestion : DeleteTextbookQuestion))
        return false;

    // Asked before looking at the data again: the answer is about the record the user saw, found
    // again by its contents (the list may have changed while the question was shown).
    reloadIfChangedOnDisk();
    row = findRecord(record, row);
    if (row < 0)
        return false;
    const QString name = m_combined[row].toMap().value(CourseKeys::Name).toString();
    if (course) {
        // The course's own textbooks, the rows right after it, go with it.
        m_combined.erase(m_combined.begin() + row, m_combined.begin() + groupEnd(row));
    } else {
        m_combined.removeAt(row);
        const QString owner = record.value(CourseKeys::Course).toString();
        for (QVariant &value : m_combined) {
            QVariantMap other = value.toMap();
            if (isCourse(other) && other.value(CourseKeys::Name).toString() == owner
                && other.value(CourseKeys::DefaultTextbook).toString() == name
                && other.contains(CourseKeys::DefaultTextbook)) {
                other.insert(CourseKeys::DefaultTextbook, QString());
                value = other;
            }
        }
    }
    saveData();
    return true;
}

bool CoursesStore::deleteCourseNamed(const QString &name)
{
    reloadIfChangedOnDisk();
    if (!m_usable)
        return false;
    for (int row = 0; row < m_combined.size(); ++row) {
        const QVariantMap record = m_combined[row].toMap();
        if (isCourse(record) && record.value(CourseKeys::Name).toString() == name) {
            m_combined.erase(m_combined.begin() + row, m_combined.begin() + groupEnd(row));
            return saveData();
        }
    }
    return false;
}

void CoursesStore::moveInList(QStringList &list, int from, int dropRow)
{
    if (from < 0 || from >= list.size())
        return;
    const QString item = list.takeAt(from);
    const int to = std::clamp(dropRow > from ? dropRow - 1 : dropRow, 0, int(list.size()));
    list.insert(to, item);
}

int CoursesStore::moveCourse(int from, int dropRow, int selectedRow)
{
    const QVariantMap dragged = recordAt(from);
    const QVariantMap dropBefore = recordAt(dropRow);
    const QVariantMap selectedRecord = recordAt(selectedRow);
    if (reloadIfChangedOnDisk()) {
        from = findRecord(dragged, from);
        dropRow = dropBefore.isEmpty() ? int(m_combined.size()) : findRecord(dropBefore, dropRow);
        if (dropRow < 0)
            dropRow = int(m_combined.size());
        selectedRow = findRecord(selectedRecord, selectedRow);
    }
    if (!m_usable || from < 0 || from >= m_combined.size() || !isCourse(m_combined[from].toMap()))
        return -1;
    const QVariant selected = selectedRow >= 0 && selectedRow < m_combined.size() ? m_combined[selectedRow] : QVariant();
    CoursesDocument::regroup(m_combined);
    const QVariant moving = m_combined.takeAt(from);
    const int to = std::clamp(dropRow > from ? dropRow - 1 : dropRow, 0, int(m_combined.size()));
    m_combined.insert(to, moving);
    // Regrouping again brings each course's textbooks back behind it.
    updateCombinedArray();
    return selected.isValid() ? int(m_combined.indexOf(selected)) : -1;
}

bool CoursesStore::editUniversalTypes(const QStringList &types)
{
    const QStringList shown = m_universalTypes;
    m_document->refresh();
    if (!m_document->isTypesUsable()) {
        qCWarning(lcStore) << "Not saving universal types: the file on disk could not be read";
        return false;
    }
    QStringList result = types;
    if (m_document->universalTypes() != shown) {
        qCInfo(lcStore) << "The universal types changed meanwhile; the edit is made to the new list";
        result = TypeListEdits::sameEditOn(shown, types, m_document->universalTypes());
    }
    m_universalTypes = result;
    return m_document->setUniversalTypes(result, m_source);
}
