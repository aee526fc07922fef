#include "list/ui/MainWindowTestSupport.h"
#include "calendar/ui/BVCalendarView.h"
#include "calendar/ui/CalendarController.h"
#include "widgets/ReadableColors.h"

#include <QApplication>
#include <QImage>
#include <QListWidget>
#include <QPalette>

using namespace ListTest;
using namespace WindowTest;

// The filter bar, the calendar and the sidebar's course list draw colours of their own. On the
// desktop's dark colour scheme they follow it, switched while the window is open.
namespace {

QPalette darkPalette()
{
    QPalette palette;
    const QColor window(0x31, 0x36, 0x3b), base(0x23, 0x26, 0x29), text(0xef, 0xf0, 0xf1);
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Button, window);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::AlternateBase, base.lighter(115));
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(role, text);
    palette.setColor(QPalette::Highlight, QColor(0x3d, 0xae, 0xe9));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

// The share of the widget's pixels that are light, and of those that are dark.
std::pair<double, double> lightAndDark(QWidget *widget)
{
    const QImage image = widget->grab().toImage();
    qsizetype light = 0, dark = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const double luminance = ReadableColors::luminance(image.pixelColor(x, y));
            light += luminance > 0.5;
            dark += luminance < 0.1;
        }
    const double all = double(image.width()) * image.height();
    return {light / all, dark / all};
}

struct DarkScheme {
    QPalette before = QApplication::palette();
    DarkScheme() { QApplication::setPalette(darkPalette()); QCoreApplication::processEvents(); }
    ~DarkScheme() { QApplication::setPalette(before); QCoreApplication::processEvents(); }
};

} // namespace

TEST(DarkPalette, TheFilterBarCalendarAndCourseListTurnDarkWithTheSchemeAndBackAgain)
{
    freshPreferences();
    writeStore({record("Essay", {{"Course", "History"}, {"Date", QDateTime(QDate(2026, 11, 24), QTime(12, 0))}})});
    Window w;
    w.window->resize(1060, 660);
    BVCalendarView *month = w.window->calendarController()->monthlyView();
    month->resize(700, 500);
    QListWidget *courses = w.window->sidebar()->coursesList();
    const QColor lightCourses = courses->palette().color(QPalette::Base);
    ASSERT_GT(lightAndDark(w.window->filterBar()).first, 0.5);
    ASSERT_GT(lightAndDark(month).first, 0.5);
    {
        DarkScheme dark;
        // Mostly dark, with light titles, day numbers and text on it.
        const auto [barLight, barDark] = lightAndDark(w.window->filterBar());
        EXPECT_LT(barLight, 0.3);
        EXPECT_GT(barLight, 0.01);
        const auto [monthLight, monthDark] = lightAndDark(month);
        EXPECT_GT(monthDark, 0.5);
        EXPECT_GT(monthLight, 0.005);
        const QColor coursesBase = courses->palette().color(QPalette::Base);
        EXPECT_LT(ReadableColors::luminance(coursesBase), 0.2);
        EXPECT_GE(ReadableColors::contrast(courses->palette().color(QPalette::Text), coursesBase), ReadableColors::TextContrast);
        // The pale blue keeps its hue.
        EXPECT_NEAR(coursesBase.hslHue(), lightCourses.hslHue(), 10);
    }
    EXPECT_GT(lightAndDark(w.window->filterBar()).first, 0.5);
    EXPECT_GT(lightAndDark(month).first, 0.5);
    EXPECT_EQ(courses->palette().color(QPalette::Base), lightCourses);
}

TEST(DarkPalette, SurfacesSitAboveADarkBaseAsFarAsTheyWereBelowWhite)
{
    const QColor base(0x23, 0x26, 0x29);
    EXPECT_EQ(ReadableColors::surface(Qt::white, base).lightness(), base.lightness());
    const QColor grey = ReadableColors::surface(QColor::fromRgbF(0.96f, 0.96f, 0.96f), base);
    const QColor today = ReadableColors::surface(QColor::fromRgbF(0.92f, 0.95f, 0.98f), base);
    EXPECT_GT(grey.lightness(), base.lightness());
    EXPECT_GT(today.lightness(), grey.lightness());
    EXPECT_LT(ReadableColors::luminance(today), 0.2);
    // Still backgrounds: light text reads on them.
    EXPECT_GE(ReadableColors::contrast(QColor(0xef, 0xf0, 0xf1), today), 7.0);
    const QColor strip = ReadableColors::mirrored(QColor::fromRgbF(0.7137f, 0.7529f, 0.8118f));
    EXPECT_NEAR(strip.lightnessF(), 1.0 - QColor::fromRgbF(0.7137f, 0.7529f, 0.8118f).lightnessF(), 0.01);
}
