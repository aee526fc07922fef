#include "list/ui/MainWindowTestSupport.h"
#include "list/ui/DateEditor.h"
#include "list/ui/SidebarPlacement.h"
#include "platform/Alerts.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QSplitter>
#include <QTabWidget>
#include <QToolButton>

using namespace ListTest;
using namespace WindowTest;
using Command = MainMenus::Command;

namespace {

void pressReturn(QWidget *field)
{
    field->setFocus();
    QTest::keyClick(field, Qt::Key_Return);
}

} // namespace

TEST(MainWindow, AddingUnderCompleteAndACourseMakesACompletedRecordOfThatCourseReadyForItsName)
{
    freshPreferences();
    writeCourses({course("Biology"), course("Chemistry")});
    writeStore({record("Old", {{"Completed", true}, {"Course", "Biology"}})});
    Window w;
    w.clickFilter("Complete", 0);
    w.clickFilter("Biology", 1);
    ASSERT_EQ(w.shown(), QStringList{"Old"});

    w.toolbar()->itemAction(ToolbarCatalogue::AddItem)->trigger();
    ASSERT_EQ(w.controller()->displayAssignments().size(), 2);
    const QVariantList store = readStore();
    ASSERT_EQ(store.size(), 2);
    QVariantMap added;
    for (const QVariant &value : store)
        if (!value.toMap().contains("Name"))
            added = value.toMap();
    EXPECT_TRUE(added.value("Completed").toBool());
    EXPECT_EQ(added.value("Course").toString(), "Biology");
    // The new row is selected and its name is waiting to be typed.
    EXPECT_EQ(w.window->sidebar()->page(), DetailsSidebar::AssignmentPage);
    EXPECT_TRUE(w.form()->nameField->hasFocus());
    QTest::keyClicks(w.form()->nameField, "Quiz");
    QTest::keyClick(w.form()->nameField, Qt::Key_Return);
    EXPECT_EQ(storedNamed("Quiz").value("Course").toString(), "Biology");
}

TEST(MainWindow, EmptyingTheGradeRemovesTheKeyAndLeavingAnUnchangedFieldWritesNothing)
{
    freshPreferences();
    writeStore({record("Essay", {{"Grade", "A-"}, {"Date Updated", stored(2026, 1, 1)}})});
    Window w;
    w.select("Essay");
    ASSERT_EQ(w.form()->gradeField->text(), "A-");
    pressReturn(w.form()->nameField);
    EXPECT_EQ(storedNamed("Essay").value("Date Updated").toString(), stored(2026, 1, 1));

    w.form()->gradeField->clear();
    pressReturn(w.form()->gradeField);
    const QVariantMap after = storedNamed("Essay");
    EXPECT_FALSE(after.contains("Grade"));
    EXPECT_NE(after.value("Date Updated").toString(), stored(2026, 1, 1));
    // The row stays selected and the field keeps the keyboard.
    EXPECT_EQ(w.controller()->singleSelectedRow(), w.rowOf("Essay"));
    EXPECT_TRUE(w.form()->gradeField->hasFocus());
}

TEST(MainWindow, AProjectsCourseChangeReachesItsSubprojectsAndTheSubprojectsTabEditsInPlace)
{
    freshPreferences();
    writeCourses({course("Biology"), course("Chemistry", "Atkins"), textbook("Atkins", "Chemistry")});
    const QString id = stored(2026, 11, 1, 9);
    writeStore({record("Thesis", {{"Project", id}, {"Course", "Biology"}}),
                record("Outline", {{"Subproject", id}, {"Course", "Biology"}, {"File", "/tmp/x"}}),
                record("Draft", {{"Subproject", id}, {"Course", "Biology"}})});
    Window w;
    w.select("Thesis");
    ASSERT_EQ(w.window->sidebar()->enabledTabCount(), 3);
    EXPECT_EQ(w.form()->courseField->count(), 2);
    w.form()->courseField->setEditText("Chemistry");
    pressReturn(w.form()->courseField->lineEdit());
    for (const QString name : {"Outline", "Draft"}) {
        const QVariantMap sub = storedNamed(name);
        EXPECT_EQ(sub.value("Course").toString(), "Chemistry") << name.toStdString();
        EXPECT_EQ(sub.value("Textbook").toString(), "Atkins") << name.toStdString();
        EXPECT_FALSE(sub.contains("File"));
    }
    EXPECT_EQ(w.form()->textbookField->currentText(), "Atkins");

    // The subprojects table lists both and renames in place.
    w.form()->tabs->setCurrentIndex(SidebarForm::SubprojectsTab);
    QAbstractItemModel *subprojects = w.form()->subprojectsTable->model();
    ASSERT_EQ(subprojects->rowCount(), 2);
    const QModelIndex name = subprojects->index(0, 1);
    const QString before = name.data().toString();
    subprojects->setData(name, "Renamed");
    EXPECT_FALSE(storedNamed("Renamed").isEmpty());
    EXPECT_TRUE(storedNamed(before).isEmpty());
    int renamed = 0;
    while (renamed < subprojects->rowCount() && subprojects->index(renamed, 1).data().toString() != "Renamed")
        ++renamed;
    ASSERT_LT(renamed, subprojects->rowCount());
    subprojects->setData(subprojects->index(renamed, 0), Qt::Checked, Qt::CheckStateRole);
    EXPECT_TRUE(storedNamed("Renamed").value("Completed").toBool());

    // An ordinary assignment offers no Subprojects tab.
    writeStore({record("Plain")});
    w.window->refresh();
    w.select("Plain");
    EXPECT_EQ(w.window->sidebar()->enabledTabCount(), 2);
    EXPECT_EQ(w.form()->tabs->currentIndex(), SidebarForm::DetailsTab);
}

