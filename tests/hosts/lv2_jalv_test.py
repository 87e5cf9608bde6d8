# SPDX-License-Identifier: MIT
"""jalv, LV2's own small host, on JACK without hardware: the panel in its window and the pointer."""

import time

from support import LV2_URI, HostTest
from alone import main


class Jalv(HostTest):
    def test_drag_in_the_editor_moves_the_port(self):
        self.offer_lv2()
        self.start_jack()
        self.start_display()
        process = self.start("jalv.gtk3", LV2_URI, GDK_BACKEND="x11")
        self.wait_for_port("out_r", process)
        editor = self.wait_for("the panel", self.panel_window, process=process)
        dragged = self.drag_output(editor, "jalv", 60, 110)
        # Half a second after a drag the panel goes back to what the ports say: it stays, so they have it.
        time.sleep(2)
        self.assertEqual(self.fader(editor), dragged)


if __name__ == "__main__":
    main()
