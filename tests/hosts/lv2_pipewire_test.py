# SPDX-License-Identifier: MIT
"""PipeWire: the example of an output device that takes the voice out, started headless, recorded while a song plays."""

import array
import re
import signal
import time
from pathlib import Path

from support import RATE, HostTest, main, pipewire, read_wav, song, to_normalised, write_wav

EXAMPLE = Path(__file__).resolve().parents[2] / "lv2/examples/pipewire.conf"
QUANTUM = 8192  # samples of PipeWire's block: a busy machine has time enough


class PipeWire(HostTest):
    def setUp(self):
        super().setUp()
        self.offer_lv2()
        settings = self.home / ".config"
        pipewire.configure(settings, [RATE], QUANTUM, speakers=1000)
        (settings / "pipewire/pipewire.conf.d").mkdir()
        # As users have it, but for the one value that lets the comparison see that controls arrive at all.
        text = EXAMPLE.read_text(encoding="utf-8")
        self.assertIn("lofreq = 400.0", text)
        (settings / "pipewire/pipewire.conf.d/vocafade.conf").write_text(
            text.replace("lofreq = 400.0", "lofreq = 300.0"), encoding="utf-8")

    def ports(self):
        return self.run_program(["pw-link", "-i", "-o"], check=False)

    def record(self, path, seconds, when_ready):
        """Four channels at once: what leaves by the speakers, and what went into the device before."""
        recorder = self.start(["pw-record", "--target", 0, "--format", "f32", "--rate", RATE, "--channels", 4,
                               "--channel-map", "FL,FR,RL,RR", "-P", "{ node.name = recorder }", path], "pw-record.log")
        self.wait_for("the recorder", lambda: "recorder:input_RR" in self.ports(), process=recorder)
        for source, place in (("speakers:monitor_FL", "FL"), ("speakers:monitor_FR", "FR"),
                              ("vocafade:monitor_FL", "RL"), ("vocafade:monitor_FR", "RR")):
            self.run_program(["pw-link", source, f"recorder:input_{place}"])
        when_ready()
        recorder.send_signal(signal.SIGINT)
        recorder.wait(20)
        raw = Path(path).read_bytes()
        samples = array.array("f")
        samples.frombytes(raw[raw.index(b"data") + 8:][:(len(raw) - 200) // 16 * 16])
        self.assertGreater(len(samples), 4 * seconds * RATE)
        return [samples[channel::4] for channel in range(4)]

    def test_the_example_is_our_own_sound_and_follows_its_controls(self):
        server = self.start(["pipewire"], "pipewire.log")
        socket = Path(self.environment["XDG_RUNTIME_DIR"]) / "pipewire-0"
        self.wait_for("PipeWire", socket.exists, process=server)
        manager = self.start(["wireplumber"], "wireplumber.log")
        self.wait_for("the device", lambda: "vocafade.output:output_FR" in self.ports(), process=manager)

        path = self.work / "song.wav"
        write_wav(path, *song())
        plain = read_wav(path)

        def play():
            self.run_program(["pw-play", "--target", "vocafade", path])
            time.sleep(1)

        def compare(channels, name, *changes):
            first = next(i for i, sample in enumerate(plain[0]) if sample)
            start = next(i for i, sample in enumerate(channels[2]) if sample) - first
            length = len(plain[0]) - QUANTUM  # the player leaves out a last block that is not full
            for side in (0, 1):
                self.assertEqual(channels[2 + side][start:start + length], plain[side][:length], "the player lost samples")
            # The way from the device to the speakers takes one block.
            begin, heard = self.work / "begin.wav", self.work / name
            write_wav(begin, *(side[:length] for side in plain[:2]))
            write_wav(heard, *(side[start + QUANTUM:start + QUANTUM + length] for side in channels[:2]))
            self.assert_same_sound(begin, heard, *changes)

        output = f"0:1:{(2 ** (3.9 / 6) - 0.001) / 1.999:.9g}"
        compare(self.record(self.work / "first.wav", 3, play), "heard.wav", output, f"0:3:{to_normalised(3, 300.5):.9g}")

        number = re.search(r"^\s*id: (\d+)", self.run_program(["pw-cli", "info", "vocafade"]), re.M)[1]
        self.run_program(["pw-cli", "set-param", number, "Props",
                          '{ params = [ "vocafade:lofreq" 1000.0 "vocafade:position" 30.0 ] }'])
        compare(self.record(self.work / "second.wav", 3, play), "changed.wav", output,
                f"0:3:{to_normalised(3, 1000.5):.9g}", f"0:5:{to_normalised(5, 30.2):.9g}")


if __name__ == "__main__":
    main()
