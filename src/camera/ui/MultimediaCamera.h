#pragma once

#include "camera/CSGCamera.h"

#include <QObject>
#include <QSize>

#include <memory>

class QCamera;
class QMediaCaptureSession;
class QVideoFrame;
class QVideoSink;

// The desktop's default camera through Qt Multimedia: the camera feeds a capture session whose
// video sink hands each frame over on the interface thread, where it is cut to the requested size.
class MultimediaCamera : public QObject, public CSGCamera
{
    Q_OBJECT
public:
    MultimediaCamera();
    ~MultimediaCamera() override;

    bool startWithSize(int width, int height) override;
    bool stop() override;

    // The camera's picture filled into the size without distortion: scaled until it covers the
    // size, then cut to it around its centre.
    static QImage fitted(const QImage &picture, const QSize &size);

private:
    void frameArrived(const QVideoFrame &frame);

    QSize m_size;
    std::unique_ptr<QCamera> m_camera;
    std::unique_ptr<QMediaCaptureSession> m_session;
    std::unique_ptr<QVideoSink> m_sink;
    qint64 m_firstFrameTime = -1;
};
