# SPDX-License-Identifier: MIT
"""What the tests of the hosts share: a home of their own, sound files, a song, windows."""

import array
import atexit
import base64
import ctypes
import fcntl
import math
import os
import random
import re
import select
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import time
import unittest
import zlib
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
import pipewire  # of the folder that both share


def built(variable, name):
    return Path(os.environ.get(f"VOCAFADE_{variable}", f"build/release/{name}")).resolve()


BUNDLE = built("BUNDLE", "Vocafade.vst")
LV2 = built("LV2", "vocafade.lv2")
LV2_URI = "urn:velmorax:vocafade"
COMMAND = built("COMMAND", "vocafade")
COMPARE = built("COMPARE", "tests/vocafade-compare-rendering")
NO_SEQUENCER = built("NO_SEQUENCER", "tests/vocafade-no-sequencer.so")
NO_CLOCK = built("NO_CLOCK", "tests/vocafade-no-clock.so")
ARTEFACTS = built("ARTEFACTS", "hosts")  # screenshots and logs
LATENCY = 1707  # samples
RATE = 44100
PERIOD = 1024  # samples of JACK's block
SERVER = f"vocafade-hosts-{os.getuid()}"  # JACK's, apart from the user's own
RECORD = struct.Struct("=6f24si")  # a program as chunks hold it
NAMES = ("ON/OFF", "Output", "Input", "LoFreq", "HiFreq", "Position")
# A bank in which every program differs.
CURRENT = 37
PROGRAMS = [(n % 2, 0.2 + n / 100, 1 - n / 64, n / 640, 0.5 + n / 200, n / 63, f"Program {n}".encode(), 0)
            for n in range(64)]
PROGRAMS[0] = (*PROGRAMS[0][:7], CURRENT)

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


