# SPDX-License-Identifier: MIT
"""What the tests of the hosts share: a home of their own, sound files, a song, windows."""

import array
import math
import os
import random
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

BUNDLE = Path(os.environ.get("VOCAFADE_BUNDLE", "build/release/Vocafade.vst")).resolve()
COMMAND = Path(os.environ.get("VOCAFADE_COMMAND", "build/release/vocafade")).resolve()
COMPARE = Path(os.environ.get("VOCAFADE_COMPARE", "build/release/tests/vocafade-compare-rendering")).resolve()
# Where screenshots and logs are kept for a look.
ARTEFACTS = Path(os.environ.get("VOCAFADE_ARTEFACTS", "build/release/hosts")).resolve()
LATENCY = 1707  # samples
RATE = 44100


# The Output fader on the panel: x, the y of its upper end, the y of its lower end.
OUTPUT_FADER = (421, 45, 178)


def has_editor():
    """Whether this build's editor has a window, which needs the window system's library."""
    return b"libxcb.so" in (BUNDLE / "Vocafade.so").read_bytes()


def panel_size():
    """Width and height of the editor: those of its background, bitmap 3005."""
    return struct.unpack_from(">II", (BUNDLE / "Resources/3005.png").read_bytes(), 16)


def to_normalised(parameter, value):
    """Hz or a position as the host's 0 to 1."""
    low, high = {3: (20.0, 20000.0), 4: (20.0, 20000.0), 5: (0.0, 127.0)}[parameter]
    return (value - low) / (high - low)


def write_wav(path, left, right, rate=RATE):
    """A stereo file of 32-bit floats."""
    frames = array.array("f", [0.0]) * (2 * len(left))
    frames[0::2] = array.array("f", left)
    frames[1::2] = array.array("f", right)
    data = frames.tobytes()
    form = struct.pack("<HHIIHH", 3, 2, rate, rate * 8, 8, 32)
    with open(path, "wb") as file:
        file.write(b"RIFF" + struct.pack("<I", 4 + 8 + len(form) + 8 + len(data)) + b"WAVE")
        file.write(b"fmt " + struct.pack("<I", len(form)) + form)
        file.write(b"data" + struct.pack("<I", len(data)) + data)


