# SPDX-License-Identifier: MIT
"""jalv, LV2's own small host, on JACK without hardware: the panel in its window and the pointer."""

import time
import unittest

from support import LV2_URI, OUTPUT_FADER, HostTest, has_editor, main



class Jalv(HostTest):
    def setUp(self):
        super().setUp()
        self.offer_lv2()

    @unittest.skipUnless(has_editor(), "this build's editor has no window")
    def test_drag_in_the_editor_moves_the_port(self):
        self.start_jack()
        self.start_display()
        process = self.start(["jalv.gtk3", LV2_URI], "jalv.log", GDK_BACKEND="x11")
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