TEST(MainWindow, DeletingAsksWhileWarningsAreOnAndNotOtherwise)
{
    freshPreferences();
    writeStore({record("One"), record("Two"), record("Three")});
    Window w;
    w.select("One");
    Alerts::queueAnswer("No");
    w.window->perform(Command::Delete);
    QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].title, "Warning");
    EXPECT_EQ(asked[0].message, "Are you sure you want to delete this assignment?");
    EXPECT_EQ(readStore().size(), 3);

    w.controller()->selectRows({w.rowOf("One"), w.rowOf("Two")});
    Alerts::queueAnswer("Yes");
    QTest::keySequence(w.window.get(), QKeySequence::Delete);
    asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].message, "Are you sure you want to delete these assignments?");
    EXPECT_EQ(w.shown(), QStringList{"Three"});
    EXPECT_EQ(w.window->sidebar()->page(), DetailsSidebar::NoSelectionPage);

    setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    w.select("Three");
    w.window->perform(Command::Delete);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_TRUE(readStore().isEmpty());
}

TEST(MainWindow, ADoubleClickAddsOnlyInTheEmptyAreaWithTheSettingOnAndNeverAfterASortingClick)
{
    freshPreferences();
    writeStore({record("One")});
    Window w;
    QWidget *viewport = w.table()->viewport();
    const QPoint empty(40, viewport->height() - 10);
    const QPoint onRow = w.table()->visualRect(w.controller()->tableModel()->index(0, 1)).center();

    doubleClick(viewport, empty);
    ASSERT_EQ(w.controller()->allAssignments().size(), 2);
    // The new row is selected and open for its name, as the Add command leaves it.
    const int added = w.controller()->singleSelectedRow();
    ASSERT_GE(added, 0);
    EXPECT_FALSE(w.controller()->displayAssignments()[added]->has("Name"));
    EXPECT_EQ(w.window->sidebar()->page(), DetailsSidebar::AssignmentPage);
    EXPECT_TRUE(w.form()->nameField->hasFocus());

    const int rows = int(w.controller()->allAssignments().size());
    doubleClick(viewport, onRow);
    EXPECT_EQ(w.controller()->allAssignments().size(), rows);

    // A header click sorts; the double click it is part of adds nothing.
    w.controller()->clearSelection();
    QHeaderView *header = w.table()->horizontalHeader();
    const QPoint headerPoint(header->sectionViewportPosition(1) + 10, header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, headerPoint);
    QTest::mouseDClick(header->viewport(), Qt::LeftButton, {}, headerPoint);
    EXPECT_EQ(w.controller()->allAssignments().size(), rows);
    EXPECT_FALSE(w.controller()->didJustSort());

    setGeneral(PreferenceKeys::GeneralKeys::DoubleClickCreates, false);
    w.controller()->clearSelection();
    doubleClick(viewport, empty);
    EXPECT_EQ(w.controller()->allAssignments().size(), rows);
}