def read_wav(path):
    """(left, right, rate) of a stereo file of 32-bit floats."""
    raw = Path(path).read_bytes()
    assert raw[:4] == b"RIFF" and raw[8:12] == b"WAVE", f"{path} is no WAV file"
    at, form, data = 12, None, None
    while at + 8 <= len(raw):
        name, size = raw[at:at + 4], struct.unpack_from("<I", raw, at + 4)[0]
        if name == b"fmt ":
            form = struct.unpack_from("<HHIIHH", raw, at + 8)
        elif name == b"data":
            data = raw[at + 8:at + 8 + size]
        at += 8 + size + size % 2
    tag, channels, rate, _, _, bits = form
    assert channels == 2 and bits == 32 and tag in (3, 0xFFFE), f"{path}: {form}"
    frames = array.array("f")
    frames.frombytes(data[:len(data) // 8 * 8])
    return frames[0::2], frames[1::2], rate


def write_bank(path, values, name="Hosts"):
    """The user's bank, as the plug-in finds it when it is opened: 64 programs of the same normalised values."""
    record = struct.pack("=6f24si", *values, name.encode(), 0)
    chunk = record * 64
    header = struct.pack(">4si4siiii128si", b"CcnK", 152 + len(chunk), b"FBCh", 1, 0x56666451, 1, 64, bytes(128),
                         len(chunk))
    Path(path).write_bytes(header + chunk)


def song(seconds=4.0, rate=RATE, seed=7):
    """Channels of a song: half a second of silence, then noise-like partials in the middle and at both sides."""
    chance = random.Random(seed)
    count = int(seconds * rate)
    quiet = rate // 2
    channels = [[0.0] * count, [0.0] * count]
    for place in (0.5, 0.5, 0.5, 0.0, 1.0, 0.2):
        frequency, phase = chance.uniform(150.0, 5000.0), chance.uniform(0.0, 6.28)
        step = 2.0 * math.pi * frequency / rate
        for i in range(quiet, count):
            value = 0.12 * math.sin(phase + step * i) * (1.0 + 0.5 * math.sin(i * 3e-4))
            channels[0][i] += value * (1.0 - place)
            channels[1][i] += value * place
    for i in range(quiet, count):
        channels[0][i] += chance.uniform(-0.02, 0.02)
        channels[1][i] += chance.uniform(-0.02, 0.02)
    return channels


def peak_difference(a, b):
    """The greatest absolute difference of two runs of samples, over their common length."""
    return max((abs(x - y) for x, y in zip(a, b)), default=0.0)


def peak(samples):
    return max((abs(x) for x in samples), default=0.0)


class HostTest(unittest.TestCase):
    """A test with a home folder, a plug-in folder and a song of its own; nothing of the user's is read or written."""

    def setUp(self):
        self.work = Path(tempfile.mkdtemp(prefix="vocafade-host-"))
        self.addCleanup(shutil.rmtree, self.work, ignore_errors=True)
        ARTEFACTS.mkdir(parents=True, exist_ok=True)
        self.home = self.work / "home"
        runtime = self.work / "run"
        for folder in (self.home, runtime, self.home / ".config", self.home / ".cache"):
            folder.mkdir(mode=0o700, parents=True)
        keep = {name: os.environ[name] for name in ("PATH", "LANG", "LC_ALL") if name in os.environ}
        self.environment = {
            **keep,
            "HOME": str(self.home),
            "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_CACHE_HOME": str(self.home / ".cache"),
            "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_RUNTIME_DIR": str(runtime),
            "LANG": keep.get("LANG", "C.UTF-8"),
        }
        # Where users without rights put plug-ins.
        self.plugin = self.home / ".vst" / "Vocafade.vst" / "Vocafade.so"
        shutil.copytree(BUNDLE, self.plugin.parent)
        self.processes = []

    def tearDown(self):
        for process in reversed(self.processes):
            self.stop(process)

    def run_program(self, command, timeout=120, check=True, **settings):
        """Runs a program to its end in this test's home; its output, both streams."""
        done = subprocess.run([str(part) for part in command], env={**self.environment, **settings}, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                              timeout=timeout, errors="replace", check=False)
        if check and done.returncode != 0:
            self.fail(f"{command[0]} ended with {done.returncode}:\n{done.stdout[-4000:]}")
        return done.stdout

    def start(self, command, log, **settings):
        """Starts a program that stays; it is ended with the test. Its output goes to a file among the artefacts."""
        with open(ARTEFACTS / log, "w", encoding="utf-8") as output:
            process = subprocess.Popen([str(part) for part in command], env={**self.environment, **settings},
                                       stdout=output, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                                       start_new_session=True)
        self.processes.append(process)
        return process

    def start_display(self):
        """A virtual X server of this test's own; its programs see no other."""
        read, write = os.pipe()
        command = ["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x900x24", "-nolisten", "tcp"]
        with open(ARTEFACTS / "xvfb.log", "w", encoding="utf-8") as log:
            process = subprocess.Popen(command, pass_fds=[write], stdout=log, stderr=log, stdin=subprocess.DEVNULL,
                                       start_new_session=True)
        self.processes.append(process)
        os.close(write)
        with os.fdopen(read, encoding="ascii") as numbers:
            self.environment["DISPLAY"] = ":" + numbers.readline().strip()
        self.environment["NO_AT_BRIDGE"] = "1"

    def xdotool(self, *words, check=True):
        return self.run_program(["xdotool", *words], timeout=20, check=check).split()

    def windows(self, title):
        """The visible windows whose title matches."""
        return self.xdotool("search", "--onlyvisible", "--name", title, check=False)

    def drag(self, window, fader, start, end):
        """Presses on a fader, `start` pixels below its upper end, moves in steps to `end` and lets go."""
        x, top, _ = fader
        self.xdotool("mousemove", "--window", window, x, top + start, "mousedown", 1)
        for i in range(1, 11):
            self.xdotool("mousemove", "--window", window, x, top + start + (end - start) * i // 10)
            time.sleep(0.05)
        self.xdotool("mouseup", 1)

    def screenshot(self, name, window="root"):
        """Kept among the artefacts."""
        path = ARTEFACTS / name
        self.run_program(["import", "-window", window, path], timeout=30)
        return path

    @staticmethod
    def stop(process):
        for sign, patience in ((signal.SIGTERM, 5), (signal.SIGKILL, 5)):
            if process.poll() is not None:
                return
            try:
                os.killpg(process.pid, sign)
                process.wait(patience)
            except (ProcessLookupError, subprocess.TimeoutExpired):
                pass

    def wait_for(self, what, condition, timeout=30.0):
        """What `condition` gives as soon as it is true."""
        end = time.monotonic() + timeout
        while time.monotonic() < end:
            value = condition()
            if value:
                return value
            time.sleep(0.1)
        if "DISPLAY" in self.environment:
            self.screenshot("waiting.png")
        return self.fail(f"waited {timeout} s for {what} in vain")

    def compare(self, song_path, host_path, *changes, block=1024):
        """How far the host's rendering is from our own: a dictionary of compare_rendering.cpp's numbers."""
        words = self.run_program([COMPARE, self.plugin, song_path, host_path, block, *changes]).split()
        return {name: float(value) for name, value in zip(words[0::2], words[1::2])}

    def assert_same_sound(self, song_path, host_path, *changes, block=1024, tolerance=0.0):
        """The host's rendering is our own over the song's whole length."""
        verdict = self.compare(song_path, host_path, *changes, block=block)
        print(f"    {Path(host_path).name}: {verdict}", file=sys.stderr)
        self.assertGreater(verdict["peak"], 0.05, "the host rendered next to nothing")
        self.assertLessEqual(verdict["difference"], tolerance, f"{verdict}")
        self.assertEqual(verdict["frames"], len(read_wav(song_path)[0]))


def main():
    unittest.main(verbosity=2, argv=[sys.argv[0], *sys.argv[1:]])
