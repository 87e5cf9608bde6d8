# SPDX-License-Identifier: MIT
"""Audacity: its scan at start-up, the effect by its script pipe, the editor in its dialog."""

import configparser
import errno
import os
import re
import shutil
import time
import unittest
from pathlib import Path

from support import (COMMAND, HostStuck, HostTest, end_all, end_group, forget_semaphores, has_editor,
                     main, panel_size, peak, peak_difference, read_wav, song, to_normalised, write_bank, write_wav)

MODULE = "/usr/lib/audacity/modules/mod-script-pipe.so"
PIPES = [Path(f"/tmp/audacity_script_pipe.{way}.{os.getuid()}") for way in ("to", "from")]
FLOAT_WAV = 6  # libsndfile's number for 32-bit floats


class HostSilent(HostStuck):
    """No answer came in time."""


class ScriptPipe:
    """Audacity's pair of named pipes. They are opened and read with a limit of time: its other end may never come."""

    def __init__(self, process, patience=60):
        self.process = process
        self.end = time.monotonic() + patience
        self.to = self.connect(PIPES[0], os.O_WRONLY)
        self.answers = self.connect(PIPES[1], os.O_RDONLY)

    def wait(self):
        if self.process.poll() is not None:
            raise HostStuck(f"Audacity ended with {self.process.returncode}")
        if time.monotonic() > self.end:
            raise HostSilent("Audacity does not answer by its script pipe")
        time.sleep(0.05)

    def connect(self, path, way):
        while True:
            try:
                return os.open(path, way | os.O_NONBLOCK)
            except OSError as error:
                # There is no pipe yet, or nobody reads from it yet.
                if error.errno not in (errno.ENOENT, errno.ENXIO):
                    raise
            self.wait()

    def ask(self, command, patience):
        """Sends a line; its answer ends with an empty line."""
        self.end = time.monotonic() + patience
        if command:
            os.write(self.to, (command + "\n").encode())
        answer = b""
        while not (answer.endswith(b"\n\n") and answer.strip()):
            try:
                part = os.read(self.answers, 65536)
            except BlockingIOError:
                part = b""
            answer += part
            if not part:
                self.wait()
        return answer.decode()

    def wait_for_answer(self):
        """A command that comes before the start is over may be lost, so it is sent until it is answered."""
        for number in range(6):
            try:
                answer = self.ask(f"Message: Text=probe-{number}.", 8)
                while f"probe-{number}." not in answer:  # that was to an earlier one
                    answer = self.ask("", 8)
                return
            except HostSilent:
                pass
        raise HostStuck("Audacity does not answer by its script pipe")

    def close(self):
        os.close(self.to)
        os.close(self.answers)


class AudacityTest(HostTest):
    """Audacity with the plug-in scanned and a song open."""

    kind = "VST"
    entry = None  # what the registry has for the plug-in's path, if not its file
    scanned = None  # the registry after the scan, with @home@ for the home folder

    def setUp(self):
        super().setUp()
        self.remove_pipes()
        self.config = self.home / ".config/audacity"
        self.config.mkdir()
        self.addCleanup(self.remove_leftovers)
        self.temporary = self.work / "temporary"
        self.temporary.mkdir()
        # Audacity hands a new effect the plug-in's own state, so the user's bank is what it starts from.
        self.values = [1.0, 0.6, 0.8, to_normalised(3, 250.0), to_normalised(4, 6000.0), to_normalised(5, 64)]
        write_bank(self.home / ".config/VocafadeDef.fxb", self.values)
        self.start_display()
        self.pipe = None

    def configure(self, pipe):
        changed = time.strftime("%Y-%m-%dT%H:%M:%S", time.localtime(os.stat(MODULE).st_mtime))
        # Plug-ins of other kinds are left alone: there may be hundreds on a machine.
        settings = {
            "Version": ("Major=3", "Minor=2", "Micro=4"), "Locale": ["Language=en"], "GUI": ["ShowSplashScreen=0"],
            "Update": ("DefaultUpdatesChecking=0", "UpdateNoticeShown=1"),
            "Directories": [f"TempDir={self.temporary}"],
            "FileFormats/ExportFormat_SF1_Type": [f"WAV_10000={FLOAT_WAV}"],
            **{kind: [f"Enable={int(kind == self.kind)}"] for kind in ("LADSPA", "LV2", "Vamp", "VAMP", "Nyquist")},
            "Effects": ["GroupBy=publisher"], "Module": [f"mod-script-pipe={int(pipe)}"],
            "ModulePath": [f"mod-script-pipe={MODULE}"], "ModuleDateTime": [f"mod-script-pipe={changed}"]}
        lines = ["NewPrefsInitialized=1", "PrefsVersion=1.1.1r1"]
        for section, values in settings.items():
            lines += [f"[{section}]", *values]
        (self.config / "audacity.cfg").write_text("\n".join(lines) + "\n", encoding="utf-8")

    def remove_pipes(self):
        """The pipes have the same names for all of a user's Audacities. One that runs is waited for; what an earlier
        one left is removed."""
        end = time.monotonic() + 90
        while any(self.is_link_to(link, PIPES) for link in Path("/proc").glob("[0-9]*/fd/*")):
            self.assertLess(time.monotonic(), end, "another Audacity has its script pipe open; close it first")
            time.sleep(1)
        for pipe in PIPES:
            pipe.unlink(missing_ok=True)

    @staticmethod
    def is_link_to(link, paths):
        try:
            return Path(os.readlink(link)) in paths
        except OSError:
            return False

    def remove_leftovers(self):
        if self.pipe:
            self.pipe.close()
        end_all(folders_too=False)
        for pipe in PIPES:
            pipe.unlink(missing_ok=True)
        data = self.home / ".local/share/audacity"
        if data.exists():
            forget_semaphores(data)

    def come_up(self, log):
        """Starts Audacity and waits for its window."""
        shutil.rmtree(self.temporary)  # else it offers to recover what another had open
        self.temporary.mkdir()
        process = self.start(["audacity"], log)
        self.wait_for("Audacity's window", lambda: self.windows("^Audacity$"), timeout=75, process=process)
        return process

    def scan(self):
        """Has Audacity look for plug-ins, once for all tests, with the script pipe off."""
        file = self.config / "pluginregistry.cfg"
        if not type(self).scanned:
            def start():
                self.configure(pipe=False)
                process = self.come_up("audacity-scan.log")
                self.wait_for("the plug-in's entry", self.registry, process=process)
                end_group(process)

            self.start_up("Audacity's scan", start)
            type(self).scanned = file.read_text(encoding="utf-8").replace(str(self.home), "@home@")
        file.write_text(type(self).scanned.replace("@home@", str(self.home)), encoding="utf-8")

    def launch(self, log):
        """Starts Audacity, which has seen all plug-ins before, and connects."""
        def start():
            self.remove_pipes()
            process = self.come_up(log)
            self.pipe = ScriptPipe(process)
            self.pipe.wait_for_answer()
            return process

        self.configure(pipe=True)
        return self.start_up("Audacity", start)

    def tell(self, command):
        """Sends a command down the pipe; its answer must be that all is well."""
        answer = self.pipe.ask(command, 60)
        self.assertIn("BatchCommand finished: OK", answer, command)
        return answer

    def registry(self):
        """What Audacity noted about the plug-in: a dictionary."""
        text = (self.config / "pluginregistry.cfg").read_text(encoding="utf-8")
        for block in text.split("\n["):
            if f"Path={self.entry or self.plugin}" in block:
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

    def export(self, name):
        path = self.work / name
        self.tell(f"Export2: Filename={path} NumChannels=2")
        return path

    def hide_other_effects(self):
        """Leaves Vocafade as the last entry of the menu of effects, whatever else this machine has."""
        file = self.config / "pluginregistry.cfg"
        blocks = file.read_text(encoding="utf-8").split("\n[")
        for i, block in enumerate(blocks):
            if re.search("^EffectFamily=(VST|LV2|LADSPA|Vamp)$", block, re.M) and str(self.plugin) not in block:
                blocks[i] = re.sub("^Enabled=1$", "Enabled=0", block, flags=re.M)
        file.write_text("\n[".join(blocks), encoding="utf-8")

    def open_editor(self, window):
        """Opens the last entry of the menu of effects."""
        def gesture(_):
            self.xdotool("windowfocus", window)
            self.xdotool("key", "Escape", "key", "alt+c")
            time.sleep(1)
            self.xdotool("key", "Up", "key", "Return")

        return self.open_until(self.panel_window, gesture)


