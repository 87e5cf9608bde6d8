# SPDX-License-Identifier: MIT
"""What the tests of the hosts share: one at a time on a machine, windows, JACK, and programs as hosts keep them."""

import base64
import fcntl
import os
import re
import select
import signal
import shutil
import struct
import sys
import time
import zlib
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
from alone import BUILD, BUNDLE, RATE, AloneTest, Stuck, end_all

LV2_URI = "urn:velmorax:vocafade"
NO_HARDWARE = BUILD / "tests/vocafade-no-hardware.so"
WAITING = 600  # seconds that a test waits for one of another checkout
PERIOD = 1024  # samples of JACK's block
SERVER = f"vocafade-hosts-{os.getuid()}"  # JACK's, apart from the user's own
RECORD = struct.Struct("=6f24si")  # a program as chunks hold it
IDENTIFIER = 0x56666451  # 'VfdQ'
NAMES = ("ON/OFF", "Output", "Input", "LoFreq", "HiFreq", "Position")
# A bank in which every program differs.
CURRENT = 37
PROGRAMS = [(n % 2, 0.2 + n / 100, 1 - n / 64, n / 640, 0.5 + n / 200, n / 63, f"Program {n}".encode(), 0)
            for n in range(64)]
PROGRAMS[0] = (*PROGRAMS[0][:7], CURRENT)

# The Output fader on the panel: x, the y of its upper end, the y of its lower end.
FADER_X, FADER_TOP, FADER_BOTTOM = 421, 45, 178
# Width and height of the editor: those of its background, bitmap 3005.
PANEL_SIZE = struct.unpack_from(">II", (BUNDLE / "Resources/3005.png").read_bytes(), 16)


def write_bank(path, values):
    """The user's bank, as the plug-in finds it when it is opened: 64 programs of the same normalised values."""
    chunk = RECORD.pack(*values, b"Hosts", 0) * 64
    header = struct.pack(">4si4siiii128si", b"CcnK", 152 + len(chunk), b"FBCh", 1, IDENTIFIER, 1, 64, bytes(128), len(chunk))
    path.write_bytes(header + chunk)


def pack(programs):
    """A bank's programs as hosts keep them."""
    return b"".join(RECORD.pack(*program) for program in programs)


def unpack(chunk):
    return list(RECORD.iter_unpack(chunk))


def pack_as_qt(programs):
    """As Qt compresses it and MusE and qtractor write it."""
    raw = pack(programs)
    return base64.b64encode(struct.pack(">I", len(raw)) + zlib.compress(raw)).decode()


def unpack_as_qt(text):
    return unpack(zlib.decompress(base64.b64decode(text)[4:]))


def running(*names):
    """Whether a process of one of these names runs."""
    for file in Path("/proc").glob("[0-9]*/comm"):
        try:
            if file.read_text(encoding="utf-8", errors="replace").strip() in names:
                return True
        except OSError:
            pass  # it has ended
    return False


