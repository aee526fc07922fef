#include "calculators/FinalsRequirement.h"
#include "calculators/ui/FinalsCalculator.h"
#include "calculators/ui/GPACalculator.h"

#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

TEST(GPACalculatorWindow, TypedGradesAverageAndTheGridGrowsDownward)
{
    GPACalculator *calculator = GPACalculator::sharedController();
    EXPECT_EQ(calculator, GPACalculator::sharedController());
    calculator->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(calculator));
    EXPECT_EQ(calculator->accessibleName(), "GPA Calculator");
    EXPECT_EQ(calculator->display()->text(), "GPA: 0.0");
    ASSERT_EQ(calculator->cells().size(), GPACalculator::Columns * GPACalculator::InitialRows);

    QTest::keyClicks(calculator->cells().at(0), "A");
    QTest::keyClicks(calculator->cells().at(1), "b+");
    QTest::keyClicks(calculator->cells().at(2), "C-");
    EXPECT_EQ(calculator->display()->text(), "GPA: 3.0");
    EXPECT_EQ(calculator->findChild<QLabel *>("GPADisplay"), calculator->display());

    const QRect before = calculator->geometry();
    const int displayGap = before.height() - calculator->display()->geometry().bottom();
    const int cellsBefore = int(calculator->cells().size());
    for (int i = 3; i < cellsBefore; ++i)
        calculator->cells().at(i)->setText("4");
    // Filling the last empty cell appended a row; the top edge stayed, the bottom moved down.
    EXPECT_EQ(calculator->cells().size(), cellsBefore + GPACalculator::Columns);
    const QRect after = calculator->geometry();
    EXPECT_EQ(after.top(), before.top());
    EXPECT_GT(after.height(), before.height());
    EXPECT_EQ(after.height() - before.height(),
              calculator->cells().last()->geometry().bottom() - calculator->cells().at(cellsBefore - 1)->geometry().bottom());
    EXPECT_LE(calculator->grid()->geometry().bottom(), calculator->display()->geometry().top());
    // The result line keeps its distance from the bottom edge.
    EXPECT_EQ(after.height() - calculator->display()->geometry().bottom(), displayGap);
    for (const QLineEdit *cell : calculator->cells())
        EXPECT_FALSE(cell->accessibleName().isEmpty());

    // Closing forgets everything: one empty row and a zero.
    calculator->close();
    EXPECT_EQ(calculator->cells().size(), GPACalculator::Columns);
    EXPECT_EQ(calculator->display()->text(), "GPA: 0.0");
    EXPECT_EQ(calculator->geometry().top(), before.top());
    calculator->show();
    for (const QLineEdit *cell : calculator->cells())
        EXPECT_TRUE(cell->text().isEmpty());
    calculator->close();
}

TEST(FinalsCalculatorWindow, ResultsShowAndHideWithTheTwoSizes)
{
    FinalsCalculator *calculator = FinalsCalculator::sharedController();
    EXPECT_EQ(calculator, FinalsCalculator::sharedController());
    calculator->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(calculator));
    EXPECT_EQ(calculator->size(), FinalsCalculator::CompactSize);
    EXPECT_FALSE(calculator->finalsBox()->isVisible());
    const QRect compact = calculator->geometry();

    QTest::keyClicks(calculator->gradeField(), "85");
    QTest::keyClicks(calculator->percentageField(), "20");
    QTest::mouseClick(calculator->findChild<QPushButton *>("calculateButton"), Qt::LeftButton);
    EXPECT_TRUE(calculator->finalsBox()->isVisible());
    const auto fields = calculator->resultFields();
    ASSERT_EQ(fields.size(), 6);
    EXPECT_EQ(fields.at(0)->objectName(), "Finals100");
    const QStringList expected = *FinalsRequirement::sentences("85", "20");
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(fields.at(i)->text(), expected.at(i));
    EXPECT_EQ(fields.at(3)->text(), "For a 70% in the class, you need a 10% on the final.");
    QTRY_COMPARE(calculator->size(), FinalsCalculator::FullSize);
    // The top-right corner stays where it was.
    EXPECT_EQ(calculator->geometry().topRight(), compact.topRight());

    // An emptied weight hides the results and shrinks the window, whatever stood there before.
    calculator->percentageField()->clear();
    QTest::keyClick(calculator->gradeField(), Qt::Key_Return);
    EXPECT_FALSE(calculator->finalsBox()->isVisible());
    QTRY_COMPARE(calculator->size(), FinalsCalculator::CompactSize);
    EXPECT_EQ(calculator->geometry().topRight(), compact.topRight());

    QTest::keyClicks(calculator->percentageField(), "50");
    calculator->calculateFinals();
    QTRY_COMPARE(calculator->size(), FinalsCalculator::FullSize);
    QTest::mouseClick(calculator->findChild<QPushButton *>("clearButton"), Qt::LeftButton);
    EXPECT_TRUE(calculator->gradeField()->text().isEmpty());
    EXPECT_TRUE(calculator->percentageField()->text().isEmpty());
    EXPECT_FALSE(calculator->finalsBox()->isVisible());
    QTRY_COMPARE(calculator->size(), FinalsCalculator::CompactSize);
    calculator->close();
}
