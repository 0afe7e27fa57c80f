#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""A made screen with a window manager, on which a window is looked at as a user or a screen reader would.

screen.py FOLDER [SIZE]: serves it to a test. Each line on standard input is a list in JSON, the name of a method of
Screen and its arguments; each answer is a line with {"value": ...} or {"error": ...}. The first line is the answer to
the start: the environment in which the program has to run. The end of the input ends everything that was started.

The session bus comes from the environment."""
import json
import mmap
import os
import pathlib
import re
import struct
import subprocess
import sys
import time
import warnings
import zlib

PATIENCE = 20.0


def wait(ask, what, limit=PATIENCE):
    """What `ask` returns, as soon as that is true."""
    deadline = time.monotonic() + limit
    while not (value := ask()):
        if time.monotonic() > deadline:
            raise TimeoutError(what() if callable(what) else what)
        time.sleep(0.01)
    return value


def start(command, **options):
    """A child that does not outlive this process, whatever becomes of that. Nobody hears it unless `options` say so."""
    quiet = dict.fromkeys(["stdin", "stdout", "stderr"], subprocess.DEVNULL)
    return subprocess.Popen(["setpriv", "--pdeathsig", "TERM", *map(str, command)], **{**quiet, **options})


class Picture:
    """What stood on a part of the screen."""

    def __init__(self, width, height, rows):
        self.width, self.height, self.rows = width, height, rows

    def write(self, path):
        lines = b"".join(b"\0" + row for row in self.rows)

        def chunk(kind, content):
            return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))

        header = struct.pack(">IIBBBBB", self.width, self.height, 8, 2, 0, 0, 0)
        pathlib.Path(path).write_bytes(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
                                       + chunk(b"IDAT", zlib.compress(lines, 6)) + chunk(b"IEND", b""))

    def is_drawn(self):
        return any(max(row) > 40 for row in self.rows)


class Screen:
    def __init__(self, folder, size="2000x1300", reader=True):
        """Without a reader of the screen programs save themselves the work that one makes."""
        self.folder = pathlib.Path(folder)
        self.folder.mkdir(parents=True, exist_ok=True)
        numbers, answers = os.pipe()
        self.programs = [start(
            ["Xvfb", "-displayfd", answers, "-screen", "0", f"{size}x24", "-fbdir", self.folder, "-nolisten", "tcp"],
            pass_fds=[answers])]
        os.close(answers)
        with os.fdopen(numbers) as number:
            self.environment = {"DISPLAY": ":" + number.readline().strip(),
                                "QT_QPA_PLATFORM": "xcb",
                                "QT_QUICK_BACKEND": "software"}
        if reader:
            self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        os.environ.update(self.environment)
        managed = self.folder / "managed"
        managed.unlink(missing_ok=True)
        self.programs.append(
            start(["openbox", "--sm-disable", "--startup", f"touch {managed}"]))
        wait(managed.exists, "the window manager does not start")
        # A picture of the screen has the pointer in it.
        self.move(*size.split("x"))
        if reader:
            self.start_reader()

    def start_reader(self):
        self.programs.append(
            start(["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"]))
        # Reads the environment.
        import gi
        gi.require_version("Atspi", "2.0")
        from gi.repository import Atspi, Gio, GLib
        self.atspi, self.failure = Atspi, GLib.Error
        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        wait(lambda: bus.call_sync("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner",
                                   GLib.Variant("(s)", ["org.a11y.Bus"]), None, 0, -1).unpack()[0],
             "there is no accessibility bus")
        # It is of an age at which all of it is deprecated, and nothing took its place.
        warnings.simplefilter("ignore", DeprecationWarning)
        Atspi.init()

    def end(self):
        for program in reversed(self.programs):
            program.terminate()
            program.wait()

    # What a screen reader sees, and does.

    def elements(self):
        """All that the programs show: depth, element, role, name, states without those that nearly all have."""
        found = []

        def visit(element, depth):
            try:
                states = {state.value_nick for state in element.get_state_set().get_states()}
                if "showing" in states:
                    found.append((depth, element, element.get_role_name(), element.get_name() or "",
                                  states - {"enabled", "sensitive", "showing", "visible", "read-only"}))
                    for index in range(element.get_child_count()):
                        child = element.get_child_at_index(index)
                        if child is not None:
                            visit(child, depth + 1)
            except self.failure:
                pass  # It went while it was looked at.

        desktop = self.atspi.get_desktop(0)
        desktop.clear_cache()
        for index in range(desktop.get_child_count()):
            program = desktop.get_child_at_index(index)
            if program is not None:
                program.set_cache_mask(self.atspi.Cache.NONE)
                visit(program, 0)
        return found

    def tree(self):
        """A line for each element: role, 'name', states, and behind a colon what else is said of it."""
        lines = []
        for depth, element, role, name, states in self.elements():
            try:
                description = element.get_description()
            except self.failure:
                description = ""
            lines.append("  " * depth + " ".join([f"{role} '{name}'", *sorted(states)])
                         + (f": {description}" if description else ""))
        return lines

    def sees(self, text, limit=PATIENCE):
        """Waits until a line of the tree holds this text."""
        return wait(lambda: next((line.strip() for line in self.tree() if text in line), None),
                    lambda: f"there is no {text} in:\n" + "\n".join(self.tree()), limit)

    def misses(self, text, limit=PATIENCE):
        """Waits until no line of the tree holds this text."""
        wait(lambda: all(text not in line for line in self.tree()),
             lambda: f"there still is {text} in:\n" + "\n".join(self.tree()), limit)

    def clock(self):
        """The first time of day or length of time that is said anywhere."""
        return next(iter(re.findall(r"\d+(?::\d\d)+", "\n".join(self.tree()))), None)

    def find(self, name, number=0):
        """Waits for the element with this name that can be pressed, of several the one with this number."""
        def look():
            named = [element for _, element, _, text, _ in self.elements()
                     if text == name and element.get_action_iface()]
            return named[number] if len(named) > number else None

        return wait(look, lambda: f"there is no '{name}' to press in:\n" + "\n".join(self.tree()))

    def place(self, name, number=0, title="Vantiro"):
        """Where that element is on the screen, as x, y, width, height: what a program says is in points."""
        window = next(element for _, element, role, text, _ in self.elements() if role == "frame" and text == title)
        outer = window.get_extents(self.atspi.CoordType.SCREEN)
        inner = self.find(name, number).get_extents(self.atspi.CoordType.SCREEN)
        x, y, width, _ = self.window(title)
        scale = width / outer.width
        return [round(value) for value in (x + (inner.x - outer.x) * scale, y + (inner.y - outer.y) * scale,
                                           inner.width * scale, inner.height * scale)]

    def press(self, name, number=0):
        """Does the action of the element with this name, of several the one with this number. Waits for it."""
        element = self.find(name, number)
        for action in range(element.get_n_actions()):
            if self.atspi.Action.get_action_name(element, action) == "Press":
                return self.atspi.Action.do_action(element, action)
        raise LookupError(f"'{name}' cannot be pressed")

    # What a user does and sees.

    @staticmethod
    def xdotool(*words):
        return subprocess.run(["xdotool", *map(str, words)], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL,
                              text=True, timeout=PATIENCE, check=False).stdout.split()

    def key(self, *keys):
        """Strikes keys or chords such as ctrl+r."""
        self.xdotool("key", *keys)

    def type(self, text):
        self.xdotool("type", text)

    def click(self, x, y, button=1):
        self.xdotool("mousemove", x, y, "click", button)

    def move(self, x, y):
        self.xdotool("mousemove", x, y)

    def window(self, title="Vantiro"):
        """Where the window with this title is on the screen, as x, y, width, height; nothing if it is not there."""
        found = self.xdotool("search", "--onlyvisible", "--name", f"^{re.escape(title)}$")
        if not found:
            return None
        place = dict(word.split("=") for word in self.xdotool("getwindowgeometry", "--shell", found[0]))
        return [int(place[key]) for key in ("X", "Y", "WIDTH", "HEIGHT")] if "HEIGHT" in place else None

    def shows_window(self, title="Vantiro", limit=PATIENCE):
        """Waits until the window is there and something is drawn in it."""
        def drawn():
            place = self.window(title)
            return place if place and self.picture(place).is_drawn() else None
        return wait(drawn, f"no window '{title}'", limit)

    def hides_window(self, title="Vantiro", limit=PATIENCE):
        wait(lambda: self.window(title) is None, f"there still is a window '{title}'", limit)

    def picture(self, place=None):
        """What stands now in that part of the screen."""
        screen = (self.folder / "Xvfb_screen0").read_bytes()
        head = struct.unpack(">25I", screen[:100])
        first, pitch = head[0] + head[19] * 12, head[12]
        x, y, width, height = place or (0, 0, head[4], head[5])
        x, y = max(x, 0), max(y, 0)
        width, height = min(width, head[4] - x), min(height, head[5] - y)
        rows = []
        for row in range(y, y + height):
            start = first + row * pitch + x * 4
            pixels = screen[start:start + width * 4]
            colours = bytearray(width * 3)
            # Blue comes first in the screen's memory.
            for channel in range(3):
                colours[channel::3] = pixels[2 - channel::4]
            rows.append(bytes(colours))
        return Picture(width, height, rows)

    def samples(self):
        """Some hundred places of the screen, for a quick look whether anything changes."""
        with (open(self.folder / "Xvfb_screen0", "rb") as file,
              mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ) as memory):
            head = struct.unpack(">25I", memory[:100])
            first, pitch = head[0] + head[19] * 12, head[12]
            return [memory[place:place + 3] for row in range(16, head[5], 64)
                    for place in range(first + row * pitch, first + row * pitch + head[4] * 4, 256)]

    def screenshot(self, path, title="Vantiro"):
        """Writes a picture of the window, as it stands."""
        picture = self.picture(self.shows_window(title))
        picture.write(path)
        return picture


def serve(words):
    def answer(value):
        print(json.dumps(value), flush=True)

    screen = Screen(*words)
    answer({"value": screen.environment})
    for line in sys.stdin:
        method, *arguments = json.loads(line)
        try:
            value = getattr(screen, method)(*arguments)
            answer({"value": None if isinstance(value, Picture) else value})
        except Exception as fault:  # Whatever it is, the test is to be told.
            answer({"error": f"{method}: {fault}"})
    screen.end()


if __name__ == "__main__":
    serve(sys.argv[1:])
