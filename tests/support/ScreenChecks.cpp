#include "ScreenChecks.h"

#include <QScreen>
#include <QWidget>

#include <cstdlib>

namespace ScreenChecks {

QImage onScreen(QWidget *widget)
{
    QWidget *top = widget->window();
    const QImage shot = top->screen()->grabWindow(top->winId()).toImage();
    return shot.copy(QRect(widget->mapTo(top, QPoint(0, 0)), widget->size()));
}

bool hasPixelNear(const QImage &image, const QRect &area, const QColor &colour, int tolerance)
{
    const QRect inside = area.intersected(image.rect());
    for (int y = inside.top(); y <= inside.bottom(); ++y)
        for (int x = inside.left(); x <= inside.right(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (std::abs(pixel.red() - colour.red()) <= tolerance
                && std::abs(pixel.green() - colour.green()) <= tolerance
                && std::abs(pixel.blue() - colour.blue()) <= tolerance)
                return true;
        }
    return false;
}

bool showsColour(QWidget *widget, const QColor &colour)
{
    const QImage image = onScreen(widget);
    return hasPixelNear(image, image.rect(), colour);
}

} // namespace ScreenChecks
