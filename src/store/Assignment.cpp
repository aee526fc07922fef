#include "store/Assignment.h"

#include "platform/DateText.h"
#include "platform/PropertyListXmlWriter.h"

#include <QHash>

#include <atomic>

namespace {
std::atomic<quint64> g_nextRevision{1};

const QString &absentText()
{
    static const QString absent;
    return absent;
}
} // namespace

// Everything derived from the fields, computed on first use and dropped with every change.
struct Assignment::Caches {
    bool hasXml = false;
    QByteArray xml;
    bool hasDueDate = false;
    std::optional<QDateTime> dueDate;
    bool hasDueMoment = false;
    std::optional<qint64> dueMoment;
    quint32 hasLowered = 0;
    std::array<QString, AssignmentFieldCount> lowered;
    QHash<QString, QString> loweredOthers;
};

Assignment::Assignment()
    : m_revision(g_nextRevision++)
{
}

Assignment::Assignment(const QVariantMap &fields)
    : m_revision(g_nextRevision++)
{
    assign(fields);
}

Assignment::Assignment(QVariantMap &&fields)
    : m_revision(g_nextRevision++)
{
    if (!fields.isDetached()) {
        assign(fields);
        return;
    }
    for (auto it = fields.begin(); it != fields.end(); ++it) {
        if (const std::optional<Field> field = fieldFromKey(it.key())) {
            m_slots[std::size_t(*field)] = std::move(it.value());
            m_present |= 1u << unsigned(*field);
        } else {
            m_others.insert(m_others.cend(), it.key(), std::move(it.value()));
        }
    }
    fields.clear();
}

void Assignment::assign(const QVariantMap &fields)
{
    for (QVariant &slot : m_slots)
        slot = QVariant();
    m_present = 0;
    m_others.clear();
    for (auto it = fields.cbegin(); it != fields.cend(); ++it) {
        if (const std::optional<Field> field = fieldFromKey(it.key())) {
            m_slots[std::size_t(*field)] = it.value();
            m_present |= 1u << unsigned(*field);
        } else {
            // Inserted in key order: each lands at the end.
            m_others.insert(m_others.cend(), it.key(), it.value());
        }
    }
}

void Assignment::changed()
{
    m_revision = g_nextRevision++;
    m_caches.reset();
}

void Assignment::set(Field field, QVariant value)
{
    m_slots[std::size_t(field)] = std::move(value);
    m_present |= 1u << unsigned(field);
    changed();
}

void Assignment::remove(Field field)
{
    if (!has(field))
        return;
    m_slots[std::size_t(field)] = QVariant();
    m_present &= ~(1u << unsigned(field));
    changed();
}

bool Assignment::has(const QString &key) const
{
    if (const std::optional<Field> field = fieldFromKey(key))
        return has(*field);
    return m_others.contains(key);
}

QVariant Assignment::value(const QString &key) const
{
    if (const std::optional<Field> field = fieldFromKey(key))
        return value(*field);
    return m_others.value(key);
}

QString Assignment::string(const QString &key) const
{
    if (const std::optional<Field> field = fieldFromKey(key))
        return string(*field);
    const auto it = m_others.constFind(key);
    return it == m_others.constEnd() ? QString() : it->toString();
}

const QVariant *Assignment::find(const AssignmentKey &key) const
{
    if (key.field())
        return has(*key.field()) ? &m_slots[std::size_t(*key.field())] : nullptr;
    const auto it = m_others.constFind(key.key());
    return it == m_others.constEnd() ? nullptr : &*it;
}

void Assignment::set(const QString &key, const QVariant &value)
{
    if (const std::optional<Field> field = fieldFromKey(key)) {
        set(*field, value);
        return;
    }
    m_others.insert(key, value);
    changed();
}

void Assignment::remove(const QString &key)
{
    if (const std::optional<Field> field = fieldFromKey(key)) {
        remove(*field);
        return;
    }
    if (m_others.remove(key))
        changed();
}

QVariantMap Assignment::fields() const
{
    QVariantMap result = m_others;
    for (const Field field : AssignmentFields::KeyOrder) {
        if (has(field))
            result.insert(fieldKey(field), value(field));
    }
    return result;
}

void Assignment::setFields(const QVariantMap &fields)
{
    assign(fields);
    changed();
}

bool Assignment::isCompleted() const
{
    return has(Field::Completed) && value(Field::Completed).toLongLong() == 1;
}

bool Assignment::operator==(const Assignment &other) const
{
    if (m_present != other.m_present)
        return false;
    for (std::size_t i = 0; i < AssignmentFieldCount; ++i) {
        if (m_slots[i] != other.m_slots[i])
            return false;
    }
    return m_others == other.m_others;
}

