# SPDX-License-Identifier: MIT
"""Audacity: its scan at start-up, the effect by its script pipe, the editor in its dialog, for each of both plug-ins."""

import configparser
import os
import re
import shutil
import subprocess
import time
from pathlib import Path

import numpy as np
from support import PANEL_SIZE, HostTest, LV2_URI, running, write_bank
from alone import BUNDLE, COMMAND, Stuck, end, end_all, lanes, lv2_lanes, main, read_wav, song, to_normalised, write_wav

MODULE = "/usr/lib/audacity/modules/mod-script-pipe.so"
PIPES = [Path(f"/tmp/audacity_script_pipe.{way}.{os.getuid()}") for way in ("to", "from")]
FLOAT_WAV = 6  # libsndfile's number for 32-bit floats


def forget_semaphores(folder):
    """Removes the System V semaphores and shared memory that a program keyed by a folder (ftok) and left behind."""
    status = os.stat(folder)
    for project in range(3):
        key = project << 24 | (status.st_dev & 0xff) << 16 | (status.st_ino & 0xffff)
        for option in ("-S", "-M"):
            subprocess.run(["ipcrm", option, hex(key)], capture_output=True, check=False)


class AudacityTest(HostTest):
    """Audacity with the plug-in scanned and a song open."""

    kind = "VST"
    scanned = None  # the registry after the scan, with @home@ for the home folder

    def setUp(self):
        super().setUp()
        self.remove_pipes()
        self.config = self.home / ".config/audacity"
        self.config.mkdir()
        self.registry = self.config / "pluginregistry.cfg"
        self.addCleanup(self.remove_leftovers)
        self.temporary = self.work / "temporary"
        self.temporary.mkdir()
        # Audacity hands a new effect the plug-in's own state, so the user's bank is what it starts from.
        self.values = [1.0, 0.6, 0.8, to_normalised(3, 250), to_normalised(4, 6000), to_normalised(5, 64)]
        write_bank(self.home / ".config/VocafadeDef.fxb", self.values)
        self.start_display()

    def configure(self, pipe):
        changed = time.strftime("%Y-%m-%dT%H:%M:%S", time.localtime(os.stat(MODULE).st_mtime))
        # Plug-ins of other kinds are left alone: there may be hundreds on a machine.
        settings = {
            "Version": ("Major=3", "Minor=2", "Micro=4"), "Locale": ["Language=en"], "GUI": ["ShowSplashScreen=0"],
            "Update": ("DefaultUpdatesChecking=0", "UpdateNoticeShown=1"),
            "Directories": [f"TempDir={self.temporary}"],
            "FileFormats/ExportFormat_SF1_Type": [f"WAV_10000={FLOAT_WAV}"],
            **{kind: [f"Enable={int(kind == self.kind)}"] for kind in ("VST", "LV2", "LADSPA", "Vamp", "VAMP", "Nyquist")},
            "Effects": ["GroupBy=publisher"], "Module": [f"mod-script-pipe={int(pipe)}"],
            "ModulePath": [f"mod-script-pipe={MODULE}"], "ModuleDateTime": [f"mod-script-pipe={changed}"]}
        lines = ["NewPrefsInitialized=1", "PrefsVersion=1.1.1r1"]
        for section, values in settings.items():
            lines += [f"[{section}]", *values]
        (self.config / "audacity.cfg").write_text("\n".join(lines) + "\n", encoding="utf-8")

    def remove_pipes(self):
        """The pipes have the same names for all of a user's Audacities. One that runs is waited for; what an earlier
        one left is removed."""
        self.wait_for("the end of another Audacity: close it first", lambda: not running("audacity"), 90)
        for pipe in PIPES:
            pipe.unlink(missing_ok=True)

    def remove_leftovers(self):
        end_all()
        self.remove_pipes()
        data = self.home / ".local/share/audacity"
        if data.exists():
            forget_semaphores(data)

    def come_up(self):
        """Starts Audacity and waits for its window."""
        shutil.rmtree(self.temporary)  # else it offers to recover what another had open
        self.temporary.mkdir()
        process = self.start("audacity")
        self.wait_for("Audacity's window", lambda: self.windows("^Audacity$"), timeout=75, process=process)
        return process

    def scan(self):
        """Has Audacity look for plug-ins, once for all tests, with the script pipe off. What it noted about this one."""
        if not type(self).scanned:
            def start():
                self.configure(pipe=False)
                process = self.come_up()
                self.wait_for("the plug-in's entry", self.entry, process=process)
                end(process)

            self.start_up("Audacity's scan", start)
            type(self).scanned = self.registry.read_text(encoding="utf-8").replace(str(self.home), "@home@")
        self.registry.write_text(self.scanned.replace("@home@", str(self.home)), encoding="utf-8")
        return self.entry()

    def entry(self):
        """What Audacity noted about the plug-in: a dictionary."""
        parser = configparser.ConfigParser(interpolation=None, strict=False, delimiters="=", comment_prefixes=None)
        parser.optionxform = str
        parser.read_string("[top]\n" + self.registry.read_text(encoding="utf-8"))
        path = LV2_URI if self.kind == "LV2" else str(self.plugin)
        return next((dict(entry) for entry in parser.values() if entry.get("Path", "").startswith(path)), None)

    def connect(self, path, way):
        """One of Audacity's pair of named pipes."""
        def opened():
            try:
                return os.open(path, way | os.O_NONBLOCK)
            except OSError:
                return None  # there is no pipe yet, or nobody reads from it yet

        pipe = self.wait_for("Audacity's script pipe", opened, process=self.process)
        self.addCleanup(os.close, pipe)
        return pipe

    def ask(self, command, patience=60):
        """Sends a line, if any; its answer ends with an empty line."""
        try:
            os.write(self.to, command.encode())
        except BrokenPipeError:
            raise Stuck("Audacity has closed its script pipe") from None
        answer = bytearray()

        def whole():
            try:
                answer.extend(os.read(self.answers, 65536))
            except BlockingIOError:
                pass
            return answer.strip() and answer.endswith(b"\n\n")

        self.wait_for("Audacity's answer by its script pipe", whole, patience, self.process)
        return answer.decode()

    def launch(self):
        """Starts Audacity, which has seen all plug-ins before, and connects."""
        probes = iter(range(1000))

        def probe():
            """A command that comes before the start is over may be lost, so it is sent until it is answered."""
            number = next(probes)
            answer = self.ask(f"Message: Text=probe-{number}.\n", 8)
            while f"probe-{number}." not in answer:  # that was to an earlier one
                answer = self.ask("", 8)

        def start():
            self.remove_pipes()
            self.process = self.come_up()
            self.to, self.answers = self.connect(PIPES[0], os.O_WRONLY), self.connect(PIPES[1], os.O_RDONLY)
            self.start_up("Audacity's script pipe", probe, times=6)

        self.configure(pipe=True)
        self.start_up("Audacity", start)

    def tell(self, command):
        """Sends a command down the pipe; its answer must be that all is well."""
        answer = self.ask(command + "\n")
        self.assertIn("BatchCommand finished: OK", answer, command)
        return answer

    def open_song(self):
        path = write_wav(self.work / "song.wav", song())
        self.tell(f"Import2: Filename={path}")
        self.tell("SelectAll:")
        return path

    def export(self, name):
        path = self.work / name
        self.tell(f"Export2: Filename={path} NumChannels=2")
        return path

    def assert_registered_and_renders(self, noted, *changes):
        """The plug-in is registered, by what is the same for both kinds and `noted`, and renders as we do."""
        entry = self.scan()
        expected = {"Symbol": "Vocafade", "Name": "Vocafade", "Vendor": "VELMORAX Co.,Ltd.", "Enabled": "1", "Valid": "1",
                    "EffectType": "Process", "EffectFamily": self.kind, "EffectInteractive": "1", **noted}
        self.assertEqual({key: entry.get(key) for key in expected}, expected)
        self.launch()
        path = self.open_song()
        self.tell("Vocafade:")
        self.assert_same_sound(path, self.export("out.wav"), *changes)


