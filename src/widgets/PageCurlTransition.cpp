#include "widgets/PageCurlTransition.h"

#include "widgets/PixelBlend.h"
#include "widgets/TransitionArtwork.h"

#include <algorithm>
#include <cmath>

namespace
{

constexpr double kShadowWidthFactor = 0.6; // of the radius
constexpr double kShadowDensity = 0.5;
constexpr quint32 kInnerSideLight = 180; // the inside of the roll faces away from the light
constexpr quint32 kPaper = 0xFFF7F5F0u;

} // namespace

void PageCurlTransition::setAngle(double radians)
{
    m_angle = radians;
}

void PageCurlTransition::setBacksideImage(const QImage &backside)
{
    m_backside = backside;
    invalidate();
}

void PageCurlTransition::setShadingImage(const QImage &shading)
{
    m_shading = shading;
    invalidate();
}

void PageCurlTransition::setRadius(double radius)
{
    m_requestedRadius = radius;
    invalidate();
}

QImage PageCurlTransition::defaultBackside(const QImage &front)
{
    // Paper seen from behind: the print shows through faintly.
    QImage back = front.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    for (int y = 0; y < back.height(); ++y) {
        auto *line = reinterpret_cast<quint32 *>(back.scanLine(y));
        for (int x = 0; x < back.width(); ++x)
            line[x] = PixelBlend::mix(line[x], kPaper, 190);
    }
    return back;
}

void PageCurlTransition::prepare()
{
    const QSize pictureSize = size();
    m_radius = m_requestedRadius > 0 ? m_requestedRadius
                                     : std::max(10.0, std::min(pictureSize.width(), pictureSize.height()) * 0.1);
    QImage back = m_backside.isNull() ? defaultBackside(inputImage()) : m_backside;
    if (back.size() != pictureSize)
        back = back.scaled(pictureSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    m_back = back.convertToFormat(inputImage().format());
    m_profile = TransitionArtwork::shadingProfile(m_shading.isNull() ? TransitionArtwork::shadingImage() : m_shading);
    for (int step = 0; step <= kSteps; ++step) {
        const double across = static_cast<double>(step) / kSteps;
        m_bend[static_cast<size_t>(step)] = static_cast<float>(std::asin(across));
        m_light[static_cast<size_t>(step)] = m_profile[static_cast<size_t>(std::lround(across * 255))];
    }
}

void PageCurlTransition::render(double time, QImage &output)
{
    const int width = output.width();
    const int height = output.height();
    const double nx = std::cos(m_angle);
    const double ny = std::sin(m_angle);
    // s measures how far a point lies along the direction of travel from the lifted corner.
    const double cornerValues[4] = { 0.0, width * nx, height * ny, width * nx + height * ny };
    const double sMin = *std::min_element(cornerValues, cornerValues + 4);
    const double sMax = *std::max_element(cornerValues, cornerValues + 4);
    const double r = m_radius;
    const double shadowWidth = r * kShadowWidthFactor;
    // The roll's axis starts just outside the corner and ends where neither the sheet nor its
    // shadow is left on the view.
    const double axis = -0.5 + time * (sMax - sMin + r + shadowWidth + 1.5);
    const double stepsPerPixel = kSteps / r;

    auto sampleInside = [&](double px, double py, const QImage &image, quint32 &pixel) {
        if (px < 0 || py < 0 || px >= width || py >= height)
            return false;
        pixel = row(image, static_cast<int>(py))[static_cast<int>(px)];
        return true;
    };

    for (int y = 0; y < height; ++y) {
        const quint32 *from = row(inputImage(), y);
        const quint32 *to = row(inputTargetImage(), y);
        quint32 *out = row(output, y);
        const double py = y + 0.5;
        for (int x = 0; x < width; ++x) {
            const double px = x + 0.5;
            const double s = px * nx + py * ny - sMin;
            quint32 pixel = 0;
            if (s > axis) {
                // Flat: either the turned-over part of the sheet lies here, back up, or the sheet
                // has not been lifted here yet.
                const double shift = 2 * axis - 2 * s - M_PI * r;
                if (sampleInside(px + shift * nx, py + shift * ny, m_back, pixel))
                    out[x] = pixel;
                else
                    out[x] = from[x];
            } else if (s >= axis - r) {
                const int step = std::clamp(static_cast<int>((axis - s) * stepsPerPixel), 0, kSteps);
                const double bend = m_bend[static_cast<size_t>(step)];
                // The top of the roll shows the back of the sheet, lit by the shading strip.
                const double topShift = -r * (M_PI - bend) - (s - axis);
                if (sampleInside(px + topShift * nx, py + topShift * ny, m_back, pixel)) {
                    out[x] = PixelBlend::shade(pixel, m_light[static_cast<size_t>(step)]);
                    continue;
                }
                // Where the sheet ends before reaching the top, its inside shows.
                const double underShift = -r * bend - (s - axis);
                if (sampleInside(px + underShift * nx, py + underShift * ny, inputImage(), pixel))
                    out[x] = PixelBlend::darken(pixel, kInnerSideLight);
                else
                    out[x] = PixelBlend::darken(to[x], 256 - PixelBlend::weightFor(kShadowDensity));
            } else {
                const double distance = axis - r - s;
                if (distance < shadowWidth) {
                    const double depth = kShadowDensity * (1 - distance / shadowWidth);
                    out[x] = PixelBlend::darken(to[x], 256 - PixelBlend::weightFor(depth * depth / kShadowDensity));
                } else {
                    out[x] = to[x];
                }
            }
        }
    }
}
