# SPDX-License-Identifier: MIT
"""Ardour with the LV2 plug-in: ranges and lanes, a bounce that is in time, the session opened again, the window."""

import xml.etree.ElementTree as xml

import ardour_test
import numpy as np
from ardour_test import POINTS
from support import LV2_URI
from alone import LATENCY, RATE, lv2_lanes, main, read_wav, write_wav

# As the lanes have them: port, name, least, most, toggled, logarithmic.
LANES = [["4", "ON/OFF", "0", "1", "true", "false"], ["5", "Output", "-59.79", "6", "false", "false"],
         ["6", "Input", "-59.79", "0", "false", "false"], ["7", "LoFreq", "20", "20000", "false", "true"],
         ["8", "HiFreq", "20", "20000", "false", "true"], ["9", "Position", "0", "127", "false", "false"]]


class ArdourLv2(ardour_test.ArdourSession):
    def make_session(self):
        self.offer_lv2()
        return self.lua("make", "LV2", LV2_URI)

    def assert_in_time(self, song_path, host_path, *changes):
        """Ardour makes up for the delay, so that what it rendered is ours when the delay is put back. (It plays silence
        into the plug-in before the range, without a reset; the comparison finds how much.)"""
        early = read_wav(host_path)[:-LATENCY]
        late = write_wav(self.work / f"late-{host_path.name}", np.pad(early, ((LATENCY, 0), (0, 0))))
        self.assert_same_sound(song_path, late, *changes)

    def test_ranges_lanes_and_a_bounce_in_time(self):
        facts = self.make_session()
        self.assertIn(["instance", "Vocafade", "VELMORAX Co.,Ltd.", "11", str(LATENCY)], facts)
        self.assertEqual([line[1:] for line in facts if line[0] == "parameter" and 4 <= int(line[1]) <= 9], LANES)
        path = self.lay_song()
        settings = {1: 3.9, 2: -3, 3: 250, 4: 6000, 5: 40}
        self.set(*(f"{n}={value}" for n, value in settings.items()))
        self.assert_in_time(path, self.bounce("bounced.wav"), *lv2_lanes(settings))
        # Opened again it has the same values.
        values = self.set()
        for number, value in {0: 1, **settings}.items():
            self.assertAlmostEqual(values[number], value, places=4)
        self.assert_in_time(path, self.bounce("again.wav"), *lv2_lanes(settings))

    def test_automation_of_all_six_is_exact_to_the_sample(self):
        self.make_session()
        path = self.lay_song()
        begin = {1: 0, 2: 0, 3: 100, 4: 9000, 5: 64}
        change = {n: (POINTS[n], value) for n, value in {1: 3.9, 2: -3, 3: 2000, 4: 3000, 5: 13}.items()}
        off = POINTS[0]
        self.set("0:0:1", f"{off}:0:0", *(f"0:{n}:{value}" for n, value in begin.items()),
                 *(f"{sample}:{n}:{value}" for n, (sample, value) in change.items()))
        automated = self.bounce("automated.wav")
        # While it is on, the lanes' sound; when it is off, after a blend of 20 ms, the song, in time.
        song = read_wav(path)
        self.assert_in_time(write_wav(self.work / "on.wav", song[:off]), automated, *lv2_lanes(begin, change))
        dry = slice(off - LATENCY + RATE // 50 + 1, len(song) - LATENCY)
        np.testing.assert_array_equal(read_wav(automated)[dry], song[dry])

    def test_drag_in_the_editor_changes_the_port(self):
        self.make_session()
        process, window = self.start_window()
        editor = self.open_editor(window, self.panel_window)
        self.drag_output(editor, "ardour-lv2", 60, 110)
        self.save(process, window)
        ports = {port.get("symbol"): float(port.get("value"))
                 for port in xml.parse(self.file).getroot().iter("Port") if port.get("symbol")}
        self.assertLess(ports["output"], -3.0)
        self.assertEqual((ports["enabled"], ports["lofreq"], ports["position"]), (1.0, 400.0, 64.0))


if __name__ == "__main__":
    main()
