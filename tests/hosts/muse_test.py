# SPDX-License-Identifier: MIT
"""MusE: what its scanner says of the plug-in, and a song with it, opened, saved and opened again."""

import sys
import xml.etree.ElementTree as xml

from support import CURRENT, IDENTIFIER, NAMES, NO_HARDWARE, PROGRAMS, HostTest, pack_as_qt, unpack_as_qt
from alone import RATE, end, main

CONFIG = """<?xml version="1.0"?>
<muse version="3.3"><configuration><showDidYouKnow>0</showDidYouKnow></configuration></muse>
"""
SONG = """<?xml version="1.0"?>
<muse version="3.3">
  <song>
    <len>230400</len> <sampleRate>{rate}</sampleRate>
    <wavetrack>
      <name>Song</name> <channels>2</channels>
      <plugin file="Vocafade" label="Vocafade" channel="2">
        <customData>{chunk}</customData>
{values}
        <on>1</on>
      </plugin>
    </wavetrack>
  </song>
</muse>
"""


class MusE(HostTest):
    def test_scanner_describes_the_plug_in(self):
        notes = self.work / "notes"
        notes.touch()
        self.run_program("muse_plugin_scan", "-t", 255, "-f", self.plugin, "-o", notes)
        plugin = xml.parse(notes).getroot().find("plugin")
        expected = {"name": "Vocafade", "maker": "VELMORAX Co.,Ltd.", "uniqueID": str(IDENTIFIER), "inports": "2",
                    "outports": "2", "ctlInports": "6", "apiVersionMajor": "2400"}
        self.assertEqual({key: plugin.findtext(key) for key in expected}, expected)

    def open_and_save(self):
        """What MusE saves of the song: its 64 programs, and the values by their names."""
        def start():
            process = self.start("muse", "-a", self.song, LD_PRELOAD=str(NO_HARDWARE), QT_QPA_PLATFORM="xcb",
                                 LXVST_PATH=str(self.plugin.parent.parent))
            return process, self.wait_for("MusE's window", lambda: self.windows("MusE Project: song"), 30, process)[-1]

        process, window = self.start_up("MusE", start)

        def saved():
            self.xdotool("windowfocus", window, "key", "ctrl+s")
            return (self.song.stat().st_mtime_ns != before
                    and self.song.read_text(encoding="utf-8").rstrip().endswith("</muse>"))

        before = self.song.stat().st_mtime_ns
        self.wait_for("the saved song", saved, process=process)
        end(process)
        plugin = xml.parse(self.song).getroot().find(".//plugin[@label='Vocafade']")
        controls = {control.get("name"): float(control.get("val")) for control in plugin.findall("control")}
        return unpack_as_qt(plugin.findtext("customData")), controls

    def test_song_brings_back_all_programs_and_values(self):
        settings = self.home / ".config/MusE/MusE"
        settings.mkdir(parents=True)
        (settings / "MusE-seq.cfg").write_text(CONFIG, encoding="utf-8")
        self.start_display()
        self.song = self.work / "song.med"
        controls = "\n".join(f'<control name="{name}" val="{value}" />'
                             for name, value in zip(NAMES, PROGRAMS[CURRENT]))
        self.song.write_text(SONG.format(rate=RATE, chunk=pack_as_qt(PROGRAMS), values=controls), encoding="utf-8")
        for turn in range(2):
            programs, saved = self.open_and_save()
            print(f"    turn {turn}: {saved}", file=sys.stderr)
            self.assertEqual(list(saved), list(NAMES))
            self.assert_programs(programs, list(saved.values()), PROGRAMS)


if __name__ == "__main__":
    main()
