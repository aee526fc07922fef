#include "DavServers.h"
#include "ListDoubles.h"
#include "SyncSandbox.h"
#include "TestEnvironment.h"

#include "caldav/CalDavAccount.h"
#include "caldav/CalDavSettings.h"
#include "caldav/CalDavSync.h"
#include "caldav/CalDavSyncRunner.h"
#include "caldav/DavSession.h"
#include "caldav/SyncState.h"
#include "caldav/TodoMapping.h"
#include "caldav/ui/CalDavSyncCommand.h"
#include "list/Controller.h"
#include "list/Editing.h"
#include "list/ui/MainMenus.h"
#include "list/ui/MainToolbar.h"
#include "list/ui/MainWindow.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/Assignment.h"
#include "store/AssignmentsDocument.h"
#include "store/StartupSequence.h"

#include <QAction>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

using namespace AssignmentKeys;
using StoreFiles::storedNames;

namespace {

const QString User = QStringLiteral("student");
const QString Password = QStringLiteral("secret");

// The account of this $HOME: a Radicale with one calendar, in the preferences and the keychain.
struct ServerAccount {
    DavServer server;
    CalDavAccount::Calendar calendar;

    bool open(DavServer::Kind kind = DavServer::Kind::Radicale)
    {
        if (!sharedKeyring().isRunning() || !server.start(kind, User, Password))
            return false;
        DavSession session(User, Password);
        const auto found = CalDavAccount::discover(session, server.address());
        if (found.problem != CalDavAccount::Problem::None)
            return false;
        const auto made = CalDavAccount::createCalendar(session, found.home, CalDavAccount::DefaultCalendarName);
        if (made.calendars.isEmpty())
            return false;
        calendar = made.calendars.first();
        CalDavSettings settings;
        settings.address = server.address();
        settings.user = User;
        settings.calendarUrl = calendar.url.toString();
        settings.calendarName = calendar.name;
        settings.syncCollection = calendar.offersSyncCollection;
        settings.save();
        return CalDavSettings::storePassword(User, Password);
    }
};

// The student's phone: its own copy of the calendar's to-dos and its own record of the last sync.
struct Phone {
    QTemporaryDir folder;
    SyncState state{folder.filePath(QStringLiteral("state.json"))};
    QList<QVariantMap> records;

    void sync(const ServerAccount &account)
    {
        DavSession session(User, Password);
        CalDavSync engine(session, account.calendar.url, state, account.calendar.offersSyncCollection);
        const CalDavSync::Outcome out = engine.run(records, CalDavSync::FirstSync::Merge);
        ASSERT_TRUE(out.ok) << out.error.toStdString();
        for (const QVariantMap &upsert : out.upserts) {
            const QString uid = upsert.value(CalDavKeys::Uid).toString();
            records.removeIf([&](const QVariantMap &r) { return r.value(CalDavKeys::Uid) == uid; });
            records << upsert;
        }
        records.removeIf([&](const QVariantMap &r) { return out.removals.contains(r.value(CalDavKeys::Uid).toString()); });
    }
    void rename(const QString &from, const QString &to)
    {
        for (QVariantMap &r : records)
            if (r.value(Name) == from) {
                r.insert(Name, to);
                r.insert(DateUpdated, QStringLiteral("2026-11-25 10:00:00 -0500"));
            }
    }
};

struct OpenWindow {
    std::unique_ptr<MainWindow> window = std::make_unique<MainWindow>();
    std::unique_ptr<CalDavSyncCommand> command;

    OpenWindow()
    {
        StartupSequence::setUpWindowFromPreferences(window->startupSteps());
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
        window->refresh();
        // Wired as the program wires it: the File menu, and the toolbar's own item.
        command = std::make_unique<CalDavSyncCommand>(window.get());
        command->addTo(window->menus()->menus().value(0), window->menus()->action(MainMenus::Command::Quit),
                       window->mainToolbar()->itemAction(ToolbarCatalogue::CalendarSync));
    }
    QAction *undo() const
    {
        window->validateCommands();
        return window->menus()->action(MainMenus::Command::Undo);
    }
    // A sync on the runner's worker thread, the way the menu command and the timers start one.
    bool syncAndWait(CalDavSync::FirstSync mode = CalDavSync::FirstSync::Merge) const
    {
        QSignalSpy finished(command->runner(), &CalDavSyncRunner::finished);
        if (!command->runner()->start(mode))
            return false;
        // The sync runs off the interface thread: start() returns while it is under way.
        EXPECT_TRUE(command->runner()->isRunning());
        return finished.wait(30000) && finished.first().at(0).toBool();
    }
    // Both sides sync, the phone renames a to-do and sends it, and a sync starts here that will
    // bring it (still running on return).
    void startSyncAfterThePhoneRenamed(const ServerAccount &account, Phone &phone, const QString &from, const QString &to) const
    {
        ASSERT_TRUE(syncAndWait());
        phone.sync(account);
        phone.rename(from, to);
        phone.sync(account);
        ASSERT_TRUE(command->runner()->start());
    }
    void select(const QString &name) const
    {
        const AssignmentList shown = window->controller()->displayAssignments();
        for (qsizetype row = 0; row < shown.size(); ++row)
            if (shown[row]->string(Name) == name)
                window->controller()->selectRowAlone(int(row));
    }
};

void writeStore(const QStringList &names)
{
    QVariantList records;
    double created = 1000;
    for (const QString &name : names)
        records << QVariantMap{{Name, name}, {DateCreated, created++}, {Priority, 1.0},
                               {DateUpdated, QStringLiteral("2026-11-20 09:00:00 -0500")}};
    QDir().mkpath(Paths::dataFolder());
    ASSERT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), records));
}

} // namespace

