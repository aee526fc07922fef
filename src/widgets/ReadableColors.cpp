#include "widgets/ReadableColors.h"

#include <QPalette>

#include <algorithm>
#include <cmath>

namespace ReadableColors {

namespace {
double linear(float channel)
{
    return channel <= 0.04045f ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

// How far the band stands off its base, at least: enough to see on a dim screen, not enough to
// compete with the text.
constexpr float MinimumBandStep = 0.05f;
constexpr float BandSaturation = 0.25f;
constexpr float LightnessStep = 0.02f;
constexpr float GreySaturation = 0.1f;
// How much further from a dark base a surface sits than the stored shade sits below white, and the
// most it may: a surface stays a background.
constexpr float SurfaceSpread = 1.5f;
constexpr float SurfaceMaximumStep = 0.25f;

struct Hsl {
    float hue = 0, saturation = 0, lightness = 0, alpha = 1;
};

Hsl hslOf(const QColor &color)
{
    Hsl hsl;
    color.toHsl().getHslF(&hsl.hue, &hsl.saturation, &hsl.lightness, &hsl.alpha);
    hsl.hue = std::max(hsl.hue, 0.0f); // achromatic colours report -1
    return hsl;
}

// The stored colour's hue, muted, `step` lighter than the dark base: a background that keeps
// its colour without competing with the text on it.
QColor aboveBase(const Hsl &stored, const Hsl &base, float step)
{
    return QColor::fromHslF(stored.hue, std::min(stored.saturation, BandSaturation),
                            std::min(1.0f, base.lightness + step), stored.alpha)
        .toRgb();
}
} // namespace

bool isDark(const QPalette &palette)
{
    return luminance(palette.color(QPalette::Active, QPalette::Base)) < 0.2;
}

double luminance(const QColor &color)
{
    const QColor rgb = color.toRgb();
    return 0.2126 * linear(rgb.redF()) + 0.7152 * linear(rgb.greenF()) + 0.0722 * linear(rgb.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double la = luminance(a);
    const double lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

QColor text(const QColor &stored, const QColor &background)
{
    if (!stored.isValid() || luminance(background) >= 0.2 || contrast(stored, background) >= TextContrast)
        return stored;
    float hue = 0, saturation = 0, lightness = 0, alpha = 1;
    stored.toHsl().getHslF(&hue, &saturation, &lightness, &alpha);
    // A grey (black, most often) was picked as plain text on white: on a dark base it is plain text
    // there, as light as the stored one was dark, not a grey barely lighter than the background.
    if (saturation < GreySaturation)
        lightness = std::max(lightness, 1.0f - lightness - LightnessStep);
    QColor adjusted = QColor::fromHslF(hue, saturation, lightness, alpha);
    if (contrast(adjusted, background) >= TextContrast)
        return adjusted.toRgb();
    // Lighter in small steps keeps the colour recognisably the one chosen (red stays a red).
    while (lightness < 1.0f) {
        lightness = std::min(1.0f, lightness + LightnessStep);
        adjusted = QColor::fromHslF(hue, saturation, lightness, alpha);
        if (contrast(adjusted, background) >= TextContrast)
            break;
    }
    return adjusted.toRgb();
}

QColor band(const QColor &stored, const QColor &base)
{
    if (!stored.isValid())
        return stored;
    const Hsl colour = hslOf(stored);
    // The stored band sits (1 - lightness) below white; the dark band sits as far above the base.
    return aboveBase(colour, hslOf(base), std::max(MinimumBandStep, 1.0f - colour.lightness));
}

QColor surface(const QColor &stored, const QColor &base)
{
    if (!stored.isValid())
        return stored;
    const Hsl colour = hslOf(stored);
    const Hsl dark = hslOf(base);
    const float step = std::min(SurfaceMaximumStep, (1.0f - colour.lightness) * SurfaceSpread);
    if (step <= 0.0f)
        return QColor::fromHslF(dark.hue, dark.saturation, dark.lightness, colour.alpha).toRgb();
    return aboveBase(colour, dark, step);
}

QColor mirrored(const QColor &stored)
{
    if (!stored.isValid())
        return stored;
    const Hsl colour = hslOf(stored);
    return QColor::fromHslF(colour.hue, colour.saturation, 1.0f - colour.lightness, colour.alpha).toRgb();
}

} // namespace ReadableColors