class Audacity(AudacityTest):
    def hide_other_effects(self):
        """Leaves Vocafade as the last entry of the menu of effects, whatever else this machine has."""
        blocks = self.registry.read_text(encoding="utf-8").split("\n[")
        for i, block in enumerate(blocks):
            if re.search("^EffectFamily=(VST|LV2|LADSPA|Vamp)$", block, re.M) and str(self.plugin) not in block:
                blocks[i] = re.sub("^Enabled=1$", "Enabled=0", block, flags=re.M)
        self.registry.write_text("\n[".join(blocks), encoding="utf-8")

    def open_editor(self, window):
        """Opens the last entry of the menu of effects."""
        def gesture(_):
            self.xdotool("windowfocus", window)
            self.xdotool("key", "Escape", "key", "alt+c")
            time.sleep(1)
            self.xdotool("key", "Up", "key", "Return")

        return self.open_until(self.panel_window, gesture)

    def test_registers_the_plug_in_and_renders_as_we_do(self):
        self.assert_registered_and_renders({"EffectRealtime": "1", "EffectAutomatable": "1"},
                                           *lanes(dict(enumerate(self.values))))
        self.assertIn("Audio In: 2, Audio Out: 2", self.tell("Help: Command=Vocafade Format=LISP"))

    def test_drag_in_the_editor_changes_the_sound(self):
        self.scan()
        self.hide_other_effects()
        self.launch()
        window = self.windows("^Audacity$")[-1]
        path = self.open_song()
        editor = self.open_editor(window)
        self.drag_output(editor, "audacity")
        # Audacity's button above the panel's right end.
        self.xdotool("mousemove", "--window", editor, "--", PANEL_SIZE[0] - 49, -23, "click", 1)
        self.wait_for("the dialogue's end", lambda: not self.panel_window())
        got = read_wav(self.export("out.wav"))

        # The Output fader was at 0.6 and went down: all that came out is quieter by one factor.
        own = self.work / "own.wav"
        self.run_program(COMMAND, path, "-o", own, "--keep-latency", "--program", "1", "--plugin", self.plugin)
        before = read_wav(own)[:len(got)]
        factor = np.abs(got).max() / np.abs(before).max()
        self.assertGreater(factor, 0.05)
        self.assertLess(factor, 0.8)
        self.assertLess(np.abs(got - before * factor).max(), 1e-5)

        # Audacity keeps an effect's last state, and hands it over at the next start, whatever the plug-in has then.
        self.tell("SelectAll:")  # it has noted the state by the time that it answers
        end(self.process)
        (self.home / ".config/VocafadeDef.fxb").unlink()
        self.launch()
        self.open_song()
        self.tell("Vocafade:")
        np.testing.assert_array_equal(read_wav(self.export("again.wav")), got)


class AudacityLv2(AudacityTest):
    kind = "LV2"

    def test_registers_the_plug_in_and_renders_as_we_do(self):
        self.offer_lv2()
        # This version does not make up for the delay that is reported.
        self.plugin = BUNDLE / "Vocafade.so"
        self.assert_registered_and_renders({}, *lv2_lanes({1: 0, 2: 0, 3: 400, 4: 9000, 5: 64}))


if __name__ == "__main__":
    main()
