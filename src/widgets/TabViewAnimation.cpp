#include "widgets/TabViewAnimation.h"

TabViewAnimation::TabViewAnimation(int durationMs, QObject *parent)
    : QVariantAnimation(parent)
{
    setObjectName(QStringLiteral("TabViewAnimation"));
    setStartValue(0.0);
    setEndValue(1.0);
    setDuration(durationMs);
    setEasingCurve(QEasingCurve::InOutSine);
    connect(this, &QVariantAnimation::valueChanged, this,
        [this](const QVariant &value) { Q_EMIT progressChanged(value.toDouble()); });
}

double TabViewAnimation::progress() const
{
    return currentValue().toDouble();
}
