# SPDX-License-Identifier: MIT
"""qtractor: what its scanner says of the plug-in, and the editor in its window, while a song plays through JACK."""

import array
import re
import sys
import threading
import time
import unittest
import wave

from support import (CURRENT, NO_SEQUENCER, OUTPUT_FADER, PERIOD, PROGRAMS, RATE, HostStuck, HostTest, end_all,
                     has_editor, main, pack_as_qt, peak, read_wav, song, to_normalised, unpack_as_qt, write_wav)

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
{state}
    </plugin>
   </plugins>
  </track>
 </tracks>
</session>
"""
ROUNDING = 1e-9  # what is recorded are whole numbers of 32 bits


def state_of(programs, parameters=None):
    """What a session keeps of the plug-in: its chunk, packed as Qt does it, and values that are set afterwards."""
    values = "".join(f'<param index="{number}">{value}</param>' for number, value in (parameters or {}).items())
    return f'<configs><config key="chunk">{pack_as_qt(programs)}</config></configs>\n<params>{values}</params>'


class QtractorSession(HostTest):
    """A session with one track and the plug-in on it."""

    kind = "VST2"
    name = None  # what qtractor knows the plug-in by, if not by its file

    def start_with_song(self, state="", loop=True):
        """JACK without hardware, and qtractor with a session that has the plug-in on a track. `state` is what the
        session keeps of the plug-in."""
        self.environment["QT_QPA_PLATFORM"] = "xcb"
        self.start_display()
        self.song = self.work / "song.wav"
        write_wav(self.song, *song(SECONDS))
        frames = SECONDS * RATE
        self.session = self.work / "session.qtr"
        text = SESSION.format(folder=self.work, rate=RATE, frames=frames, loop=frames if loop else 0, song=self.song,
                              kind=self.kind, plugin=self.name or self.plugin, label=self.name or "Vocafade",
                              state=state)
        self.session.write_text(text, encoding="utf-8")
        return self.open_session()

    def open_session(self):
        def start():
            self.start_jack()
            process = self.start(["qtractor", self.session], "qtractor.log", LD_PRELOAD=str(NO_SEQUENCER))
            self.wait_for("qtractor's ports", lambda: "Master/out_1" in self.jack_ports(), process=process)
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


class Qtractor(QtractorSession):
    def scan(self, path):
        return self.run_program([SCANNER], given=f"VST:{path}\n").strip()

    def test_scanner_describes_the_plug_in(self):
        line = self.scan(self.plugin)
        # Type, name, audio channels, MIDI, parameters in and out, flags, file, index, identifier ('VfdQ').
        self.assertEqual(line, f"VST|Vocafade|2:2|0:0|6:0|GUI,EXT,RT|{self.plugin}|0|0x56666451")

    def test_scanner_refuses_what_is_no_plug_in(self):
        other = self.plugin.with_name("Other.so")
        other.write_bytes(b"no shared object")
        self.assertFalse(self.scan(other).startswith("VST|"))

    def transport(self, *commands):
        self.run_program(["jack_transport"], given="\n".join([*commands, "quit", ""]), check=False)

    def record(self, name, seconds=SECONDS):
        """What leaves qtractor in this time: the samples of both channels, one after the other, as JACK had them (but
        for what is below 2^-31)."""
        path = self.work / name
        said = self.run_program(["jack_rec", "-f", path, "-d", seconds, "-b", 32, "-B", 1 << 18,
                                 "Qtractor:Master/out_1", "Qtractor:Master/out_2"], timeout=90)
        if "overrun" in said:
            raise HostStuck("the recorder lost samples")
        with wave.open(str(path)) as file:
            samples = array.array("i")
            samples.frombytes(file.readframes(file.getnframes()))
        self.assertGreater(len(samples), 2 * RATE)
        return array.array("d", (sample / 2 ** 31 for sample in samples))

    def play_song(self):
        """Records the song from its start on, without the silence of the song itself: (left, right)."""
        self.transport("stop", "locate 0")
        time.sleep(1)
        start = threading.Timer(2, self.transport, ["play"])
        start.start()
        try:
            samples = self.record("played.wav", SECONDS + 5)
        finally:
            start.join()
        self.transport("stop")
        self.screenshot("qtractor-played.png")
        first = next((i // 2 for i, sample in enumerate(samples) if sample), 0)
        self.assertGreater(first, 0, "nothing was played")
        return samples, first

    def test_sound_is_our_own_to_the_sample(self):
        # Other values than the chunk's: qtractor sets them after it, as a session keeps them.
        values = [1.0, 0.6, 0.8, to_normalised(3, 250.0), to_normalised(4, 6000.0), to_normalised(5, 40)]
        values = [float(f"{value:.6g}") for value in values]
        self.start_with_song(state_of(PROGRAMS, dict(enumerate(values))), loop=False)
        changes = [f"0:{number}:{value}" for number, value in enumerate(values)]

        # qtractor blends the end of a clip, which the last frames of the engine have in them.
        frames = SECONDS * RATE - 4096
        begun, played = self.work / "begun.wav", self.work / "turn.wav"
        write_wav(begun, *(side[:frames] for side in read_wav(self.song)[:2]))

        def play():
            samples, first = self.play_song()
            # The song begins with one of JACK's blocks, as the recording does; its first sound is half a second later,
            # and up to the plug-in's delay.
            best = 1.0
            for start in range(0, first + 1, PERIOD):
                if RATE // 2 <= first - start < RATE // 2 + 3 * PERIOD:
                    turn = samples[2 * start:2 * (start + frames)]
                    write_wav(played, turn[0::2], turn[1::2])
                    best = min(best, self.compare(begun, played, *changes)["difference"])
            print(f"    played: difference {best:.2g}", file=sys.stderr)
            if best > ROUNDING:
                raise HostStuck(f"a difference of {best:.2g}")

        self.start_up("a turn without a gap", play, times=4)

    @unittest.skipUnless(has_editor(), "this build's editor has no window")
    def test_drag_in_the_editor_changes_the_sound(self):
        window = self.start_with_song(state_of(PROGRAMS))
        editor = self.open_editor(window)
        untouched = self.wait_for_picture(editor, OUTPUT_FADER)
        self.transport("play")
        time.sleep(1)
        before = peak(self.record("before.wav"))
        self.drag_output(editor, "qtractor", before=untouched)
        self.turn_output(editor)
        time.sleep(1)
        after = peak(self.record("after.wav"))
        print(f"    peak before {before:.3f}, after {after:.3f}", file=sys.stderr)
        self.assertGreater(before, 0.05)
        self.assertGreater(after, 0.001)
        self.assertLess(after, 0.7 * before)

        # The session that qtractor saves has all that it opened, and what the drag changed. So has the one that it
        # saves after it was ended and opened the first one again.
        output = self.assert_saved(window, below=0.8 * PROGRAMS[CURRENT][1])
        dragged = self.picture(editor, OUTPUT_FADER)
        end_all(folders_too=False)
        self.start_display()
        window = self.open_session()
        editor = self.open_editor(window)
        self.assertEqual(self.wait_for_picture(editor, OUTPUT_FADER), dragged)
        self.drag_output(editor, "qtractor-again", 80, 100, before=dragged)
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
        self.assert_programs(programs, values, expected, CURRENT)
        return output


if __name__ == "__main__":
    main()
