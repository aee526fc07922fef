#!/usr/bin/python3
"""Drives the debug window of the real program over AT-SPI, as a screen-reader user would.

Run inside a session bus of its own:
    dbus-run-session -- /usr/bin/python3 debug_window_walk.py PATH-TO-QUILLORY
Starts its own Xvfb, then the program in a fresh HOME with data and preferences, as if Alt were
held at launch (the program's test hook). While the window is up nothing of the start-up has run
(no preferences file yet). In the debug window it deletes the data ("Yes" in the
alert), relaunches (a new run must come up with the debug window again, the old one gone), and
quits that run. Every control of the window must have a name.
"""

import os
import signal
import subprocess
import sys
import tempfile

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
from atspi_walk import children, descendants, name, showing, start_display, wait_for  # noqa: E402

failures = []


def fail(message):
    failures.append(message)
    print("FAIL: " + message, file=sys.stderr)


def applications():
    return children(Atspi.get_desktop(0))


def debug_window_of(app):
    for window in children(app):
        if name(window) == "Quillory Debug" and showing(window):
            return window
    return None


def button(root, wanted):
    for node in descendants(root):
        if node.get_role() == Atspi.Role.PUSH_BUTTON and name(node) == wanted and showing(node):
            return node
    return None


def press(root, wanted):
    node = wait_for(lambda: button(root, wanted), 20)
    if node is None:
        fail("no button named %r" % wanted)
        return False
    node.do_action(0)
    return True


def pid_alive(pid):
    try:
        os.kill(pid, 0)
        return True
    except ProcessLookupError:
        return False


def run(program, home):
    data = os.path.join(home, "Library", "Application Support", "Quillory")
    os.makedirs(data)
    with open(os.path.join(data, "Assignments.plist"), "w") as out:
        out.write('<?xml version="1.0" encoding="UTF-8"?>\n<plist version="1.0">\n<array/>\n</plist>\n')
    runtime = os.path.join(home, "runtime")
    os.mkdir(runtime, 0o700)
    environment = dict(os.environ)
    environment.update({
        "HOME": home, "XDG_RUNTIME_DIR": runtime, "TZ": "America/New_York", "LANG": "C.UTF-8",
        "QT_QPA_PLATFORM": "xcb", "QT_ACCESSIBILITY": "1", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        "QUILLORY_TEST_HOOKS": "1", "QUILLORY_TEST_ALT_HELD": "1",
    })
    environment.pop("QUILLORY_QUIT_AFTER_STARTUP", None)
    log = open(os.path.join(home, "program.log"), "w+")
    first = subprocess.Popen([program], env=environment, stdout=log, stderr=subprocess.STDOUT)
    try:
        app = wait_for(lambda: next((a for a in applications() if a.get_process_id() == first.pid), None), 60)
        window = app and wait_for(lambda: debug_window_of(app), 60)
        if not window:
            fail("the debug window did not come up")
            return
        for node in descendants(window):
            if node.get_role() in (Atspi.Role.PUSH_BUTTON, Atspi.Role.TEXT) and showing(node) and not name(node):
                fail("a %s of the debug window has no name" % node.get_role().value_nick)
        if button(window, "Quillory 1.0.0") is None and not any(name(n) == "Quillory 1.0.0" for n in descendants(window)):
            fail("the debug window does not name the build")

        # Before anything else: the start-up has not written the preferences yet.
        preferences = os.path.join(home, "Library", "Preferences", "com.brevandt.Quillory.plist")
        if os.path.exists(preferences):
            fail("the start-up ran before the debug window")

        press(window, "Delete Data")
        if press(app, "Yes") and not wait_for(lambda: not os.path.exists(data), 20):
            fail("the data folder is still there after Yes")

        press(window, "Relaunch")
        if first.wait(30) != 0:
            fail("the first run did not end cleanly")
        # The relaunched run waits for the first to be gone, then comes up afresh (the hook is
        # still set, so with the debug window again).
        second = wait_for(lambda: next((a for a in applications() if a.get_process_id() != first.pid
                                        and debug_window_of(a)), None), 60)
        if second is None:
            fail("no new run came up after Relaunch")
            return
        pid = second.get_process_id()
        press(debug_window_of(second), "Quit")
        if not wait_for(lambda: not pid_alive(pid), 30):
            fail("the relaunched run did not quit")
            os.kill(pid, signal.SIGKILL)
    finally:
        if first.poll() is None:
            first.kill()
            first.wait()
        log.seek(0)
        output = log.read()
        log.close()
        if failures:
            print("--- program output ---\n" + output)


def main():
    program = os.path.abspath(sys.argv[1])
    server = start_display()
    if server is None:
        return 1
    try:
        with tempfile.TemporaryDirectory(prefix="quillory-debug-") as home:
            run(program, home)
    finally:
        server.terminate()
        server.wait()
    if failures:
        return 1
    print("the debug window deleted the data, relaunched and quit")
    return 0


if __name__ == "__main__":
    sys.exit(main())
