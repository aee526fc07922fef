#pragma once

#include <QDateTime>
#include <QWidget>

class WBCalendarControl;

// The borderless pop-up that holds a mini calendar. It sits above ordinary windows like a pop-up
// menu, takes the keyboard, and closes itself as soon as it stops being the active window, so a
// click anywhere else dismisses it. Escape dismisses it too.
class MiniCalendarWindow : public QWidget
{
    Q_OBJECT

public:
    // initWithContentRect:styleMask:backing:defer: -- the window is borderless whatever flags are
    // asked for; only the parent is taken from the caller.
    explicit MiniCalendarWindow(
        const QRect &contentRect = QRect(), Qt::WindowFlags styleMask = {}, QWidget *parent = nullptr);

    bool canBecomeKeyWindow() const { return true; }
    WBCalendarControl *calendarControl() const { return m_control; }

    // Shows the window with its top-left corner at a global position, the given day chosen, and
    // makes it the active window.
    void popUp(const QPoint &globalTopLeft, const QDateTime &date);

public Q_SLOTS:
    void windowDidResignKey();

protected:
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    WBCalendarControl *m_control = nullptr;
    bool m_wasActive = false;
};
