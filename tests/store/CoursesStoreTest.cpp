#include "TestEnvironment.h"
#include "support/CourseRecords.h"

#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/AssignmentStore.h"
#include "store/CoursesDocument.h"
#include "store/CoursesStore.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/TypeListEdits.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QThread>
#include <gtest/gtest.h>

namespace {

using CourseRecords::course;
using CourseRecords::textbook;

QStringList names(const CoursesStore &store)
{
    return CourseRecords::displayNames(store.getCombined());
}

using CoursesStoreTest = CourseRecords::DataFolderTest;

} // namespace

TEST_F(CoursesStoreTest, TextbooksFollowTheirCourseSortedIgnoringCaseAndOrphansGo)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math")), textbook(QStringLiteral("Biology"), QStringLiteral("Math")),
                                 course(QStringLiteral("Art")), textbook(QStringLiteral("algebra"), QStringLiteral("Math")),
                                 textbook(QStringLiteral("Lost"), QStringLiteral("Gone"))});
    CoursesStore store;
    store.updateCombinedArray();
    EXPECT_EQ(names(store), (QStringList{QStringLiteral("Math"), QStringLiteral("  algebra"),
                                         QStringLiteral("  Biology"), QStringLiteral("Art")}));
    EXPECT_EQ(PropertyList::readFile(Paths::coursesFile())->toList(), store.getCombined());
}

TEST_F(CoursesStoreTest, RenamingACoursePropagatesExactlyToAssignmentsAndTextbooks)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math")), textbook(QStringLiteral("Calculus"), QStringLiteral("Math"))});
    ASSERT_TRUE(AssignmentStore::writeFile(
        Paths::assignmentsFile(),
        {QVariantMap{{QStringLiteral("Name"), QStringLiteral("a")}, {QStringLiteral("Course"), QStringLiteral("Math")}},
         QVariantMap{{QStringLiteral("Name"), QStringLiteral("b")}, {QStringLiteral("Course"), QStringLiteral("math")}},
         QVariantMap{{QStringLiteral("Name"), QStringLiteral("c")}}}));
    CoursesStore store;
    store.originalCourse = QStringLiteral("Math");
    CoursesStore::CourseForm form;
    form.name = QStringLiteral("Mathematics");
    form.fields[4] = QStringLiteral("Dr. Noether");
    form.defaultTextbook = CourseKeys::NoTextbook;
    EXPECT_EQ(store.editCourse(0, form, true), 0);

    const QVariantList assignments = *AssignmentStore::readFile(Paths::assignmentsFile());
    EXPECT_EQ(assignments[0].toMap().value(QStringLiteral("Course")).toString(), QStringLiteral("Mathematics"));
    EXPECT_EQ(assignments[1].toMap().value(QStringLiteral("Course")).toString(), QStringLiteral("math"));
    EXPECT_FALSE(assignments[2].toMap().contains(QStringLiteral("Course")));

    const QVariantMap renamed = store.recordAt(0);
    EXPECT_EQ(renamed.value(CourseKeys::DisplayName).toString(), QStringLiteral("Mathematics"));
    EXPECT_EQ(renamed.value(CourseKeys::field(5)).toString(), QStringLiteral("Dr. Noether"));
    EXPECT_FALSE(renamed.contains(CourseKeys::field(1)));
    EXPECT_FALSE(renamed.contains(CourseKeys::DefaultTextbook));
    EXPECT_FALSE(renamed.contains(CourseKeys::Types));
    // The textbook moved with its course instead of being dropped as an orphan.
    EXPECT_EQ(store.recordAt(1).value(CourseKeys::Course).toString(), QStringLiteral("Mathematics"));

    // An emptied name shows as a new course, and as one blank in the course list.
    form.name.clear();
    store.originalCourse = QStringLiteral("Mathematics");
    store.editCourse(0, form, true);
    EXPECT_EQ(store.recordAt(0).value(CourseKeys::DisplayName).toString(), QStringLiteral("New Course"));
    EXPECT_EQ(store.getCoursesArray(), QStringList{QStringLiteral(" ")});
    QVariantList noName{QVariantMap{{CourseKeys::Type, CourseKeys::CourseType}}};
    write(Paths::coursesFile(), noName);
    EXPECT_EQ(store.getCoursesArray(), QStringList{QStringLiteral(" ")});
}

