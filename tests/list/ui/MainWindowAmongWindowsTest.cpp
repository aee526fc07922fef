#include "list/ui/MainWindowTestSupport.h"

#include "calculators/ui/GPACalculator.h"
#include "calendar/ui/MiniCalendarWindow.h"
#include "list/ui/SidebarPlacement.h"
#include "exchange/Backup.h"
#include "platform/Alerts.h"
#include "platform/PropertyList.h"
#include "support/TestEnvironment.h"
#include "store/ui/CoursesAndTextbooks.h"

#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>
#include <QTableView>

// The main window beside the program's other windows: what is typed in one window stays there, and
// what one window writes reaches the others before they write.
using namespace ListTest;
using namespace WindowTest;
using Command = MainMenus::Command;

namespace {

void activate(QWidget *window)
{
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window));
}

} // namespace

TEST(MainWindowAmongWindows, ShortcutsTypedInAnotherWindowActThereAndNeverOnTheList)
{
    freshPreferences();
    setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    writeCourses({course("Math"), course("Art")});
    writeStore({record("One"), record("Two")});
    Window w;
    w.controller()->selectRows({0, 1});

    CoursesAndTextbooks courses;
    courses.show();
    activate(&courses);
    auto *list = courses.findChild<QListView *>("coursesTable");
    courses.selectRow(0);
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Delete);
    QTest::keyClick(list, Qt::Key_N, Qt::ControlModifier);
    QTest::keyClick(list, Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(storedNames(), (QStringList{"One", "Two"}));
    EXPECT_EQ(w.controller()->allAssignments().size(), 2);
    // The courses window's own Del took its selected course, and its own Ctrl+N added one.
    const QVariantList combined = PropertyList::readFile(Paths::coursesFile())->toList();
    ASSERT_EQ(combined.size(), 2);
    EXPECT_EQ(combined[0].toMap().value("Name").toString(), "Art");
    EXPECT_EQ(combined[1].toMap().value("Type").toString(), "Course");

    // A calculator's grid takes the same keys for itself.
    GPACalculator *gpa = GPACalculator::sharedController();
    gpa->show();
    activate(gpa);
    QLineEdit *cell = gpa->cells().first();
    cell->setFocus();
    QTest::keyClick(cell, Qt::Key_N, Qt::ControlModifier);
    QTest::keyClick(cell, Qt::Key_D, Qt::ControlModifier);
    QTest::keyClick(cell, Qt::Key_Delete, Qt::ControlModifier);
    gpa->close();
    EXPECT_EQ(storedNames(), (QStringList{"One", "Two"}));

    // So does the date picker popped up over the list.
    activate(w.window.get());
    MiniCalendarWindow picker;
    picker.popUp(w.window->mapToGlobal(QPoint(60, 60)), QDateTime(QDate(2026, 11, 22), QTime(9, 0)));
    QTest::keyClick(&picker, Qt::Key_N, Qt::ControlModifier);
    QTest::keyClick(&picker, Qt::Key_D, Qt::ControlModifier);
    picker.close();
    EXPECT_EQ(storedNames(), (QStringList{"One", "Two"}));

    // The commands still act while the main window is the one in front.
    activate(w.window.get());
    w.select("One");
    QTest::keyClick(w.table(), Qt::Key_Delete);
    EXPECT_EQ(storedNames(), QStringList{"Two"});
    QTest::keyClick(w.table(), Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(readStore().size(), 2);

    // A menu command asked for while another window is in front does nothing.
    activate(&courses);
    w.window->menus()->action(Command::Add)->trigger();
    EXPECT_EQ(readStore().size(), 2);
}

TEST(MainWindowAmongWindows, DelInTheSidebarsSubprojectsTableLeavesTheListsRows)
{
    freshPreferences();
    setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    const QString id = stored(2026, 11, 1, 9);
    writeStore({record("Thesis", {{"Project", id}}), record("Outline", {{"Subproject", id}}),
                record("Draft", {{"Subproject", id}})});
    Window w;
    activate(w.window.get());
    w.select("Thesis");
    w.window->sidebar()->showTab(SidebarForm::SubprojectsTab);
    QTableView *subprojects = w.form()->subprojectsTable;
    subprojects->clearSelection();
    subprojects->setFocus();
    ASSERT_TRUE(subprojects->hasFocus());
    QTest::keyClick(subprojects, Qt::Key_Delete);
    EXPECT_TRUE(storedNames().contains("Thesis"));
    EXPECT_EQ(w.controller()->allAssignments().size(), 3);

    // Elsewhere in the window Del still deletes the selected rows (the project with its subprojects).
    w.table()->setFocus();
    QTest::keyClick(w.table(), Qt::Key_Delete);
    EXPECT_TRUE(readStore().isEmpty());
}

TEST(MainWindowAmongWindows, ACourseRenameTypedJustBeforeClickingTheListReachesItsAssignments)
{
    freshPreferences();
    writeCourses({course("Math")});
    writeStore({record("Homework", {{"Course", "Math"}})});
    Window w;
    CoursesAndTextbooks courses;
    courses.show();
    activate(&courses);
    courses.selectRow(0);
    auto *name = courses.findChild<QLineEdit *>("courseName");
    name->setFocus();
    name->selectAll();
    QTest::keyClicks(name, "Algebra");

    // The user clicks straight into the main window: it becomes active and rereads the files.
    activate(w.window.get());
    ASSERT_EQ(w.controller()->allAssignments().size(), 1);
    EXPECT_EQ(w.controller()->allAssignments().first()->value(AssignmentKeys::Course).toString(), "Algebra");
    // The list's next save keeps the new name.
    w.window->perform(Command::Add);
    for (const QVariant &value : readStore()) {
        if (value.toMap().value("Name") == "Homework") {
            EXPECT_EQ(value.toMap().value("Course").toString(), "Algebra");
        }
    }
}

TEST(MainWindowAmongWindows, ClosingTheMainWindowTakesTheQuitPathEvenWithOtherWindowsOpen)
{
    freshPreferences();
    Window w;
    QSignalSpy quit(w.window.get(), &MainWindow::quitRequested);
    CoursesAndTextbooks courses;
    courses.show();
    activate(w.window.get());
    w.window->close();
    EXPECT_EQ(quit.count(), 1);
}

TEST(MainWindowAmongWindows, TheDetachedSidebarIsAWorkingWindowForTheListsShortcuts)
{
    freshPreferences();
    writeStore({record("One")});
    Window w;
    w.window->perform(Command::DetachSidebar);
    QWidget *panel = w.window->sidebarPlacement()->panel();
    ASSERT_TRUE(panel->isVisible());
    activate(panel);
    w.select("One");
    QTest::keyClick(panel, Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(storedNames(), (QStringList{"One", "One"}));
}

TEST(MainWindowAmongWindows, ABackupImportedFromOutsideTheMenuShowsInTheListWithoutReactivating)
{
    // A backup handed over by a second start (or opened from the file manager) is imported while
    // the window stays as it is: the list must show the new data before anything is clicked.
    freshPreferences();
    writeStore({record("Old")});
    Window w;
    ASSERT_EQ(w.shown(), QStringList{"Old"});

    const QString backup = TestEnvironment::home() + QStringLiteral("/backup.plist");
    ASSERT_TRUE(PropertyList::writeFile(backup, QVariantList{QVariantList{record("New")->fields()}, QVariantList{},
                                                             QVariantList{}}));
    Alerts::queueAnswer(Backup::ReplaceButton);
    ASSERT_EQ(Backup::sharedController()->importFromFile(backup), Backup::ImportOutcome::Replaced);
    EXPECT_EQ(w.shown(), QStringList{"New"});
    EXPECT_EQ(storedNames(), QStringList{"New"});
}

TEST(MainWindowAmongWindows, TheSidebarsPullDownsAndCoursesBoxFollowTheCoursesWindowAtOnce)
{
    freshPreferences();
    writeCourses({course("Biology"), textbook("Cells", "Biology")});
    writeStore({record("Essay", {{"Course", "Biology"}})});
    Window w;
    w.select("Essay");
    ASSERT_EQ(w.form()->textbookField->count(), 1);

    // The courses window adds a textbook to the course shown and a course, while the main window
    // stays behind.
    CoursesAndTextbooks courses;
    courses.show();
    activate(&courses);
    courses.selectCourseOrTextbook("Biology");
    courses.addTextbook();
    auto *name = courses.findChild<QLineEdit *>("textbookName");
    QTest::keyClicks(name, "Genes");
    QTest::keyClick(name, Qt::Key_Return);
    courses.addCourse();
    QCoreApplication::processEvents();
    ASSERT_FALSE(w.window->isActiveWindow());

    QStringList textbooks;
    for (int i = 0; i < w.form()->textbookField->count(); ++i)
        textbooks.append(w.form()->textbookField->itemText(i));
    EXPECT_EQ(textbooks, (QStringList{"Cells", "Genes"}));
    EXPECT_EQ(w.form()->courseField->count(), 2);
    EXPECT_EQ(w.form()->courseField->currentText(), "Biology");

    w.controller()->selectRowAlone(-1);
    QStringList box;
    for (int i = 0; i < w.window->sidebar()->coursesList()->count(); ++i)
        box.append(w.window->sidebar()->coursesList()->item(i)->text());
    EXPECT_EQ(box.size(), 4) << box.join("|").toStdString();
}
