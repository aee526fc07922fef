#include "DavServers.h"
#include "LocalServers.h"
#include "TestEnvironment.h"

#include "caldav/CalDavAccount.h"
#include "caldav/CalDavSync.h"
#include "caldav/CalDavSyncRunner.h"
#include "caldav/DavSession.h"
#include "caldav/LocalAssignments.h"
#include "caldav/SyncState.h"
#include "caldav/TodoMapping.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/Assignment.h"
#include "store/AssignmentsDocument.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>
#include <libical/ical.h>

using namespace AssignmentKeys;

namespace {

const QString User = QStringLiteral("student");
const QString Password = QStringLiteral("secret");

QVariantMap record(const QString &name, QVariantMap more = {})
{
    more.insert(Name, name);
    if (!more.contains(DateUpdated))
        more.insert(DateUpdated, QStringLiteral("2026-11-20 09:00:00 -0500"));
    return more;
}

// One computer: its own store files and its own record of the last sync, as a second $HOME has.
struct Device {
    QTemporaryDir folder;
    std::shared_ptr<AssignmentsDocument> document;
    LocalAssignments local;
    SyncState state;

    explicit Device(const QList<QVariantMap> &records = {})
        : document(AssignmentsDocument::open(folder.filePath(QStringLiteral("Assignments.plist"))))
        , local(document)
        , state(folder.filePath(QStringLiteral("state.json")))
    {
        AssignmentList list;
        for (const QVariantMap &fields : records)
            list << Assignments::make(fields);
        EXPECT_TRUE(document->setAll(list));
    }

    // What the runner does around the engine, without its thread.
    CalDavSync::Outcome sync(const QUrl &calendar, bool syncCollection,
                             CalDavSync::FirstSync mode = CalDavSync::FirstSync::Merge, const QString &password = Password)
    {
        local.ensureUids();
        DavSession session(User, password);
        session.setTimeoutMs(10000);
        CalDavSync engine(session, calendar, state, syncCollection);
        CalDavSync::Outcome out = engine.run(local.records(), mode);
        if (!out.conflictLosers.isEmpty()) {
            EXPECT_TRUE(CalDavSyncRunner::backUpLosers(local.records(), out.conflictLosers));
        }
        local.apply(out.upserts, out.removals);
        EXPECT_TRUE(state.save());
        return out;
    }

    QMap<QString, QVariantMap> byName() const
    {
        QMap<QString, QVariantMap> out;
        for (const QVariantMap &fields : local.records())
            out.insert(fields.value(Name).toString(), fields);
        return out;
    }
    QStringList names() const { return byName().keys(); }

    void edit(const QString &name, const QString &key, const QVariant &value, const QString &updated)
    {
        for (const AssignmentRef &r : document->records())
            if (r->string(Name) == name) {
                r->set(key, value);
                r->set(DateUpdated, updated);
            }
        EXPECT_TRUE(document->setAll(document->records()));
    }
    void remove(const QString &name)
    {
        AssignmentList all = document->records();
        all.removeIf([&](const AssignmentRef &r) { return r->string(Name) == name; });
        EXPECT_TRUE(document->setAll(all));
    }
};

struct Account {
    DavServer server;
    CalDavAccount::Calendar calendar;

    bool open(DavServer::Kind kind)
    {
        if (!server.start(kind, User, Password))
            return false;
        DavSession session(User, Password);
        const auto found = CalDavAccount::discover(session, server.address());
        if (found.problem != CalDavAccount::Problem::None)
            return ADD_FAILURE() << found.message.toStdString(), false;
        const auto made = CalDavAccount::createCalendar(session, found.home, CalDavAccount::DefaultCalendarName);
        if (made.calendars.isEmpty())
            return ADD_FAILURE() << made.message.toStdString(), false;
        calendar = made.calendars.first();
        return true;
    }
    int itemsOnServer()
    {
        DavSession session(User, Password);
        return CalDavSync::countItems(session, calendar.url);
    }
    QUrl through(const FaultyProxy &proxy) const
    {
        QUrl url = calendar.url;
        url.setPort(QUrl(proxy.address()).port());
        return url;
    }
};

class CalDavServers : public ::testing::TestWithParam<DavServer::Kind>
{
};

std::string serverName(const ::testing::TestParamInfo<DavServer::Kind> &info)
{
    return info.param == DavServer::Kind::Radicale ? "Radicale" : "Xandikos";
}

} // namespace

