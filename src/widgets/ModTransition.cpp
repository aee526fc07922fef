#include "widgets/ModTransition.h"

#include "widgets/PixelBlend.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace
{

constexpr double kEdgeSoftness = 10;
constexpr double kRimWidth = 14;
constexpr double kRimDensity = 0.45;
constexpr int kLevels = 4096;

quint32 cellHash(int u, int v)
{
    quint32 h = static_cast<quint32>(u) * 73856093u ^ static_cast<quint32>(v) * 19349663u;
    h = (h ^ (h >> 15)) * 2246822519u;
    return h ^ (h >> 13);
}

} // namespace

void ModTransition::setCenter(const QPointF &center)
{
    m_center = center;
    invalidate();
}

void ModTransition::setAngle(double radians)
{
    m_angle = radians;
    invalidate();
}

void ModTransition::prepare()
{
    const int width = size().width();
    const int height = size().height();
    const QPointF center = (m_center.x() < 0 || m_center.y() < 0) ? QPointF(width / 2.0, height / 2.0) : m_center;
    const double cell = std::max(36.0, std::min(width, height) / 4.5);
    const double rowHeight = cell * 0.7; // the pattern is squeezed across its rows
    const double cosine = std::cos(m_angle);
    const double sine = std::sin(m_angle);

    std::vector<quint16> levels(static_cast<size_t>(width) * static_cast<size_t>(height));
    std::array<quint32, kLevels> histogram {};
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double px = x + 0.5 - center.x();
            const double py = y + 0.5 - center.y();
            const double u = px * cosine + py * sine;
            const double v = -px * sine + py * cosine;
            const double rowPosition = v / rowHeight;
            const int rowIndex = static_cast<int>(std::floor(rowPosition));
            // Alternate rows are shifted by half a cell, like bricks.
            const double columnPosition = u / cell + (rowIndex & 1 ? 0.5 : 0.0);
            const int columnIndex = static_cast<int>(std::floor(columnPosition));
            const double lu = columnPosition - columnIndex - 0.5;
            const double lv = rowPosition - rowIndex - 0.5;
            const quint32 hash = cellHash(columnIndex, rowIndex);
            const double delay = (hash & 0xFF) / 255.0 * 0.5;
            const double skew = (((hash >> 8) & 0xFF) / 127.5 - 1.0) * 2.2;
            const double distance
                = std::sqrt(lu * lu + lv * lv) * 1.1 + std::max(std::abs(lu), std::abs(lv)) * 0.5 + skew * lu * lv;
            const double opening = std::clamp((std::max(0.0, distance) + delay) / 1.45, 0.0, 1.0);
            const auto level = static_cast<quint16>(opening * (kLevels - 1));
            levels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)] = level;
            ++histogram[level];
        }
    }
    // Spread the opening moments evenly so the holes grow at a steady pace.
    std::array<uchar, kLevels> equalised {};
    const double total = std::max<double>(1, static_cast<double>(levels.size()));
    quint64 below = 0;
    for (int level = 0; level < kLevels; ++level) {
        equalised[static_cast<size_t>(level)]
            = static_cast<uchar>(std::min(255.0, (below + histogram[static_cast<size_t>(level)] / 2.0) / total * 256));
        below += histogram[static_cast<size_t>(level)];
    }
    m_field = QImage(width, height, QImage::Format_Grayscale8);
    for (int y = 0; y < height; ++y) {
        uchar *line = m_field.scanLine(y);
        for (int x = 0; x < width; ++x)
            line[x] = equalised[levels[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)]];
    }
}

void ModTransition::render(double time, QImage &output)
{
    const double level = time * (256 + std::max(kEdgeSoftness, kRimWidth));
    std::array<quint32, 256> reveal {};
    std::array<quint32, 256> rim {};
    for (int m = 0; m < 256; ++m) {
        reveal[static_cast<size_t>(m)] = PixelBlend::weightFor((level - m) / kEdgeSoftness);
        // A dark rim runs round each hole, on the old view just outside it.
        const double distance = m - level;
        const double darkness
            = distance >= 0 && distance < kRimWidth && level > 0 ? kRimDensity * (1 - distance / kRimWidth) : 0.0;
        rim[static_cast<size_t>(m)] = 256 - PixelBlend::weightFor(darkness);
    }

    const int width = output.width();
    for (int y = 0; y < output.height(); ++y) {
        const quint32 *from = row(inputImage(), y);
        const quint32 *to = row(inputTargetImage(), y);
        quint32 *out = row(output, y);
        const uchar *field = m_field.constScanLine(y);
        for (int x = 0; x < width; ++x) {
            const uchar m = field[x];
            const quint32 weight = reveal[m];
            quint32 pixel = weight == 0 ? from[x] : weight == 256 ? to[x] : PixelBlend::mix(from[x], to[x], weight);
            const quint32 shade = rim[m];
            if (shade != 256)
                pixel = PixelBlend::darken(pixel, shade);
            out[x] = pixel;
        }
    }
}
