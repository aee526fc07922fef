#pragma once

#include "widgets/Transition.h"

#include <array>

// The old view is a sheet of paper lifted at a corner and rolled over a cylinder: its back, lit by
// the shading strip, turns toward the viewer, its shadow falls on the new view underneath, and the
// sheet is turned right over and off.
class PageCurlTransition : public Transition
{
public:
    QString name() const override { return QStringLiteral("CIPageCurlTransition"); }

    // "inputAngle": the direction the curl travels, in radians from the x axis toward y (y down);
    // the sheet is lifted at the corner it travels away from.
    void setAngle(double radians);
    // "inputBacksideImage": the sheet's back, stretched to the view (defaults to the front, faded).
    void setBacksideImage(const QImage &backside);
    // "inputShadingImage": the strip that lights the rolled part.
    void setShadingImage(const QImage &shading);
    // "inputRadius": the roll's radius in picture pixels (0 chooses one from the view's size).
    void setRadius(double radius);

    // The faded copy of a picture used as the back of the sheet when none is given.
    static QImage defaultBackside(const QImage &front);

protected:
    void prepare() override;
    void render(double time, QImage &output) override;

private:
    double m_angle = M_PI + 0.38;
    QImage m_backside;
    QImage m_shading;
    double m_requestedRadius = 0;
    double m_radius = 0;
    QImage m_back;
    std::array<int, 256> m_profile {};
    // Across the roll's width (0 at its axis, kSteps at its far edge): the bend angle, and the light
    // on the back of the sheet there.
    static constexpr int kSteps = 4096;
    std::array<float, kSteps + 1> m_bend {};
    std::array<int, kSteps + 1> m_light {};
};
