#include "list/ui/MainWindowTestSupport.h"

#include "list/ColumnCatalogue.h"
#include "store/ui/AssignmentWindowPane.h"
#include "store/ui/ColorWell.h"
#include "store/ui/PreferencesWindow.h"
#include "support/ScreenChecks.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

// The main window left open beside the preferences window: what the panes change shows in the list
// at once, without the main window being activated again.
using namespace ListTest;
using namespace WindowTest;
using namespace ScreenChecks;

namespace
{

void settle()
{
    QTest::qWait(300);
}

struct TwoDueDates {
    TwoDueDates()
    {
        freshPreferences();
        writeCourses({ course("Biology") });
        // Today is Sunday 2026-11-22: one assignment due today, one next Saturday.
        writeStore({ record("Essay", { { "Date", stored(2026, 11, 22, 17) }, { "Course", "Biology" } }),
            record("Lab", { { "Date", stored(2026, 11, 28, 9) }, { "Course", "Biology" } }) });
    }
};

int columnOf(const Controller *controller, const QString &identifier)
{
    const AssignmentTableModel *model = controller->tableModel();
    for (int column = 0; column < model->columnCount(); ++column)
        if (model->columnIdentifier(column) == identifier)
            return column;
    return -1;
}

QRect cellRect(const Window &w, int row, const QString &identifier)
{
    const int column = columnOf(w.controller(), identifier);
    return w.table()->visualRect(w.controller()->tableModel()->index(row, column));
}

QRect rowRect(const Window &w, int row)
{
    const QRect first = cellRect(w, row, ColumnCatalogue::Date);
    return QRect(0, first.top(), w.table()->viewport()->width(), first.height());
}

} // namespace

TEST(PreferencesFollowWindow, ColoursDateFormatAndDayBandsShowInTheOpenListAtOnce)
{
    TwoDueDates data;
    Window w;
    ASSERT_EQ(w.shown(), (QStringList { "Essay", "Lab" }));
    const AssignmentRef essay = w.controller()->displayAssignments().at(0);
    QWidget *cells = w.table()->viewport();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !onScreen(cells).isNull(); }, 2000));
    const QColor blue(0, 0, 255);
    const QColor band = QColor::fromRgbF(237 / 255.0f, 243 / 255.0f, 254 / 255.0f);
    EXPECT_FALSE(hasPixelNear(onScreen(cells), rowRect(w, 0), blue));
    EXPECT_FALSE(hasPixelNear(onScreen(cells), rowRect(w, 1), band, 2));

    PreferencesWindow preferences;
    preferences.setAnimated(false);
    preferences.move(600, 80);
    preferences.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&preferences));

    // Main Window pane: "Due Today" becomes blue. The row due today is drawn in it, every column.
    preferences.toolbarItem(QStringLiteral("AssignmentWindow"))->trigger();
    auto *pane = qobject_cast<AssignmentWindowPane *>(preferences.currentView());
    ASSERT_NE(pane, nullptr);
    ASSERT_NE(pane->well(PreferenceKeys::ColorKeys::DueToday), nullptr);
    // The main window lost the activation to the preferences window and has repainted for that;
    // from here on only the change itself can make it draw again.
    settle();
    pane->well(PreferenceKeys::ColorKeys::DueToday)->chooseColor(blue);
    EXPECT_TRUE(QTest::qWaitFor([&] { return hasPixelNear(onScreen(cells), cellRect(w, 0, ColumnCatalogue::Name), blue); }, 2000));
    EXPECT_TRUE(hasPixelNear(onScreen(cells), cellRect(w, 0, ColumnCatalogue::Date), blue));
    EXPECT_FALSE(hasPixelNear(onScreen(cells), rowRect(w, 1), blue));

    // General pane: the numeric date format, chosen from the keyboard, and the day bands.
    preferences.toolbarItem(QStringLiteral("General"))->trigger();
    auto *format = preferences.currentView()->findChild<QComboBox *>(QStringLiteral("dateFormat"));
    ASSERT_NE(format, nullptr);
    ASSERT_EQ(format->currentIndex(), 0);
    settle();
    const QImage longDates = onScreen(cells).copy(cellRect(w, 1, ColumnCatalogue::Date));
    QTest::keyClick(format, Qt::Key_Down);
    QTest::keyClick(format, Qt::Key_Down);
    ASSERT_EQ(format->currentIndex(), 2);
    EXPECT_EQ(w.controller()->tableModel()->cellText(1, ColumnCatalogue::Date).toString(), QStringLiteral("11/28/26"));
    // The pixels on screen are those of the new text: they match a fresh drawing of the cell and
    // no longer the long format's.
    EXPECT_TRUE(QTest::qWaitFor([&] {
        const QRect cell = cellRect(w, 1, ColumnCatalogue::Date);
        return onScreen(cells).copy(cell) == cells->grab(cell).toImage().convertToFormat(longDates.format());
    }, 2000));
    EXPECT_NE(onScreen(cells).copy(cellRect(w, 1, ColumnCatalogue::Date)), longDates);

    auto *bands = preferences.currentView()->findChild<QCheckBox *>(QStringLiteral("alternateRowColors"));
    ASSERT_NE(bands, nullptr);
    QTest::mouseClick(bands, Qt::LeftButton, {}, QPoint(8, bands->height() / 2));
    ASSERT_TRUE(bands->isChecked());
    // The first day is left plain, the second day banded.
    EXPECT_TRUE(QTest::qWaitFor([&] { return hasPixelNear(onScreen(cells), rowRect(w, 1), band, 2); }, 2000));
    EXPECT_FALSE(hasPixelNear(onScreen(cells), rowRect(w, 0), band, 2));

    // Only the drawing changed: the list still holds the records it loaded.
    EXPECT_EQ(w.controller()->displayAssignments().at(0), essay);
}

TEST(PreferencesFollowWindow, LabelsAndColumnsFromThePanesReachTheOpenWindow)
{
    TwoDueDates data;
    Window w;
    PreferencesWindow preferences;
    preferences.setAnimated(false);
    preferences.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&preferences));

    // A column switched on in the Main Window pane appears in the open list.
    preferences.toolbarItem(QStringLiteral("AssignmentWindow"))->trigger();
    ASSERT_EQ(columnOf(w.controller(), ColumnCatalogue::DaysLeft), -1);
    auto *daysLeft = preferences.currentView()->findChild<QCheckBox *>(QStringLiteral("columnDaysLeft"));
    ASSERT_NE(daysLeft, nullptr);
    QTest::mouseClick(daysLeft, Qt::LeftButton, {}, QPoint(8, daysLeft->height() / 2));
    EXPECT_TRUE(QTest::qWaitFor([&] { return columnOf(w.controller(), ColumnCatalogue::DaysLeft) >= 0; }, 2000));
    EXPECT_EQ(w.controller()->tableModel()->cellText(1, ColumnCatalogue::DaysLeft).toString(), QStringLiteral("6"));

    // A label typed in the Labels pane: the sidebar names the empty personal detail by it.
    preferences.toolbarItem(QStringLiteral("Labels"))->trigger();
    auto *nameLabel = preferences.currentView()->findChild<QLineEdit *>(QStringLiteral("nameLabel"));
    ASSERT_NE(nameLabel, nullptr);
    nameLabel->selectAll();
    QTest::keyClicks(nameLabel, QStringLiteral("Nickname"));
    QStringList shown;
    for (const QLabel *label : w.window->sidebar()->personalInfoLabels())
        shown.append(label->text());
    EXPECT_TRUE(shown.contains(QStringLiteral("nickname"))) << shown.join(QLatin1Char(',')).toStdString();
}
