#include "list/ui/MainWindowTestSupport.h"
#include "platform/Alerts.h"
#include "platform/Workspace.h"
#include "contacts/ui/ContactTokenField.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QTabWidget>
#include <QTableView>
#include <QToolButton>

using namespace ListTest;
using namespace WindowTest;

namespace {

QVariantMap storedRecord(const QString &name)
{
    for (const QVariant &value : readStore())
        if (value.toMap().value("Name").toString() == name)
            return value.toMap();
    return {};
}

// Puts the keyboard in a field and types, the way a person does, without leaving the field.
void typeInto(QWidget *field, const QString &text)
{
    field->setFocus(Qt::MouseFocusReason);
    ASSERT_TRUE(field->hasFocus());
    QTest::keyClicks(field, text);
}

QVariantMap annLee()
{
    return {{"firstName", "Ann"},
            {"lastName", "Lee"},
            {"addressbookUID", "AB-1"},
            {"email", QVariantList{"ann@example.org", "lee@example.org"}},
            {"origin", "AddressBook"}};
}

} // namespace

TEST(SidebarCommitWindow, TypingSurvivesAFilterButtonTheOverflowMenuAndTheDuplicateShortcut)
{
    freshPreferences();
    writeCourses({course("Biology"), course("Chemistry"), course("Comparative Literature"), course("Economics")});
    writeStore({record("Essay", {{"Course", "Biology"}}), record("Lab", {{"Course", "Economics"}})});
    Window w;

    // A filter button takes no focus: the name field never hears that editing ended.
    w.select("Essay");
    typeInto(w.form()->nameField, " draft");
    w.clickFilter("Incomplete", 0);
    EXPECT_FALSE(storedRecord("Essay draft").isEmpty());
    EXPECT_EQ(w.form()->nameField->text(), "Essay draft");

    w.select("Essay draft");
    typeInto(w.form()->gradeField, "B+");
    w.clickFilter("All", 0);
    EXPECT_EQ(storedRecord("Essay draft").value("Grade").toString(), "B+");

    // A combo box's typed text, then the duplicate shortcut typed where the keyboard is.
    w.select("Essay draft");
    typeInto(w.form()->typeField->lineEdit(), "Quiz");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_D, Qt::ControlModifier);
    int quizzes = 0;
    for (const QVariant &value : readStore())
        quizzes += value.toMap().value("Type").toString() == "Quiz" ? 1 : 0;
    EXPECT_EQ(w.shown().count("Essay draft"), 2);
    EXPECT_EQ(quizzes, 2) << "both the record and its copy carry the typed type";

    // Notes, then a course chosen from the overflow menu of a narrow window.
    w.window->resize(420, 500);
    QCoreApplication::processEvents();
    ASSERT_TRUE(w.window->filterBar()->overflowButton()->isVisible());
    w.select("Lab");
    w.form()->tabs->setCurrentIndex(SidebarForm::NotesTab);
    typeInto(w.form()->notesField, "bring goggles");
    QAction *economics = nullptr;
    for (QAction *action : w.window->filterBar()->overflowMenu()->actions())
        if (action->text() == "Economics")
            economics = action;
    ASSERT_NE(economics, nullptr);
    economics->trigger();
    QCoreApplication::processEvents();
    EXPECT_EQ(storedRecord("Lab").value("Notes").toString(), "bring goggles");
}

TEST(SidebarCommitWindow, AToolbarCommandTakesTheTypingWithIt)
{
    freshPreferences();
    writeStore({record("Essay")});
    Window w;
    w.toolbar()->setItemIdentifiers({ToolbarCatalogue::AddItem, ToolbarCatalogue::EmailItem});
    Workspace::recordForTest();
    w.select("Essay");
    typeInto(w.form()->nameField, " draft");
    // Toolbar buttons take no focus: the mail must carry the name as typed.
    auto *email = qobject_cast<QToolButton *>(w.toolbar()->itemWidget(ToolbarCatalogue::EmailItem));
    ASSERT_NE(email, nullptr);
    QTest::mouseClick(email, Qt::LeftButton);
    const QList<Workspace::Opened> opened = Workspace::takeOpened();
    ASSERT_EQ(opened.size(), 1);
    EXPECT_TRUE(opened[0].url.toString(QUrl::FullyDecoded).contains("Essay draft"))
        << opened[0].url.toString().toStdString();
    EXPECT_FALSE(storedRecord("Essay draft").isEmpty());
}

