#include "calculators/FinalsRequirement.h"

#include <gtest/gtest.h>

using FinalsRequirement::sentences;

TEST(FinalsRequirement, ExactlyOneHundredStillNeedsAndExactlyZeroIsGuaranteed)
{
    EXPECT_EQ(sentences("100", "50"),
              (QStringList{"For a 100% in the class, you need a 100% on the final.",
                           "For a 90% in the class, you need a 80% on the final.",
                           "For a 80% in the class, you need a 60% on the final.",
                           "For a 70% in the class, you need a 40% on the final.",
                           "For a 60% in the class, you need a 20% on the final.",
                           "You are guaranteed a 50% in the class."}));
}

TEST(FinalsRequirement, InputsAreLeadingIntegersAndEmptyShowsNothing)
{
    EXPECT_EQ(FinalsRequirement::leadingInteger("89.9"), 89);
    EXPECT_EQ(FinalsRequirement::leadingInteger(" 12x"), 12);
    EXPECT_EQ(FinalsRequirement::leadingInteger("abc"), 0);
    EXPECT_EQ(FinalsRequirement::leadingInteger("-7"), -7);
    EXPECT_EQ(FinalsRequirement::leadingInteger("99999999999"), INT_MAX);
    EXPECT_EQ(sentences("89.9", "20.5"), sentences("89", "20"));
    EXPECT_FALSE(sentences("", "20"));
    EXPECT_FALSE(sentences("85", ""));
    // Rounded to a whole number: (90 - 67.2) / 0.2 = 114 -> impossible; 80 needs 64.
    EXPECT_EQ(sentences("84", "20")->at(2), "For a 80% in the class, you need a 64% on the final.");
    EXPECT_EQ(sentences("83", "30")->at(2), "For a 80% in the class, you need a 73% on the final.");
}

TEST(FinalsRequirement, AWeightOfZeroDividesByZero)
{
    const auto result = sentences("80", "0");
    ASSERT_TRUE(result);
    EXPECT_EQ(result->at(0), "It is impossible for you to get a 100% in the class.");
    EXPECT_EQ(result->at(1), "It is impossible for you to get a 90% in the class.");
    EXPECT_EQ(result->at(2), "For a 80% in the class, you need a NaN% on the final.");
    EXPECT_EQ(result->at(3), "You are guaranteed a 70% in the class.");
    // Text without a number reads as a weight of zero too.
    EXPECT_EQ(sentences("80", "none"), result);
}
