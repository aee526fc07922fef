#include "platform/PreferencesNotifier.h"

#include <QCoreApplication>
#include <QSet>
#include <QThread>

namespace
{

using Change = std::pair<QString, QString>;

void compareGroup(const QString &group, const QVariantMap &before, const QVariantMap &after, QList<Change> &changes)
{
    const qsizetype first = changes.size();
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        if (!after.contains(it.key()) || after.value(it.key()) != it.value())
            changes.append({ group, it.key() });
    for (auto it = after.cbegin(); it != after.cend(); ++it)
        if (!before.contains(it.key()))
            changes.append({ group, it.key() });
    if (changes.size() == first)
        changes.append({ group, QString() });
}

} // namespace

PreferencesNotifier *PreferencesNotifier::instance()
{
    static PreferencesNotifier *const notifier = [] {
        auto *made = new PreferencesNotifier;
        // Whichever thread writes first, the receivers sit on the interface thread.
        if (QCoreApplication *app = QCoreApplication::instance())
            made->moveToThread(app->thread());
        return made;
    }();
    return notifier;
}

void PreferencesNotifier::announce(const QVariantMap &before, const QVariantMap &after)
{
    QList<Change> changes;
    QSet<QString> keys;
    for (auto it = before.cbegin(); it != before.cend(); ++it)
        keys.insert(it.key());
    for (auto it = after.cbegin(); it != after.cend(); ++it)
        keys.insert(it.key());
    QStringList ordered(keys.cbegin(), keys.cend());
    ordered.sort();
    for (const QString &key : ordered) {
        const QVariant was = before.value(key);
        const QVariant is = after.value(key);
        if (before.contains(key) == after.contains(key) && was == is)
            continue;
        const bool wasGroup = was.typeId() == QMetaType::QVariantMap;
        const bool isGroup = is.typeId() == QMetaType::QVariantMap;
        if (wasGroup || isGroup)
            compareGroup(key, was.toMap(), is.toMap(), changes);
        else
            changes.append({ QString(), key });
    }
    if (changes.isEmpty())
        return;
    if (QThread::currentThread() == thread())
        deliver(changes);
    else
        QMetaObject::invokeMethod(
            this, [this, changes] { deliver(changes); }, Qt::QueuedConnection);
}

void PreferencesNotifier::deliver(const QList<std::pair<QString, QString>> &changes)
{
    for (const auto &[group, key] : changes)
        Q_EMIT changed(group, key);
}
