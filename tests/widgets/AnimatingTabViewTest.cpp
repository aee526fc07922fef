#include "TransitionImages.h"

#include "widgets/AnimatingTabView.h"
#include "widgets/TabViewAnimation.h"

#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>
#include <gtest/gtest.h>

using namespace TransitionImages;

namespace
{

QWidget *colouredPage(const QColor &colour, const QString &text)
{
    auto *page = new QWidget;
    page->setAutoFillBackground(true);
    QPalette palette = page->palette();
    palette.setColor(QPalette::Window, colour);
    page->setPalette(palette);
    auto *layout = new QVBoxLayout(page);
    auto *label = new QLabel(text);
    label->setFocusPolicy(Qt::StrongFocus);
    layout->addWidget(label);
    return page;
}

class AnimatingTabViewTest : public testing::Test
{
protected:
    void SetUp() override
    {
        view.resize(320, 200);
        view.addTab(colouredPage(QColor(200, 40, 40), QStringLiteral("List")), QStringLiteral("List"));
        view.addTab(colouredPage(QColor(40, 160, 60), QStringLiteral("Week")), QStringLiteral("Week"));
        view.addTab(colouredPage(QColor(40, 60, 200), QStringLiteral("Month")), QStringLiteral("Month"));
    }

    void showView()
    {
        view.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    }

    QImage picture() { return view.grab().toImage(); }

    AnimatingTabView view;
};

} // namespace

TEST_F(AnimatingTabViewTest, StartsOnTheFirstPageWithTheDissolveAndSwitchesPlainlyWhileHidden)
{
    EXPECT_EQ(view.currentIndex(), 0);
    EXPECT_EQ(view.transition(), 3);
    for (int index = 0; index < view.count(); ++index) {
        EXPECT_GE(view.minimumSizeHint().width(), view.widget(index)->minimumSizeHint().width());
        EXPECT_GE(view.minimumSizeHint().height(), view.widget(index)->minimumSizeHint().height());
    }
    EXPECT_FALSE(view.accessibleName().isEmpty());
    view.selectTabViewItem(2, {});
    EXPECT_FALSE(view.isAnimating());
    EXPECT_EQ(view.currentIndex(), 2);
}

TEST_F(AnimatingTabViewTest, IndexZeroSwitchesAtOnce)
{
    showView();
    view.setTransition(0);
    QSignalSpy changed(&view, &AnimatingTabView::currentChanged);
    view.selectTabViewItem(2, Qt::ShiftModifier);
    EXPECT_FALSE(view.isAnimating());
    EXPECT_EQ(view.currentIndex(), 2);
    EXPECT_EQ(view.lastDuration(), 0);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_EQ(picture().pixelColor(5, 5), QColor(40, 60, 200));
    // Shift held for a plain swap does not carry over to the next, animated one.
    view.setTransition(3);
    view.selectTabViewItem(0, {});
    EXPECT_EQ(view.lastDuration(), AnimatingTabView::kNormalDurationMs);
}

TEST_F(AnimatingTabViewTest, ReselectingTheShownPagePlaysNothingEvenWithShift)
{
    showView();
    QSignalSpy changed(&view, &AnimatingTabView::currentChanged);
    view.selectTabViewItem(0, Qt::ShiftModifier);
    view.selectTabViewItem(view.widget(0));
    view.selectTabViewItem(7, {});
    EXPECT_FALSE(view.isAnimating());
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(view.currentIndex(), 0);
    view.selectTabViewItem(1, {});
    ASSERT_TRUE(view.isAnimating());
    EXPECT_EQ(view.animation()->duration(), AnimatingTabView::kNormalDurationMs);
}

// Shift slows down exactly the switch it was held for, with other modifiers too.
TEST_F(AnimatingTabViewTest, ShiftHeldDuringARealClickCounts)
{
    showView();
    QPushButton button(QStringLiteral("Month"));
    QObject::connect(&button, &QPushButton::clicked, &view, [this] { view.selectTabViewItem(2); });
    button.show();
    QTest::mouseClick(&button, Qt::LeftButton, Qt::ShiftModifier | Qt::ControlModifier);
    ASSERT_TRUE(view.isAnimating());
    EXPECT_EQ(view.lastDuration(), AnimatingTabView::kSlowMotionDurationMs);
    EXPECT_EQ(view.animation()->easingCurve().type(), QEasingCurve::InOutSine);
    view.finishTransition();
    QTest::mouseClick(&button, Qt::LeftButton, {});
    QObject::disconnect(&button, nullptr, &view, nullptr);
    QObject::connect(&button, &QPushButton::clicked, &view, [this] { view.selectTabViewItem(0); });
    QTest::mouseClick(&button, Qt::LeftButton, {});
    EXPECT_EQ(view.lastDuration(), AnimatingTabView::kNormalDurationMs);
}

TEST_F(AnimatingTabViewTest, TheAnimationEndsOnTheNewPage)
{
    showView();
    view.currentWidget()->findChild<QLabel *>()->setFocus();
    const QImage before = picture();
    QSignalSpy finished(&view, &AnimatingTabView::transitionFinished);
    view.selectTabViewItem(1, {});
    EXPECT_TRUE(view.isAnimating());
    EXPECT_EQ(view.currentIndex(), 1); // already selected underneath
    ASSERT_TRUE(finished.wait(4000));
    EXPECT_FALSE(view.isAnimating());
    EXPECT_EQ(view.currentIndex(), 1);
    const QImage after = picture();
    EXPECT_EQ(after.pixelColor(5, 5), QColor(40, 160, 60));
    EXPECT_GT(differingPixels(before, after), before.width() * before.height() / 2);
    auto *overlay = view.findChild<QWidget *>(QStringLiteral("transitionOverlay"));
    ASSERT_NE(overlay, nullptr);
    EXPECT_FALSE(overlay->isVisible());
    EXPECT_TRUE(view.widget(1)->isVisible());
    // Keyboard focus follows onto the new page.
    EXPECT_TRUE(view.widget(1)->isAncestorOf(QApplication::focusWidget()) || view.widget(1)->hasFocus());
}

TEST_F(AnimatingTabViewTest, EveryTransitionDrawsFramesBetweenTheTwoPages)
{
    showView();
    for (int index = 1; index <= 8; ++index) {
        SCOPED_TRACE(index);
        view.setTransition(index);
        const int target = (view.currentIndex() + 1) % view.count();
        const QImage oldPage = picture();
        view.selectTabViewItem(target, {});
        ASSERT_TRUE(view.isAnimating());
        view.animation()->pause();
        view.animation()->setCurrentTime(view.animation()->duration() / 2);
        const QImage midway = picture();
        view.finishTransition();
        const QImage newPage = picture();
        const int total = oldPage.width() * oldPage.height();
        EXPECT_GT(differingPixels(midway, oldPage), total / 10);
        EXPECT_GT(differingPixels(midway, newPage), total / 10);
        EXPECT_EQ(view.currentIndex(), target);
        EXPECT_FALSE(view.isAnimating());
    }
}

TEST_F(AnimatingTabViewTest, ASwitchDuringATransitionLandsTheFirstOne)
{
    showView();
    view.selectTabViewItem(1, {});
    ASSERT_TRUE(view.isAnimating());
    view.selectTabViewItem(2, {});
    EXPECT_TRUE(view.isAnimating());
    EXPECT_EQ(view.currentIndex(), 2);
    view.finishTransition();
    EXPECT_EQ(picture().pixelColor(5, 5), QColor(40, 60, 200));
}
