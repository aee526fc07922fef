#pragma once

#include <QColor>

class QPalette;

// Colours kept for a light background (the due-date colours, the day band) made readable on the
// desktop's dark colour scheme. Only what is drawn changes: the stored colours stay as they are, so
// switching back to a light scheme shows exactly the colours the student chose.
namespace ReadableColors {

// The contrast ratio asked of text against what is behind it (the usual 4.5 for body text).
inline constexpr double TextContrast = 4.5;

// True when the palette's base (the background of lists and fields) is dark.
bool isDark(const QPalette &palette);

// Relative luminance (0 black to 1 white) and the contrast ratio of two colours (1 to 21).
double luminance(const QColor &color);
double contrast(const QColor &a, const QColor &b);

// `stored` as it is when it reads well enough on `background`; otherwise, on a dark background,
// the same hue made lighter until it does (on a light one it is left alone: it was chosen there).
QColor text(const QColor &stored, const QColor &background);

// The day band on a dark base: a little lighter than the base, with a hint of the band's hue, as the
// stored band is a little darker than white with that hue.
QColor band(const QColor &stored, const QColor &base);

// A background chosen to sit on white (a calendar day, a pale list) on a dark base: white becomes the
// base itself and each shade below white sits that much above it (a little more, so neighbouring
// shades stay apart), in the stored hue.
QColor surface(const QColor &stored, const QColor &base);

// A light strip of its own (the filter bar's gradient) for a dark scheme: the same hue, as dark as
// the stored colour was light.
QColor mirrored(const QColor &stored);

} // namespace ReadableColors
