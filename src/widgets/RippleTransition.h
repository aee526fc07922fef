#pragma once

#include "widgets/Transition.h"

#include <array>

// A ring-shaped wave spreads from the centre like a ripple on water: the ring bends what lies under
// it and catches the light of the shading strip; inside the ring lies the new view.
class RippleTransition : public Transition
{
public:
    QString name() const override { return QStringLiteral("CIRippleTransition"); }

    // "inputCenter": where the ripple starts, in picture pixels (defaults to the middle).
    void setCenter(const QPointF &center);
    // "inputExtent": the area the ripple has to cross completely (defaults to the whole picture).
    void setExtent(const QRectF &extent);
    // "inputShadingImage": the strip that lights the wave.
    void setShadingImage(const QImage &shading);

protected:
    void prepare() override;
    void render(double time, QImage &output) override;

private:
    QPointF m_center { -1, -1 };
    QRectF m_extent;
    QImage m_shading;
    double m_waveWidth = 0;
    double m_reach = 0;
    std::array<int, 256> m_profile {};
    // Across the ring (index 0 at its inner edge, kSteps at its outer): how far the wave bends the
    // picture, how it lights it, and how much of the old picture shows.
    static constexpr int kSteps = 1024;
    std::array<float, kSteps + 1> m_bend {};
    std::array<int, kSteps + 1> m_light {};
    std::array<quint32, kSteps + 1> m_oldShare {};
};
