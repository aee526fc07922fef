#include "widgets/RippleTransition.h"

#include "widgets/PixelBlend.h"
#include "widgets/TransitionArtwork.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr double kRefraction = 0.45; // of the wave's half width
constexpr double kCrestBlend = 0.12; // where old and new meet under the crest

} // namespace

void RippleTransition::setCenter(const QPointF &center)
{
    m_center = center;
    invalidate();
}

void RippleTransition::setExtent(const QRectF &extent)
{
    m_extent = extent;
    invalidate();
}

void RippleTransition::setShadingImage(const QImage &shading)
{
    m_shading = shading;
    invalidate();
}

void RippleTransition::prepare()
{
    if (!m_extent.isValid())
        m_extent = QRectF(QPointF(0, 0), QSizeF(size()));
    if (m_center.x() < 0 || m_center.y() < 0)
        m_center = m_extent.center();
    m_waveWidth = std::max(10.0, std::hypot(m_extent.width(), m_extent.height()) * 0.045);
    m_reach = 0;
    for (const QPointF &corner :
        { m_extent.topLeft(), m_extent.topRight(), m_extent.bottomLeft(), m_extent.bottomRight() })
        m_reach = std::max(m_reach, std::hypot(corner.x() - m_center.x(), corner.y() - m_center.y()));
    m_profile = TransitionArtwork::shadingProfile(m_shading.isNull() ? TransitionArtwork::shadingImage() : m_shading);
    for (int step = 0; step <= kSteps; ++step) {
        const double u = 2.0 * step / kSteps - 1.0; // -1 at the inner edge, 1 at the outer
        m_bend[static_cast<size_t>(step)] = static_cast<float>(kRefraction * m_waveWidth * std::sin(M_PI * u));
        // Light and shadow follow the strip across the ring, fading out at its edges.
        const int index = std::clamp(static_cast<int>((u + 1) * 127.5), 0, 255);
        m_light[static_cast<size_t>(step)]
            = static_cast<int>(m_profile[static_cast<size_t>(index)] * std::cos(M_PI * u / 2));
        m_oldShare[static_cast<size_t>(step)] = PixelBlend::weightFor((u + kCrestBlend) / (2 * kCrestBlend));
    }
}

void RippleTransition::render(double time, QImage &output)
{
    const int width = output.width();
    const int height = output.height();
    const double w = m_waveWidth;
    // The ring's middle starts a half width before the centre and ends a half width past the
    // farthest corner: no wave at either end.
    const double radius = -w + time * (m_reach + 2 * w + 1);
    const double inner = radius - w;
    const double outer = radius + w;
    const double cx = m_center.x();
    const double cy = m_center.y();
    const double stepsPerPixel = kSteps / (2 * w);

    auto sample = [&](const QImage &image, double px, double py) {
        const int sx = std::clamp(static_cast<int>(px), 0, width - 1);
        const int sy = std::clamp(static_cast<int>(py), 0, height - 1);
        return row(image, sy)[sx];
    };

    for (int y = 0; y < height; ++y) {
        const quint32 *from = row(inputImage(), y);
        const quint32 *to = row(inputTargetImage(), y);
        quint32 *out = row(output, y);
        const double dy = y + 0.5 - cy;
        const double outerSquared = outer * outer - dy * dy;
        if (outer <= 0 || outerSquared <= 0) {
            PixelBlend::copySpan(from, out, width);
            continue;
        }
        // Columns left of ringStart and from ringEnd on are surely outside the ring: the old view.
        const double outerHalf = std::sqrt(outerSquared);
        const int ringStart = std::clamp(static_cast<int>(std::floor(cx - outerHalf - 0.5)), 0, width);
        const int ringEnd = std::clamp(static_cast<int>(std::ceil(cx + outerHalf + 0.5)), ringStart, width);
        // Columns in [holeStart, holeEnd) are surely inside it: the new view.
        int holeStart = ringEnd;
        int holeEnd = ringEnd;
        const double innerSquared = inner * inner - dy * dy;
        if (inner > 0 && innerSquared > 0) {
            const double innerHalf = std::sqrt(innerSquared);
            holeStart = std::clamp(static_cast<int>(std::ceil(cx - innerHalf + 0.5)), ringStart, ringEnd);
            holeEnd = std::clamp(static_cast<int>(std::floor(cx + innerHalf - 0.5)), holeStart, ringEnd);
        }
        PixelBlend::copySpan(from, out, ringStart);
        PixelBlend::copySpan(to + holeStart, out + holeStart, holeEnd - holeStart);
        PixelBlend::copySpan(from + ringEnd, out + ringEnd, width - ringEnd);

        auto wave = [&](int x) {
            const double dx = x + 0.5 - cx;
            const double distance = std::sqrt(dx * dx + dy * dy);
            if (distance >= outer)
                return from[x];
            if (distance <= inner)
                return to[x];
            const int step = std::clamp(static_cast<int>((distance - inner) * stepsPerPixel), 0, kSteps);
            const double scale = distance > 0 ? (distance + m_bend[static_cast<size_t>(step)]) / distance : 1.0;
            const double sx = cx + dx * scale;
            const double sy = cy + dy * scale;
            const quint32 oldShare = m_oldShare[static_cast<size_t>(step)];
            quint32 pixel;
            if (oldShare == 0)
                pixel = sample(inputTargetImage(), sx, sy);
            else if (oldShare == 256)
                pixel = sample(inputImage(), sx, sy);
            else
                pixel = PixelBlend::mix(sample(inputTargetImage(), sx, sy), sample(inputImage(), sx, sy), oldShare);
            return PixelBlend::shade(pixel, m_light[static_cast<size_t>(step)]);
        };
        for (int x = ringStart; x < holeStart; ++x)
            out[x] = wave(x);
        for (int x = holeEnd; x < ringEnd; ++x)
            out[x] = wave(x);
    }
}
