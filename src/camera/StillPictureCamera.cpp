#include "camera/StillPictureCamera.h"

#include "camera/CameraLog.h"

namespace {
// About thirty frames a second, as a camera would give.
constexpr int FrameInterval = 33;
} // namespace

StillPictureCamera::StillPictureCamera(QImage picture)
    : m_picture(std::move(picture))
{
    m_timer.setInterval(FrameInterval);
    QObject::connect(&m_timer, &QTimer::timeout, [this] { deliver(); });
}

bool StillPictureCamera::startWithSize(int width, int height)
{
    if (m_picture.isNull() || width <= 0 || height <= 0) {
        qCWarning(lcCamera) << "No picture to show at" << width << "x" << height;
        return false;
    }
    m_frame = m_picture.scaled(width, height, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    m_clock.start();
    m_timer.start();
    deliver();
    return true;
}

bool StillPictureCamera::stop()
{
    m_timer.stop();
    return true;
}

void StillPictureCamera::deliver()
{
    deliverFrame(CSGImage(m_frame, double(m_clock.elapsed()) / 1000.0));
}
