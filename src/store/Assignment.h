#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <memory>
#include <optional>

// Keys of an assignment record. An empty field is an absent key.
namespace AssignmentKeys {
inline const QString Name = QStringLiteral("Name");
inline const QString Date = QStringLiteral("Date");
inline const QString Course = QStringLiteral("Course");
inline const QString Textbook = QStringLiteral("Textbook");
inline const QString Type = QStringLiteral("Type");
inline const QString Grade = QStringLiteral("Grade");
inline const QString Priority = QStringLiteral("Priority");
inline const QString Completed = QStringLiteral("Completed");
inline const QString Notes = QStringLiteral("Notes");
inline const QString Contacts = QStringLiteral("Contacts");
inline const QString File = QStringLiteral("File");
inline const QString Snapshot = QStringLiteral("Snapshot");
inline const QString Project = QStringLiteral("Project");
inline const QString Subproject = QStringLiteral("Subproject");
inline const QString DateCreated = QStringLiteral("Date Created");
inline const QString DateUpdated = QStringLiteral("Date Updated");
} // namespace AssignmentKeys

// One assignment: a string-keyed dictionary of property-list values, plus caches derived from it.
// The lists of the program hold shared references (AssignmentRef), so one record can stand in
// several lists at once, and equality between records is field by field.
//
// Every change goes through set/remove/setFields, which bump the revision and drop the caches.
// The caches are filled lazily on the interface thread; worker threads read fields() only.
class Assignment
{
public:
    Assignment();
    explicit Assignment(QVariantMap fields);

    const QVariantMap &fields() const { return m_fields; }
    bool has(const QString &key) const { return m_fields.contains(key); }
    QVariant value(const QString &key) const { return m_fields.value(key); }
    // The value as text; a null QString when the key is absent.
    QString string(const QString &key) const;
    // "Completed" read as an integer (absent reads 0).
    bool isCompleted() const;
    bool isProject() const { return has(AssignmentKeys::Project); }
    bool isSubproject() const { return has(AssignmentKeys::Subproject); }

    void set(const QString &key, const QVariant &value);
    void remove(const QString &key);
    void setFields(QVariantMap fields);

    // Unique across all records and changes: a cache keyed by revision can never confuse two
    // records or two states of one record.
    quint64 revision() const { return m_revision; }

    // The record's XML as the store writes it inside the top-level array (one tab deep).
    const QByteArray &xml() const;
    // "Date" read back from its stored form; nullopt when absent or unreadable.
    std::optional<QDateTime> dueDate() const;
    // The due date as milliseconds since the epoch, for comparing instants; nullopt as above.
    // Cached with the rest, so it follows the time zone the program had when it was first asked.
    std::optional<qint64> dueMoment() const;
    // Lower-cased text of one field for searching; a null QString when the field is absent.
    const QString &lowered(const QString &key) const;

    bool operator==(const Assignment &other) const { return m_fields == other.m_fields; }
    bool operator!=(const Assignment &other) const { return !(*this == other); }

private:
    void changed();

    QVariantMap m_fields;
    quint64 m_revision;

    struct Caches;
    mutable std::shared_ptr<Caches> m_caches;
};

using AssignmentRef = std::shared_ptr<Assignment>;
using AssignmentList = QList<AssignmentRef>;

// Helpers for lists of shared records.
namespace Assignments {
AssignmentRef make(QVariantMap fields = {});
// A deep copy: a new record with equal fields.
AssignmentRef copy(const AssignmentRef &record);
QVariantList toVariantList(const AssignmentList &list);
AssignmentList fromVariantList(const QVariantList &list);
// Index of the first record equal (field by field) to `record`, or -1.
qsizetype indexOfEqual(const AssignmentList &list, const Assignment &record);
// Removes every record equal to `record`; returns how many went.
qsizetype removeEqual(AssignmentList &list, const Assignment &record);
} // namespace Assignments
