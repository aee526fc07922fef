#include "WindowActivation.h"

#include <QGuiApplication>
#include <QWidget>
#include <QWindow>

#include <xcb/xcb.h>

#include <algorithm>
#include <cstring>

namespace {

xcb_atom_t atom(xcb_connection_t *connection, const char *name)
{
    xcb_intern_atom_reply_t *reply
        = xcb_intern_atom_reply(connection, xcb_intern_atom(connection, false, quint16(std::strlen(name)), name), nullptr);
    const xcb_atom_t result = reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
    std::free(reply);
    return result;
}

xcb_window_t rootWindow(xcb_connection_t *connection)
{
    // Desktops run one X screen today (several monitors are one screen with RandR).
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    return screens.data ? screens.data->root : xcb_window_t(XCB_WINDOW_NONE);
}

// Startup notification messages travel as a chain of 20-byte client messages: the first of type
// _NET_STARTUP_INFO_BEGIN, the rest _NET_STARTUP_INFO, ending with a NUL byte.
void sendStartupMessage(xcb_connection_t *connection, xcb_window_t root, const QByteArray &message)
{
    const xcb_window_t sender = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, sender, root, -100, -100, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
    const xcb_atom_t begin = atom(connection, "_NET_STARTUP_INFO_BEGIN");
    const xcb_atom_t more = atom(connection, "_NET_STARTUP_INFO");
    const QByteArray payload = message + '\0';
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 8;
    event.window = sender;
    event.type = begin;
    for (qsizetype at = 0; at < payload.size(); at += 20) {
        std::memset(event.data.data8, 0, sizeof event.data.data8);
        std::memcpy(event.data.data8, payload.constData() + at, size_t(std::min<qsizetype>(20, payload.size() - at)));
        xcb_send_event(connection, false, root, XCB_EVENT_MASK_PROPERTY_CHANGE, reinterpret_cast<const char *>(&event));
        event.type = more;
    }
    xcb_destroy_window(connection, sender);
}

void requestActiveWindow(xcb_connection_t *connection, xcb_window_t root, xcb_window_t window, quint32 time)
{
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom(connection, "_NET_ACTIVE_WINDOW");
    event.data.data32[0] = 1; // asked for by an application, with the time of the user's action
    event.data.data32[1] = time;
    event.data.data32[2] = XCB_WINDOW_NONE;
    xcb_send_event(connection, false, root, XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char *>(&event));
}

} // namespace

WindowActivation WindowActivation::fromEnvironment()
{
    return {qgetenv(WaylandVariable), qgetenv(X11Variable)};
}

quint32 WindowActivation::startupTime(const QByteArray &startupId)
{
    const qsizetype at = startupId.lastIndexOf("_TIME");
    if (at < 0)
        return 0;
    bool ok = false;
    const quint32 time = startupId.mid(at + 5).toUInt(&ok);
    return ok ? time : 0;
}

QByteArray WindowActivation::removeMessage(const QByteArray &startupId)
{
    // A value with blanks, quotes or backslashes is quoted, with backslashes before the last two.
    QByteArray value = startupId;
    if (value.contains(' ') || value.contains('"') || value.contains('\\')) {
        value.replace('\\', "\\\\").replace('"', "\\\"");
        value = '"' + value + '"';
    }
    return "remove: ID=" + value;
}

QString WindowActivation::raise(QWidget *window) const
{
    window->raise();
    const QString platform = QGuiApplication::platformName();
    if (platform.startsWith(QLatin1String("wayland")) && !waylandToken.isEmpty()) {
        // Taken (and cleared) by the window's activation request below.
        qputenv(WaylandVariable, waylandToken);
        window->activateWindow();
        return QStringLiteral("activated with the later start's XDG_ACTIVATION_TOKEN");
    }
    window->activateWindow();
    if (platform == QLatin1String("xcb") && !startupId.isEmpty()) {
        auto *x11 = qApp->nativeInterface<QNativeInterface::QX11Application>();
        xcb_connection_t *connection = x11 ? x11->connection() : nullptr;
        if (!connection || !window->windowHandle())
            return QStringLiteral("activated; no X11 connection for the later start's DESKTOP_STARTUP_ID");
        const xcb_window_t root = rootWindow(connection);
        sendStartupMessage(connection, root, removeMessage(startupId));
        const quint32 time = startupTime(startupId);
        if (time != 0)
            requestActiveWindow(connection, root, xcb_window_t(window->windowHandle()->winId()), time);
        xcb_flush(connection);
        return time != 0 ? QStringLiteral("activated with the time of the later start's DESKTOP_STARTUP_ID, its launch feedback ended")
                         : QStringLiteral("activated; the later start's launch feedback ended (its DESKTOP_STARTUP_ID has no time)");
    }
    return isEmpty() ? QStringLiteral("activated") : QStringLiteral("activated; the later start's token is not for this platform");
}
