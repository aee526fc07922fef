#pragma once

#include <QImage>
#include <QWidget>

class TabViewAnimation;
class Transition;

// Covers the tab view while a transition plays: every repaint renders the transition at the
// animation's current progress and draws the frame over the whole area. It also swallows clicks, so
// nothing underneath is touched mid-switch.
class TransitionOverlay : public QWidget
{
    Q_OBJECT

public:
    explicit TransitionOverlay(QWidget *parent = nullptr);

    // Both stay owned by the caller; pass nullptrs to stop.
    void play(Transition *transition, TabViewAnimation *animation, qreal devicePixelRatio);
    void stop();

    // The frame drawn last.
    const QImage &frame() const { return m_frame; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    Transition *m_transition = nullptr;
    TabViewAnimation *m_animation = nullptr;
    qreal m_devicePixelRatio = 1.0;
    QImage m_frame;
};
