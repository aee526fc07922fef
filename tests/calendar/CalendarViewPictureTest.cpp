#include "CalendarControllerTestSupport.h"
#include "TestEnvironment.h"

#include <QImage>
#include <QScrollBar>

#include <gtest/gtest.h>

#include <functional>

using namespace CalendarControllerTest;

// The calendars as drawn: cell tints, the list's text colours on the entries, the header line.
// With QUILLORY_SHOT_DIR set the pictures are also saved there for a person to look at.

namespace {

AssignmentList busyMonth()
{
    return {record("History essay", stored(2026, 11, 18, 23, 59)),
            record("Lab report", stored(2026, 11, 22, 17)),
            record("Problem set 7", stored(2026, 11, 23, 9)),
            record("Read chapter 12", stored(2026, 11, 24, 8)),
            record("Quiz review", stored(2026, 11, 24, 12)),
            record("Poster draft", stored(2026, 11, 26, 10)),
            record("Vocabulary list", stored(2026, 11, 10, 10), {{AssignmentKeys::Completed, true}}),
            record("Group project", stored(2026, 12, 2, 15)),
            record("Final paper outline", stored(2026, 11, 30, 12))};
}

void save(const QImage &picture, const QString &name)
{
    const QString folder = qEnvironmentVariable("QUILLORY_SHOT_DIR");
    if (!folder.isEmpty())
        picture.save(folder + QLatin1Char('/') + name);
}

// Whether any pixel inside `area` passes the test.
bool anyPixel(const QImage &picture, const QRect &area, const std::function<bool(const QColor &)> &test)
{
    for (int y = area.top(); y <= area.bottom(); ++y)
        for (int x = area.left(); x <= area.right(); ++x)
            if (test(picture.pixelColor(x, y)))
                return true;
    return false;
}

// Where a row of a day's list lies in the picture of the whole view.
QRect rowInView(BVCalendarView *view, const QDate &day, int row)
{
    BVCalendarDayCell *cell = view->dayCellForDate(day);
    const QRect inViewport = cell->visualRect(cell->model()->index(row, 0));
    return QRect(cell->viewport()->mapTo(view, inViewport.topLeft()), inViewport.size());
}

bool near(const QColor &colour, int red, int green, int blue)
{
    return std::abs(colour.red() - red) <= 3 && std::abs(colour.green() - green) <= 3
        && std::abs(colour.blue() - blue) <= 3;
}

} // namespace

TEST(CalendarViewPictureTest, TheMonthAsDrawn)
{
    Fixture f(busyMonth(), QSize(980, 640));
    BVCalendarView *view = f.monthly();
    BVCalendarDayCell *tuesday = view->dayCellForDate(QDate(2026, 11, 24));
    CalendarViewTest::click(tuesday, CalendarViewTest::rowCentre(tuesday, 2));
    const QImage picture = view->grab().toImage();
    save(picture, "monthly.png");

    // Today's tint lies over the white view at 90 %; another month's days are light grey.
    BVCalendarDayCell *today = view->dayCellForDate(QDate(2026, 11, 22));
    const QPoint insideToday = today->geometry().bottomRight() - QPoint(6, 6);
    EXPECT_TRUE(near(picture.pixelColor(insideToday), 237, 243, 250)) << picture.pixelColor(insideToday).name().toStdString();
    BVCalendarDayCell *december = view->dayCellForDate(QDate(2026, 12, 4));
    EXPECT_TRUE(near(picture.pixelColor(december->geometry().bottomRight() - QPoint(6, 6)), 245, 245, 245));
    // The thin grey line under the header, half a pixel wide across the edge of rows 29 and 30.
    const int x = view->width() / 3;
    EXPECT_LT(std::min(picture.pixelColor(x, 29).red(), picture.pixelColor(x, 30).red()), 235);
    EXPECT_EQ(picture.pixelColor(x, 26), QColor(Qt::white));

    // Past due in the default dark red, due tomorrow in its dark yellow, done in green.
    EXPECT_TRUE(anyPixel(picture, rowInView(view, QDate(2026, 11, 18), 1), [](const QColor &c) {
        return c.red() > 150 && c.green() < 60 && c.blue() < 60;
    }));
    EXPECT_TRUE(anyPixel(picture, rowInView(view, QDate(2026, 11, 23), 1), [](const QColor &c) {
        return c.red() > 150 && c.green() > 110 && c.green() < 180 && c.blue() < 60;
    }));
    EXPECT_TRUE(anyPixel(picture, rowInView(view, QDate(2026, 11, 10), 1), [](const QColor &c) {
        return c.green() > 100 && c.red() < 60 && c.blue() < 60;
    }));
    // The selected entry is white on the highlight.
    EXPECT_TRUE(anyPixel(picture, rowInView(view, QDate(2026, 11, 24), 2), [](const QColor &c) {
        return c.red() > 240 && c.green() > 240 && c.blue() > 240;
    }));
}

