#pragma once

#include <QtGlobal>

#include <cstring>

// Per-pixel helpers for the transitions. Pixels are 32-bit ARGB, premultiplied or opaque; every
// helper treats the four bytes alike, so both stay valid. Weights run from 0 (all of the first
// argument) to 256 (all of the second), which keeps the arithmetic in two 16-bit lanes per word.
namespace PixelBlend
{

constexpr quint32 kWhite = 0xFFFFFFFFu;

inline quint32 mix(quint32 from, quint32 to, quint32 weight)
{
    const quint32 inverse = 256 - weight;
    const quint32 redBlue = (((from & 0x00FF00FFu) * inverse + (to & 0x00FF00FFu) * weight) >> 8) & 0x00FF00FFu;
    const quint32 alphaGreen
        = (((from >> 8) & 0x00FF00FFu) * inverse + ((to >> 8) & 0x00FF00FFu) * weight) & 0xFF00FF00u;
    return redBlue | alphaGreen;
}

// Scales the colour by weight/256 and keeps the alpha: a shadow falling on the pixel.
inline quint32 darken(quint32 pixel, quint32 weight)
{
    const quint32 redBlue = (((pixel & 0x00FF00FFu) * weight) >> 8) & 0x00FF00FFu;
    const quint32 green = (((pixel & 0x0000FF00u) * weight) >> 8) & 0x0000FF00u;
    return (pixel & 0xFF000000u) | redBlue | green;
}

// A shading value from -256 (black) through 0 (unchanged) to 256 (white).
inline quint32 shade(quint32 pixel, int value)
{
    if (value > 0)
        return mix(pixel, kWhite, static_cast<quint32>(value));
    if (value < 0)
        return darken(pixel, static_cast<quint32>(256 + value));
    return pixel;
}

inline void mixSpan(const quint32 *from, const quint32 *to, quint32 *out, int count, quint32 weight)
{
    for (int i = 0; i < count; ++i)
        out[i] = mix(from[i], to[i], weight);
}

inline void copySpan(const quint32 *source, quint32 *out, int count)
{
    if (count > 0)
        std::memcpy(out, source, static_cast<size_t>(count) * sizeof(quint32));
}

inline quint32 weightFor(double fraction)
{
    if (fraction <= 0)
        return 0;
    if (fraction >= 1)
        return 256;
    return static_cast<quint32>(fraction * 256.0 + 0.5);
}

} // namespace PixelBlend
