#include "store/ui/CoursesWindowTestSupport.h"

#include <QCoreApplication>

using namespace CoursesWindowTesting;

// Two courses windows, "Delete All Data" and a backup import on the same files: the window left
// open shows each change at once, without being brought to the front, and what it saves afterwards
// is the new data with its own edit.
namespace {

void settle()
{
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
}

QStringList shownNames(CoursesAndTextbooks &window)
{
    QStringList names;
    CoursesListModel *model = window.coursesModel();
    for (int row = 0; row < model->rowCount(); ++row)
        names.append(model->index(row).data().toString());
    return names;
}

} // namespace

TEST_F(CoursesWindowTest, AnOpenWindowShowsCoursesAddedInAnotherAndSavesItsEditOnTopOfThem)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math")), textbook(QStringLiteral("Calculus"), QStringLiteral("Math"))});
    open();
    activate(m_window.get());
    m_window->selectCourseOrTextbook(QStringLiteral("Calculus"));

    CoursesAndTextbooks second;
    second.show();
    activate(&second);
    QTest::mouseClick(second.findChild<QWidget *>(QStringLiteral("AddCourseButton")), Qt::LeftButton);
    auto *name = second.findChild<QLineEdit *>(QStringLiteral("courseName"));
    QTest::keyClicks(name, QStringLiteral("Biology"));
    QTest::keyClick(name, Qt::Key_Return);
    settle();

    // The first window, still behind, lists the new course and keeps its selection.
    EXPECT_EQ(shownNames(*m_window), (QStringList{QStringLiteral("Math"), QStringLiteral("  Calculus"), QStringLiteral("Biology")}));
    EXPECT_EQ(m_window->selectedRow(), 1);
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("textbookName"))->text(), QStringLiteral("Calculus"));

    // A click in the first window's list and an edit there: the new course stays.
    m_window->selectCourseOrTextbook(QStringLiteral("Math"));
    typeInto(QStringLiteral("courseField2"), QStringLiteral("Hall 4"));
    const QVariantList combined = fileArray(Paths::coursesFile());
    EXPECT_EQ(displayNames(combined), (QStringList{QStringLiteral("Math"), QStringLiteral("  Calculus"), QStringLiteral("Biology")}));
    EXPECT_EQ(combined.value(0).toMap().value(CourseKeys::field(2)), QStringLiteral("Hall 4"));
    // ... and the second window shows the first one's edit in its turn.
    settle();
    second.selectCourseOrTextbook(QStringLiteral("Math"));
    EXPECT_EQ(second.findChild<QLineEdit *>(QStringLiteral("courseField2"))->text(), QStringLiteral("Hall 4"));
}

TEST_F(CoursesWindowTest, TypingInProgressSurvivesAChangeMadeElsewhereAndGoesToTheFreshRecord)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math")), course(QStringLiteral("Art"))});
    open();
    activate(m_window.get());
    m_window->selectCourseOrTextbook(QStringLiteral("Art"));
    typeWithoutEnding(QStringLiteral("courseField3"), QStringLiteral("Mondays"));

    // Another window moves Art to the top and adds a course, while the typing is not ended.
    CoursesAndTextbooks second;
    second.show();
    activate(&second);
    CoursesListModel *model = second.coursesModel();
    std::unique_ptr<QMimeData> data(model->mimeData({model->index(1)}));
    ASSERT_TRUE(model->dropMimeData(data.get(), Qt::MoveAction, 0, 0, QModelIndex()));
    second.addCourse();
    settle();
    ASSERT_FALSE(m_window->isActiveWindow());

    EXPECT_EQ(shownNames(*m_window), (QStringList{QStringLiteral("Art"), QStringLiteral("Math"), CourseKeys::NewCourse}));
    EXPECT_EQ(m_window->selectedRow(), 0);
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("courseField3"))->text(), QStringLiteral("Mondays"));
    QTest::keyClick(child<QLineEdit>(QStringLiteral("courseField3")), Qt::Key_Return);
    const QVariantList combined = fileArray(Paths::coursesFile());
    EXPECT_EQ(displayNames(combined), (QStringList{QStringLiteral("Art"), QStringLiteral("Math"), CourseKeys::NewCourse}));
    EXPECT_EQ(combined.value(0).toMap().value(CourseKeys::field(3)), QStringLiteral("Mondays"));
}

