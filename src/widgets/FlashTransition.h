#pragma once

#include "widgets/Transition.h"

#include <QColor>

#include <vector>

// A starburst of light flares from the centre until the whole view is washed out, and the new view
// appears as the light dies down.
class FlashTransition : public Transition
{
public:
    QString name() const override { return QStringLiteral("CIFlashTransition"); }

    // "inputCenter": where the flare starts, in picture pixels (defaults to the middle).
    void setCenter(const QPointF &center);
    // "inputExtent": the area the flare reaches (defaults to the whole picture).
    void setExtent(const QRectF &extent);
    // "inputColor": the flare's light.
    void setColor(const QColor &color);

protected:
    void prepare() override;
    void render(double time, QImage &output) override;

private:
    QPointF m_center { -1, -1 };
    QRectF m_extent;
    QColor m_color = QColor::fromRgbF(1.0f, 0.92f, 0.82f);
    // The flare's brightness at half resolution: 255 at the centre and along the rays.
    std::vector<uchar> m_flare;
    int m_flareWidth = 0;
};
