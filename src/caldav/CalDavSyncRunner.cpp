#include "caldav/CalDavSyncRunner.h"

#include "caldav/CalDavAccount.h"
#include "caldav/CalDavLog.h"
#include "caldav/CalDavSettings.h"
#include "caldav/DavSession.h"
#include "caldav/LocalAssignments.h"
#include "caldav/SyncState.h"
#include "caldav/TodoMapping.h"
#include "exchange/AutomaticBackups.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/Assignment.h"

#include <QDir>
#include <QFileInfo>
#include <QtConcurrent>

struct CalDavSyncRunner::Result {
    CalDavSync::Outcome outcome;
    SyncState state;
    bool stateReadable = true;
};

CalDavSyncRunner::CalDavSyncRunner(LocalAssignments *local, QObject *parent) : QObject(parent), m_local(local)
{
    m_debounce.setSingleShot(true);
    m_debounce.setInterval(5000);
    connect(&m_debounce, &QTimer::timeout, this, [this] { start(); });
    connect(&m_watcher, &QFutureWatcher<std::shared_ptr<Result>>::finished, this, &CalDavSyncRunner::done);
}

CalDavSyncRunner::~CalDavSyncRunner() { m_watcher.waitForFinished(); }

bool CalDavSyncRunner::isConfigured() const { return CalDavSettings::load().isComplete(); }

bool CalDavSyncRunner::isFirstSync() const
{
    const CalDavSettings settings = CalDavSettings::load();
    return settings.isComplete() && !SyncState(SyncState::pathFor(settings.calendarUrl, settings.user)).exists();
}

void CalDavSyncRunner::scheduleAfterEdit()
{
    m_debounce.start();
}

bool CalDavSyncRunner::start(CalDavSync::FirstSync mode)
{
    const CalDavSettings settings = CalDavSettings::load();
    if (!settings.isComplete() || !m_local || !m_local->isUsable())
        return false;
    if (isRunning()) {
        m_again = true;
        return true;
    }
    m_debounce.stop();
    // A file changed underneath is reread instead of written; the UIDs then go to the reread records.
    if (!m_local->ensureUids() && !m_local->ensureUids())
        return false;
    const QList<QVariantMap> records = m_local->records();
    m_given.clear();
    for (const QVariantMap &record : records)
        m_given.insert(record.value(CalDavKeys::Uid).toString(), record);
    const QString password = CalDavSettings::password(settings.user);
    const QString statePath = SyncState::pathFor(settings.calendarUrl, settings.user);
    Q_EMIT started();
    m_cancel = std::make_shared<std::atomic_bool>(false);
    m_watcher.setFuture(QtConcurrent::run([=, cancel = m_cancel]() {
        auto result = std::make_shared<Result>();
        result->state = SyncState(statePath);
        QString error;
        if (!result->state.load(&error)) {
            result->stateReadable = false;
            result->outcome.error = QObject::tr("The record of the last sync could not be read (%1).").arg(error);
            return result;
        }
        DavSession session(settings.user, password);
        session.setCancelFlag(cancel);
        CalDavSync sync(session, QUrl(settings.calendarUrl), result->state, settings.syncCollection);
        result->outcome = sync.run(records, mode);
        return result;
    }));
    return true;
}

