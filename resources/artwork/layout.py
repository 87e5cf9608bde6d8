# SPDX-License-Identifier: MIT
"""Where everything sits on the panel. Rectangles are (left, top, right, bottom) in pixels.

The editor hit-tests and draws on these very rectangles; a change here moves the artwork only.
"""

# With this width the two level sections mirror each other: both faders and all four meters are
# equally far from the left and the right edge.
PANEL_WIDTH = 477
PANEL_HEIGHT = 214

ON_OFF = (24, 7, 49, 28)
COPY = (64, 10, 91, 29)
MODIFIED = (216, 10, 259, 26)
SAVE = (270, 10, 313, 26)

# All keys stand in one row of equal height inside their rectangles.
KEY_TOP = 10
KEY_BOTTOM = 26

INPUT_FADER = (48, 45, 64, 178)
LOW_FADER = (141, 45, 157, 178)
HIGH_FADER = (229, 45, 245, 178)
OUTPUT_FADER = (413, 45, 429, 178)
FADERS = (INPUT_FADER, LOW_FADER, HIGH_FADER, OUTPUT_FADER)

INPUT_READOUT = (14, 184, 48, 200)
LOW_READOUT = (125, 184, 174, 200)
HIGH_READOUT = (213, 184, 262, 200)
POSITION_READOUT = (300, 184, 349, 200)
OUTPUT_READOUT = (414, 184, 448, 200)
READOUTS = (INPUT_READOUT, LOW_READOUT, HIGH_READOUT, POSITION_READOUT, OUTPUT_READOUT)

KNOB = (307, 147, 341, 181)
KNOB_FRAMES = 61
KNOB_FIRST_ANGLE = 30.0  # degrees; 0 points straight down, growing clockwise
KNOB_LAST_ANGLE = 330.0

METER_LEFTS = (29, 38, 432, 441)
METER_TOP = 45
METER_WIDTH = 7
METER_HEIGHT = 133

# The thumb's index line is its middle row, so the height is odd. The editor lets the last row hang over
# the track's end by one pixel at the bottom of the travel; that row carries nothing but shadow.
THUMB_WIDTH = 14
THUMB_HEIGHT = 25

FADER_TOP = INPUT_FADER[1]
FADER_HEIGHT = INPUT_FADER[3] - INPUT_FADER[1]


def size(rect):
    """Width and height of a rectangle."""
    return rect[2] - rect[0], rect[3] - rect[1]


def centre(rect):
    """Middle of a rectangle, on whole or half pixels."""
    return (rect[0] + rect[2]) / 2, (rect[1] + rect[3]) / 2
