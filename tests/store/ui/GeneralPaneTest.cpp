#include "TestEnvironment.h"
#include "support/CourseRecords.h"

#include "platform/Alerts.h"
#include "platform/Paths.h"
#include "platform/PropertyList.h"
#include "platform/UserDefaults.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/ui/GeneralPane.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace PreferenceKeys;
using namespace PreferenceKeys::GeneralKeys;

namespace {

class GeneralPaneTest : public testing::Test
{
protected:
    void SetUp() override { Preferences::setAllDefaults(); }
    static QVariantMap general() { return UserDefaults().dictionary(General); }
};

} // namespace

TEST_F(GeneralPaneTest, SavingOnAnyChangeDropsSuperfluousVisualEffectsAndWritesTheUpdateCheck)
{
    GeneralPane pane;
    ASSERT_TRUE(general().contains(EnableSuperfluousVisualEffects));
    auto *duplicates = pane.findChild<QCheckBox *>(QStringLiteral("displayDuplicateDates"));
    ASSERT_NE(duplicates, nullptr);
    duplicates->click();

    const QVariantMap saved = general();
    EXPECT_FALSE(saved.contains(EnableSuperfluousVisualEffects));
    EXPECT_EQ(saved.value(DisplayDuplicateDates), true);
    EXPECT_EQ(saved.value(DateFormat), DateFormatLong);
    EXPECT_EQ(saved.value(MainWindowTransition).toLongLong(), 3);
    EXPECT_EQ(saved.value(DisplayWarningMessages), true);
    EXPECT_EQ(saved.value(AlternateRowColors), false);
    EXPECT_TRUE(saved.contains(HideWeekends));

    pane.findChild<QCheckBox *>(QStringLiteral("checkForUpdates"))->click();
    EXPECT_FALSE(UserDefaults().boolValue(SUCheckAtStartup));
    pane.findChild<QComboBox *>(QStringLiteral("defaultCalendarFormat"))->setCurrentIndex(2);
    EXPECT_EQ(general().value(DefaultCalendarFormat).toLongLong(), 2);
    auto *titleFormat = pane.findChild<QLineEdit *>(QStringLiteral("subprojectTitleFormat"));
    titleFormat->selectAll();
    QTest::keyClicks(titleFormat, QStringLiteral("%s"));
    EXPECT_EQ(general().value(SubprojectTitleFormat), QStringLiteral("%s"));
    // An emptied format is stored empty: subprojects then show no title.
    titleFormat->selectAll();
    QTest::keyClick(titleFormat, Qt::Key_Backspace);
    EXPECT_TRUE(general().contains(SubprojectTitleFormat));
    EXPECT_EQ(general().value(SubprojectTitleFormat), QString());
}

TEST_F(GeneralPaneTest, ResetLeavesTheTransitionAloneAndRestoresTheRest)
{
    GeneralPane pane;
    pane.findChild<QComboBox *>(QStringLiteral("mainWindowTransition"))->setCurrentIndex(6);
    pane.findChild<QComboBox *>(QStringLiteral("defaultView"))->setCurrentIndex(2);
    pane.findChild<QComboBox *>(QStringLiteral("dateEntryFormat"))->setCurrentIndex(1);
    pane.findChild<QComboBox *>(QStringLiteral("dateFormat"))->setCurrentIndex(2);
    pane.findChild<QCheckBox *>(QStringLiteral("displayWarningMessages"))->setChecked(false);
    pane.findChild<QCheckBox *>(QStringLiteral("hideWeekends"))->setChecked(true);
    pane.findChild<QCheckBox *>(QStringLiteral("checkForUpdates"))->setChecked(false);
    ASSERT_EQ(general().value(MainWindowTransition).toLongLong(), 6);

    pane.findChild<QPushButton *>(QStringLiteral("resetGeneral"))->click();
    const QVariantMap saved = general();
    EXPECT_EQ(saved.value(MainWindowTransition).toLongLong(), 6);
    EXPECT_EQ(pane.findChild<QComboBox *>(QStringLiteral("mainWindowTransition"))->currentIndex(), 6);
    EXPECT_EQ(saved.value(DefaultView).toLongLong(), 0);
    EXPECT_EQ(saved.value(DateEntryFormat).toLongLong(), 0);
    EXPECT_EQ(saved.value(DateFormat), DateFormatLong);
    EXPECT_EQ(saved.value(DisplayWarningMessages), true);
    EXPECT_EQ(saved.value(HideWeekends), false);
    EXPECT_EQ(saved.value(SubprojectTitleFormat), QStringLiteral("%p - %s"));
    EXPECT_TRUE(UserDefaults().boolValue(SUCheckAtStartup));
    EXPECT_EQ(pane.findChild<QComboBox *>(QStringLiteral("dateFormat"))->currentIndex(), 0);
}

