# SPDX-License-Identifier: MIT
"""Audacity: its scan at start-up, the effect by its script pipe, the editor in its dialog."""

import configparser
import os
import re
import shutil
import time
import unittest
from pathlib import Path

from support import (COMMAND, OUTPUT_FADER, HostTest, has_editor, main, panel_size, peak, peak_difference, read_wav, song,
                     to_normalised, write_bank, write_wav)

MODULE = "/usr/lib/audacity/modules/mod-script-pipe.so"
PIPES = [Path(f"/tmp/audacity_script_pipe.{way}.{os.getuid()}") for way in ("to", "from")]
FLOAT_WAV = 6  # libsndfile's number for 32-bit floats


class Audacity(HostTest):
    def setUp(self):
        super().setUp()
        if any(pipe.exists() for pipe in PIPES):
            self.skipTest("another Audacity has its script pipe open")
        self.config = self.home / ".config/audacity"
        self.config.mkdir()
        changed = time.strftime("%Y-%m-%dT%H:%M:%S", time.localtime(os.stat(MODULE).st_mtime))
        self.temporary = self.work / "temporary"
        self.temporary.mkdir()
        (self.config / "audacity.cfg").write_text(f"""NewPrefsInitialized=1
PrefsVersion=1.1.1r1
[Version]
Major=3
Minor=2
Micro=4
[Locale]
Language=en
[GUI]
ShowSplashScreen=0
[Update]
DefaultUpdatesChecking=0
UpdateNoticeShown=1
[Directories]
TempDir={self.temporary}
[FileFormats/ExportFormat_SF1_Type]
WAV_10000={FLOAT_WAV}
[Effects]
GroupBy=publisher
[Module]
mod-script-pipe=1
[ModulePath]
mod-script-pipe={MODULE}
[ModuleDateTime]
mod-script-pipe={changed}
""", encoding="utf-8")
        # Audacity hands a new effect the plug-in's own state, so the user's bank is what it starts from.
        self.values = [1.0, 0.6, 0.8, to_normalised(3, 250.0), to_normalised(4, 6000.0), to_normalised(5, 64)]
        write_bank(self.home / ".config/VocafadeDef.fxb", self.values)
        self.start_display()
        self.pipes = []

    def tearDown(self):
        for pipe in self.pipes:
            pipe.close()
        super().tearDown()
        for pipe in PIPES:
            pipe.unlink(missing_ok=True)

    def launch(self, log):
        """Starts Audacity and connects; its scan of the plug-ins comes first."""
        process = self.start(["dbus-run-session", "audacity"], log)

        def ready():
            # Other plug-ins of this machine may not please it; it says so in a dialogue that waits.
            if self.windows("Incompatible"):
                self.xdotool("key", "Return", check=False)
            return all(pipe.exists() for pipe in PIPES)

        self.wait_for("Audacity's script pipe", ready, timeout=120)
        self.pipes = [open(PIPES[0], "w", encoding="utf-8"), open(PIPES[1], encoding="utf-8")]
        self.wait_for("Audacity's window", lambda: self.windows("^Audacity$"))
        return process

    def quit(self, process):
        for pipe in self.pipes:
            pipe.close()
        self.pipes = []
        self.stop(process)
        for pipe in PIPES:
            pipe.unlink(missing_ok=True)

    def tell(self, command):
        """Sends a command down the pipe; its answer must be that all is well."""
        self.pipes[0].write(command + "\n")
        self.pipes[0].flush()
        lines = []
        while not (lines and lines[-1] == "\n" and len(lines) > 1):
            line = self.pipes[1].readline()
            self.assertTrue(line, f"Audacity went away at {command!r}")
            lines.append(line)
        answer = "".join(lines)
        self.assertIn("BatchCommand finished: OK", answer, command)
        return answer

    def registry(self):
        """What Audacity noted about the plug-in: a dictionary."""
        text = (self.config / "pluginregistry.cfg").read_text(encoding="utf-8")
        for block in text.split("\n["):
            if f"Path={self.plugin};0\n" in block:
                parser = configparser.ConfigParser(interpolation=None, strict=False)
                parser.optionxform = str
                parser.read_string("[" + block)
                return dict(parser[parser.sections()[0]])
        return None

    def open_song(self):
        path = self.work / "song.wav"
        write_wav(path, *song())
        self.tell(f"Import2: Filename={path}")
        self.tell("SelectAll:")
        return path

    def test_registers_the_plug_in_and_renders_as_we_do(self):
        self.launch("audacity.log")
        entry = self.wait_for("the plug-in's entry", self.registry)
        expected = {"Symbol": "Vocafade", "Name": "Vocafade", "Vendor": "VELMORAX Co.,Ltd.", "Enabled": "1",
                    "Valid": "1", "EffectType": "Process", "EffectFamily": "VST", "EffectInteractive": "1",
                    "EffectRealtime": "1", "EffectAutomatable": "1"}
        self.assertEqual({key: entry.get(key) for key in expected}, expected)
        self.assertIn("Audio In: 2, Audio Out: 2", self.tell("Help: Command=Vocafade Format=LISP"))

        path = self.open_song()
        self.tell("Vocafade:")
        out = self.work / "out.wav"
        self.tell(f"Export2: Filename={out} NumChannels=2")
        self.assert_same_sound(path, out, *(f"0:{n}:{value}" for n, value in enumerate(self.values)))


    def hide_other_effects(self):
        """Leaves Vocafade as the last entry of the menu of effects, whatever else this machine has."""
        file = self.config / "pluginregistry.cfg"
        blocks = file.read_text(encoding="utf-8").split("\n[")
        for i, block in enumerate(blocks):
            if re.search("^EffectFamily=(VST|LV2|LADSPA|Vamp)$", block, re.M) and str(self.plugin) not in block:
                blocks[i] = re.sub("^Enabled=1$", "Enabled=0", block, flags=re.M)
        file.write_text("\n[".join(blocks), encoding="utf-8")

    def editor_window(self, width, height):
        """The number of the plug-in's own window, inside Audacity's dialogue."""
        tree = self.run_program(["xwininfo", "-root", "-tree"])
        found = re.findall(rf"^\s+(0x[0-9a-f]+) .*? {width}x{height}\+", tree, re.M)
        return found[-1] if found else None

    @unittest.skipUnless(has_editor(), "this build's editor has no window")
    def test_drag_in_the_editor_changes_the_sound(self):
        process = self.launch("audacity-scan.log")
        self.wait_for("the plug-in's entry", self.registry)
        self.quit(process)
        self.hide_other_effects()
        shutil.rmtree(self.temporary)  # else the next one offers to recover what the first one had open
        self.temporary.mkdir()

        self.launch("audacity-editor.log")
        window = self.windows("^Audacity$")[-1]
        path = self.open_song()
        self.xdotool("windowfocus", window)
        self.xdotool("key", "alt+c")  # the menu of effects
        time.sleep(1)
        self.xdotool("key", "Up")
        self.xdotool("key", "Return")
        editor = self.wait_for("the plug-in's window", lambda: self.editor_window(*panel_size()))
        time.sleep(1)
        self.screenshot("audacity-before.png", editor)
        self.drag(editor, OUTPUT_FADER, 40, 80)
        time.sleep(1)
        self.screenshot("audacity-after.png", editor)
        self.screenshot("audacity.png")
        # Audacity's button above the panel's right end.
        self.xdotool("mousemove", "--window", editor, "--", panel_size()[0] - 49, -23, "click", 1)
        self.wait_for("the dialogue's end", lambda: not self.editor_window(*panel_size()))
        out = self.work / "out.wav"
        self.tell(f"Export2: Filename={out} NumChannels=2")

        # The Output fader was at 0.6 and went down: all that came out is quieter by one factor.
        own = self.work / "own.wav"
        self.run_program([COMMAND, path, "-o", own, "--keep-latency", "--program", "1", "--plugin", self.plugin])
        got, before = read_wav(out), read_wav(own)
        factor = peak(got[0]) / peak(before[0])
        self.assertGreater(factor, 0.05)
        self.assertLess(factor, 0.8)
        for channel in (0, 1):
            self.assertLess(peak_difference(got[channel], [x * factor for x in before[channel]]), 1e-5)


if __name__ == "__main__":
    main()
