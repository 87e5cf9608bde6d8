# SPDX-License-Identifier: MIT
"""qtractor with the LV2 plug-in: a session with its values, the panel, the session saved again."""

import unittest

import qtractor_test
from support import LV2_URI, OUTPUT_FADER, has_editor, main

# By the numbers of the ports, as sessions keep them.
VALUES = {4: 1.0, 5: 3.9, 6: -3.0, 7: 250.0, 8: 6000.0, 9: 40.0}


class QtractorLv2(qtractor_test.QtractorSession):
    kind = "LV2"
    name = LV2_URI

    def setUp(self):
        super().setUp()
        self.offer_lv2()

    @unittest.skipUnless(has_editor(), "this build's editor has no window")
    def test_keeps_its_values_and_follows_the_panel(self):
        state = "<params>" + "".join(f'<param index="{port}">{value}</param>' for port, value in VALUES.items())
        window = self.start_with_song(state + "</params>")
        editor = self.open_editor(window)
        before = self.wait_for_picture(editor, OUTPUT_FADER)
        self.drag(editor, OUTPUT_FADER, 60, 110)
        self.wait_for_picture(editor, OUTPUT_FADER, other_than=before)
        self.screenshot("qtractor-lv2.png")
        _, values = self.save(window)
        self.assertLess(values[5], 0.0)
        for port in (4, 6, 7, 8, 9):
            self.assertAlmostEqual(values[port], VALUES[port], places=4)


if __name__ == "__main__":
    main()
