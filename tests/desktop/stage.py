# SPDX-License-Identifier: GPL-3.0-or-later
"""A stage for scripts that look at the window: folders, a message bus, an audio graph with gear that plays a made set,
and a screen, all of its own. Nothing of the user's is seen or touched. This process's environment leads there too."""
import json
import os
import pathlib
import signal
import subprocess
import tempfile
import time

import screen

BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


class Stage:
    """A context. `size` is the screen's; without one there is none."""

    def __init__(self, binaries, size="2000x1300", reader=True):
        self.binaries = pathlib.Path(binaries).resolve()
        self.size, self.reader = size, reader
        self.programs = []
        self.screen = self.app = None

    def __enter__(self):
        self.temporary = tempfile.TemporaryDirectory(prefix="vantiro-")
        self.folder = pathlib.Path(self.temporary.name)
        self.home = self.folder / "home"
        for name in list(os.environ):
            if name.startswith(("VANTIRO_", "QT_", "WAYLAND_", "XDG_CURRENT")):
                del os.environ[name]
        os.environ.update({
            "HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_DATA_HOME": str(self.home / ".local/share"), "XDG_STATE_HOME": str(self.home / ".local/state"),
            "XDG_CACHE_HOME": str(self.home / ".cache"), "DBUS_SYSTEM_BUS_ADDRESS": "disabled:"})
        self.home.mkdir()
        socket = self.folder / "bus"
        (self.folder / "bus.conf").write_text(BUS.format(socket))
        try:
            self.programs.append(screen.start(["dbus-daemon", "--nofork", f"--config-file={self.folder}/bus.conf"]))
            screen.wait(socket.exists, "the message bus does not start")
            os.environ["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={socket}"
            self.gear = screen.start([self.binaries / "vantiro_gear", self.folder / "run"], stdin=subprocess.PIPE,
                                     stdout=subprocess.PIPE, text=True)
            self.programs.append(self.gear)
            while (line := self.gear.stdout.readline().strip()) != "ready":
                if not line:
                    raise RuntimeError("there is no audio graph")
                os.environ.update([line.split("=", 1)])
            if self.size:
                self.screen = screen.Screen(self.folder / "screen", self.size, self.reader)
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.kill()
        if state := self.recorder():
            os.kill(state["pid"], signal.SIGKILL)
        if self.screen:
            self.screen.end()
        for program in reversed(self.programs):
            program.terminate()
            program.wait()
        self.temporary.cleanup()

    def order(self, *words):
        """Something is done to the gear; Gear.cpp has the list."""
        self.gear.stdin.write(" ".join(map(str, words)) + "\n")
        self.gear.stdin.flush()
        if self.gear.stdout.readline().strip() != "done":
            raise RuntimeError(f"the gear does not {words[0]}")

    def start_tray(self):
        """A tray that takes the application's item. Whoever has it presses the item by SIGUSR1."""
        log = self.folder / "tray.log"
        log.touch()
        tray = screen.start([pathlib.Path(__file__).parent / "made-tray", log])
        self.programs.append(tray)
        screen.wait(lambda: "menu" in log.read_text(), "the item does not come to the tray")
        return tray

    def settings(self, **values):
        """As if the user had set them in an earlier run; without any, as before the first."""
        file = self.home / ".config/Vantiro/settings.json"
        file.unlink(missing_ok=True)
        if values:
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(json.dumps(values))

    def start(self, *arguments, **environment):
        """Starts the application; whoever wants its window waits for it."""
        self.app = screen.start([self.binaries / "vantiro-app", *arguments], env={**os.environ, **environment})
        return self.app

    def kill(self):
        """As a crash."""
        if self.app:
            self.app.kill()
            self.app.wait()
            self.app = None

    def ends(self, limit=20):
        """Waits until the application has gone; its exit code."""
        code = self.app.wait(limit)
        self.app = None
        return code

    def recorder(self):
        """The state of the running take, if there is one."""
        try:
            state = json.loads((self.home / ".local/share/Vantiro/recorder.json").read_text())
            os.kill(state["pid"], 0)
            return state
        except (OSError, ValueError):
            return None

    def last_take(self):
        """The final record of the take that ended last."""
        return json.loads((self.home / ".local/share/Vantiro/last-take.json").read_text())

    def takes(self, seconds=0, limit=30):
        """Waits until a take runs that is so long."""
        def long_enough():
            state = self.recorder()
            stats = (state or {}).get("stats") or {}
            rate = stats.get("sampleRate") or 1
            return state if state and stats.get("frames", 0) / rate >= seconds else None
        return screen.wait(long_enough, "no take runs", limit)
