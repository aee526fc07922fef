#include "caldav/LocalAssignments.h"

#include "caldav/TodoMapping.h"
#include "list/Controller.h"
#include "platform/Clock.h"
#include "store/Assignment.h"

#include <QHash>
#include <QSet>
#include <QUuid>

LocalAssignments::LocalAssignments(Controller *controller) : m_controller(controller) {}

bool LocalAssignments::isUsable() const { return m_controller && m_controller->isStoreUsable(); }

void LocalAssignments::ensureUids()
{
    if (!isUsable())
        return;
    bool changed = false;
    for (const AssignmentRef &record : m_controller->allAssignments()) {
        if (record->string(CalDavKeys::Uid).isEmpty()) {
            record->set(CalDavKeys::Uid, QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper());
            changed = true;
        }
    }
    if (changed)
        m_controller->saveData();
}

QList<QVariantMap> LocalAssignments::records() const
{
    QList<QVariantMap> out;
    if (!isUsable())
        return out;
    out.reserve(m_controller->allAssignments().size());
    for (const AssignmentRef &record : m_controller->allAssignments())
        out << record->fields();
    return out;
}

void LocalAssignments::apply(const QList<QVariantMap> &upserts, const QStringList &removals)
{
    if (!isUsable() || (upserts.isEmpty() && removals.isEmpty()))
        return;
    const auto hold = m_controller->holdPendingEdit();
    m_controller->commitPendingEdit();
    AssignmentList all = m_controller->allAssignments();
    QHash<QString, AssignmentRef> byUid;
    for (const AssignmentRef &record : all)
        byUid.insert(record->string(CalDavKeys::Uid), record);
    for (const QVariantMap &fields : upserts) {
        const QString uid = fields.value(CalDavKeys::Uid).toString();
        if (const AssignmentRef record = byUid.value(uid)) {
            record->setFields(fields);
        } else {
            QVariantMap added = fields;
            if (!added.contains(AssignmentKeys::DateCreated))
                added.insert(AssignmentKeys::DateCreated, Clock::now().toMSecsSinceEpoch() / 1000.0);
            const AssignmentRef made = Assignments::make(added);
            all << made;
            byUid.insert(uid, made);
        }
    }
    const QSet<QString> gone(removals.cbegin(), removals.cend());
    all.removeIf([&](const AssignmentRef &record) { return gone.contains(record->string(CalDavKeys::Uid)); });
    m_controller->setAllAssignments(all);
    m_controller->saveData();
}
