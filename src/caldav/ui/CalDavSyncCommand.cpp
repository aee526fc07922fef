#include "caldav/ui/CalDavSyncCommand.h"

#include "caldav/CalDavSettings.h"
#include "caldav/CalDavSyncRunner.h"
#include "caldav/DavSession.h"
#include "caldav/LocalAssignments.h"
#include "platform/PreferencesNotifier.h"
#include "platform/UserDefaults.h"
#include "store/AssignmentsDocument.h"
#include "widgets/Icons.h"

#include <QAction>
#include <QMenu>
#include <QMessageBox>
#include <QProgressDialog>
#include <QPushButton>
#include <QtConcurrent>

CalDavSyncCommand::CalDavSyncCommand(QWidget *window, QObject *parent)
    : QObject(parent)
    , m_window(window)
    , m_document(AssignmentsDocument::open())
    , m_local(std::make_unique<LocalAssignments>(m_document, this))
    , m_runner(std::make_unique<CalDavSyncRunner>(m_local.get()))
{
    m_action = new QAction(Icons::themed(QStringLiteral("emblem-synchronizing"), QStringLiteral("prefs-calendar-server")), ActionText, this);
    m_action->setObjectName(QStringLiteral("syncWithCalendarServer"));
    m_action->setToolTip(tr("Send and receive assignments with the calendar server of Preferences ▸ Calendar Server"));
    m_action->setIconText(tr("Calendar Sync"));
    connect(m_action, &QAction::triggered, this, &CalDavSyncCommand::syncNow);
    connect(m_runner.get(), &CalDavSyncRunner::finished, this, &CalDavSyncCommand::finished);
    connect(m_runner.get(), &CalDavSyncRunner::started, this, [this] { m_action->setEnabled(false); });

    // Every change of the assignments (an edit in any window, or the file changed by another copy
    // of the program) brings a sync a little later; the sync's own changes do not.
    AssignmentsDocument *document = m_document.get();
    connect(document, &AssignmentsDocument::reset, this, &CalDavSyncCommand::documentChanged);
    connect(document, &AssignmentsDocument::rowChanged, this, [this](qsizetype, QObject *source) { documentChanged(source); });
    connect(document, &AssignmentsDocument::rowsInserted, this,
            [this](qsizetype, qsizetype, QObject *source) { documentChanged(source); });
    connect(document, &AssignmentsDocument::rowsRemoved, this,
            [this](qsizetype, qsizetype, QObject *source) { documentChanged(source); });
    connect(UserDefaults::notifier(), &PreferencesNotifier::changed, this, [this](const QString &group) {
        if (group == CalDavSettings::Group)
            updateAutomatic();
    });
    updateAutomatic();
}

void CalDavSyncCommand::updateAutomatic()
{
    m_automatic = m_runner->isConfigured() && !m_runner->isFirstSync();
}

void CalDavSyncCommand::documentChanged(QObject *source)
{
    // A change during a sync brings another one after it (the sync read the records at its start).
    if (m_automatic && source != this)
        m_runner->scheduleAfterEdit();
}

CalDavSyncCommand::~CalDavSyncCommand() = default;

void CalDavSyncCommand::addTo(QMenu *menu, QAction *quit, QAction *toolbarItem)
{
    if (menu) {
        // With the other syncs, above the separator that sets Quit apart.
        const QList<QAction *> actions = menu->actions();
        const qsizetype at = actions.indexOf(quit);
        QAction *before = at > 0 && actions[at - 1]->isSeparator() ? actions[at - 1] : (at >= 0 ? quit : nullptr);
        menu->insertAction(before, m_action);
    }
    if (toolbarItem)
        connect(toolbarItem, &QAction::triggered, this, &CalDavSyncCommand::syncNow);
}

void CalDavSyncCommand::syncAtStart()
{
    if (m_runner->isConfigured() && !m_runner->isFirstSync())
        m_runner->start();
}

void CalDavSyncCommand::syncBeforeQuit(int ms)
{
    if (!m_runner->isConfigured() || m_runner->isFirstSync())
        return;
    m_runner->start();
    m_runner->finish(ms);
}

