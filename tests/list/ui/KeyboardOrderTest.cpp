#include "list/ui/MainWindowTestSupport.h"

#include "TabChain.h"
#include "calculators/ui/FinalsCalculator.h"
#include "calculators/ui/GPACalculator.h"
#include "calendar/ui/MiniCalendarWindow.h"
#include "exchange/ui/ExportToiCal.h"
#include "list/ui/AboutDialog.h"
#include "list/ui/MultipleAssignmentsSheet.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "store/PreferenceKeys.h"
#include "store/ui/CoursesAndTextbooks.h"
#include "store/ui/PreferencesWindow.h"
#include "sync/ui/SyncingPrefs.h"

#include <QComboBox>
#include <QListView>
#include <QDialog>
#include <QPushButton>

using namespace ListTest;
using namespace WindowTest;

// Every window can be worked with the keyboard alone: Tab reaches each control in the order it is
// read, and each stop is on screen, usable and announced by name.
namespace {

// `least`: how many stops the window has at the least (a pane with one choice has one).
void expectReadableChain(QWidget *window, const char *what, int least = 2)
{
    const QList<TabChain::Stop> stops = TabChain::walk(window);
    const QString seen = TabChain::describe(stops);
    if (qEnvironmentVariableIsSet("QUILLORY_PRINT_TAB_CHAINS"))
        std::printf("%s: %s\n", what, qPrintable(seen));
    EXPECT_GE(stops.size(), least) << what << ": " << seen.toStdString();
    const QStringList faults = TabChain::faults(window, stops);
    EXPECT_TRUE(faults.isEmpty()) << what << ":\n  " << faults.join(QStringLiteral("\n  ")).toStdString()
                                  << "\n  walk: " << seen.toStdString();
}

} // namespace

TEST(KeyboardOrder, TheCalculatorsAndTheCoursesWindow)
{
    freshPreferences();
    writeCourses({course("History"), course("Biology")});
    for (QWidget *window : std::initializer_list<QWidget *>{GPACalculator::sharedController(), FinalsCalculator::sharedController(),
                                                            CoursesAndTextbooks::sharedController()}) {
        window->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(window));
        expectReadableChain(window, window->objectName().toLatin1().constData());
        window->close();
    }
}

TEST(KeyboardOrder, TheCoursesWindowIsWorkedFromTheKeyboardAlone)
{
    freshPreferences();
    setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    writeCourses({course("History")});
    CoursesAndTextbooks window;
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    auto courses = [] { return PropertyList::readFile(Paths::coursesFile()).value_or(QVariant()).toList().size(); };
    ASSERT_EQ(courses(), 1);

    // New course: the keyboard goes to its name.
    QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : &window, Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(courses(), 2);
    ASSERT_NE(QApplication::focusWidget(), nullptr);
    QTest::keyClicks(QApplication::focusWidget(), QStringLiteral("Biology"));
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    expectReadableChain(&window, "courses window with a course shown");
    // New textbook for it, from wherever the keyboard is.
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_N, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(courses(), 3);
    expectReadableChain(&window, "courses window with a textbook shown");

    // Delete in the list removes the selected record; in a text field it stays the field's key.
    auto *list = window.findChild<QListView *>(QStringLiteral("coursesTable"));
    ASSERT_NE(list, nullptr);
    list->setFocus(Qt::TabFocusReason);
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_EQ(courses(), 2);
}

