#pragma once

#include "widgets/Transition.h"

#include <QColor>

#include <vector>

// A photocopier's lamp: a bright, cyan-tinted bar of light travels across the view from left to
// right, and where it has passed the new view has been "copied" in.
class CopyMachineTransition : public Transition
{
public:
    QString name() const override { return QStringLiteral("CICopyMachineTransition"); }

    // "inputExtent": the area the lamp crosses completely (defaults to the whole picture).
    void setExtent(const QRectF &extent);
    // "inputColor": the lamp's tint.
    void setColor(const QColor &color);

protected:
    void prepare() override;
    void render(double time, QImage &output) override;

private:
    struct Column {
        quint32 mixWeight = 0; // 0 = old view, 256 = new view
        quint32 glowWeight = 0; // how much of the lamp's light
        quint32 glowColor = 0;
    };

    QRectF m_extent;
    QColor m_color = QColor::fromRgbF(0.6f, 1.0f, 1.0f);
    double m_barWidth = 0;
    double m_spill = 0;
    std::vector<Column> m_columns;
};
