#include "ICalReader.h"

#include "exchange/ICalExport.h"
#include "platform/Paths.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "store/PreferenceKeys.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFileInfo>
#include <gtest/gtest.h>

namespace {

const QByteArray Header = "BEGIN:VCALENDAR\n"
                          "VERSION:2.0\n"
                          "X-WR-CALNAME:Quillory\n"
                          "PRODID:-//Apple Computer\\, Inc//iCal 2.0//EN\n"
                          "X-WR-RELCALID:4EA05A06-6F59-496B-924A-46198366564B\n"
                          "X-WR-TIMEZONE:US/Pacific\n"
                          "CALSCALE:GREGORIAN\n"
                          "METHOD:PUBLISH\n";
const QByteArray Trailer = "END:VCALENDAR";
const QDate Today(2026, 11, 22);

class ICalExportTest : public testing::Test
{
protected:
    void SetUp() override { ICalExport::resetCountersForTest(); }
};

AssignmentList records(std::initializer_list<QVariantMap> list)
{
    AssignmentList result;
    for (const QVariantMap &fields : list)
        result.append(Assignments::make(fields));
    return result;
}

QByteArray exportText(const AssignmentList &list, const QString &name = ICalExport::DefaultName,
                      const QString &format = ICalExport::Events)
{
    return ICalExport(name, format).fileText(list, Today);
}

} // namespace

TEST_F(ICalExportTest, DefaultEventsAreWrittenByteForByte)
{
    const auto list = records({{{"Name", "Essay"}, {"Date", "2026-12-01 23:59:00 -0500"}, {"Course", "English"}},
                               {{"Name", "Year end"}, {"Date", "2026-12-31 00:00:00 -0500"}},
                               {{"Name", "Undated"}, {"Notes", "bring paper"}}});
    const QByteArray expected = Header
        + "BEGIN:VEVENT\n"
          "DTSTART;VALUE=DATE:20261201\n"
          "DTEND;VALUE=DATE:20261202\n"
          "SUMMARY:Essay\n"
          "DESCRIPTION:Name: Essay\\nCourse: English\\n\n"
          "UID:1\n"
          "DTSTAMP:20050817T051622Z\n"
          "END:VEVENT\n"
          "BEGIN:VEVENT\n"
          "DTSTART;VALUE=DATE:20261231\n"
          "DTEND;VALUE=DATE:20270101\n"
          "SUMMARY:Year end\n"
          "DESCRIPTION:Name: Year end\\n\n"
          "UID:2\n"
          "DTSTAMP:20050817T051622Z\n"
          "END:VEVENT\n"
          "BEGIN:VEVENT\n"
          "DTSTART;VALUE=DATE:20261122\n"
          "DTEND;VALUE=DATE:20261123\n"
          "SUMMARY:Undated\n"
          "DESCRIPTION:Name: Undated\\nNotes: bring paper\\n\n"
          "UID:3\n"
          "DTSTAMP:20050817T051622Z\n"
          "END:VEVENT\n"
        + Trailer;
    EXPECT_EQ(exportText(list), expected);
}

TEST_F(ICalExportTest, UidsContinueAcrossExportsOfARunAndCountEventsAndToDosApart)
{
    const auto five = records({{{"Name", "a"}}, {{"Name", "b"}}, {{"Name", "c"}}, {{"Name", "d"}}, {{"Name", "e"}}});
    const auto three = records({{{"Name", "x"}}, {{"Name", "y"}}, {{"Name", "z"}}});
    exportText(five);
    const auto second = ICalReader::read(exportText(three));
    ASSERT_EQ(second.entries.size(), 3);
    EXPECT_EQ(second.entries.at(0).uid, 6);
    EXPECT_EQ(second.entries.at(2).uid, 8);

    const auto toDos = ICalReader::read(exportText(three, "%n", ICalExport::ToDos));
    EXPECT_EQ(toDos.entries.at(0).uid, 1);
    EXPECT_EQ(toDos.entries.at(2).uid, 3);

    // A new program run starts both counters again.
    ICalExport::resetCountersForTest();
    EXPECT_EQ(ICalReader::read(exportText(three)).entries.at(0).uid, 1);
}

TEST_F(ICalExportTest, CompletedToDoCarriesStatusAndTodayBeforeDue)
{
    const auto list = records({{{"Name", "Lab"}, {"Date", "2026-10-05 08:00:00 -0400"}, {"Completed", true}},
                               {{"Name", "Quiz"}, {"Completed", false}}});
    const QByteArray expected = Header
        + "BEGIN:VTODO\n"
          "STATUS:COMPLETED\n"
          "COMPLETED:20261122\n"
          "DUE;VALUE=DATE:20261005\n"
          "SUMMARY:Lab\n"
          "DESCRIPTION:Name: Lab\\n\n"
          "UID:1\n"
          "DTSTAMP:20050817T051622Z\n"
          "END:VTODO\n"
          "BEGIN:VTODO\n"
          "DUE;VALUE=DATE:20261122\n"
          "SUMMARY:Quiz\n"
          "DESCRIPTION:Name: Quiz\\n\n"
          "UID:2\n"
          "DTSTAMP:20050817T051622Z\n"
          "END:VTODO\n"
        + Trailer;
    EXPECT_EQ(exportText(list, "%n", ICalExport::ToDos), expected);
}