TEST_F(CoursesWindowTest, DeletingAllDataAndImportingABackupShowInTheOpenWindowAtOnce)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Old")), textbook(QStringLiteral("Old Book"), QStringLiteral("Old"))});
    write(Paths::universalTypesFile(), {QStringLiteral("Old Type")});
    open();
    activate(m_window.get());
    m_window->selectUniversalTypes();

    PreferencesWindow preferences;
    preferences.setAnimated(false);
    preferences.show();
    activate(&preferences);
    preferences.setTabView(PreferencesWindow::GeneralIdentifier);
    Alerts::queueAnswer(QStringLiteral("Delete All Data"));
    QTest::mouseClick(preferences.findChild<QPushButton *>(QStringLiteral("deleteAllData")), Qt::LeftButton);
    settle();
    EXPECT_EQ(m_window->coursesModel()->rowCount(), 0);
    auto *universal = child<QListView>(QStringLiteral("universalTypesTable"));
    EXPECT_EQ(universal->model()->rowCount(), 0);

    const QString backup = TestEnvironment::home() + QStringLiteral("/backup.plist");
    write(backup, {QVariantList{}, QVariantList{course(QStringLiteral("Imported"))}, QVariantList{QStringLiteral("Lab")}});
    Alerts::queueAnswer(Backup::ReplaceButton);
    ASSERT_EQ(Backup::sharedController()->importFromFile(backup), Backup::ImportOutcome::Replaced);
    settle();
    EXPECT_EQ(shownNames(*m_window), QStringList{QStringLiteral("Imported")});
    ASSERT_EQ(universal->model()->rowCount(), 1);
    EXPECT_EQ(universal->model()->index(0, 0).data().toString(), QStringLiteral("Lab"));

    // An edit in the window, never brought to the front: the imported data and the edit.
    child<QToolButton>(QStringLiteral("addUniversalType"))->click();
    EXPECT_EQ(fileArray(Paths::universalTypesFile()), (QVariantList{QStringLiteral("Lab"), CourseKeys::NewType}));
    m_window->selectCourseOrTextbook(QStringLiteral("Imported"));
    typeInto(QStringLiteral("courseField1"), QStringLiteral("4"));
    const QVariantList combined = fileArray(Paths::coursesFile());
    ASSERT_EQ(combined.size(), 1);
    EXPECT_EQ(combined[0].toMap().value(CourseKeys::Name), QStringLiteral("Imported"));
    EXPECT_EQ(combined[0].toMap().value(CourseKeys::field(1)), QStringLiteral("4"));
}

TEST_F(CoursesWindowTest, TypingInACourseGoesOntoAnotherProgramsChangeOfItAndKeysThisVersionDoesNotKnow)
{
    const QString unknown = QStringLiteral("Colour From A Later Version");
    write(Paths::coursesFile(), {course(QStringLiteral("Math"))});
    open();
    activate(m_window.get());
    m_window->selectCourseOrTextbook(QStringLiteral("Math"));
    typeWithoutEnding(QStringLiteral("courseField3"), QStringLiteral("Mondays"));

    // Another copy of the program (a later version) gives the course a room and a key of its own.
    write(Paths::coursesFile(),
          {course(QStringLiteral("Math"), {{CourseKeys::field(2), QStringLiteral("Hall 4")}, {unknown, QStringLiteral("teal")}})});
    QTest::keyClick(child<QLineEdit>(QStringLiteral("courseField3")), Qt::Key_Return);
    settle();

    // The typing went onto that course, not over it.
    const QVariantMap saved = fileArray(Paths::coursesFile()).value(0).toMap();
    EXPECT_EQ(saved.value(CourseKeys::field(2)), QStringLiteral("Hall 4"));
    EXPECT_EQ(saved.value(CourseKeys::field(3)), QStringLiteral("Mondays"));
    EXPECT_EQ(saved.value(unknown), QStringLiteral("teal"));
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("courseField2"))->text(), QStringLiteral("Hall 4"));
}
