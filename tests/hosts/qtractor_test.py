# SPDX-License-Identifier: MIT
"""qtractor: what its scanner says of the plug-in, and the editor in its window, while a song plays through JACK; with
the LV2 plug-in a session with its values, the panel, the session saved again."""

import re
import sys
import threading
import time

import numpy as np
from support import CURRENT, LV2_URI, NO_HARDWARE, PERIOD, PROGRAMS, HostTest, pack_as_qt, unpack_as_qt
from alone import RATE, Stuck, end_all, first_sound, lanes, main, read_wav, song, to_normalised, write_wav

SCANNER = "/usr/lib/x86_64-linux-gnu/qtractor/qtractor_plugin_scan"
PLUGIN_ENTRY = (185, 180)  # the plug-in's name beside its track, in the main window
SECONDS = 4  # the song's length, which plays in a loop

SESSION = """<!DOCTYPE qtractorSession>
<session version="0.9.31" name="session">
 <properties>
  <directory>{folder}</directory> <sample-rate>{rate}</sample-rate>
  <tempo>120</tempo> <ticks-per-beat>960</ticks-per-beat> <beats-per-bar>4</beats-per-bar>
 </properties>
 <state> <loop-start>0</loop-start> <loop-end>{loop}</loop-end> </state>
 <tracks>
  <track name="Song" type="audio">
   <properties> <input-bus>Master</input-bus> <output-bus>Master</output-bus> </properties>
   <state> <gain>1</gain> <panning>0</panning> </state>
   <view> <height>96</height> </view>
   <clips>
    <clip name="song">
     <properties>
      <name>song</name> <start>0</start> <offset>0</offset> <length>{frames}</length> <gain>1</gain>
     </properties>
     <audio-clip>
      <filename>{song}</filename> <time-stretch>1</time-stretch> <pitch-shift>1</pitch-shift>
     </audio-clip>
    </clip>
   </clips>
   <plugins>
    <plugin type="{kind}">
     <filename>{plugin}</filename> <index>0</index> <label>{label}</label> <activated>1</activated>
     <configs>{chunk}</configs>
     <params>{values}</params>
    </plugin>
   </plugins>
  </track>
 </tracks>
</session>
"""
ROUNDING = 1e-9  # what is recorded are whole numbers of 32 bits


class QtractorTest(HostTest):
    """A session with one track and the plug-in on it."""

    def start_with_song(self, values=(), programs=None, lv2=False, loop=True):
        """JACK without hardware, and qtractor with a session that has the plug-in on a track, with these values, by number,
        which are set after the programs."""
        self.environment["QT_QPA_PLATFORM"] = "xcb"
        self.start_display()
        self.song = write_wav(self.work / "song.wav", song(SECONDS))
        self.session = self.work / "session.qtr"
        self.session.write_text(SESSION.format(
            folder=self.work, rate=RATE, frames=SECONDS * RATE, loop=SECONDS * RATE if loop else 0, song=self.song,
            kind="LV2" if lv2 else "VST2", plugin=LV2_URI if lv2 else self.plugin, label=LV2_URI if lv2 else "Vocafade",
            chunk=f'<config key="chunk">{pack_as_qt(programs)}</config>' if programs else "",
            values="".join(f'<param index="{n}">{value}</param>' for n, value in dict(values).items())), encoding="utf-8")
        return self.open_session()

    def open_session(self):
        def start():
            self.start_jack()
            process = self.start("qtractor", self.session, LD_PRELOAD=str(NO_HARDWARE))
            self.wait_for_port("Master/out_1", process)
            return self.wait_for("qtractor's window", lambda: self.windows("session.qtr"), process=process)[-1]

        return self.start_up("qtractor with JACK", start)

    def open_editor(self, window):
        """A double click on the plug-in's name opens its editor; an early one, before the entry is drawn, is lost."""
        def gesture(_):
            time.sleep(1)
            self.xdotool("mousemove", "--window", window, *PLUGIN_ENTRY, "click", "--repeat", 2, "--delay", 80, 1)

        return self.open_until(lambda: self.panel_window(at_least=2), gesture)

    def save(self, window):
        """Has qtractor save its session: its text, and the values in it."""
        before = self.session.read_text(encoding="utf-8")
        self.xdotool("windowfocus", window, "key", "ctrl+s")

        def saved():
            text = self.session.read_text(encoding="utf-8")
            return text != before and text.rstrip().endswith("</session>") and text

        text = self.wait_for("the saved session", saved)
        return text, {int(found[1]): float(found[2])
                      for found in re.finditer(r'<param [^>]*index="(\d+)"[^>]*>([^<]*)<', text)}


