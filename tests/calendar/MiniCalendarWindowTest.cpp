#include "calendar/ui/MiniCalendarWindow.h"
#include "calendar/ui/WBCalendarControl.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>
#include <gtest/gtest.h>

namespace
{

QDateTime at(int year, int month, int day)
{
    return QDateTime(QDate(year, month, day), QTime(9, 0, 0));
}

} // namespace

TEST(MiniCalendarWindow, IsABorderlessPopUpWhateverFlagsAreAskedFor)
{
    MiniCalendarWindow window(QRect(40, 50, 128, 106), Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    EXPECT_EQ(window.windowType(), Qt::Popup);
    EXPECT_TRUE(window.windowFlags().testFlag(Qt::FramelessWindowHint));
    EXPECT_FALSE(window.windowFlags().testFlag(Qt::WindowTitleHint));
    EXPECT_TRUE(window.canBecomeKeyWindow());
    EXPECT_EQ(window.geometry(), QRect(40, 50, 128, 106));
    ASSERT_NE(window.calendarControl(), nullptr);
    EXPECT_EQ(window.objectName(), QStringLiteral("miniCalendarWindow"));
    EXPECT_FALSE(window.accessibleName().isEmpty());
}

TEST(MiniCalendarWindow, ClosesWhenAnotherWindowBecomesActive)
{
    QWidget owner;
    owner.setObjectName(QStringLiteral("owner"));
    owner.resize(300, 200);
    owner.show();
    owner.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&owner));

    MiniCalendarWindow window;
    window.popUp(owner.mapToGlobal(QPoint(10, 10)), at(2026, 2, 14));
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    EXPECT_EQ(window.calendarControl()->date(), at(2026, 2, 14));
    EXPECT_TRUE(window.calendarControl()->hasFocus());

    QWidget other;
    other.resize(200, 100);
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_TRUE(QTest::qWaitFor([&] { return !window.isVisible(); }, 2000));
}

TEST(MiniCalendarWindow, PicksByKeyboardAndEscapeDismisses)
{
    MiniCalendarWindow window;
    QSignalSpy chosen(window.calendarControl(), &WBCalendarControl::dateChosen);
    window.popUp(QPoint(20, 20), at(2026, 2, 28));
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));

    QTest::keyClick(window.calendarControl(), Qt::Key_Right);
    QTest::keyClick(window.calendarControl(), Qt::Key_Return);
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toDateTime(), at(2026, 3, 1));
    EXPECT_TRUE(window.isVisible());
    QTest::keyClick(window.calendarControl(), Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}
