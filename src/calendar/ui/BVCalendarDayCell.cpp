#include "calendar/ui/BVCalendarDayCell.h"

#include "calendar/CalendarTexts.h"
#include "calendar/ui/BVCalendarView.h"
#include "calendar/ui/DayCellItemDelegate.h"
#include "calendar/ui/DayCellModel.h"
#include "platform/DateText.h"

#include <QDataStream>
#include <QDrag>
#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

BVCalendarDayCell::BVCalendarDayCell(BVCalendarView *superView, int number)
    : QListView(superView)
    , m_superView(superView)
    , m_number(number)
    , m_model(new DayCellModel(superView->data(), this))
{
    setObjectName(QStringLiteral("dayCell%1").arg(number));
    setModel(m_model);
    setItemDelegate(new DayCellItemDelegate(this));
    setUniformItemSizes(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setFrameShape(QFrame::Box);
    setFrameShadow(QFrame::Plain);
    setLineWidth(1);
    setAttribute(Qt::WA_MacShowFocusRect, false);
    setDragEnabled(true);
    setAcceptDrops(true);
    viewport()->setAcceptDrops(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDropIndicatorShown(false);
    viewport()->setAutoFillBackground(true);
    QPalette frame = palette();
    frame.setColor(QPalette::WindowText, QColor::fromRgbF(0.7f, 0.7f, 0.7f));
    setPalette(frame);
    connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, &BVCalendarDayCell::onSelectionChanged);
}

QDateTime BVCalendarDayCell::dateTime() const
{
    return m_date.isValid() ? CalendarGrid::dateWithoutTime(m_date) : QDateTime();
}

void BVCalendarDayCell::setDay(const QDate &date, bool enabled)
{
    m_date = date;
    m_dayEnabled = enabled;
}

void BVCalendarDayCell::setBackground(const QColor &color)
{
    if (color == m_background)
        return;
    m_background = color;
    QPalette colours = viewport()->palette();
    colours.setColor(QPalette::Base, color);
    colours.setColor(QPalette::Window, color);
    viewport()->setPalette(colours);
}

void BVCalendarDayCell::reload()
{
    const bool sameDay = m_model->date() == m_date;
    const int kept = sameDay ? selectedRow() : -1;
    m_reloading = true;
    m_model->reload(m_date);
    if (kept >= 1 && kept < m_model->rowCount())
        selectionModel()->select(m_model->index(kept, 0), QItemSelectionModel::ClearAndSelect);
    m_reloading = false;
    updateAccessibleName();
}

void BVCalendarDayCell::updateAccessibleName()
{
    if (!m_date.isValid())
        return;
    setAccessibleName(DateText::format(dateTime(), CalendarTexts::AccessibleDayFormat).simplified());
    setAccessibleDescription(CalendarTexts::AccessibleEntryCount.arg(m_model->rowCount() - 1));
}

int BVCalendarDayCell::selectedRow() const
{
    const QModelIndexList rows = selectionModel()->selectedIndexes();
    int first = -1;
    for (const QModelIndex &index : rows)
        if (first < 0 || index.row() < first)
            first = index.row();
    return first;
}

void BVCalendarDayCell::selectRow(int row, bool notify)
{
    if (row < 1 || row >= m_model->rowCount())
        return;
    const bool quiet = !notify;
    if (quiet)
        m_reloading = true;
    selectionModel()->select(m_model->index(row, 0), QItemSelectionModel::ClearAndSelect);
    selectionModel()->setCurrentIndex(m_model->index(row, 0), QItemSelectionModel::NoUpdate);
    if (quiet)
        m_reloading = false;
    scrollTo(m_model->index(row, 0));
}

void BVCalendarDayCell::clearRowSelection()
{
    if (selectionModel()->hasSelection())
        selectionModel()->clearSelection();
}

QFont BVCalendarDayCell::dayFont()
{
    QFont font(CalendarTexts::DayFontFamily);
    font.setStyleHint(QFont::SansSerif);
    font.setPixelSize(12);
    return font;
}

int BVCalendarDayCell::rowHeight()
{
    static const int height = QFontMetrics(dayFont()).lineSpacing() + 2;
    return height;
}

void BVCalendarDayCell::onSelectionChanged()
{
    viewport()->update();
    if (m_reloading)
        return;
    const int row = selectedRow();
    if (row >= 1) {
        m_superView->setSelectedEventToDate(m_date, row);
        m_superView->tableViewSelectionDidChange();
    }
}

int BVCalendarDayCell::rowAt(const QPoint &viewportPosition) const
{
    const QModelIndex index = indexAt(viewportPosition);
    return index.isValid() ? index.row() : -1;
}

// --- mouse ---------------------------------------------------------------------------------------

bool BVCalendarDayCell::handlePress(QMouseEvent *event)
{
    const QDate focus = CalendarGrid::dateKey(m_superView->focusDate());
    const bool otherMonth = m_date.month() != focus.month() || m_date.year() != focus.year();
    if (m_superView->monthlyView() && otherMonth) {
        // A grey day of the next or last month: a click on one of its entries goes there with the
        // entry selected; anywhere else it does nothing.
        const int row = rowAt(event->position().toPoint());
        if (row >= 1) {
            const QList<CalendarEntry> &entries = m_superView->data().entries(m_date);
            if (row - 1 < entries.size())
                m_superView->selectObject(entries.at(row - 1).object, dateTime());
        }
        return false;
    }

    m_superView->setFocusDate(dateTime());
    // The redraw above may have enabled this day (a week view crossing into another month).
    if (m_dayEnabled) {
        QListView::mousePressEvent(event);
        if (rowAt(event->position().toPoint()) < 1)
            clearRowSelection();
    }
    m_superView->deselectAllExceptForCell(this);
    if (selectedRow() < 1)
        m_superView->deselectAll();
    return true;
}

void BVCalendarDayCell::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QListView::mousePressEvent(event);
        return;
    }
    setFocus(Qt::MouseFocusReason);
    handlePress(event);
}

