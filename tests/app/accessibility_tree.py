#!/usr/bin/python3
"""Walks the running program's accessibility tree the way a screen reader does, over AT-SPI.

Run inside a session bus of its own, for example
    dbus-run-session -- /usr/bin/python3 accessibility_tree.py build/quillory
Without a DISPLAY the script starts its own Xvfb on a display number the server picks itself
(xvfb-run -a guesses one, which races with other tests starting a server at the same moment).
The program starts with a fresh HOME holding a small store; the script then looks for each toolbar
item, the filter buttons, the table with its rows and the sidebar's fields by name, and checks that
no control a keyboard can reach is left without a name.
"""

import os
import plistlib
import signal
import subprocess
import sys
import tempfile

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "support"))
from atspi_walk import children, descendants, name, showing, start_display, wait_for  # noqa: E402

# Roles a keyboard user lands on and a screen reader announces by name.
CONTROL_ROLES = {
    Atspi.Role.PUSH_BUTTON, Atspi.Role.TOGGLE_BUTTON, Atspi.Role.CHECK_BOX, Atspi.Role.RADIO_BUTTON,
    Atspi.Role.COMBO_BOX, Atspi.Role.TEXT, Atspi.Role.ENTRY, Atspi.Role.PASSWORD_TEXT, Atspi.Role.SLIDER,
    Atspi.Role.SPIN_BUTTON, Atspi.Role.TABLE, Atspi.Role.LIST, Atspi.Role.TREE, Atspi.Role.TREE_TABLE,
    Atspi.Role.PAGE_TAB_LIST, Atspi.Role.TOOL_BAR, Atspi.Role.MENU_BAR, Atspi.Role.SCROLL_PANE,
}

# Menus are walked by their own users; the list of pull-down items adds only noise here.
SKIP_INSIDE = (Atspi.Role.MENU_BAR, Atspi.Role.COMBO_BOX)

failures = []


def fail(message):
    if message in failures:
        return
    failures.append(message)
    print("FAIL: " + message, flush=True)


def write_store(home):
    folder = os.path.join(home, "Library", "Application Support", "Quillory")
    os.makedirs(folder)
    # Due dates are kept as text in the store's own form, local time with its offset (TZ is New York).
    records = [
        {"Name": "Essay on tides", "Date": "2026-11-24 12:00:00 -0500", "Course": "Oceanography", "Type": "Essay",
         "Priority": 3, "Completed": 0},
        {"Name": "Problem set 4", "Date": "2026-11-26 12:00:00 -0500", "Course": "Calculus", "Type": "Homework",
         "Priority": 2, "Completed": 0},
        {"Name": "Lab report", "Date": "2026-11-21 12:00:00 -0500", "Course": "Oceanography", "Type": "Lab",
         "Priority": 1, "Completed": 1},
    ]
    with open(os.path.join(folder, "Assignments.plist"), "wb") as f:
        plistlib.dump(records, f)
    courses = [{"Type": "Course", "Name": "Calculus"}, {"Type": "Course", "Name": "Oceanography"}]
    with open(os.path.join(folder, "Courses and Textbooks.plist"), "wb") as f:
        plistlib.dump(courses, f)


def labels(node):
    """The node's name and the labels that name it. On Linux a pull-down's name is its current
    choice; screen readers announce the label that the labelled-by relation points to."""
    found = [name(node)]
    for relation in node.get_relation_set() or []:
        if relation.get_relation_type() == Atspi.RelationType.LABELLED_BY:
            for index in range(relation.get_n_targets()):
                found.append(name(relation.get_target(index)).rstrip(":"))
    return found


def find(root, role, wanted, visible=True):
    for node in descendants(root, SKIP_INSIDE):
        if node.get_role() == role and wanted in labels(node) and (not visible or showing(node)):
            return node
    return None


def expect(root, role, wanted, where, visible=True):
    node = find(root, role, wanted, visible)
    if node is None:
        fail("no %s named %r in %s" % (role.value_nick, wanted, where))
    return node


