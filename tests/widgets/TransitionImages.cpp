#include "TransitionImages.h"

#include <QPainter>

#include <cstdlib>

namespace TransitionImages
{

QImage oldPicture(const QSize &size)
{
    // Blue and pale blue stripes: no red at all.
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x)
            line[x] = (x / 12) % 2 ? qRgb(0, 60 + (y % 50), 170) : qRgb(0, 150, 220 - (x % 30));
    }
    return image;
}

QImage newPicture(const QSize &size)
{
    // An orange and olive checkerboard: red everywhere, never pure blue.
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x)
            line[x] = ((x / 16) + (y / 16)) % 2 ? qRgb(230, 120 + (x % 40), 30) : qRgb(120, 110, 20 + (y % 40));
    }
    return image;
}

int differingPixels(const QImage &a, const QImage &b, int tolerance)
{
    const QImage first = a.convertToFormat(QImage::Format_RGB32);
    const QImage second = b.convertToFormat(QImage::Format_RGB32);
    if (first.size() != second.size())
        return -1;
    int count = 0;
    for (int y = 0; y < first.height(); ++y) {
        const auto *p = reinterpret_cast<const QRgb *>(first.constScanLine(y));
        const auto *q = reinterpret_cast<const QRgb *>(second.constScanLine(y));
        for (int x = 0; x < first.width(); ++x) {
            if (std::abs(qRed(p[x]) - qRed(q[x])) > tolerance || std::abs(qGreen(p[x]) - qGreen(q[x])) > tolerance
                || std::abs(qBlue(p[x]) - qBlue(q[x])) > tolerance)
                ++count;
        }
    }
    return count;
}

int equalPixels(const QImage &a, const QImage &b)
{
    const QImage first = a.convertToFormat(QImage::Format_RGB32);
    const QImage second = b.convertToFormat(QImage::Format_RGB32);
    int count = 0;
    for (int y = 0; y < std::min(first.height(), second.height()); ++y) {
        const auto *p = reinterpret_cast<const QRgb *>(first.constScanLine(y));
        const auto *q = reinterpret_cast<const QRgb *>(second.constScanLine(y));
        for (int x = 0; x < std::min(first.width(), second.width()); ++x)
            count += (p[x] & 0xFFFFFF) == (q[x] & 0xFFFFFF);
    }
    return count;
}

double meanBrightness(const QImage &image, const QRect &area)
{
    const QImage rgb = image.convertToFormat(QImage::Format_RGB32);
    const QRect region = area.isNull() ? rgb.rect() : area.intersected(rgb.rect());
    double sum = 0;
    for (int y = region.top(); y <= region.bottom(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(rgb.constScanLine(y));
        for (int x = region.left(); x <= region.right(); ++x)
            sum += (qRed(line[x]) + qGreen(line[x]) + qBlue(line[x])) / 3.0;
    }
    return region.isEmpty() ? 0 : sum / (region.width() * region.height());
}

} // namespace TransitionImages
