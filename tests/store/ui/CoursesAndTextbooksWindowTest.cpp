#include "store/ui/CoursesWindowTestSupport.h"

using namespace CoursesWindowTesting;

TEST_F(CoursesWindowTest, AddingACourseAndNamingItSavesAndTheToolbarFollowsTheSelection)
{
    open();
    EXPECT_TRUE(action(QStringLiteral("AddCourse"))->isEnabled());
    EXPECT_FALSE(action(QStringLiteral("AddTextbook"))->isEnabled());
    EXPECT_FALSE(action(QStringLiteral("Delete"))->isEnabled());
    EXPECT_EQ(m_window->currentPage(), Page::Blank);

    action(QStringLiteral("AddCourse"))->trigger();
    EXPECT_EQ(m_window->selectedRow(), 0);
    EXPECT_EQ(m_window->currentPage(), Page::Course);
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())), QStringList{CourseKeys::NewCourse});
    EXPECT_TRUE(action(QStringLiteral("AddTextbook"))->isEnabled());
    EXPECT_TRUE(action(QStringLiteral("Delete"))->isEnabled());

    typeInto(QStringLiteral("courseName"), QStringLiteral("Biology"));
    typeInto(QStringLiteral("courseField2"), QStringLiteral("Hall 4"));
    const QVariantMap saved = fileArray(Paths::coursesFile()).value(0).toMap();
    EXPECT_EQ(saved.value(CourseKeys::Name), QStringLiteral("Biology"));
    EXPECT_EQ(saved.value(CourseKeys::DisplayName), QStringLiteral("Biology"));
    EXPECT_EQ(saved.value(QStringLiteral("Field2")), QStringLiteral("Hall 4"));
    EXPECT_FALSE(saved.contains(QStringLiteral("Field1")));
    EXPECT_FALSE(saved.contains(CourseKeys::DefaultTextbook));
    EXPECT_EQ(m_window->coursesModel()->index(0).data().toString(), QStringLiteral("Biology"));
    EXPECT_EQ(m_window->selectedRow(), 0);

    action(QStringLiteral("AddTextbook"))->trigger();
    EXPECT_EQ(m_window->currentPage(), Page::Textbook);
    EXPECT_EQ(m_window->selectedRow(), 1);
    typeInto(QStringLiteral("textbookName"), QStringLiteral("Cells"));
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())),
              (QStringList{QStringLiteral("Biology"), QStringLiteral("  Cells")}));
    EXPECT_EQ(fileArray(Paths::coursesFile()).value(1).toMap().value(CourseKeys::Course), QStringLiteral("Biology"));
}

TEST_F(CoursesWindowTest, RenamingACourseOrTextbookRewritesTheAssignmentsOnDisk)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math")), textbook(QStringLiteral("Calculus"), QStringLiteral("Math")),
                                 course(QStringLiteral("Art"))});
    write(Paths::assignmentsFile(), {assignment(QStringLiteral("a"), QStringLiteral("Math"), QStringLiteral("Calculus")),
                                     assignment(QStringLiteral("b"), QStringLiteral("math")),
                                     assignment(QStringLiteral("c"), QStringLiteral("Art"))});
    open();
    m_window->selectRow(0);
    ASSERT_EQ(m_window->currentPage(), Page::Course);
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("courseName"))->text(), QStringLiteral("Math"));
    typeInto(QStringLiteral("courseName"), QStringLiteral("Algebra"));

    QVariantList assignments = fileArray(Paths::assignmentsFile());
    EXPECT_EQ(assignments[0].toMap().value(QStringLiteral("Course")), QStringLiteral("Algebra"));
    EXPECT_EQ(assignments[1].toMap().value(QStringLiteral("Course")), QStringLiteral("math")); // exact match only
    EXPECT_EQ(assignments[2].toMap().value(QStringLiteral("Course")), QStringLiteral("Art"));
    const QVariantList combined = fileArray(Paths::coursesFile());
    EXPECT_EQ(displayNames(combined),
              (QStringList{QStringLiteral("Algebra"), QStringLiteral("  Calculus"), QStringLiteral("Art")}));
    EXPECT_EQ(combined[1].toMap().value(CourseKeys::Course), QStringLiteral("Algebra"));
    EXPECT_EQ(m_window->selectedRow(), 0);

    // A second rename starts from the new name.
    typeInto(QStringLiteral("courseName"), QStringLiteral("Geometry"));
    EXPECT_EQ(fileArray(Paths::assignmentsFile())[0].toMap().value(QStringLiteral("Course")), QStringLiteral("Geometry"));

    // Editing another field of the course renames nothing.
    typeInto(QStringLiteral("courseField1"), QStringLiteral("4"));
    EXPECT_EQ(fileArray(Paths::assignmentsFile())[0].toMap().value(QStringLiteral("Course")), QStringLiteral("Geometry"));

    m_window->selectRow(1);
    ASSERT_EQ(m_window->currentPage(), Page::Textbook);
    EXPECT_EQ(child<QComboBox>(QStringLiteral("textbookCourse"))->currentText(), QStringLiteral("Geometry"));
    typeInto(QStringLiteral("textbookName"), QStringLiteral("Precalculus"));
    assignments = fileArray(Paths::assignmentsFile());
    EXPECT_EQ(assignments[0].toMap().value(QStringLiteral("Textbook")), QStringLiteral("Precalculus"));
    EXPECT_EQ(fileArray(Paths::coursesFile())[1].toMap().value(CourseKeys::DisplayName), QStringLiteral("  Precalculus"));
}