void CalDavSyncCommand::syncNow()
{
    if (!m_runner->isConfigured()) {
        QMessageBox box(QMessageBox::Information, ActionText,
                        tr("No calendar server is set up.  Choose one in Preferences ▸ Calendar Server."), QMessageBox::Ok,
                        m_window);
        box.exec();
        return;
    }
    m_userAsked = true;
    if (m_runner->isFirstSync()) {
        countAndAsk();
        return;
    }
    if (!m_progress) {
        m_progress = new QProgressDialog(tr("Syncing with the calendar server…"), QString(), 0, 0, m_window);
        m_progress->setObjectName(QStringLiteral("calendarSyncProgress"));
        m_progress->setAccessibleName(tr("Sync progress"));
        m_progress->setWindowModality(Qt::WindowModal);
        m_progress->setMinimumDuration(300);
        m_progress->setAttribute(Qt::WA_DeleteOnClose);
    }
    m_runner->start();
}

void CalDavSyncCommand::countAndAsk()
{
    const CalDavSettings settings = CalDavSettings::load();
    const int here = m_local->records().size();
    const QString password = CalDavSettings::password(settings.user);
    // Counting the server's items is a request: off the interface thread, like every other.
    auto *count = new QFutureWatcher<int>(this);
    connect(count, &QFutureWatcher<int>::finished, this, [this, count, here, settings] {
        count->deleteLater();
        askHowToBegin(here, count->result(), settings.calendarName);
    });
    count->setFuture(QtConcurrent::run([=] {
        DavSession session(settings.user, password);
        return CalDavSync::countItems(session, QUrl(settings.calendarUrl));
    }));
}

void CalDavSyncCommand::askHowToBegin(int here, int there, const QString &calendarName)
{
    QMessageBox box(QMessageBox::Question, ActionText,
                    tr("This is the first sync with “%1”.").arg(calendarName), QMessageBox::Cancel, m_window);
    box.setObjectName(QStringLiteral("calendarFirstSync"));
    box.setInformativeText(tr("This computer has %1 assignments; the calendar has %2 to-dos.  Merge them, take the "
                              "server's (this computer's assignments that the server lacks are removed), or send this "
                              "computer's (the server's to-dos that this computer lacks are removed)?")
                               .arg(here)
                               .arg(there < 0 ? tr("an unknown number of") : QString::number(there)));
    QPushButton *merge = box.addButton(tr("Merge"), QMessageBox::AcceptRole);
    QPushButton *takeServer = box.addButton(tr("Take the Server's"), QMessageBox::DestructiveRole);
    QPushButton *sendLocal = box.addButton(tr("Send This Computer's"), QMessageBox::DestructiveRole);
    box.setDefaultButton(merge);
    box.exec();
    if (box.clickedButton() == merge)
        m_runner->start(CalDavSync::FirstSync::Merge);
    else if (box.clickedButton() == takeServer)
        m_runner->start(CalDavSync::FirstSync::TakeServer);
    else if (box.clickedButton() == sendLocal)
        m_runner->start(CalDavSync::FirstSync::SendLocal);
    else
        m_userAsked = false;
}

void CalDavSyncCommand::finished(bool ok, const QString &message, const CalDavSync::Outcome &)
{
    m_action->setEnabled(true);
    // The first sync of an account makes the automatic ones begin.
    updateAutomatic();
    if (m_progress)
        m_progress->close();
    if (!m_userAsked && ok)
        return;
    m_userAsked = false;
    auto *box = new QMessageBox(ok ? QMessageBox::Information : QMessageBox::Warning, ActionText,
                                ok ? tr("Sync with the calendar server done.") : tr("The sync with the calendar server stopped."),
                                QMessageBox::Ok, m_window);
    box->setObjectName(QStringLiteral("calendarSyncSummary"));
    box->setInformativeText(message);
    box->setWindowModality(Qt::WindowModal);
    box->setAttribute(Qt::WA_DeleteOnClose);
    m_summary = box;
    box->open();
}