def application_of(pid):
    desktop = Atspi.get_desktop(0)
    for app in children(desktop):
        try:
            if app.get_process_id() == pid:
                return app
        except Exception:
            continue
    return None


def table_cells(table, row):
    cells = []
    for column in range(table.get_n_columns()):
        cell = table.get_accessible_at(row, column)
        cells.append(name(cell) if cell is not None else "")
    return cells


def check_window(frame):
    toolbar = expect(frame, Atspi.Role.TOOL_BAR, "Main toolbar", "the main window")
    if toolbar:
        for item in ("Add", "Add Recurring", "Add Project", "Delete", "Courses and Textbooks"):
            expect(toolbar, Atspi.Role.PUSH_BUTTON, item, "the toolbar")
        for segment in ("List format", "Weekly format", "Monthly format"):
            expect(toolbar, Atspi.Role.CHECK_BOX, segment, "the toolbar's View item")
        search = expect(toolbar, Atspi.Role.TEXT, "Search", "the toolbar")
        if search:
            for button in ("Choose what to search", "Clear the search"):
                expect(search, Atspi.Role.PUSH_BUTTON, button, "the search field", visible=False)

    bar = expect(frame, Atspi.Role.FILLER, "Filter bar", "the main window")
    if bar:
        shown = [(name(b), b.get_state_set().contains(Atspi.StateType.CHECKED))
                 for b in children(bar) if b.get_role() == Atspi.Role.CHECK_BOX and showing(b)]
        wanted = [("All", False), ("Incomplete", True), ("Complete", False),
                  ("All", True), ("Calculus", False), ("Oceanography", False)]
        if shown != wanted:
            fail("the filter bar's buttons read %r, expected %r" % (shown, wanted))

    table = expect(frame, Atspi.Role.TABLE, "Assignments", "the main window")
    if table:
        rows = table.get_n_rows()
        if rows != 2:
            fail("the table has %d rows, expected the 2 incomplete assignments" % rows)
        else:
            first, second = table_cells(table, 0), table_cells(table, 1)
            if "Essay on tides" not in first or "Problem set 4" not in second:
                fail("the table's rows read %r and %r" % (first, second))
            # Dates are read out as the list shows them.
            if not any("November 24, 2026" in cell for cell in first):
                fail("the due date cell reads %r" % (first,))
        headers = [name(table.get_column_header(column) or table) for column in range(table.get_n_columns())]
        if "" in headers:
            fail("a column header has no name: %r" % (headers,))

    sidebar = expect(frame, Atspi.Role.FILLER, "Details sidebar", "the main window")
    if sidebar:
        courses = expect(sidebar, Atspi.Role.LIST, "Courses and Textbooks", "the sidebar")
        if courses:
            items = [name(item) for item in children(courses)]
            if items != ["Calculus", "Oceanography"]:
                fail("the sidebar's course list reads %r" % (items,))
    return table, sidebar


def check_selection_reaches_sidebar(table, sidebar):
    # Choosing a row through the accessibility interface, as a screen reader's user would, fills
    # the sidebar; its fields are then found by name with the record's values.
    if not table.add_row_selection(0):
        fail("the table refused a row selection")
        return
    name_field = wait_for(lambda: find(sidebar, Atspi.Role.TEXT, "Name"), 10)
    if name_field is None:
        fail("no field named 'Name' appears in the sidebar once a row is chosen")
        return
    text = wait_for(lambda: name_field.get_text(0, -1) == "Essay on tides" and name_field, 10)
    if not text:
        fail("the sidebar's Name field reads %r" % name_field.get_text(0, -1))
    fields = [(Atspi.Role.TEXT, "Due date"), (Atspi.Role.COMBO_BOX, "Course"), (Atspi.Role.COMBO_BOX, "Textbook"),
              (Atspi.Role.COMBO_BOX, "Type"), (Atspi.Role.CHECK_BOX, "Completed"), (Atspi.Role.TEXT, "Grade"),
              (Atspi.Role.SLIDER, "Priority"), (Atspi.Role.COMBO_BOX, "Remind"), (Atspi.Role.TEXT, "Contacts"), (Atspi.Role.PUSH_BUTTON, "Snapshot"),
              (Atspi.Role.PUSH_BUTTON, "Choose a file to attach"), (Atspi.Role.PAGE_TAB, "Notes"),
              (Atspi.Role.PAGE_TAB, "Subprojects")]
    for role, wanted in fields:
        expect(sidebar, role, wanted, "the sidebar")
    course = find(sidebar, Atspi.Role.COMBO_BOX, "Course")
    if course is not None:
        editors = [child for child in children(course) if child.get_role() == Atspi.Role.TEXT]
        if editors and "Course" not in labels(editors[0]):
            fail("the Course field's text part is named %r" % name(editors[0]))


