# SPDX-License-Identifier: MIT
"""A test that is alone: a home and folders of its own, processes that end with it, waits with a limit."""

import atexit
import ctypes
import fcntl
import json
import os
import signal
import subprocess
import sys
import tempfile
import termios
import threading
import time
import unittest
from pathlib import Path

try:
    import numpy as np
    import soundfile
except ImportError as missing:
    print("skipped: not installed here:", missing.name)
    sys.exit(77)

BUILD = Path(os.environ.get("VOCAFADE_BUILD", Path(__file__).parents[2] / "build/release")).resolve()
COMMAND, BUNDLE, LV2 = BUILD / "vocafade", BUILD / "Vocafade.vst", BUILD / "vocafade.lv2"
RATE = 44100
LATENCY = 1707  # samples
LIMIT = 240  # seconds that a test may take
TRIES = 5  # where a machine has no time, or a host does not come up
LIBC = ctypes.CDLL(None)
LIBC.prctl(36, 1)  # PR_SET_CHILD_SUBREAPER: orphans of what it starts become this process's own


def noise(seconds, seed=7, rate=RATE):
    """Stereo with a part in the middle and one at each side, a row for each frame. All frames are different, so that each
    tells where it comes from."""
    middle, left, right = np.random.default_rng(seed).uniform(-0.2, 0.2, (3, int(seconds * rate))).astype("f")
    return np.stack([middle + left, middle + right], axis=1)


