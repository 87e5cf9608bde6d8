# SPDX-License-Identifier: MIT
"""`vocafade live` between PipeWire's players and a sink that is no device, recorded from its monitor."""

import array
import json
import signal
import time

from support import (COMMAND, RATE, Late, SoundTest, main, needs, noise, patiently, pipewire, read_wav, runs_in,
                     write_wav)

QUANTUM = 4096  # a busy machine has time enough
LATENCY = 1707
STEP = 341  # of the effect


class Live(SoundTest):
    def setUp(self):
        super().setUp()
        # The user's loudspeakers are not the ones that the session manager would take by itself.
        pipewire.configure(self.work / "home/.config", (RATE, 48000), QUANTUM, speakers=100, television=900)
        self.start_server()
        self.wait_for("the manager", lambda: "television" in self.default())
        self.choose("speakers")
        self.live = None

    def start_server(self):
        self.server = self.start(["pipewire"], "pipewire")
        self.wait_for("PipeWire", (self.work / "run/pipewire-0").exists)
        self.manager = self.start(["wireplumber"], "wireplumber")

    def default(self):
        return self.run_command("pw-metadata", "-n", "default", 0, "default.audio.sink", check=False).stdout

    def chosen(self):
        return self.run_command("pw-metadata", "-n", "default", 0, "default.configured.audio.sink", check=False).stdout

    def choose(self, name):
        self.run_command("pw-metadata", "-n", "default", 0, "default.configured.audio.sink", json.dumps({"name": name}),
                         "Spa:String:JSON")
        self.wait_for("the default", lambda: f'"{name}"' in self.default())

    def start_live(self, *words):
        self.live = self.start([COMMAND, "live", *words], "live")
        self.wait_for("the device", lambda: "vocafade:playback_FR" in self.run_command("pw-link", "-i").stdout)

    def links(self):
        return self.run_command("pw-link", "-l", check=False).stdout

    def record(self, speakers="speakers", rate=RATE):
        """Four channels at once: what leaves by the speakers, and what went into the device."""
        self.recorder = self.start(["pw-record", "--target", 0, "--format", "f32", "--rate", rate, "--channels", 4,
                                    "--channel-map", "FL,FR,RL,RR", "-P", "{ node.name = recorder }",
                                    self.work / "heard.wav"], "pw-record")
        self.wait_for("the recorder", lambda: "recorder:input_RR" in self.run_command("pw-link", "-i").stdout)
        for source, place in ((speakers + ":monitor_FL", "FL"), (speakers + ":monitor_FR", "FR"),
                              ("vocafade:monitor_FL", "RL"), ("vocafade:monitor_FR", "RR")):
            self.run_command("pw-link", source, "recorder:input_" + place)

    def heard(self):
        """Stops the recorder. Interleaved, what left by the speakers and what went in."""
        time.sleep(1.5)
        self.recorder.send_signal(signal.SIGINT)
        self.recorder.wait(20)
        raw = (self.work / "heard.wav").read_bytes()
        samples = array.array("f")
        start = raw.index(b"data") + 8
        samples.frombytes(raw[start:start + (len(raw) - start) // 16 * 16])
        both = []
        for first in (0, 2):
            both.append(array.array("f", bytes(len(samples) * 2)))
            both[-1][0::2], both[-1][1::2] = samples[first::4], samples[first + 1::4]
        return both

    def play(self, samples, *words, rate=RATE):
        path = write_wav(self.work / "song.wav", samples, rate)
        self.run_command("pw-play", *words, path)
        return path

    def assert_rendered(self, song, heard, entered, *options):
        """What was heard is the rendering, one block and the effect's delay later. The device was there before the song,
        so the song begins anywhere in a step of the effect: it is rendered with as much silence before it as makes each
        of these. What the effect's phases were before the song makes a difference of roundings."""
        first = next((i for i, sample in enumerate(entered) if sample), None)
        if first is None or entered[first:first + 2 * RATE] != song[:2 * RATE]:
            raise Late("the player or the recorder lost a part of the song")
        places = self.work / "places"
        places.mkdir()
        silence = [8 * STEP + place for place in range(STEP)]
        for frames in silence:
            write_wav(places / f"{frames}.wav", array.array("f", bytes(8 * frames)) + song[:2 * RATE])
        self.run_command(COMMAND, *places.iterdir(), "-o", self.work / "placed", "-q", "--keep-latency", *options)
        heard = heard[first + 2 * QUANTUM:first + 2 * QUANTUM + 2 * RATE]
        best = min(max(abs(one - other) for one, other in
                       zip(heard, read_wav(self.work / "placed" / f"{frames}.wav")[2 * frames:]))
                   for frames in silence)
        self.assertGreater(max(heard), 0.1, "next to nothing was heard")
        self.assertLess(best, 1e-5, "another sound than that of the rendering, or at another time")

    def assert_untouched(self, song, heard):
        longest = max((run[2] for run in runs_in(heard, [song])), default=0)
        self.assertGreater(longest, QUANTUM, "the song was not heard as it is")
        if longest < len(song) // 2 - 2 * QUANTUM:
            raise Late(f"{longest} frames at once")

    @patiently
    def test_what_is_played_comes_out_without_the_voice_and_by_the_default_device(self):
        self.start_live("--default", "--lofreq", 300, "--position", 20)
        self.wait_for("the default", lambda: '"vocafade"' in self.default())
        self.wait_for("the loudspeakers", lambda: "vocafade.output:output_FR" in self.links())
        self.assertNotIn("television:playback", self.links().split("vocafade.output:output_FR")[1].split("vocafade")[0])
        self.record()
        song = noise(3, 1)
        self.play(song)
        self.assert_rendered(song, *self.heard(), "--lofreq", 300, "--position", 20)
        # How late it is, told to those who play: a block and the effect's delay.
        ports = [item for item in json.loads(self.run_command("pw-dump").stdout)
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
        songs = [noise(2, 1), noise(2, 2), noise(2, 3, 48000)]
        self.record()
        self.play(songs[0], "--target", "vocafade")
        time.sleep(7)  # the first client has gone away, and the manager lets the devices sleep
        self.play(songs[1], "--target", "vocafade")
        heard, _ = self.heard()
        for song in songs[:2]:
            self.assert_untouched(song, heard)
        self.choose("television")  # the device changes: the sound follows
        self.wait_for("the other device", lambda: "television" in self.links().split("vocafade.output:output_FR")[1][:80])
        self.run_command("pw-metadata", "-n", "settings", 0, "clock.force-rate", 48000)
        self.play(songs[2], "--target", "vocafade", rate=48000)  # the effect hears of the other rate
        self.record("television", 48000)
        self.play(songs[2], "--target", "vocafade", rate=48000)
        self.assert_untouched(songs[2], self.heard()[0])
        self.assertIsNone(self.live.poll(), self.log("live"))

    @patiently
    def test_play_reaches_such_a_desktop_too(self):
        self.start(["pipewire-pulse"], "pipewire-pulse")
        self.wait_for("its socket", (self.work / "run/pulse/native").exists)
        song = noise(3, 1)
        write_wav(self.work / "song.wav", song)
        self.recorder = self.start(["pw-record", "--target", "speakers", "-P", "{ stream.capture.sink = true }", "--format",
                                    "f32", "--rate", RATE, "--channels", 2, self.work / "heard.wav"], "pw-record")
        self.wait_for("the recorder", lambda: "speakers:monitor_FR" in self.links())
        terminal = self.terminal("play", "--dry", "--buffer", 400, self.work / "song.wav")
        self.assertEqual(terminal.end(), 0)
        self.recorder.send_signal(signal.SIGINT)
        self.recorder.wait(20)
        self.assert_untouched(song, read_wav(self.work / "heard.wav"))

    def test_a_server_that_goes_away_is_waited_for(self):
        self.start_live()
        for process in (self.manager, self.server):
            process.kill()
            process.wait()
        self.wait_for("the message", lambda: "PipeWire has gone away" in self.log("live"))
        self.start_server()
        self.wait_for("the device", lambda: "vocafade:playback_FR" in self.run_command("pw-link", "-i").stdout)
        self.live.terminate()
        self.assertEqual(self.live.wait(20), -signal.SIGTERM)
        for process in (self.manager, self.server):
            process.kill()
            process.wait()
        alone = self.run_command(COMMAND, "live", check=False)
        self.assertEqual(alone.returncode, 1)
        self.assertIn("PipeWire does not answer", alone.stderr)


if __name__ == "__main__":
    needs("pipewire", "pipewire-pulse", "wireplumber", "pw-record", "pw-link", "pw-metadata", "pw-dump")
    main()
