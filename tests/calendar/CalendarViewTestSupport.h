#pragma once

#include "calendar/CalendarTexts.h"
#include "calendar/ui/BVCalendarDayCell.h"
#include "calendar/ui/BVCalendarView.h"
#include "calendar/ui/BVCalendarViewDelegate.h"

#include <QAbstractItemModel>
#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QTest>

#include <memory>

// Counts what a calendar view reports.
struct RecordingDelegate : BVCalendarViewDelegate {
    int selectionChanges = 0;
    int willMove = 0;
    int didMove = 0;
    int doubleClicks = 0;
    int opens = 0;
    void calendarViewSelectionDidChange(BVCalendarView *) override { ++selectionChanges; }
    void calendarViewEventWillMove(BVCalendarView *) override { ++willMove; }
    void calendarViewEventDidMove(BVCalendarView *) override { ++didMove; }
    void calendarViewDidDoubleClick(BVCalendarView *) override { ++doubleClicks; }
    void calendarViewOpenSelection(BVCalendarView *) override { ++opens; }
};

namespace CalendarViewTest {

// A shown view of a fixed size, so the grid's measures are known.
inline std::unique_ptr<BVCalendarView> shownView(const QSize &size = QSize(700, 451))
{
    auto view = std::make_unique<BVCalendarView>();
    view->resize(size);
    view->show();
    [[maybe_unused]] const bool exposed = QTest::qWaitForWindowExposed(view.get());
    return view;
}

inline QDateTime midnight(int year, int month, int day)
{
    return QDateTime(QDate(year, month, day), QTime(0, 0));
}

// The middle of a row of a day's list, in its viewport.
inline QPoint rowCentre(BVCalendarDayCell *cell, int row)
{
    return cell->visualRect(cell->model()->index(row, 0)).center();
}

// A point in the empty part of a day's list, below its rows.
inline QPoint belowRows(BVCalendarDayCell *cell)
{
    return QPoint(cell->viewport()->width() / 2, cell->viewport()->height() - 3);
}

inline void click(BVCalendarDayCell *cell, const QPoint &position)
{
    QTest::mouseClick(cell->viewport(), Qt::LeftButton, Qt::NoModifier, position);
}

// Hands a drag's data to a day cell at a position, as the window system would during a drag.
// Whether the cell accepted the position is returned; with `drop` the drop follows.
inline bool dragOnto(BVCalendarDayCell *cell, const QMimeData *data, const QPoint &position, bool drop)
{
    QDragEnterEvent enter(position, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(cell->viewport(), &enter);
    if (!enter.isAccepted())
        return false;
    QDragMoveEvent move(position, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(cell->viewport(), &move);
    if (!move.isAccepted() || !drop) {
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(cell->viewport(), &leave);
        return move.isAccepted();
    }
    QDropEvent dropEvent(QPointF(position), Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(cell->viewport(), &dropEvent);
    return dropEvent.isAccepted();
}

} // namespace CalendarViewTest
