# SPDX-License-Identifier: MIT
"""Sound servers of a test's own: a private runtime folder, a sink without hardware, a recorder of what leaves it."""

import array
import ctypes
import os
import pty
import random
import re
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time
import unittest
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
import pipewire  # of the folder that both share

COMMAND = Path(os.environ["VOCAFADE_COMMAND"])
RATE = 44100
LIMIT = 240  # seconds for a test, whatever hangs
TRIES = 3    # where a real-time deadline was missed
SKIPPED = 77
LIBC = ctypes.CDLL(None)


class Late(Exception):
    """The machine was too busy for real time; nothing can be said."""


def needs(*programs):
    """Ends the whole test, as skipped, when a program is missing."""
    missing = [program for program in programs if shutil.which(program) is None]
    if missing:
        print("skipped: not installed here:", ", ".join(missing))
        sys.exit(SKIPPED)


def patiently(test):
    """Runs a test again when, and only when, a real-time deadline was missed, and says so."""
    def run(self):
        for attempt in range(1, TRIES + 1):
            try:
                return test(self)
            except Late as reason:
                print(f"    try {attempt} of {TRIES}: {reason}", file=sys.stderr)
                self.doCleanups()
                self.setUp()
        return self.fail(f"{TRIES} tries were too late")
    return run


def noise(seconds, seed, rate=RATE):
    """Interleaved stereo whose frames are all different, so that each tells where it comes from."""
    rest = random.Random(seed)
    return array.array("f", (rest.uniform(-0.4, 0.4) for _ in range(2 * int(seconds * rate))))


def write_wav(path, samples, rate=RATE):
    data = samples.tobytes()
    path.write_bytes(struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", 36 + len(data), b"WAVE", b"fmt ", 16, 3, 2, rate, rate * 8,
                                 8, 32, b"data", len(data)) + data)
    return path


