#include "platform/ColorString.h"

#include <gtest/gtest.h>

TEST(ColorString, WritesComponentsAfterTheSpaceName)
{
    EXPECT_EQ(ColorString::fromComponents(0.8, 0.4, 0, 1), QStringLiteral("NSCalibratedRGBColorSpace 0.8 0.4 0 1"));
    EXPECT_EQ(ColorString::fromComponents(0.7137, 0.7529, 0.8118, 1),
              QStringLiteral("NSCalibratedRGBColorSpace 0.7137 0.7529 0.8118 1"));
}

// The components are read after the 25 characters of the space name; a missing alpha is one, and a
// component that does not scan stops the rest (they stay zero, alpha one).
TEST(ColorString, ReadsBackAfterTheSpaceNameUntilAScanFails)
{
    const struct {
        const char *text;
        double red, green, blue;
    } cases[] = {{"NSCalibratedRGBColorSpace 0 0.6 0 1", 0, 0.6, 0},
                 {"NSCalibratedRGBColorSpace 1 0.5", 1, 0.5, 0},
                 {"NSCalibratedRGBColorSpace 1 x 1 0.5", 1, 0, 0}};
    for (const auto &c : cases) {
        const auto color = ColorString::toColor(QString::fromLatin1(c.text));
        ASSERT_TRUE(color) << c.text;
        EXPECT_NEAR(color->redF(), c.red, 1e-4) << c.text;
        EXPECT_NEAR(color->greenF(), c.green, 1e-4) << c.text;
        EXPECT_NEAR(color->blueF(), c.blue, 1e-4) << c.text;
        EXPECT_NEAR(color->alphaF(), 1.0, 1e-4) << c.text;
    }
    // The grey-scale black of the defaults reads as opaque black.
    const auto black = ColorString::toColor(ColorString::black());
    ASSERT_TRUE(black);
    EXPECT_EQ(black->rgba(), QColor(0, 0, 0, 255).rgba());
    EXPECT_FALSE(ColorString::toColor(QString()));
}
