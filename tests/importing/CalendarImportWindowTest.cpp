#include "list/ui/MainWindowTestSupport.h"

#include "importing/ImportPlan.h"
#include "list/ui/CalendarImportSheet.h"
#include "platform/Alerts.h"
#include "platform/FilePanels.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/CoursesDocument.h"
#include "store/CoursesStore.h"

#include <QAbstractButton>
#include <QLabel>
#include <QPointer>
#include <QThread>
#include <QTreeWidget>

using namespace ListTest;
using namespace WindowTest;

namespace {

QString fixture(const QString &name)
{
    return TestEnvironment::fixture(QStringLiteral("importing/") + name);
}

CalendarImportSheet *openPreview(Window &w, const QString &file)
{
    FilePanels::queueAnswer(fixture(file));
    w.window->perform(MainMenus::Command::ImportCalendar);
    QCoreApplication::processEvents();
    auto *sheet = w.window->findChild<CalendarImportSheet *>();
    EXPECT_NE(sheet, nullptr);
    if (sheet) {
        EXPECT_TRUE(sheet->isVisible());
    }
    return sheet;
}

QTreeWidgetItem *row(CalendarImportSheet *sheet, const QString &name)
{
    const QList<QTreeWidgetItem *> found = sheet->itemsList()->findItems(name, Qt::MatchExactly, 1);
    EXPECT_EQ(found.size(), 1) << name.toStdString();
    return found.value(0);
}

QVariantList coursesOnDisk()
{
    return PropertyList::readFile(Paths::coursesFile()).value_or(QVariant()).toList();
}

// Imports every entry of `file` through the preview, as the student would.
void importAll(Window &w, const QString &file)
{
    CalendarImportSheet *sheet = openPreview(w, file);
    ASSERT_NE(sheet, nullptr);
    QTest::mouseClick(sheet->importButton(), Qt::LeftButton);
    QCoreApplication::processEvents();
}

} // namespace

TEST(CalendarImportWindow, ThePreviewListsTheFileAndImportsTheTickedEntries)
{
    freshPreferences();
    writeCourses({course("ENG 101")});
    writeStore({record("Own assignment")});
    Window w;
    CalendarImportSheet *sheet = openPreview(w, QStringLiteral("feed-before.ics"));
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->itemsList()->topLevelItemCount(), 4);
    EXPECT_EQ(sheet->summaryLabel()->text(), "4 to add, 0 to update, 0 skipped.  New courses: CHEM 105.");
    QTreeWidgetItem *lab = row(sheet, "Lab 9");
    ASSERT_NE(lab, nullptr);
    EXPECT_EQ(lab->text(2), "CHEM 105 (new)");
    EXPECT_EQ(lab->text(3), "Fri Dec 4, 2026");

    // The student leaves the lab out, then imports.
    lab->setCheckState(0, Qt::Unchecked);
    EXPECT_EQ(sheet->summaryLabel()->text(), "4 to add, 0 to update, 0 skipped.");
    QPointer<CalendarImportSheet> closing = sheet;
    QTest::mouseClick(sheet->importButton(), Qt::LeftButton);
    EXPECT_EQ(sheet->result().added, 3);
    // The sheet goes away once closed.
    QTRY_VERIFY(closing.isNull());

    EXPECT_EQ(storedNames(true), QStringList({"Essay 3", "Outline", "Own assignment", "Peer review"}));
    EXPECT_TRUE(w.shown().contains("Outline"));
    EXPECT_EQ(storedNamed("Essay 3").value(AssignmentKeys::Course).toString(), "ENG 101");
    EXPECT_TRUE(storedNamed("Essay 3").contains(ImportKeys::Record));

    // The changed feed: one renamed, one moved, one new; the lab left out before is offered again.
    sheet = openPreview(w, QStringLiteral("feed-after.ics"));
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->summaryLabel()->text(), "2 to add, 2 to update, 0 skipped.  New courses: CHEM 105.");
    EXPECT_EQ(row(sheet, "Annotated outline")->text(0), "Update");
    EXPECT_EQ(row(sheet, "Annotated outline")->text(4), "new name");
    QTest::mouseClick(sheet->importButton(), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(storedNames(true), QStringList({"Annotated outline", "Essay 3", "Final essay", "Lab 9", "Own assignment",
                                          "Peer review"}));
    EXPECT_EQ(storedNamed("Essay 3").value(AssignmentKeys::Date).toString(), stored(2026, 12, 9));
    // The new course joined the student's courses, and the filter bar shows it.
    EXPECT_NE(w.filterButton("CHEM 105", 1), nullptr);
}

