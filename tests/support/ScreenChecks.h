#pragma once

#include <QColor>
#include <QImage>
#include <QRect>

class QWidget;

// What a window left open really shows: the pixels the window system holds for it, so that a
// change which never triggers a repaint is seen as missing.
namespace ScreenChecks {

// The pixels last painted for `widget`, as the window system shows them (not a fresh rendering).
QImage onScreen(QWidget *widget);

// True if some pixel of `area` in `image` lies within `tolerance` of `colour` on every channel.
bool hasPixelNear(const QImage &image, const QRect &area, const QColor &colour, int tolerance = 40);

// True if `widget` shows a pixel near `colour` anywhere on screen.
bool showsColour(QWidget *widget, const QColor &colour);

} // namespace ScreenChecks
