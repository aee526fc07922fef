#include "TestEnvironment.h"
#include "../CourseRecords.h"

#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/AssignmentStore.h"
#include "store/CoursesStore.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/ui/CoursesAndTextbooks.h"
#include "exchange/Backup.h"
#include "store/ui/CoursesListModel.h"
#include "store/ui/PreferencesWindow.h"
#include "store/ui/UniversalTypesPage.h"

#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QListWidget>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <gtest/gtest.h>

#include <memory>

namespace {

using Page = CoursesAndTextbooks::Page;

using CourseRecords::course;
using CourseRecords::textbook;

QVariantMap assignment(const QString &name, const QString &courseName, const QString &textbookName = QString())
{
    QVariantMap record{{QStringLiteral("Name"), name}, {QStringLiteral("Course"), courseName}};
    if (!textbookName.isEmpty())
        record.insert(QStringLiteral("Textbook"), textbookName);
    return record;
}

QVariantList fileArray(const QString &path)
{
    const auto root = PropertyList::readFile(path);
    return root ? root->toList() : QVariantList{QStringLiteral("unreadable")};
}

QStringList displayNames(const QVariantList &combined)
{
    QStringList names;
    for (const QVariant &record : combined)
        names.append(record.toMap().value(CourseKeys::DisplayName).toString());
    return names;
}

class CoursesWindowTest : public testing::Test
{
protected:
    void SetUp() override
    {
        QDir().mkpath(Paths::dataFolder());
        Preferences::setAllDefaults();
    }
    void write(const QString &path, const QVariantList &array) { ASSERT_TRUE(PropertyList::writeFile(path, array)); }
    void open()
    {
        m_window = std::make_unique<CoursesAndTextbooks>();
        m_window->show();
    }
    template<typename W>
    W *child(const QString &name)
    {
        W *widget = m_window->findChild<W *>(name);
        EXPECT_NE(widget, nullptr) << name.toStdString();
        return widget;
    }
    QAction *action(const QString &identifier) { return child<QAction>(identifier); }
    // A click on a toolbar button, which leaves the keyboard where it was.
    void clickToolbar(const QString &identifier)
    {
        auto *button = child<QWidget>(identifier + QStringLiteral("Button"));
        ASSERT_EQ(button->focusPolicy() & Qt::ClickFocus, 0) << identifier.toStdString();
        QTest::mouseClick(button, Qt::LeftButton);
    }
    // Types without ending the edit: no Return, no focus change.
    void typeWithoutEnding(const QString &field, const QString &text)
    {
        auto *edit = child<QLineEdit>(field);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, text);
    }
    void activate(QWidget *window)
    {
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window));
    }
    static void warningsOn(bool on)
    {
        QVariantMap general = UserDefaults().dictionary(PreferenceKeys::General);
        general.insert(PreferenceKeys::GeneralKeys::DisplayWarningMessages, on);
        UserDefaults().set(PreferenceKeys::General, general);
    }
    void typeInto(const QString &field, const QString &text)
    {
        auto *edit = child<QLineEdit>(field);
        edit->setFocus();
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
    }

    std::unique_ptr<CoursesAndTextbooks> m_window;
};

} // namespace

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
