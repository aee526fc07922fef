#pragma once

#include <QColor>
#include <QDate>
#include <QDateTime>
#include <QListView>

class BVCalendarView;
class DayCellModel;
class QMimeData;

// One day of a calendar view: a small one-column list of that day's entries under the day number,
// scrolling when they do not fit. It takes the clicks, drags and drops of its day and hands them to
// the calendar view that owns it.
class BVCalendarDayCell : public QListView
{
    Q_OBJECT
public:
    // Where a drag would land: between rows ("above" row `row`, where `row` may be one past the
    // last row) or onto row `row`.
    struct DropTarget {
        int row = -1;
        bool above = false;
    };

    BVCalendarDayCell(BVCalendarView *superView, int number);

    BVCalendarView *superView() const { return m_superView; }
    int number() const { return m_number; }
    QDate date() const { return m_date; }
    // The day at midnight.
    QDateTime dateTime() const;
    // Days of another month than the focus show greyed and take no clicks (drops they do take).
    bool isDayEnabled() const { return m_dayEnabled; }
    void setDay(const QDate &date, bool enabled);
    QColor background() const { return m_background; }
    void setBackground(const QColor &color);

    // Re-reads the day's entries. The selected row stays when the day did not change and still has
    // that row.
    void reload();
    // The first selected row, or -1.
    int selectedRow() const;
    // Selects one row as a click would (a row >= 1 becomes the calendar's selection).
    // Selects one row as a click would: a row >= 1 becomes the calendar's selection, and with
    // `notify` the calendar reports the change.
    void selectRow(int row, bool notify = true);
    void clearRowSelection();

    // The font of every row, and the row height that follows from it.
    static QFont dayFont();
    static int rowHeight();

    // The start of a drag of the selected row: refused (nothing) when no entry row is selected;
    // otherwise the entry becomes the calendar's selection, the calendar announces the move and
    // the data to put on the drag is returned.
    QMimeData *dragDataForSelection();
    DropTarget dropTargetAt(const QPoint &viewportPosition) const;
    // Only between rows at row 1 or below.
    static bool acceptsDrop(const DropTarget &target) { return target.above && target.row >= 1; }

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    // Runs the click rules; false when the click was taken by a day of another month.
    bool handlePress(QMouseEvent *event);
    void onSelectionChanged();
    int rowAt(const QPoint &viewportPosition) const;
    void updateAccessibleName();

    BVCalendarView *m_superView;
    int m_number;
    QDate m_date;
    bool m_dayEnabled = true;
    DayCellModel *m_model;
    bool m_reloading = false;
    QColor m_background;
    int m_dropIndicatorRow = -1;
};
