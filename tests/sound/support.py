# SPDX-License-Identifier: MIT
"""What the tests of the sound share: the command on a terminal, and where in a song a sound comes from."""

import os
import pty
import re
import shutil
import sys
import threading
from pathlib import Path

sys.path.append(str(Path(__file__).resolve().parents[1] / "support"))
from alone import COMMAND, Late


def needs(*programs):
    """Ends the whole test, as skipped, when a program is missing."""
    missing = [program for program in programs if shutil.which(program) is None]
    if missing:
        print("skipped: not installed here:", ", ".join(missing))
        sys.exit(77)


def runs_in(recorded, songs):
    """What was heard, as [song, first frame, frames, where], where it is the songs' own frames; all else is left out."""
    known = {tuple(frame): (number, i) for number, song in enumerate(songs) for i, frame in enumerate(song.tolist())}
    runs = []
    for at, frame in enumerate(recorded.tolist()):
        place = known.get(tuple(frame))
        if place is None:
            continue
        if runs and (runs[-1][0], runs[-1][1] + runs[-1][2]) == place and runs[-1][3] + runs[-1][2] == at:
            runs[-1][2] += 1
        else:
            runs.append([*place, 1, at])
    return [run for run in runs if run[2] > 100]


class Terminal:
    """The command on a terminal of its own, started by a shell."""

    SHELL = 'trap : INT; stty -g >before; "$@"; code=$?; stty -g >after; exit $code'

    def __init__(self, test, *words):
        self.test = test
        self.ours, theirs = pty.openpty()
        self.process = test.start("sh", "-c", self.SHELL, "sh", COMMAND, *words,
                                  streams={"stdin": theirs, "stdout": theirs})
        os.close(theirs)
        threading.Thread(target=self.read, daemon=True).start()

    def read(self):
        with open(self.process.log, "wb", buffering=0) as log:
            try:
                while data := os.read(self.ours, 4096):
                    log.write(data)
            except OSError:
                pass  # it has ended

    @property
    def seen(self):
        return self.process.log.read_bytes().decode(errors="replace")

    def press(self, keys):
        os.write(self.ours, keys.encode())

    def wait(self, pattern):
        """Waits until the line matches; the match."""
        return self.test.wait_for(repr(pattern), lambda: re.search(pattern, self.seen.rsplit("\r\033[K", 1)[-1]),
                                  process=self.process)

    def until(self, second, song=""):
        """Waits until the line shows this time or a later one."""
        def reached():
            minutes, seconds = self.wait(r"(\d+):(\d+) /.*" + song).groups()
            return int(minutes) * 60 + int(seconds) >= second

        self.test.wait_for(f"second {second}", reached)

    def end(self):
        """Waits for the end. The exit status; the terminal must be as it was."""
        code = self.process.wait(30)
        before, after = ((self.test.work / name).read_text() for name in ("before", "after"))
        self.test.assertEqual(before, after, "the terminal is not as it was")
        if gap := re.search(r"the sound had \d+ gap", self.seen):
            raise Late(gap[0])
        return code
