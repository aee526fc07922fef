#include "store/ui/CoursesWindowTestSupport.h"

#include "store/AssignmentsDocument.h"
#include "store/CoursesDocument.h"
#include "store/CoursesHistory.h"

#include <QCoreApplication>
#include <QFile>
#include <QMenu>

using namespace CoursesWindowTesting;

// Edit ▸ Undo and Redo of the courses window: every kind of change goes back to the very bytes it
// started from, a rename takes its assignments along, typing belongs to its field first, and the
// history ends where the files were replaced.
namespace {

QByteArray bytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
}

struct Files {
    QByteArray courses = bytes(Paths::coursesFile());
    QByteArray types = bytes(Paths::universalTypesFile());
    QByteArray assignments = bytes(Paths::assignmentsFile());
    bool operator==(const Files &) const = default;
};

void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

} // namespace

class CoursesUndoTest : public CoursesWindowTest
{
protected:
    void SetUp() override
    {
        CoursesWindowTest::SetUp();
        warningsOn(false);
        write(Paths::coursesFile(), {course(QStringLiteral("Math")), textbook(QStringLiteral("Calculus"), QStringLiteral("Math")),
                                     course(QStringLiteral("Art"))});
        write(Paths::universalTypesFile(), {QStringLiteral("Exam"), QStringLiteral("Homework")});
        write(Paths::assignmentsFile(), {assignment(QStringLiteral("a"), QStringLiteral("Math"), QStringLiteral("Calculus")),
                                         assignment(QStringLiteral("b"), QStringLiteral("Art"))});
        // Written once by the program, so that the bytes compared are the program's own.
        const std::shared_ptr<AssignmentsDocument> assignments = AssignmentsDocument::open(Paths::assignmentsFile());
        ASSERT_TRUE(assignments->setAll(assignments->records()));
        open();
        activate(m_window.get());
    }
    QAction *undo() { return m_window->undoAction(); }
    QAction *redo() { return m_window->redoAction(); }
    void press(QWidget *target, bool undoing)
    {
        QTest::keyClick(target, Qt::Key_Z, undoing ? Qt::ControlModifier : Qt::ControlModifier | Qt::ShiftModifier);
        settle();
    }
};

TEST_F(CoursesUndoTest, EveryKindOfChangeIsUndoneToTheSameBytesAndRedoneInOrder)
{
    const Files start;
    EXPECT_FALSE(undo()->isEnabled());

    clickToolbar(QStringLiteral("AddCourse"));
    typeInto(QStringLiteral("courseName"), QStringLiteral("Biology"));
    m_window->selectCourseOrTextbook(QStringLiteral("Math"));
    typeInto(QStringLiteral("courseName"), QStringLiteral("Algebra"));
    typeInto(QStringLiteral("courseField2"), QStringLiteral("Hall 4"));
    clickToolbar(QStringLiteral("AddTextbook"));
    m_window->selectCourseOrTextbook(QStringLiteral("Art"));
    clickToolbar(QStringLiteral("Delete"));
    CoursesListModel *model = m_window->coursesModel();
    std::unique_ptr<QMimeData> data(model->mimeData({model->index(0)}));
    ASSERT_TRUE(model->dropMimeData(data.get(), Qt::MoveAction, model->rowCount(), 0, QModelIndex()));
    m_window->selectUniversalTypes();
    auto *universal = child<QListView>(QStringLiteral("universalTypesTable"));
    ASSERT_TRUE(universal->model()->setData(universal->model()->index(0, 0), QStringLiteral("Quiz")));

    const Files end;
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())),
              (QStringList{QStringLiteral("Biology"), QStringLiteral("Algebra"), CourseKeys::NewTextbook,
                           QStringLiteral("  Calculus")}));
    EXPECT_EQ(fileArray(Paths::assignmentsFile())[0].toMap().value(QStringLiteral("Course")), QStringLiteral("Algebra"));

    const QStringList steps{QStringLiteral("Change Universal Types"), QStringLiteral("Move Course"),
                            QStringLiteral("Delete Course"),          QStringLiteral("Add Textbook"),
                            QStringLiteral("Change Course"),          QStringLiteral("Rename Course"),
                            QStringLiteral("Rename Course"),          QStringLiteral("Add Course")};
    for (const QString &step : steps) {
        ASSERT_EQ(undo()->text(), QStringLiteral("Undo ") + step);
        undo()->trigger();
        settle();
        EXPECT_EQ(redo()->text(), QStringLiteral("Redo ") + step);
        // The rename's assignments go back with it.
        if (step == QStringLiteral("Change Course")) {
            EXPECT_EQ(fileArray(Paths::assignmentsFile())[0].toMap().value(QStringLiteral("Course")), QStringLiteral("Algebra"));
        }
    }
    EXPECT_FALSE(undo()->isEnabled());
    EXPECT_EQ(Files(), start);
    EXPECT_EQ(m_window->coursesModel()->rowCount(), 3);

    for (qsizetype i = steps.size() - 1; i >= 0; --i) {
        ASSERT_EQ(redo()->text(), QStringLiteral("Redo ") + steps[i]);
        redo()->trigger();
        settle();
    }
    EXPECT_FALSE(redo()->isEnabled());
    EXPECT_EQ(Files(), end);
    EXPECT_EQ(m_window->currentPage(), Page::Types);
}

