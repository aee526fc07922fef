#include "calendar/ui/WBCalendarControl.h"

#include "platform/Clock.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>

#include <cmath>

Q_LOGGING_CATEGORY(lcCalendarControl, "quillory.calendar")

namespace
{

// The strings table that localizes the calendar, a translation context here.
constexpr char kStringsTable[] = "WBCalendar";
constexpr char kFirstDayKey[] = "FirstDay";
constexpr char kBackgroundImagePath[] = ":/images/CalendarBack.png";
const char *const kWeekdayInitials[7] = { "S", "M", "T", "W", "T", "F", "S" };

constexpr char kObjectName[] = "miniCalendarControl";
constexpr char kAccessibleName[] = "Mini calendar";

// The size the grid needs when there is no background picture to take the size from: seven 17-pixel
// columns after a 4-pixel margin, and a 20-pixel header over six 14-pixel rows.
constexpr int kPlainWidth = 128;
constexpr int kPlainHeight = 106;

// The artwork's fonts were sized in pixels (one point per pixel on the original screens); pixel
// sizes keep the numbers inside their 13-pixel cells whatever the screen's resolution.
constexpr int kDayNumberPixelSize = 10;
constexpr int kWeekdayPixelSize = 11;

const QColor kChosenDayFill = QColor::fromRgbF(0.7686f, 0.8784f, 0.9843f, 1.0f);

struct SharedBackground {
    QImage image;
    bool loaded = false;
};

SharedBackground &sharedBackground()
{
    static SharedBackground background;
    return background;
}

int positiveModulo(int value, int divisor)
{
    return ((value % divisor) + divisor) % divisor;
}

} // namespace

WBCalendarControl::WBCalendarControl(QWidget *parent)
    : QWidget(parent)
{
    initialise();
}

WBCalendarControl::WBCalendarControl(const QRect &frame, QWidget *parent)
    : QWidget(parent)
{
    initialise();
    setGeometry(frame);
}

void WBCalendarControl::initialise()
{
    setObjectName(QLatin1String(kObjectName));
    setAccessibleName(QLatin1String(kAccessibleName));
    setFocusPolicy(Qt::StrongFocus);

    // Without a translation the key reads back as itself, which is no number: Sunday first.
    const QString firstDay = QCoreApplication::translate(kStringsTable, kFirstDayKey);
    bool isNumber = false;
    const int value = firstDay.trimmed().toInt(&isNumber);
    m_firstDayOfWeek = isNumber ? positiveModulo(value, 7) : 0;

    m_normalAttributes = font();
    m_normalAttributes.setPixelSize(kDayNumberPixelSize);
    m_dayOfWeekAttributes = font();
    m_dayOfWeekAttributes.setPixelSize(kWeekdayPixelSize);

    backgroundImage();
    setDate(Clock::now());
}

int WBCalendarControl::numberofDayInMonthForYear(int month, int year)
{
    static constexpr int kLengths[12] = { 31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31 };
    if (month < 0 || month > 11)
        return 0;
    if (month == 1 && year % 4 == 0 && (year % 100 != 0 || year % 400 == 0))
        return 29;
    return kLengths[month];
}

QString WBCalendarControl::weekdayInitial(int weekday)
{
    return QCoreApplication::translate(kStringsTable, kWeekdayInitials[positiveModulo(weekday, 7)]);
}

QImage WBCalendarControl::backgroundImage()
{
    SharedBackground &background = sharedBackground();
    if (!background.loaded) {
        background.loaded = true;
        background.image = QImage(QLatin1String(kBackgroundImagePath));
        if (background.image.isNull())
            qCDebug(lcCalendarControl) << "No calendar background picture; drawing a plain panel";
    }
    return background.image;
}

void WBCalendarControl::setBackgroundImage(const QImage &image)
{
    SharedBackground &background = sharedBackground();
    background.loaded = true;
    background.image = image;
}

QSize WBCalendarControl::sizeHint() const
{
    const QImage background = backgroundImage();
    if (!background.isNull())
        return background.deviceIndependentSize().toSize();
    return { kPlainWidth, kPlainHeight };
}

int WBCalendarControl::monthday(int slot) const
{
    if (slot < 0 || slot >= kSlotCount)
        return 0;
    return m_monthday[static_cast<size_t>(slot)];
}

void WBCalendarControl::setDate(const QDateTime &date)
{
    if (!date.isValid())
        return;
    m_currentDate = date;
    const QDate day = date.date();
    const int days = numberofDayInMonthForYear(day.month() - 1, day.year());
    const int weekday = day.dayOfWeek() % 7; // Qt counts Monday as 1 and Sunday as 7
    m_firstday = positiveModulo(weekday - (day.day() % 7) - m_firstDayOfWeek + 8, 7);
    for (int slot = 0; slot < kSlotCount; ++slot) {
        const int number = slot - m_firstday + 1;
        m_monthday[static_cast<size_t>(slot)] = (number >= 1 && number <= days) ? number : 0;
    }
    updateAccessibleDescription();
    update();
}

void WBCalendarControl::setTarget(QObject *target)
{
    m_target = target;
}

void WBCalendarControl::setAction(const QByteArray &action)
{
    m_action = action;
}