def read_wav(path):
    raw = path.read_bytes()
    samples = array.array("f")
    start = raw.index(b"data") + 8
    samples.frombytes(raw[start:start + (len(raw) - start) // 8 * 8])
    return samples


def frames_of(samples):
    return list(zip(samples[0::2], samples[1::2]))


def runs_in(recorded, songs):
    """What was heard, as [song, first frame, frames], where it is the songs' own samples; all else is left out."""
    known = {frame: (number, i) for number, song in enumerate(songs) for i, frame in enumerate(frames_of(song))}
    runs = []
    for at, frame in enumerate(frames_of(recorded)):
        place = known.get(frame)
        if place is None:
            continue
        if runs and (runs[-1][0], runs[-1][1] + runs[-1][2]) == place and runs[-1][3] + runs[-1][2] == at:
            runs[-1][2] += 1
        else:
            runs.append([*place, 1, at])
    return [run for run in runs if run[2] > 100]


class Terminal:
    """The command on a terminal of its own, started by a shell."""

    SHELL = 'cd "$1"; shift; trap : INT; stty -g >before; "$@"; code=$?; stty -g >after; exit $code'

    def __init__(self, words, environment, folder):
        self.ours, theirs = pty.openpty()
        self.seen = ""
        self.folder = folder
        # A terminal's own session, so that its keys and its signals reach the command.
        self.process = subprocess.Popen(
            ["sh", "-c", self.SHELL, "sh", folder, *(str(word) for word in words)], stdin=theirs, stdout=theirs, stderr=theirs, env=environment,
            preexec_fn=lambda: (os.setsid(), __import__("fcntl").ioctl(0, termios.TIOCSCTTY, 0), LIBC.prctl(1, 9)))
        os.close(theirs)
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        try:
            while data := os.read(self.ours, 4096):
                self.seen += data.decode(errors="replace")
        except OSError:
            pass

    def press(self, keys):
        os.write(self.ours, keys.encode())

    def line(self):
        return self.seen.rsplit("\r\033[K", 1)[-1]

    def wait(self, pattern, seconds=30):
        """Waits until the line matches; the match."""
        end = time.monotonic() + seconds
        while not (found := re.search(pattern, self.line())):
            if self.process.poll() is not None or time.monotonic() > end:
                raise AssertionError(f"no {pattern!r} in {self.seen[-600:]!r}")
            time.sleep(0.02)
        return found

    def until(self, second, song=""):
        """Waits until the line shows this time or a later one."""
        end = time.monotonic() + 30 + second
        while int(self.wait(r"(\d+):(\d+) /.*" + song)[1]) * 60 + int(self.wait(r"(\d+):(\d+) /.*" + song)[2]) < second:
            if time.monotonic() > end:
                raise AssertionError(f"{second} s are not reached: {self.line()!r}")
            time.sleep(0.02)

    def end(self, seconds=30):
        """Waits for the end. The exit status; the terminal must be as it was."""
        code = self.process.wait(seconds)
        if (self.folder / "before").read_text() != (self.folder / "after").read_text():
            raise AssertionError("the terminal is not as it was")
        if gap := re.search(r"the sound had \d+ gap", self.seen):
            raise Late(gap[0])
        return code


class SoundTest(unittest.TestCase):
    def setUp(self):
        signal.signal(signal.SIGALRM, lambda *_: self.fail(f"it took more than {LIMIT} s"))
        signal.alarm(LIMIT)
        self.addCleanup(signal.alarm, 0)
        self.work = Path(tempfile.mkdtemp(prefix="vocafade-sound-"))
        self.addCleanup(shutil.rmtree, self.work, ignore_errors=True)
        for folder in ("home", "run"):
            (self.work / folder).mkdir(mode=0o700)
        (self.work / "home/client.conf").write_text("autospawn = no\n", encoding="ascii")
        self.environment = {
            "PATH": os.environ["PATH"], "HOME": str(self.work / "home"), "XDG_RUNTIME_DIR": str(self.work / "run"),
            "XDG_CONFIG_HOME": str(self.work / "home/.config"), "TERM": "xterm", "LANG": "C.UTF-8",
            "PULSE_SERVER": f"unix:{self.work}/run/pulse/native", "PULSE_CLIENTCONFIG": str(self.work / "home/client.conf"),
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self.work}/none",
            **{name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")},
        }
        self.processes = []
        self.addCleanup(self.end_processes)

    def end_processes(self):
        for process in reversed(self.processes):
            if process.poll() is None:
                process.kill()
                process.wait()
        self.processes.clear()

    def start(self, words, name, **streams):
        with open(self.work / (name + ".log"), "wb") as log:
            process = subprocess.Popen([str(word) for word in words], env=self.environment, stdin=subprocess.DEVNULL,
                                       stderr=log, preexec_fn=lambda: LIBC.prctl(1, 9), **{"stdout": log, **streams})
        self.processes.append(process)
        return process

    def log(self, name):
        return (self.work / (name + ".log")).read_text(errors="replace")

    def run_command(self, *words, check=True):
        done = subprocess.run([str(word) for word in words], env=self.environment, capture_output=True, text=True,
                              timeout=60, check=False, stdin=subprocess.DEVNULL)
        if check:
            self.assertEqual(done.returncode, 0, f"{words}: {done.stdout}{done.stderr}")
        return done

    def wait_for(self, what, condition, seconds=30):
        end = time.monotonic() + seconds
        while not (value := condition()):
            self.assertLess(time.monotonic(), end, f"waited for {what} in vain")
            time.sleep(0.05)
        return value

    def terminal(self, *words):
        terminal = Terminal([COMMAND, *words], self.environment, self.work)
        self.processes.append(terminal.process)
        return terminal

    def rendered(self, song, *options):
        """The song as the command writes it to a file."""
        target = self.work / f"rendered-{song.name}"
        self.run_command(COMMAND, song, "-o", target, "-q", *options)
        return read_wav(target)


def main():
    unittest.main(verbosity=2)
