"""What the screen-reader walks of the real program share: reading the AT-SPI tree without tripping
over nodes that vanish under the walk, waiting for the program, and an Xvfb of the walk's own."""

import os
import subprocess
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402


def children(node):
    # A window closing under the walk answers with errors rather than nodes; those are no children.
    try:
        count = node.get_child_count()
    except Exception:
        return []
    result = []
    for index in range(count):
        try:
            child = node.get_child_at_index(index)
        except Exception:
            child = None
        if child is not None:
            result.append(child)
    return result


def descendants(node, skip_inside=()):
    """The node and everything under it, depth first; the insides of nodes whose role is in
    `skip_inside` are left out."""
    stack = [node]
    while stack:
        current = stack.pop()
        yield current
        if skip_inside and current.get_role() in skip_inside:
            continue
        stack.extend(reversed(children(current)))


def name(node):
    try:
        return node.get_name() or ""
    except Exception:
        return ""


def showing(node):
    return node.get_state_set().contains(Atspi.StateType.SHOWING)


def wait_for(condition, seconds):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        value = condition()
        if value:
            return value
        time.sleep(0.2)
    return None


def start_display():
    """Starts Xvfb on a display number the server picks itself (xvfb-run -a guesses one, which races
    with other tests starting a server at the same moment) and points DISPLAY at it; None when it
    did not start."""
    read_end, write_end = os.pipe()
    server = subprocess.Popen(["Xvfb", "-displayfd", str(write_end), "-screen", "0", "1280x800x24", "-nolisten", "tcp"],
                              pass_fds=(write_end,), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    os.close(write_end)
    with os.fdopen(read_end) as chosen:
        number = chosen.readline().strip()
    if not number:
        print("Xvfb did not start", file=sys.stderr)
        server.wait()
        return None
    os.environ["DISPLAY"] = ":" + number
    os.environ.pop("XAUTHORITY", None)
    return server
