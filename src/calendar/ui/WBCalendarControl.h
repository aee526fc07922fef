#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QFont>
#include <QImage>
#include <QPointer>
#include <QWidget>

#include <array>

class QPainter;

// A small month calendar for picking a day: the day numbers of one month in a six-by-seven grid over
// a background picture, the chosen day filled in light blue. A click or a drag changes the chosen
// day; the control then sends its action to its target (a method of the target that takes the
// control, invoked through Qt's meta-object system) and emits dateChosen() at the same moment.
//
// The grid is laid out in pixels measured from the bottom edge, as the original artwork was drawn;
// the methods below take and give widget coordinates (origin top-left) and do the flip themselves.
class WBCalendarControl : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kSlotCount = 42;
    static constexpr int kColumns = 7;
    static constexpr int kRows = 6;
    static constexpr int kCellWidth = 17;
    static constexpr int kCellHeight = 14;
    static constexpr int kLeftMargin = 4;
    static constexpr int kHeaderHeight = 20;

    explicit WBCalendarControl(QWidget *parent = nullptr);
    // initWithFrame:
    explicit WBCalendarControl(const QRect &frame, QWidget *parent = nullptr);

    QDateTime date() const { return m_currentDate; }
    // An invalid date is ignored.
    void setDate(const QDateTime &date);

    void setTarget(QObject *target);
    QObject *target() const { return m_target; }
    // The name of a slot or Q_INVOKABLE method of the target taking a WBCalendarControl*.
    void setAction(const QByteArray &action);
    QByteArray action() const { return m_action; }

    int firstDayOfWeek() const { return m_firstDayOfWeek; }
    int firstday() const { return m_firstday; }
    // The day number in a slot (0 to 41), 0 for an empty slot.
    int monthday(int slot) const;

    // The day under a point in widget coordinates, or 0 for the header and empty slots.
    int dayAtPoint(const QPointF &point) const;

    // Days in a month: month index 0 to 11, Gregorian rules; 0 for an index outside that range.
    static int numberofDayInMonthForYear(int month, int year);
    // The one-letter initial of a weekday (0 = Sunday), looked up in the "WBCalendar" strings.
    static QString weekdayInitial(int weekday);

    // The picture under the grid, shared by every calendar; loaded from the program's images on first
    // use. A null image draws a plain panel instead.
    static QImage backgroundImage();
    static void setBackgroundImage(const QImage &image);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    // Emitted whenever the action is due, whether or not a target is set.
    void dateChosen(const QDateTime &date);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    void initialise();
    void drawBackground(QPainter &painter);
    void drawday(QPainter &painter, int slot);
    // Moves the chosen date to another day of the shown month, keeping its time of day.
    void moveToDay(int day);
    void sendAction();
    void updateAccessibleDescription();

    QDateTime m_currentDate;
    bool m_newdate = false;
    QPointer<QObject> m_target;
    QByteArray m_action;
    int m_firstday = 0;
    std::array<int, kSlotCount> m_monthday {};
    int m_firstDayOfWeek = 0;
    QFont m_normalAttributes;
    QFont m_dayOfWeekAttributes;
};
