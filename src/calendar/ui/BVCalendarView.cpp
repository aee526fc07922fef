#include "calendar/ui/BVCalendarView.h"

#include "calendar/CalendarLog.h"
#include "calendar/CalendarTexts.h"
#include "calendar/ui/BVCalendarDayCell.h"
#include "calendar/ui/BVCalendarViewDelegate.h"
#include "calendar/ui/CalendarDisplayCell.h"
#include "platform/Clock.h"
#include "platform/DateText.h"
#include "widgets/ReadableColors.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>

#include <cmath>

namespace {
// Frames are computed in fractions; neighbouring frames share their rounded edges so the one-pixel
// overlap of the day cells stays one pixel everywhere.
QRect snapped(const QRectF &frame)
{
    const int left = int(std::lround(frame.left()));
    const int top = int(std::lround(frame.top()));
    const int right = int(std::lround(frame.right()));
    const int bottom = int(std::lround(frame.bottom()));
    return QRect(left, top, std::max(0, right - left), std::max(0, bottom - top));
}
} // namespace

BVCalendarView::BVCalendarView(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("calendarView"));
    setAccessibleName(CalendarTexts::Monthly);
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(420, 200);
    buildHeader();
    for (int number = 0; number < CalendarGrid::CellCount; ++number)
        m_cells[number] = new BVCalendarDayCell(this, number);
    m_focusDate = CalendarGrid::dateWithoutTime(Clock::now());
    drawCalendar();
    applyColourScheme();
}

BVCalendarView::~BVCalendarView()
{
    // The day cells read this view's entries while they go; they must go before the entries do.
    for (BVCalendarDayCell *&cell : m_cells) {
        delete cell;
        cell = nullptr;
    }
}

void BVCalendarView::buildHeader()
{
    m_currentMonthField = new QLabel(this);
    m_currentMonthField->setObjectName(QStringLiteral("currentMonthField"));
    m_currentMonthField->setAccessibleName(CalendarTexts::AccessibleTitle);
    m_currentMonthField->setAlignment(Qt::AlignCenter);
    m_currentMonthField->setTextInteractionFlags(Qt::NoTextInteraction);
    QFont titleFont = font();
    titleFont.setPixelSize(20);
    m_currentMonthField->setFont(titleFont);

    const auto makeButton = [this](const QString &title, const QString &name) {
        auto *button = new QPushButton(title, this);
        button->setObjectName(name);
        button->setFocusPolicy(Qt::TabFocus);
        connect(button, &QPushButton::clicked, this, &BVCalendarView::navigationClicked);
        return button;
    };
    m_leftButton = makeButton(CalendarTexts::PreviousButton, QStringLiteral("leftButton"));
    m_rightButton = makeButton(CalendarTexts::NextButton, QStringLiteral("rightButton"));
    m_todayButton = makeButton(CalendarTexts::TodayButton, QStringLiteral("todayButton"));
    m_todayButton->setAccessibleName(CalendarTexts::AccessibleToday);

    for (int day = 0; day < CalendarGrid::DaysPerWeek; ++day) {
        auto *field = new QLabel(CalendarTexts::WeekdayNames.at(day), this);
        field->setObjectName(CalendarTexts::WeekdayNames.at(day).toLower() + QStringLiteral("Field"));
        field->setAccessibleName(CalendarTexts::WeekdayNames.at(day));
        field->setAlignment(Qt::AlignCenter);
        m_weekdayFields[day] = field;
    }
    updateAccessibleNames();
}

void BVCalendarView::updateAccessibleNames()
{
    const bool weekly = weeklyView();
    m_leftButton->setAccessibleName(weekly ? CalendarTexts::AccessiblePreviousWeek
                                           : CalendarTexts::AccessiblePreviousMonth);
    m_rightButton->setAccessibleName(weekly ? CalendarTexts::AccessibleNextWeek : CalendarTexts::AccessibleNextMonth);
}

