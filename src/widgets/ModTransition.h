#pragma once

#include "widgets/Transition.h"

#include <QImage>

// The new view shows through holes that open in a slanted, repeating pattern of cells around the
// centre; each cell's hole has its own lopsided shape and opens at its own moment.
class ModTransition : public Transition
{
public:
    QString name() const override { return QStringLiteral("CIModTransition"); }

    // "inputCenter": the pattern's origin, in picture pixels (defaults to the middle).
    void setCenter(const QPointF &center);
    // "inputAngle": the slant of the pattern, in radians.
    void setAngle(double radians);

protected:
    void prepare() override;
    void render(double time, QImage &output) override;

private:
    QPointF m_center { -1, -1 };
    double m_angle = 2.0;
    // When each pixel opens: 0 first, 255 last, spread evenly.
    QImage m_field;
};
