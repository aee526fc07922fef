#pragma once

#include "list/AssignmentTableModel.h"
#include "list/CalendarObserver.h"
#include "list/Controller.h"
#include "list/Editing.h"
#include "list/ListStartupSteps.h"
#include "list/RecurringSeries.h"
#include "list/SidebarEditing.h"
#include "list/SidebarValues.h"
#include "list/ToolbarState.h"
#include "platform/DateText.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/Assignment.h"
#include "store/PreferenceKeys.h"
#include "store/StartupSequence.h"
#include "support/CourseRecords.h"
#include "support/ListDoubles.h"
#include "support/TestEnvironment.h"

#include <QAbstractItemModelTester>
#include <QDir>
#include <QItemSelectionModel>
#include <QSignalSpy>
#include <QFileInfo>

#include <memory>
#include <ostream>

// Readable failure messages for Qt strings.
inline void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

struct FakeCalendar : CalendarObserver {
    int updates = 0;
    std::optional<QDateTime> focus;
    AssignmentRef selected;
    void updateCalendar() override { ++updates; }
    std::optional<QDateTime> focusDate() const override { return focus; }
    void selectAssignment(const AssignmentRef &record) override { selected = record; }
    void clearSelection() override { selected.reset(); }
};

namespace ListTest {

inline QString stored(int year, int month, int day, int hour = 0)
{
    return DateText::toStoredForm(QDateTime(QDate(year, month, day), QTime(hour, 0)));
}

inline AssignmentRef record(const QString &name, const QVariantMap &more = {})
{
    QVariantMap fields = more;
    fields.insert(AssignmentKeys::Name, name);
    return Assignments::make(fields);
}

inline void writeStore(const AssignmentList &records)
{
    QDir().mkpath(Paths::dataFolder());
    PropertyList::writeFile(Paths::assignmentsFile(), Assignments::toVariantList(records));
}

using StoreFiles::readStore;
using StoreFiles::setGeneral;
using StoreFiles::storedNamed;
using StoreFiles::storedNames;

inline void writeCourses(const QVariantList &records)
{
    QDir().mkpath(Paths::dataFolder());
    PropertyList::writeFile(Paths::coursesFile(), records);
}

inline QVariantMap course(const QString &name, const QString &defaultTextbook = QString())
{
    if (defaultTextbook.isNull())
        return CourseRecords::course(name);
    return CourseRecords::course(name, {{CourseKeys::DefaultTextbook, defaultTextbook}});
}

using CourseRecords::textbook;

inline QStringList names(const AssignmentList &list)
{
    QStringList result;
    for (const AssignmentRef &r : list)
        result.append(r->string(AssignmentKeys::Name));
    return result;
}

// Sets a list without a window up from the preferences and loads the store, the way the program
// starts its main window.
inline void startUp(Controller &controller)
{
    ListStartupSteps steps(controller);
    StartupSequence::setUpWindowFromPreferences(steps);
}

// A controller over the test's home with the fakes attached and the store on disk loaded.
struct Fixture {
    FakeToolbar toolbar;
    FakeCalendar calendar;
    FakeSidebar sidebar;
    std::unique_ptr<Controller> controller;

    explicit Fixture(const AssignmentList &records = {})
    {
        writeStore(records);
        controller = std::make_unique<Controller>();
        controller->setToolbar(&toolbar);
        controller->setCalendar(&calendar);
        controller->setSidebar(&sidebar);
        // Default View 2 selects "All" (2 + 1 wraps to 0).
        setGeneral(PreferenceKeys::GeneralKeys::DefaultView, 2);
        startUp(*controller);
    }

    QStringList shown() const { return names(controller->displayAssignments()); }
    int rowOf(const QString &name) const { return int(shown().indexOf(name)); }
    void select(const QString &name) { controller->selectRowAlone(rowOf(name)); }
    void type(const QString &text)
    {
        toolbar.text = text;
        controller->controlTextDidChange(true);
    }
};

// A second main list on the same file, the way a second window shows it, with Qt's checker of
// model signals watching its table and a count of the resets that would drop its selection.
struct SecondWindow {
    FakeToolbar toolbar;
    FakeCalendar calendar;
    FakeSidebar sidebar;
    Controller controller;
    QAbstractItemModelTester tester{controller.tableModel(), QAbstractItemModelTester::FailureReportingMode::Warning};
    QSignalSpy resets{controller.tableModel(), &QAbstractItemModel::modelReset};

    SecondWindow()
    {
        controller.setToolbar(&toolbar);
        controller.setCalendar(&calendar);
        controller.setSidebar(&sidebar);
        startUp(controller);
        resets.clear();
    }
    QStringList shown() const { return names(controller.displayAssignments()); }
    void select(const QString &name)
    {
        const int row = int(shown().indexOf(name));
        controller.selectRowAlone(row);
        controller.selectionModel()->setCurrentIndex(controller.tableModel()->index(row, 0),
                                                     QItemSelectionModel::NoUpdate);
    }
    QString selectedName() const { return shown().value(controller.singleSelectedRow()); }
    QString currentName() const { return shown().value(controller.selectionModel()->currentIndex().row()); }
};

} // namespace ListTest
