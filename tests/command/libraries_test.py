# SPDX-License-Identifier: MIT
"""The commands of docs/libraries.md: GNU parallel over two SSH servers on the loopback address, of which one is killed, and
two tasks of a Slurm array."""

import getpass
import os
import random
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import wave
from pathlib import Path

COMMAND = Path(os.environ["VOCAFADE_COMMAND"])
DOCUMENT = Path(__file__).resolve().parents[2] / "docs/libraries.md"
SONGS = 10
LIMIT = 300  # seconds


def script(name):
    return re.search(rf"<!-- {name} -->\n```sh\n(.*?)```", DOCUMENT.read_text(encoding="utf-8"), re.S)[1]


def write_song(path, seed):
    path.parent.mkdir(parents=True, exist_ok=True)
    with wave.open(str(path), "wb") as song:
        song.setparams((2, 2, 44100, 0, "NONE", ""))
        song.writeframes(random.Random(seed).randbytes(4 * 44100) * 20)


def descendants(number):
    found = []
    for status in Path("/proc").glob("[0-9]*/stat"):
        try:
            if int(status.read_text().rsplit(")", 1)[1].split()[1]) == number:
                found += [int(status.parent.name), *descendants(int(status.parent.name))]
        except (OSError, ProcessLookupError):
            pass
    return found


