#include "camera/SnapshotImage.h"

#include "camera/CameraLog.h"

#include <QBuffer>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>

namespace SnapshotImage {

QByteArray encode(const QImage &image)
{
    if (image.isNull())
        return {};
    QByteArray data;
    QBuffer buffer(&data);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    // Eight bits a channel, as a camera gives; a deeper picture would only make the file larger.
    const QImage stored = image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    if (!writer.write(stored)) {
        qCWarning(lcCamera) << "The snapshot could not be encoded:" << writer.errorString();
        return {};
    }
    return data;
}

QImage decode(const QByteArray &data)
{
    if (data.isEmpty())
        return {};
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    // The format is read from the data itself: the stored value carries no name for it.
    QImageReader reader(&buffer);
    QImage image = reader.read();
    if (image.isNull())
        qCWarning(lcCamera) << "The stored snapshot could not be read:" << reader.errorString();
    return image;
}

QImage stretched(const QImage &image, const QSize &size)
{
    if (image.isNull() || size.isEmpty())
        return {};
    QImage shown(size, QImage::Format_ARGB32_Premultiplied);
    shown.fill(Qt::transparent);
    QPainter painter(&shown);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.setOpacity(1.0);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.drawImage(QRect(QPoint(0, 0), size), image, image.rect());
    painter.end();
    return shown;
}

} // namespace SnapshotImage
