#include "exchange/ICalExport.h"
#include "exchange/ui/ExportToiCal.h"
#include "platform/Paths.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "store/PreferenceKeys.h"
#include "support/TestEnvironment.h"

#include <QDialog>
#include <QFileInfo>
#include <QPointer>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTest>
#include <gtest/gtest.h>

namespace {

class ExportToiCalWindow : public testing::Test
{
protected:
    void SetUp() override
    {
        ICalExport::resetCountersForTest();
        m_window.resize(700, 500);
        m_window.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&m_window));
    }
    void setAdvanced(bool on)
    {
        UserDefaults().set(PreferenceKeys::General, QVariantMap{{"Display Advanced iCal Settings", on}});
    }
    QMainWindow m_window;
};

AssignmentList sample()
{
    return {Assignments::make({{"Name", "Ch. 3"}, {"Course", "Math"}, {"Date", "2026-12-01 00:00:00 -0500"}}),
            Assignments::make({{"Name", "Lab"}, {"Completed", true}})};
}

} // namespace

TEST_F(ExportToiCalWindow, TheDirectPathExportsEventsUnderAProgressSheet)
{
    QPointer<ExportToiCal> exporter = new ExportToiCal(&m_window);
    QSignalSpy finished(exporter.data(), &ExportToiCal::exportFinished);
    AssignmentList list = sample();
    exporter->exportAssignments(list);
    ASSERT_TRUE(exporter->progressSheet());
    EXPECT_TRUE(exporter->progressSheet()->isVisible());
    EXPECT_EQ(exporter->progressSheet()->windowModality(), Qt::WindowModal);
    EXPECT_EQ(exporter->exportName(), "%n");
    EXPECT_EQ(exporter->exportFormat(), "Events");
    EXPECT_FALSE(exporter->exportSheet());
    // A change to the main list after the start does not reach the export.
    list.clear();

    ASSERT_TRUE(finished.wait(5000));
    QTRY_VERIFY(exporter.isNull()); // the controller goes once its work is done
    const QByteArray text = TestEnvironment::readFile(Paths::iCalExportFile());
    EXPECT_TRUE(text.contains("SUMMARY:Ch. 3\n"));
    EXPECT_TRUE(text.contains("SUMMARY:Lab\nDESCRIPTION:Name: Lab\\n\nUID:2\n"));
    EXPECT_EQ(Workspace::takeOpened().size(), 1);
    EXPECT_TRUE(m_window.findChildren<QDialog *>().isEmpty());
}

TEST_F(ExportToiCalWindow, TheSettingsSheetShowsTheLabelsAndExportsToDosInItsFormat)
{
    setAdvanced(true);
    UserDefaults().set(PreferenceKeys::Labels, QVariantMap{{"Course", "Class"}, {"Completed", "Done"}});
    QPointer<ExportToiCal> exporter = new ExportToiCal(&m_window);
    exporter->exportAssignments(sample());
    QDialog *sheet = exporter->exportSheet();
    ASSERT_TRUE(sheet);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_FALSE(exporter->progressSheet());
    EXPECT_EQ(sheet->findChild<QLabel *>("courseLabel")->text(), "Class");
    EXPECT_EQ(sheet->findChild<QLabel *>("textbookLabel")->text(), "Textbook");
    EXPECT_EQ(sheet->findChild<QLabel *>("completedLabel")->text(), "Done");
    for (QWidget *child : sheet->findChildren<QWidget *>())
        EXPECT_FALSE(child->accessibleName().isEmpty()) << child->objectName().toStdString();

    auto *format = sheet->findChild<QLineEdit *>("exportCustomName");
    format->clear();
    QTest::keyClicks(format, "%c: %n (%a)");
    QTest::mouseClick(sheet->findChild<QRadioButton *>("exportToDos"), Qt::LeftButton);
    QSignalSpy finished(exporter.data(), &ExportToiCal::exportFinished);
    QTest::mouseClick(sheet->findChild<QPushButton *>("exportButton"), Qt::LeftButton);
    EXPECT_EQ(exporter->exportFormat(), "ToDos");
    ASSERT_TRUE(finished.wait(5000));
    const QByteArray text = TestEnvironment::readFile(Paths::iCalExportFile());
    EXPECT_TRUE(text.contains("BEGIN:VTODO\nDUE;VALUE=DATE:20261201\nSUMMARY:Math: Ch. 3 (Incomplete)\n"));
    EXPECT_TRUE(text.contains("BEGIN:VTODO\nSTATUS:COMPLETED\nCOMPLETED:20261122\nDUE;VALUE=DATE:20261122\n"
                              "SUMMARY:: Lab (Complete)\n"));
    QTRY_VERIFY(exporter.isNull());
}

TEST_F(ExportToiCalWindow, CancelExportsNothingAndNeitherRadioGivesAnEmptyCalendar)
{
    setAdvanced(true);
    QPointer<ExportToiCal> exporter = new ExportToiCal(&m_window);
    exporter->exportAssignments(sample());
    QTest::mouseClick(exporter->exportSheet()->findChild<QPushButton *>("cancelButton"), Qt::LeftButton);
    QTRY_VERIFY(exporter.isNull());
    EXPECT_FALSE(QFileInfo::exists(Paths::iCalExportFile()));
    EXPECT_TRUE(Workspace::takeOpened().isEmpty());

    exporter = new ExportToiCal(&m_window);
    exporter->exportAssignments(sample());
    for (const char *name : {"exportEvents", "exportToDos"}) {
        auto *radio = exporter->exportSheet()->findChild<QRadioButton *>(name);
        radio->setAutoExclusive(false);
        radio->setChecked(false);
    }
    QSignalSpy finished(exporter.data(), &ExportToiCal::exportFinished);
    QTest::mouseClick(exporter->exportSheet()->findChild<QPushButton *>("exportButton"), Qt::LeftButton);
    ASSERT_TRUE(finished.wait(5000));
    EXPECT_EQ(TestEnvironment::readFile(Paths::iCalExportFile()),
              ICalExport("%n", QString()).fileText({}, QDate(2026, 11, 22)));
    EXPECT_EQ(Workspace::takeOpened().size(), 1);
}
