#include "calendar/ui/WBCalendarControl.h"
#include "support/TestEnvironment.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>
#include <QTranslator>
#include <gtest/gtest.h>

namespace
{

// Stands in for a translation of the "WBCalendar" strings: the first weekday and a few initials.
class CalendarStrings : public QTranslator
{
public:
    QString firstDay = QStringLiteral("1");
    QMap<QString, QString> initials;

    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *sourceText, const char *, int) const override
    {
        if (qstrcmp(context, "WBCalendar") != 0)
            return {};
        if (qstrcmp(sourceText, "FirstDay") == 0)
            return firstDay;
        return initials.value(QString::fromLatin1(sourceText));
    }
};

// Receives the control's action the way a window using it would.
class ActionTarget : public QObject
{
    Q_OBJECT
public:
    int calls = 0;
    WBCalendarControl *sender = nullptr;
    QDate lastDate;
public Q_SLOTS:
    void calendarChanged(WBCalendarControl *control)
    {
        ++calls;
        sender = control;
        lastDate = control->date().date();
    }
};

QDateTime at(int year, int month, int day)
{
    return QDateTime(QDate(year, month, day), QTime(10, 30, 0));
}

// Widget coordinates of the centre of a slot's cell.
QPoint slotCentre(int slot)
{
    return QPoint(WBCalendarControl::kLeftMargin + WBCalendarControl::kCellWidth * (slot % 7) + 9,
        WBCalendarControl::kHeaderHeight + WBCalendarControl::kCellHeight * (slot / 7) + 7);
}

int slotOfDay(const WBCalendarControl &control, int day)
{
    for (int slot = 0; slot < WBCalendarControl::kSlotCount; ++slot) {
        if (control.monthday(slot) == day)
            return slot;
    }
    return -1;
}

// Shows `control` at its own size with its action sent to `target`.
void watch(WBCalendarControl &control, ActionTarget &target)
{
    control.resize(control.sizeHint());
    control.setTarget(&target);
    control.setAction("calendarChanged");
    control.show();
}

class MiniCalendarControl : public testing::Test
{
protected:
    void SetUp() override { WBCalendarControl::setBackgroundImage(QImage()); }
};

} // namespace

TEST_F(MiniCalendarControl, MonthLengthsFollowTheGregorianLeapRules)
{
    // Every month of five centuries, the 1900/2000/2100 rules among them, against QDate.
    EXPECT_EQ(WBCalendarControl::numberofDayInMonthForYear(12, 2026), 0);
    EXPECT_EQ(WBCalendarControl::numberofDayInMonthForYear(-1, 2026), 0);
    for (int year = 1896; year <= 2404; ++year) {
        for (int month = 0; month < 12; ++month)
            ASSERT_EQ(
                WBCalendarControl::numberofDayInMonthForYear(month, year), QDate(year, month + 1, 1).daysInMonth())
                << year << "-" << month + 1;
    }
}

TEST_F(MiniCalendarControl, StartsOnTodayWithSundayFirstWhenNoStringsAreInstalled)
{
    WBCalendarControl control;
    EXPECT_EQ(control.date(), TestEnvironment::pinnedNow());
    EXPECT_EQ(control.firstDayOfWeek(), 0);
    EXPECT_EQ(WBCalendarControl::weekdayInitial(0), QStringLiteral("S"));
    EXPECT_EQ(WBCalendarControl::weekdayInitial(3), QStringLiteral("W"));
    EXPECT_EQ(control.objectName(), QStringLiteral("miniCalendarControl"));
    EXPECT_FALSE(control.accessibleName().isEmpty());
}

TEST_F(MiniCalendarControl, SlotsPutEveryDayUnderItsWeekdayWhicheverDayIsChosen)
{
    WBCalendarControl control;
    for (int year : { 2008, 2026, 2100 }) {
        for (int month = 1; month <= 12; ++month) {
            const QDate first(year, month, 1);
            const int expectedFirst = first.dayOfWeek() % 7;
            for (int day = 1; day <= first.daysInMonth(); day += 3) {
                control.setDate(at(year, month, day));
                ASSERT_EQ(control.firstday(), expectedFirst) << year << "-" << month << "-" << day;
                for (int slot = 0; slot < WBCalendarControl::kSlotCount; ++slot) {
                    const int number = slot - expectedFirst + 1;
                    const int expected = number >= 1 && number <= first.daysInMonth() ? number : 0;
                    ASSERT_EQ(control.monthday(slot), expected) << year << "-" << month << " slot " << slot;
                }
            }
        }
    }
    // The leap day gets its slot; February 2100 stops at the 28th.
    control.setDate(at(2008, 2, 10));
    EXPECT_EQ(control.monthday(control.firstday() + 28), 29);
    control.setDate(at(2100, 2, 10));
    EXPECT_EQ(control.monthday(control.firstday() + 28), 0);
    // A month that starts on a Saturday and has 31 days runs into the sixth row.
    control.setDate(at(2026, 8, 15));
    EXPECT_EQ(control.firstday(), 6);
    EXPECT_EQ(control.monthday(36), 31);
}

