# SPDX-License-Identifier: MIT
"""`vocafade live` between PipeWire's players and a sink that is no device, recorded from its monitor."""

import json
import signal
import time

from support import Terminal, needs, runs_in
from alone import COMMAND, LATENCY, RATE, Late, lv2_lanes, main, noise, patiently, read_wav, song, write_wav
from pipewire import QUANTUM, DesktopTest


class Live(DesktopTest):
    def setUp(self):
        super().setUp()
        self.start_server()
        self.wait_for("the manager", lambda: "television" in self.default())
        # The user's loudspeakers are not the ones that the session manager would take by itself.
        self.choose("speakers")

    def default(self, which="default"):
        return self.run_program("pw-metadata", "-n", "default", 0, f"{which}.audio.sink", code=None)

    def chosen(self):
        return self.default("default.configured")

    def choose(self, name):
        self.run_program("pw-metadata", "-n", "default", 0, "default.configured.audio.sink", json.dumps({"name": name}),
                         "Spa:String:JSON")
        self.wait_for("the default", lambda: f'"{name}"' in self.default())

    def start_live(self, *words):
        self.live = self.start(COMMAND, "live", *words)
        self.wait_for_port("vocafade:playback_FR")

    def links(self):
        return self.run_program("pw-link", "-l", code=None)

    def assert_untouched(self, plain, heard):
        longest = max((run[2] for run in runs_in(heard, [plain])), default=0)
        self.assertGreater(longest, QUANTUM, "the song was not heard as it is")
        if longest < len(plain) - 2 * QUANTUM:
            raise Late(f"{longest} frames at once")

    @patiently
    def test_what_is_played_comes_out_without_the_voice_and_by_the_default_device(self):
        self.start_live("--default", "--lofreq", 300, "--position", 20)
        self.wait_for("the default", lambda: '"vocafade"' in self.default())
        self.wait_for("the loudspeakers", lambda: "vocafade.output:output_FR" in self.links())
        self.assertNotIn("television:playback", self.links().split("vocafade.output:output_FR")[1].split("vocafade")[0])
        self.record()
        plain = song()
        self.play(plain)
        self.assert_rendered(plain, *lv2_lanes({3: 300, 5: 20}))
        # How late it is, told to those who play: a block and the effect's delay.
        ports = [item for item in json.loads(self.run_program("pw-dump"))
                 if item.get("info", {}).get("props", {}).get("port.alias", "").endswith("playback_FL") and
                 "ocafade" in item["info"]["props"]["port.alias"]]
        latencies = [latency for port in ports for latency in port["info"]["params"].get("Latency", [])
                     if latency["direction"] == "Input"]
        self.assertTrue(latencies, ports)
        self.assertEqual((latencies[0]["maxRate"], latencies[0]["maxQuantum"] >= 1), (LATENCY, True), latencies)
        self.live.send_signal(signal.SIGINT)
        self.live.wait(20)
        self.wait_for("the default to be given back", lambda: '"speakers"' in self.default())

    def test_after_a_kill_the_next_run_gives_the_default_back(self):
        for following in ([], ["--default"]):
            self.start_live("--default")
            self.wait_for("the default", lambda: '"vocafade"' in self.default())
            self.live.kill()
            self.live.wait()
            self.wait_for("another default", lambda: "vocafade" not in self.default() and "name" in self.default())
            self.assertIn('"vocafade"', self.chosen(), "a run that was killed cannot have given it back")
            self.start_live(*following)
            self.wait_for("the choice", lambda: f'"{"vocafade" if following else "speakers"}"' in self.chosen())
            self.live.terminate()
            self.live.wait(20)
            self.wait_for("the choice of before", lambda: '"speakers"' in self.chosen())
        self.assertEqual(list((self.work / "home/.local/state/vocafade").iterdir()), [])

    @patiently
    def test_untouched_sound_stays_so_through_pauses_rates_and_devices(self):
        self.start_live("--dry")
        songs = [noise(4, 1), noise(4, 2), noise(4, 3, 48000)]
        self.record()
        self.play(songs[0], "--target", "vocafade")
        time.sleep(7)  # the first client has gone away, and the manager lets the devices sleep
        self.play(songs[1], "--target", "vocafade")
        heard = self.heard()[0]
        for played in songs[:2]:
            self.assert_untouched(played, heard)
        self.choose("television")  # the device changes: the sound follows
        self.wait_for("the other device", lambda: "television" in self.links().split("vocafade.output:output_FR")[1][:80])
        self.run_program("pw-metadata", "-n", "settings", 0, "clock.force-rate", 48000)
        self.play(songs[2], "--target", "vocafade", rate=48000)  # the effect hears of the other rate
        self.record("television", 48000)
        self.play(songs[2], "--target", "vocafade", rate=48000)
        self.assert_untouched(songs[2], self.heard()[0])
        self.assertIsNone(self.live.poll(), self.live.log.read_text())

    @patiently
    def test_play_reaches_such_a_desktop_too(self):
        self.start("pipewire-pulse")
        self.wait_for("its socket", (self.work / "run/pulse/native").exists)
        plain = noise(4, 1)
        recorder = self.start("pw-record", "--target", "speakers", "-P", "{ stream.capture.sink = true }", "--format", "f32",
                              "--rate", RATE, "--channels", 2, self.work / "heard.wav")
        self.wait_for("the recorder", lambda: "speakers:monitor_FR" in self.links())
        terminal = Terminal(self, "play", "--dry", "--buffer", 400, write_wav(self.work / "song.wav", plain))
        self.assertEqual(terminal.end(), 0)
        recorder.send_signal(signal.SIGINT)
        recorder.wait(20)
        self.assert_untouched(plain, read_wav(self.work / "heard.wav"))

    def test_a_server_that_goes_away_is_waited_for(self):
        self.start_live()
        self.end_server()
        self.wait_for("the message", lambda: "PipeWire has gone away" in self.live.log.read_text())
        self.start_server()
        self.wait_for_port("vocafade:playback_FR")
        self.live.terminate()
        self.assertEqual(self.live.wait(20), -signal.SIGTERM)
        self.end_server()
        self.assertIn("PipeWire does not answer", self.run_program(COMMAND, "live", code=1))


if __name__ == "__main__":
    needs("pipewire", "pipewire-pulse", "wireplumber", "pw-record", "pw-link", "pw-metadata", "pw-dump")
    main()
