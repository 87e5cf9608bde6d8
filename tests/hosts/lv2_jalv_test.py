# SPDX-License-Identifier: MIT
"""jalv, LV2's own small host, on JACK without hardware: the panel in its window and the pointer."""

import os
import time
import unittest
from pathlib import Path

from support import OUTPUT_FADER, HostTest, has_editor, main

LV2 = Path(os.environ.get("VOCAFADE_LV2", "build/release/vocafade.lv2")).resolve()
URI = "urn:velmorax:vocafade"


class Jalv(HostTest):
    def setUp(self):
        super().setUp()
        plugins = self.home / "lv2"
        plugins.mkdir()
        (plugins / "vocafade.lv2").symlink_to(LV2)
        self.environment["LV2_PATH"] = f"{plugins}:/usr/lib/lv2"

    @unittest.skipUnless(has_editor(), "this build's editor has no window")
    def test_drag_in_the_editor_moves_the_port(self):
        self.start_jack()
        self.start_display()
        process = self.start(["jalv.gtk3", URI], "jalv.log", GDK_BACKEND="x11")
        self.wait_for("its ports", lambda: "out_r" in self.jack_ports(), process=process)
        editor = self.wait_for("the panel", self.panel_window, process=process)
        before = self.wait_for_picture(editor, OUTPUT_FADER)
        self.drag(editor, OUTPUT_FADER, 60, 110)
        dragged = self.wait_for_picture(editor, OUTPUT_FADER, other_than=before)
        self.screenshot("jalv.png")
        # Half a second after a drag the panel goes back to what the ports say: it stays, so they have it.
        time.sleep(2)
        self.assertEqual(self.wait_for_picture(editor, OUTPUT_FADER), dragged)


if __name__ == "__main__":
    main()
