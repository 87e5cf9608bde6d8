# SPDX-License-Identifier: MIT
"""Audacity with the LV2 plug-in: its scan, and what it renders."""

import shutil
from pathlib import Path

import audacity_test
from support import BUNDLE, LV2, LV2_URI, main, to_normalised



class AudacityLv2(audacity_test.AudacityTest):
    kind = "LV2"
    entry = LV2_URI

    def setUp(self):
        super().setUp()
        shutil.rmtree(self.plugin.parent)  # or there are two of the name
        self.plugin = BUNDLE / "Vocafade.so"  # for the comparison
        plugins = self.home / "lv2"
        plugins.mkdir()
        shutil.copytree(LV2, plugins / "vocafade.lv2")
        # Of the system's folder what describes the interface, and no other plug-in.
        for bundle in Path("/usr/lib/lv2").iterdir():
            if not list(bundle.glob("*.so")):
                (plugins / bundle.name).symlink_to(bundle)
        self.environment["LV2_PATH"] = str(plugins)

    def test_registers_the_plug_in_and_renders_as_we_do(self):
        self.scan()
        entry = self.registry()
        expected = {"Symbol": "Vocafade", "Name": "Vocafade", "Vendor": "VELMORAX Co.,Ltd.", "Enabled": "1",
                    "Valid": "1", "EffectType": "Process", "EffectFamily": "LV2", "EffectInteractive": "1"}
        self.assertEqual({key: entry.get(key) for key in expected}, expected)
        self.launch("audacity-lv2.log")
        path = self.open_song()
        self.tell("Vocafade:")
        out = self.work / "out.wav"
        self.tell(f"Export2: Filename={out} NumChannels=2")
        # This version does not make up for the delay that is reported.
        values = [1.0, 0.999 / 1.999, 1.0, to_normalised(3, 400.5), to_normalised(4, 9000.5), to_normalised(5, 64.2)]
        self.assert_same_sound(path, out, *(f"0:{n}:{value:.9g}" for n, value in enumerate(values)))


if __name__ == "__main__":
    main()
