#pragma once

#include "widgets/Transition.h"

// The old view fades out while the new one fades in.
class DissolveTransition : public Transition
{
public:
    QString name() const override { return QStringLiteral("CIDissolveTransition"); }

protected:
    void render(double time, QImage &output) override;
};
