#include "list/ui/MainWindowTestSupport.h"
#include "list/ui/DateEditor.h"
#include "list/ui/MultipleAssignmentsSheet.h"
#include "platform/Alerts.h"
#include "platform/Paths.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>

using namespace ListTest;
using namespace WindowTest;

TEST(RecurringSheetWindow, AWeeklySeriesGoesToTheStoreAndShowsAfterTheRefresh)
{
    freshPreferences();
    writeCourses({course("Biology", "Campbell"), textbook("Campbell", "Biology")});
    writeStore({});
    Window w;
    w.window->perform(MainMenus::Command::AddRecurring);
    MultipleAssignmentsSheet *sheet = w.window->recurringSheet();
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->courseField->count(), 1);

    // The first problem is reported and nothing is written.
    sheet->nameField->setText("Reading %@");
    EXPECT_FALSE(sheet->addMultipleAssignments());
    QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].title, "Warning");
    EXPECT_EQ(asked[0].message, "Please enter a beginning date.");
    EXPECT_TRUE(readStore().isEmpty());

    sheet->courseField->setEditText("Biology");
    Q_EMIT sheet->courseField->lineEdit()->editingFinished();
    EXPECT_EQ(sheet->textbookField->currentText(), "Campbell");
    sheet->startingDate->textField()->setText("11/23/2026"); // a Monday
    sheet->weekMatrix[1]->setChecked(true);
    sheet->weekMatrix[3]->setChecked(true);
    sheet->numberOfOccurances->setText("3");
    ASSERT_TRUE(sheet->addMultipleAssignments());
    EXPECT_FALSE(sheet->isVisible());

    const QVariantList store = readStore();
    ASSERT_EQ(store.size(), 3);
    EXPECT_EQ(store[2].toMap().value("Name").toString(), "Reading 3");
    EXPECT_EQ(store[2].toMap().value("Course").toString(), "Biology");
    EXPECT_EQ(store[2].toMap().value("Textbook").toString(), "Campbell");
    EXPECT_TRUE(store[2].toMap().value("Date").toString().startsWith("2026-11-30"));
    EXPECT_EQ(w.shown().size(), 3);

    // The series is one step of the history.
    w.window->validateCommands();
    QAction *undo = w.window->menus()->action(MainMenus::Command::Undo);
    EXPECT_EQ(undo->text(), "Undo Add Recurring Assignments");
    undo->trigger();
    EXPECT_TRUE(readStore().isEmpty());
    EXPECT_TRUE(w.shown().isEmpty());
}

TEST(RecurringSheetWindow, AMonthlySeriesEndingOnADateUsesTheDayGrid)
{
    freshPreferences();
    writeStore({});
    Window w;
    w.window->addMultiple();
    MultipleAssignmentsSheet *sheet = w.window->recurringSheet();
    sheet->repeatPopUp->setCurrentIndex(1);
    sheet->endPopUp->setCurrentIndex(1);
    sheet->startingDate->textField()->setText("11/16/2026");
    sheet->endingDate->textField()->setText("11/15/2026");
    EXPECT_FALSE(sheet->addMultipleAssignments());
    EXPECT_EQ(Alerts::takeAsked().value(0).message, "Please select at least one day of the month.");
    // Day 15 sits at row 2, column 0; day 7 has a box that never counts.
    ASSERT_NE(sheet->calendarMatrix[2][0], nullptr);
    EXPECT_EQ(sheet->calendarMatrix[2][0]->text(), "15");
    sheet->calendarMatrix[2][0]->setChecked(true);
    EXPECT_FALSE(sheet->addMultipleAssignments());
    EXPECT_EQ(Alerts::takeAsked().value(0).message, "Please enter an ending date that is after the starting date.");
    sheet->endingDate->textField()->setText("2/1/2027");
    ASSERT_TRUE(sheet->addMultipleAssignments());
    const QVariantList store = readStore();
    ASSERT_EQ(store.size(), 2);
    EXPECT_TRUE(store[0].toMap().value("Date").toString().startsWith("2026-12-15"));
    EXPECT_TRUE(store[1].toMap().value("Date").toString().startsWith("2027-01-15"));
    EXPECT_FALSE(store[0].toMap().contains("Name"));
}

TEST(RecurringSheetWindow, AnUnreadableStoreIsReportedAndLeftAsItIsWithTheSheetStillFilledIn)
{
    freshPreferences();
    writeStore({});
    Window w;
    QFile file(Paths::assignmentsFile());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    const QByteArray broken("<?xml version=\"1.0\"?><plist><array><dict><key>Name");
    file.write(broken);
    file.close();

    w.window->addMultiple();
    MultipleAssignmentsSheet *sheet = w.window->recurringSheet();
    sheet->nameField->setText("Reading %@");
    sheet->startingDate->textField()->setText("11/23/2026");
    sheet->weekMatrix[1]->setChecked(true);
    sheet->numberOfOccurances->setText("2");
    EXPECT_FALSE(sheet->addMultipleAssignments());
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_FALSE(asked[0].title.isEmpty());
    EXPECT_TRUE(asked[0].message.contains("could not be read")) << asked[0].message.toStdString();
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->nameField->text(), "Reading %@");
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll(), broken);
}
