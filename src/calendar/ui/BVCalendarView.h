#pragma once

#include "calendar/CalendarData.h"
#include "calendar/CalendarGrid.h"
#include "calendar/CalendarLayout.h"

#include <QDateTime>
#include <QWidget>

#include <array>

class BVCalendarDayCell;
class BVCalendarViewDelegate;
class QLabel;
class QPushButton;
struct CalendarDisplayCell;

// A weekly or monthly calendar: a header with the month title, the "<", ">" and "Today" buttons
// and the weekday names over a grid of 42 day cells, each listing the entries of its day. The grid
// is built around the focus date; clicking an entry selects it, dragging it to another day moves
// it, double-clicking a day and Return on an entry are passed to the delegate. Arrow keys move
// between days.
class BVCalendarView : public QWidget
{
    Q_OBJECT
public:
    explicit BVCalendarView(QWidget *parent = nullptr);
    ~BVCalendarView() override;

    // --- entries ---------------------------------------------------------------------------------
    // Appends an entry under the day of `date` and shows it (only that day's cell is re-read).
    void addObject(const AssignmentRef &object, const QString &title, const QDateTime &date);
    // Replaces every entry at once and redraws once: what a rebuild from the assignments uses.
    void setObjects(const QList<CalendarEntry> &entries);
    void removeAllObjects();
    const QHash<QDate, QList<CalendarEntry>> &dataDictionary() const { return m_data.dataDictionary(); }
    const CalendarData &data() const { return m_data; }

    // --- selection -------------------------------------------------------------------------------
    // Selects the last entry of that day standing for that very record; the focus moves there.
    void selectObject(const AssignmentRef &object, const QDateTime &date);
    void deselectAll();
    // Clears the row selection of every day cell but this one.
    void deselectAllExceptForCell(const BVCalendarDayCell *cell);
    void moveSelectedEventToDate(const QDate &date);
    void setSelectedEventToDate(const QDate &date, int row);
    std::optional<QString> selectedTitle() const { return m_data.selectedTitle(); }
    // The selected entry's day at midnight; invalid when nothing is selected.
    QDateTime selectedDate() const;
    AssignmentRef selectedObject() const { return m_data.selectedObject(); }

    // --- focus, navigation and mode --------------------------------------------------------------
    // The navigation buttons' action, by title: "<", ">", "today" (any case); anything else does
    // nothing.
    void changeDateIncrementally(const QString &title);
    QDateTime focusDate() const { return m_focusDate; }
    void setFocusDate(const QDateTime &date);
    bool hiddenWeekends() const { return m_hideWeekends; }
    void setHiddenWeekends(bool hidden);
    void setWeeklyView();
    void setMonthlyView();
    bool weeklyView() const { return m_currentView == CalendarGrid::Mode::Weekly; }
    bool monthlyView() const { return m_currentView == CalendarGrid::Mode::Monthly; }
    CalendarGrid::Mode mode() const { return m_currentView; }

    BVCalendarViewDelegate *delegate() const { return m_delegate; }
    void setDelegate(BVCalendarViewDelegate *delegate) { m_delegate = delegate; }

    // --- drawing ---------------------------------------------------------------------------------
    void drawCalendar();
    void colorCells();
    // Paints the entries again, as they are now coloured (the layout stays).
    void redrawEntries();
    // How many week rows the grid shows now.
    int rows() const { return m_rows; }
    const CalendarLayout &currentLayout() const { return m_layout; }
    // Cell number 0 to 41.
    BVCalendarDayCell *dayCell(int number) const;
    // The laid-out cell showing that day (the visible one first), or none.
    BVCalendarDayCell *dayCellForDate(const QDate &date) const;
    QLabel *currentMonthField() const { return m_currentMonthField; }
    QPushButton *leftButton() const { return m_leftButton; }
    QPushButton *rightButton() const { return m_rightButton; }
    QPushButton *todayButton() const { return m_todayButton; }
    QLabel *weekdayField(int day) const { return m_weekdayFields.at(day); }
    // Counts the paint passes of the day cells, so a delegate can read its settings once a pass.
    quint64 paintPass() const { return m_paintPass; }
    void beginDayCellPaint() { ++m_paintPass; }

    // --- what the day cells report ---------------------------------------------------------------
    void tableViewSelectionDidChange();
    void eventWillMove();
    void eventDidMove();
    void didDoubleClick();
    void willDisplayCell(BVCalendarDayCell *cell, CalendarDisplayCell &display, int row);
    // Arrow keys and Return from a day cell (or the view); false when the key is not ours.
    bool handleKey(BVCalendarDayCell *cell, int key);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void buildHeader();
    // The page's colours for the palette in use: white paper on a light scheme, the base on a dark one.
    void applyColourScheme();
    void navigationClicked();
    void reloadCellFor(const QDate &date);
    // Moves the focus by whole days and puts the keyboard in the new day's cell.
    void moveFocusByDays(int days);
    void updateAccessibleNames();

    CalendarData m_data;
    QDateTime m_focusDate;
    bool m_hideWeekends = false;
    CalendarGrid::Mode m_currentView = CalendarGrid::Mode::Monthly;
    int m_rows = 0;
    CalendarLayout m_layout;
    QList<CalendarGrid::Slot> m_slots;

    QLabel *m_currentMonthField = nullptr;
    QPushButton *m_leftButton = nullptr;
    QPushButton *m_rightButton = nullptr;
    QPushButton *m_todayButton = nullptr;
    std::array<QLabel *, CalendarGrid::DaysPerWeek> m_weekdayFields{};
    std::array<BVCalendarDayCell *, CalendarGrid::CellCount> m_cells{};

    BVCalendarViewDelegate *m_delegate = nullptr;
    quint64 m_paintPass = 0;
};
