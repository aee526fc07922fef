#include "caldav/LocalAssignments.h"

#include "caldav/TodoMapping.h"
#include "platform/Clock.h"
#include "store/Assignment.h"
#include "store/AssignmentsDocument.h"

#include <QHash>
#include <QSet>
#include <QUuid>

LocalAssignments::LocalAssignments(std::shared_ptr<AssignmentsDocument> document, QObject *source)
    : m_document(std::move(document))
    , m_source(source)
{
}

LocalAssignments::~LocalAssignments() = default;

bool LocalAssignments::isUsable() const
{
    if (!m_document)
        return false;
    m_document->records();
    return m_document->isUsable();
}

bool LocalAssignments::save(const AssignmentList &records)
{
    if (!m_document->setAll(records, m_source))
        return false;
    // The document already holds what was written; the windows only learn why, and end their
    // histories.
    Q_EMIT m_document->replaced(AssignmentsDocument::Replacement::CalendarSync);
    return true;
}

bool LocalAssignments::ensureUids()
{
    if (!isUsable())
        return false;
    const AssignmentList all = m_document->records();
    bool changed = false;
    for (const AssignmentRef &record : all) {
        if (record->string(CalDavKeys::Uid).isEmpty()) {
            record->set(CalDavKeys::Uid, QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper());
            changed = true;
        }
    }
    return !changed || save(all);
}

QList<QVariantMap> LocalAssignments::records() const
{
    QList<QVariantMap> out;
    if (!isUsable())
        return out;
    const AssignmentList &all = m_document->records();
    out.reserve(all.size());
    for (const AssignmentRef &record : all)
        out << record->fields();
    return out;
}

bool LocalAssignments::apply(const QList<QVariantMap> &upserts, const QStringList &removals)
{
    if (!isUsable())
        return false;
    if (upserts.isEmpty() && removals.isEmpty())
        return true;
    AssignmentList all = m_document->records();
    QHash<QString, qsizetype> byUid;
    for (qsizetype i = 0; i < all.size(); ++i)
        byUid.insert(all[i]->string(CalDavKeys::Uid), i);
    for (const QVariantMap &fields : upserts) {
        const QString uid = fields.value(CalDavKeys::Uid).toString();
        const auto found = byUid.constFind(uid);
        if (found != byUid.cend()) {
            // Changed in place, as every edit is: a window's edit in progress still finds its record.
            all[*found]->setFields(fields);
        } else {
            QVariantMap added = fields;
            if (!added.contains(AssignmentKeys::DateCreated))
                added.insert(AssignmentKeys::DateCreated, Clock::now().toMSecsSinceEpoch() / 1000.0);
            byUid.insert(uid, all.size());
            all << Assignments::make(added);
        }
    }
    const QSet<QString> gone(removals.cbegin(), removals.cend());
    all.removeIf([&](const AssignmentRef &record) { return gone.contains(record->string(CalDavKeys::Uid)); });
    return save(all);
}
