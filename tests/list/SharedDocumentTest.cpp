// Several windows on one assignments file: each change reaches every window at once, and a window
// left open never writes an older copy over the file.
#include "ListTestSupport.h"

#include "calendar/DueDateMove.h"
#include "store/AssignmentsDocument.h"
#include "store/CoursesStore.h"
#include "store/DataEraser.h"

#include <QFile>
#include <QSignalSpy>
#include <QThread>

#include <gtest/gtest.h>

using namespace ListTest;
using namespace AssignmentKeys;

namespace {


void writeElsewhere(const QVariantList &records)
{
    // A later modification time than the last write of this process, as another program's would.
    QThread::msleep(10);
    PropertyList::writeFile(Paths::assignmentsFile(), records);
}

RecurringSeries::Entries weekly()
{
    RecurringSeries::Entries e;
    e.name = "weekly";
    e.startingDate = "11/23/2026";
    e.weekdays[1] = true;
    e.weekInterval = "1";
    e.occurrences = "2";
    return e;
}

void editName(Fixture &f, const QString &from, const QString &to)
{
    f.select(from);
    f.sidebar.values.name = to;
    ASSERT_TRUE(f.controller->sidebarEditing().editAssignment(SidebarEditing::Sender::Other));
}

} // namespace


TEST(SharedDocument, ACourseRenamedInTheCoursesWindowReachesTheOpenList)
{
    writeCourses({course("Math")});
    Fixture f({record("a", {{Course, "Math"}})});
    CoursesStore courses;
    courses.originalCourse = "Math";
    CoursesStore::CourseForm form;
    form.name = "Mathematics";
    form.defaultTextbook = CourseKeys::NoTextbook;
    ASSERT_EQ(courses.editCourse(0, form, true), 0);

    EXPECT_EQ(f.controller->allAssignments().at(0)->string(Course), "Mathematics");
    // A later save from the list keeps the new name.
    f.controller->saveData();
    EXPECT_EQ(storedNamed("a").value(Course).toString(), "Mathematics");
}

TEST(SharedDocument, AFileReplacedUnderneathIsReadNotWrittenOver)
{
    Fixture f({record("a"), record("b")});
    // A sync download or backup import replaced the file while the window stayed open.
    writeElsewhere({QVariantMap{{Name, "a"}}, QVariantMap{{Name, "b"}}, QVariantMap{{Name, "downloaded"}}});
    f.controller->saveData();
    EXPECT_EQ(storedNames(), (QStringList{"a", "b", "downloaded"}));
    EXPECT_EQ(f.shown(), (QStringList{"a", "b", "downloaded"}));

    // The edit under way in the sidebar goes to the reread record, and what arrived stays.
    writeElsewhere({QVariantMap{{Name, "a"}}, QVariantMap{{Name, "b"}}, QVariantMap{{Name, "another"}}});
    editName(f, "b", "typed");
    EXPECT_EQ(storedNames(), (QStringList{"a", "typed", "another"}));
    EXPECT_EQ(f.shown(), (QStringList{"a", "another", "typed"}));
}

