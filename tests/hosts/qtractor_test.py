# SPDX-License-Identifier: MIT
"""qtractor: what its scanner says of the plug-in, and the editor in its window, while a song plays through JACK."""

import array
import os
import re
import shutil
import sys
import time
import unittest
import wave
from pathlib import Path

from support import OUTPUT_FADER, RATE, HostStuck, HostTest, end_all, has_editor, main, panel_size, peak, song, write_wav

SCANNER = "/usr/lib/x86_64-linux-gnu/qtractor/qtractor_plugin_scan"
NO_SEQUENCER = Path(os.environ.get("VOCAFADE_NO_SEQUENCER", "build/release/tests/vocafade-no-sequencer.so")).resolve()
PLUGIN_ENTRY = (185, 180)  # the plug-in's name beside its track, in the main window
SECONDS = 4  # the song's length, which plays in a loop

SESSION = """<!DOCTYPE qtractorSession>
<session version="0.9.31" name="session">
 <properties>
  <directory>{folder}</directory>
  <sample-rate>{rate}</sample-rate>
  <tempo>120</tempo>
  <ticks-per-beat>960</ticks-per-beat>
  <beats-per-bar>4</beats-per-bar>
 </properties>
 <state>
  <loop-start>0</loop-start>
  <loop-end>{frames}</loop-end>
 </state>
 <tracks>
  <track name="Song" type="audio">
   <properties>
    <input-bus>Master</input-bus>
    <output-bus>Master</output-bus>
   </properties>
   <state>
    <gain>1</gain>
    <panning>0</panning>
   </state>
   <view>
    <height>96</height>
   </view>
   <clips>
    <clip name="song">
     <properties>
      <name>song</name>
      <start>0</start>
      <offset>0</offset>
      <length>{frames}</length>
      <gain>1</gain>
     </properties>
     <audio-clip>
      <filename>{song}</filename>
      <time-stretch>1</time-stretch>
      <pitch-shift>1</pitch-shift>
     </audio-clip>
    </clip>
   </clips>
   <plugins>
    <plugin type="VST2">
     <filename>{plugin}</filename>
     <index>0</index>
     <label>Vocafade</label>
     <activated>1</activated>
    </plugin>
   </plugins>
  </track>
 </tracks>
</session>
"""


class Qtractor(HostTest):
    def setUp(self):
        super().setUp()
        self.servers = []
        self.addCleanup(self.remove_leftovers)

    def remove_leftovers(self):
        """JACK's servers put sockets and files with their name into shared memory; killed, they leave them there."""
        end_all(folders_too=False)
        for server in self.servers:
            for left in Path("/dev/shm").glob(f"*{server}*"):
                shutil.rmtree(left, ignore_errors=True) if left.is_dir() else left.unlink(missing_ok=True)

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

    def jack_ports(self):
        return self.run_program(["jack_lsp"], check=False)

    def start_with_song(self):
        """JACK without hardware, and qtractor with a session that has the plug-in on a track."""
        self.environment["QT_QPA_PLATFORM"] = "xcb"
        self.start_display()
        path = self.work / "song.wav"
        write_wav(path, *song(SECONDS))
        session = self.work / "session.qtr"
        session.write_text(SESSION.format(folder=self.work, rate=RATE, frames=SECONDS * RATE, song=path,
                                          plugin=self.plugin), encoding="utf-8")

        def start():
            # A name of its own, as JACK's servers share a folder. It waits for its clients, however busy the machine is.
            server = f"vocafade-{os.getpid()}-{len(self.servers)}"
            self.servers.append(server)
            self.environment["JACK_DEFAULT_SERVER"] = server
            jack = self.start(["jackd", "-n", server, "-p", 128, "-r", "-S", "-t", 20000, "-d", "dummy", "-r", RATE, "-p", 1024],
                              "qtractor-jack.log")
            self.wait_for("JACK", lambda: "playback_1" in self.jack_ports(), process=jack)
            process = self.start(["qtractor", session], "qtractor.log", LD_PRELOAD=str(NO_SEQUENCER))
            self.wait_for("qtractor's ports", lambda: "Master/out_1" in self.jack_ports(), process=process)
            return self.wait_for("qtractor's window", lambda: self.windows("session.qtr"), process=process)[-1]

        return self.start_up("qtractor with JACK", start)

    def open_editor(self, window):
        """A double click on the plug-in's name opens its editor; an early one, before the entry is drawn, is lost."""
        for _ in range(4):
            time.sleep(1)
            self.xdotool("mousemove", "--window", window, *PLUGIN_ENTRY, "click", "--repeat", 2, "--delay", 80, 1)
            try:
                return self.wait_for("the plug-in's window", self.editor_window, timeout=12)
            except HostStuck as reason:
                print(f"    {reason}; again", file=sys.stderr)
        return self.fail("qtractor does not open the plug-in's window")

    def transport(self, *commands):
        self.run_program(["jack_transport"], given="\n".join([*commands, "quit", ""]), check=False)

    def editor_window(self):
        """The number of the plug-in's own window: the innermost of its size."""
        width, height = panel_size()
        found = re.findall(rf"^\s+(0x[0-9a-f]+) .*? {width}x{height}\+", self.run_program(["xwininfo", "-root", "-tree"]),
                           re.M)
        return found[-1] if len(found) >= 2 else None

    def record(self, name):
        """One whole turn of the loop, as it leaves qtractor: the greatest sample of both channels."""
        path = self.work / name
        self.run_program(["jack_rec", "-f", path, "-d", SECONDS, "-b", 32, "Qtractor:Master/out_1",
                          "Qtractor:Master/out_2"], timeout=60)
        with wave.open(str(path)) as file:
            samples = array.array("i")
            samples.frombytes(file.readframes(file.getnframes()))
        self.assertGreater(len(samples), 2 * RATE)
        return peak(samples) / 2 ** 31

    @unittest.skipUnless(has_editor(), "this build's editor has no window")
    def test_drag_in_the_editor_changes_the_sound(self):
        window = self.start_with_song()
        editor = self.open_editor(window)
        untouched = self.wait_for_picture(editor, OUTPUT_FADER)
        self.transport("play")
        time.sleep(1)
        before = self.record("before.wav")
        self.screenshot("qtractor-before.png")
        self.drag(editor, OUTPUT_FADER, 40, 80)
        self.wait_for_picture(editor, OUTPUT_FADER, other_than=untouched)
        time.sleep(1)
        after = self.record("after.wav")
        self.screenshot("qtractor.png")
        print(f"    peak before {before:.3f}, after {after:.3f}")
        self.assertGreater(before, 0.05)
        self.assertGreater(after, 0.001)
        self.assertLess(after, 0.7 * before)


if __name__ == "__main__":
    main()