TEST(TodoMapping, WhatAReaderSeesAndWhatOthersAddedSurvives)
{
    const QVariantMap fields = record("Essay “draft”", {{Date, "2026-12-03 14:30:00 -0500"}, {Course, "History"}, {Type, "Paper"},
                                                       {Notes, "line one\nline two, with; signs"}, {Grade, "A-"},
                                                       {Textbook, "Hist 101"}, {Priority, 4.5}, {Completed, true}});
    const QByteArray ics = TodoMapping::toIcs(fields, "UID-1", "PARENT-1", {});
    // libical, as a calendar program reads it.
    icalcomponent *calendar = icalparser_parse_string(ics.constData());
    ASSERT_NE(calendar, nullptr);
    icalcomponent *todo = icalcomponent_get_first_component(calendar, ICAL_VTODO_COMPONENT);
    ASSERT_NE(todo, nullptr);
    EXPECT_STREQ(icalcomponent_get_summary(todo), "Essay “draft”");
    const icaltimetype due = icalcomponent_get_due(todo);
    EXPECT_EQ(due.hour, 14);
    EXPECT_TRUE(ics.contains("DUE;TZID=America/New_York:20261203T143000")) << ics.constData();
    EXPECT_EQ(icalcomponent_get_status(todo), ICAL_STATUS_COMPLETED);
    EXPECT_EQ(icalproperty_get_priority(icalcomponent_get_first_property(todo, ICAL_PRIORITY_PROPERTY)), 1);
    EXPECT_NE(icalcomponent_get_first_component(calendar, ICAL_VTIMEZONE_COMPONENT), nullptr);
    // A phone adds an alarm and a property of its own.
    icalcomponent *alarm = icalcomponent_new(ICAL_VALARM_COMPONENT);
    icalcomponent_add_property(alarm, icalproperty_new_action(ICAL_ACTION_DISPLAY));
    icalcomponent_add_component(todo, alarm);
    icalproperty *x = icalproperty_new_x("kept");
    icalproperty_set_x_name(x, "X-PHONE-THING");
    icalcomponent_add_property(todo, x);
    char *text = icalcomponent_as_ical_string_r(calendar);
    const QByteArray fromPhone(text);
    free(text);
    icalcomponent_free(calendar);

    const auto back = TodoMapping::fromIcs(fromPhone);
    ASSERT_TRUE(back);
    EXPECT_EQ(back->uid, "UID-1");
    EXPECT_EQ(back->parentUid, "PARENT-1");
    EXPECT_EQ(TodoMapping::digest(back->fields), TodoMapping::digest(fields));

    QVariantMap edited = fields;
    edited.insert(Name, "Essay final");
    edited.remove(Completed);
    const QByteArray again = TodoMapping::toIcs(edited, "UID-1", {}, fromPhone);
    EXPECT_TRUE(again.contains("BEGIN:VALARM"));
    EXPECT_TRUE(again.contains("X-PHONE-THING:kept"));
    EXPECT_TRUE(again.contains("STATUS:NEEDS-ACTION"));
    EXPECT_FALSE(again.contains("RELATED-TO"));
    EXPECT_EQ(again.count("SUMMARY"), 1);

    // Midnight is a day without a time, and stays a date.
    const QByteArray allDay = TodoMapping::toIcs(record("Quiz", {{Date, "2026-12-05 00:00:00 -0500"}}), "UID-2", {}, {});
    EXPECT_TRUE(allDay.contains("DUE;VALUE=DATE:20261205")) << allDay.constData();
    EXPECT_EQ(TodoMapping::fromIcs(allDay)->fields.value(Date).toString(), "2026-12-05 00:00:00 -0500");
}

TEST(CalDavAccount, ClearProblemsForPasswordAndAddress)
{
    DavServer server;
    ASSERT_TRUE(server.start(DavServer::Kind::Radicale, User, Password));
    DavSession wrong(User, QStringLiteral("wrong"));
    EXPECT_EQ(CalDavAccount::discover(wrong, server.address()).problem, CalDavAccount::Problem::Password);
    DavSession session(User, Password);
    const auto nobody = CalDavAccount::discover(session, QStringLiteral("http://127.0.0.1:%1/").arg(LocalServers::freePort()));
    EXPECT_EQ(nobody.problem, CalDavAccount::Problem::Address);
    EXPECT_FALSE(nobody.message.isEmpty());
    const auto found = CalDavAccount::discover(session, QStringLiteral("127.0.0.1:%1").arg(server.port()).prepend("http://"));
    EXPECT_EQ(found.problem, CalDavAccount::Problem::None) << found.message.toStdString();
}