TEST_F(CoursesUndoTest, UndoingTheRenameKeepsAnAssignmentGivenTheNewNameSince)
{
    m_window->selectCourseOrTextbook(QStringLiteral("Math"));
    typeInto(QStringLiteral("courseName"), QStringLiteral("Algebra"));
    // Another window of the program files assignment b under the new name meanwhile.
    {
        const std::shared_ptr<AssignmentsDocument> document = AssignmentsDocument::open(Paths::assignmentsFile());
        document->refresh();
        document->records()[1]->set(QStringLiteral("Course"), QStringLiteral("Algebra"));
        ASSERT_TRUE(document->setAll(document->records()));
    }
    // The keyboard is still in the name field, but the typing there was saved: Ctrl+Z takes back
    // the rename, not the keystrokes.
    press(child<QLineEdit>(QStringLiteral("courseName")), true);
    const QVariantList assignments = fileArray(Paths::assignmentsFile());
    EXPECT_EQ(assignments[0].toMap().value(QStringLiteral("Course")), QStringLiteral("Math"));
    EXPECT_EQ(assignments[1].toMap().value(QStringLiteral("Course")), QStringLiteral("Algebra"));
    // The course comes back under its name, selected and shown.
    EXPECT_EQ(m_window->selectedRow(), 0);
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("courseName"))->text(), QStringLiteral("Math"));
}

TEST_F(CoursesUndoTest, TheShortcutTakesBackTypingFirstThenTheLastChangeAlsoFromASecondWindow)
{
    m_window->selectCourseOrTextbook(QStringLiteral("Art"));
    typeInto(QStringLiteral("courseField1"), QStringLiteral("3"));
    auto *hall = child<QLineEdit>(QStringLiteral("courseField2"));
    typeWithoutEnding(QStringLiteral("courseField2"), QStringLiteral("Hall"));
    m_window->findChild<QMenu *>(QStringLiteral("coursesEditMenu"))->aboutToShow();
    EXPECT_EQ(undo()->text(), QStringLiteral("Undo Typing"));

    press(hall, true);
    EXPECT_EQ(hall->text(), QString());
    EXPECT_EQ(fileArray(Paths::coursesFile())[2].toMap().value(CourseKeys::field(1)), QStringLiteral("3"));
    // Nothing left to take back in the field: the key goes on to the last change.
    press(hall, true);
    EXPECT_FALSE(fileArray(Paths::coursesFile())[2].toMap().contains(CourseKeys::field(1)));
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("courseField1"))->text(), QString());

    // One history for every courses window: the second window redoes the first one's step, and the
    // first shows it without being brought to the front.
    CoursesAndTextbooks second;
    second.show();
    activate(&second);
    ASSERT_EQ(second.redoAction()->text(), QStringLiteral("Redo Change Course"));
    auto *secondList = second.findChild<QListView *>(QStringLiteral("coursesTable"));
    secondList->setFocus();
    press(secondList, false);
    EXPECT_EQ(fileArray(Paths::coursesFile())[2].toMap().value(CourseKeys::field(1)), QStringLiteral("3"));
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("courseField1"))->text(), QStringLiteral("3"));
}

TEST_F(CoursesUndoTest, TheHistoryEndsWhereTheFilesWereReplacedAndSaysWhy)
{
    clickToolbar(QStringLiteral("AddCourse"));
    ASSERT_TRUE(undo()->isEnabled());
    const QString backup = TestEnvironment::home() + QStringLiteral("/backup.plist");
    write(backup, {QVariantList{}, QVariantList{course(QStringLiteral("Imported"))}, QVariantList{}});
    Alerts::queueAnswer(Backup::ReplaceButton);
    ASSERT_EQ(Backup::sharedController()->importFromFile(backup), Backup::ImportOutcome::Replaced);
    settle();
    EXPECT_EQ(undo()->text(), QStringLiteral("Can't Undo After Import"));
    EXPECT_FALSE(undo()->isEnabled());

    // Another program writes the file: a step made before it is not taken back over its change.
    m_window->selectCourseOrTextbook(QStringLiteral("Imported"));
    clickToolbar(QStringLiteral("Delete"));
    ASSERT_EQ(undo()->text(), QStringLiteral("Undo Delete Course"));
    write(Paths::coursesFile(), {course(QStringLiteral("Edited Elsewhere"))});
    undo()->trigger();
    settle();
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())), QStringList{QStringLiteral("Edited Elsewhere")});
    EXPECT_EQ(undo()->text(), QStringLiteral("Can't Undo After Changes Elsewhere"));
    EXPECT_EQ(m_window->coursesModel()->rowCount(), 1);
}