class Audacity(AudacityTest):
    def test_registers_the_plug_in_and_renders_as_we_do(self):
        self.scan()
        entry = self.registry()
        expected = {"Symbol": "Vocafade", "Name": "Vocafade", "Vendor": "VELMORAX Co.,Ltd.", "Enabled": "1",
                    "Valid": "1", "EffectType": "Process", "EffectFamily": "VST", "EffectInteractive": "1",
                    "EffectRealtime": "1", "EffectAutomatable": "1"}
        self.assertEqual({key: entry.get(key) for key in expected}, expected)
        self.launch("audacity.log")
        self.assertIn("Audio In: 2, Audio Out: 2", self.tell("Help: Command=Vocafade Format=LISP"))

        path = self.open_song()
        self.tell("Vocafade:")
        out = self.export("out.wav")
        self.assert_same_sound(path, out, *(f"0:{n}:{value}" for n, value in enumerate(self.values)))

    @unittest.skipUnless(has_editor(), "this build's editor has no window")
    def test_drag_in_the_editor_changes_the_sound(self):
        self.scan()
        self.hide_other_effects()
        process = self.launch("audacity-editor.log")
        window = self.windows("^Audacity$")[-1]
        path = self.open_song()
        editor = self.open_editor(window)
        self.drag_output(editor, "audacity")
        # Audacity's button above the panel's right end.
        self.xdotool("mousemove", "--window", editor, "--", panel_size()[0] - 49, -23, "click", 1)
        self.wait_for("the dialogue's end", lambda: not self.panel_window())
        out = self.export("out.wav")

        # The Output fader was at 0.6 and went down: all that came out is quieter by one factor.
        own = self.work / "own.wav"
        self.run_program([COMMAND, path, "-o", own, "--keep-latency", "--program", "1", "--plugin", self.plugin])
        got, before = read_wav(out), read_wav(own)
        factor = peak(got[0]) / peak(before[0])
        self.assertGreater(factor, 0.05)
        self.assertLess(factor, 0.8)
        for channel in (0, 1):
            self.assertLess(peak_difference(got[channel], [x * factor for x in before[channel]]), 1e-5)

        # Audacity keeps an effect's last state, and hands it over at the next start, whatever the plug-in has then.
        self.tell("SelectAll:")  # it has noted the state by the time that it answers
        self.pipe.close()
        self.pipe = None
        end_group(process)
        (self.home / ".config/VocafadeDef.fxb").unlink()
        self.launch("audacity-again.log")
        self.open_song()
        self.tell("Vocafade:")
        again = read_wav(self.export("again.wav"))
        for channel in (0, 1):
            self.assertEqual(peak_difference(got[channel], again[channel]), 0.0)


if __name__ == "__main__":
    main()
