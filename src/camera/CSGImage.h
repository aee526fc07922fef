#pragma once

#include <QImage>
#include <QString>

// One frame of the camera: the picture and the moment it was taken, in seconds from the start of
// the capture.
class CSGImage
{
public:
    CSGImage() = default;
    CSGImage(QImage image, double sampleTime)
        : m_image(std::move(image))
        , m_sampleTime(sampleTime)
    {
    }

    const QImage &image() const { return m_image; }
    double sampleTime() const { return m_sampleTime; }
    bool isNull() const { return m_image.isNull(); }

    // "<CSGImage: 0x…> (sampleTime=1.2500)", for the log.
    QString description() const;

private:
    QImage m_image;
    double m_sampleTime = 0.0;
};
