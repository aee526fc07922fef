#include "calculators/GradeAverage.h"

#include <gtest/gtest.h>

using GradeAverage::displayText;

TEST(GradeAverage, LettersAndNumbersAverageAsTheyShould)
{
    EXPECT_EQ(displayText({"A", "b+", "C-"}), "GPA: 3.0");
    EXPECT_EQ(displayText({"A", "F"}), "GPA: 2.0");
    EXPECT_EQ(displayText({"A", "0"}), "GPA: 4.0");
    EXPECT_EQ(displayText({"A", "0.0", ""}), "GPA: 4.0");
    EXPECT_EQ(displayText({"3.7", "a"}), "GPA: 3.85");
    EXPECT_EQ(displayText({"A", "A", "B"}), "GPA: 3.667");
    EXPECT_EQ(displayText({"95", "-2"}), "GPA: 46.5");
    EXPECT_EQ(displayText({"a-", "d-"}), "GPA: 2.167");
    // Cells are read in order, empties skipped wherever they stand.
    EXPECT_EQ(displayText({"", "B", "", "", "c"}), "GPA: 2.5");
}

TEST(GradeAverage, NothingCountedShowsZero)
{
    EXPECT_EQ(displayText({}), "GPA: 0.0");
    EXPECT_EQ(displayText({"", "", ""}), "GPA: 0.0");
    EXPECT_EQ(displayText({"E", "A+ ", " A", "AA", "a++", "nan", "0", "f-"}), "GPA: 0.0");
}

TEST(GradeAverage, LeadingNumbersAndThePattern)
{
    EXPECT_EQ(GradeAverage::leadingNumber("3.5 credits"), 3.5);
    EXPECT_EQ(GradeAverage::leadingNumber("  -2"), -2);
    EXPECT_EQ(GradeAverage::leadingNumber(".5"), 0.5);
    EXPECT_EQ(GradeAverage::leadingNumber("4."), 4);
    EXPECT_EQ(GradeAverage::leadingNumber("1e2x"), 100);
    EXPECT_EQ(GradeAverage::leadingNumber("B+"), 0);
    EXPECT_EQ(GradeAverage::leadingNumber("+"), 0);
    EXPECT_EQ(GradeAverage::leadingNumber("3,5"), 3); // a comma is never a decimal point here

    EXPECT_EQ(GradeAverage::formatMean(4), "4.0");
    EXPECT_EQ(GradeAverage::formatMean(3.5), "3.5");
    EXPECT_EQ(GradeAverage::formatMean(11.0 / 3), "3.667");
    EXPECT_EQ(GradeAverage::formatMean(2.0004), "2.0");
    EXPECT_EQ(GradeAverage::formatMean(0.25), "0.25");
    EXPECT_EQ(GradeAverage::formatMean(123.4567), "123.457");
}
