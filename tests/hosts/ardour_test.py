# SPDX-License-Identifier: MIT
"""Ardour: its scanner, a session by its Lua interpreter, a rendering by its export, the session opened again."""

import base64
import shutil
import sys
import time
import xml.etree.ElementTree as xml
from pathlib import Path

import numpy as np
from support import CURRENT, IDENTIFIER, NAMES, PERIOD, PROGRAMS, HostTest, pack, unpack
from alone import RATE, Stuck, end_all, lanes, main, read_wav, song, to_normalised, write_wav

LIBRARY = "/usr/lib/ardour7"
FRAMES = 4 * RATE  # of the song
SUPERCLOCK = 282240000  # Ardour's ticks a second
TRACK = (40, 344)  # where its name stands in the main window
PLUGIN_ENTRY = (55, 190)  # the plug-in's name in the strip of the track's mixer
# Ardour's own controls of a plug-in: the y of a parameter's bar, and from where to where it is dragged.
OWN_BARS = {3: (206, 90, 190), 4: (225, 150, 110), 5: (244, 170, 90)}
OWN_BAR_WIDTH = 195
# Where lanes change, by parameter. Ardour keeps these times in ticks of a beat: at 120 beats a minute multiples of 735
# samples are whole ones. It splits a block only at the last point of a lane (see docs/hosts.md), so that each has one change.
POINTS = {1: 735 * 75, 2: 735 * 96, 3: 735 * 109, 4: 735 * 122, 5: 735 * 138, 0: 735 * 170}
CONFIG = """<?xml version="1.0" encoding="UTF-8"?>
<Ardour><Config>
 <Option name="try-autostart-engine" value="1"/> <Option name="hide-dummy-backend" value="0"/>
 <Option name="discover-plugins-on-start" value="0"/> <Option name="use-plugin-own-gui" value="1"/>
</Config></Ardour>
"""
ENGINE = f"""<?xml version="1.0" encoding="UTF-8"?>
<instant><AudioMIDISetup><EngineStates>
   <State backend="None (Dummy)" driver="Normal Speed" device="Silence" input-device="Silence" output-device="Silence"
    sample-rate="{RATE}" buffer-size="{PERIOD}" active="1" use="1"/>
</EngineStates></AudioMIDISetup></instant>
"""
CHUNK = ".//Processor[@type='lxvst']/lxvst/chunk"  # the plug-in's state in a session
PRESET_ID = "b3ad5a86-5aa2-4f5a-9d4f-6f6d1f5b5ac1"
# Ardour's own format "BWAV 32float Export": nothing is normalised or trimmed.
FLOAT_FORMAT = "20b4ab09-6452-4cb3-bd66-b921cdbd2942"
PRESET = f"""<?xml version="1.0" encoding="UTF-8"?>
<ExportPreset id="{PRESET_ID}" name="Float">
 <ExportFormat id="{FLOAT_FORMAT}"/>
 <ExportFilename>
  <Folder relative="true" path="/export"/>
  <Field name="label" enabled="false"/> <Field name="session" enabled="false"/>
  <Field name="revision" enabled="false"/>
  <Field name="time" enabled="false" value="T_None"/> <Field name="date" enabled="false" value="D_None"/>
 </ExportFilename>
</ExportPreset>
"""