TEST(CalendarViewPictureTest, TheWeekAsDrawn)
{
    Fixture f(busyMonth(), QSize(980, 400));
    f.calendar->setActiveCalendar("Weekly");
    f.calendar->updateCalendar();
    BVCalendarView *view = f.weekly();
    view->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(view));
    const QImage picture = view->grab().toImage();
    save(picture, "weekly.png");
    EXPECT_EQ(view->dayCell(0)->date(), QDate(2026, 11, 22));
    // The focus day (today) is tinted and its entry coloured as due today.
    EXPECT_TRUE(near(picture.pixelColor(view->dayCell(0)->geometry().bottomRight() - QPoint(6, 6)), 237, 243, 250));
    EXPECT_TRUE(anyPixel(picture, rowInView(view, QDate(2026, 11, 22), 1), [](const QColor &c) {
        return c.red() > 150 && c.green() > 60 && c.green() < 140 && c.blue() < 60;
    }));
    // Weekdays of the week view are white, not grey.
    EXPECT_TRUE(near(picture.pixelColor(view->dayCell(3)->geometry().bottomRight() - QPoint(6, 6)), 255, 255, 255));
}

TEST(CalendarViewPictureTest, ACrowdedDayScrollsAndWeekendsCanHide)
{
    AssignmentList records = busyMonth();
    for (int i = 1; i <= 12; ++i)
        records.append(record(QStringLiteral("Flash cards, set %1").arg(i), stored(2026, 11, 25, 8, i)));
    Fixture f(records, QSize(800, 520));
    setGeneral(PreferenceKeys::GeneralKeys::HideWeekends, true);
    f.calendar->updateCalendar();
    BVCalendarView *view = f.monthly();
    ASSERT_TRUE(view->hiddenWeekends());
    BVCalendarDayCell *crowded = view->dayCellForDate(QDate(2026, 11, 25));
    QCoreApplication::processEvents();
    const QImage picture = view->grab().toImage();
    save(picture, "monthly-weekdays.png");
    EXPECT_TRUE(crowded->verticalScrollBar()->isVisible());
    EXPECT_FALSE(view->dayCellForDate(QDate(2026, 11, 24))->verticalScrollBar()->isVisible());
    // Monday starts at the left edge; the weekend's cells lie outside.
    EXPECT_EQ(view->dayCellForDate(QDate(2026, 11, 23))->x(), 0);
    EXPECT_GE(view->dayCellForDate(QDate(2026, 11, 28))->x(), view->width());
    // The last entry can be scrolled to and selected.
    crowded->selectRow(12);
    ASSERT_TRUE(view->selectedTitle().has_value());
    EXPECT_EQ(view->selectedTitle()->toStdString(), "Flash cards, set 12");
    EXPECT_GT(crowded->verticalScrollBar()->value(), 0);
}
