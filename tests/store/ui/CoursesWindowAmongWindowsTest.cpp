#include "store/ui/CoursesWindowTestSupport.h"

using namespace CoursesWindowTesting;

// The courses window beside the program's other windows: shortcuts typed in it, data replaced while
// it stays open, and typing that the next click (on a control that takes no focus) must not lose.
TEST_F(CoursesWindowTest, DelInTheListDeletesTheSelectedRecordAskingFirstAndDelInATypesTableRemovesAType)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math")), textbook(QStringLiteral("Calculus"), QStringLiteral("Math")),
                                 course(QStringLiteral("Art"), {{CourseKeys::Types, QStringList{QStringLiteral("Sketch"),
                                                                                                QStringLiteral("Study")}}})});
    open();
    activate(m_window.get());
    auto *list = child<QListView>(QStringLiteral("coursesTable"));
    m_window->selectRow(1);
    list->setFocus();
    Alerts::queueAnswer(QStringLiteral("Yes"));
    QTest::keyClick(list, Qt::Key_Delete);
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].message, QStringLiteral("Are you sure you want to delete this textbook?"));
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())), (QStringList{QStringLiteral("Math"), QStringLiteral("Art")}));

    // In the course's types, Del takes the selected type, never the course.
    m_window->selectCourseOrTextbook(QStringLiteral("Art"));
    auto *types = child<QListView>(QStringLiteral("courseTypesTable"));
    types->setFocus();
    types->setCurrentIndex(types->model()->index(0, 0));
    QTest::keyClick(types, Qt::Key_Delete);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    const QVariantList after = fileArray(Paths::coursesFile());
    ASSERT_EQ(after.size(), 2);
    EXPECT_EQ(after[1].toMap().value(CourseKeys::Types).toStringList(), QStringList{QStringLiteral("Study")});

    warningsOn(false);
    m_window->selectRow(0);
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Delete);
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())), QStringList{QStringLiteral("Art")});
}

TEST_F(CoursesWindowTest, AWindowLeftOpenNeverWritesBackWhatWasDeletedOrReplacedMeanwhile)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Old")), textbook(QStringLiteral("Old Book"), QStringLiteral("Old")),
                                 course(QStringLiteral("Kept Before"))});
    write(Paths::universalTypesFile(), {QStringLiteral("Old Type")});
    open();
    m_window->selectRow(0);

    // "Delete All Data" in the preferences while this window stays open behind it.
    PreferencesWindow preferences;
    preferences.setAnimated(false);
    preferences.show();
    activate(&preferences);
    preferences.setTabView(PreferencesWindow::GeneralIdentifier);
    Alerts::queueAnswer(QStringLiteral("Delete All Data"));
    QTest::mouseClick(preferences.findChild<QPushButton *>(QStringLiteral("deleteAllData")), Qt::LeftButton);
    ASSERT_EQ(fileArray(Paths::coursesFile()), QVariantList());

    // A click on this window's toolbar, before it was ever brought to the front again.
    clickToolbar(QStringLiteral("AddCourse"));
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())), QStringList{CourseKeys::NewCourse});
    typeInto(QStringLiteral("courseName"), QStringLiteral("Biology"));
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())), QStringList{QStringLiteral("Biology")});

    // A backup replaces everything; the window becomes active again and shows the backup's list.
    const QString backup = TestEnvironment::home() + QStringLiteral("/backup.plist");
    write(backup, {QVariantList{}, QVariantList{course(QStringLiteral("Imported"))}, QVariantList{QStringLiteral("Lab")}});
    Alerts::queueAnswer(Backup::ReplaceButton);
    ASSERT_EQ(Backup::sharedController()->importFromFile(backup), Backup::ImportOutcome::Replaced);
    activate(&preferences);
    activate(m_window.get());
    EXPECT_EQ(m_window->coursesModel()->rowCount(), 1);
    EXPECT_EQ(m_window->coursesModel()->index(0).data().toString(), QStringLiteral("Imported"));
    m_window->selectRow(0);
    typeInto(QStringLiteral("courseField2"), QStringLiteral("Hall 4"));
    QVariantList combined = fileArray(Paths::coursesFile());
    ASSERT_EQ(combined.size(), 1);
    EXPECT_EQ(combined[0].toMap().value(CourseKeys::Name), QStringLiteral("Imported"));
    EXPECT_EQ(combined[0].toMap().value(CourseKeys::field(2)), QStringLiteral("Hall 4"));

    // Replaced again while the window stays active: a drag and a delete work on the new list.
    write(Paths::coursesFile(), {course(QStringLiteral("X")), course(QStringLiteral("Imported")), course(QStringLiteral("Y"))});
    CoursesListModel *model = m_window->coursesModel();
    std::unique_ptr<QMimeData> data(model->mimeData({model->index(0)}));
    ASSERT_TRUE(model->dropMimeData(data.get(), Qt::MoveAction, model->rowCount(), 0, QModelIndex()));
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())),
              (QStringList{QStringLiteral("X"), QStringLiteral("Y"), QStringLiteral("Imported")}));
    warningsOn(false);
    write(Paths::coursesFile(), {course(QStringLiteral("Z")), course(QStringLiteral("Imported"))});
    m_window->selectCourseOrTextbook(QStringLiteral("Imported"));
    clickToolbar(QStringLiteral("Delete"));
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())), QStringList{QStringLiteral("Z")});

    // The universal types page shown before a replacement edits the new list.
    m_window->selectUniversalTypes();
    write(Paths::universalTypesFile(), {QStringLiteral("Replaced")});
    child<QToolButton>(QStringLiteral("addUniversalType"))->click();
    EXPECT_EQ(fileArray(Paths::universalTypesFile()), (QVariantList{QStringLiteral("Replaced"), QStringLiteral("New Type")}));
}