TEST_F(ICalExportTest, AnEmptyListOrAnUnknownKindGivesHeaderAndTrailerOnly)
{
    EXPECT_EQ(exportText({}), Header + Trailer);
    EXPECT_EQ(exportText(records({{{"Name", "a"}}}), "%n", QString()), Header + Trailer);
    EXPECT_EQ(exportText(records({{{"Name", "a"}}}), "%n", "events"), Header + Trailer);
}

// The summary format is taken apart once; where a "%" meets a value the codes are replaced one by one,
// and both ways must agree with replacing the codes in order.
TEST_F(ICalExportTest, SummaryCodesAreReplacedInOrder)
{
    const QString date = "2026-12-01 09:15:00 -0500";
    const QVariantMap full{{"Name", "Ch. 3"}, {"Course", "Math"}, {"Textbook", "Calculus"}, {"Type", "Reading"},
                           {"Grade", "A-"},   {"Completed", true},  {"Date", date}};
    const struct {
        QString format;
        QVariantMap record;
        QString summary;
    } cases[] = {
        {"%c: %n (%a)", {{"Name", "Ch. 3"}, {"Course", "Math"}, {"Completed", false}}, "Math: Ch. 3 (Incomplete)"},
        {"%n|%c|%t|%a|%b|%g|%x|%%", full, "Ch. 3|Math|Calculus|Complete|Reading|A-|%x|%%"},
        // Absent fields become empty; %d stays when there is no date, or it is the stored form in local time.
        {"%n on %d %c", {{"Name", "Essay"}}, "Essay on %d "},
        {"%n on %d %c", {{"Name", "Essay"}, {"Date", "2026-12-01 09:15:00 -0800"}}, "Essay on 2026-12-01 12:15:00 -0500 "},
        // Text brought in by an earlier code is searched for the later ones.
        {"%n", {{"Name", "Due %c"}, {"Course", "Art"}}, "Due Art"},
        // "%" + "dog" + "d" makes a "%d" for the date.
        {"%%nd", {{"Name", "dog"}, {"Date", date}}, "2026-12-01 09:15:00 -0500ogd"},
        {"%n%d", {{"Name", "50%"}, {"Date", date}}, "50%2026-12-01 09:15:00 -0500"},
        {"%c %n", {{"Name", "%c"}, {"Course", "Art"}}, "Art Art"},
        {"%n-%n %a%g", {{"Name", "x"}, {"Completed", 1}}, "x-x Complete"},
        {QString(QChar(0xE000)) + "%n", {{"Name", "x"}}, QString(QChar(0xE000)) + "x"},
        {"%d|%d", {{"Name", "x"}, {"Date", "not a date"}}, "%d|%d"},
        // Without a date, "%d" stays and the codes after it are still replaced.
        {"%d%c (%a)", {{"Course", "Art"}}, "%dArt (Incomplete)"},
        {"%d%n", {{"Name", "cat"}}, "%dcat"},
        {"%n%d", {{"Name", "50%"}}, "50%%d"},
        {"%t%b", {{"Textbook", "Calc"}, {"Type", "Lab"}}, "CalcLab"},
        {"", {{"Name", "x"}}, ""},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(ICalExport(c.format, ICalExport::Events).createCustomName(c.record), c.summary) << c.format.toStdString();
        EXPECT_EQ(ICalExport(c.format, ICalExport::ToDos).createCustomName(c.record), c.summary) << c.format.toStdString();
    }

    // The legacy top-level date format, where one is set, shapes the summary date.
    UserDefaults().set("Date Format", "%m/%d/%y");
    UserDefaults().set(PreferenceKeys::General, QVariantMap{{"Date Format", "%A, %B %e, %Y"}});
    EXPECT_EQ(ICalExport("%d: %n", ICalExport::Events)
                  .createCustomName({{"Name", "Essay"}, {"Date", "2026-12-01 00:00:00 -0500"}}),
              "12/01/26: Essay");
}

TEST_F(ICalExportTest, DescriptionUsesTheUsersLabelsAndKeepsEmptyValues)
{
    UserDefaults().set(PreferenceKeys::Labels,
                       QVariantMap{{"Course", "Class"}, {"Textbook", "Book"}, {"Type", "Kind"}, {"Grade", "Mark"}});
    ICalExport e("%n", ICalExport::Events);
    const QVariantMap record{{"Notes", "n"}, {"Grade", "B"},  {"Type", "Lab"},      {"Textbook", ""},
                             {"Course", "Bio"}, {"Name", "x"}, {"Completed", true}, {"Priority", 2.0}};
    EXPECT_EQ(e.createNotesFromObject(record), "Name: x\\nClass: Bio\\nBook: \\nKind: Lab\\nMark: B\\nNotes: n\\n");
    EXPECT_EQ(e.createNotesFromObject({}), "");
}