int WBCalendarControl::dayAtPoint(const QPointF &point) const
{
    // Measured from the bottom edge, the header is everything above H - 20; from the top it is the
    // first 20 pixels.
    const double fromTop = point.y();
    if (fromTop < kHeaderHeight)
        return 0;
    // Clamped before the conversion, so that no far-away point overflows an int.
    const int column = static_cast<int>(
        std::clamp(std::floor((point.x() - kLeftMargin) / kCellWidth), 0.0, static_cast<double>(kColumns - 1)));
    const int row = static_cast<int>(
        std::clamp(std::floor((fromTop - kHeaderHeight) / kCellHeight), 0.0, static_cast<double>(kRows - 1)));
    return m_monthday[static_cast<size_t>(row * kColumns + column)];
}

void WBCalendarControl::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::TextAntialiasing);
    drawBackground(painter);

    const int height = this->height();
    // The artwork is light whatever the desktop's colours, so the text is always black.
    painter.setPen(Qt::black);
    painter.setFont(m_dayOfWeekAttributes);
    const QFontMetricsF weekdayMetrics(m_dayOfWeekAttributes);
    // The header's text sits on a line 18 pixels below the top (H - 20 + 2 from the bottom).
    const double headerBottom = height - (height - kHeaderHeight + 2);
    for (int column = 0; column < kColumns; ++column) {
        const QString initial = weekdayInitial(column + m_firstDayOfWeek);
        const double centre = kLeftMargin + kCellWidth * column + 8.5 + 2;
        const double width = weekdayMetrics.horizontalAdvance(initial);
        painter.drawText(QPointF(centre - width / 2, headerBottom - weekdayMetrics.descent()), initial);
    }

    painter.setFont(m_normalAttributes);
    for (int slot = m_firstday; slot < kSlotCount; ++slot) {
        if (m_monthday[static_cast<size_t>(slot)] != 0)
            drawday(painter, slot);
    }
}

void WBCalendarControl::drawBackground(QPainter &painter)
{
    const QImage background = backgroundImage();
    if (!background.isNull()) {
        // Anchored at the bottom-left corner, at its own size, fully opaque.
        const QSizeF size = background.deviceIndependentSize();
        painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
        painter.setOpacity(1.0);
        painter.drawImage(QPointF(0, height() - size.height()), background);
        return;
    }
    // No picture: a plain light panel with a slightly darker band behind the weekday initials.
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF panel = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QPainterPath outline;
    outline.addRoundedRect(panel, 4, 4);
    painter.fillPath(outline, QColor(250, 250, 250));
    painter.setClipPath(outline);
    painter.fillRect(QRectF(0, 0, width(), kHeaderHeight - 1), QColor(232, 234, 238));
    painter.setClipping(false);
    painter.setPen(QColor(168, 172, 180));
    painter.drawPath(outline);
    painter.restore();
}

void WBCalendarControl::drawday(QPainter &painter, int slot)
{
    const int day = m_monthday[static_cast<size_t>(slot)];
    const int row = slot / kColumns;
    const int column = slot % kColumns;
    // The cell's bottom edge lies at H - 18 - (14r + 14) - 2 from the bottom; its top, 13 pixels
    // higher, is 21 + 14r pixels from the top.
    const double x = kCellWidth * column + kLeftMargin;
    const double top = kHeaderHeight + 1 + kCellHeight * row;
    const QRectF cell(x + 1, top, kCellWidth, kCellHeight - 1);
    if (day == m_currentDate.date().day())
        painter.fillRect(cell, kChosenDayFill);
    painter.drawText(cell, Qt::AlignCenter, QString::asprintf("%d", day));
}

void WBCalendarControl::moveToDay(int day)
{
    setDate(m_currentDate.addDays(day - m_currentDate.date().day()));
}

void WBCalendarControl::sendAction()
{
    const QPointer<WBCalendarControl> self(this);
    if (m_target && !m_action.isEmpty()) {
        if (!QMetaObject::invokeMethod(
                m_target, m_action.constData(), Qt::DirectConnection, Q_ARG(WBCalendarControl *, this)))
            qCWarning(lcCalendarControl) << "The calendar's target has no method" << m_action;
    }
    if (self)
        Q_EMIT dateChosen(m_currentDate);
}

void WBCalendarControl::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mousePressEvent(event);
        return;
    }
    const int day = dayAtPoint(event->position());
    if (day == 0)
        return;
    if (day != m_currentDate.date().day())
        moveToDay(day);
    sendAction();
}

void WBCalendarControl::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton))
        return;
    const int day = dayAtPoint(event->position());
    if (day == 0 || day == m_currentDate.date().day())
        return;
    m_newdate = true;
    moveToDay(day);
}

void WBCalendarControl::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        QWidget::mouseReleaseEvent(event);
        return;
    }
    const bool changedByDrag = m_newdate;
    m_newdate = false;
    if (changedByDrag)
        sendAction();
}

void WBCalendarControl::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Left:
        setDate(m_currentDate.addDays(-1));
        break;
    case Qt::Key_Right:
        setDate(m_currentDate.addDays(1));
        break;
    case Qt::Key_Up:
        setDate(m_currentDate.addDays(-7));
        break;
    case Qt::Key_Down:
        setDate(m_currentDate.addDays(7));
        break;
    case Qt::Key_PageUp:
        setDate(m_currentDate.addMonths(-1));
        break;
    case Qt::Key_PageDown:
        setDate(m_currentDate.addMonths(1));
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        sendAction();
        break;
    default:
        QWidget::keyPressEvent(event);
        return;
    }
    event->accept();
}

void WBCalendarControl::updateAccessibleDescription()
{
    setAccessibleDescription(QLocale().toString(m_currentDate.date(), QLocale::LongFormat));
}