void BVCalendarDayCell::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const bool handled = handlePress(event);
    if (handled && m_dayEnabled)
        m_superView->didDoubleClick();
}

void BVCalendarDayCell::keyPressEvent(QKeyEvent *event)
{
    if (m_superView->handleKey(this, event->key())) {
        event->accept();
        return;
    }
    QListView::keyPressEvent(event);
}

// --- drag and drop -------------------------------------------------------------------------------

QMimeData *BVCalendarDayCell::dragDataForSelection()
{
    QList<int> rows;
    for (const QModelIndex &index : selectionModel()->selectedIndexes())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    if (rows.isEmpty() || rows.first() == 0)
        return nullptr;

    m_superView->setSelectedEventToDate(m_date, rows.first());
    QByteArray archived;
    QDataStream stream(&archived, QIODevice::WriteOnly);
    stream << rows;
    auto *data = new QMimeData;
    data->setData(CalendarTexts::DragType, archived);
    m_superView->eventWillMove();
    return data;
}

void BVCalendarDayCell::startDrag(Qt::DropActions)
{
    QMimeData *data = dragDataForSelection();
    if (!data)
        return;
    auto *drag = new QDrag(this);
    drag->setMimeData(data);
    const QModelIndex index = m_model->index(selectedRow(), 0);
    const QRect rect = visualRect(index);
    if (!rect.isEmpty()) {
        QPixmap picture = viewport()->grab(rect);
        drag->setPixmap(picture);
        drag->setHotSpot(QPoint(picture.width() / 2, picture.height() / 2));
    }
    drag->exec(Qt::CopyAction, Qt::CopyAction);
}

BVCalendarDayCell::DropTarget BVCalendarDayCell::dropTargetAt(const QPoint &viewportPosition) const
{
    const QModelIndex index = indexAt(viewportPosition);
    if (!index.isValid())
        return {m_model->rowCount(), true};
    // The outer quarters of a row are the gaps above and below it; the middle is the row itself.
    const QRect rect = visualRect(index);
    const int quarter = std::max(1, rect.height() / 4);
    if (viewportPosition.y() < rect.top() + quarter)
        return {index.row(), true};
    if (viewportPosition.y() > rect.bottom() - quarter)
        return {index.row() + 1, true};
    return {index.row(), false};
}

void BVCalendarDayCell::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasFormat(CalendarTexts::DragType)) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void BVCalendarDayCell::dragMoveEvent(QDragMoveEvent *event)
{
    const DropTarget target = dropTargetAt(event->position().toPoint());
    const int indicator = event->mimeData()->hasFormat(CalendarTexts::DragType) && acceptsDrop(target) ? target.row
                                                                                                       : -1;
    if (indicator != m_dropIndicatorRow) {
        m_dropIndicatorRow = indicator;
        viewport()->update();
    }
    if (indicator >= 0) {
        event->setDropAction(Qt::CopyAction);
        event->accept();
    } else {
        event->ignore();
    }
}

void BVCalendarDayCell::dragLeaveEvent(QDragLeaveEvent *event)
{
    m_dropIndicatorRow = -1;
    viewport()->update();
    event->accept();
}

void BVCalendarDayCell::dropEvent(QDropEvent *event)
{
    m_dropIndicatorRow = -1;
    viewport()->update();
    const DropTarget target = dropTargetAt(event->position().toPoint());
    if (!event->mimeData()->hasFormat(CalendarTexts::DragType) || !acceptsDrop(target)) {
        event->ignore();
        return;
    }
    event->setDropAction(Qt::CopyAction);
    event->accept();
    // The moved entry is the calendar's selection, not what the drag carries.
    m_superView->moveSelectedEventToDate(m_date);
}

void BVCalendarDayCell::paintEvent(QPaintEvent *event)
{
    m_superView->beginDayCellPaint();
    QListView::paintEvent(event);
    if (m_dropIndicatorRow < 0)
        return;
    // The line between rows where the entry would land.
    int y = 0;
    if (m_dropIndicatorRow < m_model->rowCount())
        y = visualRect(m_model->index(m_dropIndicatorRow, 0)).top();
    else if (m_model->rowCount() > 0)
        y = visualRect(m_model->index(m_model->rowCount() - 1, 0)).bottom() + 1;
    QPainter painter(viewport());
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawLine(QPoint(2, y), QPoint(viewport()->width() - 2, y));
}
