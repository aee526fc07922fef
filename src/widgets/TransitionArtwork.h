#pragma once

#include <QImage>
#include <QSize>

#include <array>

// The two pictures the transitions borrow: the mask that decides where a disintegrating view breaks
// up first ("transitionmask"), and the shading strip that lights curved surfaces ("restrictedshine").
// Both ship with the program; if one is missing it is generated the same way it was made.
class TransitionArtwork
{
public:
    static constexpr char kMaskPath[] = ":/images/transitionmask.png";
    static constexpr char kShadingPath[] = ":/images/restrictedshine.png";

    // Loaded once; 8-bit grey.
    static QImage maskImage();
    // Loaded once; 32-bit with alpha.
    static QImage shadingImage();

    // Cloudy noise whose grey levels are spread evenly over 0..255, so that a threshold moving at an
    // even pace uncovers an even share of the picture.
    static QImage generateMask(const QSize &size = QSize(512, 320));
    // A horizontal strip: mid grey leaves a pixel alone, lighter adds light, darker adds shadow,
    // alpha scales the effect. The highlight is held to a narrow band, as on a rolled sheet of paper.
    static QImage generateShading(const QSize &size = QSize(256, 16));

    // The strip's middle row read as 256 shading values from -256 (black) to 256 (white).
    static std::array<int, 256> shadingProfile(const QImage &shading);
};