TEST_F(ICalExportTest, ValuesAreWrittenRawAndLibicalReadsWhatItCan)
{
    const auto list = records({
        {{"Name", "Read, ch; 3"}, {"Date", "2026-12-01 00:00:00 -0500"}, {"Notes", "pages 4, 5; 6"}},
        {{"Name", "Essay"}, {"Date", "2027-02-28 00:00:00 -0500"}, {"Notes", "line one\nsecond line"},
         {"Completed", true}},
        {{"Name", "Back\\slash"}, {"Course", "Math & Science"}},
    });
    const QByteArray events = exportText(list, "%n [%c]", ICalExport::Events);
    // The raw line break stands inside the DESCRIPTION line.
    EXPECT_TRUE(events.contains("DESCRIPTION:Name: Essay\\nNotes: line one\nsecond line\\n\n"));

    const auto calendar = ICalReader::read(events);
    ASSERT_TRUE(calendar.parsed);
    EXPECT_EQ(calendar.name, "Quillory");
    EXPECT_EQ(calendar.prodId, "-//Apple Computer, Inc//iCal 2.0//EN");
    EXPECT_EQ(calendar.method, "PUBLISH");
    EXPECT_TRUE(calendar.errors.isEmpty());
    ASSERT_EQ(calendar.entries.size(), 3);

    const auto &first = calendar.entries.at(0);
    EXPECT_EQ(first.kind, "VEVENT");
    // Unescaped commas and semicolons in text values are taken literally.
    EXPECT_EQ(first.summary, "Read, ch; 3 []");
    EXPECT_EQ(first.description, "Name: Read, ch; 3\nNotes: pages 4, 5; 6\n");
    EXPECT_EQ(first.start, "20261201");
    EXPECT_EQ(first.end, "20261202");
    EXPECT_TRUE(first.errors.isEmpty());

    // A raw line break ends the value there: libical keeps the first line and reports the rest as
    // a line it could not read.
    const auto &second = calendar.entries.at(1);
    EXPECT_EQ(second.description, "Name: Essay\nNotes: line one");
    ASSERT_EQ(second.errors.size(), 1);
    EXPECT_EQ(second.start, "20270228");
    EXPECT_EQ(second.end, "20270301");

    const auto &third = calendar.entries.at(2);
    EXPECT_EQ(third.summary.left(4), "Back");
    EXPECT_EQ(third.start, "20261122");
    EXPECT_EQ(third.uid, 3);

    const auto toDos = ICalReader::read(exportText(list, "%n", ICalExport::ToDos));
    ASSERT_EQ(toDos.entries.size(), 3);
    EXPECT_EQ(toDos.entries.at(0).kind, "VTODO");
    EXPECT_EQ(toDos.entries.at(0).status, QString());
    EXPECT_EQ(toDos.entries.at(0).due, "20261201");
    // The bare date in COMPLETED is accepted as a date value.
    EXPECT_EQ(toDos.entries.at(1).status, "COMPLETED");
    EXPECT_EQ(toDos.entries.at(1).completed, "20261122");
    EXPECT_EQ(toDos.entries.at(1).due, "20270228");
}

TEST_F(ICalExportTest, AnUnnamedRecordKeepsItsEntryWithEmptyTexts)
{
    const QByteArray text = exportText(records({{{"Date", "2026-12-01 00:00:00 -0500"}}}));
    EXPECT_TRUE(text.contains("SUMMARY:\nDESCRIPTION:\n"));
    // A calendar drops the empty values but keeps the entry on its day.
    const auto calendar = ICalReader::read(text);
    ASSERT_EQ(calendar.entries.size(), 1);
    EXPECT_EQ(calendar.entries.at(0).start, "20261201");
}

TEST_F(ICalExportTest, PerformExportWritesTheFileInTheDataFolderAndHandsItToTheCalendar)
{
    ASSERT_FALSE(QFileInfo::exists(Paths::dataFolder()));
    ICalExport e("%n", ICalExport::Events);
    EXPECT_TRUE(e.performExport(records({{{"Name", "Essay"}, {"Date", "2026-12-01 00:00:00 -0500"}}})));
    const QByteArray written = TestEnvironment::readFile(Paths::iCalExportFile());
    EXPECT_TRUE(written.startsWith(Header));
    EXPECT_TRUE(written.endsWith(Trailer));
    EXPECT_TRUE(written.contains("UID:1\n"));
    const auto opened = Workspace::takeOpened();
    ASSERT_EQ(opened.size(), 1);
    EXPECT_EQ(opened.at(0).url, QUrl::fromLocalFile(Paths::iCalExportFile()));
    EXPECT_EQ(opened.at(0).application, "iCal");

    // A second export overwrites the first whole.
    EXPECT_TRUE(ICalExport("%n", ICalExport::Events).performExport({}));
    EXPECT_EQ(TestEnvironment::readFile(Paths::iCalExportFile()), Header + Trailer);
    EXPECT_EQ(QDir(Paths::dataFolder()).entryList(QDir::Files).size(), 1);
}