TEST_F(CoursesStoreTest, DeletingATextbookClearsItAsDefaultWithoutAsking)
{
    QVariantMap general = UserDefaults().dictionary(PreferenceKeys::General);
    general.insert(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    UserDefaults().set(PreferenceKeys::General, general);
    write(Paths::coursesFile(), {course(QStringLiteral("Math"), {{CourseKeys::DefaultTextbook, QStringLiteral("Calculus")}}),
                                 textbook(QStringLiteral("Calculus"), QStringLiteral("Math"))});
    CoursesStore store;
    EXPECT_TRUE(store.deleteCourseOrTextbook(1));
    EXPECT_TRUE(Alerts::takeAsked().isEmpty());
    EXPECT_EQ(store.getCombined().size(), 1);
    EXPECT_EQ(store.recordAt(0).value(CourseKeys::DefaultTextbook), QVariant(QString()));
    EXPECT_TRUE(store.recordAt(0).contains(CourseKeys::DefaultTextbook));
}

TEST_F(CoursesStoreTest, AddingRecordsPlacesAndSelectsThem)
{
    CoursesStore store;
    EXPECT_EQ(store.addTextbook(-1), -1);
    EXPECT_EQ(store.addCourse(), 0);
    CoursesStore::CourseForm form;
    form.name = QStringLiteral("Math");
    store.originalCourse = QString();
    store.editCourse(0, form, true);
    EXPECT_EQ(store.addCourse(), 1);
    const int row = store.addTextbook(0);
    EXPECT_EQ(row, 1);
    EXPECT_EQ(store.recordAt(row).value(CourseKeys::DisplayName).toString(), QStringLiteral("  New Textbook"));
    EXPECT_EQ(store.recordAt(row).value(CourseKeys::Course).toString(), QStringLiteral("Math"));
    // From a textbook row, the new one joins the same course.
    EXPECT_EQ(store.recordAt(store.addTextbook(row)).value(CourseKeys::Course).toString(), QStringLiteral("Math"));
    EXPECT_EQ(store.textbooksOfCourse(QStringLiteral("Math")).size(), 2);
}

TEST_F(CoursesStoreTest, TypesAreUniversalThenTheCoursesOwn)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math"), {{CourseKeys::Types, QStringList{QStringLiteral("Proof")}}})});
    CoursesStore store;
    ASSERT_TRUE(store.editUniversalTypes({QStringLiteral("Essay"), QStringLiteral("Quiz")}));
    store.reload();
    EXPECT_EQ(store.typesForCourse(QStringLiteral("Math")),
              (QStringList{QStringLiteral("Essay"), QStringLiteral("Quiz"), QStringLiteral("Proof")}));
    EXPECT_EQ(store.typesForCourse(QStringLiteral("Art")), (QStringList{QStringLiteral("Essay"), QStringLiteral("Quiz")}));
}

TEST_F(CoursesStoreTest, CoursesOfOneNameKeepTheirTextbooksOnceHoweverOftenRegrouped)
{
    const QVariantMap unnamed{{CourseKeys::Name, QString()},
                                            {CourseKeys::DisplayName, CourseKeys::NewCourse},
                                            {CourseKeys::Type, CourseKeys::CourseType}};
    write(Paths::coursesFile(), {unnamed, unnamed, textbook(QString(), QString()), course(QStringLiteral("Math")),
                                 textbook(QStringLiteral("Calculus"), QStringLiteral("Math")), course(QStringLiteral("Math"))});
    for (int opening = 0; opening < 3; ++opening) {
        CoursesStore store;
        store.updateCombinedArray();
    }
    CoursesStore store;
    EXPECT_EQ(names(store), (QStringList{QStringLiteral("New Course"), QStringLiteral("  "), QStringLiteral("New Course"),
                                                       QStringLiteral("Math"), QStringLiteral("  Calculus"), QStringLiteral("Math")}));
    // Adding a textbook to the second unnamed course adds exactly one record.
    const int row = store.addTextbook(2);
    ASSERT_GE(row, 0);
    EXPECT_EQ(store.getCombined().size(), 7);
    store.updateCombinedArray();
    EXPECT_EQ(store.getCombined().size(), 7);
}

