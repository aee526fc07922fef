#include "platform/ColorString.h"

#include <gtest/gtest.h>

TEST(ColorString, WritesComponentsAfterTheSpaceName)
{
    EXPECT_EQ(ColorString::fromComponents(0.8, 0.4, 0, 1), QStringLiteral("NSCalibratedRGBColorSpace 0.8 0.4 0 1"));
    EXPECT_EQ(ColorString::fromComponents(0.7137, 0.7529, 0.8118, 1),
              QStringLiteral("NSCalibratedRGBColorSpace 0.7137 0.7529 0.8118 1"));
}

TEST(ColorString, ReadsBackAfterSkipping25Characters)
{
    auto color = ColorString::toColor(QStringLiteral("NSCalibratedRGBColorSpace 0 0.6 0 1"));
    ASSERT_TRUE(color);
    EXPECT_NEAR(color->greenF(), 0.6, 1e-4);
    EXPECT_NEAR(color->redF(), 0.0, 1e-4);
    EXPECT_NEAR(color->alphaF(), 1.0, 1e-4);
}

TEST(ColorString, GreyScaleBlackReadsAsOpaqueBlack)
{
    auto color = ColorString::toColor(ColorString::black());
    ASSERT_TRUE(color);
    EXPECT_EQ(color->rgba(), QColor(0, 0, 0, 255).rgba());
}

TEST(ColorString, MissingAlphaIsOneAndAFailedScanStopsTheRest)
{
    auto color = ColorString::toColor(QStringLiteral("NSCalibratedRGBColorSpace 1 0.5"));
    ASSERT_TRUE(color);
    EXPECT_NEAR(color->redF(), 1.0, 1e-4);
    EXPECT_NEAR(color->greenF(), 0.5, 1e-4);
    EXPECT_NEAR(color->alphaF(), 1.0, 1e-4);

    auto broken = ColorString::toColor(QStringLiteral("NSCalibratedRGBColorSpace 1 x 1 0.5"));
    ASSERT_TRUE(broken);
    EXPECT_NEAR(broken->redF(), 1.0, 1e-4);
    EXPECT_NEAR(broken->blueF(), 0.0, 1e-4);
    EXPECT_NEAR(broken->alphaF(), 1.0, 1e-4);

    EXPECT_FALSE(ColorString::toColor(QString()));
}
