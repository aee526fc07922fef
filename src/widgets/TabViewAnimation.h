#pragma once

#include <QVariantAnimation>

// The clock of a view transition: progress from 0 to 1 over the given time, eased in and out.
class TabViewAnimation : public QVariantAnimation
{
    Q_OBJECT

public:
    explicit TabViewAnimation(int durationMs, QObject *parent = nullptr);

    double progress() const;

Q_SIGNALS:
    void progressChanged(double progress);
};