TEST_F(MiniCalendarControl, AnInvalidDateIsIgnoredAndTheTimeOfDayIsKept)
{
    WBCalendarControl control;
    control.setDate(at(2026, 3, 9));
    control.setDate(QDateTime());
    EXPECT_EQ(control.date(), at(2026, 3, 9));
}

TEST_F(MiniCalendarControl, LocalizedStringsChooseTheFirstWeekdayAndTheInitials)
{
    CalendarStrings strings;
    strings.initials.insert(QStringLiteral("M"), QStringLiteral("L"));
    QCoreApplication::installTranslator(&strings);
    WBCalendarControl control;
    QCoreApplication::removeTranslator(&strings);

    EXPECT_EQ(control.firstDayOfWeek(), 1);
    QCoreApplication::installTranslator(&strings);
    QStringList header;
    for (int column = 0; column < 7; ++column)
        header << WBCalendarControl::weekdayInitial(column + control.firstDayOfWeek());
    QCoreApplication::removeTranslator(&strings);
    EXPECT_EQ(header.join(QLatin1Char(' ')), QStringLiteral("L T W T F S S"));

    // November 2026 begins on a Sunday, the last column when Monday comes first.
    control.setDate(at(2026, 11, 22));
    EXPECT_EQ(control.firstday(), 6);
    EXPECT_EQ(control.monthday(6), 1);
    EXPECT_EQ(control.monthday(5), 0);
    EXPECT_EQ(control.monthday(35), 30);
    // A month beginning on a Monday starts in the first slot.
    control.setDate(at(2026, 6, 30));
    EXPECT_EQ(control.firstday(), 0);

    // Only whole numbers count; anything else keeps Sunday first.
    strings.firstDay = QStringLiteral("Monday");
    QCoreApplication::installTranslator(&strings);
    WBCalendarControl unreadable;
    QCoreApplication::removeTranslator(&strings);
    EXPECT_EQ(unreadable.firstDayOfWeek(), 0);
}

TEST_F(MiniCalendarControl, DayAtPointFindsCellsByTheirEdges)
{
    WBCalendarControl control;
    control.resize(control.sizeHint());
    control.setDate(at(2026, 11, 22)); // first day in slot 0, thirty days
    // Header: everything above 20 pixels from the top.
    EXPECT_EQ(control.dayAtPoint(QPointF(30, 0)), 0);
    EXPECT_EQ(control.dayAtPoint(QPointF(30, 19.9)), 0);
    // Row 0 runs from 20 to just under 34, column 0 from 4 to just under 21.
    EXPECT_EQ(control.dayAtPoint(QPointF(4, 20)), 1);
    EXPECT_EQ(control.dayAtPoint(QPointF(20.9, 33.9)), 1);
    EXPECT_EQ(control.dayAtPoint(QPointF(21, 20)), 2);
    EXPECT_EQ(control.dayAtPoint(QPointF(4, 34)), 8);
    EXPECT_EQ(control.dayAtPoint(QPointF(37.9, 47.9)), 9);
    EXPECT_EQ(control.dayAtPoint(QPointF(38, 48)), 17);
    // Outside the grid's sides the column is clamped; below it the row stays at the sixth.
    EXPECT_EQ(control.dayAtPoint(QPointF(0, 20)), 1);
    EXPECT_EQ(control.dayAtPoint(QPointF(500, 20)), 7);
    EXPECT_EQ(control.dayAtPoint(QPointF(4, 76)), 29);
    EXPECT_EQ(control.dayAtPoint(QPointF(4, 90)), 0); // slot 35, empty
    EXPECT_EQ(control.dayAtPoint(QPointF(21, 300)), 0); // slot 36, empty
    EXPECT_EQ(control.dayAtPoint(QPointF(21, 76)), 30);
    EXPECT_EQ(control.dayAtPoint(QPointF(38, 76)), 0); // slot 30, empty
    EXPECT_EQ(control.dayAtPoint(QPointF(-1e12, 1e12)), 0);
    EXPECT_EQ(control.dayAtPoint(QPointF(1e12, 20)), 7);
}

TEST_F(MiniCalendarControl, AClickOnADayMovesTheDateAndSendsTheAction)
{
    WBCalendarControl control;
    ActionTarget target;
    QSignalSpy chosen(&control, &WBCalendarControl::dateChosen);
    watch(control, target);

    QTest::mouseClick(&control, Qt::LeftButton, {}, slotCentre(slotOfDay(control, 3)));
    EXPECT_EQ(control.date(), at(2026, 11, 3)); // time of day kept
    EXPECT_EQ(target.calls, 1);
    EXPECT_EQ(target.sender, &control);
    EXPECT_EQ(target.lastDate, QDate(2026, 11, 3));
    EXPECT_EQ(chosen.count(), 1);

    // The chosen day itself still sends the action.
    QTest::mouseClick(&control, Qt::LeftButton, {}, slotCentre(slotOfDay(control, 3)));
    EXPECT_EQ(control.date(), at(2026, 11, 3));
    EXPECT_EQ(target.calls, 2);

    // The header and empty slots do nothing.
    QTest::mouseClick(&control, Qt::LeftButton, {}, QPoint(30, 8));
    QTest::mouseClick(&control, Qt::LeftButton, {}, slotCentre(40));
    EXPECT_EQ(target.calls, 2);
    EXPECT_EQ(chosen.count(), 2);
    EXPECT_EQ(control.date(), at(2026, 11, 3));

    // Without an action the target hears nothing, but the date still moves.
    control.setAction(QByteArray());
    QTest::mouseClick(&control, Qt::LeftButton, {}, slotCentre(slotOfDay(control, 10)));
    EXPECT_EQ(control.date(), at(2026, 11, 10));
    EXPECT_EQ(target.calls, 2);
}