// Each item of our calendar, as the server hands it to any calendar program, reads in libical and
// imports into calcurse with nothing skipped.
TEST_P(CalDavServers, TheServersCopiesReadInLibicalAndInCalcurse)
{
    Account account;
    ASSERT_TRUE(account.open(GetParam()));
    Device a({record("Essay “draft”", {{Date, "2026-12-03 14:30:00 -0500"}, {Course, "History"}, {Priority, 4.5},
                                       {Notes, "line one\nline two; with, signs"}}),
              record("Quiz", {{Date, "2026-12-05 00:00:00 -0500"}, {Completed, true}})});
    ASSERT_TRUE(a.sync(account.calendar.url, account.calendar.offersSyncCollection).ok);
    ASSERT_EQ(a.state.items.size(), 2);

    QTemporaryDir calcurse;
    const auto runCalcurse = [&](const QStringList &arguments) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("LC_ALL"), QStringLiteral("C.UTF-8"));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral("calcurse"),
                      QStringList{QStringLiteral("-C"), calcurse.path(), QStringLiteral("-D"), calcurse.path()} + arguments);
        EXPECT_TRUE(process.waitForFinished(20000));
        EXPECT_EQ(process.exitCode(), 0);
        return QString::fromUtf8(process.readAllStandardOutput());
    };
    DavSession session(User, Password);
    QStringList summaries;
    for (const SyncState::Item &item : std::as_const(a.state.items)) {
        QUrl url = account.calendar.url;
        url.setPath(item.href);
        const DavSession::Response got = session.send("GET", url);
        ASSERT_TRUE(got.ok()) << got.status;
        icalcomponent *calendar = icalparser_parse_string(got.body.constData());
        ASSERT_NE(calendar, nullptr) << got.body.constData();
        icalcomponent *todo = icalcomponent_get_first_component(calendar, ICAL_VTODO_COMPONENT);
        ASSERT_NE(todo, nullptr) << got.body.constData();
        summaries << QString::fromUtf8(icalcomponent_get_summary(todo));
        icalcomponent_free(calendar);

        QFile file(calcurse.filePath(QStringLiteral("item.ics")));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(got.body);
        file.close();
        const QString report = runCalcurse({QStringLiteral("-i"), file.fileName()});
        EXPECT_TRUE(report.contains(QStringLiteral("1 todo / 0 skipped"))) << report.toStdString();
    }
    summaries.sort();
    EXPECT_EQ(summaries, (QStringList{"Essay “draft”", "Quiz"}));
    const QString todos = runCalcurse({QStringLiteral("-t")});
    EXPECT_TRUE(todos.contains(QStringLiteral("Essay “draft”"))) << todos.toStdString();
}

