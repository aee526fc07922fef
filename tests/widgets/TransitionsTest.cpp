#include "TransitionImages.h"

#include "widgets/AnimatingTabView.h"
#include "widgets/DisintegrateWithMaskTransition.h"
#include "widgets/DissolveTransition.h"
#include "widgets/Transition.h"
#include "widgets/TransitionArtwork.h"

#include <gtest/gtest.h>

using namespace TransitionImages;

namespace
{

std::unique_ptr<Transition> make(int index, const QImage &from = oldPicture(), const QImage &to = newPicture())
{
    return AnimatingTabView::createTransitionFilterForRect(index, QRectF(QPointF(0, 0), QSizeF(from.size())), from, to);
}

QRgb pixel(const QImage &image, int x, int y)
{
    return image.pixel(x, y) & 0xFFFFFF;
}

} // namespace

TEST(Transitions, ZeroMakesNoneAndAnythingUnknownRipples)
{
    EXPECT_EQ(make(0), nullptr);
    for (int index : { 9, 42, -1 })
        EXPECT_EQ(make(index)->name(), QStringLiteral("CIRippleTransition")) << index;
}

TEST(Transitions, EveryEffectStartsOnTheOldPictureEndsOnTheNewAndMovesBetween)
{
    // Odd sizes and a tall picture too, for the half-resolution maps and the slanted edges.
    for (const QSize size : { QSize(240, 150), QSize(241, 151), QSize(37, 203) }) {
        SCOPED_TRACE(size.width());
        const QImage from = oldPicture(size);
        const QImage to = newPicture(size);
        const int total = from.width() * from.height();
        for (int index = 1; index <= 8; ++index) {
            SCOPED_TRACE(index);
            auto transition = make(index, from, to);
            const QImage first = transition->outputImage(0.0);
            ASSERT_EQ(first.size(), from.size());
            EXPECT_EQ(differingPixels(first, from, 0), 0);
            EXPECT_EQ(differingPixels(transition->outputImage(1.0), to, 0), 0);
            // Out-of-range times are held at the ends.
            EXPECT_EQ(differingPixels(transition->outputImage(-0.5), from, 0), 0);
            EXPECT_EQ(differingPixels(transition->outputImage(1.5), to, 0), 0);

            const QImage middle = transition->outputImage(0.5);
            EXPECT_GT(differingPixels(middle, from), total / 10);
            EXPECT_GT(differingPixels(middle, to), total / 10);
            EXPECT_GT(differingPixels(transition->outputImage(0.3), transition->outputImage(0.7)), total / 20);
        }
    }
}

TEST(Transitions, DissolveBlendsEvenly)
{
    const QImage middle = make(3)->outputImage(0.5);
    const QImage from = oldPicture();
    const QImage to = newPicture();
    for (const QPoint point : { QPoint(0, 0), QPoint(17, 33), QPoint(239, 149) }) {
        const QRgb a = from.pixel(point), b = to.pixel(point), m = middle.pixel(point);
        EXPECT_NEAR(qRed(m), (qRed(a) + qRed(b)) / 2.0, 1.0);
        EXPECT_NEAR(qGreen(m), (qGreen(a) + qGreen(b)) / 2.0, 1.0);
        EXPECT_NEAR(qBlue(m), (qBlue(a) + qBlue(b)) / 2.0, 1.0);
    }
}

TEST(Transitions, SwipeAndCopyMachineSweepFromLeftToRight)
{
    const QImage from = oldPicture();
    const QImage to = newPicture();
    for (int index : { 1, 8 }) {
        SCOPED_TRACE(index);
        const QImage middle = make(index)->outputImage(0.5);
        const QRect left(0, 0, 20, 150);
        const QRect right(220, 0, 20, 150);
        EXPECT_EQ(differingPixels(middle.copy(left), to.copy(left), 0), 0);
        EXPECT_EQ(differingPixels(middle.copy(right), from.copy(right), 0), 0);
    }
    // The copier's lamp is brighter than either picture somewhere along its bar.
    const QImage lit = make(1)->outputImage(0.5);
    double brightest = 0;
    for (int x = 0; x < lit.width(); x += 4) {
        const QRect column(x, 0, 4, lit.height());
        brightest = std::max(brightest,
            meanBrightness(lit, column) - std::max(meanBrightness(from, column), meanBrightness(to, column)));
    }
    EXPECT_GT(brightest, 40);
}

TEST(Transitions, FlashBurstsFromTheCentreAndWashesEverythingOutMidway)
{
    const QImage from = oldPicture();
    auto flash = make(4);
    const QImage early = flash->outputImage(0.2);
    // Early on the centre is lit while the corners are still the old picture.
    EXPECT_GT(meanBrightness(early, QRect(110, 65, 20, 20)), meanBrightness(from, QRect(110, 65, 20, 20)) + 40);
    EXPECT_EQ(pixel(early, 1, 1), pixel(from, 1, 1));
    EXPECT_GT(meanBrightness(flash->outputImage(0.5)), 230);
}