TEST_F(CoursesWindowTest, TypingIsKeptWhenTheNextClickTakesNoFocus)
{
    write(Paths::assignmentsFile(), {assignment(QStringLiteral("a"), QStringLiteral("Math"))});
    write(Paths::coursesFile(), {course(QStringLiteral("Math")), textbook(QStringLiteral("Calculus"), QStringLiteral("Math"))});
    open();
    activate(m_window.get());

    // A new course named and, without leaving the field, a textbook added to it.
    clickToolbar(QStringLiteral("AddCourse"));
    typeWithoutEnding(QStringLiteral("courseName"), QStringLiteral("Biology"));
    clickToolbar(QStringLiteral("AddTextbook"));
    QVariantList combined = fileArray(Paths::coursesFile());
    EXPECT_EQ(displayNames(combined), (QStringList{QStringLiteral("Math"), QStringLiteral("  Calculus"),
                                                   QStringLiteral("Biology"), CourseKeys::NewTextbook}));
    EXPECT_EQ(combined.value(3).toMap().value(CourseKeys::Course), QStringLiteral("Biology"));
    EXPECT_EQ(m_window->currentPage(), Page::Textbook);

    // The textbook's name typed, then another course added: the name is kept.
    typeWithoutEnding(QStringLiteral("textbookName"), QStringLiteral("Cells"));
    clickToolbar(QStringLiteral("AddCourse"));
    EXPECT_TRUE(displayNames(fileArray(Paths::coursesFile())).contains(QStringLiteral("  Cells")));

    // A rename typed and then a type added with its button: the rename reaches the textbooks and
    // the assignments as a rename, so the textbook is not dropped as an orphan.
    m_window->selectCourseOrTextbook(QStringLiteral("Math"));
    typeWithoutEnding(QStringLiteral("courseName"), QStringLiteral("Algebra"));
    QTest::mouseClick(child<QToolButton>(QStringLiteral("addCourseType")), Qt::LeftButton);
    combined = fileArray(Paths::coursesFile());
    EXPECT_EQ(displayNames(combined).mid(0, 2), (QStringList{QStringLiteral("Algebra"), QStringLiteral("  Calculus")}));
    EXPECT_EQ(combined[0].toMap().value(CourseKeys::Types).toStringList(), QStringList{CourseKeys::NewType});
    EXPECT_EQ(fileArray(Paths::assignmentsFile())[0].toMap().value(QStringLiteral("Course")), QStringLiteral("Algebra"));

    // A type being typed in its cell, then the course list's selection changes: the type is kept.
    auto *types = child<QListView>(QStringLiteral("courseTypesTable"));
    types->edit(types->model()->index(0, 0));
    auto *editor = types->findChild<QLineEdit *>();
    ASSERT_NE(editor, nullptr);
    editor->selectAll();
    QTest::keyClicks(editor, QStringLiteral("Proof"));
    m_window->selectCourseOrTextbook(QStringLiteral("Biology"));
    EXPECT_EQ(fileArray(Paths::coursesFile())[0].toMap().value(CourseKeys::Types).toStringList(),
              QStringList{QStringLiteral("Proof")});

    // Notes typed and the window closed straight away.
    m_window->selectCourseOrTextbook(QStringLiteral("Biology"));
    auto *notes = child<QPlainTextEdit>(QStringLiteral("courseNotes"));
    notes->setFocus();
    QTest::keyClicks(notes, QStringLiteral("Lab on Fridays"));
    m_window->close();
    bool found = false;
    for (const QVariant &record : fileArray(Paths::coursesFile())) {
        if (record.toMap().value(CourseKeys::Name) == QStringLiteral("Biology")) {
            found = true;
            EXPECT_EQ(record.toMap().value(CourseKeys::Notes), QStringLiteral("Lab on Fridays"));
        }
    }
    EXPECT_TRUE(found);
}

TEST_F(CoursesWindowTest, OpeningAgainAndAgainNeverMultipliesTextbooks)
{
    const QVariantMap unnamed{{CourseKeys::Name, QString()},
                              {CourseKeys::DisplayName, CourseKeys::NewCourse},
                              {CourseKeys::Type, CourseKeys::CourseType}};
    write(Paths::coursesFile(), {unnamed, unnamed, textbook(QString(), QString())});
    for (int i = 0; i < 3; ++i) {
        open();
        activate(m_window.get());
        m_window->close();
    }
    EXPECT_EQ(fileArray(Paths::coursesFile()).size(), 3);
}

TEST_F(CoursesWindowTest, ARenameStillInItsFieldIsSavedToItsOwnCourseWhenTheSelectionMoves)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math")), textbook(QStringLiteral("Calculus"), QStringLiteral("Math")),
                                 course(QStringLiteral("Art"))});
    open();
    activate(m_window.get());
    m_window->selectRow(0);
    typeWithoutEnding(QStringLiteral("courseName"), QStringLiteral("Zoology"));
    // The selection moves without the keyboard leaving the field (as a script or the main window's
    // "show this course" would move it).
    auto *list = child<QListView>(QStringLiteral("coursesTable"));
    list->selectionModel()->setCurrentIndex(m_window->coursesModel()->index(2), QItemSelectionModel::ClearAndSelect);
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())),
              (QStringList{QStringLiteral("Zoology"), QStringLiteral("  Calculus"), QStringLiteral("Art")}));
    EXPECT_EQ(m_window->selectedRow(), 2);
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("courseName"))->text(), QStringLiteral("Art"));
}