// --- entries -------------------------------------------------------------------------------------

void BVCalendarView::addObject(const AssignmentRef &object, const QString &title, const QDateTime &date)
{
    const QDate day = CalendarGrid::dateKey(date);
    m_data.add(object, title, day);
    // Only the day that changed is read again; the grid itself stays as it is.
    reloadCellFor(day);
}

void BVCalendarView::setObjects(const QList<CalendarEntry> &entries)
{
    m_data.removeAll();
    for (const CalendarEntry &entry : entries)
        m_data.add(entry.object, entry.title, entry.date);
    drawCalendar();
}

void BVCalendarView::removeAllObjects()
{
    m_data.removeAll();
    drawCalendar();
}

void BVCalendarView::reloadCellFor(const QDate &date)
{
    for (const CalendarGrid::Slot &slot : std::as_const(m_slots))
        if (slot.date == date)
            m_cells[slot.cell]->reload();
}

// --- selection -----------------------------------------------------------------------------------

QDateTime BVCalendarView::selectedDate() const
{
    return m_data.selectedDate() ? CalendarGrid::dateWithoutTime(*m_data.selectedDate()) : QDateTime();
}

void BVCalendarView::selectObject(const AssignmentRef &object, const QDateTime &date)
{
    const QDate day = CalendarGrid::dateKey(date);
    for (BVCalendarDayCell *cell : m_cells)
        if (cell->date() != day)
            cell->clearRowSelection();
    setFocusDate(CalendarGrid::dateWithoutTime(day));
    const qsizetype index = m_data.lastIndexOfObject(day, object);
    if (index < 0)
        return;
    if (BVCalendarDayCell *cell = dayCellForDate(day))
        cell->selectRow(int(index) + 1);
}

void BVCalendarView::deselectAll()
{
    const bool hadSelection = m_data.clearSelection();
    for (BVCalendarDayCell *cell : m_cells)
        cell->clearRowSelection();
    if (hadSelection && m_delegate)
        m_delegate->calendarViewSelectionDidChange(this);
}

void BVCalendarView::deselectAllExceptForCell(const BVCalendarDayCell *keep)
{
    for (BVCalendarDayCell *cell : m_cells)
        if (cell != keep)
            cell->clearRowSelection();
}

void BVCalendarView::setSelectedEventToDate(const QDate &date, int row)
{
    m_data.setSelectedEventToDate(date, row);
}

void BVCalendarView::moveSelectedEventToDate(const QDate &date)
{
    const std::optional<int> row = m_data.moveSelectedEventToDate(date);
    if (!row) {
        qCWarning(lcCalendar).noquote() << CalendarTexts::MoveError;
        return;
    }
    drawCalendar();
    deselectAllExceptForCell(nullptr);
    if (BVCalendarDayCell *cell = dayCellForDate(date))
        cell->selectRow(*row, false);
    eventDidMove();
}

// --- focus, navigation and mode ------------------------------------------------------------------

void BVCalendarView::navigationClicked()
{
    if (auto *button = qobject_cast<QPushButton *>(sender()))
        changeDateIncrementally(button->text());
}

void BVCalendarView::changeDateIncrementally(const QString &title)
{
    deselectAll();
    if (const std::optional<QDateTime> focus =
            CalendarGrid::navigate(m_focusDate, title.toLower(), m_currentView, Clock::now()))
        setFocusDate(*focus);
}

void BVCalendarView::setFocusDate(const QDateTime &date)
{
    m_focusDate = date;
    drawCalendar();
}

void BVCalendarView::redrawEntries()
{
    for (BVCalendarDayCell *cell : m_cells)
        if (cell)
            cell->viewport()->update();
}

void BVCalendarView::setHiddenWeekends(bool hidden)
{
    m_hideWeekends = hidden;
    drawCalendar();
}

