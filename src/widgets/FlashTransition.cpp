#include "widgets/FlashTransition.h"

#include "widgets/PixelBlend.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace
{

// |value| to an even power, by squaring: the rays are thin peaks of a cosine.
double power(double value, int exponent)
{
    const double square = value * value;
    double result = 1;
    for (int i = 0; i < exponent / 2; ++i)
        result *= square;
    return result;
}

} // namespace

void FlashTransition::setCenter(const QPointF &center)
{
    m_center = center;
    invalidate();
}

void FlashTransition::setExtent(const QRectF &extent)
{
    m_extent = extent;
    invalidate();
}

void FlashTransition::setColor(const QColor &color)
{
    m_color = color;
    invalidate();
}

void FlashTransition::prepare()
{
    const QSize pictureSize = size();
    if (!m_extent.isValid())
        m_extent = QRectF(QPointF(0, 0), QSizeF(pictureSize));
    if (m_center.x() < 0 || m_center.y() < 0)
        m_center = m_extent.center();
    // Half resolution is plenty for soft light and keeps the set-up short.
    m_flareWidth = (pictureSize.width() + 1) / 2;
    const int flareHeight = (pictureSize.height() + 1) / 2;
    m_flare.assign(static_cast<size_t>(m_flareWidth) * static_cast<size_t>(flareHeight), 0);
    const double reach = std::max(1.0, std::hypot(m_extent.width(), m_extent.height()) / 2);
    // Lifts the faint parts of the flare so its edge is soft: light^0.7 as a grey level.
    std::array<uchar, 1024> levels {};
    for (size_t i = 0; i < levels.size(); ++i)
        levels[i] = static_cast<uchar>(std::lround(std::pow(i / 1023.0, 0.7) * 255));
    for (int hy = 0; hy < flareHeight; ++hy) {
        for (int hx = 0; hx < m_flareWidth; ++hx) {
            const double dx = hx * 2 + 1 - m_center.x();
            const double dy = hy * 2 + 1 - m_center.y();
            const double r = std::hypot(dx, dy) / reach;
            const double angle = std::atan2(dy, dx);
            // Three sets of thin rays of different counts make an irregular star.
            const double rays = 0.55 * power(std::cos(6 * angle), 10) + 0.45 * power(std::cos(9 * angle + 0.6), 16)
                + 0.3 * power(std::cos(17 * angle + 1.3), 24);
            const double light = std::clamp(std::exp(-2.2 * r) * (0.55 + 0.9 * rays), 0.0, 1.0);
            m_flare[static_cast<size_t>(hy) * static_cast<size_t>(m_flareWidth) + static_cast<size_t>(hx)]
                = levels[static_cast<size_t>(light * 1023)];
        }
    }
}

void FlashTransition::render(double time, QImage &output)
{
    // The flare grows to cover everything at the middle of the switch and withdraws again; the views
    // change places while the light is brightest.
    // The brightest parts of the star light up first; only around the middle does the light reach
    // the corners.
    const double peak = std::pow(std::sin(M_PI * time), 3);
    std::array<quint32, 256> light {};
    for (int level = 0; level < 256; ++level)
        light[static_cast<size_t>(level)] = PixelBlend::weightFor((level / 255.0 + 1.25 * peak - 1) * 4);
    const quint32 change = PixelBlend::weightFor((time - 0.42) / 0.16);
    const quint32 flare = qPremultiply(m_color.rgba()) | 0xFF000000u;

    const int width = output.width();
    for (int y = 0; y < output.height(); ++y) {
        const quint32 *from = row(inputImage(), y);
        const quint32 *to = row(inputTargetImage(), y);
        quint32 *out = row(output, y);
        const uchar *flareRow = m_flare.data() + static_cast<size_t>(y / 2) * static_cast<size_t>(m_flareWidth);
        if (change == 0)
            PixelBlend::copySpan(from, out, width);
        else if (change == 256)
            PixelBlend::copySpan(to, out, width);
        else
            PixelBlend::mixSpan(from, to, out, width, change);
        for (int x = 0; x < width; ++x) {
            const quint32 weight = light[flareRow[x / 2]];
            if (weight != 0)
                out[x] = PixelBlend::mix(out[x], flare, weight);
        }
    }
}
