#include "TestEnvironment.h"

#include "platform/UserDefaults.h"
#include "store/LabelSettings.h"
#include "store/PreferenceKeys.h"
#include "store/Preferences.h"
#include "store/ui/LabelsPane.h"
#include "store/ui/PersonalInfoPane.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

using namespace PreferenceKeys;

TEST(LabelsPane, OneFieldPerLabelInTableOrderEachChangeSavingTheWholeDictionary)
{
    Preferences::setAllDefaults();
    LabelsPane pane;
    const QStringList keys = LabelSettings::orderedKeys();
    ASSERT_EQ(keys.size(), 20);

    // Tab goes down the table.
    QWidget *next = pane.field(keys[0]);
    for (qsizetype i = 1; i < keys.size(); ++i) {
        next = next->nextInFocusChain();
        while (next->focusPolicy() == Qt::NoFocus)
            next = next->nextInFocusChain();
        EXPECT_EQ(next, pane.field(keys[i])) << keys[i].toStdString();
    }

    QLineEdit *course = pane.field(QStringLiteral("Course"));
    course->selectAll();
    QTest::keyClicks(course, QStringLiteral("Class"));
    const QVariantMap stored = UserDefaults().dictionary(PreferenceKeys::Labels);
    EXPECT_EQ(stored.size(), 20);
    EXPECT_EQ(stored.value(QStringLiteral("Course")), QStringLiteral("Class"));
    EXPECT_EQ(stored.value(QStringLiteral("Textbook")), QStringLiteral("Textbook"));

    pane.findChild<QPushButton *>(QStringLiteral("resetLabels"))->click();
    EXPECT_EQ(UserDefaults().groupValue(PreferenceKeys::Labels, QStringLiteral("Course")), QStringLiteral("Course"));
    EXPECT_EQ(course->text(), QStringLiteral("Course"));
    EXPECT_EQ(UserDefaults().dictionary(PreferenceKeys::Labels).size(), 20);
}

TEST(PersonalInfoPane, CaptionsComeFromTheLabelsAndEveryChangeSaves)
{
    Preferences::setAllDefaults();
    QVariantMap labels = UserDefaults().dictionary(PreferenceKeys::Labels);
    labels.insert(QStringLiteral("School"), QStringLiteral("College"));
    UserDefaults().set(PreferenceKeys::Labels, labels);
    PersonalInfoPane pane;
    EXPECT_EQ(pane.findChild<QLabel *>(QStringLiteral("personalStudentIDCaption"))->text(),
              QStringLiteral("Concentration:"));
    EXPECT_EQ(pane.findChild<QLabel *>(QStringLiteral("personalSchoolCaption"))->text(), QStringLiteral("College:"));
    EXPECT_EQ(pane.findChild<QLineEdit *>(QStringLiteral("personalSchool"))->accessibleName(), QStringLiteral("College"));

    QTest::keyClicks(pane.findChild<QLineEdit *>(QStringLiteral("personalStudentID")), QStringLiteral("Physics"));
    const QVariantMap info = UserDefaults().dictionary(PersonalInfo);
    EXPECT_EQ(info.value(QStringLiteral("Student ID")), QStringLiteral("Physics"));
    EXPECT_EQ(info.value(QStringLiteral("Name")), QString());
    EXPECT_EQ(info.size(), 3);
}
