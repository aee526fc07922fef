#pragma once

#include "camera/CSGCamera.h"

#include <QElapsedTimer>
#include <QTimer>

// A capture source that shows one given picture as its live frames, a few dozen times a second,
// fitted to the size it was started at. It stands in for a camera on machines without one, where
// the video window is still to be shown (a demonstration, a picture of the window).
class StillPictureCamera : public CSGCamera
{
public:
    explicit StillPictureCamera(QImage picture);

    bool startWithSize(int width, int height) override;
    bool stop() override;
    bool isRunning() const { return m_timer.isActive(); }

private:
    void deliver();

    QImage m_picture;
    QImage m_frame;
    QTimer m_timer;
    QElapsedTimer m_clock;
};