// What the server sent is no step of the list's history: an undo would take it back here and the
// next sync would send the undo to every other device. A sync that changed nothing here leaves
// the history alone.
TEST(CalDavCommand, AnUndoAfterASyncThatChangedRecordsCannotTakeThemBack)
{
    StoreFiles::setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    writeStore({"Essay", "Lab"});
    ServerAccount account;
    ASSERT_TRUE(account.open());
    OpenWindow w;
    ASSERT_TRUE(w.syncAndWait());
    EXPECT_EQ(w.undo()->text(), "Can't Undo After Sync");

    Phone phone;
    phone.sync(account);
    ASSERT_EQ(phone.records.size(), 2);
    phone.rename("Essay", "Essay, second draft");
    phone.sync(account);

    ASSERT_TRUE(w.syncAndWait());
    ASSERT_EQ(storedNames(true), (QStringList{"Essay, second draft", "Lab"}));
    EXPECT_EQ(w.undo()->text(), "Can't Undo After Sync");
    EXPECT_FALSE(w.undo()->isEnabled());
    w.undo()->trigger();
    EXPECT_EQ(storedNames(true), (QStringList{"Essay, second draft", "Lab"}));

    // A change here that the sync only sends: the list's own step stays undoable.
    w.select("Lab");
    w.window->controller()->editing().deleteAssignment();
    ASSERT_EQ(storedNames(true), QStringList{"Essay, second draft"});
    ASSERT_TRUE(w.syncAndWait());
    EXPECT_EQ(w.undo()->text(), "Undo Delete Assignment");
    phone.sync(account);
    EXPECT_EQ(phone.records.size(), 1);
}

// Another copy of the program saves the file while a sync runs: what it wrote stays, and what the
// server sent is added to it, never written over it.
TEST(CalDavCommand, AFileSavedElsewhereDuringASyncIsNotWrittenOver)
{
    writeStore({"Essay"});
    ServerAccount account;
    ASSERT_TRUE(account.open());
    OpenWindow w;
    Phone phone;
    w.startSyncAfterThePhoneRenamed(account, phone, "Essay", "Essay, second draft");
    // Nothing is delivered before the event loop runs again, so the spy sees this sync's end.
    QSignalSpy finished(w.command->runner(), &CalDavSyncRunner::finished);
    QVariantList stored = PropertyList::readFile(Paths::assignmentsFile())->toList();
    stored << QVariantMap{{Name, "From elsewhere"}, {DateCreated, 5000.0}, {Priority, 1.0}};
    ASSERT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), stored));
    // Kept off the event loop until the sync's thread is done, so the file watcher has not yet
    // told the program: it finds the other save only as it goes to write the sync's result.
    QElapsedTimer waited;
    waited.start();
    while (w.command->runner()->isRunning() && waited.elapsed() < 30000)
        QThread::msleep(10);
    ASSERT_TRUE(finished.wait(30000));
    EXPECT_EQ(finished.first().at(1).toString(), "The assignments changed on disk during the sync, so nothing was "
                                                 "changed here.  The next sync takes them up.");
    EXPECT_TRUE(storedNames().contains("From elsewhere"));
    // A sync that found the file changed runs again by itself.
    EXPECT_TRUE(QTest::qWaitFor([&] { return !w.command->runner()->isRunning() && storedNames(true).contains("Essay, second draft"); }, 30000));
    EXPECT_EQ(storedNames(true), (QStringList{"Essay, second draft", "From elsewhere"}));
}