TEST_F(CoursesStoreTest, NamingANewCourseOrTextbookRenamesNoAssignment)
{
    const QVariantList assignments{
        QVariantMap{{QStringLiteral("Name"), QStringLiteral("a")}, {QStringLiteral("Course"), QStringLiteral("Math")},
                                  {QStringLiteral("Textbook"), QString()}},
        QVariantMap{{QStringLiteral("Name"), QStringLiteral("b")}, {QStringLiteral("Course"), QStringLiteral("Art")},
                                  {QStringLiteral("Textbook"), QString()}},
        QVariantMap{{QStringLiteral("Name"), QStringLiteral("c")}, {QStringLiteral("Course"), QString()}}};
    ASSERT_TRUE(AssignmentStore::writeFile(Paths::assignmentsFile(), assignments));
    const QByteArray before = TestEnvironment::readFile(Paths::assignmentsFile());
    write(Paths::coursesFile(), {course(QStringLiteral("Math"))});
    CoursesStore store;
    const int textbookRow = store.addTextbook(0);
    store.originalTextbook = store.recordAt(textbookRow).value(CourseKeys::Name).toString();
    CoursesStore::TextbookForm textbookForm;
    textbookForm.name = QStringLiteral("Calculus");
    textbookForm.course = QStringLiteral("Math");
    ASSERT_GE(store.editTextbook(textbookRow, textbookForm, true), 0);

    const int courseRow = store.addCourse();
    store.originalCourse = QString();
    const int bookRow = store.addTextbook(courseRow);
    CoursesStore::CourseForm courseForm;
    courseForm.name = QStringLiteral("Physics");
    const int renamed = store.editCourse(courseRow, courseForm, true);
    ASSERT_GE(renamed, 0);
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), before);
    // The new course's own textbook still goes with it.
    Q_UNUSED(bookRow)
    EXPECT_EQ(store.textbooksOfCourse(QStringLiteral("Physics")), QStringList{QString()});
    EXPECT_EQ(store.textbooksOfCourse(QStringLiteral("Math")), QStringList{QStringLiteral("Calculus")});
}

TEST_F(CoursesStoreTest, AFileReplacedSinceItWasReadIsReloadedBeforeAnyChangeIsWritten)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Old")), textbook(QStringLiteral("Old Book"), QStringLiteral("Old")),
                                 course(QStringLiteral("Math"))});
    CoursesStore store;
    QVariantMap general = UserDefaults().dictionary(PreferenceKeys::General);
    general.insert(PreferenceKeys::GeneralKeys::DisplayWarningMessages, false);
    UserDefaults().set(PreferenceKeys::General, general);

    // Everything deleted from elsewhere: a new course joins the empty list.
    write(Paths::coursesFile(), {});
    EXPECT_EQ(store.addCourse(), 0);
    EXPECT_EQ(names(store), QStringList{QStringLiteral("New Course")});
    EXPECT_EQ(PropertyList::readFile(Paths::coursesFile())->toList(), store.getCombined());

    // Replaced by an import: an edit of a course that is still there lands on the imported record.
    QVariantMap unnamed = course(QString());
    unnamed.insert(CourseKeys::DisplayName, CourseKeys::NewCourse);
    write(Paths::coursesFile(), {course(QStringLiteral("Art")), unnamed});
    CoursesStore::CourseForm form;
    form.fields[0] = QStringLiteral("4 units");
    ASSERT_GE(store.editCourse(0, form, false), 0);
    const QVariantList afterEdit = PropertyList::readFile(Paths::coursesFile())->toList();
    ASSERT_EQ(afterEdit.size(), 2);
    EXPECT_EQ(afterEdit[0].toMap().value(CourseKeys::Name).toString(), QStringLiteral("Art"));
    EXPECT_EQ(afterEdit[1].toMap().value(CourseKeys::field(1)).toString(), QStringLiteral("4 units"));

    // Deleting a row whose record has gone deletes nothing else.
    write(Paths::coursesFile(), {course(QStringLiteral("Art")), course(QStringLiteral("Music"))});
    store.deleteCourseOrTextbook(1);
    const QVariantList afterDelete = PropertyList::readFile(Paths::coursesFile())->toList();
    EXPECT_EQ(afterDelete, (QVariantList{course(QStringLiteral("Art")), course(QStringLiteral("Music"))}));
    EXPECT_EQ(store.getCombined(), afterDelete);

    // The universal types: an added type joins what is on disk now.
    ASSERT_TRUE(store.editUniversalTypes({QStringLiteral("Quiz")}));
    ASSERT_TRUE(PropertyList::writeFile(Paths::universalTypesFile(), QVariantList{QStringLiteral("Lab")}));
    ASSERT_TRUE(store.editUniversalTypes({QStringLiteral("Quiz"), QStringLiteral("New Type")}));
    EXPECT_EQ(PropertyList::readFile(Paths::universalTypesFile())->toList(),
              (QVariantList{QStringLiteral("Lab"), QStringLiteral("New Type")}));
}