TEST(Transitions, DisintegrationFollowsTheMask)
{
    const QImage from = oldPicture();
    const QImage to = newPicture();
    // Dark on the left half, light on the right: the left half goes first.
    QImage mask(240, 150, QImage::Format_Grayscale8);
    for (int y = 0; y < 150; ++y)
        for (int x = 0; x < 240; ++x)
            mask.scanLine(y)[x] = x < 120 ? 40 : 215;
    DisintegrateWithMaskTransition transition;
    transition.setImages(from, to);
    transition.setMaskImage(mask);
    transition.setShadowOffset(QPoint(0, 0));
    const QImage middle = transition.outputImage(0.5);
    EXPECT_EQ(differingPixels(middle.copy(0, 0, 120, 150), to.copy(0, 0, 120, 150), 0), 0);
    EXPECT_EQ(differingPixels(middle.copy(120, 0, 120, 150), from.copy(120, 0, 120, 150), 0), 0);

    // With the shipped mask the old picture gives way piece by piece: whole pixels of either picture.
    auto shipped = make(2);
    const int total = 240 * 150;
    int previousOld = total;
    for (double time : { 0.25, 0.5, 0.75 }) {
        const QImage frame = shipped->outputImage(time);
        const int stillOld = equalPixels(frame, from);
        EXPECT_LT(stillOld, previousOld);
        EXPECT_GT(stillOld + equalPixels(frame, to), total / 2);
        previousOld = stillOld;
    }
}

TEST(Transitions, ModOpensHolesThatGrow)
{
    const QImage from = oldPicture();
    const QImage to = newPicture();
    auto mod = make(5);
    const int total = 240 * 150;
    const QImage early = mod->outputImage(0.3);
    const QImage late = mod->outputImage(0.7);
    EXPECT_LT(equalPixels(early, to), equalPixels(late, to));
    EXPECT_GT(equalPixels(early, from), total / 3);
    EXPECT_GT(equalPixels(late, to), total / 3);
}

TEST(Transitions, PageCurlLiftsTheLowerRightCornerFirst)
{
    const QImage from = oldPicture();
    const QImage to = newPicture();
    const QImage middle = make(6)->outputImage(0.5);
    EXPECT_EQ(pixel(middle, 238, 148), pixel(to, 238, 148));
    EXPECT_EQ(pixel(middle, 1, 1), pixel(from, 1, 1));
    // The sheet's back is neither picture.
    const int neither = 240 * 150 - equalPixels(middle, from) - equalPixels(middle, to);
    EXPECT_GT(neither, 240 * 150 / 10);
}

TEST(Transitions, RippleSpreadsFromTheCentre)
{
    const QImage from = oldPicture();
    const QImage to = newPicture();
    auto ripple = make(7);
    const QImage middle = ripple->outputImage(0.5);
    EXPECT_EQ(pixel(middle, 120, 75), pixel(to, 120, 75));
    EXPECT_EQ(pixel(middle, 0, 0), pixel(from, 0, 0));
    EXPECT_EQ(pixel(middle, 239, 149), pixel(from, 239, 149));
    // The ring bends and lights what lies under it.
    const int ring = 240 * 150 - equalPixels(middle, from) - equalPixels(middle, to);
    EXPECT_GT(ring, 240 * 150 / 20);
}

TEST(Transitions, PicturesOfDifferentSizesAndEmptyPictures)
{
    DissolveTransition transition;
    transition.setImages(oldPicture(QSize(200, 100)), newPicture(QSize(100, 50)));
    const QImage last = transition.outputImage(1.0);
    ASSERT_EQ(last.size(), QSize(200, 100));
    EXPECT_EQ(differingPixels(last,
                  newPicture(QSize(100, 50)).scaled(200, 100, Qt::IgnoreAspectRatio, Qt::SmoothTransformation), 0),
        0);
    for (int index = 1; index <= 8; ++index) {
        auto empty = make(index, QImage(), newPicture());
        EXPECT_TRUE(empty->outputImage(0.5).isNull()) << index;
    }
    // Pictures with transparency stay premultiplied and blend correctly.
    QImage clear(10, 10, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    transition.setImages(clear, newPicture(QSize(10, 10)));
    const QImage half = transition.outputImage(0.5);
    EXPECT_NEAR(qAlpha(half.pixel(3, 3)), 128, 1);
}

TEST(TransitionArtwork, ShippedPicturesAreTheGeneratedOnes)
{
    const QImage mask = TransitionArtwork::maskImage();
    ASSERT_FALSE(mask.isNull());
    EXPECT_EQ(mask.format(), QImage::Format_Grayscale8);
    EXPECT_EQ(mask, TransitionArtwork::generateMask());
    EXPECT_EQ(QImage(QString::fromLatin1(TransitionArtwork::kShadingPath)).convertToFormat(QImage::Format_ARGB32),
        TransitionArtwork::generateShading());
    // Grey levels are spread evenly, so the mask uncovers the view at a steady pace.
    int quarters[4] = {};
    for (int y = 0; y < mask.height(); ++y)
        for (int x = 0; x < mask.width(); ++x)
            ++quarters[mask.constScanLine(y)[x] / 64];
    const int total = mask.width() * mask.height();
    for (int quarter : quarters)
        EXPECT_NEAR(quarter, total / 4, total / 50);

    const auto profile = TransitionArtwork::shadingProfile(TransitionArtwork::shadingImage());
    EXPECT_GT(*std::max_element(profile.begin(), profile.end()), 150);
    EXPECT_LT(*std::min_element(profile.begin(), profile.end()), -60);
}