TEST_F(CoursesWindowTest, DeletingACourseWithThreeTextbooksRemovesFourRecordsAndNoAssignment)
{
    const QVariantList combined{course(QStringLiteral("Math")), textbook(QStringLiteral("A"), QStringLiteral("Math")),
                                textbook(QStringLiteral("B"), QStringLiteral("Math")),
                                textbook(QStringLiteral("C"), QStringLiteral("Math")), course(QStringLiteral("Art"))};
    const QVariantList assignments{assignment(QStringLiteral("a"), QStringLiteral("Math"), QStringLiteral("B"))};
    write(Paths::coursesFile(), combined);
    write(Paths::assignmentsFile(), assignments);
    open();
    m_window->selectRow(0);

    Alerts::queueAnswer(QStringLiteral("No"));
    action(QStringLiteral("Delete"))->trigger();
    EXPECT_EQ(fileArray(Paths::coursesFile()), combined);
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].title, QStringLiteral("Warning"));
    EXPECT_EQ(asked[0].message, QStringLiteral("Are you sure you want to delete this course?"));
    EXPECT_EQ(asked[0].buttons, (QStringList{QStringLiteral("Yes"), QStringLiteral("No")}));

    Alerts::queueAnswer(QStringLiteral("Yes"));
    action(QStringLiteral("Delete"))->trigger();
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())), QStringList{QStringLiteral("Art")});
    EXPECT_EQ(fileArray(Paths::assignmentsFile()), assignments);
    EXPECT_EQ(m_window->selectedRow(), -1);
    EXPECT_EQ(m_window->currentPage(), Page::Blank);
    EXPECT_FALSE(action(QStringLiteral("Delete"))->isEnabled());
}

TEST_F(CoursesWindowTest, DraggingACourseMovesItsTextbooksAlongAndKeepsTheSelection)
{
    write(Paths::coursesFile(), {course(QStringLiteral("A")), textbook(QStringLiteral("a1"), QStringLiteral("A")),
                                 course(QStringLiteral("B")), course(QStringLiteral("C"))});
    open();
    CoursesListModel *model = m_window->coursesModel();
    m_window->selectRow(2); // B
    EXPECT_FALSE(model->flags(model->index(1)).testFlag(Qt::ItemIsDragEnabled)); // a textbook stays put
    EXPECT_TRUE(model->flags(model->index(0)).testFlag(Qt::ItemIsDragEnabled));

    std::unique_ptr<QMimeData> data(model->mimeData({model->index(0)}));
    EXPECT_TRUE(data->hasFormat(QStringLiteral("CoursesDragType")));
    ASSERT_TRUE(model->dropMimeData(data.get(), Qt::MoveAction, model->rowCount(), 0, QModelIndex()));
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())),
              (QStringList{QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("A"), QStringLiteral("  a1")}));
    EXPECT_EQ(m_window->selectedRow(), 0);
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("courseName"))->text(), QStringLiteral("B"));

    // Dropped just below itself: nothing moves.
    data.reset(model->mimeData({model->index(0)}));
    ASSERT_TRUE(model->dropMimeData(data.get(), Qt::MoveAction, 1, 0, QModelIndex()));
    EXPECT_EQ(displayNames(fileArray(Paths::coursesFile())).first(), QStringLiteral("B"));

    // Another table's rows are not taken.
    std::unique_ptr<QMimeData> foreign(new QMimeData);
    foreign->setData(QStringLiteral("UniversalTypesDragType"), data->data(QStringLiteral("CoursesDragType")));
    EXPECT_FALSE(model->canDropMimeData(foreign.get(), Qt::MoveAction, 0, 0, QModelIndex()));
    EXPECT_FALSE(model->dropMimeData(foreign.get(), Qt::MoveAction, 0, 0, QModelIndex()));
}

