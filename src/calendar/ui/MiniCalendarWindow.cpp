#include "calendar/ui/MiniCalendarWindow.h"

#include "calendar/ui/WBCalendarControl.h"

#include <QEvent>
#include <QKeyEvent>
#include <QVBoxLayout>

namespace
{

constexpr char kObjectName[] = "miniCalendarWindow";
constexpr char kAccessibleName[] = "Choose a date";

// A pop-up window: no frame, above ordinary windows, gone when the user looks elsewhere.
constexpr Qt::WindowFlags kPopUpFlags = Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint;

} // namespace

MiniCalendarWindow::MiniCalendarWindow(const QRect &contentRect, Qt::WindowFlags styleMask, QWidget *parent)
    : QWidget(parent, kPopUpFlags)
{
    Q_UNUSED(styleMask) // borderless whatever is asked for
    setObjectName(QLatin1String(kObjectName));
    setAccessibleName(QLatin1String(kAccessibleName));

    m_control = new WBCalendarControl(this);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_control);
    setFocusProxy(m_control);

    if (contentRect.isValid())
        setGeometry(contentRect);
    else
        resize(m_control->sizeHint());
}

void MiniCalendarWindow::popUp(const QPoint &globalTopLeft, const QDateTime &date)
{
    m_control->setDate(date);
    move(globalTopLeft);
    show();
    raise();
    activateWindow();
    m_control->setFocus(Qt::PopupFocusReason);
}

void MiniCalendarWindow::windowDidResignKey()
{
    close();
}

void MiniCalendarWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::ActivationChange) {
        // Only a window that was active can resign; the first change may just be the window
        // appearing before it is activated.
        if (isActiveWindow())
            m_wasActive = true;
        else if (m_wasActive && isVisible()) {
            m_wasActive = false;
            windowDidResignKey();
        }
    }
    QWidget::changeEvent(event);
}

void MiniCalendarWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape) {
        close();
        event->accept();
        return;
    }
    QWidget::keyPressEvent(event);
}
