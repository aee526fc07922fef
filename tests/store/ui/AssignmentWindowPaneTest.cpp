#include "TestEnvironment.h"
#include "support/CourseRecords.h"

#include "platform/ColorString.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/MainWindowSettings.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/ui/AssignmentWindowPane.h"
#include "store/ui/ColorWell.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QPushButton>
#include <gtest/gtest.h>

using namespace PreferenceKeys;

namespace {

QVariantMap entry(const QString &identifier, qint64 width)
{
    return {{QStringLiteral("Identifier"), identifier}, {QStringLiteral("Width"), width}};
}

using CourseRecords::course;
using AssignmentWindowPaneTest = CourseRecords::DataFolderTest;

} // namespace

TEST_F(AssignmentWindowPaneTest, ColumnBoxesWriteTheColumnsAndKeepTheWidthsOfThoseThatStay)
{
    AssignmentWindowPane pane;
    EXPECT_TRUE(pane.columnBox(QStringLiteral("Course"))->isChecked());
    EXPECT_FALSE(pane.columnBox(QStringLiteral("Grade"))->isChecked());

    pane.columnBox(QStringLiteral("Grade"))->click();
    pane.columnBox(QStringLiteral("Days Left"))->click();
    pane.columnBox(QStringLiteral("Date"))->click();
    EXPECT_EQ(UserDefaults().object(UserColumns).toStringList(),
              (QStringList{QStringLiteral("Completed"), QStringLiteral("Name"), QStringLiteral("Days Left"),
                           QStringLiteral("Course"), QStringLiteral("Grade")}));
    EXPECT_EQ(UserDefaults().array(UserColumnsOrdering),
              (QVariantList{entry(QStringLiteral("Completed"), 20), entry(QStringLiteral("Name"), 227),
                            entry(QStringLiteral("Course"), 107), entry(QStringLiteral("Grade"), 100),
                            entry(QStringLiteral("Days Left"), 30)}));

    pane.findChild<QPushButton *>(QStringLiteral("resetColumns"))->click();
    EXPECT_EQ(UserDefaults().array(UserColumnsOrdering),
              (QVariantList{entry(QStringLiteral("Completed"), 20), entry(QStringLiteral("Date"), 208),
                            entry(QStringLiteral("Name"), 227), entry(QStringLiteral("Course"), 107)}));
    EXPECT_TRUE(pane.columnBox(QStringLiteral("Date"))->isChecked());
    EXPECT_FALSE(pane.columnBox(QStringLiteral("Grade"))->isChecked());
}

TEST_F(AssignmentWindowPaneTest, AnOrderingWithDuplicatesOrStrangersIsCleanedWhenSaved)
{
    const QVariantList messy{entry(QStringLiteral("Name"), 50), entry(QStringLiteral("Bogus"), 10),
                             entry(QStringLiteral("Name"), 90), QVariantMap{{QStringLiteral("Identifier"), QStringLiteral("Date")}}};
    EXPECT_EQ(MainWindowSettings::orderingFor({QStringLiteral("Name"), QStringLiteral("Date")}, messy),
              (QVariantList{entry(QStringLiteral("Name"), 50), entry(QStringLiteral("Date"), 100)}));
}

