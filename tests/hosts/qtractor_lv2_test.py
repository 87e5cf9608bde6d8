# SPDX-License-Identifier: MIT
"""qtractor with the LV2 plug-in: a session with its values, the panel, the session saved again."""

import os
import re
import unittest
from pathlib import Path

import qtractor_test
from support import OUTPUT_FADER, has_editor, main

LV2 = Path(os.environ.get("VOCAFADE_LV2", "build/release/vocafade.lv2")).resolve()
URI = "urn:velmorax:vocafade"
# By the numbers of the ports, as sessions keep them.
VALUES = {4: 1.0, 5: 3.9, 6: -3.0, 7: 250.0, 8: 6000.0, 9: 40.0}


class QtractorLv2(qtractor_test.QtractorSession):
    kind = "LV2"
    name = URI

    def setUp(self):
        super().setUp()
        plugins = self.home / "lv2"
        plugins.mkdir()
        (plugins / "vocafade.lv2").symlink_to(LV2)
        self.environment["LV2_PATH"] = f"{plugins}:/usr/lib/lv2"

    def values(self, window):
        before = self.session.read_text(encoding="utf-8")
        self.xdotool("windowfocus", window, "key", "ctrl+s")

        def saved():
            text = self.session.read_text(encoding="utf-8")
            return text != before and text.rstrip().endswith("</session>") and text

        text = self.wait_for("the saved session", saved)
        return {int(found[1]): float(found[2])
                for found in re.finditer(r'<param [^>]*index="(\d+)"[^>]*>([^<]*)<', text)}

    @unittest.skipUnless(has_editor(), "this build's editor has no window")
    def test_keeps_its_values_and_follows_the_panel(self):
        state = "<params>" + "".join(f'<param index="{port}">{value}</param>' for port, value in VALUES.items())
        window = self.start_with_song(state + "</params>")
        editor = self.open_editor(window)
        before = self.wait_for_picture(editor, OUTPUT_FADER)
        self.drag(editor, OUTPUT_FADER, 60, 110)
        self.wait_for_picture(editor, OUTPUT_FADER, other_than=before)
        self.screenshot("qtractor-lv2.png")
        values = self.values(window)
        self.assertLess(values[5], 0.0)
        for port in (4, 6, 7, 8, 9):
            self.assertAlmostEqual(values[port], VALUES[port], places=4)


if __name__ == "__main__":
    main()
