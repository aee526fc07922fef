#pragma once

#include "camera/SnapshotImage.h"

#include <QBuffer>
#include <QImage>
#include <QImageWriter>
#include <gtest/gtest.h>

namespace CameraTest {

// One colour on the left half, another on the right: where each half lands shows how a picture was drawn.
inline QImage halves(const QColor &left, const QColor &right, const QSize &size = SnapshotImage::CaptureSize)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(right);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width() / 2; ++x)
            image.setPixel(x, y, left.rgb());
    return image;
}

// `image` in a file format of another program version or another program.
inline QByteArray written(const QImage &image, const char *format)
{
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    EXPECT_TRUE(writer.write(image)) << format << ": " << writer.errorString().toStdString();
    return data;
}

} // namespace CameraTest