TEST_F(CoursesWindowTest, CourseAndUniversalTypesAreAddedRemovedAndReorderedByDrag)
{
    write(Paths::coursesFile(),
          {course(QStringLiteral("Math"), {{CourseKeys::Types, QStringList{QStringLiteral("Quiz"), QStringLiteral("Lab"),
                                                                           QStringLiteral("Essay")}}})});
    write(Paths::universalTypesFile(), {QStringLiteral("Exam"), QStringLiteral("Homework")});
    open();
    m_window->selectRow(0);
    auto *courseTypes = child<QListView>(QStringLiteral("courseTypesTable"));
    QAbstractItemModel *types = courseTypes->model();
    ASSERT_EQ(types->rowCount(), 3);
    std::unique_ptr<QMimeData> data(types->mimeData({types->index(0, 0)}));
    ASSERT_TRUE(types->dropMimeData(data.get(), Qt::MoveAction, 3, 0, QModelIndex()));
    EXPECT_EQ(fileArray(Paths::coursesFile())[0].toMap().value(CourseKeys::Types).toStringList(),
              (QStringList{QStringLiteral("Lab"), QStringLiteral("Essay"), QStringLiteral("Quiz")}));

    child<QToolButton>(QStringLiteral("addCourseType"))->click();
    EXPECT_EQ(fileArray(Paths::coursesFile())[0].toMap().value(CourseKeys::Types).toStringList().last(),
              QStringLiteral("New Type"));
    for (int i = 0; i < 4; ++i) {
        courseTypes->setCurrentIndex(types->index(0, 0));
        child<QToolButton>(QStringLiteral("removeCourseType"))->click();
    }
    EXPECT_FALSE(fileArray(Paths::coursesFile())[0].toMap().contains(CourseKeys::Types));

    auto *universalRow = child<QListWidget>(QStringLiteral("typesTable"));
    universalRow->setCurrentRow(0);
    EXPECT_EQ(m_window->currentPage(), Page::Types);
    EXPECT_EQ(m_window->selectedRow(), -1);
    auto *universal = child<QListView>(QStringLiteral("universalTypesTable"));
    ASSERT_EQ(universal->model()->rowCount(), 2);
    data.reset(universal->model()->mimeData({universal->model()->index(1, 0)}));
    ASSERT_TRUE(universal->model()->dropMimeData(data.get(), Qt::MoveAction, 0, 0, QModelIndex()));
    EXPECT_EQ(fileArray(Paths::universalTypesFile()), (QVariantList{QStringLiteral("Homework"), QStringLiteral("Exam")}));
    ASSERT_TRUE(universal->model()->setData(universal->model()->index(0, 0), QStringLiteral("Reading")));
    EXPECT_EQ(fileArray(Paths::universalTypesFile()), (QVariantList{QStringLiteral("Reading"), QStringLiteral("Exam")}));
    // The course types' drag type is not the universal one.
    data.reset(types->mimeData({}));
    EXPECT_FALSE(universal->model()->canDropMimeData(data.get(), Qt::MoveAction, 0, 0, QModelIndex()));
}

TEST_F(CoursesWindowTest, TheDefaultTextbookPopUpListsOnlyThatCoursesTextbooksAfterNone)
{
    write(Paths::coursesFile(),
          {course(QStringLiteral("Math"), {{CourseKeys::DefaultTextbook, QStringLiteral("Calculus")}}),
           textbook(QStringLiteral("Calculus"), QStringLiteral("Math")),
           textbook(QStringLiteral("algebra"), QStringLiteral("Math")), course(QStringLiteral("Art")),
           textbook(QStringLiteral("Drawing"), QStringLiteral("Art"))});
    open();
    m_window->selectRow(0);
    auto *popUp = child<QComboBox>(QStringLiteral("courseDefaultTextbook"));
    QStringList items;
    for (int i = 0; i < popUp->count(); ++i)
        items.append(popUp->itemText(i));
    EXPECT_EQ(items, (QStringList{QStringLiteral("none"), QStringLiteral("algebra"), QStringLiteral("Calculus")}));
    EXPECT_EQ(popUp->currentText(), QStringLiteral("Calculus"));

    popUp->setCurrentIndex(1);
    Q_EMIT popUp->activated(1);
    EXPECT_EQ(fileArray(Paths::coursesFile())[0].toMap().value(CourseKeys::DefaultTextbook), QStringLiteral("algebra"));
    popUp->setCurrentIndex(0);
    Q_EMIT popUp->activated(0);
    EXPECT_FALSE(fileArray(Paths::coursesFile())[0].toMap().contains(CourseKeys::DefaultTextbook));

    m_window->selectCourseOrTextbook(QStringLiteral("Art"));
    EXPECT_EQ(popUp->count(), 2);
    EXPECT_EQ(popUp->itemText(1), QStringLiteral("Drawing"));
    EXPECT_EQ(popUp->currentText(), QStringLiteral("none"));
}