TEST(MainWindow, ANarrowWindowMovesTheCoursesIntoTheOverflowMenuWhichStillFilters)
{
    freshPreferences();
    writeCourses({course("Biology"), course("Chemistry"), course("Comparative Literature"), course("Economics")});
    writeStore({record("Cell", {{"Course", "Biology"}}), record("Essay", {{"Course", "Economics"}})});
    Window w;
    EXPECT_FALSE(w.window->filterBar()->overflowButton()->isVisible());
    w.window->resize(420, 500);
    QCoreApplication::processEvents();
    FilterBar *bar = w.window->filterBar();
    ASSERT_TRUE(bar->overflowButton()->isVisible());
    QStringList titles;
    for (QAction *action : bar->overflowMenu()->actions())
        titles.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    EXPECT_TRUE(titles.contains("Economics"));
    // Once one title overflowed, every later one does too.
    EXPECT_EQ(titles.last(), "Economics");
    EXPECT_GT(bar->overflowButton()->x() + bar->overflowButton()->width(), bar->width() - 2);

    QAction *economics = nullptr;
    for (QAction *action : bar->overflowMenu()->actions())
        if (action->text() == "Economics")
            economics = action;
    economics->trigger();
    QCoreApplication::processEvents();
    EXPECT_EQ(w.shown(), QStringList{"Essay"});
    EXPECT_EQ(w.controller()->filterBar().getSelectedTitleInSegment(1), "Economics");

    // Wide again: the choice is kept and shows as a button.
    w.window->resize(1200, 600);
    QCoreApplication::processEvents();
    EXPECT_EQ(w.controller()->filterBar().getSelectedTitleInSegment(1), "Economics");
    ASSERT_NE(w.filterButton("Economics", 1), nullptr);
    EXPECT_TRUE(w.filterButton("Economics", 1)->isOn());
}

TEST(MainWindow, HeaderClicksSortWithTheArrowAndTheImageColumnsDoNotSort)
{
    freshPreferences();
    UserDefaults().set(PreferenceKeys::UserColumnsOrdering,
                       QVariantList{QVariantMap{{"Identifier", "Completed"}, {"Width", 20}},
                                    QVariantMap{{"Identifier", "Name"}, {"Width", 150}},
                                    QVariantMap{{"Identifier", "Course"}, {"Width", 120}},
                                    QVariantMap{{"Identifier", "Notes"}, {"Width", 20}},
                                    QVariantMap{{"Identifier", "Date"}, {"Width", 160}}});
    writeStore({record("b", {{"Course", "Zoology"}}), record("a", {{"Course", "Art"}, {"Notes", "x"}}),
                record("c", {{"Course", "Music"}})});
    Window w;
    QHeaderView *header = w.table()->horizontalHeader();
    w.clickHeader("Course");
    EXPECT_EQ(w.shown(), (QStringList{"a", "c", "b"}));
    EXPECT_EQ(header->sortIndicatorSection(), w.table()->sectionOf("Course"));
    EXPECT_EQ(header->sortIndicatorOrder(), Qt::AscendingOrder);
    w.clickHeader("Course");
    EXPECT_EQ(w.shown(), (QStringList{"b", "c", "a"}));
    EXPECT_EQ(header->sortIndicatorOrder(), Qt::DescendingOrder);
    EXPECT_EQ(UserDefaults().string(PreferenceKeys::SortDirection), "Descending");
    w.clickHeader("Notes");
    EXPECT_EQ(w.shown(), (QStringList{"b", "c", "a"}));
    EXPECT_EQ(header->sortIndicatorSection(), w.table()->sectionOf("Course"));

    // The notes image shows only where the record has notes; completion toggles from the box.
    const int notes = w.table()->sectionOf("Notes");
    EXPECT_EQ(w.controller()->tableModel()->index(w.rowOf("a"), notes).data(AssignmentTableModel::ImageNameRole).toString(),
              "NotesSmallFlagged");
    EXPECT_FALSE(w.controller()->tableModel()->index(w.rowOf("b"), notes).data(AssignmentTableModel::ImageNameRole).isValid());
    w.select("c");
    QTest::keyClick(w.table(), Qt::Key_Space);
    EXPECT_TRUE(storedNamed("c").value("Completed").toBool());
}