class HostTest(AloneTest):
    """A test with a plug-in folder and, when it asks for them, a display and a sound server of its own."""

    def setUp(self):
        # One test of a host at a time on a machine: script pipes and JACK's memory have one name each.
        signal.alarm(WAITING)
        lock = open(f"/tmp/vocafade-hosts-{os.getuid()}.lock", "w", encoding="ascii")
        self.addCleanup(lock.close)
        fcntl.flock(lock, fcntl.LOCK_EX)
        super().setUp()
        self.logs = BUILD / "hosts"
        self.logs.mkdir(exist_ok=True)
        # Where users without rights put plug-ins.
        self.plugin = self.home / ".vst" / "Vocafade.vst" / "Vocafade.so"
        shutil.copytree(BUNDLE, self.plugin.parent)
        # Not of this very second, in which a host may take a plug-in for newer than what it noted about it.
        os.utime(self.plugin, (time.time() - 3600,) * 2)

    def start_display(self):
        """A virtual X server of this test's own; its programs see no other."""
        def start():
            read, write = os.pipe()
            server = self.start("Xvfb", "-displayfd", write, "-screen", 0, "1280x900x24", "-nolisten", "tcp", "-noreset",
                                streams={"pass_fds": [write]})
            os.close(write)
            with os.fdopen(read, encoding="ascii") as numbers:
                self.wait_for("the display's number", lambda: select.select([numbers], [], [], 0)[0], 30, server)
                self.environment["DISPLAY"] = ":" + numbers.readline().strip()

        self.start_up("the X server", start)

    def xdotool(self, *words, code=0):
        return self.run_program("xdotool", *words, timeout=20, code=code).split()

    def windows(self, title):
        """The visible windows whose title matches. The search ends with an error when one of all windows goes away
        meanwhile: then there are none."""
        words = self.xdotool("search", "--onlyvisible", "--name", title, code=None)
        return words if all(word.isdigit() for word in words) else []

    def panel_window(self, at_least=1):
        """The number of the innermost window that has the panel's size, if there are so many of them."""
        def tree():  # xwininfo gives up when one of all windows goes away meanwhile
            text = self.run_program("xwininfo", "-root", "-tree", code=None)
            return "rror" not in text and text

        size = "x".join(map(str, PANEL_SIZE))
        found = re.findall(rf"^\s+(0x[0-9a-f]+) .*? {size}\+", self.wait_for("all windows", tree), re.M)
        return found[-1] if len(found) >= at_least else None

    def start_jack(self):
        """A sound server without hardware, which waits for its clients, however busy the machine is."""
        self.environment["JACK_DEFAULT_SERVER"] = SERVER
        self.remove_jack_files()
        self.addCleanup(self.remove_jack_files)
        self.addCleanup(end_all)
        process = self.start("jackd", "-n", SERVER, "-p", 128, "-r", "-S", "-t", 20000, "-d", "dummy", "-r", RATE,
                             "-p", PERIOD)
        self.wait_for_port("playback_1", process)

    def wait_for_port(self, name, process):
        self.wait_for(name, lambda: name in self.run_program("jack_lsp", code=None), process=process)

    def remove_jack_files(self):
        """Of our server; and of all others while none runs."""
        stale = SERVER if running("jackd", "jackdbus") else f"{SERVER}|jack-({os.getuid()}-|shm-registry)"
        for left in Path("/dev/shm").glob("*"):
            if re.search(stale, left.name) and left.lstat().st_uid == os.getuid():
                left.unlink(missing_ok=True)

    def slide(self, place, start, end):
        """Presses at `start`, moves in steps to `end` and lets go; `place` gives xdotool's words for where that is."""
        self.xdotool("mousemove", *place(start), "mousedown", 1)
        for i in range(1, 11):
            self.xdotool("mousemove", *place(start + (end - start) * i // 10))
            time.sleep(0.05)
        self.xdotool("mouseup", 1)

    def drag_output(self, editor, name, start=40, end=80):
        """Drags the Output fader, from and to so many pixels below its upper end, and waits until it is drawn elsewhere;
        keeps screenshots of both. How the fader looks then."""
        before = self.fader(editor)
        self.screenshot(f"{name}-before.png")
        self.slide(lambda y: ("--window", editor, FADER_X, FADER_TOP + y), start, end)
        after = self.fader(editor, other_than=before)
        self.screenshot(f"{name}.png")
        return after

    def turn_output(self, editor):
        """Turns the wheel up a little over the Output fader, and waits until it is drawn elsewhere: how it looks then."""
        before = self.fader(editor)
        self.xdotool("mousemove", "--window", editor, FADER_X, FADER_TOP + 60, "click", "--repeat", 2, "--delay", 60, 4)
        return self.fader(editor, other_than=before)

    def fader(self, window, other_than=None):
        """The Output fader's part of the panel as it is drawn, as bytes: waits until it stays as it is and differs from
        another picture of it."""
        path = self.work / "part.ppm"
        area = f"20x{FADER_BOTTOM - FADER_TOP + 20}+{FADER_X - 10}+{FADER_TOP - 10}"
        last = [None]

        def steady():
            where = self.run_program("xwininfo", "-id", window, code=None)
            self.run_program("import", "-window", window, "-crop", area, path, code=None)
            still = "IsViewable" in where and where == self.run_program("xwininfo", "-id", window, code=None)
            last.append(path.read_bytes() if still and path.exists() else None)
            time.sleep(0.3)
            return last[-1] == last[-2] != other_than and last[-1] and len(set(last[-1][-3000:])) > 4 and last[-1]

        return self.wait_for("the panel to be drawn", steady)

    def open_until(self, opened, gesture, times=4, patience=12):
        """Does what opens the plug-in's window until it is there. What comes before the host's own windows stand is
        lost. The value of `opened`."""
        attempts = iter(range(times))

        def attempt():
            gesture(next(attempts))
            return self.wait_for("the plug-in's window", opened, timeout=patience)

        return self.start_up("the plug-in's window", attempt, times)

    def assert_programs(self, programs, values, expected):
        """All 64 programs are the expected ones. Of the current one hosts that write values as text set the values
        again, with six digits; `values` are what they wrote."""
        for number in range(6):
            self.assertAlmostEqual(values[number], expected[CURRENT][number], delta=1e-6)
            self.assertAlmostEqual(programs[CURRENT][number], expected[CURRENT][number], delta=1e-6)
        programs[CURRENT] = (*expected[CURRENT][:6], *programs[CURRENT][6:])
        self.assertEqual(unpack(pack(programs)), unpack(pack(expected)))

    def screenshot(self, name):
        """Kept among the logs."""
        self.run_program("import", "-window", "root", self.logs / name, timeout=30)

    def wait_for(self, *arguments, **options):
        try:
            return super().wait_for(*arguments, **options)
        except Stuck:
            if "DISPLAY" in self.environment:
                self.screenshot("waiting.png")
            raise
