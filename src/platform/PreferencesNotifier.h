#pragma once

#include <QObject>
#include <QString>
#include <QVariantMap>

// Tells the windows that a preference changed, so what they show follows the preferences window at
// once rather than at their next refresh. There is one notifier for the program; it lives on the
// interface thread, and a change written from a worker thread reaches it queued.
//
// `changed` names what differs between the file before and after a write: for a key that holds a
// dictionary ("Preferences - General", "Preferences - Colors", ...) the group is that key and `key`
// the entry inside it that differs (empty when the dictionary appeared or vanished as a whole
// without entries); for any other key the group is empty. A write that changes nothing says nothing.
class PreferencesNotifier : public QObject
{
    Q_OBJECT
public:
    static PreferencesNotifier *instance();

    // Compares two states of the preferences and reports every difference.
    void announce(const QVariantMap &before, const QVariantMap &after);

Q_SIGNALS:
    void changed(const QString &group, const QString &key);

private:
    PreferencesNotifier() = default;
    void deliver(const QList<std::pair<QString, QString>> &changes);
};
