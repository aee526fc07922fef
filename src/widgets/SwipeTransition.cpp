#include "widgets/SwipeTransition.h"

#include "widgets/PixelBlend.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr double kSheenOpacity = 0.45;
constexpr double kMaximumAngle = 1.2; // radians either side of rightward

} // namespace

void SwipeTransition::setExtent(const QRectF &extent)
{
    m_extent = extent;
    invalidate();
}

void SwipeTransition::setAngle(double radians)
{
    m_angle = std::clamp(radians, -kMaximumAngle, kMaximumAngle);
    invalidate();
}

void SwipeTransition::prepare()
{
    if (!m_extent.isValid())
        m_extent = QRectF(QPointF(0, 0), QSizeF(size()));
    m_bandWidth = std::max(24.0, 0.22 * std::min(m_extent.width(), 1.6 * m_extent.height()));
    // Across the band: the new view at its trailing edge, the old at its leading edge, a sheen between.
    for (int i = 0; i <= kSteps; ++i) {
        const double u = static_cast<double>(i) / kSteps;
        const double eased = u * u * (3 - 2 * u);
        m_mixWeights[static_cast<size_t>(i)] = PixelBlend::weightFor(1.0 - eased);
        const double sheen = std::sin(M_PI * u);
        m_sheenWeights[static_cast<size_t>(i)] = PixelBlend::weightFor(kSheenOpacity * sheen * sheen);
    }
}

void SwipeTransition::render(double time, QImage &output)
{
    const double dx = std::cos(m_angle);
    const double dy = std::sin(m_angle);
    // Positions along the direction of travel of the extent's corners.
    const double corners[4] = { m_extent.left() * dx + m_extent.top() * dy, m_extent.right() * dx + m_extent.top() * dy,
        m_extent.left() * dx + m_extent.bottom() * dy, m_extent.right() * dx + m_extent.bottom() * dy };
    const double lowest = *std::min_element(corners, corners + 4);
    const double highest = *std::max_element(corners, corners + 4);
    // The leading edge starts on the extent's first corner and ends a band's width past its last.
    const double leading = lowest - 1 + time * (highest - lowest + m_bandWidth + 2);
    const double trailing = leading - m_bandWidth;

    const int width = output.width();
    for (int y = 0; y < output.height(); ++y) {
        const quint32 *from = row(inputImage(), y);
        const quint32 *to = row(inputTargetImage(), y);
        quint32 *out = row(output, y);
        const double offset = y * dy;
        // Columns of this row inside the band: trailing <= x*dx + offset <= leading.
        const int bandStart = std::clamp(static_cast<int>(std::ceil((trailing - offset) / dx)), 0, width);
        const int bandEnd = std::clamp(static_cast<int>(std::floor((leading - offset) / dx)) + 1, bandStart, width);
        PixelBlend::copySpan(to, out, bandStart);
        const double scale = kSteps / m_bandWidth;
        for (int x = bandStart; x < bandEnd; ++x) {
            const int step = std::clamp(static_cast<int>((x * dx + offset - trailing) * scale), 0, kSteps);
            const quint32 base = PixelBlend::mix(from[x], to[x], m_mixWeights[static_cast<size_t>(step)]);
            out[x] = PixelBlend::mix(base, PixelBlend::kWhite, m_sheenWeights[static_cast<size_t>(step)]);
        }
        PixelBlend::copySpan(from + bandEnd, out + bandEnd, width - bandEnd);
    }
}