TEST_F(AssignmentWindowPaneTest, WellsStoreTheExactColourTextAndUntouchedWellsKeepTheirs)
{
    AssignmentWindowPane pane;
    ColorWell *allOthers = pane.well(ColorKeys::AllOthers);
    ColorWell *completed = pane.well(ColorKeys::Completed);
    ASSERT_NE(allOthers, nullptr);
    EXPECT_EQ(allOthers->colorText(), ColorString::black());
    EXPECT_EQ(allOthers->color(), QColor(Qt::black));
    EXPECT_EQ(pane.well(ColorKeys::PastDue)->colorText(), ColorString::fromComponents(0.8, 0, 0, 1));

    completed->chooseColor(QColor(51, 102, 153));
    EXPECT_EQ(MainWindowSettings::colorText(ColorKeys::Completed),
              QStringLiteral("NSCalibratedRGBColorSpace 0.2 0.4 0.6 1"));
    // The grey-scale black of "All Others" was not rewritten.
    EXPECT_EQ(MainWindowSettings::colorText(ColorKeys::AllOthers), QStringLiteral("NSCalibratedWhiteColorSpace 0 1"));
    pane.well(ColorKeys::DueToday)->chooseColor(QColor(255, 0, 0, 128));
    EXPECT_EQ(MainWindowSettings::colorText(ColorKeys::DueToday),
              QStringLiteral("NSCalibratedRGBColorSpace 1 0 0 ") + QString::number(128 / 255.0, 'g', 6));

    // With nothing stored the two fixed wells still show their colours; categories show none.
    UserDefaults().set(Colors, QVariantMap());
    AssignmentWindowPane bare;
    EXPECT_TRUE(bare.well(ColorKeys::AllOthers)->colorText().isNull());
    EXPECT_EQ(bare.well(ColorKeys::AllOthers)->color(), QColor(Qt::black));
    EXPECT_EQ(bare.well(ColorKeys::Completed)->color(), QColor::fromRgbF(0, 0.6f, 0));
    EXPECT_FALSE(bare.well(ColorKeys::PastDue)->color().isValid());
}

TEST_F(AssignmentWindowPaneTest, CategoryRowsFollowTheFormatUpToTwentyAndShareColoursByName)
{
    QVariantList combined;
    for (int i = 1; i <= 25; ++i)
        combined.append(course(QStringLiteral("Course %1").arg(i)));
    combined[0] = course(QStringLiteral("Lab"), {{CourseKeys::Types, QStringList{QStringLiteral("Lab"), QStringLiteral("Quiz")}}});
    combined[1] = course(QStringLiteral("Art"), {{CourseKeys::Types, QStringList{QStringLiteral("Quiz")}}});
    ASSERT_TRUE(PropertyList::writeFile(Paths::coursesFile(), combined));
    ASSERT_TRUE(PropertyList::writeFile(Paths::universalTypesFile(), QVariantList{QStringLiteral("Exam")}));

    AssignmentWindowPane pane;
    EXPECT_EQ(pane.shownCategoryRows(), 4);
    const int dueDateHeight = pane.getViewSize();
    auto *format = pane.findChild<QComboBox *>(QStringLiteral("colorFormat"));

    format->setCurrentIndex(MainWindowSettings::ByCourse);
    EXPECT_EQ(UserDefaults().integer(ColorFormat), 1);
    EXPECT_EQ(pane.shownCategoryRows(), 20);
    EXPECT_GT(pane.getViewSize(), dueDateHeight);
    EXPECT_NE(pane.well(QStringLiteral("Course 20")), nullptr);
    EXPECT_EQ(pane.well(QStringLiteral("Course 21")), nullptr);
    ASSERT_NE(pane.well(QStringLiteral("Lab")), nullptr);
    EXPECT_FALSE(pane.well(QStringLiteral("Lab"))->color().isValid());
    pane.well(QStringLiteral("Lab"))->chooseColor(QColor(0, 0, 255));

    format->setCurrentIndex(MainWindowSettings::ByType);
    EXPECT_EQ(MainWindowSettings::categoryRows(MainWindowSettings::ByType),
              (QStringList{QStringLiteral("Lab"), QStringLiteral("Quiz"), QStringLiteral("Exam")}));
    EXPECT_EQ(pane.shownCategoryRows(), 3);
    // The type "Lab" shares the colour of the course "Lab".
    EXPECT_EQ(pane.well(QStringLiteral("Lab"))->color(), QColor(0, 0, 255));
    EXPECT_LT(pane.getViewSize(), dueDateHeight + 1);

    format->setCurrentIndex(MainWindowSettings::ByPriority);
    EXPECT_EQ(pane.shownCategoryRows(), 5);
    pane.well(QStringLiteral("3"))->chooseColor(QColor(0, 255, 0));
    EXPECT_EQ(MainWindowSettings::colorText(QStringLiteral("3")), QStringLiteral("NSCalibratedRGBColorSpace 0 1 0 1"));
}
