#pragma once

#include "widgets/Transition.h"

#include <QPoint>

// The old view crumbles away in the pattern of a grey mask, darkest parts first, and the remaining
// pieces cast a shadow onto the new view beneath them.
class DisintegrateWithMaskTransition : public Transition
{
public:
    QString name() const override { return QStringLiteral("CIDisintegrateWithMaskTransition"); }

    // "inputMaskImage": any grey picture; it is stretched over the view if its size differs.
    void setMaskImage(const QImage &mask);
    // How far the shadow falls, in picture pixels.
    void setShadowOffset(const QPoint &offset);

protected:
    void prepare() override;
    void render(double time, QImage &output) override;

private:
    QImage m_mask;
    QImage m_field;
    QPoint m_shadowOffset { 5, 7 };
};