void BVCalendarView::setWeeklyView()
{
    m_currentView = CalendarGrid::Mode::Weekly;
    setAccessibleName(CalendarTexts::Weekly);
    updateAccessibleNames();
    drawCalendar();
}

void BVCalendarView::setMonthlyView()
{
    m_currentView = CalendarGrid::Mode::Monthly;
    setAccessibleName(CalendarTexts::Monthly);
    updateAccessibleNames();
    drawCalendar();
}

// --- drawing -------------------------------------------------------------------------------------

BVCalendarDayCell *BVCalendarView::dayCell(int number) const
{
    return number >= 0 && number < CalendarGrid::CellCount ? m_cells[number] : nullptr;
}

BVCalendarDayCell *BVCalendarView::dayCellForDate(const QDate &date) const
{
    // The slots run from the top row down to the extra week below the grid, so a visible cell
    // is found before anything else.
    for (const CalendarGrid::Slot &slot : m_slots)
        if (slot.date == date)
            return m_cells[slot.cell];
    return nullptr;
}

void BVCalendarView::drawCalendar()
{
    if (!m_focusDate.isValid())
        m_focusDate = Clock::now();
    const QDate focus = CalendarGrid::dateKey(m_focusDate);
    m_slots = CalendarGrid::slots(focus, m_currentView);
    m_rows = CalendarGrid::rowCount(focus, m_currentView);
    m_layout = CalendarLayout::compute(QSizeF(size()), m_rows, m_hideWeekends, m_slots);

    m_currentMonthField->setText(DateText::format(m_focusDate.toLocalTime(), CalendarTexts::TitleFormat));
    m_currentMonthField->setGeometry(snapped(m_layout.title));
    m_leftButton->setGeometry(snapped(m_layout.previousButton));
    m_rightButton->setGeometry(snapped(m_layout.nextButton));
    m_todayButton->setGeometry(snapped(m_layout.todayButton));
    for (int day = 0; day < CalendarGrid::DaysPerWeek; ++day)
        m_weekdayFields[day]->setGeometry(snapped(m_layout.weekdays[day]));

    std::array<bool, CalendarGrid::CellCount> laidOut{};
    for (qsizetype i = 0; i < m_slots.size(); ++i) {
        const CalendarGrid::Slot &slot = m_slots[i];
        BVCalendarDayCell *cell = m_cells[slot.cell];
        cell->setGeometry(snapped(m_layout.cells[i]));
        cell->setDay(slot.date, slot.enabled);
        cell->reload();
        cell->setVisible(true);
        laidOut[slot.cell] = true;
    }
    for (int number = 0; number < CalendarGrid::CellCount; ++number)
        if (!laidOut[number])
            m_cells[number]->setVisible(false);
    colorCells();
    update();
}

void BVCalendarView::colorCells()
{
    const QDate focus = CalendarGrid::dateKey(m_focusDate);
    const QDate today = CalendarGrid::dateKey(Clock::now());
    const bool dark = ReadableColors::isDark(palette());
    const QColor base = palette().color(QPalette::Active, QPalette::Base);
    for (BVCalendarDayCell *cell : m_cells) {
        const QColor colour = CalendarGrid::cellColor(cell->date(), focus, today, m_currentView);
        cell->setBackground(dark ? ReadableColors::surface(colour, base) : colour);
    }
}

void BVCalendarView::applyColourScheme()
{
    const bool dark = ReadableColors::isDark(palette());
    const QColor base = palette().color(QPalette::Active, QPalette::Base);
    const QString face = dark ? ReadableColors::surface(QColor(0xf6, 0xf6, 0xf6), base).name() : QStringLiteral("#f6f6f6");
    const QString pressed = dark ? ReadableColors::surface(QColor(0xd8, 0xd8, 0xd8), base).name() : QStringLiteral("#d8d8d8");
    const QString border = dark ? QStringLiteral("#6a6a6a") : QStringLiteral("#a8a8a8");
    const QString text = palette().color(QPalette::Active, QPalette::ButtonText).name();
    const QString sheet = QStringLiteral("QPushButton { border: 1px solid %1; background: %2; color: %3; padding: 0px; "
                                         "font-size: 12px; }"
                                         "QPushButton:pressed { background: %4; }")
                              .arg(border, face, text, pressed);
    for (QPushButton *button : {m_leftButton, m_rightButton, m_todayButton})
        if (button && button->styleSheet() != sheet)
            button->setStyleSheet(sheet);
    colorCells();
    update();
}