void CalDavSyncRunner::finish(int ms)
{
    m_debounce.stop();
    if (!isRunning())
        return;
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    connect(this, &CalDavSyncRunner::finished, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    if (isRunning()) {
        // Quitting must not wait for a server that does not answer.
        *m_cancel = true;
        m_discard = true;
        m_watcher.waitForFinished();
        m_again = false;
        qCWarning(lcCalDav) << "the sync at quit was stopped after" << ms << "ms";
    }
}

void CalDavSyncRunner::done()
{
    const std::shared_ptr<Result> result = m_watcher.result();
    if (std::exchange(m_discard, false)) {
        Q_EMIT finished(false, tr("The sync was stopped."), result->outcome);
        return;
    }
    CalDavSync::Outcome &outcome = result->outcome;
    const bool usable = m_local && m_local->isUsable();
    // The records as they are now, converted once for the comparison and the backup.
    const QList<QVariantMap> now = usable ? m_local->records() : QList<QVariantMap>();
    if (usable)
        outcome.conflictLosers << keepEditsMadeDuringTheSync(outcome, now);
    bool ok = outcome.ok;
    QString message = ok ? summaryText(outcome) : outcome.error;
    if (result->stateReadable && usable) {
        bool backedUp = true;
        if (!outcome.conflictLosers.isEmpty()) {
            backedUp = backUpLosers(now, outcome.conflictLosers);
            if (!backedUp) {
                ok = false;
                message = tr("The versions that lost a conflict could not be kept in the backups, so nothing was changed here.");
            }
        }
        if (backedUp) {
            // Even a sync that stopped halfway brings what it already did; the state says so.
            // When the file changed underneath (another copy of the program saved it), nothing
            // was written and the state stays as it was: the next sync takes both up again.
            if (m_local->apply(outcome.upserts, outcome.removals)) {
                QString error;
                if (!result->state.save(&error))
                    qCWarning(lcCalDav) << "could not keep the sync state:" << error;
            } else {
                ok = false;
                message = tr("The assignments changed on disk during the sync, so nothing was changed here.  The next sync takes them up.");
                m_again = m_local->isUsable();
            }
        }
    }
    Q_EMIT finished(ok, message, outcome);
    if (m_again) {
        m_again = false;
        start();
    }
}

QList<QVariantMap> CalDavSyncRunner::keepEditsMadeDuringTheSync(CalDavSync::Outcome &outcome,
                                                                const QList<QVariantMap> &records) const
{
    QHash<QString, QVariantMap> now;
    for (const QVariantMap &record : records)
        now.insert(record.value(CalDavKeys::Uid).toString(), record);
    const auto editedHere = [&](const QString &uid) {
        const auto given = m_given.constFind(uid);
        const auto current = now.constFind(uid);
        return given != m_given.cend() && current != now.cend() && *given != *current;
    };
    QList<QVariantMap> losers;
    outcome.upserts.removeIf([&](const QVariantMap &fields) {
        if (!editedHere(fields.value(CalDavKeys::Uid).toString()))
            return false;
        losers << fields;
        outcome.received = std::max(0, outcome.received - 1);
        outcome.conflictNames << fields.value(AssignmentKeys::Name).toString();
        return true;
    });
    // Deleted on the server, changed here: the change wins.
    outcome.deletedHere -= int(outcome.removals.removeIf(editedHere));
    return losers;
}

QString CalDavSyncRunner::summaryText(const CalDavSync::Outcome &o)
{
    QStringList parts;
    parts << tr("%1 sent").arg(o.sent + o.deletedOnServer) << tr("%1 received").arg(o.received + o.deletedHere);
    if (!o.conflictNames.isEmpty())
        parts << (o.conflictNames.size() == 1 ? tr("1 conflict kept in backups")
                                               : tr("%1 conflicts kept in backups").arg(o.conflictNames.size()));
    QString text = parts.join(QLatin1String(", "));
    if (!o.conflictNames.isEmpty())
        text += QStringLiteral(" (%1)").arg(o.conflictNames.join(QLatin1String(", ")));
    return text;
}

bool CalDavSyncRunner::backUpLosers(const QList<QVariantMap> &current, const QList<QVariantMap> &losers, QString *path)
{
    // A backup restores whole: the current records come along so that restoring it loses nothing.
    QVariantList assignments;
    for (const QVariantMap &record : current)
        assignments << record;
    for (const QVariantMap &record : losers)
        assignments << record;
    const auto listOf = [](const QString &file) {
        const auto value = QFileInfo::exists(file) ? PropertyList::readFile(file) : std::nullopt;
        return value ? value->toList() : QVariantList();
    };
    const QVariantList document{assignments, listOf(Paths::coursesFile()), listOf(Paths::universalTypesFile())};
    QDir().mkpath(Paths::syncingBackupsFolder());
    QString target = AutomaticBackups::path();
    const QString stem = target.chopped(6);
    for (int n = 2; QFileInfo::exists(target); ++n)
        target = stem + QStringLiteral("_%1.plist").arg(n);
    if (path)
        *path = target;
    const bool written = PropertyList::writeFile(target, document);
    AutomaticBackups::prune();
    return written;
}