def song(seconds=4):
    """Half a second of silence, in which a comparison finds the engine's frames, and noise."""
    return np.pad(noise(seconds - 0.5), ((RATE // 2, 0), (0, 0)))


def write_wav(path, frames, rate=RATE):
    """A file of 32-bit floats; its path."""
    soundfile.write(path, frames, rate, subtype="FLOAT")
    return path


def read_wav(path):
    return soundfile.read(path, dtype="float32")[0]


def first_sound(frames):
    """The number of the first frame that is not silent."""
    sounding = frames.any(axis=1)
    assert sounding.any(), "there is nothing but silence"
    return int(sounding.argmax())


def to_normalised(parameter, value):
    """dB, Hz or a position as the VST plug-in takes it, from 0 to 1. Frequencies and positions are cut to whole numbers: in
    the middle of a step nothing hangs on a rounding."""
    if parameter <= 2:
        return (2 ** (value / 6) - 0.001) / (1.999 if parameter == 1 else 0.999)
    low, high = (0, 127) if parameter == 5 else (20, 20000)
    return (value + 0.5 - low) / (high - low)


def lanes(begin, change=()):
    """Normalised values by parameter, and (sample, value) by parameter where they change, as `compare` takes them."""
    return [f"0:{parameter}:{value:.9g}" for parameter, value in begin.items()] + [
        f"{sample}:{parameter}:{value:.9g}" for parameter, (sample, value) in dict(change).items()]


def lv2_lanes(begin, change=()):
    """The same of dB, Hz and positions."""
    return lanes({n: to_normalised(n, value) for n, value in begin.items()},
                 {n: (sample, to_normalised(n, value)) for n, (sample, value) in dict(change).items()})


class Stuck(AssertionError):
    """Another program does not do what it should, in time."""


class Late(Exception):
    """The machine was too busy for real time; nothing can be said."""


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


processes = []  # each the first of a group: what must not outlast the test, however that ends


def child_setup():
    LIBC.prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG: even a test that is killed leaves no child
    if os.isatty(0):
        fcntl.ioctl(0, termios.TIOCSCTTY, 0)  # so that its keys and signals reach the program


def end(process):
    """Ends a process and all that it started; nothing of them is left when this returns."""
    if process in processes:
        processes.remove(process)
    patience = threading.Timer(3, os.killpg, (process.pid, signal.SIGKILL))
    try:
        os.killpg(process.pid, signal.SIGTERM)
        patience.start()
        while True:
            os.waitpid(-process.pid, 0)
    except (ProcessLookupError, ChildProcessError):
        patience.cancel()
    process.wait()


def end_all():
    while processes:
        end(processes[-1])


class AloneTest(unittest.TestCase):
    """A test with a home of its own: nothing of the user's is read or written, no sound hardware and no service of the
    desktop is seen."""

    def setUp(self):
        signal.alarm(LIMIT)
        self.addCleanup(signal.alarm, 0)
        folder = tempfile.TemporaryDirectory(prefix="vocafade-test-", ignore_cleanup_errors=True)
        self.addCleanup(folder.cleanup)
        self.addCleanup(end_all)
        atexit.register(end_all)  # before the folder goes
        self.work = self.logs = Path(folder.name)
        self.home, runtime, temporary = (self.work / name for name in ("home", "run", "tmp"))
        for private in (self.home / ".config", self.home / ".cache", runtime, temporary):
            private.mkdir(mode=0o700, parents=True)
        (self.home / ".asoundrc").write_text("pcm.!default null\n", encoding="utf-8")
        kept = ("PATH", "LANG", "LC_ALL")
        self.environment = {
            "LANG": "C.UTF-8", **{name: os.environ[name] for name in kept if name in os.environ}, "TERM": "xterm",
            "HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_CACHE_HOME": str(self.home / ".cache"), "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_RUNTIME_DIR": str(runtime), "TMPDIR": str(temporary), "PULSE_SERVER": f"unix:{runtime}/pulse/native",
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/none", "GSETTINGS_BACKEND": "memory",
            "GIO_USE_VFS": "local", "GTK_USE_PORTAL": "0", "NO_AT_BRIDGE": "1", "JACK_NO_START_SERVER": "1",
        }
        self.plugin = BUNDLE / "Vocafade.so"

    def offer_lv2(self):
        """The LV2 plug-in alone, and what the system has that describes LV2: without that Ardour knows no category of a
        plug-in."""
        folder = self.home / "lv2"
        folder.mkdir()
        for bundle in (LV2, *Path("/usr/lib/lv2").iterdir()):
            if bundle == LV2 or not list(bundle.glob("*.so")):
                (folder / bundle.name).symlink_to(bundle)
        self.environment["LV2_PATH"] = str(folder)

    def popen(self, words, settings=(), **streams):
        process = subprocess.Popen([str(word) for word in words], env={**self.environment, **dict(settings)}, cwd=self.work,
                                   stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=child_setup, **streams)
        processes.append(process)
        return process

    def run_program(self, *words, timeout=60, code=0, given=None, **settings):
        """Runs a program to its end in this test's home; its output, both streams. It must end with this code, if any."""
        with self.popen(words, settings, text=True, errors="replace", stdout=subprocess.PIPE,
                        stdin=subprocess.PIPE) as process:
            try:
                output = process.communicate(given, timeout)[0]
            except subprocess.TimeoutExpired:
                raise Stuck(f"{words[0]} did not end within {timeout} s") from None
            finally:
                end(process)
        if code not in (None, process.returncode):
            raise Stuck(f"{words} ended with {process.returncode}:\n{output[-4000:]}")
        return output

    def start(self, *words, streams=(), **settings):
        """Starts a program that stays; it is ended with the test. Its output goes to a file that is named after it."""
        log = self.logs / f"{Path(words[0]).name}.log"
        with open(log, "w", encoding="utf-8") as output:
            process = self.popen(words, settings, **{"stdout": output, "stdin": subprocess.DEVNULL, **dict(streams)})
        process.log = log
        return process

    def start_up(self, what, start, times=TRIES):
        """What `start` gives. A host that died or hung in its own start is started again, a few times at most; what was
        left of it is ended before. This is said in the test's output."""
        before = len(processes)
        for attempt in range(1, times + 1):
            try:
                return start()
            except Stuck as reason:
                print(f"    start {attempt} of {times} of {what}: {reason}", file=sys.stderr)
                while len(processes) > before:
                    end(processes[-1])
        raise Stuck(f"{what} did not come up in {times} starts")

    def wait_for(self, what, condition, timeout=60.0, process=None):
        """What `condition` gives as soon as it is true. A program that is named must live until then."""
        limit = time.monotonic() + timeout
        while not (value := condition()):
            if process and process.poll() is not None:
                said = process.log.read_text(encoding="utf-8", errors="replace")[-1000:]
                raise Stuck(f"it ended with {process.returncode} before {what} was there:\n{said}")
            if time.monotonic() > limit:
                raise Stuck(f"waited {timeout} s for {what} in vain")
            time.sleep(0.05)
        return value

    def compare(self, song_path, host_path, *changes):
        """How far a rendering is from our own: a dictionary of compare_rendering.py's numbers."""
        return json.loads(self.run_program("/usr/bin/python3", Path(__file__).with_name("compare_rendering.py"),
                                           self.plugin, song_path, host_path, *changes))

    def assert_same_sound(self, song_path, host_path, *changes, tolerance=0.0):
        """The host's rendering is our own over the song's whole length."""
        verdict = self.compare(song_path, host_path, *changes)
        print(f"    {host_path.name}: {verdict}", file=sys.stderr)
        self.assertGreater(verdict["peak"], 0.05, "the host rendered next to nothing")
        self.assertLessEqual(verdict["difference"], tolerance, f"{verdict}")
        self.assertEqual(verdict["frames"], len(read_wav(song_path)))


def on_alarm(*_):
    raise TimeoutError(f"the test took more than {LIMIT} s, or another one held it up")


def main():
    signal.signal(signal.SIGALRM, on_alarm)
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(number, signal.default_int_handler)  # what was begun is ended on the way out
    unittest.main(verbosity=2)
