#include "store/Assignment.h"

#include "platform/DateText.h"
#include "platform/PropertyList.h"

#include <QHash>

#include <atomic>

namespace {
std::atomic<quint64> g_nextRevision{1};
} // namespace

// Everything derived from the fields, computed on first use and dropped with every change.
struct Assignment::Caches {
    bool hasXml = false;
    QByteArray xml;
    bool hasDueDate = false;
    std::optional<QDateTime> dueDate;
    bool hasDueMoment = false;
    std::optional<qint64> dueMoment;
    QHash<QString, QString> lowered;
};

Assignment::Assignment()
    : m_revision(g_nextRevision++)
{
}

Assignment::Assignment(QVariantMap fields)
    : m_fields(std::move(fields))
    , m_revision(g_nextRevision++)
{
}

QString Assignment::string(const QString &key) const
{
    const auto it = m_fields.constFind(key);
    if (it == m_fields.constEnd())
        return QString();
    return it->toString();
}

bool Assignment::isCompleted() const
{
    const auto it = m_fields.constFind(AssignmentKeys::Completed);
    return it != m_fields.constEnd() && it->toLongLong() == 1;
}

void Assignment::changed()
{
    m_revision = g_nextRevision++;
    m_caches.reset();
}

void Assignment::set(const QString &key, const QVariant &value)
{
    m_fields.insert(key, value);
    changed();
}

void Assignment::remove(const QString &key)
{
    if (m_fields.remove(key))
        changed();
}

void Assignment::setFields(QVariantMap fields)
{
    m_fields = std::move(fields);
    changed();
}

const QByteArray &Assignment::xml() const
{
    if (!m_caches)
        m_caches = std::make_shared<Caches>();
    if (!m_caches->hasXml) {
        m_caches->xml.clear();
        PropertyList::appendValue(m_caches->xml, m_fields, 1);
        m_caches->hasXml = true;
    }
    return m_caches->xml;
}

std::optional<QDateTime> Assignment::dueDate() const
{
    if (!m_caches)
        m_caches = std::make_shared<Caches>();
    if (!m_caches->hasDueDate) {
        const auto it = m_fields.constFind(AssignmentKeys::Date);
        m_caches->dueDate = it == m_fields.constEnd() ? std::nullopt : DateText::fromStoredForm(it->toString());
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

const QString &Assignment::lowered(const QString &key) const
{
    static const QString absent;
    const auto it = m_fields.constFind(key);
    if (it == m_fields.constEnd())
        return absent;
    if (!m_caches)
        m_caches = std::make_shared<Caches>();
    auto cached = m_caches->lowered.constFind(key);
    if (cached == m_caches->lowered.constEnd())
        cached = m_caches->lowered.insert(key, it->toString().toLower());
    return *cached;
}

namespace Assignments {

AssignmentRef make(QVariantMap fields)
{
    return std::make_shared<Assignment>(std::move(fields));
}

AssignmentRef copy(const AssignmentRef &record)
{
    return std::make_shared<Assignment>(record->fields());
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

qsizetype indexOfEqual(const AssignmentList &list, const Assignment &record)
{
    for (qsizetype i = 0; i < list.size(); ++i) {
        if (*list[i] == record)
            return i;
    }
    return -1;
}

qsizetype removeEqual(AssignmentList &list, const Assignment &record)
{
    // Copy first: `record` may be one of the list's own elements.
    const Assignment probe(record.fields());
    return list.removeIf([&](const AssignmentRef &candidate) { return *candidate == probe; });
}

} // namespace Assignments