class Qtractor(QtractorTest):
    def scan(self, path):
        return self.run_program(SCANNER, given=f"VST:{path}\n").strip()

    def test_scanner_describes_the_plug_in(self):
        line = self.scan(self.plugin)
        # Type, name, audio channels, MIDI, parameters in and out, flags, file, index, identifier ('VfdQ').
        self.assertEqual(line, f"VST|Vocafade|2:2|0:0|6:0|GUI,EXT,RT|{self.plugin}|0|0x56666451")

    def test_scanner_refuses_what_is_no_plug_in(self):
        other = self.plugin.with_name("Other.so")
        other.write_bytes(b"no shared object")
        self.assertFalse(self.scan(other).startswith("VST|"))

    def transport(self, *commands):
        self.run_program("jack_transport", given="\n".join([*commands, "quit", ""]), code=None)

    def record(self, seconds=SECONDS):
        """What leaves qtractor in this time, as JACK had it (but for what is below 2^-31)."""
        path = self.work / "recorded.wav"
        said = self.run_program("jack_rec", "-f", path, "-d", seconds, "-b", 32, "-B", 1 << 18,
                                "Qtractor:Master/out_1", "Qtractor:Master/out_2", timeout=90)
        if "overrun" in said:
            raise Stuck("the recorder lost samples")
        return read_wav(path)

    def play_song(self):
        """Records the song from its start on."""
        self.transport("stop", "locate 0")
        time.sleep(1)
        start = threading.Timer(2, self.transport, ["play"])
        start.start()
        try:
            return self.record(SECONDS + 5)
        finally:
            start.join()
            self.transport("stop")

    def test_sound_is_our_own_to_the_sample(self):
        # Other values than the chunk's: qtractor sets them after it, as a session keeps them.
        values = {0: 1, 1: 0.6, 2: 0.8, 3: to_normalised(3, 250), 4: to_normalised(4, 6000), 5: to_normalised(5, 40)}
        values = {number: float(f"{value:.6g}") for number, value in values.items()}
        self.start_with_song(values, PROGRAMS, loop=False)
        # qtractor blends the end of a clip, which the last frames of the engine have in them.
        frames = SECONDS * RATE - 4096
        begun = write_wav(self.work / "begun.wav", read_wav(self.song)[:frames])

        def play():
            heard = self.play_song()
            # The song begins with one of JACK's blocks, as the recording does; its first sound is half a second later,
            # and up to the plug-in's delay.
            last = (first_sound(heard) - RATE // 2) // PERIOD
            best = min((self.compare(begun, write_wav(self.work / "turn.wav", heard[block * PERIOD:][:frames]), *lanes(values))
                        for block in range(last - 2, last + 1)), key=lambda verdict: verdict["difference"])
            print(f"    played: {best}", file=sys.stderr)
            self.assertEqual(best["frames"], frames)
            if best["difference"] > ROUNDING:
                raise Stuck(f"a difference of {best['difference']:.2g}")

        self.start_up("a turn without a gap", play, times=4)

    def test_drag_in_the_editor_changes_the_sound(self):
        window = self.start_with_song(programs=PROGRAMS)
        editor = self.open_editor(window)
        self.transport("play")
        time.sleep(1)
        before = np.abs(self.start_up("the recorder", self.record)).max()
        self.drag_output(editor, "qtractor")
        dragged = self.turn_output(editor)
        time.sleep(1)
        after = np.abs(self.start_up("the recorder", self.record)).max()
        print(f"    peak before {before:.3f}, after {after:.3f}", file=sys.stderr)
        self.assertGreater(before, 0.05)
        self.assertGreater(after, 0.001)
        self.assertLess(after, 0.7 * before)

        # The session that qtractor saves has all that it opened, and what the drag changed. So has the one that it
        # saves after it was ended and opened the first one again.
        output = self.assert_saved(window, below=0.8 * PROGRAMS[CURRENT][1])
        end_all()
        self.start_display()
        window = self.open_session()
        editor = self.open_editor(window)
        self.assertEqual(self.fader(editor), dragged)
        self.drag_output(editor, "qtractor-again", 80, 100)
        self.assert_saved(window, below=0.9 * output)

    def assert_saved(self, window, below):
        """The session has all values and programs as they were set; the Output that was dragged."""
        text, values = self.save(window)
        programs = unpack_as_qt(re.search('<config key="chunk">(.*?)</config>', text, re.DOTALL)[1])
        output = programs[CURRENT][1]
        self.assertTrue(0.01 < output < below, output)
        changed = PROGRAMS[CURRENT]
        expected = [*PROGRAMS[:CURRENT], (changed[0], output, *changed[2:]), *PROGRAMS[CURRENT + 1:]]
        self.assertEqual(sorted(values), list(range(6)))
        self.assert_programs(programs, values, expected)
        return output


class QtractorLv2(QtractorTest):
    def test_keeps_its_values_and_follows_the_panel(self):
        # By the numbers of the ports, as sessions keep them.
        expected = {4: 1.0, 5: 3.9, 6: -3.0, 7: 250.0, 8: 6000.0, 9: 40.0}
        self.offer_lv2()
        window = self.start_with_song(expected, lv2=True)
        self.drag_output(self.open_editor(window), "qtractor-lv2", 60, 110)
        _, values = self.save(window)
        self.assertLess(values.pop(5), 0.0)
        for port, value in values.items():
            self.assertAlmostEqual(value, expected[port], places=4)


if __name__ == "__main__":
    main()