TEST_F(CoursesWindowTest, LabelsReachTheTitleToolbarCaptionsAndDescription)
{
    QVariantMap labels = UserDefaults().dictionary(PreferenceKeys::Labels);
    labels.insert(QStringLiteral("Course"), QStringLiteral("Class"));
    labels.insert(QStringLiteral("Textbook"), QStringLiteral("Book"));
    labels.insert(QStringLiteral("Type"), QStringLiteral("Kind"));
    labels.insert(QStringLiteral("CourseField1"), QStringLiteral("Credits"));
    labels.insert(QStringLiteral("TextbookField4"), QStringLiteral("Cost"));
    UserDefaults().set(PreferenceKeys::Labels, labels);
    write(Paths::coursesFile(), {course(QStringLiteral("Math"))});
    open();

    EXPECT_EQ(m_window->windowTitle(), QStringLiteral("Classs and Books"));
    EXPECT_EQ(action(QStringLiteral("AddCourse"))->text(), QStringLiteral("Add Class"));
    EXPECT_EQ(action(QStringLiteral("AddTextbook"))->text(), QStringLiteral("Add Book"));
    EXPECT_EQ(action(QStringLiteral("Delete"))->text(), QStringLiteral("Delete"));
    EXPECT_EQ(action(QStringLiteral("AddCourse"))->toolTip(), QStringLiteral("Add a new course"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("courseField1Caption"))->text(), QStringLiteral("credits"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("courseField6Caption"))->text(), QStringLiteral("office hours"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("courseDefaultTextbookCaption"))->text(), QStringLiteral("default book"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("courseTypesCaption"))->text(), QStringLiteral("kinds"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("textbookCourseCaption"))->text(), QStringLiteral("class"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("textbookField4Caption"))->text(), QStringLiteral("cost"));
    EXPECT_EQ(child<QListWidget>(QStringLiteral("typesTable"))->item(0)->text(), QStringLiteral("Universal Kinds"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("descriptionField"))->text(),
              QStringLiteral("Here you can add kinds for your assignments.  Kinds you add here will be available "
                             "within all of your classs, while class specific kinds can be edited in the class's "
                             "details."));
    EXPECT_EQ(child<QLineEdit>(QStringLiteral("courseField1"))->accessibleName(), QStringLiteral("credits"));

    // Renamed again in the Labels pane while the window stays open: the window takes it up when
    // it is next brought to the front.
    labels.insert(QStringLiteral("Course"), QStringLiteral("Subject"));
    labels.insert(QStringLiteral("CourseField1"), QStringLiteral("Hours"));
    UserDefaults().set(PreferenceKeys::Labels, labels);
    m_window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(m_window.get()));
    EXPECT_EQ(m_window->windowTitle(), QStringLiteral("Subjects and Books"));
    EXPECT_EQ(action(QStringLiteral("AddCourse"))->text(), QStringLiteral("Add Subject"));
    EXPECT_EQ(child<QLabel>(QStringLiteral("courseField1Caption"))->text(), QStringLiteral("hours"));

    // Every control can be told apart by a screen reader.
    for (QWidget *widget : m_window->findChildren<QWidget *>()) {
        if (qobject_cast<QLineEdit *>(widget) || qobject_cast<QComboBox *>(widget)
            || qobject_cast<QAbstractItemView *>(widget) || qobject_cast<QToolButton *>(widget)
            || qobject_cast<QPlainTextEdit *>(widget)) {
            if (widget->objectName().startsWith(QLatin1String("qt_")) || !widget->parentWidget()
                || (widget->objectName().isEmpty() && widget->parentWidget()->inherits("QComboBox")))
                continue;
            EXPECT_FALSE(widget->objectName().isEmpty()) << widget->metaObject()->className();
            EXPECT_FALSE(widget->accessibleName().isEmpty()) << widget->objectName().toStdString();
        }
    }
}

TEST_F(CoursesWindowTest, ClosingShowsTheBlankPageAndAnUnreadableFileIsNeverOverwritten)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math"))});
    open();
    m_window->selectRow(0);
    m_window->close();
    EXPECT_EQ(m_window->currentPage(), Page::Blank);
    EXPECT_EQ(m_window->selectedRow(), -1);

    const QByteArray garbage("<plist><array><dict><key>Name</key>");
    TestEnvironment::writeFile(Paths::coursesFile(), garbage);
    m_window->show();
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].title, QStringLiteral("Courses Error"));
    action(QStringLiteral("AddCourse"))->trigger();
    EXPECT_EQ(TestEnvironment::readFile(Paths::coursesFile()), garbage);
}