TEST_P(CalDavServers, TwoComputersConvergeOnTheUnionWithConflictsInBackups)
{
    Account account;
    ASSERT_TRUE(account.open(GetParam()));
    const QUrl url = account.calendar.url;
    const bool sc = account.calendar.offersSyncCollection;
    EXPECT_EQ(sc, GetParam() == DavServer::Kind::Radicale || sc);

    Device a({record("Lab report", {{Course, "Chemistry"}, {Date, "2026-12-01 09:00:00 -0500"}}),
              record("Project", {{Project, "2026-11-01 10:00:00 -0500"}}),
              record("Part one", {{Subproject, "2026-11-01 10:00:00 -0500"}})});
    Device b({record("Reading", {{Course, "History"}}), record("Problem set", {{Priority, 3.0}})});

    auto out = a.sync(url, sc);
    ASSERT_TRUE(out.ok) << out.error.toStdString();
    EXPECT_EQ(out.sent, 3);
    EXPECT_EQ(account.itemsOnServer(), 3);
    out = b.sync(url, sc);
    ASSERT_TRUE(out.ok) << out.error.toStdString();
    EXPECT_EQ(out.sent, 2);
    EXPECT_EQ(out.received, 3);
    out = a.sync(url, sc);
    EXPECT_EQ(out.received, 2);
    const QStringList all{"Lab report", "Part one", "Problem set", "Project", "Reading"};
    EXPECT_EQ(a.names(), all);
    EXPECT_EQ(b.names(), all);
    EXPECT_EQ(account.itemsOnServer(), 5);
    // The subproject still hangs under its project on the other computer and for a phone.
    EXPECT_EQ(b.byName()["Part one"].value(Subproject), "2026-11-01 10:00:00 -0500");
    EXPECT_EQ(b.state.items.value(b.byName()["Part one"].value("CalDAV UID").toString()).ics.count("RELATED-TO;RELTYPE=PARENT"), 1);

    // Edits on each side, a deletion, and one record changed on both: the later change wins.
    a.edit("Lab report", Grade, "B+", "2026-11-21 08:00:00 -0500");
    b.edit("Reading", Completed, true, "2026-11-21 08:00:00 -0500");
    b.remove("Problem set");
    a.edit("Project", Notes, "from A", "2026-11-21 10:00:00 -0500");
    b.edit("Project", Notes, "from B (later)", "2026-11-21 11:00:00 -0500");
    ASSERT_TRUE(a.sync(url, sc).ok);
    out = b.sync(url, sc);
    ASSERT_TRUE(out.ok);
    EXPECT_EQ(out.conflictNames, QStringList{"Project"});
    ASSERT_TRUE(a.sync(url, sc).ok);
    for (Device *d : {&a, &b}) {
        const auto records = d->byName();
        EXPECT_EQ(records.keys(), (QStringList{"Lab report", "Part one", "Project", "Reading"}));
        EXPECT_EQ(records["Lab report"].value(Grade), "B+");
        EXPECT_TRUE(records["Reading"].value(Completed).toBool());
        EXPECT_EQ(records["Project"].value(Notes), "from B (later)");
    }
    // A's version of the project is in the backups.
    const QStringList backups = QDir(Paths::syncingBackupsFolder()).entryList(QDir::Files);
    ASSERT_EQ(backups.size(), 1);
    const auto document = PropertyList::readFile(Paths::syncingBackupsFolder() + "/" + backups.first());
    ASSERT_TRUE(document);
    bool kept = false;
    for (const QVariant &r : document->toList().value(0).toList())
        kept = kept || r.toMap().value(Notes) == "from A";
    EXPECT_TRUE(kept);

    // Deleted on one side, changed on the other: the change wins.
    a.remove("Lab report");
    b.edit("Lab report", Grade, "A", "2026-11-22 08:00:00 -0500");
    ASSERT_TRUE(a.sync(url, sc).ok);
    ASSERT_TRUE(b.sync(url, sc).ok);
    ASSERT_TRUE(a.sync(url, sc).ok);
    EXPECT_EQ(a.byName()["Lab report"].value(Grade), "A");
    // ...and a deletion nobody contradicts goes everywhere.
    b.remove("Reading");
    ASSERT_TRUE(b.sync(url, sc).ok);
    ASSERT_TRUE(a.sync(url, sc).ok);
    EXPECT_EQ(a.names(), b.names());
    EXPECT_FALSE(a.names().contains("Reading"));
    EXPECT_EQ(account.itemsOnServer(), 3);
    // Nothing changed: nothing sent, nothing fetched.
    out = a.sync(url, sc);
    EXPECT_EQ(out.sent + out.received + out.deletedHere + out.deletedOnServer, 0);
}

TEST_P(CalDavServers, AConnectionCutHalfwayResumesWithoutDuplicates)
{
    Account account;
    ASSERT_TRUE(account.open(GetParam()));
    QList<QVariantMap> records;
    for (int i = 0; i < 30; ++i)
        records << record(QStringLiteral("Item %1").arg(i, 2, 10, QLatin1Char('0')));
    Device a(records);
    FaultyProxy proxy;
    ASSERT_TRUE(proxy.start(account.server.port(), "cut", 2500));
    const auto cut = a.sync(account.through(proxy), account.calendar.offersSyncCollection);
    EXPECT_FALSE(cut.ok);
    EXPECT_FALSE(cut.error.isEmpty());
    const int partial = account.itemsOnServer();
    EXPECT_GT(partial, 0);
    EXPECT_LT(partial, 30);
    // As if the program died before it could remember anything.
    a.state.clear();
    QFile::remove(a.folder.filePath("state.json"));
    const auto again = a.sync(account.calendar.url, account.calendar.offersSyncCollection);
    ASSERT_TRUE(again.ok) << again.error.toStdString();
    EXPECT_EQ(account.itemsOnServer(), 30);
    EXPECT_EQ(a.names().size(), 30);
    Device b;
    ASSERT_TRUE(b.sync(account.calendar.url, account.calendar.offersSyncCollection).ok);
    EXPECT_EQ(b.names(), a.names());
}

