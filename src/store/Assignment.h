#pragma once

#include "store/AssignmentField.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QVariant>
#include <QVariantMap>

#include <array>
#include <memory>
#include <optional>

// Keys of an assignment record, as strings for code that builds or reads whole dictionaries. They
// are the spellings of AssignmentField; an empty field is an absent key.
namespace AssignmentKeys {
inline const QString &Name = fieldKey(AssignmentField::Name);
inline const QString &Date = fieldKey(AssignmentField::Date);
inline const QString &Course = fieldKey(AssignmentField::Course);
inline const QString &Textbook = fieldKey(AssignmentField::Textbook);
inline const QString &Type = fieldKey(AssignmentField::Type);
inline const QString &Grade = fieldKey(AssignmentField::Grade);
inline const QString &Priority = fieldKey(AssignmentField::Priority);
inline const QString &Completed = fieldKey(AssignmentField::Completed);
inline const QString &Notes = fieldKey(AssignmentField::Notes);
inline const QString &Contacts = fieldKey(AssignmentField::Contacts);
inline const QString &File = fieldKey(AssignmentField::File);
inline const QString &Snapshot = fieldKey(AssignmentField::Snapshot);
inline const QString &Project = fieldKey(AssignmentField::Project);
inline const QString &Subproject = fieldKey(AssignmentField::Subproject);
inline const QString &DateCreated = fieldKey(AssignmentField::DateCreated);
inline const QString &DateUpdated = fieldKey(AssignmentField::DateUpdated);
} // namespace AssignmentKeys

// A key looked up once for reading it from many records (a sort, a search, a column): a slot when
// the key is a known field, the string otherwise.
class AssignmentKey
{
public:
    explicit AssignmentKey(const QString &key)
        : m_key(key)
        , m_field(fieldFromKey(key))
    {
    }
    explicit AssignmentKey(AssignmentField field)
        : m_key(fieldKey(field))
        , m_field(field)
    {
    }
    const QString &key() const { return m_key; }
    const std::optional<AssignmentField> &field() const { return m_field; }

private:
    QString m_key;
    std::optional<AssignmentField> m_field;
};

class Assignment;
using AssignmentRef = std::shared_ptr<Assignment>;
namespace Assignments {
AssignmentRef copy(const AssignmentRef &record);
}

// One assignment: property-list values under string keys, plus caches derived from them. The known
// fields sit in fixed slots, each value with its own type (a real stays a real, a grade typed as
// text stays text); keys the program does not know are kept aside and written back as they came.
// The lists of the program hold shared references (AssignmentRef), so one record can stand in
// several lists at once, and equality between records is field by field.
//
// Every change goes through set/remove/setFields, which bump the revision and drop the caches.
// The caches are filled lazily on the interface thread; worker threads read values and fields()
// only.
class Assignment
{
public:
    using Field = AssignmentField;

    Assignment();
    explicit Assignment(const QVariantMap &fields);
    // Takes the values over without copying them when `fields` is not shared.
    explicit Assignment(QVariantMap &&fields);

    // The fast path: a known field by its slot.
    bool has(Field field) const { return (m_present >> unsigned(field)) & 1u; }
    // An invalid QVariant when the field is absent.
    const QVariant &value(Field field) const { return m_slots[std::size_t(field)]; }
    // The value as text; a null QString when the field is absent.
    QString string(Field field) const { return has(field) ? value(field).toString() : QString(); }
    void set(Field field, QVariant value);
    void remove(Field field);
    // Lower-cased text of one field for searching; a null QString when the field is absent.
    const QString &lowered(Field field) const;

    // Any key, known or not.
    bool has(const QString &key) const;
    QVariant value(const QString &key) const;
    QString string(const QString &key) const;
    void set(const QString &key, const QVariant &value);
    void remove(const QString &key);
    const QString &lowered(const QString &key) const;

    // A key looked up beforehand; find() gives nullptr when the key is absent.
    const QVariant *find(const AssignmentKey &key) const;
    const QString &lowered(const AssignmentKey &key) const
    {
        return key.field() ? lowered(*key.field()) : lowered(key.key());
    }

    // The whole record as one dictionary, built on each call.
    QVariantMap fields() const;
    // The keys the program does not know, as read.
    const QVariantMap &unknownFields() const { return m_others; }
    void setFields(const QVariantMap &fields);

    // "Completed" read as an integer (absent reads 0).
    bool isCompleted() const;
    bool isProject() const { return has(Field::Project); }
    bool isSubproject() const { return has(Field::Subproject); }

    // Unique across all records and changes: a cache keyed by revision can never confuse two
    // records or two states of one record.
    quint64 revision() const { return m_revision; }

    // The record's XML as the store writes it inside the top-level array (one tab deep): the
    // dictionary in key order, known and unknown keys together.
    const QByteArray &xml() const;
    // "Date" read back from its stored form; nullopt when absent or unreadable.
    std::optional<QDateTime> dueDate() const;
    // The due date as milliseconds since the epoch, for comparing instants; nullopt as above.
    // Cached with the rest, so it follows the time zone the program had when it was first asked.
    std::optional<qint64> dueMoment() const;

    bool operator==(const Assignment &other) const;
    bool operator!=(const Assignment &other) const { return !(*this == other); }

private:
    friend AssignmentRef Assignments::copy(const AssignmentRef &record);

    void changed();
    void assign(const QVariantMap &fields);

    std::array<QVariant, AssignmentFieldCount> m_slots;
    quint32 m_present = 0;
    QVariantMap m_others;
    quint64 m_revision;

    struct Caches;
    mutable std::shared_ptr<Caches> m_caches;
};

static_assert(AssignmentFieldCount <= 32, "the presence bits of Assignment hold 32 fields");

using AssignmentList = QList<AssignmentRef>;

// Helpers for lists of shared records.
namespace Assignments {
AssignmentRef make(const QVariantMap &fields = {});
// A deep copy: a new record with equal fields.
AssignmentRef copy(const AssignmentRef &record);
QVariantList toVariantList(const AssignmentList &list);
AssignmentList fromVariantList(const QVariantList &list);
// Releases each dictionary of `list` as soon as its record is made, so that a store being loaded is
// not held twice.
AssignmentList fromVariantList(QVariantList &&list);
// Index of the first record equal (field by field) to `record`, or -1.
qsizetype indexOfEqual(const AssignmentList &list, const Assignment &record);
} // namespace Assignments
