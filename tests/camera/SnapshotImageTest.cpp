#include "CameraTestSupport.h"
#include "camera/StillPictureCamera.h"
#include "camera/ui/MultimediaCamera.h"

#include <QTest>
#include <gtest/gtest.h>

// The stored form of a snapshot and the pictures made from it.

using namespace CameraTest;

namespace {

bool near(QRgb pixel, QColor colour)
{
    return std::abs(qRed(pixel) - colour.red()) < 40 && std::abs(qGreen(pixel) - colour.green()) < 40
        && std::abs(qBlue(pixel) - colour.blue()) < 40;
}

} // namespace

TEST(SnapshotImage, APictureIsStoredAsPngAndReadsBackPixelForPixel)
{
    const QImage picture = halves(Qt::red, Qt::blue);
    const QByteArray data = SnapshotImage::encode(picture);
    ASSERT_TRUE(data.startsWith("\x89PNG\r\n\x1a\n"));
    const QImage back = SnapshotImage::decode(data);
    ASSERT_EQ(back.size(), QSize(640, 480));
    EXPECT_EQ(back.convertToFormat(QImage::Format_RGB32), picture);

    // A deep picture is kept at eight bits a channel.
    const QImage deep = picture.convertToFormat(QImage::Format_RGBA64);
    EXPECT_EQ(SnapshotImage::decode(SnapshotImage::encode(deep)).depth(), 32);

    EXPECT_TRUE(SnapshotImage::encode(QImage()).isEmpty());
    EXPECT_TRUE(SnapshotImage::decode(QByteArray()).isNull());
    EXPECT_TRUE(SnapshotImage::decode("not a picture at all").isNull());
}

TEST(SnapshotImage, OlderTiffAndJpegSnapshotsAreRead)
{
    const QImage picture = halves(Qt::red, Qt::blue, QSize(320, 240));
    for (const char *format : {"tiff", "jpeg"}) {
        const QImage back = SnapshotImage::decode(written(picture, format));
        ASSERT_EQ(back.size(), QSize(320, 240)) << format;
        EXPECT_TRUE(near(back.pixel(40, 120), Qt::red)) << format;
        EXPECT_TRUE(near(back.pixel(280, 120), Qt::blue)) << format;
    }
}

TEST(SnapshotImage, TheCameraPictureFillsTheFrameCutAroundItsCentre)
{
    // A wide camera picture: a green band at each side that the 4:3 frame must lose.
    QImage wide(1280, 720, QImage::Format_RGB32);
    wide.fill(Qt::white);
    for (int y = 0; y < 720; ++y)
        for (int x : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 1270, 1271, 1272, 1273, 1274, 1275, 1276, 1277, 1278, 1279})
            wide.setPixel(x, y, qRgb(0, 255, 0));
    const QImage frame = MultimediaCamera::fitted(wide, SnapshotImage::CaptureSize);
    ASSERT_EQ(frame.size(), QSize(640, 480));
    for (int x : {0, 639})
        EXPECT_TRUE(near(frame.pixel(x, 240), Qt::white)) << x;
}

TEST(SnapshotImage, AStillPictureComesAsLiveFramesOfTheStartedSizeUntilStopped)
{
    struct Counter : CSGCameraDelegate {
        QList<CSGImage> frames;
        void cameraDidReceiveFrame(CSGCamera *, const CSGImage &frame) override { frames.append(frame); }
    } counter;
    StillPictureCamera camera(halves(Qt::red, Qt::blue, QSize(100, 100)));
    camera.setDelegate(&counter);
    ASSERT_TRUE(camera.startWithSize(640, 480));
    EXPECT_TRUE(camera.isRunning());
    EXPECT_TRUE(QTest::qWaitFor([&] { return counter.frames.size() >= 3; }, 5000));
    EXPECT_EQ(camera.currentFrame().image().size(), QSize(640, 480));
    EXPECT_LE(counter.frames.first().sampleTime(), counter.frames.last().sampleTime());
    ASSERT_TRUE(camera.stop());
    const qsizetype seen = counter.frames.size();
    QTest::qWait(150);
    EXPECT_EQ(counter.frames.size(), seen);

    StillPictureCamera nothing{QImage()};
    EXPECT_FALSE(nothing.startWithSize(640, 480));
}