void BVCalendarView::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    // The desktop's colour scheme changed (or the window moved to another): the page follows it.
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ApplicationPaletteChange)
        applyColourScheme();
}

void BVCalendarView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const bool dark = ReadableColors::isDark(palette());
    painter.fillRect(rect(), dark ? palette().color(QPalette::Base) : QColor(Qt::white));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(dark ? QColor::fromRgbF(0.6f, 0.6f, 0.6f, 1.0f) : QColor::fromRgbF(0.3f, 0.3f, 0.3f, 1.0f), 0.5));
    painter.drawLine(QPointF(0, m_layout.lineY), QPointF(width(), m_layout.lineY));
}

void BVCalendarView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    drawCalendar();
}

// --- what the day cells report -------------------------------------------------------------------

void BVCalendarView::tableViewSelectionDidChange()
{
    if (m_delegate)
        m_delegate->calendarViewSelectionDidChange(this);
}

void BVCalendarView::eventWillMove()
{
    if (m_delegate)
        m_delegate->calendarViewEventWillMove(this);
}

void BVCalendarView::eventDidMove()
{
    if (m_delegate)
        m_delegate->calendarViewEventDidMove(this);
}

void BVCalendarView::didDoubleClick()
{
    if (m_delegate)
        m_delegate->calendarViewDidDoubleClick(this);
}

void BVCalendarView::willDisplayCell(BVCalendarDayCell *cell, CalendarDisplayCell &display, int row)
{
    if (m_delegate)
        m_delegate->calendarViewWillDisplayCell(this, cell, display, CalendarTexts::ColumnIdentifier, row);
}

// --- keyboard ------------------------------------------------------------------------------------

void BVCalendarView::moveFocusByDays(int days)
{
    deselectAll();
    const QDate day = CalendarGrid::dateKey(m_focusDate).addDays(days);
    setFocusDate(CalendarGrid::dateWithoutTime(day));
    if (BVCalendarDayCell *cell = dayCellForDate(day))
        cell->setFocus(Qt::OtherFocusReason);
}

bool BVCalendarView::handleKey(BVCalendarDayCell *cell, int key)
{
    if (!cell)
        cell = dayCellForDate(CalendarGrid::dateKey(m_focusDate));
    switch (key) {
    case Qt::Key_Left:
        moveFocusByDays(-1);
        return true;
    case Qt::Key_Right:
        moveFocusByDays(1);
        return true;
    case Qt::Key_Up: {
        // Up walks through the day's entries, then on to the same day a week earlier.
        const int row = cell ? cell->selectedRow() : -1;
        if (row > 1) {
            cell->selectRow(row - 1);
            return true;
        }
        moveFocusByDays(-CalendarGrid::DaysPerWeek);
        return true;
    }
    case Qt::Key_Down: {
        const int row = cell ? cell->selectedRow() : -1;
        const int next = row < 1 ? 1 : row + 1;
        if (cell && cell->isDayEnabled() && next <= m_data.count(cell->date())) {
            deselectAllExceptForCell(cell);
            cell->selectRow(next);
            return true;
        }
        moveFocusByDays(CalendarGrid::DaysPerWeek);
        return true;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (m_data.selectedObject() && m_delegate)
            m_delegate->calendarViewOpenSelection(this);
        return true;
    default:
        return false;
    }
}

void BVCalendarView::keyPressEvent(QKeyEvent *event)
{
    if (handleKey(nullptr, event->key())) {
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}