TEST(MainWindow, ResizedAndDraggedColumnsAreKeptAcrossARestart)
{
    freshPreferences();
    writeStore({record("One", {{"Course", "Art"}})});
    QStringList order;
    {
        Window w;
        QHeaderView *header = w.table()->horizontalHeader();
        header->resizeSection(w.table()->sectionOf("Name"), 143);
        const int from = header->visualIndex(w.table()->sectionOf("Course"));
        header->moveSection(from, 1);
        const QVariantList stored = UserDefaults().array(PreferenceKeys::UserColumnsOrdering);
        for (const QVariant &entry : stored)
            order.append(entry.toMap().value("Identifier").toString());
        EXPECT_EQ(order.at(1), "Course");
        int nameWidth = 0;
        for (const QVariant &entry : stored)
            if (entry.toMap().value("Identifier") == "Name")
                nameWidth = entry.toMap().value("Width").toInt();
        EXPECT_EQ(nameWidth, 143);
        // The header shows the model's order, without a second reordering of its own.
        for (int section = 0; section < header->count(); ++section)
            EXPECT_EQ(header->visualIndex(section), section);
    }
    Window again;
    QStringList shownOrder;
    for (int section = 0; section < again.controller()->tableModel()->columnCount(); ++section)
        shownOrder.append(again.controller()->tableModel()->columnIdentifier(section));
    EXPECT_EQ(shownOrder, order);
    EXPECT_EQ(again.table()->horizontalHeader()->sectionSize(again.table()->sectionOf("Name")), 143);
}

TEST(MainWindow, MenusFollowTheirRulesAndTheRightClickMenusFitWhereTheyOpen)
{
    freshPreferences();
    writeStore({record("One"), record("Two")});
    Window w;
    MainMenus *menus = w.window->menus();
    w.window->validateCommands();
    EXPECT_FALSE(menus->action(Command::Delete)->isEnabled());
    EXPECT_FALSE(menus->action(Command::Duplicate)->isEnabled());
    EXPECT_TRUE(menus->action(Command::ExportToText)->isEnabled());
    EXPECT_TRUE(menus->action(Command::Add)->isEnabled());
    EXPECT_FALSE(menus->action(Command::GoToToday)->isEnabled());
    EXPECT_EQ(menus->action(Command::Add)->shortcut(), QKeySequence(QKeySequence::New));
    EXPECT_EQ(menus->action(Command::Find)->shortcut(), QKeySequence(QKeySequence::Find));
    EXPECT_EQ(menus->action(Command::Quit)->shortcut(), QKeySequence(QKeySequence::Quit));

    // A right click on a row selects it alone; below the rows it clears the selection.
    w.controller()->selectRows({0, 1});
    const QRect row = w.table()->visualRect(w.controller()->tableModel()->index(1, 1));
    QContextMenuEvent onRow(QContextMenuEvent::Mouse, row.center(), w.table()->viewport()->mapToGlobal(row.center()));
    QCoreApplication::sendEvent(w.table()->viewport(), &onRow);
    EXPECT_EQ(w.controller()->selectedRows(), QList<int>{1});
    ASSERT_NE(w.window->lastContextMenu(), nullptr);
    EXPECT_EQ(w.window->lastContextMenu()->objectName(), "rowContextMenu");
    EXPECT_TRUE(menus->action(Command::Duplicate)->isEnabled());
    w.window->lastContextMenu()->close();
    const QPoint below(20, w.table()->viewport()->height() - 5);
    QContextMenuEvent empty(QContextMenuEvent::Mouse, below, w.table()->viewport()->mapToGlobal(below));
    QCoreApplication::sendEvent(w.table()->viewport(), &empty);
    EXPECT_TRUE(w.controller()->selectedRows().isEmpty());
    EXPECT_EQ(w.window->lastContextMenu()->objectName(), "tableContextMenu");
    w.window->lastContextMenu()->close();

    // Duplicating through the menu's shortcut.
    w.select("Two");
    QTest::keyClick(w.window.get(), Qt::Key_D, Qt::ControlModifier);
    EXPECT_EQ(w.shown().count("Two"), 2);
}

