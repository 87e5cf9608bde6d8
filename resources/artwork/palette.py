# SPDX-License-Identifier: MIT
"""The panel's few colours. The plate is light and carries print; whatever one takes hold of is dark."""

PLATE_TOP = "#dddcd7"
PLATE_BOTTOM = "#cdccc6"
INK = "#34363a"
INK_SOFT = "#4b4d52"
INK_FAINT = "#78797b"
LIGHT = "#ffffff"
SHADE = "#000000"

WELL = "#17181a"
READOUT_TOP = "#e9eae4"
READOUT_MIDDLE = "#f8f8f4"
READOUT_BOTTOM = "#fbfbf8"
LIP = "#8b8b88"
SLOT_LIP = "#a3a29d"

CAP_EDGE = "#17181a"
CAP_TOP = "#515358"
CAP_MIDDLE = "#3a3c40"
CAP_BOTTOM = "#2a2b2e"
LEGEND = "#f1f0ec"
LEGEND_UNLIT = "#85878c"
LEGEND_DEAD = "#c6c8cc"

GREEN = "#5fe08a"
YELLOW = "#c6dc52"
AMBER = "#ffb53e"
RED = "#ff4d3d"


def mix(first, second, share):
    """A colour between two: `share` of the second, the rest of the first."""
    parts = []
    for at in (1, 3, 5):
        a, b = int(first[at:at + 2], 16), int(second[at:at + 2], 16)
        parts.append(int(a + (b - a) * share + 0.5))
    return "#%02x%02x%02x" % tuple(parts)