def read_wav(path, channels=2):
    """(left, right, rate) of a stereo file of 32-bit floats; (samples, rate) of one with a single channel."""
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
    tag, count, rate, _, _, bits = form
    assert count == channels and bits == 32 and tag in (3, 0xFFFE), f"{path}: {form}"
    frames = array.array("f")
    frames.frombytes(data[:len(data) // (4 * channels) * 4 * channels])
    return *(frames[channel::channels] for channel in range(channels)), rate


def write_bank(path, values, name="Hosts"):
    """The user's bank, as the plug-in finds it when it is opened: 64 programs of the same normalised values."""
    chunk = RECORD.pack(*values, name.encode(), 0) * 64
    header = struct.pack(">4si4siiii128si", b"CcnK", 152 + len(chunk), b"FBCh", 1, 0x56666451, 1, 64, bytes(128),
                         len(chunk))
    Path(path).write_bytes(header + chunk)


def pack(programs):
    """A bank's programs as hosts keep them."""
    return b"".join(RECORD.pack(*program) for program in programs)


def unpack(chunk):
    assert len(chunk) == 64 * RECORD.size, len(chunk)
    return list(RECORD.iter_unpack(chunk))


def pack_as_qt(programs):
    """As Qt compresses it and MusE and qtractor write it."""
    raw = pack(programs)
    return base64.b64encode(struct.pack(">I", len(raw)) + zlib.compress(raw)).decode()


def unpack_as_qt(text):
    return unpack(zlib.decompress(base64.b64decode(text)[4:]))


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
        for channel in channels:
            channel[i] += chance.uniform(-0.02, 0.02)
    return channels


def peak_difference(a, b):
    """The greatest absolute difference of two runs of samples, over their common length."""
    return max((abs(x - y) for x, y in zip(a, b)), default=0.0)


def peak(samples):
    return max(map(abs, samples), default=0.0)


LIBC = ctypes.CDLL(None)
STARTS = 3  # how often a host is started that does not come up
LIMIT = 240  # seconds that a test may take
WAITING = 600  # seconds that it waits for one of another checkout

# What must not outlast the test, however it ends.
groups = {}  # number -> process, each the first one of a group
folders = set()


def lives(group):
    """Whether a process of this group is there, other than a dead one that nobody has asked for."""
    for file in Path("/proc").glob("[0-9]*/stat"):
        try:
            state, _, number = file.read_text(encoding="utf-8", errors="replace").rpartition(")")[2].split()[:3]
        except (OSError, ValueError):
            continue
        if int(number) == group and state != "Z":
            return True
    return False


def name_of(folder):
    """The name of a process, given its folder in /proc."""
    try:
        return (folder / "comm").read_text(encoding="utf-8", errors="replace").strip()
    except OSError:
        return ""


def end_group(process):
    """Ends a process and all that it started; nothing of them is left when this returns."""
    groups.pop(process.pid, None)
    for sign, patience in ((signal.SIGTERM, 3), (signal.SIGKILL, 10)):
        end = time.monotonic() + patience
        while time.monotonic() < end:
            try:
                os.killpg(process.pid, sign)
            except ProcessLookupError:
                pass
            if not lives(process.pid):
                process.wait(patience)
                return
            process.poll()
            time.sleep(0.02)


def end_all(folders_too=True):
    for process in reversed(list(groups.values())):
        end_group(process)
    if not folders_too:
        return
    for folder in folders:
        shutil.rmtree(folder, ignore_errors=True)


def on_signal(number, _):
    print(f"    ended by signal {number}", file=sys.stderr)
    end_all()
    os._exit(128 + number)


def on_alarm(*_):
    raise TimeoutError(f"the test took more than {LIMIT} s, or another of a host held it up for {WAITING} s")


def child_setup():
    LIBC.prctl(1, signal.SIGKILL)  # PR_SET_PDEATHSIG: even a test that is killed leaves no child


def forget_semaphores(folder):
    """Removes the System V semaphores and shared memory that a program keyed by a folder (ftok) and left behind."""
    status = os.stat(folder)
    for project in range(3):
        key = project << 24 | (status.st_dev & 0xff) << 16 | (status.st_ino & 0xffff)
        for option in ("-S", "-M"):
            subprocess.run(["ipcrm", option, hex(key)], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                           check=False)


class HostStuck(AssertionError):
    """A program of other people's does not do what it should, in time."""


class HostTest(unittest.TestCase):
    """A test with a home folder, a plug-in folder and a song of its own; nothing of the user's is read or written."""

    def setUp(self):
        # One test of a host at a time on a machine: script pipes and JACK's memory have one name each.
        signal.signal(signal.SIGALRM, on_alarm)
        signal.alarm(WAITING)
        lock = open(f"/tmp/vocafade-hosts-{os.getuid()}.lock", "w", encoding="ascii")
        self.addCleanup(lock.close)
        fcntl.flock(lock, fcntl.LOCK_EX)
        signal.alarm(LIMIT)
        self.work = Path(tempfile.mkdtemp(prefix="vocafade-host-"))
        folders.add(self.work)
        self.addCleanup(self.clean_up)
        # Audacity looks into a folder "lv2" where it is started, as this project's root has one, and dies of its files.
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(self.work)
        ARTEFACTS.mkdir(parents=True, exist_ok=True)
        self.home = self.work / "home"
        runtime = self.work / "run"
        temporary = self.work / "tmp"
        for folder in (self.home, runtime, temporary, self.home / ".config", self.home / ".cache"):
            folder.mkdir(mode=0o700, parents=True)
        # No sound hardware, even where there is some.
        (self.home / ".asoundrc").write_text("pcm.!default null\n", encoding="utf-8")
        keep = {name: os.environ[name] for name in ("PATH", "LANG", "LC_ALL") if name in os.environ}
        self.environment = {
            **keep, "HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home / ".config"),
            "XDG_CACHE_HOME": str(self.home / ".cache"), "XDG_DATA_HOME": str(self.home / ".local/share"),
            "XDG_RUNTIME_DIR": str(runtime), "TMPDIR": str(temporary), "LANG": keep.get("LANG", "C.UTF-8"),
            # No service of the desktop is looked for: no session bus, no accessibility, no other sound server.
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/none", "GSETTINGS_BACKEND": "memory",
            "GIO_USE_VFS": "local", "GTK_USE_PORTAL": "0", "NO_AT_BRIDGE": "1", "JACK_NO_START_SERVER": "1",
        }
        # Where users without rights put plug-ins.
        self.plugin = self.home / ".vst" / "Vocafade.vst" / "Vocafade.so"
        shutil.copytree(BUNDLE, self.plugin.parent)
        # Not of this very second, in which a host may take a plug-in for newer than what it noted about it.
        os.utime(self.plugin, (time.time() - 3600,) * 2)

    def clean_up(self):
        signal.alarm(0)
        end_all(folders_too=False)
        shutil.rmtree(self.work, ignore_errors=True)
        folders.discard(self.work)

    def offer_lv2(self):
        """The LV2 plug-in, and what the system has of LV2: without that Ardour knows no category of a plug-in."""
        plugins = self.home / "lv2"
        plugins.mkdir()
        (plugins / "vocafade.lv2").symlink_to(LV2)
        self.environment["LV2_PATH"] = f"{plugins}:/usr/lib/lv2"

    def popen(self, command, settings, **streams):
        return subprocess.Popen([str(part) for part in command], env={**self.environment, **settings},
                                stderr=subprocess.STDOUT, start_new_session=True, preexec_fn=child_setup, **streams)

    def run_program(self, command, timeout=60, check=True, given=None, **settings):
        """Runs a program to its end in this test's home; its output, both streams."""
        with self.popen(command, settings, text=True, errors="replace", stdout=subprocess.PIPE,
                        stdin=subprocess.DEVNULL if given is None else subprocess.PIPE) as process:
            groups[process.pid] = process
            try:
                output = process.communicate(given, timeout)[0]
            except subprocess.TimeoutExpired:
                end_group(process)
                raise HostStuck(f"{command[0]} did not end within {timeout} s") from None
            finally:
                groups.pop(process.pid, None)
        if check and process.returncode != 0:
            self.fail(f"{command[0]} ended with {process.returncode}:\n{output[-4000:]}")
        return output

    def start(self, command, log, streams=(), **settings):
        """Starts a program that stays; it is ended with the test. Its output goes to a file among the artefacts."""
        with open(ARTEFACTS / log, "w", encoding="utf-8") as output:
            process = self.popen(command, settings, stdout=output, stdin=subprocess.DEVNULL, **dict(streams))
        process.log = ARTEFACTS / log
        groups[process.pid] = process
        return process

    def start_up(self, what, start, times=STARTS):
        """What `start` gives. A host that died or hung in its own start is started again, a few times at most; what was
        left of it is ended before. This is said in the test's output."""
        for attempt in range(1, times + 1):
            before = set(groups)
            try:
                return start()
            except HostStuck as reason:
                print(f"    start {attempt} of {times} of {what}: {reason}", file=sys.stderr)
                for number in set(groups) - before:
                    end_group(groups[number])
        return self.fail(f"{what} did not come up in {times} starts")

    def start_display(self):
        """A virtual X server of this test's own; its programs see no other."""
        def start():
            read, write = os.pipe()
            self.start(["Xvfb", "-displayfd", write, "-screen", 0, "1280x900x24", "-nolisten", "tcp", "-noreset"],
                       "xvfb.log", streams={"pass_fds": [write]})
            os.close(write)
            with os.fdopen(read, encoding="ascii") as numbers:
                ready, _, _ = select.select([numbers], [], [], 30)
                number = numbers.readline().strip() if ready else ""
            if not number:
                raise HostStuck("no display: " + (ARTEFACTS / "xvfb.log").read_text(errors="replace")[-500:])
            self.environment["DISPLAY"] = ":" + number

        self.start_up("the X server", start)

    def xdotool(self, *words, check=True):
        return self.run_program(["xdotool", *words], timeout=20, check=check).split()

    def windows(self, title):
        """The visible windows whose title matches. The search ends with an error when one of all windows goes away
        meanwhile: then there are none."""
        words = self.xdotool("search", "--onlyvisible", "--name", title, check=False)
        return words if all(word.isdigit() for word in words) else []

    def window_tree(self):
        """xwininfo's list of all windows. It gives up when one of them goes away meanwhile; then it is asked again."""
        for _ in range(20):
            text = self.run_program(["xwininfo", "-root", "-tree"], check=False)
            if "xwininfo: error" not in text and "X Error" not in text:
                return text
            time.sleep(0.1)
        return self.fail(text)

    def panel_window(self, at_least=1):
        """The number of the innermost window that has the panel's size, if there are so many of them."""
        width, height = panel_size()
        found = re.findall(rf"^\s+(0x[0-9a-f]+) .*? {width}x{height}\+", self.window_tree(), re.M)
        return found[-1] if len(found) >= at_least else None

    def start_jack(self):
        """A sound server without hardware, which waits for its clients, however busy the machine is."""
        self.environment["JACK_DEFAULT_SERVER"] = SERVER
        self.remove_jack_files()
        self.addCleanup(self.remove_jack_files)
        self.addCleanup(end_all, folders_too=False)
        process = self.start(["jackd", "-n", SERVER, "-p", 128, "-r", "-S", "-t", 20000, "-d", "dummy", "-r", RATE,
                              "-p", PERIOD], "jack.log")
        self.wait_for("JACK", lambda: "playback_1" in self.jack_ports(), process=process)

    def jack_ports(self):
        return self.run_program(["jack_lsp"], check=False)

    def remove_jack_files(self):
        """Of our server; and of all others while none runs."""
        running = any(name_of(process) in ("jackd", "jackdbus") for process in Path("/proc").glob("[0-9]*"))
        for left in Path("/dev/shm").glob("*"):
            ours = SERVER in left.name
            stale = not running and re.match(f"jack-({os.getuid()}-|shm-registry)", left.name)
            if (ours or stale) and left.lstat().st_uid == os.getuid():
                left.unlink(missing_ok=True)

    def slide(self, place, start, end):
        """Presses at `start`, moves in steps to `end` and lets go; `place` gives xdotool's words for where that is."""
        self.xdotool("mousemove", *place(start), "mousedown", 1)
        for i in range(1, 11):
            self.xdotool("mousemove", *place(start + (end - start) * i // 10))
            time.sleep(0.05)
        self.xdotool("mouseup", 1)

    def drag(self, window, fader, start, end):
        """Drags a fader, from `start` to `end` pixels below its upper end."""
        x, top, _ = fader
        self.slide(lambda y: ("--window", window, x, top + y), start, end)

    def drag_output(self, editor, name, start=40, end=80, before=None):
        """Drags the Output fader and waits until it is drawn elsewhere; keeps screenshots of both."""
        before = before or self.wait_for_picture(editor, OUTPUT_FADER)
        self.screenshot(f"{name}-before.png")
        self.drag(editor, OUTPUT_FADER, start, end)
        self.wait_for_picture(editor, OUTPUT_FADER, other_than=before)
        self.screenshot(f"{name}.png")

    def turn_output(self, editor):
        """Turns the wheel up a little over the Output fader, and waits until it is drawn elsewhere."""
        before = self.picture(editor, OUTPUT_FADER)
        x, top, _ = OUTPUT_FADER
        self.xdotool("mousemove", "--window", editor, x, top + 60, "click", "--repeat", 2, "--delay", 60, 4)
        self.wait_for_picture(editor, OUTPUT_FADER, other_than=before)

    def open_until(self, opened, gesture, times=4, patience=12):
        """Does what opens the plug-in's window until it is there. What comes before the host's own windows stand is
        lost. The value of `opened`."""
        for attempt in range(times):
            gesture(attempt)
            try:
                return self.wait_for("the plug-in's window", opened, timeout=patience)
            except HostStuck as reason:
                print(f"    {reason}; again", file=sys.stderr)
        return self.fail("the host does not open the plug-in's window")

    def assert_programs(self, programs, values, expected, current):
        """All 64 programs are the expected ones. Of the current one hosts that write values as text set the values
        again, with six digits; `values` are what they wrote."""
        for number in range(6):
            self.assertAlmostEqual(values[number], expected[current][number], delta=1e-6)
            self.assertAlmostEqual(programs[current][number], expected[current][number], delta=1e-6)
        programs[current] = (*expected[current][:6], *programs[current][6:])
        for number, program in enumerate(expected):
            self.assertEqual(RECORD.pack(*programs[number]), RECORD.pack(*program), f"program {number}")

    def screenshot(self, name):
        """Kept among the artefacts."""
        self.run_program(["import", "-window", "root", ARTEFACTS / name], timeout=30)

    def wait_for(self, what, condition, timeout=60.0, process=None):
        """What `condition` gives as soon as it is true. A program that is named must live until then."""
        end = time.monotonic() + timeout
        while True:
            value = condition()
            if value:
                return value
            if process and process.poll() is not None:
                text = process.log.read_text(encoding="utf-8", errors="replace")
                raise HostStuck(f"it ended with {process.returncode} before {what} was there:\n{text[-1000:]}")
            if time.monotonic() > end:
                break
            time.sleep(0.1)
        if "DISPLAY" in self.environment:
            self.screenshot("waiting.png")
        raise HostStuck(f"waited {timeout} s for {what} in vain")

    def frame_of(self, window):
        """Where a window stands on the screen, if it is seen: (left, top, width, height)."""
        text = self.run_program(["xwininfo", "-id", window], check=False)
        found = [re.search(rf"{name}:\s+(-?\d+)", text) for name in
                 ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")]
        return tuple(int(one[1]) for one in found) if all(found) and "IsViewable" in text else None

    def picture(self, window, fader):
        """The fader's part of the panel, as bytes; None while the window does not stand still."""
        x, top, bottom = fader
        before = self.frame_of(window)
        path = self.work / "part.ppm"
        self.run_program(["import", "-window", window, "-crop", f"20x{bottom - top + 20}+{x - 10}+{top - 10}", path],
                         check=False)
        if not before or before != self.frame_of(window) or not path.exists():
            return None
        return path.read_bytes()

    def wait_for_picture(self, window, fader, other_than=None):
        """Waits until the fader is drawn and stays as it is, and differs from another picture of it."""
        last = [None]

        def steady():
            now = self.picture(window, fader)
            same = now is not None and now == last[0] and now != other_than and len(set(now[-3000:])) > 4
            last[0] = now
            time.sleep(0.3)
            return same and now

        return self.wait_for("the panel to be drawn", steady)

    def compare(self, song_path, host_path, *changes, block=1024):
        """How far the host's rendering is from our own: a dictionary of compare_rendering.cpp's numbers."""
        words = self.run_program([COMPARE, self.plugin, song_path, host_path, block, *changes]).split()
        return {name: float(value) for name, value in zip(words[0::2], words[1::2])}

    def assert_same_sound(self, song_path, host_path, *changes, block=1024, tolerance=0.0):
        """The host's rendering is our own over the song's whole length."""
        verdict = self.compare(song_path, host_path, *changes, block=block)
        print(f"    {Path(host_path).name}: {verdict}", file=sys.stderr)
        if verdict["difference"] > tolerance:
            shutil.copy(host_path, ARTEFACTS / f"differs-{Path(host_path).name}")  # for a look
        self.assertGreater(verdict["peak"], 0.05, "the host rendered next to nothing")
        self.assertLessEqual(verdict["difference"], tolerance, f"{verdict}")
        self.assertEqual(verdict["frames"], len(read_wav(song_path)[0]))


def main():
    for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
        signal.signal(number, on_signal)
    atexit.register(end_all)
    unittest.main(verbosity=2, argv=[sys.argv[0], *sys.argv[1:]])
