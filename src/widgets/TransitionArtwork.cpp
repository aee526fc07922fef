#include "widgets/TransitionArtwork.h"

#include <QColor>
#include <QLoggingCategory>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

Q_LOGGING_CATEGORY(lcTransitionArtwork, "quillory.widgets")

namespace
{

// A fixed hash so that the generated mask is the same picture on every machine.
float latticeValue(int x, int y, quint32 seed)
{
    quint32 h = static_cast<quint32>(x) * 374761393u + static_cast<quint32>(y) * 668265263u + seed * 2246822519u;
    h = (h ^ (h >> 13)) * 1274126177u;
    h ^= h >> 16;
    return static_cast<float>(h & 0xFFFFu) / 65535.0f;
}

float smooth(float t)
{
    return t * t * (3.0f - 2.0f * t);
}

float valueNoise(float x, float y, quint32 seed)
{
    const int x0 = static_cast<int>(std::floor(x));
    const int y0 = static_cast<int>(std::floor(y));
    const float fx = smooth(x - static_cast<float>(x0));
    const float fy = smooth(y - static_cast<float>(y0));
    const float top = latticeValue(x0, y0, seed) + (latticeValue(x0 + 1, y0, seed) - latticeValue(x0, y0, seed)) * fx;
    const float bottom
        = latticeValue(x0, y0 + 1, seed) + (latticeValue(x0 + 1, y0 + 1, seed) - latticeValue(x0, y0 + 1, seed)) * fx;
    return top + (bottom - top) * fy;
}

QImage loadOrGenerate(const char *path, QImage (*generate)(), QImage::Format format)
{
    QImage image(QString::fromLatin1(path));
    if (image.isNull()) {
        qCWarning(lcTransitionArtwork) << "Missing" << path << "- generating it";
        image = generate();
    }
    return image.convertToFormat(format);
}

QImage defaultMask()
{
    return TransitionArtwork::generateMask();
}

QImage defaultShading()
{
    return TransitionArtwork::generateShading();
}

} // namespace

QImage TransitionArtwork::maskImage()
{
    static const QImage mask = loadOrGenerate(kMaskPath, &defaultMask, QImage::Format_Grayscale8);
    return mask;
}

QImage TransitionArtwork::shadingImage()
{
    static const QImage shading = loadOrGenerate(kShadingPath, &defaultShading, QImage::Format_ARGB32);
    return shading;
}

QImage TransitionArtwork::generateMask(const QSize &size)
{
    const int width = std::max(1, size.width());
    const int height = std::max(1, size.height());
    const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
    std::vector<float> values(count);
    // Four octaves of value noise: broad clouds with ragged edges.
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            float sum = 0, amplitude = 1, total = 0;
            float frequency = 1.0f / 48.0f;
            for (int octave = 0; octave < 4; ++octave) {
                sum += amplitude
                    * valueNoise(static_cast<float>(x) * frequency, static_cast<float>(y) * frequency,
                        0x51u + static_cast<quint32>(octave));
                total += amplitude;
                amplitude *= 0.5f;
                frequency *= 2.0f;
            }
            values[static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x)] = sum / total;
        }
    }
    // Equalise: rank every pixel and spread the ranks over 0..255.
    std::vector<quint32> order(count);
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [&](quint32 a, quint32 b) { return values[a] < values[b]; });
    QImage mask(width, height, QImage::Format_Grayscale8);
    for (size_t rank = 0; rank < count; ++rank) {
        const quint32 index = order[rank];
        const int level = static_cast<int>(rank * 256 / count);
        mask.scanLine(static_cast<int>(index / static_cast<quint32>(width)))[index % static_cast<quint32>(width)]
            = static_cast<uchar>(level);
    }
    return mask;
}

QImage TransitionArtwork::generateShading(const QSize &size)
{
    const int width = std::max(2, size.width());
    const int height = std::max(1, size.height());
    QImage shading(width, height, QImage::Format_ARGB32);
    for (int x = 0; x < width; ++x) {
        const double u = static_cast<double>(x) / (width - 1);
        // A narrow bright highlight, a softer second one, and shadow toward both edges.
        double light = 0.9 * std::exp(-std::pow((u - 0.34) / 0.07, 2)) + 0.3 * std::exp(-std::pow((u - 0.72) / 0.12, 2))
            - 0.55 * std::exp(-std::pow(u / 0.12, 2)) - 0.45 * std::exp(-std::pow((1 - u) / 0.16, 2));
        light = std::clamp(light, -1.0, 1.0);
        const int grey = std::clamp(static_cast<int>(std::lround(128 + light * 127)), 0, 255);
        for (int y = 0; y < height; ++y) {
            // The strip fades out toward its top and bottom edges so it can also be laid over a view.
            const double across = 1.0 - std::pow(std::abs(2.0 * (y + 0.5) / height - 1.0), 4);
            const int alpha = std::clamp(static_cast<int>(std::lround(255 * across)), 0, 255);
            reinterpret_cast<QRgb *>(shading.scanLine(y))[x] = qRgba(grey, grey, grey, alpha);
        }
    }
    return shading;
}

std::array<int, 256> TransitionArtwork::shadingProfile(const QImage &shading)
{
    std::array<int, 256> profile {};
    if (shading.isNull())
        return profile;
    const QImage strip = shading.convertToFormat(QImage::Format_ARGB32);
    const QRgb *middle = reinterpret_cast<const QRgb *>(strip.constScanLine(strip.height() / 2));
    for (int i = 0; i < 256; ++i) {
        const int x = std::min(strip.width() - 1, i * strip.width() / 256);
        const QRgb pixel = middle[x];
        const int grey = qGray(pixel);
        profile[static_cast<size_t>(i)] = std::clamp((grey - 128) * 2 * qAlpha(pixel) / 255, -256, 256);
    }
    return profile;
}
