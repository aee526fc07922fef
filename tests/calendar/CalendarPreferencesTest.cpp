#include "CalendarControllerTestSupport.h"
#include "calendar/ui/BVCalendarDayCell.h"
#include "store/ui/AssignmentWindowPane.h"
#include "store/ui/ColorWell.h"
#include "store/ui/PreferencesWindow.h"

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QScreen>

#include <gtest/gtest.h>

// A calendar left open while the preferences window changes what it draws.
using namespace CalendarControllerTest;

namespace
{

// The pixels last painted for `widget`, as the window system shows them.
QImage onScreen(QWidget *widget)
{
    QWidget *top = widget->window();
    const QImage shot = top->screen()->grabWindow(top->winId()).toImage();
    return shot.copy(QRect(widget->mapTo(top, QPoint(0, 0)), widget->size()));
}

bool showsColour(QWidget *widget, const QColor &colour)
{
    const QImage image = onScreen(widget);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (std::abs(pixel.red() - colour.red()) <= 40 && std::abs(pixel.green() - colour.green()) <= 40
                && std::abs(pixel.blue() - colour.blue()) <= 40)
                return true;
        }
    return false;
}

template <typename Condition> bool eventually(Condition condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > 2000)
            return false;
        QTest::qWait(20);
    }
    return true;
}

} // namespace

TEST(CalendarPreferences, ACourseColourAndHiddenWeekendsFromThePanesShowAtOnce)
{
    const QDate tuesday(2026, 11, 24);
    Fixture f({ record("Essay", stored(2026, 11, 24, 17), { { AssignmentKeys::Course, "Biology" } }) });
    PropertyList::writeFile(Paths::coursesFile(),
        QVariantList { QVariantMap { { "Type", "Course" }, { "Name", "Biology" }, { "Display Name", "Biology" } } });
    f.monthly()->setFocusDate(QDateTime(QDate(2026, 11, 22), QTime(0, 0)));
    BVCalendarDayCell *cell = f.monthly()->dayCellForDate(tuesday);
    ASSERT_NE(cell, nullptr);
    ASSERT_EQ(f.titlesOn(f.monthly(), tuesday), QStringList { "Essay" });
    const QColor blue(0, 0, 255);
    ASSERT_TRUE(eventually([&] { return !onScreen(cell->viewport()).isNull(); }));
    EXPECT_FALSE(showsColour(cell->viewport(), blue));

    PreferencesWindow preferences;
    preferences.setAnimated(false);
    preferences.move(720, 40);
    preferences.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&preferences));

    // Colour by course, and Biology in blue.
    preferences.toolbarItem(QStringLiteral("AssignmentWindow"))->trigger();
    auto *pane = qobject_cast<AssignmentWindowPane *>(preferences.currentView());
    ASSERT_NE(pane, nullptr);
    auto *format = pane->findChild<QComboBox *>(QStringLiteral("colorFormat"));
    ASSERT_NE(format, nullptr);
    QTest::keyClick(format, Qt::Key_Down);
    ASSERT_EQ(format->currentIndex(), 1);
    ASSERT_NE(pane->well(QStringLiteral("Biology")), nullptr);
    // The calendar has repainted for losing the activation; only the colour can make it draw again.
    QTest::qWait(300);
    ASSERT_FALSE(showsColour(cell->viewport(), blue));
    pane->well(QStringLiteral("Biology"))->chooseColor(blue);
    EXPECT_TRUE(eventually([&] { return showsColour(cell->viewport(), blue); }));

    // Weekends hidden: Monday moves to the left edge.
    preferences.toolbarItem(QStringLiteral("General"))->trigger();
    auto *weekends = preferences.currentView()->findChild<QCheckBox *>(QStringLiteral("hideWeekends"));
    ASSERT_NE(weekends, nullptr);
    QTest::mouseClick(weekends, Qt::LeftButton, {}, QPoint(8, weekends->height() / 2));
    ASSERT_TRUE(weekends->isChecked());
    EXPECT_TRUE(f.monthly()->hiddenWeekends());
    EXPECT_EQ(f.monthly()->weekdayField(1)->x(), 0);
}
