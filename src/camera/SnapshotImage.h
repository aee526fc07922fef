#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

// The assignment's snapshot as stored and as shown.
namespace SnapshotImage {

// The size pictures are taken at.
inline constexpr QSize CaptureSize{640, 480};

// PNG data of the picture: lossless and much smaller than the uncompressed TIFF older data
// carries. Empty for a null picture.
QByteArray encode(const QImage &image);
// The picture in stored data of any format the image readers know (PNG, and the TIFF and JPEG of
// older data); a null image for empty or unreadable data.
QImage decode(const QByteArray &data);
// The whole picture drawn over the whole of a new transparent image of the given size, so that it
// fills it exactly (the aspect ratio is not kept). A null image for a null picture or an empty size.
QImage stretched(const QImage &image, const QSize &size);

} // namespace SnapshotImage