TEST(SidebarCommitWindow, AnOpenSubprojectCellIsKeptWhenAFilterButtonIsClicked)
{
    freshPreferences();
    const QString id = stored(2026, 11, 1, 9);
    writeStore({record("Thesis", {{"Project", id}}), record("Outline", {{"Subproject", id}})});
    Window w;
    w.select("Thesis");
    w.form()->tabs->setCurrentIndex(SidebarForm::SubprojectsTab);
    QTableView *table = w.form()->subprojectsTable;
    const QModelIndex name = table->model()->index(0, 1);
    table->setFocus();
    table->setCurrentIndex(name);
    table->edit(name);
    auto *editor = qobject_cast<QLineEdit *>(QApplication::focusWidget());
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, "Plan");
    w.clickFilter("Incomplete", 0);
    EXPECT_FALSE(storedRecord("Plan").isEmpty());
    EXPECT_TRUE(storedRecord("Outline").isEmpty());
}

TEST(SidebarCommitWindow, ContactRecordsAreShownByNameAndSurviveUnrelatedEdits)
{
    freshPreferences();
    const QVariantList both{annLee(), QString("Bob")};
    writeStore({record("Essay", {{"Contacts", both}}), record("Lab", {{"Contacts", QVariantList{annLee()}}})});
    Window w;

    w.select("Lab");
    EXPECT_EQ(w.form()->contactsField->text(), "Ann Lee");
    QCheckBox *completed = w.form()->completedCheckbox;
    QTest::mouseClick(completed, Qt::LeftButton, {}, QPoint(8, completed->height() / 2));
    EXPECT_TRUE(storedRecord("Lab").value("Completed").toBool());
    EXPECT_EQ(storedRecord("Lab").value("Contacts").toList(), QVariantList{annLee()});

    w.select("Essay");
    EXPECT_EQ(w.form()->contactsField->text(), "Ann Lee, Bob");
    typeInto(w.form()->gradeField, "A");
    QTest::keyClick(w.form()->gradeField, Qt::Key_Return);
    EXPECT_EQ(storedRecord("Essay").value("Contacts").toList(), both);

    // Removing one token keeps the other exactly; removing the last removes the key.
    QLineEdit *typing = w.form()->contactsField->lineEdit();
    typing->setFocus();
    QTest::keyClick(typing, Qt::Key_Backspace);
    EXPECT_EQ(storedRecord("Essay").value("Contacts").toList(), QVariantList{annLee()});
    QTest::keyClick(typing, Qt::Key_Backspace);
    EXPECT_FALSE(storedRecord("Essay").contains("Contacts"));
}

TEST(SidebarCommitWindow, DelInTheSubprojectsTableDeletesTheSelectedSubprojectsAfterAskingOnly)
{
    freshPreferences();
    const QString id = stored(2026, 11, 1, 9);
    writeStore({record("Thesis", {{"Project", id}}), record("Outline", {{"Subproject", id}}),
                record("Draft", {{"Subproject", id}}), record("Print", {{"Subproject", id}})});
    Window w;
    w.select("Thesis");
    w.form()->tabs->setCurrentIndex(SidebarForm::SubprojectsTab);
    QTableView *table = w.form()->subprojectsTable;
    ASSERT_EQ(table->model()->rowCount(), 3);
    const QString first = table->model()->index(0, 1).data().toString();
    const QString second = table->model()->index(1, 1).data().toString();
    table->setFocus();
    table->selectionModel()->select(QItemSelection(table->model()->index(0, 0), table->model()->index(1, 2)),
                                    QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);

    Alerts::queueAnswer("No");
    QTest::keyClick(table, Qt::Key_Delete);
    QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].title, "Warning");
    EXPECT_EQ(asked[0].message, "Are you sure you want to delete these assignments?");
    EXPECT_EQ(readStore().size(), 4);

    Alerts::queueAnswer("Yes");
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_EQ(Alerts::takeAsked().size(), 1);
    EXPECT_EQ(readStore().size(), 2);
    EXPECT_TRUE(storedRecord(first).isEmpty());
    EXPECT_TRUE(storedRecord(second).isEmpty());
    // The project itself stays, selected, with the one subproject left.
    EXPECT_FALSE(storedRecord("Thesis").isEmpty());
    EXPECT_EQ(w.controller()->singleSelectedRow(), w.rowOf("Thesis"));
    EXPECT_EQ(table->model()->rowCount(), 1);

    setGeneral(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    table->setFocus();
    table->selectRow(0);
    QTest::keyClick(table, Qt::Key_Delete);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_EQ(readStore().size(), 1);
    EXPECT_FALSE(storedRecord("Thesis").isEmpty());
}
