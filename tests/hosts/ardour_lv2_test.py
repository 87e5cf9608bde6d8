# SPDX-License-Identifier: MIT
"""Ardour with the LV2 plug-in: ranges and lanes, a bounce that is in time, the session opened again, the window."""

import unittest
import xml.etree.ElementTree as xml

import ardour_test
from ardour_test import FRAMES
from support import LV2_URI, OUTPUT_FADER, RATE, has_editor, main, read_wav, to_normalised, write_wav

LATENCY = 1707
# As the lanes have them: port, name, least, most, toggled, logarithmic.
LANES = [["4", "ON/OFF", "0", "1", "true", "false"], ["5", "Output", "-59.79", "6", "false", "false"],
         ["6", "Input", "-59.79", "0", "false", "false"], ["7", "LoFreq", "20", "20000", "false", "true"],
         ["8", "HiFreq", "20", "20000", "false", "true"], ["9", "Position", "0", "127", "false", "false"]]


def normalised(number, value):
    """As the VST plug-in takes it. Frequencies and places are cut to whole numbers: in the middle of a step nothing hangs
    on a rounding."""
    if number <= 2:
        return f"{(2 ** (value / 6) - 0.001) / (1.999 if number == 1 else 0.999):.9g}"
    return f"{to_normalised(number, value + 0.5):.9g}"


class ArdourLv2(ardour_test.ArdourSession):
    def setUp(self):
        super().setUp()
        self.offer_lv2()

    def make_session(self):
        return self.lua("ardour_make.lua", RATE, "LV2", LV2_URI)

    def assert_in_time(self, song_path, host_path, *changes):
        """Ardour makes up for the delay, so that what it rendered is ours when the delay is put back. (It plays silence
        into the plug-in before the range, without a reset; the comparison finds how much.)"""
        channels = read_wav(host_path)[:2]
        late = self.work / f"late-{host_path.name}"
        write_wav(late, *([0.0] * LATENCY + list(side[:FRAMES - LATENCY]) for side in channels))
        self.assert_same_sound(song_path, late, *changes)

    def values(self):
        return {int(line[1]): float(line[2]) for line in self.lua("ardour_set.lua") if line[0] == "value"}

    def test_ranges_lanes_and_a_bounce_in_time(self):
        facts = self.make_session()
        self.assertIn(["instance", "Vocafade", "VELMORAX Co.,Ltd.", "11", str(LATENCY)], facts)
        self.assertEqual([line[1:] for line in facts if line[0] == "parameter" and 4 <= int(line[1]) <= 9], LANES)
        path = self.lay_song()
        self.lua("ardour_set.lua", "1=3.9", "2=-3", "3=250", "4=6000", "5=40")
        self.bounce(self.work / "bounced.wav")
        changes = [f"0:{n}:{normalised(n, value)}" for n, value in ((1, 3.9), (2, -3), (3, 250), (4, 6000), (5, 40))]
        self.assert_in_time(path, self.work / "bounced.wav", *changes)
        # Opened again it has the same values.
        values = self.values()
        for number, value in enumerate((1, 3.9, -3, 250, 6000, 40)):
            self.assertAlmostEqual(values[number], value, places=4)
        self.bounce(self.work / "again.wav")
        self.assert_in_time(path, self.work / "again.wav", *changes)

    def test_automation_of_all_six_is_exact_to_the_sample(self):
        self.make_session()
        path = self.lay_song()
        # In ticks of a beat, as in ardour_test.
        begin = {1: 0.0, 2: 0.0, 3: 100, 4: 9000, 5: 64}
        change = {1: (735 * 75, 3.9), 2: (735 * 96, -3), 3: (735 * 109, 2000), 4: (735 * 122, 3000), 5: (735 * 138, 13)}
        off = 735 * 170
        self.lua("ardour_set.lua", "0:0:1", f"{off}:0:0", *(f"0:{n}:{value}" for n, value in begin.items()),
                 *(f"{sample}:{n}:{value}" for n, (sample, value) in change.items()))
        self.bounce(self.work / "automated.wav")
        # While it is on, the lanes' sound; when it is off, after a blend of 20 ms, the song, in time.
        song = read_wav(path)[:2]
        on = self.work / "on.wav"
        write_wav(on, *(side[:off] for side in song))
        lanes = [f"0:{n}:{normalised(n, value)}" for n, value in begin.items()] + [
            f"{sample}:{n}:{normalised(n, value)}" for n, (sample, value) in change.items()]
        self.assert_in_time(on, self.work / "automated.wav", *lanes)
        dry = off - LATENCY + RATE // 50 + 1
        for side, host in zip(song, read_wav(self.work / "automated.wav")):
            self.assertEqual(list(host[dry:FRAMES - LATENCY]), list(side[dry:FRAMES - LATENCY]))

    @unittest.skipUnless(has_editor(), "this build's editor has no window")
    def test_drag_in_the_editor_changes_the_port(self):
        self.make_session()
        process, window = self.start_window()
        editor = self.open_editor(window, self.panel_window)
        before = self.wait_for_picture(editor, OUTPUT_FADER)
        self.drag(editor, OUTPUT_FADER, 60, 110)
        self.wait_for_picture(editor, OUTPUT_FADER, other_than=before)
        self.screenshot("ardour-lv2.png")
        self.save(process, window)
        ports = {port.get("symbol"): float(port.get("value"))
                 for port in xml.parse(self.file).getroot().iter("Port") if port.get("symbol")}
        self.assertLess(ports["output"], -3.0)
        self.assertEqual((ports["enabled"], ports["lofreq"], ports["position"]), (1.0, 400.0, 64.0))


if __name__ == "__main__":
    main()
