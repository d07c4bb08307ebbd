#!/usr/bin/python3
"""Walks the viewer by keyboard alone and tells what a screen reader is told, over the real bus.

accessible_walk.py VIEWER SETTINGS CERTIFICATE SCRIPT [--write]
    Sends the keys of SCRIPT, each on a line of its own, and compares what follows each with the
    indented lines below it; --write writes them down instead. Lines in brackets are told by newer
    toolkits alone.

Needs an X server and a session bus of its own (dbus-run-session), AT-SPI with its introspection
data, and xdotool.
"""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 120  # seconds for what has to come
CALM = 0.7  # seconds in which what must not come would
EVENTS = ("object:state-changed:focused", "object:state-changed:selected",
          "object:text-caret-moved", "object:text-changed:insert")
STATES = (Atspi.StateType.SELECTED, Atspi.StateType.EXPANDED)
KEYS = {"Ctrl+Page_Down": "ctrl+Next", "Ctrl+Page_Up": "ctrl+Prior"}


def shown(text):
    return text.replace("\n", "\\n")


def described(part):
    """Role, name, what is more of it than the name, and states, for people to read."""
    role = part.get_role_name().replace("push button", "button") # newer releases' name for it
    words = [role, f'"{shown(part.get_name())}"']
    if part.get_role() == Atspi.Role.COMBO_BOX:
        words.append("of value " + Atspi.Text.get_text(part, 0, -1))
    states = part.get_state_set()
    words += [state.value_nick for state in STATES if states.contains(state)]
    return " ".join(words)


def caret(part):
    """The selected text, or the line in which the caret stands."""
    if Atspi.Text.get_n_selections(part) > 0:
        chosen = Atspi.Text.get_selection(part, 0)
        return "selected " + shown(Atspi.Text.get_text(part, chosen.start_offset, chosen.end_offset))
    offset = Atspi.Text.get_caret_offset(part)
    text = Atspi.Text.get_text(part, 0, -1)
    start = text.rfind("\n", 0, offset) + 1
    return f"caret at {offset - start} of " + text[start:].split("\n")[0]


def agrees(lines, expected):
    """Whether the lines are those expected, with any of the ones in brackets, in order."""
    told = [f"({line})" if f"({line})" in expected else line for line in lines]
    return told == [line for line in expected if line in told or not line.startswith("(")]


class Told:
    """What has been told since the last key: the last of each kind about each part, in order."""

    def __init__(self):
        self.lines = []
        self.focus = None
        self.listener = Atspi.EventListener.new(self.on_event)
        for event in EVENTS:
            self.listener.register(event)

    def on_event(self, event):
        try:
            line = self.line(event)
        except GLib.GError:
            return  # of a part that is gone
        if line and line not in self.lines:
            self.lines.append(line)

    def line(self, event):
        part = event.source
        if event.type.endswith(":focused"):
            if not event.detail1:
                return None
            self.focus = part
            return "focus " + described(part)
        if event.type.endswith(":selected"):
            return "marked " + described(part) if event.detail1 else None
        # A caret and a value that change elsewhere aren't heard of.
        if part != self.focus:
            return None
        if part.get_role() == Atspi.Role.COMBO_BOX:
            return "value " + caret(part)
        return caret(part) if event.type.endswith("caret-moved") else None


def wait(seconds, done=lambda: False):
    context = GLib.MainContext.default()
    end = time.monotonic() + seconds
    while time.monotonic() < end and not done():
        while context.pending():
            context.iteration(False)
        time.sleep(0.01)
    return done()


def application():
    desktop = Atspi.get_desktop(0)
    for i in range(desktop.get_child_count()):
        child = desktop.get_child_at_index(i)
        if child and child.get_name().endswith("PXViewCertTool") and child.get_child_count():
            return child
    return None


def parts(part, depth=0):
    """What is shown and has a name or a role that is read."""
    role = part.get_role()
    isRead = role not in (Atspi.Role.FILLER, Atspi.Role.LAYERED_PANE, Atspi.Role.TABLE_CELL,
                          Atspi.Role.SCROLL_BAR, Atspi.Role.LIST)
    isShown = part.get_state_set().contains(Atspi.StateType.SHOWING)
    if isShown and isRead:
        yield "  " * depth + described(part)
        depth += 1
    # Of a page that is hidden the older toolkit takes the table for shown.
    if role == Atspi.Role.TABLE or (role == Atspi.Role.PANEL and not isShown):
        return
    for i in range(part.get_child_count()):
        child = part.get_child_at_index(i)
        if child:
            yield from parts(child, depth)


class Viewer:
    def __init__(self, arguments, runtime):
        environment = dict(os.environ, PX_CONFIG_PATH=arguments.settings, XDG_RUNTIME_DIR=runtime,
                           QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
        # On a desktop the bus is there before a window; one that opens while the bus comes up is
        # missed by the toolkit at times.
        self.told = Told()
        self.process = subprocess.Popen([arguments.viewer, arguments.certificate], env=environment,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        if not wait(PATIENCE, lambda: application() is not None):
            raise SystemExit(f"the viewer does not come to the bus (ended with {self.process.poll()})")
        self.window = application().get_child_at_index(0)
        number = subprocess.run(
            ["xdotool", "search", "--sync", "--onlyvisible", "--pid", str(self.process.pid)],
            check=True, capture_output=True, text=True).stdout.split()[0]
        subprocess.run(["xdotool", "windowfocus", "--sync", number], check=True)

    def after(self, step, expected):
        """What follows the step: waits for what is expected, and for what isn't."""
        told = self.told
        if step == "opens":
            wait(CALM)
            return ["window " + shown(self.window.get_name()) + ": " + self.window.get_description()]
        if step == "parts":
            return list(parts(self.window))
        told.lines.clear()
        subprocess.run(["xdotool", "key", KEYS.get(step, step)], check=True)
        if step == "Escape":
            return [f"ends with {self.process.wait(PATIENCE)}"]
        if expected is not None:
            wait(PATIENCE, lambda: all(line in told.lines or line.startswith("(")
                                       for line in expected))
        wait(CALM if expected is not None else 2 * CALM)
        return list(told.lines)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    for name in ("viewer", "settings", "certificate"):
        parser.add_argument(name)
    parser.add_argument("script", type=pathlib.Path)
    parser.add_argument("--write", action="store_true", help="write the script's indented lines")
    arguments = parser.parse_args()

    steps = []  # a key and what is to follow it
    for line in arguments.script.read_text(encoding="utf-8").splitlines():
        if line.startswith("    "):
            steps[-1][1].append(line[4:])
        elif line:
            steps.append((line, []))
    failed = False
    output = ""
    with tempfile.TemporaryDirectory() as runtime:
        viewer = Viewer(arguments, runtime)
        try:
            for step, expected in steps:
                lines = viewer.after(step, None if arguments.write else expected)
                isAsExpected = agrees(lines, expected)
                kept = expected if isAsExpected else lines
                output += step + "\n" + "".join(f"    {line}\n" for line in kept)
                if not isAsExpected and not arguments.write:
                    failed = True
                    print(f"after {step}:", *lines, "instead of:", *expected, sep="\n    ")
        finally:
            viewer.process.kill()
    if arguments.write:
        arguments.script.write_text(output, encoding="utf-8")
    sys.exit(failed)


if __name__ == "__main__":
    main()