TEST(SharedDocument, ChangesGoOntoAFileReplacedUnderneath)
{
    // Each time another program adds a record before this window has heard of it; the change made
    // here next must go onto what the file holds then, not be dropped or write the old list back.
    const auto addedElsewhere = [](const QString &name) {
        QVariantList records = readStore();
        records.append(QVariantMap{{Name, name}});
        writeElsewhere(records);
    };
    const QString id = stored(2026, 11, 1, 9);
    Fixture f({record("Paper", {{Project, id}}), record("Outline", {{Subproject, id}}),
               record("Lab", {{Date, stored(2026, 12, 1, 9)}})});

    addedElsewhere("downloaded");
    ASSERT_TRUE(DueDateMove::changeDueDay(*f.controller, f.controller->displayAssignments()[f.rowOf("Lab")],
                                          QDate(2026, 12, 28)));
    EXPECT_EQ(storedNamed("Lab").value(Date).toString(), stored(2026, 12, 28, 9));

    addedElsewhere("from the phone");
    f.select("Paper");
    f.controller->editing().setSubprojectValue(0, "Name", "Draft");
    EXPECT_EQ(storedNamed("Draft").value(Subproject).toString(), id);

    addedElsewhere("from an editor");
    f.controller->editing().addProject();
    const QVariantList all = readStore();
    const auto projects = std::count_if(all.cbegin(), all.cend(),
                                        [](const QVariant &r) { return r.toMap().contains(Project); });
    EXPECT_EQ(projects, 2);

    addedElsewhere("from a sync");
    f.controller->editing().markAssignmentAsCompleted(f.rowOf("Lab"));
    EXPECT_TRUE(storedNamed("Lab").value(Completed).toBool());
    for (const char *name : {"downloaded", "from the phone", "from an editor", "from a sync", "Paper"})
        EXPECT_TRUE(storedNames().contains(name)) << name;
    EXPECT_EQ(storedNames().size(), 8);
    EXPECT_EQ(f.shown().size(), 8);

    // Deleting a subproject, then several records at once, also goes onto the file as it is then.
    addedElsewhere("from a backup");
    f.select("Paper");
    f.controller->editing().deleteSubprojects({0}, false);
    EXPECT_FALSE(storedNames().contains("Draft"));
    addedElsewhere("from a tablet");
    f.controller->selectRows({f.rowOf("Lab"), f.rowOf("downloaded")});
    f.controller->editing().deleteAssignment();
    const QStringList kept = storedNames();
    EXPECT_FALSE(kept.contains("Lab") || kept.contains("downloaded") || kept.contains("Draft"));
    for (const char *name : {"from a backup", "from a tablet", "from a sync", "Paper"})
        EXPECT_TRUE(kept.contains(name)) << name;
    EXPECT_EQ(kept.size(), 7);
    EXPECT_EQ(f.shown().size(), 7);
}

TEST(SharedDocument, DeletingAllDataEmptiesTheOpenListAndItWritesNothingBack)
{
    Fixture f({record("a")});
    ASSERT_TRUE(DataEraser::deleteAllData());
    EXPECT_TRUE(f.shown().isEmpty());
    f.controller->saveData();
    EXPECT_TRUE(readStore().isEmpty());
}

TEST(SharedDocument, TheFileWatcherBringsAnOutsideEditInWithoutActivation)
{
    Fixture f({record("a")});
    const std::shared_ptr<AssignmentsDocument> document = AssignmentsDocument::open();
    QSignalSpy resets(document.get(), &AssignmentsDocument::reset);
    writeElsewhere({QVariantMap{{Name, "edited in an editor"}}});
    ASSERT_TRUE(resets.wait(5000));
    EXPECT_EQ(f.shown(), QStringList{"edited in an editor"});
    // Watched again after the rename that replaced the file.
    writeElsewhere({QVariantMap{{Name, "again"}}});
    ASSERT_TRUE(resets.wait(5000));
    EXPECT_EQ(f.shown(), QStringList{"again"});
}

TEST(SharedDocument, ADamagedFileIsNeverWrittenByAnyPath)
{
    writeCourses({course("Math")});
    Fixture f({record("a", {{Course, "Math"}})});
    f.select("a");
    const QByteArray damaged = "<plist><array><dict><key>Name</key>";
    QThread::msleep(10);
    QFile file(Paths::assignmentsFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(damaged);
    file.close();

    f.sidebar.values.name = "typed";
    f.controller->sidebarEditing().editAssignment(SidebarEditing::Sender::Other);
    f.controller->saveData();
    RecurringSeries::addMultipleAssignments(weekly());
    CoursesStore courses;
    courses.originalCourse = "Math";
    CoursesStore::CourseForm form;
    form.name = "Mathematics";
    form.defaultTextbook = CourseKeys::NoTextbook;
    courses.editCourse(0, form, true);
    EXPECT_EQ(TestEnvironment::readFile(Paths::assignmentsFile()), damaged);
}