TEST_F(GeneralPaneTest, CustomDateFormatShowsALivePreviewAndIsSaved)
{
    GeneralPane pane;
    auto *format = pane.findChild<QComboBox *>(QStringLiteral("dateFormat"));
    auto *custom = pane.findChild<QLineEdit *>(QStringLiteral("customDateFormat"));
    auto *preview = pane.findChild<QLabel *>(QStringLiteral("customDateFormatPreview"));
    EXPECT_EQ(format->itemText(0), QStringLiteral("Sunday, November 22, 2026"));
    EXPECT_EQ(format->itemText(2), QStringLiteral("11/22/26"));
    EXPECT_FALSE(custom->isEnabled());
    format->setCurrentIndex(3);
    EXPECT_TRUE(custom->isEnabled());
    // Custom starts from the format that was in use.
    EXPECT_EQ(custom->text(), DateFormatLong);
    EXPECT_EQ(general().value(DateFormat), DateFormatLong);
    EXPECT_EQ(preview->text(), QStringLiteral("Sunday, November 22, 2026"));
    custom->clear();
    QTest::keyClicks(custom, QStringLiteral("%Y-%m"));
    EXPECT_EQ(preview->text(), QStringLiteral("2026-11"));
    QTest::keyClicks(custom, QStringLiteral("-%d"));
    EXPECT_EQ(preview->text(), QStringLiteral("2026-11-22"));
    EXPECT_EQ(general().value(DateFormat), QStringLiteral("%Y-%m-%d"));

    // A custom text equal to an offered format comes back as that format.
    GeneralPane reopened;
    EXPECT_EQ(reopened.findChild<QComboBox *>(QStringLiteral("dateFormat"))->currentIndex(), 3);
    EXPECT_EQ(reopened.findChild<QLineEdit *>(QStringLiteral("customDateFormat"))->text(), QStringLiteral("%Y-%m-%d"));
}

TEST_F(GeneralPaneTest, ATransitionPastTheNamedOnesIsKeptWhenSaving)
{
    QVariantMap stored = general();
    stored.insert(MainWindowTransition, qint64(12));
    UserDefaults().set(General, stored);
    GeneralPane pane;
    EXPECT_EQ(pane.findChild<QComboBox *>(QStringLiteral("mainWindowTransition"))->currentText(), QStringLiteral("Ripple"));
    pane.findChild<QCheckBox *>(QStringLiteral("hideWeekends"))->click();
    EXPECT_EQ(general().value(MainWindowTransition).toLongLong(), 12);
    pane.findChild<QComboBox *>(QStringLiteral("mainWindowTransition"))->setCurrentIndex(0);
    EXPECT_EQ(general().value(MainWindowTransition).toLongLong(), 0);
}

TEST_F(GeneralPaneTest, LabelsNameTheViewsAndTheDoubleClickBox)
{
    QVariantMap labels = UserDefaults().dictionary(PreferenceKeys::Labels);
    labels.insert(QStringLiteral("Assignment"), QStringLiteral("Task"));
    UserDefaults().set(PreferenceKeys::Labels, labels);
    GeneralPane pane;
    auto *views = pane.findChild<QComboBox *>(QStringLiteral("defaultView"));
    EXPECT_EQ(views->itemText(0), QStringLiteral("Incomplete Tasks"));
    EXPECT_EQ(views->itemText(1), QStringLiteral("Complete Tasks"));
    EXPECT_EQ(views->itemText(2), QStringLiteral("All Tasks"));
    EXPECT_EQ(pane.findChild<QCheckBox *>(QStringLiteral("doubleClickCreates"))->text(),
              QStringLiteral("Double-clicking will create new task"));
}

TEST_F(GeneralPaneTest, DeleteAllDataAsksThenLeavesThreeEmptyArraysAndThePreferencesUntouched)
{
    QDir().mkpath(Paths::dataFolder());
    const QVariantList assignments{QVariantMap{{QStringLiteral("Name"), QStringLiteral("Essay")}}};
    const QVariantList courses{CourseRecords::course(QStringLiteral("Math"))};
    ASSERT_TRUE(PropertyList::writeFile(Paths::assignmentsFile(), assignments));
    ASSERT_TRUE(PropertyList::writeFile(Paths::coursesFile(), courses));
    ASSERT_TRUE(PropertyList::writeFile(Paths::universalTypesFile(), QVariantList{QStringLiteral("Exam")}));
    QVariantMap labels = UserDefaults().dictionary(PreferenceKeys::Labels);
    labels.insert(QStringLiteral("Course"), QStringLiteral("Class"));
    UserDefaults().set(PreferenceKeys::Labels, labels);
    GeneralPane pane;
    const QByteArray preferences = TestEnvironment::readFile(UserDefaults().path());

    Alerts::queueAnswer(QStringLiteral("Cancel"));
    pane.findChild<QPushButton *>(QStringLiteral("deleteAllData"))->click();
    EXPECT_EQ(PropertyList::readFile(Paths::assignmentsFile())->toList(), assignments);
    const QList<Alerts::Request> asked = Alerts::takeAsked();
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0].message, QStringLiteral("Delete All Data?"));
    EXPECT_EQ(asked[0].informativeText,
              QStringLiteral("Continuing will delete all Assignments, Types, Classs and Textbooks.  Are you sure you "
                             "want to do this?"));
    EXPECT_EQ(asked[0].buttons, (QStringList{QStringLiteral("Delete All Data"), QStringLiteral("Cancel")}));
    EXPECT_EQ(asked[0].style, Alerts::Style::Critical);

    Alerts::queueAnswer(QStringLiteral("Delete All Data"));
    pane.findChild<QPushButton *>(QStringLiteral("deleteAllData"))->click();
    for (const QString &path : {Paths::assignmentsFile(), Paths::coursesFile(), Paths::universalTypesFile()}) {
        const auto root = PropertyList::readFile(path);
        ASSERT_TRUE(root.has_value()) << path.toStdString();
        EXPECT_EQ(root->typeId(), QMetaType::QVariantList);
        EXPECT_TRUE(root->toList().isEmpty());
    }
    EXPECT_EQ(TestEnvironment::readFile(UserDefaults().path()), preferences);
}