class Libraries(unittest.TestCase):
    def setUp(self):
        signal.alarm(LIMIT)
        self.work = Path(tempfile.mkdtemp(prefix="vocafade-libraries-"))
        self.addCleanup(shutil.rmtree, self.work, ignore_errors=True)
        self.home = self.work / "home"
        (self.home / ".parallel").mkdir(parents=True, mode=0o700)
        (self.home / ".parallel/will-cite").touch()
        # What users have installed is on the way to programs; each call is noted, so that none can go twice unseen.
        self.programs = self.work / "bin"
        self.programs.mkdir()
        self.calls = self.work / "calls"
        (self.programs / "vocafade").write_text(f'#!/bin/sh\n"{COMMAND}" "$@" && echo "$2" >>"{self.calls}"\n')
        (self.programs / "vocafade").chmod(0o755)
        self.path = f"{self.programs}:{os.environ['PATH']}"
        self.environment = {"PATH": self.path, "HOME": str(self.home), "LANG": "C.UTF-8", "SHELL": "/bin/sh"}
        self.music = self.work / "music"
        for number in range(SONGS):
            write_song(self.music / f"al'bum {number % 3}/song {number}.wav", number)
        subprocess.run([COMMAND, "-q", "-r", self.music, "-o", self.work / "expected"], check=True)
        self.names = sorted(str(path.relative_to(self.music)) for path in self.music.rglob("*.wav"))

    def expect_all(self):
        """Every song is there, and is what one machine would have made; nothing else is."""
        made = sorted(str(path.relative_to(self.music / "karaoke")) for path in (self.music / "karaoke").rglob("*.*"))
        self.assertEqual(made, self.names)
        for name in self.names:
            self.assertEqual((self.music / "karaoke" / name).read_bytes(), (self.work / "expected" / name).read_bytes(), name)

    def start_server(self, name):
        """A machine of this name: an SSH server, with a home of its own."""
        folder = self.work / name
        (folder / "home").mkdir(parents=True, mode=0o700)
        subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", folder / "host_key"], check=True)
        with socket.socket() as free:
            free.bind(("127.0.0.1", 0))
            port = free.getsockname()[1]
        (folder / "config").write_text(
            f"Port {port}\nListenAddress 127.0.0.1\nHostKey {folder}/host_key\nPidFile none\nUsePAM no\nStrictModes no\n"
            f"AuthorizedKeysFile {self.work}/key.pub\nPasswordAuthentication no\nPermitRootLogin yes\nMaxStartups 100\n"
            f"SetEnv HOME={folder}/home PATH={self.path} LANG=C.UTF-8\n"
            f'ForceCommand cd {folder}/home && eval "$SSH_ORIGINAL_COMMAND"\n')
        if os.getuid() == 0:
            Path("/run/sshd").mkdir(exist_ok=True)  # its own packages make it at boot
        with open(folder / "log", "wb") as log:
            server = subprocess.Popen([shutil.which("sshd", path="/usr/sbin:/usr/bin"), "-D", "-e", "-f",
                                       folder / "config"], stderr=log)
        self.addCleanup(self.kill, server)
        with open(self.home / "ssh_config", "a", encoding="ascii") as config:
            config.write(f"Host {name}\n HostName 127.0.0.1\n Port {port}\n User {getpass.getuser()}\n"
                         f" IdentityFile {self.work}/key\n IdentitiesOnly yes\n StrictHostKeyChecking no\n"
                         f" UserKnownHostsFile /dev/null\n LogLevel ERROR\n")
        return server

    def kill(self, server):
        """The machine goes down, with all that runs on it."""
        if server.poll() is None:
            for number in [server.pid, *descendants(server.pid)]:
                try:
                    os.kill(number, signal.SIGKILL)
                except ProcessLookupError:
                    pass
            server.wait()

    def done(self):
        log = self.home / "karaoke.joblog"
        lines = [line.split("\t") for line in log.read_text().splitlines()[1:]] if log.exists() else []
        return [line[0] for line in lines if line[6] == "0"]

    def times(self):
        """How often each song that is done has been rendered; what was stopped on its way is begun again."""
        calls = self.calls.read_text().splitlines()
        return {self.names[int(number) - 1]: calls.count(self.names[int(number) - 1]) for number in self.done()}

    def test_parallel_loses_nothing_and_does_nothing_twice_when_a_machine_goes_down(self):
        subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self.work / "key"], check=True)
        # It finds the user's settings by the user's number, not by HOME.
        (self.programs / "ssh").write_text(f'#!/bin/sh\nexec /usr/bin/ssh -F "{self.home}/ssh_config" "$@"\n')
        (self.programs / "ssh").chmod(0o755)
        servers = {name: self.start_server(name) for name in ("anna", "bob")}
        (self.home / "machines").write_text("1/anna\n1/bob\n")
        for server in servers:
            for _ in range(50):
                if subprocess.run([self.programs / "ssh", server, "true"], check=False, env=self.environment,
                                  stderr=subprocess.DEVNULL).returncode == 0:
                    break
                time.sleep(0.1)
            else:
                self.fail((self.work / server / "log").read_text())

        def start():
            with open(self.work / "parallel.log", "ab") as log:
                return subprocess.Popen(["sh", "-c", script("parallel")], cwd=self.music, env=self.environment,
                                        stderr=log, stdin=subprocess.DEVNULL, start_new_session=True)

        def wait_for_songs(run, count):
            end = time.monotonic() + 120
            while len(self.done()) < count:
                self.assertIsNone(run.poll(), (self.work / "parallel.log").read_text())
                self.assertLess(time.monotonic(), end)
                time.sleep(0.02)

        # The whole run is stopped, and goes on with the same command; then a machine goes down in the middle of a song.
        run = start()
        wait_for_songs(run, 2)
        os.killpg(run.pid, signal.SIGKILL)
        run.wait()
        times = self.times()
        run = start()
        wait_for_songs(run, len(times) + 2)
        end = time.monotonic() + 60
        while not any((self.work / "bob/home").rglob("*.wav")) and time.monotonic() < end:
            time.sleep(0.01)
        times = {**self.times(), **times}
        self.kill(servers["bob"])
        self.assertEqual(run.wait(200), 0, (self.work / "parallel.log").read_text())
        done = self.done()
        self.assertEqual(sorted(done, key=int), [str(number + 1) for number in range(SONGS)], "not each song once")
        self.expect_all()
        self.assertEqual({name: now for name, now in self.times().items() if name in times}, times, "done again")
        self.assertFalse(list((self.work / "anna/home").rglob("*.wav")), "songs were left on a machine")
        # Once more: there is nothing left to do.
        times = self.times()
        self.assertEqual(start().wait(60), 0)
        self.assertEqual(self.times(), times)

    def test_the_tasks_of_a_slurm_array_share_the_songs(self):
        (self.music / "songs.txt").write_text("".join(name + "\n" for name in self.names))
        for _ in range(2):  # the second time, every task was queued again
            for task in range(2):
                subprocess.run(["sh", "-c", script("slurm")], cwd=self.music, check=True,
                               env={**self.environment, "SLURM_ARRAY_TASK_COUNT": "2", "SLURM_ARRAY_TASK_ID": str(task)})
        log = (self.music / "karaoke.log").read_text()
        self.assertEqual((log.count('"done"'), log.count('"skipped"')), (SONGS, SONGS))
        self.expect_all()


if __name__ == "__main__":
    missing = [program for program in ("parallel", "rsync", "ssh", "ssh-keygen") if shutil.which(program) is None]
    if not shutil.which("sshd", path="/usr/sbin:/usr/bin"):
        missing.append("sshd")
    if missing:
        print("skipped: not installed here:", ", ".join(missing))
        sys.exit(77)
    unittest.main(verbosity=2)
