#include "widgets/DisintegrateWithMaskTransition.h"

#include "widgets/PixelBlend.h"
#include "widgets/TransitionArtwork.h"

#include <algorithm>
#include <array>

namespace
{

constexpr double kEdgeSoftness = 20; // grey levels over which a piece fades
constexpr double kShadowSoftness = 40; // grey levels over which the shadow fades in
constexpr double kShadowDensity = 0.32;

} // namespace

void DisintegrateWithMaskTransition::setMaskImage(const QImage &mask)
{
    m_mask = mask;
    invalidate();
}

void DisintegrateWithMaskTransition::setShadowOffset(const QPoint &offset)
{
    m_shadowOffset = offset;
}

void DisintegrateWithMaskTransition::prepare()
{
    QImage mask = m_mask.isNull() ? TransitionArtwork::maskImage() : m_mask;
    if (mask.size() != size())
        mask = mask.scaled(size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    m_field = mask.convertToFormat(QImage::Format_Grayscale8);
}

void DisintegrateWithMaskTransition::render(double time, QImage &output)
{
    // The level below which the mask has let the new view through; it runs from 0 to past 255 so the
    // ends are clean.
    const double level = time * (256 + std::max(kEdgeSoftness, kShadowSoftness));
    std::array<quint32, 256> reveal {};
    std::array<quint32, 256> shadow {};
    for (int m = 0; m < 256; ++m) {
        reveal[static_cast<size_t>(m)] = PixelBlend::weightFor((level - m) / kEdgeSoftness);
        const double cover = std::clamp((m - (level - kShadowSoftness)) / kShadowSoftness, 0.0, 1.0);
        shadow[static_cast<size_t>(m)] = 256 - PixelBlend::weightFor(kShadowDensity * cover);
    }

    const int width = output.width();
    const int height = output.height();
    const int shadowX = m_shadowOffset.x();
    for (int y = 0; y < height; ++y) {
        const quint32 *from = row(inputImage(), y);
        const quint32 *to = row(inputTargetImage(), y);
        quint32 *out = row(output, y);
        const uchar *field = m_field.constScanLine(y);
        // The shadow on this pixel is cast by the piece up and to the left of it.
        const int casterRow = y - m_shadowOffset.y();
        const uchar *caster = casterRow >= 0 && casterRow < height ? m_field.constScanLine(casterRow) : nullptr;
        for (int x = 0; x < width; ++x) {
            const quint32 weight = reveal[field[x]];
            if (weight == 0) {
                out[x] = from[x];
                continue;
            }
            quint32 beneath = to[x];
            const int casterX = x - shadowX;
            if (caster && casterX >= 0 && casterX < width)
                beneath = PixelBlend::darken(beneath, shadow[caster[casterX]]);
            out[x] = weight == 256 ? beneath : PixelBlend::mix(from[x], beneath, weight);
        }
    }
}