TEST(MainWindow, TheSidebarDetachesIntoAPanelAndComesBackAndItsStateIsKept)
{
    freshPreferences();
    Window w;
    SidebarPlacement *placement = w.window->sidebarPlacement();
    ASSERT_TRUE(placement->isAttached());
    w.window->perform(Command::DetachSidebar);
    EXPECT_FALSE(placement->isAttached());
    EXPECT_TRUE(placement->panel()->isVisible());
    EXPECT_FALSE(UserDefaults().boolValue(PreferenceKeys::SidebarIsAttached));
    EXPECT_EQ(w.window->menus()->action(Command::DetachSidebar)->text(), "Attach Sidebar");
    w.window->perform(Command::ToggleSidebar);
    EXPECT_FALSE(placement->panel()->isVisible());
    EXPECT_EQ(UserDefaults().string(PreferenceKeys::AssignmentDrawerState), "Closed");

    // A new start finds it detached.
    Window again;
    EXPECT_FALSE(again.window->sidebarPlacement()->isAttached());
    again.window->perform(Command::DetachSidebar);
    EXPECT_TRUE(again.window->sidebarPlacement()->isAttached());
    EXPECT_TRUE(UserDefaults().boolValue(PreferenceKeys::SidebarIsAttached));
    EXPECT_EQ(again.window->menus()->action(Command::DetachSidebar)->text(), "Detach Sidebar");
    again.window->perform(Command::ToggleSidebar);
    QTest::qWait(400);
    EXPECT_TRUE(again.window->sidebarPlacement()->isCollapsed());
    EXPECT_EQ(UserDefaults().string(PreferenceKeys::AssignmentDrawerState), "Closed");
}

TEST(MainWindow, BecomingActiveRereadsWhatOtherWindowsWroteAndShowsThePersonalDetails)
{
    freshPreferences();
    writeStore({record("One")});
    Window w;
    ASSERT_EQ(w.shown(), QStringList{"One"});
    writeStore({record("One"), record("Written elsewhere")});
    writeCourses({course("History")});
    UserDefaults().set(PreferenceKeys::PersonalInfo, QVariantMap{{"Name", "Ada LOVELACE"}, {"School", ""}});
    QEvent activate(QEvent::WindowActivate);
    QCoreApplication::sendEvent(w.window.get(), &activate);
    EXPECT_EQ(w.shown().size(), 2);
    EXPECT_NE(w.filterButton("History", 1), nullptr);
    const QList<QLabel *> info = w.window->sidebar()->personalInfoLabels();
    EXPECT_EQ(info[0]->text(), "ada lovelace");
    EXPECT_EQ(info[1]->text(), "school");
    EXPECT_EQ(info[2]->text(), "concentration");
}

TEST(MainWindow, TheDateEditorsTodayButtonStepperAndPullDownsChangeTheDueDate)
{
    freshPreferences();
    writeStore({record("Essay", {{"Date", stored(2026, 11, 30)}})});
    Window w;
    w.select("Essay");
    DateEditor *date = w.form()->dateEditor;
    date->upButton()->click();
    EXPECT_EQ(storedNamed("Essay").value("Date").toString(), stored(2026, 12, 1));
    date->todayButton()->click();
    EXPECT_TRUE(storedNamed("Essay").value("Date").toString().startsWith("2026-11-22"));

    setGeneral(PreferenceKeys::GeneralKeys::DateEntryFormat, 1);
    w.controller()->clearSelection();
    w.select("Essay");
    EXPECT_EQ(date->face(), DateEditor::PullDownFace);
    EXPECT_EQ(date->monthTitle(), "Nov");
    date->monthMenu()->setCurrentIndex(date->monthMenu()->findText("Feb"));
    Q_EMIT date->monthMenu()->activated(date->monthMenu()->currentIndex());
    EXPECT_TRUE(storedNamed("Essay").value("Date").toString().startsWith("2026-02-22"));
    EXPECT_EQ(date->dayMenu()->count(), 28);
}

TEST(MainWindow, EveryControlTheKeyboardCanReachHasAnAccessibleName)
{
    freshPreferences();
    writeStore({record("One", {{"Project", stored(2026, 1, 1)}})});
    Window w;
    w.select("One");
    QStringList unnamed;
    for (QWidget *widget : w.window->findChildren<QWidget *>()) {
        // Pop-up lists of combo boxes belong to their own windows.
        if (widget->focusPolicy() == Qt::NoFocus || widget->window() != w.window.get())
            continue;
        // A combo box's own line edit speaks through the combo box.
        if (qobject_cast<QComboBox *>(widget->parentWidget()))
            continue;
        QString name = widget->accessibleName();
        if (name.isEmpty())
            if (auto *button = qobject_cast<QAbstractButton *>(widget))
                name = button->text();
        if (name.isEmpty())
            unnamed.append(QStringLiteral("%1 (%2)").arg(widget->objectName(), widget->metaObject()->className()));
    }
    EXPECT_TRUE(unnamed.isEmpty()) << unnamed.join(", ").toStdString();
}
