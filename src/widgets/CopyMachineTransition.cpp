#include "widgets/CopyMachineTransition.h"

#include "widgets/PixelBlend.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr double kLampStrength = 0.95;
constexpr double kLeadingSpill = 0.35;
constexpr double kTrailingSpill = 0.25;

quint32 premultipliedOpaque(const QColor &color)
{
    return qPremultiply(color.rgba()) | 0xFF000000u;
}

} // namespace

void CopyMachineTransition::setExtent(const QRectF &extent)
{
    m_extent = extent;
    invalidate();
}

void CopyMachineTransition::setColor(const QColor &color)
{
    m_color = color;
    invalidate();
}

void CopyMachineTransition::prepare()
{
    if (!m_extent.isValid())
        m_extent = QRectF(QPointF(0, 0), QSizeF(size()));
    m_barWidth = std::max(24.0, m_extent.width() * 0.16);
    m_spill = std::max(12.0, m_barWidth * 0.45);
    m_columns.assign(static_cast<size_t>(size().width()), Column());
}

void CopyMachineTransition::render(double time, QImage &output)
{
    // The lamp's leading edge travels from a spill's width before the extent to a bar and a spill
    // past it, so the first and last frames carry no light at all.
    const double start = m_extent.left() - m_spill - 1;
    const double end = m_extent.right() + m_barWidth + m_spill + 1;
    const double leading = start + time * (end - start);

    const quint32 lamp = premultipliedOpaque(m_color);
    const int width = output.width();
    // Columns before litStart are plainly the new view, columns from litEnd on plainly the old one.
    const int litStart = std::clamp(static_cast<int>(std::ceil(leading - m_barWidth - m_spill - 0.5)), 0, width);
    const int litEnd = std::clamp(static_cast<int>(std::floor(leading + m_spill - 0.5)) + 1, litStart, width);
    for (int x = litStart; x < litEnd; ++x) {
        Column &column = m_columns[static_cast<size_t>(x)];
        const double d = x + 0.5 - leading;
        double glow = 0;
        if (d > 0) {
            column.mixWeight = 0;
            if (d < m_spill)
                glow = kLeadingSpill * std::pow(1 - d / m_spill, 2);
        } else if (d >= -m_barWidth) {
            const double v = -d / m_barWidth; // 0 at the leading edge, 1 at the trailing edge
            column.mixWeight = PixelBlend::weightFor(v * v * (3 - 2 * v));
            glow = kLampStrength * std::exp(-std::pow((v - 0.18) / 0.32, 2));
        } else {
            column.mixWeight = 256;
            const double past = -d - m_barWidth;
            if (past < m_spill)
                glow = kTrailingSpill * std::pow(1 - past / m_spill, 2);
        }
        column.glowWeight = PixelBlend::weightFor(glow);
        // The hottest part of the lamp burns toward white.
        column.glowColor = PixelBlend::mix(lamp, PixelBlend::kWhite, PixelBlend::weightFor(glow * glow * 0.8));
    }

    for (int y = 0; y < output.height(); ++y) {
        const quint32 *from = row(inputImage(), y);
        const quint32 *to = row(inputTargetImage(), y);
        quint32 *out = row(output, y);
        // Left of the lamp the copy is done, right of it the original still lies.
        PixelBlend::copySpan(to, out, litStart);
        for (int x = litStart; x < litEnd; ++x) {
            const Column &column = m_columns[static_cast<size_t>(x)];
            const quint32 base = PixelBlend::mix(from[x], to[x], column.mixWeight);
            out[x] = PixelBlend::mix(base, column.glowColor, column.glowWeight);
        }
        PixelBlend::copySpan(from + litEnd, out + litEnd, width - litEnd);
    }
}