class ArdourSession(HostTest):
    """A session with one track and the plug-in on it."""

    def setUp(self):
        super().setUp()
        self.environment.update({
            "LD_LIBRARY_PATH": LIBRARY, "ARDOUR_DATA_PATH": "/usr/share/ardour7", "ARDOUR_CONFIG_PATH": "/etc/ardour7",
            "ARDOUR_DLL_PATH": LIBRARY, "LXVST_PATH": str(self.plugin.parent.parent)})
        self.session = self.work / "session"
        self.file = self.session / "session.ardour"

    def scan(self):
        """Ardour's notes about the plug-in: their file."""
        self.run_program(f"{LIBRARY}/ardour-vst-scanner", "-f", "-v", self.plugin)
        [notes] = (self.home / ".cache/ardour7/vst").glob("*.v2i")
        return notes

    def lua(self, step, *arguments, last="done"):
        """Does a step of ardour.lua. What it prints: the words of each line that has tabs. What comes after the line that
        begins with `last` does not count."""
        out = self.run_program(f"{LIBRARY}/luasession", Path(__file__).with_name("ardour.lua"), self.session, step,
                               *arguments, code=None)
        lines = [line.split("\t") for line in out.splitlines() if "\t" in line]
        if "Error:" in out or last not in (line[0] for line in lines):
            raise Stuck(f"Ardour's Lua interpreter said:\n{out[-4000:]}")
        return lines

    def make_session(self):
        self.scan()
        return self.lua("make", "LXVST", "Vocafade")

    def set(self, *words):
        """Sets values and lanes, as ardour.lua has them; the values by number."""
        return {int(line[1]): float(line[2]) for line in self.lua("set", *words) if line[0] == "value"}

    def lay_song(self):
        """Lays a song onto the track, from the session's start, and sends the track to the master bus; its file."""
        path = write_wav(self.work / "song.wav", song(FRAMES / RATE))
        tree = xml.parse(self.file)
        root = tree.getroot()
        length = FRAMES * SUPERCLOCK // RATE
        for channel in (0, 1):
            xml.SubElement(root.find("Sources"), "Source", {
                "name": path.name, "take-id": "", "type": "audio", "flags": "", "id": str(9000 + channel),
                "channel": str(channel), "origin": str(path), "gain": "1"})
        xml.SubElement(root.find("Playlists/Playlist"), "Region", {
            "name": "song", "id": "9002", "type": "audio", "channels": "2", "start": "a0", "length": f"a{length}@a0",
            "opaque": "1", "default-fade-in": "0", "default-fade-out": "0", "fade-in-active": "0", "fade-out-active": "0",
            "source-0": "9000", "source-1": "9001"})
        xml.SubElement(root.find("Locations"), "Location", {
            "id": "9003", "name": "session", "start": "a0", "end": f"a{length}", "flags": "IsSessionRange"})
        track = root.find("Routes/Route[@name='Song']")
        for port in track.findall("IO[@direction='Output']/Port"):
            side = port.get("name")[-1]
            xml.SubElement(port, "Connection", {"other": f"Master/audio_in {side}"})
        tree.write(self.file)
        return path

    def bounce(self, name):
        """Renders the track with its plug-in; Ardour makes a file of each channel, and they become one."""
        self.assertIn(["bounced", "true"], self.lua("bounce", FRAMES))
        sides = [self.session / f"interchange/session/audiofiles/bounced%{side}.wav" for side in "LR"]
        path = write_wav(self.work / name, np.stack([read_wav(side) for side in sides], axis=1))
        for side in sides:
            side.unlink()
        return path

    def export(self):
        """Renders the session, in its master bus; again if Ardour died on the way."""
        presets = self.home / ".config/ardour7/export"
        presets.mkdir(parents=True)
        (presets / "float.preset").write_text(PRESET, encoding="utf-8")
        folder = self.work / "export"

        def render():
            shutil.rmtree(folder, ignore_errors=True)
            folder.mkdir()
            if ["rendered", "true"] not in self.lua("export", folder, PRESET_ID, last="rendered"):
                raise Stuck("it says that it failed")
            return next(folder.glob("*.wav"))

        return self.start_up("Ardour's export", render, times=8)

    def chunk(self):
        """The 64 programs as the saved session holds them."""
        return unpack(base64.b64decode(xml.parse(self.file).getroot().findtext(CHUNK)))

    def put_chunk(self, records):
        tree = xml.parse(self.file)
        tree.getroot().find(CHUNK).text = base64.b64encode(pack(records)).decode()
        tree.write(self.file)

    def start_window(self):
        """Ardour itself with the session; it asks no questions."""
        libraries = self.work / "libraries"
        (libraries / "backends").mkdir(parents=True)
        for file in Path(LIBRARY).iterdir():
            if file.name != "backends":
                (libraries / file.name).symlink_to(file)
        backend = "backends/libdummy_audiobackend.so"
        (libraries / backend).symlink_to(Path(LIBRARY) / backend)
        settings = self.home / ".config/ardour7"
        settings.mkdir(parents=True, exist_ok=True)
        (settings / ".a7").touch()  # not its first start
        (settings / "config").write_text(CONFIG, encoding="utf-8")
        (settings / "instant.xml").write_text(ENGINE, encoding="utf-8")
        tree = xml.parse(self.file)
        for hints in tree.getroot().findall("EngineHints"):
            tree.getroot().remove(hints)
        tree.write(self.file)
        self.environment.update({"ARDOUR_DLL_PATH": str(libraries), "GTK_PATH": f"/etc/ardour7:{LIBRARY}"})
        self.start_display()

        def start():
            process = self.start(next(Path(LIBRARY).glob("ardour-7*")), "--no-splash", "--no-announcements", self.session)
            return process, self.wait_for("Ardour's window", lambda: self.windows("session - Ardour"), 45, process)[-1]

        return self.start_up("Ardour", start)

    def open_editor(self, window, opened, *modifier):
        """Opens a window of the plug-in's from the strip of the track's mixer: the panel, or with Alt the controls that
        Ardour makes for every plug-in. The value of `opened`."""
        hold, let_go = [[f"key{way}", *modifier] if modifier else [] for way in ("down", "up")]

        def gesture(attempt):
            time.sleep(2)
            if attempt % 2 == 0:
                self.xdotool("mousemove", *TRACK, "click", 1)
                time.sleep(1)
                self.xdotool("windowfocus", window, "key", "shift+e")  # shows the strip, or hides it
                time.sleep(2)
            self.xdotool("mousemove", *PLUGIN_ENTRY, *hold, "click", "--repeat", 2, "--delay", 80, 1, *let_go)

        return self.open_until(opened, gesture, times=6, patience=8)

    def save(self, process, window):
        """Has the window save its session, and ends it."""
        text = self.file.read_bytes()
        self.xdotool("windowfocus", window, "key", "ctrl+s")
        self.wait_for("the saved session", lambda: self.file.read_bytes() not in (text, b""), process=process)
        end_all()