const QByteArray &Assignment::xml() const
{
    if (!m_caches)
        m_caches = std::make_shared<Caches>();
    if (!m_caches->hasXml) {
        QByteArray &out = m_caches->xml;
        out.clear();
        {
            // Known and unknown keys merged in key order, as one sorted dictionary would be; a key
            // without a value (an invalid QVariant) is left out, as the writer does for maps.
            PropertyListXmlWriter writer(out);
            bool open = false;
            auto other = m_others.cbegin();
            const auto writeOne = [&](QStringView key, const QVariant &item) {
                if (!item.isValid())
                    return;
                if (!open) {
                    writer.beginDictionary(1);
                    open = true;
                }
                writer.entry(key, item, 2);
            };
            for (const Field field : AssignmentFields::KeyOrder) {
                if (!has(field))
                    continue;
                const QString &key = fieldKey(field);
                for (; other != m_others.cend() && other.key() < key; ++other)
                    writeOne(other.key(), other.value());
                writeOne(key, value(field));
            }
            for (; other != m_others.cend(); ++other)
                writeOne(other.key(), other.value());
            if (open)
                writer.endDictionary(1);
            else
                writer.emptyDictionary(1);
        }
        m_caches->hasXml = true;
    }
    return m_caches->xml;
}

std::optional<QDateTime> Assignment::dueDate() const
{
    if (!m_caches)
        m_caches = std::make_shared<Caches>();
    if (!m_caches->hasDueDate) {
        m_caches->dueDate = has(Field::Date) ? DateText::fromStoredForm(value(Field::Date).toString()) : std::nullopt;
        m_caches->hasDueDate = true;
    }
    return m_caches->dueDate;
}

std::optional<qint64> Assignment::dueMoment() const
{
    if (!m_caches)
        m_caches = std::make_shared<Caches>();
    if (!m_caches->hasDueMoment) {
        // A local date and time to an instant goes through the C library's time zone rules, which
        // (with TZ unset, as on most desktops) look at /etc/localtime each time: done once here.
        const std::optional<QDateTime> due = dueDate();
        m_caches->dueMoment = due && due->isValid() ? std::optional<qint64>(due->toMSecsSinceEpoch()) : std::nullopt;
        m_caches->hasDueMoment = true;
    }
    return m_caches->dueMoment;
}

const QString &Assignment::lowered(Field field) const
{
    if (!has(field))
        return absentText();
    if (!m_caches)
        m_caches = std::make_shared<Caches>();
    const quint32 bit = 1u << unsigned(field);
    QString &cached = m_caches->lowered[std::size_t(field)];
    if (!(m_caches->hasLowered & bit)) {
        cached = value(field).toString().toLower();
        m_caches->hasLowered |= bit;
    }
    return cached;
}

const QString &Assignment::lowered(const QString &key) const
{
    if (const std::optional<Field> field = fieldFromKey(key))
        return lowered(*field);
    const auto it = m_others.constFind(key);
    if (it == m_others.constEnd())
        return absentText();
    if (!m_caches)
        m_caches = std::make_shared<Caches>();
    auto cached = m_caches->loweredOthers.constFind(key);
    if (cached == m_caches->loweredOthers.constEnd())
        cached = m_caches->loweredOthers.insert(key, it->toString().toLower());
    return *cached;
}

namespace Assignments {

AssignmentRef make(const QVariantMap &fields)
{
    return std::make_shared<Assignment>(fields);
}

AssignmentRef copy(const AssignmentRef &record)
{
    // A new record: its own revision, caches of its own.
    auto copied = std::make_shared<Assignment>(*record);
    copied->changed();
    return copied;
}

QVariantList toVariantList(const AssignmentList &list)
{
    QVariantList result;
    result.reserve(list.size());
    for (const auto &record : list)
        result.append(record->fields());
    return result;
}

AssignmentList fromVariantList(const QVariantList &list)
{
    AssignmentList result;
    result.reserve(list.size());
    for (const QVariant &value : list)
        result.append(make(value.toMap()));
    return result;
}

AssignmentList fromVariantList(QVariantList &&list)
{
    AssignmentList result;
    result.reserve(list.size());
    if (!list.isDetached())
        return fromVariantList(std::as_const(list));
    for (QVariant &value : list) {
        if (value.typeId() == QMetaType::QVariantMap) {
            QVariantMap fields = std::move(*static_cast<QVariantMap *>(value.data()));
            value = QVariant();
            result.append(std::make_shared<Assignment>(std::move(fields)));
        } else {
            result.append(make(value.toMap()));
            value = QVariant();
        }
    }
    list.clear();
    return result;
}

qsizetype indexOfEqual(const AssignmentList &list, const Assignment &record)
{
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (*list[i] == record)
            return i;
    }
    return -1;
}

} // namespace Assignments
