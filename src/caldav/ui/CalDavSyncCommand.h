#pragma once

#include "caldav/CalDavSync.h"

#include <QObject>
#include <QPointer>

#include <memory>

class AssignmentsDocument;
class CalDavSyncRunner;
class LocalAssignments;
class QAction;
class QMenu;
class QProgressDialog;
class QWidget;

// "Sync with Calendar Server" in a menu and the toolbar, and the syncs that run by themselves: at
// start, a few seconds after the assignments changed (an edit in any window, or the file changed
// by another copy of the program), and at quit. A sync the user asked for
// shows its progress and then its summary; the others only speak up when something went wrong.
class CalDavSyncCommand : public QObject
{
    Q_OBJECT
public:
    static inline const QString ActionText = QStringLiteral("Sync with Calendar Server");

    explicit CalDavSyncCommand(QWidget *window, QObject *parent = nullptr);
    ~CalDavSyncCommand() override;

    // The menu gets the command (above `quit` and the separator before it); the main toolbar's own
    // item for it (the user places it through the toolbar's customising, which keeps it) starts the
    // same sync.
    void addTo(QMenu *menu, QAction *quit, QAction *toolbarItem);
    QAction *action() const { return m_action; }
    CalDavSyncRunner *runner() const { return m_runner.get(); }

    // The sync the menu command starts (asks how to begin on the first one).
    void syncNow();
    // At start: a sync when an account is set and has synced before.
    void syncAtStart();
    // At quit: one last sync, waited for at most `ms`.
    void syncBeforeQuit(int ms = 15000);

    // The summary sheet of the last sync the user asked for (tests, screenshots).
    QWidget *lastSummary() const { return m_summary; }

private:
    void documentChanged(QObject *source);
    // Whether syncs start by themselves: an account is set and has synced before. Kept, so that
    // an edit does not read the preferences and the disk again.
    void updateAutomatic();
    void finished(bool ok, const QString &message, const CalDavSync::Outcome &outcome);
    void countAndAsk();
    void askHowToBegin(int here, int there, const QString &calendarName);

    QPointer<QWidget> m_window;
    std::shared_ptr<AssignmentsDocument> m_document;
    std::unique_ptr<LocalAssignments> m_local;
    std::unique_ptr<CalDavSyncRunner> m_runner;
    QAction *m_action = nullptr;
    bool m_automatic = false;
    QPointer<QProgressDialog> m_progress;
    QPointer<QWidget> m_summary;
    bool m_userAsked = false;
};
