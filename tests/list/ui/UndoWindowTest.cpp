#include "MainWindowTestSupport.h"

#include "exchange/Backup.h"
#include "platform/Alerts.h"
#include "support/TestEnvironment.h"

#include <QAction>
#include <QLineEdit>

using namespace ListTest;
using namespace WindowTest;
using Command = MainMenus::Command;

namespace {
QAction *menuItem(const Window &w, Command command)
{
    w.window->validateCommands();
    return w.window->menus()->action(command);
}

struct UndoWindow : Window {
    UndoWindow()
        : Window((freshPreferences(), setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false),
                  writeStore({record("Essay"), record("Lab"), record("Quiz"), record("Reading")}), true))
    {
    }
};
} // namespace

TEST(UndoWindow, TheEditMenuNamesTheStepAndTheShortcutsUndoAndRedoIt)
{
    UndoWindow w;
    EXPECT_EQ(menuItem(w, Command::Undo)->text(), "Undo");
    EXPECT_FALSE(menuItem(w, Command::Undo)->isEnabled());
    EXPECT_EQ(menuItem(w, Command::Undo)->shortcut(), QKeySequence(QKeySequence::Undo));

    w.controller()->selectRows({w.rowOf("Essay"), w.rowOf("Lab"), w.rowOf("Quiz")});
    w.table()->setFocus();
    menuItem(w, Command::Delete)->trigger();
    ASSERT_EQ(storedNames(true), QStringList{"Reading"});
    EXPECT_EQ(menuItem(w, Command::Undo)->text(), "Undo Delete 3 Assignments");
    EXPECT_TRUE(menuItem(w, Command::Undo)->isEnabled());

    QTest::keyClick(w.table(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(storedNames(true), (QStringList{"Essay", "Lab", "Quiz", "Reading"}));
    EXPECT_EQ(w.controller()->selectedRows().size(), 3);
    EXPECT_EQ(menuItem(w, Command::Redo)->text(), "Redo Delete 3 Assignments");
    EXPECT_EQ(menuItem(w, Command::Undo)->text(), "Undo");

    QTest::keyClick(w.table(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(storedNames(true), QStringList{"Reading"});
    EXPECT_EQ(menuItem(w, Command::Undo)->text(), "Undo Delete 3 Assignments");
}

TEST(UndoWindow, CtrlZInAFieldTakesBackTypingFirstAndAnEditInProgressIsKeptBeforeTheHistoryUndoes)
{
    UndoWindow w;
    w.select("Quiz");
    menuItem(w, Command::Delete)->trigger();
    w.select("Lab");
    QLineEdit *name = w.form()->nameField;
    name->setFocus(Qt::MouseFocusReason);
    QTest::keyClicks(name, " report");
    ASSERT_EQ(name->text(), "Lab report");
    EXPECT_EQ(menuItem(w, Command::Undo)->text(), "Undo Typing");

    // The field's own undo: the typing goes, the deleted record stays deleted.
    QTest::keyClick(name, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(name->text(), "Lab");
    EXPECT_FALSE(storedNames(true).contains("Quiz"));
    EXPECT_EQ(menuItem(w, Command::Undo)->text(), "Undo Delete Assignment");

    // A text the field cannot take back (put there whole) is stored before the history undoes,
    // so it is the step that goes and can be redone.
    name->setText("Lab notes");
    QTest::keyClick(name, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(storedNames(true).contains("Lab"));
    EXPECT_FALSE(storedNames(true).contains("Quiz"));
    EXPECT_EQ(menuItem(w, Command::Redo)->text(), "Redo Rename");
    QTest::keyClick(w.table(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(storedNames(true).contains("Lab notes"));
}

TEST(UndoWindow, ABackupImportEndsTheHistoryAndSaysSo)
{
    UndoWindow w;
    w.select("Quiz");
    menuItem(w, Command::Delete)->trigger();
    const QString backup = TestEnvironment::home() + QStringLiteral("/backup.plist");
    ASSERT_TRUE(PropertyList::writeFile(backup, QVariantList{QVariantList{record("New")->fields()}, QVariantList{},
                                                             QVariantList{}}));
    Alerts::queueAnswer(Backup::ReplaceButton);
    ASSERT_EQ(Backup::sharedController()->importFromFile(backup), Backup::ImportOutcome::Replaced);
    EXPECT_EQ(menuItem(w, Command::Undo)->text(), "Can't Undo After Import");
    EXPECT_FALSE(menuItem(w, Command::Undo)->isEnabled());
    QTest::keyClick(w.table(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(storedNames(true), QStringList{"New"});
}