TEST_P(CalDavServers, FullServerAndRemovedCalendarLeaveTheRecordsAlone)
{
    Account account;
    ASSERT_TRUE(account.open(GetParam()));
    Device a({record("One"), record("Two")});
    FaultyProxy full;
    ASSERT_TRUE(full.start(account.server.port(), "full"));
    const auto refused = a.sync(account.through(full), account.calendar.offersSyncCollection);
    EXPECT_FALSE(refused.ok);
    EXPECT_TRUE(refused.error.contains("507")) << refused.error.toStdString();
    EXPECT_EQ(a.names(), (QStringList{"One", "Two"}));

    ASSERT_TRUE(a.sync(account.calendar.url, account.calendar.offersSyncCollection).ok);
    DavSession session(User, Password);
    ASSERT_TRUE(session.send("DELETE", account.calendar.url).ok());
    a.edit("One", Notes, "more", "2026-11-22 08:00:00 -0500");
    const auto gone = a.sync(account.calendar.url, account.calendar.offersSyncCollection);
    EXPECT_FALSE(gone.ok);
    EXPECT_TRUE(gone.error.contains("no longer on the server")) << gone.error.toStdString();
    EXPECT_EQ(a.byName()["One"].value(Notes), "more");
    EXPECT_EQ(a.names().size(), 2);
}

TEST_P(CalDavServers, FirstSyncChoicesTakeTheServersOrSendThisComputers)
{
    Account account;
    ASSERT_TRUE(account.open(GetParam()));
    const bool sc = account.calendar.offersSyncCollection;
    Device a({record("Shared"), record("Only A")});
    ASSERT_TRUE(a.sync(account.calendar.url, sc).ok);
    Device b({record("Only B")});
    ASSERT_TRUE(b.sync(account.calendar.url, sc, CalDavSync::FirstSync::TakeServer).ok);
    EXPECT_EQ(b.names(), (QStringList{"Only A", "Shared"}));
    Device c({record("Only C")});
    ASSERT_TRUE(c.sync(account.calendar.url, sc, CalDavSync::FirstSync::SendLocal).ok);
    EXPECT_EQ(account.itemsOnServer(), 1);
    ASSERT_TRUE(a.sync(account.calendar.url, sc).ok);
    EXPECT_EQ(a.names(), QStringList{"Only C"});
}

// A phone that knows subtasks only as RELATED-TO;RELTYPE=PARENT: the parent becomes a project here
// and the child its subproject, and what goes back carries both ways of saying so.
TEST_P(CalDavServers, APhonesParentAndChildBecomeAProjectAndItsSubproject)
{
    Account account;
    ASSERT_TRUE(account.open(GetParam()));
    const bool sc = account.calendar.offersSyncCollection;
    DavSession session(User, Password);
    const auto put = [&](const QByteArray &uid, const QByteArray &lines) {
        QUrl url = account.calendar.url;
        url.setPath(url.path() + QString::fromLatin1(uid) + ".ics");
        const QByteArray ics = "BEGIN:VCALENDAR\r\nVERSION:2.0\r\nPRODID:-//Phone//EN\r\nBEGIN:VTODO\r\nUID:" + uid
                               + "\r\nDTSTAMP:20261120T100000Z\r\n" + lines + "END:VTODO\r\nEND:VCALENDAR\r\n";
        return session.send("PUT", url, ics, {{"If-None-Match", "*"}}).ok();
    };
    ASSERT_TRUE(put("phone-parent", "SUMMARY:Term paper\r\n"));
    ASSERT_TRUE(put("phone-child", "SUMMARY:Sources\r\nRELATED-TO;RELTYPE=PARENT:phone-parent\r\n"));
    ASSERT_TRUE(put("phone-other", "SUMMARY:Loose end\r\nRELATED-TO:nobody-here\r\n"));

    Device a;
    ASSERT_TRUE(a.sync(account.calendar.url, sc).ok);
    auto records = a.byName();
    const QString project = records["Term paper"].value(Project).toString();
    EXPECT_FALSE(project.isEmpty());
    EXPECT_EQ(records["Sources"].value(Subproject).toString(), project);
    EXPECT_FALSE(records["Loose end"].contains(Subproject));
    EXPECT_FALSE(records["Loose end"].contains(Project));

    // The next sync sends both with our properties; another computer reads the same structure.
    ASSERT_TRUE(a.sync(account.calendar.url, sc).ok);
    Device b;
    ASSERT_TRUE(b.sync(account.calendar.url, sc).ok);
    records = b.byName();
    EXPECT_EQ(records["Term paper"].value(Project).toString(), project);
    EXPECT_EQ(records["Sources"].value(Subproject).toString(), project);
    EXPECT_EQ(b.names().size(), 3);
}

INSTANTIATE_TEST_SUITE_P(Servers, CalDavServers, ::testing::Values(DavServer::Kind::Radicale, DavServer::Kind::Xandikos),
                         serverName);