def check_every_control_named(frame):
    for node in descendants(frame, SKIP_INSIDE):
        role = node.get_role()
        if role not in CONTROL_ROLES or not showing(node):
            continue
        if not any(labels(node)):
            path = []
            parent = node
            while parent is not None and parent != frame:
                path.append("%s %r" % (parent.get_role_name(), name(parent)))
                parent = parent.get_parent()
            fail("a %s has no name (in %s)" % (node.get_role_name(), " < ".join(path[1:]) or "the window"))


def main():
    if len(sys.argv) != 2:
        print("usage: accessibility_tree.py PATH-TO-QUILLORY", file=sys.stderr)
        return 2
    program = os.path.abspath(sys.argv[1])
    if not os.environ.get("DBUS_SESSION_BUS_ADDRESS"):
        print("needs a session bus of its own: run under dbus-run-session", file=sys.stderr)
        return 2
    server = None
    if not os.environ.get("DISPLAY"):
        server = start_display()
        if server is None:
            return 1
    try:
        return run(program)
    finally:
        if server is not None:
            server.terminate()
            server.wait()


def run(program):
    with tempfile.TemporaryDirectory(prefix="quillory-a11y-") as home:
        runtime = os.path.join(home, "runtime")
        os.mkdir(runtime, 0o700)
        write_store(home)
        environment = dict(os.environ)
        environment.update({
            "HOME": home, "XDG_RUNTIME_DIR": runtime, "XDG_CONFIG_HOME": os.path.join(home, ".config"),
            "TZ": "America/New_York", "LANG": "C.UTF-8", "LC_ALL": "C.UTF-8",
            "QT_QPA_PLATFORM": "xcb", "QT_ACCESSIBILITY": "1", "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
        })
        for key in ("QUILLORY_QUIT_AFTER_STARTUP", "QT_QPA_PLATFORMTHEME", "QT_SCALE_FACTOR"):
            environment.pop(key, None)
        log = open(os.path.join(home, "program.log"), "w+")
        process = subprocess.Popen([program], env=environment, stdout=log, stderr=subprocess.STDOUT)
        try:
            app = wait_for(lambda: application_of(process.pid) or process.poll() is not None, 60)
            if app is None or app is True:
                fail("the program never appeared on the accessibility bus")
            else:
                # Qt reports a pull-down's choice as a change of its name; read names from the
                # program each time rather than from the client's cache of such events.
                app.set_cache_mask(Atspi.Cache.NONE)
                frame = wait_for(lambda: next((w for w in children(app) if w.get_role() == Atspi.Role.FRAME
                                               and name(w) == "Quillory" and showing(w)), None), 60)
                if frame is None:
                    fail("no window named 'Quillory'")
                else:
                    wait_for(lambda: find(frame, Atspi.Role.TABLE, "Assignments"), 30)
                    table, sidebar = check_window(frame)
                    check_every_control_named(frame)
                    if table and sidebar:
                        check_selection_reaches_sidebar(table, sidebar)
                        check_every_control_named(frame)
        finally:
            process.send_signal(signal.SIGTERM)
            try:
                process.wait(20)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
            log.seek(0)
            output = log.read()
            log.close()
        if failures:
            print("--- program output ---\n" + output)
            print("%d accessibility failure(s)" % len(failures))
            return 1
    print("the accessibility tree names every control it was asked about")
    return 0


if __name__ == "__main__":
    sys.exit(main())