TEST(CalendarImportWindow, AMalformedFileIsReportedAndChangesNothing)
{
    freshPreferences();
    writeStore({record("Own assignment")});
    Window w;
    const QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());
    for (const QString &file : {QStringLiteral("malformed-date.ics"), QStringLiteral("truncated.ics")}) {
        FilePanels::queueAnswer(fixture(file));
        w.window->perform(MainMenus::Command::ImportCalendar);
        const QList<Alerts::Request> asked = Alerts::takeAsked();
        ASSERT_EQ(asked.size(), 1);
        EXPECT_EQ(asked[0].title, "Import Calendar");
        EXPECT_TRUE(asked[0].message.startsWith("“" + file + "” could not be imported.  The calendar file"))
            << asked[0].message.toStdString();
        EXPECT_TRUE(asked[0].message.endsWith("Nothing was imported.")) << asked[0].message.toStdString();
        EXPECT_EQ(w.window->findChild<CalendarImportSheet *>(), nullptr);
    }
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);
}

TEST(CalendarImportWindow, AStoreChangedWhileThePreviewIsOpenKeepsTheChange)
{
    freshPreferences();
    writeStore({record("Own assignment")});
    Window w;
    CalendarImportSheet *sheet = openPreview(w, QStringLiteral("floating-dash.ics"));
    ASSERT_NE(sheet, nullptr);
    // Another window writes the store meanwhile (as the recurring sheet and course renames do).
    writeStore({record("Own assignment"), record("Written elsewhere")});
    QTest::mouseClick(sheet->importButton(), Qt::LeftButton);
    QCoreApplication::processEvents();
    EXPECT_EQ(storedNames(true), QStringList({"Midterm Project", "Office hours - bring questions", "Own assignment",
                                          "Written elsewhere"}));

    // Another program writes the store in the moment the import adds its new course: the import
    // says it did nothing (a subscription would otherwise take its entries for deleted ones), the
    // other program's record stays, and importing again adds the entries.
    const QStringList before = storedNames(true);
    const std::shared_ptr<CoursesDocument> courses = CoursesDocument::open();
    bool written = false;
    QMetaObject::Connection during = QObject::connect(courses.get(), &CoursesDocument::coursesChanged, [&written] {
        if (std::exchange(written, true))
            return;
        QThread::msleep(10);
        QVariantList records = PropertyList::readFile(Paths::assignmentsFile())->toList();
        records.append(QVariantMap{{AssignmentKeys::Name, "From the phone"}});
        PropertyList::writeFile(Paths::assignmentsFile(), records);
    });
    sheet = openPreview(w, QStringLiteral("feed-before.ics"));
    ASSERT_NE(sheet, nullptr);
    QTest::mouseClick(sheet->importButton(), Qt::LeftButton);
    QObject::disconnect(during);
    EXPECT_EQ(sheet->result().added, 0);
    QCoreApplication::processEvents();
    const QList<Alerts::Request> told = Alerts::takeAsked();
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told[0].message.startsWith("Nothing was imported: the assignments file changed on disk"));
    QStringList expected = before;
    expected.append("From the phone");
    expected.sort();
    EXPECT_EQ(storedNames(true), expected);
    EXPECT_TRUE(w.shown().contains("From the phone"));

    importAll(w, QStringLiteral("feed-before.ics"));
    EXPECT_TRUE(storedNames(true).contains("Lab 9"));
    EXPECT_TRUE(storedNames(true).contains("From the phone"));
}

