#pragma once

#include <QImage>

// Two pictures that share no pixel value, so every pixel of a frame can be told apart.
namespace TransitionImages
{

QImage oldPicture(const QSize &size = QSize(240, 150));
QImage newPicture(const QSize &size = QSize(240, 150));

// Pixels whose channels differ by more than `tolerance` anywhere.
int differingPixels(const QImage &a, const QImage &b, int tolerance = 2);
// Pixels exactly equal.
int equalPixels(const QImage &a, const QImage &b);
double meanBrightness(const QImage &image, const QRect &area = QRect());

} // namespace TransitionImages
