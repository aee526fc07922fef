#include "CalendarControllerTestSupport.h"
#include "calendar/ui/BVCalendarDayCell.h"
#include "store/ui/AssignmentWindowPane.h"
#include "store/ui/ColorWell.h"
#include "store/ui/PreferencesWindow.h"
#include "support/CourseRecords.h"
#include "support/ScreenChecks.h"

#include <QCheckBox>
#include <QComboBox>

#include <gtest/gtest.h>

// A calendar left open while the preferences window changes what it draws.
using namespace CalendarControllerTest;
using namespace ScreenChecks;

TEST(CalendarPreferences, ACourseColourAndHiddenWeekendsFromThePanesShowAtOnce)
{
    const QDate tuesday(2026, 11, 24);
    Fixture f({ record("Essay", stored(2026, 11, 24, 17), { { AssignmentKeys::Course, "Biology" } }) });
    PropertyList::writeFile(Paths::coursesFile(), QVariantList { CourseRecords::course("Biology") });
    f.monthly()->setFocusDate(QDateTime(QDate(2026, 11, 22), QTime(0, 0)));
    BVCalendarDayCell *cell = f.monthly()->dayCellForDate(tuesday);
    ASSERT_NE(cell, nullptr);
    ASSERT_EQ(f.titlesOn(f.monthly(), tuesday), QStringList { "Essay" });
    const QColor blue(0, 0, 255);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !onScreen(cell->viewport()).isNull(); }, 2000));
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
    EXPECT_TRUE(QTest::qWaitFor([&] { return showsColour(cell->viewport(), blue); }, 2000));

    // Weekends hidden: Monday moves to the left edge.
    preferences.toolbarItem(QStringLiteral("General"))->trigger();
    auto *weekends = preferences.currentView()->findChild<QCheckBox *>(QStringLiteral("hideWeekends"));
    ASSERT_NE(weekends, nullptr);
    QTest::mouseClick(weekends, Qt::LeftButton, {}, QPoint(8, weekends->height() / 2));
    ASSERT_TRUE(weekends->isChecked());
    EXPECT_TRUE(f.monthly()->hiddenWeekends());
    EXPECT_EQ(f.monthly()->weekdayField(1)->x(), 0);
}
