#include "camera/ui/MultimediaCamera.h"

#include "camera/CameraLog.h"

#include <QCamera>
#include <QCameraDevice>
#include <QMediaCaptureSession>
#include <QMediaDevices>
#include <QVideoFrame>
#include <QVideoSink>

MultimediaCamera::MultimediaCamera() = default;

MultimediaCamera::~MultimediaCamera()
{
    stop();
}

bool MultimediaCamera::startWithSize(int width, int height)
{
    stop();
    const QCameraDevice device = QMediaDevices::defaultVideoInput();
    if (device.isNull()) {
        qCWarning(lcCamera) << "No camera to open.";
        return false;
    }
    m_size = QSize(width, height);
    m_firstFrameTime = -1;
    m_camera = std::make_unique<QCamera>(device);
    // The smallest format that still covers the picture, so that frames are only ever scaled down.
    QCameraFormat chosen;
    for (const QCameraFormat &format : device.videoFormats()) {
        const QSize resolution = format.resolution();
        if (resolution.width() < width || resolution.height() < height)
            continue;
        if (chosen.isNull() || resolution.width() * resolution.height()
                                   < chosen.resolution().width() * chosen.resolution().height())
            chosen = format;
    }
    if (!chosen.isNull())
        m_camera->setCameraFormat(chosen);
    m_session = std::make_unique<QMediaCaptureSession>();
    m_sink = std::make_unique<QVideoSink>();
    m_session->setCamera(m_camera.get());
    m_session->setVideoSink(m_sink.get());
    connect(m_sink.get(), &QVideoSink::videoFrameChanged, this, &MultimediaCamera::frameArrived);
    connect(m_camera.get(), &QCamera::errorOccurred, this, [](QCamera::Error error, const QString &text) {
        qCWarning(lcCamera).noquote() << "The camera failed:" << int(error) << text;
    });
    m_camera->start();
    if (m_camera->error() != QCamera::NoError) {
        qCWarning(lcCamera).noquote() << "The camera could not be started:" << m_camera->errorString();
        stop();
        return false;
    }
    return true;
}

bool MultimediaCamera::stop()
{
    if (m_camera)
        m_camera->stop();
    if (m_sink)
        disconnect(m_sink.get(), nullptr, this, nullptr);
    m_session.reset();
    m_sink.reset();
    m_camera.reset();
    return true;
}

QImage MultimediaCamera::fitted(const QImage &picture, const QSize &size)
{
    if (picture.isNull() || size.isEmpty())
        return {};
    const QImage covering = picture.scaled(size, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
    const QRect centre(QPoint((covering.width() - size.width()) / 2, (covering.height() - size.height()) / 2), size);
    return covering.copy(centre);
}

void MultimediaCamera::frameArrived(const QVideoFrame &frame)
{
    if (!frame.isValid())
        return;
    const QImage picture = fitted(frame.toImage(), m_size);
    if (picture.isNull())
        return;
    if (m_firstFrameTime < 0)
        m_firstFrameTime = frame.startTime();
    // Frame times are in microseconds.
    const double sampleTime = frame.startTime() < 0 ? 0.0 : double(frame.startTime() - m_firstFrameTime) / 1e6;
    deliverFrame(CSGImage(picture, sampleTime));
}
