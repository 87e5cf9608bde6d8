# SPDX-License-Identifier: MIT
"""PipeWire: the example of an output device that takes the voice out, started headless, recorded while a song plays."""

import re
from pathlib import Path

import support  # noqa: F401, which knows the folder of the next two
from alone import lv2_lanes, main, patiently, song
from pipewire import DesktopTest

EXAMPLE = Path(__file__).resolve().parents[2] / "lv2/examples/pipewire.conf"


class PipeWire(DesktopTest):
    @patiently
    def test_the_example_is_our_own_sound_and_follows_its_controls(self):
        self.offer_lv2()
        # As users have it, but for the one value that lets the comparison see that controls arrive at all.
        text = EXAMPLE.read_text(encoding="utf-8")
        self.assertIn("lofreq = 400.0", text)
        settings = self.home / ".config/pipewire/pipewire.conf.d"
        settings.mkdir()
        (settings / "vocafade.conf").write_text(text.replace("lofreq = 400.0", "lofreq = 300.0"), encoding="utf-8")
        self.start_server()
        self.wait_for_port("vocafade.output:output_FR")
        plain = song()

        def assert_plays(values):
            self.record("television")
            self.play(plain, "--target", "vocafade")
            self.assert_rendered(plain, *lv2_lanes(values))

        assert_plays({1: 3.9, 3: 300})
        number = re.search(r"^\s*id: (\d+)", self.run_program("pw-cli", "info", "vocafade"), re.M)[1]
        self.run_program("pw-cli", "set-param", number, "Props",
                         '{ params = [ "vocafade:lofreq" 1000.0 "vocafade:position" 30.0 ] }')
        assert_plays({1: 3.9, 3: 1000, 5: 30})


if __name__ == "__main__":
    main()