TEST(TypeListEdits, AnEditOfAnOlderListIsMadeAgainOnTheNewerOne)
{
    using TypeListEdits::sameEditOn;
    const QStringList before{"Quiz", "Lab", "Essay"};
    const QStringList fresh{"Exam", "Lab", "Quiz"};
    EXPECT_EQ(sameEditOn(before, {"Quiz", "Lab", "Essay", "New Type"}, fresh), (QStringList{"Exam", "Lab", "Quiz", "New Type"}));
    EXPECT_EQ(sameEditOn(before, {"Lab", "Essay"}, fresh), (QStringList{"Exam", "Lab"}));
    EXPECT_EQ(sameEditOn(before, {"Quiz", "Lab report", "Essay"}, fresh), (QStringList{"Exam", "Lab report", "Quiz"}));
    // Quiz moved behind Essay (to the end), and Essay moved to the front.
    EXPECT_EQ(sameEditOn(before, {"Lab", "Essay", "Quiz"}, fresh), (QStringList{"Exam", "Lab", "Quiz"}));
    EXPECT_EQ(sameEditOn(before, {"Essay", "Quiz", "Lab"}, {"Lab", "Essay", "Quiz"}), (QStringList{"Lab", "Essay", "Quiz"}));
    EXPECT_EQ(sameEditOn({"a", "b", "c"}, {"c", "a", "b"}, {"b", "c", "a"}), (QStringList{"b", "c", "a"}));
    EXPECT_EQ(sameEditOn({"a", "b", "c", "d"}, {"c", "a", "b", "d"}, {"d", "a", "b", "c"}), (QStringList{"d", "c", "a", "b"}));
    // Two renames at once are not one edit: the newer list stays as it is.
    EXPECT_EQ(sameEditOn(before, {"X", "Y", "Essay"}, fresh), fresh);
}

TEST_F(CoursesStoreTest, OneDocumentPerFilesHearsOutsideWritesAndNeverWritesOverAnUnreadableFile)
{
    write(Paths::coursesFile(), {course(QStringLiteral("Math"))});
    const std::shared_ptr<CoursesDocument> document = CoursesDocument::open();
    EXPECT_EQ(CoursesDocument::open().get(), document.get());
    CoursesStore store;
    EXPECT_EQ(store.document(), document.get());
    ASSERT_EQ(names(store), QStringList{QStringLiteral("Math")});

    // Another program replaces the file: the document hears of it without being asked.
    QSignalSpy resets(document.get(), &CoursesDocument::reset);
    QThread::msleep(10);
    write(Paths::coursesFile(), {course(QStringLiteral("Art"))});
    ASSERT_TRUE(resets.wait(5000));
    EXPECT_EQ(CourseRecords::displayNames(document->combined()), QStringList{QStringLiteral("Art")});

    // A file that does not parse is read as unusable and left exactly as it is.
    QThread::msleep(10);
    {
        QFile broken(Paths::coursesFile());
        ASSERT_TRUE(broken.open(QIODevice::WriteOnly | QIODevice::Truncate));
        broken.write("<plist><array><dict>");
    }
    EXPECT_EQ(store.addCourse(), -1);
    EXPECT_FALSE(document->isUsable());
    EXPECT_FALSE(document->setCombined({course(QStringLiteral("Lost"))}));
    QFile after(Paths::coursesFile());
    ASSERT_TRUE(after.open(QIODevice::ReadOnly));
    EXPECT_EQ(after.readAll(), QByteArray("<plist><array><dict>"));
}