TEST(KeyboardOrder, EveryPreferencesPane)
{
    freshPreferences();
    SyncingPrefs::registerWithPreferencesWindow();
    PreferencesWindow *preferences = PreferencesWindow::sharedController();
    preferences->setAnimated(false);
    preferences->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(preferences));
    for (const QString &pane : {PreferencesWindow::GeneralIdentifier, PreferencesWindow::AssignmentWindowIdentifier,
                                PreferencesWindow::PersonalInfoIdentifier, PreferencesWindow::LabelsIdentifier,
                                PreferencesWindow::SyncingIdentifier}) {
        ASSERT_TRUE(preferences->setTabView(pane)) << pane.toStdString();
        QCoreApplication::processEvents();
        // The sync pane starts with syncing off: only its method to choose.
        expectReadableChain(preferences, pane.toLatin1().constData(), pane == PreferencesWindow::SyncingIdentifier ? 1 : 2);
    }
    // The sync pane's fields follow the method chosen in it: each method's set is walked.
    auto *method = SyncingPrefs::sharedController()->findChild<QComboBox *>();
    ASSERT_NE(method, nullptr);
    for (int index = 1; index < method->count(); ++index) {
        // Chosen the keyboard's way, with the arrow key on the closed pop-up.
        method->setFocus(Qt::TabFocusReason);
        QTest::keyClick(method, Qt::Key_Down);
        QCoreApplication::processEvents();
        ASSERT_EQ(method->currentIndex(), index);
        // A local archive has nothing to fill in.
        expectReadableChain(preferences, method->currentText().toLatin1().constData(), index == method->count() - 1 ? 1 : 3);
    }
    QTest::keyClick(method, Qt::Key_Home);
    preferences->close();
}

TEST(KeyboardOrder, TheSheetsTheAboutBoxAndTheCalendarPopUp)
{
    freshPreferences();
    UserDefaults().set(PreferenceKeys::General, QVariantMap{{PreferenceKeys::GeneralKeys::DisplayAdvancedICalSettings, true}});
    writeStore({record("Essay")});
    Window w;

    w.window->perform(MainMenus::Command::AddRecurring);
    MultipleAssignmentsSheet *recurring = w.window->recurringSheet();
    ASSERT_NE(recurring, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(recurring));
    expectReadableChain(recurring, "recurring sheet");
    recurring->reject();

    auto *exporter = new ExportToiCal(w.window.get());
    exporter->exportAssignments(w.controller()->displayAssignments());
    ASSERT_NE(exporter->exportSheet(), nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowExposed(exporter->exportSheet()));
    expectReadableChain(exporter->exportSheet(), "iCal export sheet");
    exporter->hideExportSheet();
    exporter->deleteLater();

    w.window->perform(MainMenus::Command::About);
    ASSERT_NE(w.window->aboutDialog(), nullptr);
    expectReadableChain(w.window->aboutDialog(), "About");
    w.window->aboutDialog()->close();

    MiniCalendarWindow popUp;
    popUp.popUp(QPoint(100, 100), QDateTime(QDate(2026, 11, 22), QTime(12, 0)));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&popUp));
    const QList<TabChain::Stop> stops = TabChain::walk(&popUp);
    EXPECT_FALSE(stops.isEmpty());
    EXPECT_TRUE(TabChain::faults(&popUp, stops).isEmpty()) << TabChain::faults(&popUp, stops).join(QLatin1Char('\n')).toStdString();
}

TEST(KeyboardOrder, TheWeeklyAndMonthlyCalendars)
{
    freshPreferences();
    setGeneral(PreferenceKeys::GeneralKeys::MainWindowTransition, 0);
    writeStore({record("Essay", {{"Date", stored(2026, 11, 24)}})});
    Window w;
    for (MainMenus::Command format : {MainMenus::Command::FormatWeekly, MainMenus::Command::FormatMonthly}) {
        w.window->perform(format);
        QCoreApplication::processEvents();
        expectReadableChain(w.window.get(), format == MainMenus::Command::FormatWeekly ? "weekly" : "monthly", 3);
    }
}

TEST(KeyboardOrder, TheMainWindowsListAlsoAfterTheFilterBarIsRebuilt)
{
    freshPreferences();
    writeStore({record("Essay", {{"Course", "History"}}), record("Lab", {{"Course", "Biology"}})});
    Window w;
    // With a record selected, so that the sidebar's fields are on the page too.
    w.select("Essay");
    expectReadableChain(w.window.get(), "list", 12);

    // The filter bar makes its buttons afresh when the window's width changes; they keep their place.
    w.window->resize(w.window->width() - 120, w.window->height());
    QCoreApplication::processEvents();
    w.window->resize(w.window->width() + 120, w.window->height());
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    expectReadableChain(w.window.get(), "list after a resize", 12);
}