TEST(CalendarImportWindow, EveryControlOfThePreviewHasAnAccessibleName)
{
    freshPreferences();
    writeStore({});
    Window w;
    CalendarImportSheet *sheet = openPreview(w, QStringLiteral("duplicates.ics"));
    ASSERT_NE(sheet, nullptr);
    EXPECT_FALSE(sheet->accessibleName().isEmpty());
    for (QWidget *control : sheet->findChildren<QWidget *>()) {
        if (qobject_cast<QAbstractButton *>(control) || qobject_cast<QAbstractItemView *>(control)
            || qobject_cast<QLabel *>(control) || qobject_cast<QHeaderView *>(control)) {
            EXPECT_FALSE(control->accessibleName().isEmpty()) << control->metaObject()->className() << " "
                                                               << control->objectName().toStdString();
        }
    }
    // Skipped entries cannot be ticked.
    QTreeWidgetItem *repeated = sheet->itemsList()->topLevelItem(2);
    EXPECT_EQ(repeated->text(0), "Skip");
    EXPECT_FALSE(repeated->flags() & Qt::ItemIsUserCheckable);
    sheet->reject();
}

TEST(CalendarImportWindow, UndoingAnImportTakesBackTheCoursesItAddedAndRedoAddsThemAgain)
{
    freshPreferences();
    writeCourses({course("ENG 101")});
    writeStore({record("Own assignment")});
    Window w;
    const QVariantList coursesBefore = coursesOnDisk();
    const QByteArray storeBefore = TestEnvironment::readFile(Paths::assignmentsFile());
    importAll(w, QStringLiteral("feed-before.ics"));
    EXPECT_EQ(CoursesStore().getCoursesArray(), QStringList({"ENG 101", "CHEM 105"}));
    EXPECT_NE(w.filterButton("CHEM 105", 1), nullptr);

    for (int round = 0; round < 2; ++round) {
        w.window->perform(MainMenus::Command::Undo);
        QCoreApplication::processEvents();
        EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), storeBefore);
        // The course the student had stays; the one the import brought goes with its assignment.
        EXPECT_EQ(coursesOnDisk(), coursesBefore);
        EXPECT_EQ(w.filterButton("CHEM 105", 1), nullptr);

        w.window->perform(MainMenus::Command::Redo);
        QCoreApplication::processEvents();
        EXPECT_EQ(storedNames(true), QStringList({"Essay 3", "Lab 9", "Outline", "Own assignment", "Peer review"}));
        EXPECT_EQ(CoursesStore().getCoursesArray(), QStringList({"ENG 101", "CHEM 105"}));
        EXPECT_NE(w.filterButton("CHEM 105", 1), nullptr);
    }
}

TEST(CalendarImportWindow, UndoingAnImportKeepsAnAddedCourseTheStudentChangedOrAlreadyUsed)
{
    freshPreferences();
    setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, true);
    writeCourses({course("ENG 101")});
    writeStore({record("Own assignment")});
    {
        Window w;
        importAll(w, QStringLiteral("feed-before.ics"));
        // The courses window gives the new course a textbook before the import is undone.
        CoursesStore courses;
        const int row = int(courses.getCoursesArray().indexOf("CHEM 105"));
        ASSERT_GE(row, 0);
        courses.addTextbook(int(courses.getCombined().indexOf(CourseRecords::course("CHEM 105"))));
        w.window->perform(MainMenus::Command::Undo);
        QCoreApplication::processEvents();
        EXPECT_EQ(storedNames(true), QStringList({"Own assignment"}));
        EXPECT_EQ(CoursesStore().getCoursesArray(), QStringList({"ENG 101", "CHEM 105"}));
        EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    }

    // An assignment of the student's already named the course the import added to the courses.
    writeCourses({course("ENG 101")});
    writeStore({record("Own assignment", {{AssignmentKeys::Course, QStringLiteral("CHEM 105")}})});
    Window w;
    importAll(w, QStringLiteral("feed-before.ics"));
    EXPECT_EQ(CoursesStore().getCoursesArray(), QStringList({"ENG 101", "CHEM 105"}));
    w.window->perform(MainMenus::Command::Undo);
    QCoreApplication::processEvents();
    EXPECT_EQ(storedNames(true), QStringList({"Own assignment"}));
    EXPECT_EQ(CoursesStore().getCoursesArray(), QStringList({"ENG 101", "CHEM 105"}));
}
