#pragma once

#include "widgets/Transition.h"

#include <array>

// A soft-edged band with a light sheen sweeps across at a slight slant; behind it lies the new view.
class SwipeTransition : public Transition
{
public:
    QString name() const override { return QStringLiteral("CISwipeTransition"); }

    // "inputExtent": the area the band crosses completely (defaults to the whole picture).
    void setExtent(const QRectF &extent);
    // "inputAngle": direction of travel in radians, measured from the x axis toward y; kept within
    // a quarter turn of "rightward" so that the band meets every row.
    void setAngle(double radians);

protected:
    void prepare() override;
    void render(double time, QImage &output) override;

private:
    static constexpr int kSteps = 1024;
    QRectF m_extent;
    double m_angle = 0.18;
    double m_bandWidth = 0;
    std::array<quint32, kSteps + 1> m_mixWeights {};
    std::array<quint32, kSteps + 1> m_sheenWeights {};
};