// The student renames an assignment while a sync runs that brings the phone's rename of it: the
// student's edit is the later one and stays (the next sync sends it), and the phone's version is
// kept in the backups, never dropped unseen.
TEST(CalDavCommand, AnEditMadeWhileASyncRunsIsKeptAndTheServersVersionBackedUp)
{
    writeStore({"Essay", "Lab"});
    ServerAccount account;
    ASSERT_TRUE(account.open());
    OpenWindow w;
    Phone phone;
    w.startSyncAfterThePhoneRenamed(account, phone, "Essay", "Essay, phone's draft");
    // Nothing is delivered before the event loop runs again, so the spy sees this sync's end.
    QSignalSpy finished(w.command->runner(), &CalDavSyncRunner::finished);
    const auto document = AssignmentsDocument::open();
    const AssignmentList records = document->records();
    const auto essay = std::find_if(records.cbegin(), records.cend(), [](const AssignmentRef &r) { return r->string(Name) == "Essay"; });
    ASSERT_NE(essay, records.cend());
    QVariantMap edited = (*essay)->fields();
    edited.insert(Name, QStringLiteral("Essay, my draft"));
    ASSERT_TRUE(document->replace(*essay, **essay, Assignments::make(edited)));
    ASSERT_TRUE(finished.wait(30000));
    EXPECT_EQ(finished.first().at(1).toString(), "0 sent, 0 received, 1 conflict kept in backups (Essay, phone's draft)")
        << finished.first().at(1).toString().toStdString();
    EXPECT_EQ(storedNames(true), (QStringList{"Essay, my draft", "Lab"}));
    const QStringList backups = QDir(Paths::syncingBackupsFolder()).entryList(QDir::Files);
    ASSERT_EQ(backups.size(), 1);
    const auto backup = PropertyList::readFile(Paths::syncingBackupsFolder() + u'/' + backups.first());
    ASSERT_TRUE(backup);
    QStringList backedUp;
    for (const QVariant &record : backup->toList().value(0).toList())
        backedUp << record.toMap().value(Name).toString();
    EXPECT_TRUE(backedUp.contains("Essay, phone's draft")) << backedUp.join(", ").toStdString();

    // The next sync sends the student's edit to the phone.
    ASSERT_TRUE(w.syncAndWait());
    phone.sync(account);
    QStringList onPhone;
    for (const QVariantMap &record : phone.records)
        onPhone << record.value(Name).toString();
    onPhone.sort();
    EXPECT_EQ(onPhone, (QStringList{"Essay, my draft", "Lab"}));
    EXPECT_EQ(storedNames(true), (QStringList{"Essay, my draft", "Lab"}));
}

// The program's own syncs: at start when the account has synced before, a few seconds after any
// window changed the assignments (not after the sync's own changes), and one last one at quit.
TEST(CalDavCommand, SyncsAtStartAfterAChangeAndAtQuit)
{
    writeStore({"Essay"});
    ServerAccount account;
    ASSERT_TRUE(account.open());
    {
        OpenWindow w;
        w.command->syncAtStart(); // never synced: waits for the question of the first sync
        EXPECT_FALSE(w.command->runner()->isRunning());
        ASSERT_TRUE(w.syncAndWait());
    }
    Phone phone;
    phone.sync(account);
    phone.records << QVariantMap{{CalDavKeys::Uid, "PHONE-1"}, {Name, "From the phone"},
                                 {DateUpdated, QStringLiteral("2026-11-25 10:00:00 -0500")}};
    phone.sync(account);

    OpenWindow w;
    QSignalSpy started(w.command->runner(), &CalDavSyncRunner::started);
    QSignalSpy finished(w.command->runner(), &CalDavSyncRunner::finished);
    w.command->runner()->setDebounceMs(300);
    w.command->syncAtStart();
    ASSERT_TRUE(finished.wait(30000));
    EXPECT_EQ(storedNames(true), (QStringList{"Essay", "From the phone"}));
    // What that sync brought is no edit: no sync follows it.
    QTest::qWait(800);
    EXPECT_EQ(started.size(), 1);

    // An edit in the window brings a sync shortly after.
    w.select("Essay");
    w.window->controller()->editing().deleteAssignment();
    ASSERT_TRUE(finished.wait(30000));
    EXPECT_EQ(started.size(), 2);
    phone.sync(account);
    EXPECT_EQ(phone.records.size(), 1);

    // At quit: one more sync, waited for.
    w.select("From the phone");
    w.window->controller()->editing().deleteAssignment();
    w.command->syncBeforeQuit();
    EXPECT_EQ(started.size(), 3);
    phone.sync(account);
    EXPECT_TRUE(phone.records.isEmpty());
}