TEST_F(MiniCalendarControl, ADragAcrossDaysSendsTheActionOnceAtMouseUp)
{
    WBCalendarControl control;
    ActionTarget target;
    watch(control, target);

    QTest::mousePress(&control, Qt::LeftButton, {}, slotCentre(slotOfDay(control, 22)));
    EXPECT_EQ(target.calls, 1); // pressing on a day always sends
    for (int day : { 23, 24, 25 }) {
        QTest::mouseMove(&control, slotCentre(slotOfDay(control, day)));
        EXPECT_EQ(control.date().date(), QDate(2026, 11, day));
    }
    // Over the header the day stays where it was.
    QTest::mouseMove(&control, QPoint(40, 5));
    EXPECT_EQ(control.date().date(), QDate(2026, 11, 25));
    EXPECT_EQ(target.calls, 1);
    QTest::mouseRelease(&control, Qt::LeftButton, {}, QPoint(40, 5));
    EXPECT_EQ(target.calls, 2);
    EXPECT_EQ(target.lastDate, QDate(2026, 11, 25));
    EXPECT_EQ(control.date().time(), QTime(10, 30));

    // A plain click afterwards sends once, at mouse-down only.
    QTest::mouseClick(&control, Qt::LeftButton, {}, slotCentre(slotOfDay(control, 2)));
    EXPECT_EQ(target.calls, 3);
}

TEST_F(MiniCalendarControl, ArrowKeysMoveTheChosenDayAndReturnPicksIt)
{
    WBCalendarControl control;
    ActionTarget target;
    watch(control, target);

    QTest::keyClick(&control, Qt::Key_Right);
    EXPECT_EQ(control.date(), at(2026, 11, 23));
    QTest::keyClick(&control, Qt::Key_Down);
    EXPECT_EQ(control.date(), at(2026, 11, 30));
    QTest::keyClick(&control, Qt::Key_Down); // into December: the grid follows
    EXPECT_EQ(control.date(), at(2026, 12, 7));
    EXPECT_EQ(control.firstday(), 2); // 1 December 2026 is a Tuesday
    QTest::keyClick(&control, Qt::Key_Left);
    QTest::keyClick(&control, Qt::Key_Up);
    EXPECT_EQ(control.date(), at(2026, 11, 29));
    EXPECT_EQ(target.calls, 0);
    QTest::keyClick(&control, Qt::Key_Return);
    EXPECT_EQ(target.calls, 1);
    EXPECT_EQ(target.lastDate, QDate(2026, 11, 29));
}

TEST_F(MiniCalendarControl, DrawsTheChosenDayFillAndWorksWithoutABackgroundPicture)
{
    WBCalendarControl control;
    control.resize(control.sizeHint());
    EXPECT_EQ(control.sizeHint(), QSize(128, 106));
    const QImage plain = control.grab().toImage();
    ASSERT_FALSE(plain.isNull());
    // Chosen day 22 is in slot 21: row 3, column 0; the fill starts one pixel right of the cell.
    const QColor fill(196, 224, 251);
    const int top = 20 + 1 + 14 * 3;
    EXPECT_EQ(plain.pixelColor(6, top + 1), fill);
    EXPECT_EQ(plain.pixelColor(21, top + 12), fill);
    EXPECT_NE(plain.pixelColor(23, top + 1), fill); // the 23rd is not filled
    EXPECT_NE(plain.pixelColor(6, top - 2), fill); // nor the 15th above it

    // A picture is drawn at its own size from the bottom-left corner, and sets the size.
    QImage back(60, 30, QImage::Format_RGB32);
    back.fill(QColor(200, 0, 0));
    WBCalendarControl::setBackgroundImage(back);
    WBCalendarControl withPicture;
    EXPECT_EQ(withPicture.sizeHint(), QSize(60, 30));
    withPicture.resize(128, 106);
    const QImage drawn = withPicture.grab().toImage();
    EXPECT_EQ(drawn.pixelColor(1, 105), QColor(200, 0, 0));
    EXPECT_EQ(drawn.pixelColor(58, 77), QColor(200, 0, 0));
    EXPECT_NE(drawn.pixelColor(1, 74), QColor(200, 0, 0));
    WBCalendarControl::setBackgroundImage(QImage());
}

#include "MiniCalendarControlTest.moc"