class Ardour(ArdourSession):
    def test_its_own_controls_span_the_whole_range(self):
        self.make_session()
        self.lay_song()
        process, window = self.start_window()
        self.open_editor(window, lambda: self.windows("Vocafade"), "alt")
        was = self.chunk()[0]
        for place, start, end in OWN_BARS.values():
            time.sleep(2)  # or it is a double click
            self.slide(lambda x, y=place: (x, y), start, end)
        self.screenshot("ardour-own-controls.png")
        self.save(process, window)
        now = self.chunk()[0]
        print(f"    from {was[:6]} to {now[:6]}", file=sys.stderr)
        for number in range(6):
            _, start, end = OWN_BARS.get(number, (0, 0, 0))
            self.assertAlmostEqual(now[number], was[number] + (end - start) / OWN_BAR_WIDTH, delta=0.03)

    def test_drag_in_the_editor_changes_the_sound(self):
        self.make_session()
        path = self.lay_song()
        process, window = self.start_window()
        editor = self.open_editor(window, self.panel_window)
        self.drag_output(editor, "ardour")
        self.turn_output(editor)
        was = self.chunk()[0]
        self.save(process, window)
        now = self.chunk()[0]
        self.assertLess(now[1], 0.8 * was[1])
        self.assertEqual((now[0], *now[2:]), (was[0], *was[2:]))
        self.environment["ARDOUR_DLL_PATH"] = LIBRARY
        self.assert_same_sound(path, self.bounce("dragged.wav"), *lanes(dict(enumerate(now[:6]))))

    def test_scanner_describes_the_plug_in(self):
        info = xml.parse(self.scan()).getroot().find("VST2Info").attrib
        expected = {"id": str(IDENTIFIER), "name": "Vocafade", "creator": "VELMORAX Co.,Ltd.", "category": "Effect",
                    "n_inputs": "2", "n_outputs": "2", "n_midi_inputs": "0", "is_instrument": "0",
                    "can_process_replace": "1", "has_editor": "1"}
        self.assertEqual({key: info[key] for key in expected}, expected)

    def test_rendering_is_our_own_to_the_sample(self):
        facts = self.make_session()
        self.assertIn(["plugin", "Vocafade", "VELMORAX Co.,Ltd.", str(IDENTIFIER), "2", "2"], facts)
        # Nothing is reported as latency.
        self.assertIn(["instance", "Vocafade", "VELMORAX Co.,Ltd.", "6", "0"], facts)
        # Its generic controls and its lanes: each parameter by its own name, from 0 to 1.
        described = [line[1:] for line in facts if line[0] == "parameter"]
        self.assertEqual(described, [[str(n), name, "0", "1", "false", "false"] for n, name in enumerate(NAMES)])
        path = self.lay_song()
        settings = {1: 0.6, 2: 0.8, 3: to_normalised(3, 250), 4: to_normalised(4, 6000), 5: 0.3}
        self.set(*(f"{n}={value}" for n, value in settings.items()))
        for n, value in settings.items():
            self.assertAlmostEqual(self.chunk()[0][n], value, places=6)
        # Ardour opens the session again for these.
        self.assert_same_sound(path, self.export(), *lanes(settings))
        # It stops and starts the plug-in for a bounce, which then removes the middle until Position is sent again.
        del settings[5]
        self.assert_same_sound(path, self.bounce("bounced.wav"), *lanes(settings))

    def test_automation_is_exact_to_the_sample(self):
        self.make_session()
        path = self.lay_song()
        begin = {0: 1, 1: 0.5, 2: 1, 3: to_normalised(3, 100), 4: to_normalised(4, 9000), 5: to_normalised(5, 64)}
        change = {1: (POINTS[1], 0.9), 2: (POINTS[2], 0.5), 3: (POINTS[3], to_normalised(3, 2000)),
                  4: (POINTS[4], to_normalised(4, 3000)), 5: (POINTS[5], 0.1), 0: (POINTS[0], 0)}
        self.set(*lanes(begin, change))
        automated = self.bounce("automated.wav")
        self.assert_same_sound(path, automated, *lanes(begin, change))
        # The comparison itself sees a change that comes late; the band and the position are read once a frame.
        for parameter, (sample, value) in change.items():
            late = {**change, parameter: (sample + (341 if parameter in (3, 4, 5) else 1), value)}
            self.assertGreater(self.compare(path, automated, *lanes(begin, late))["difference"], 1e-5, parameter)

    def test_session_brings_back_all_programs(self):
        self.make_session()
        self.assertEqual({record[6].rstrip(b"\0") for record in self.chunk()}, {b"Empty"})
        self.put_chunk(PROGRAMS)
        values = self.set()
        for parameter in range(1, 6):
            self.assertAlmostEqual(values[parameter], PROGRAMS[CURRENT][parameter], places=6)
        self.assertEqual(pack(self.chunk()), pack(PROGRAMS))


if __name__ == "__main__":
    main()