// A server that takes the connection and never answers keeps the program from quitting for at
// most the time given, not for the length of a request's time-out.
TEST(CalDavCommand, QuitWaitsOnlyAsLongAsAllowedForAServerThatDoesNotAnswer)
{
    ASSERT_TRUE(sharedKeyring().isRunning());
    writeStore({"Essay"});
    QTcpServer silent;
    ASSERT_TRUE(silent.listen(QHostAddress::LocalHost));
    CalDavSettings settings;
    settings.address = QStringLiteral("http://127.0.0.1:%1/").arg(silent.serverPort());
    settings.user = User;
    settings.calendarUrl = settings.address + QStringLiteral("calendars/student/quillory/");
    settings.calendarName = QStringLiteral("Quillory");
    settings.save();
    ASSERT_TRUE(CalDavSettings::storePassword(User, Password));
    SyncState had(SyncState::pathFor(settings.calendarUrl, User));
    ASSERT_TRUE(had.save());

    QElapsedTimer clock;
    clock.start();
    {
        OpenWindow w;
        w.command->syncBeforeQuit(1500);
        EXPECT_LT(clock.elapsed(), 5000);
    }
    EXPECT_LT(clock.elapsed(), 6000);
    EXPECT_EQ(storedNames(true), QStringList{"Essay"});
}

// The versions that lost a conflict are kept like every automatic backup: the newest twenty.
TEST(CalDavCommand, ConflictBackupsArePrunedLikeTheAutomaticOnes)
{
    QDir().mkpath(Paths::syncingBackupsFolder());
    for (int i = 0; i < 25; ++i)
        ASSERT_TRUE(PropertyList::writeFile(
            Paths::syncingBackupsFolder() + QStringLiteral("/2020-01-01 00:00:%1 -0500.plist").arg(i, 2, 10, QLatin1Char('0')),
            QVariantList{QVariantList(), QVariantList(), QVariantList()}));
    QString written;
    ASSERT_TRUE(CalDavSyncRunner::backUpLosers({QVariantMap{{Name, "Mine"}}}, {QVariantMap{{Name, "Theirs"}}}, &written));
    const QStringList kept = QDir(Paths::syncingBackupsFolder()).entryList(QDir::Files, QDir::Name);
    EXPECT_EQ(kept.size(), 20);
    EXPECT_TRUE(kept.contains(QFileInfo(written).fileName()));
    EXPECT_FALSE(kept.contains("2020-01-01 00:00:05 -0500.plist"));
    EXPECT_TRUE(kept.contains("2020-01-01 00:00:06 -0500.plist"));
}

// The toolbar item is one of the toolbar's own: customising the toolbar keeps it where the user put
// it, and a click starts a sync.
TEST(CalDavCommand, TheToolbarItemSurvivesCustomisingAndSyncs)
{
    writeStore({"Essay"});
    ServerAccount account;
    ASSERT_TRUE(account.open());
    OpenWindow w;
    ASSERT_TRUE(w.syncAndWait());
    MainToolbar *toolbar = w.window->mainToolbar();
    EXPECT_TRUE(ToolbarCatalogue::allowedItemIdentifiers().contains(ToolbarCatalogue::CalendarSync));
    toolbar->setItemIdentifiers(toolbar->itemIdentifiers() << ToolbarCatalogue::CalendarSync);
    // Rearranged again, as the palette does when the user drags another item in.
    QStringList rearranged = toolbar->itemIdentifiers();
    rearranged.prepend(ToolbarCatalogue::Preferences);
    toolbar->setItemIdentifiers(rearranged);
    EXPECT_TRUE(ToolbarCatalogue::storedItemIdentifiers().contains(ToolbarCatalogue::CalendarSync));
    QCoreApplication::processEvents();
    QWidget *item = toolbar->itemWidget(ToolbarCatalogue::CalendarSync);
    ASSERT_NE(item, nullptr);
    ASSERT_TRUE(item->isVisible());
    EXPECT_EQ(toolbar->itemAction(ToolbarCatalogue::CalendarSync)->text(), "Calendar Sync");

    // In the File menu it stands with the other syncs, not below Quit.
    const QList<QAction *> file = w.window->menus()->menus().value(0)->actions();
    const qsizetype at = file.indexOf(w.command->action());
    ASSERT_GT(at, 0);
    ASSERT_LT(at + 2, file.size());
    EXPECT_TRUE(file[at + 1]->isSeparator());
    EXPECT_EQ(file[at + 2]->text(), "Quit");

    QSignalSpy started(w.command->runner(), &CalDavSyncRunner::started);
    QTest::mouseClick(item, Qt::LeftButton);
    EXPECT_EQ(started.size(), 1);
    ASSERT_TRUE(QTest::qWaitFor([&] { return w.command->lastSummary() != nullptr; }, 30000));
    w.command->lastSummary()->close();
}
