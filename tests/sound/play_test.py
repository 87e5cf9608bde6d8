# SPDX-License-Identifier: MIT
"""`vocafade play` on PulseAudio's server, whose sound goes into a pipe. The test takes it out at the pace of loudspeakers,
never faster: when the machine stands still for a moment, so do they."""

import os
import signal
import threading
import time

import numpy as np
from support import Terminal, needs, runs_in
from alone import COMMAND, RATE, AloneTest, Late, first_sound, main, noise, patiently, read_wav, write_wav

BLEND = RATE // 100  # frames of a blend
LEFT, RIGHT, FAR_RIGHT = "\033[D", "\033[C", "\033[1;2C"


class Play(AloneTest):
    def setUp(self):
        super().setUp()
        self.start_server()

    def start_server(self):
        self.server = self.start(
            "pulseaudio", "-n", "--daemonize=no", "--exit-idle-time=-1", "--use-pid-file=no", "--disable-shm",
            "-L", "module-native-protocol-unix",
            "-L", f"module-pipe-sink sink_name=pipe file={self.work}/pipe rate={RATE} format=float32le channels=2")
        self.wait_for("the server", lambda: "Server Name" in self.run_program("pactl", "info", code=None))
        self.sound = bytearray()
        threading.Thread(target=self.listen, args=[self.sound], daemon=True).start()
        self.start("pacat", "--raw", "--format=float32le", f"--rate={RATE}", "/dev/zero")  # without any stream the server rests

    def listen(self, sound):
        with open(self.work / "pipe", "rb", buffering=0) as pipe:
            while data := pipe.read(8 * BLEND):
                sound += data
                time.sleep(len(data) / (8 * RATE))

    def hear(self, seconds):
        """Waits while so much more is heard."""
        goal = len(self.sound) + seconds * 8 * RATE
        self.wait_for(f"{seconds} seconds of sound", lambda: len(self.sound) >= goal)

    def heard(self):
        """All that has been heard, a row for each frame."""
        self.wait_for("the end of the sound", lambda: not any(self.sound[-8 * RATE:]))
        return np.frombuffer(bytes(self.sound[:len(self.sound) // 8 * 8]), "f").reshape(-1, 2)

    def song(self, name, seconds, seed, rate=RATE):
        frames = noise(seconds, seed, rate)
        write_wav(self.work / name, frames, rate)
        return frames

    def rendered(self, song, *options):
        """The song as the command writes it to a file."""
        target = self.work / f"rendered-{song.name}"
        self.run_program(COMMAND, song, "-o", target, "-q", *options)
        return read_wav(target)

    def play(self, *words):
        return Terminal(self, "play", "--buffer", 400, *words)

    @patiently
    def test_songs_come_out_as_they_are_rendered_one_after_the_other(self):
        one, two = self.song("one.wav", 2, 1), self.song("two.wav", 1.5, 2)
        other = self.song("other rate.wav", 1, 3, 48000)
        (self.work / "bad.wav").write_text("no sound")
        expected = self.rendered(write_wav(self.work / "both.wav", np.concatenate([one, two])), "--lofreq", 300)
        terminal = self.play("--lofreq", 300, *(self.work / name for name in
                                                ("bad.wav", "one.wav", "two.wav", "other rate.wav")))
        self.assertEqual(terminal.end(), 1)
        self.assertIn("bad.wav: is not a sound file", terminal.seen)
        self.assertIn("0:01 [", terminal.seen)
        heard = self.heard()
        heard, expected = heard[first_sound(heard):], expected[first_sound(expected):]
        np.testing.assert_array_equal(heard[:len(expected)], expected, "not the bits of the rendering")
        # The song of another rate follows, converted by the server.
        sounding = np.count_nonzero(np.abs(heard[len(expected):]) > 0.01)
        self.assertGreater(sounding, other.size // 3)

    @patiently
    def test_the_voice_goes_and_comes_back_in_step(self):
        song = self.song("song.wav", 5, 1)
        wet = self.rendered(self.work / "song.wav")
        terminal = self.play("--dry", self.work / "song.wav")
        for second, state in ((1, "out"), (3, "in")):
            terminal.until(second)
            terminal.press("v")
            terminal.wait("voice " + state)
        self.assertEqual(terminal.end(), 0)
        heard = self.heard()
        dry = runs_in(heard, [song])
        self.assertEqual(len(dry), 2, dry)
        begin = dry[0][3] - dry[0][1]  # of the song in what was heard
        self.assertEqual(dry[1][3] - dry[1][1], begin, "it jumped")
        from_wet = dry[0][1] + dry[0][2] + 2 * BLEND + 1
        to_wet = dry[1][1] - 2 * BLEND - 1
        self.assertGreater(to_wet - from_wet, RATE)
        np.testing.assert_array_equal(heard[begin + from_wet:begin + to_wet], wet[from_wet:to_wet])

    @patiently
    def test_keys_pause_wind_and_change_the_song(self):
        songs = [self.song("one.wav", 20, 1), self.song("two.wav", 3, 2)]
        terminal = self.play("--dry", self.work / "one.wav", self.work / "two.wav")
        terminal.until(2)
        terminal.press(" ")
        terminal.wait("paused")
        self.hear(2)
        shown = int(terminal.wait(r"0:(\d+) /")[1])
        terminal.press(" ")
        terminal.until(shown + 1)
        terminal.press(RIGHT)
        terminal.wait(r"0:0[7-9] /")
        terminal.until(9)
        terminal.press(LEFT)
        terminal.wait(r"0:0[4-6] /")
        terminal.until(6)
        terminal.press("n")
        terminal.until(1, "two")
        terminal.press("p")
        terminal.wait(r"0:0\d / 0:20.*one")
        terminal.until(1, "one")
        terminal.press("xq")
        self.assertEqual(terminal.end(), 0)
        runs = runs_in(self.heard(), songs)
        self.assertEqual([run[0] for run in runs], [0, 0, 0, 0, 1, 0], runs)
        start = lambda run: runs[run][1]
        end = lambda run: runs[run][1] + runs[run][2]
        self.assertEqual(start(0), 0)
        self.assertAlmostEqual(end(0) / RATE, shown + 0.5, delta=0.7)  # what is shown is what is heard
        # A pause loses nothing but what its blends take; then silence.
        self.assertLess(start(1) - end(0), 2 * BLEND + 10)
        self.assertGreater(runs[1][3] - runs[0][3] - runs[0][2], RATE)
        # By about five seconds (where the song is while the machine is busy is an estimate), at once, with blends.
        self.assertAlmostEqual((start(2) - end(1)) / RATE, 5, delta=1.5)
        self.assertAlmostEqual((start(3) - end(2)) / RATE, -5, delta=1.5)
        for run in (2, 3):
            self.assertGreater(runs[run][3] - runs[run - 1][3] - runs[run - 1][2], BLEND)
            self.assertLess(runs[run][3] - runs[run - 1][3] - runs[run - 1][2], RATE / 2)
        self.assertEqual((start(4), start(5)), (0, 0))

    @patiently
    def test_a_passage_is_repeated_until_a_signal_ends_it(self):
        song = self.song("song.wav", 4, 1)
        terminal = self.play("--dry", self.work / "song.wav", "--loop", "1", "0:1.5")
        self.hear(4)
        terminal.press("\x03")  # Ctrl+C
        self.assertEqual(terminal.end(), 128 + signal.SIGINT)
        runs = runs_in(self.heard(), [song])
        self.assertGreater(len(runs), 3, runs)
        for before, run in zip(runs[:-2], runs[1:-1]):
            self.assertAlmostEqual(run[1], RATE, delta=BLEND)
            self.assertEqual(run[3] - before[3] - (run[1] - before[1]), RATE // 2, "the passage has another length")

    def test_a_gap_is_counted_and_the_song_goes_on(self):
        song = self.song("song.wav", 2.5, 1)  # the end comes while the server's time is not yet known anew
        terminal = self.play("--dry", self.work / "song.wav")
        terminal.until(1)
        os.killpg(terminal.process.pid, signal.SIGSTOP)
        self.hear(2)  # for longer than the buffer lasts
        os.killpg(terminal.process.pid, signal.SIGCONT)
        terminal.wait(r"\d gap")
        with self.assertRaises(Late):
            terminal.end()
        self.assertEqual(terminal.process.returncode, 0)
        runs = runs_in(self.heard(), [song])
        for before, run in zip([[0, 0, 0]] + runs, runs + [[0, len(song), 0]]):
            self.assertLess(run[1] - before[1] - before[2], BLEND + 1, f"a part of the song was lost: {runs}")

    def test_another_device_is_told_and_a_server_that_goes_away_is_waited_for(self):
        self.song("song.wav", 8, 1)
        terminal = self.play("--dry", self.work / "song.wav")
        terminal.until(1)
        self.run_program("pactl", "load-module", "module-null-sink", "sink_name=other", "sink_properties=device.description=Other")
        self.run_program("pactl", "set-default-sink", "other")
        stream = self.run_program("pactl", "list", "short", "sink-inputs").split()[0]
        self.run_program("pactl", "move-sink-input", stream, "other", code=None)  # where the server has not done so
        self.wait_for("the message", lambda: "playing on Other" in terminal.seen)
        self.server.kill()
        self.server.wait()
        self.wait_for("the message", lambda: "has gone away; waiting" in terminal.seen)
        terminal.press("v")
        self.start_server()
        terminal.wait("voice out")
        terminal.until(4)
        terminal.press("q")
        try:
            self.assertEqual(terminal.end(), 0)
        except Late:
            pass  # the gap may be the server's
        self.server.kill()
        self.server.wait()
        said = self.run_program(COMMAND, "play", self.work / "song.wav", code=1)
        self.assertIn("no sound server can be reached", said)


if __name__ == "__main__":
    needs("pulseaudio", "pactl", "pacat")
    main()
