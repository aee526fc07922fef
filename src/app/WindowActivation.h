#pragma once

#include <QByteArray>
#include <QString>

class QWidget;

// The desktop's permission to bring a window to the front. A launcher that starts Quillory a
// second time (a double-click on a backup, the menu entry) gives that start a token for the user's
// click; the start hands it to the copy already running, and that copy raises its window with it, so
// the desktop's focus-stealing prevention sees the user's own action instead of a window pushing itself
// forward (which it would answer with a blinking task-bar entry at best).
//
// Wayland: XDG_ACTIVATION_TOKEN (xdg-activation-v1). Qt's xdg-shell integration takes the token
// from that variable when a window asks to be activated, and clears it; so the token is put into
// the environment just before the window asks.
// X11: DESKTOP_STARTUP_ID (startup notification). The launch feedback of the later start is ended
// with a "remove" message, and the window is activated through _NET_ACTIVE_WINDOW with the time
// stamp of the click that the ID carries ("..._TIME<stamp>").
struct WindowActivation {
    static inline const char *WaylandVariable = "XDG_ACTIVATION_TOKEN";
    static inline const char *X11Variable = "DESKTOP_STARTUP_ID";

    QByteArray waylandToken;
    QByteArray startupId;

    bool isEmpty() const { return waylandToken.isEmpty() && startupId.isEmpty(); }

    // Read from this process's environment; must run before QApplication, whose X11 connection
    // takes DESKTOP_STARTUP_ID out of the environment.
    static WindowActivation fromEnvironment();

    // The time stamp in a startup ID, or 0 when it carries none.
    static quint32 startupTime(const QByteArray &startupId);
    // The startup-notification message that ends the launch feedback for `startupId`.
    static QByteArray removeMessage(const QByteArray &startupId);

    // Raises and activates `window` with this token, as far as the platform in use allows; returns
    // what was done, for the log.
    QString raise(QWidget *window) const;
};
