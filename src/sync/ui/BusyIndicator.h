#pragma once

#include <QWidget>

class QTimer;

// A small spinning indicator of indeterminate progress: twelve spokes, the bright one going round.
class BusyIndicator : public QWidget
{
    Q_OBJECT
public:
    explicit BusyIndicator(QWidget *parent = nullptr);

    void startAnimation();
    void stopAnimation();
    bool isAnimating() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QTimer *m_timer;
    int m_step = 0;
};
