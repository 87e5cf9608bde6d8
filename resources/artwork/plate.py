# SPDX-License-Identifier: MIT
"""The faceplate: the bare metal, what is let into it, and what is printed on it."""

import math

from . import layout, palette, scales
from .lettering import engraved, lettering, width
from .shapes import gradient, line, rect
from .wordmark import wordmark

DEFS = (
    gradient("plate", 0, layout.PANEL_HEIGHT, [(0, palette.PLATE_TOP), (1, palette.PLATE_BOTTOM)])
    + gradient("readout", 184, 200, [(0, palette.READOUT_TOP), (0.35, palette.READOUT_MIDDLE),
                                      (1, palette.READOUT_BOTTOM)])
    + gradient("slot", 50, 173, [(0, "#0c0d0e"), (0.1, "#1a1b1d"), (1, "#232427")])
)

HEADING_ROW = 33

# The knob's scale has this many steps from L to R.
STAGE_STEPS = 32

# The fan above it: rays on either side of the middle one, where they begin, and the ellipse they reach.
FAN_RAYS = 4
FAN_INNER = 37.0
FAN_WIDTH = 38.0
FAN_HEIGHT = 84.0


def ground():
    """The bare plate with its bevelled edge."""
    w, h = layout.PANEL_WIDTH, layout.PANEL_HEIGHT
    return (rect(0, 0, w, h, "url(#plate)")
            + rect(0, 0, w, 1, palette.LIGHT, opacity=0.7)
            + rect(0, h - 1, w, 1, palette.SHADE, opacity=0.28)
            + rect(0, 1, 1, h - 2, palette.LIGHT, opacity=0.25)
            + rect(w - 1, 1, 1, h - 2, palette.SHADE, opacity=0.10))


def _recess(left, top, right, bottom, fill, radius):
    """A pocket in the plate: shaded lip above, lit lip below."""
    w, h = right - left, bottom - top
    return (rect(left - 1, top - 1, w + 2, h + 2, palette.SHADE, radius + 1, 0.16)
            + rect(left - 1, top, w + 2, h + 2, palette.LIGHT, radius + 1, 0.55)
            + rect(left - 1, top - 1, w + 2, h + 2, palette.LIP, radius + 1)
            + rect(left, top, w, h, fill, radius))


def slots():
    """The slits in which the fader thumbs run; each lies wholly inside its fader's rectangle."""
    parts = []
    for fader in layout.FADERS:
        x = fader[0] + 6
        parts.append(rect(x - 1, 51, 6, 123, palette.LIGHT, 3, 0.5))
        parts.append(rect(x - 1, 50, 6, 123, palette.SLOT_LIP, 3))
        parts.append(rect(x, 51, 4, 121, "url(#slot)", 2))
    return "".join(parts)


def wells():
    """Pockets for the meters and the read-outs."""
    parts = []
    for left in (layout.METER_LEFTS[0], layout.METER_LEFTS[2]):
        parts.append(_recess(left - 1, layout.METER_TOP - 1, left + 9 + layout.METER_WIDTH + 1,
                             layout.METER_TOP + layout.METER_HEIGHT + 1, palette.WELL, 1.5))
    for left, top, right, bottom in layout.READOUTS:
        parts.append(_recess(left, top, right, bottom, "url(#readout)", 1.5))
        parts.append(rect(left, top, right - left, 1, palette.SHADE, opacity=0.16))
    return "".join(parts)


def _tick(left, right, row, colour=palette.INK_SOFT, opacity=1.0):
    """A horizontal graduation that fills whole pixels."""
    return rect(left, row, right - left, 1, colour, opacity=opacity)


def _level_scale(limits, labelled, minor, fader, side):
    """Graduations of a level fader; `side` is 1 for its right, -1 for its left."""
    edge = fader[2] + 2 if side > 0 else fader[0] - 2
    parts = []

    def tick(decibels, length, colour):
        row = scales.level_row(decibels, limits)
        near, far = edge, edge + side * length
        parts.append(_tick(min(near, far), max(near, far), row, colour))
        return row

    for decibels in minor:
        tick(decibels, 3, palette.INK_FAINT)
    for decibels in labelled:
        row = tick(decibels, 6, palette.INK if decibels == 0 else palette.INK_SOFT)
        text = "+%d" % decibels if decibels > 0 else "%d" % -decibels
        parts.append(lettering(text, edge + side * 9, row - 3,
                               palette.INK if decibels == 0 else palette.INK_SOFT,
                               "left" if side > 0 else "right"))
    return "".join(parts)


def _meter_scale(edge, side):
    """Graduations of a pair of meters, beside it."""
    parts = []
    for decibels in (6, 0, -6, -12, -18, -24, -30, -36):
        row = layout.METER_TOP + scales.meter_row(decibels)
        near, far = edge, edge + side * 2
        colour = palette.INK if decibels == 0 else palette.INK_SOFT
        parts.append(_tick(min(near, far), max(near, far), row))
        text = "+%d" % decibels if decibels > 0 else "%d" % -decibels
        parts.append(lettering(text, edge + side * 6, row - 3, colour, "left" if side > 0 else "right"))
    return "".join(parts)


def _band_ladder():
    """The frequency scale between the band faders, one for both."""
    low_edge = layout.LOW_FADER[2] + 2
    high_edge = layout.HIGH_FADER[0] - 2
    middle = (low_edge + high_edge) / 2
    parts = []
    for hertz in (200, 1500, 2500, 4000, 6000, 8000, 9000, 12000, 17500):
        row = scales.hertz_row(hertz)
        parts.append(_tick(low_edge, low_edge + 3, row, palette.INK_FAINT))
        parts.append(_tick(high_edge - 3, high_edge, row, palette.INK_FAINT))
    for hertz in (20, 500, 1000, 2000, 3000, 5000, 7000, 10000, 15000, 20000):
        row = scales.hertz_row(hertz)
        text = "%dk" % (hertz // 1000) if hertz >= 1000 else "%d" % hertz
        half = (width(text) + 1) // 2 + 3
        for near, far in ((low_edge, middle - half), (middle + half, high_edge)):
            parts.append(_tick(near, far, row, palette.INK_FAINT, 0.45))
        parts.append(_tick(low_edge, low_edge + 6, row))
        parts.append(_tick(high_edge - 6, high_edge, row))
        parts.append(lettering(text, middle, row - 3, palette.INK_SOFT, "middle"))
    return "".join(parts)


def _fan(middle):
    """The stereo stage above the Position knob: rays that fade away, tallest where a voice usually stands."""
    parts = []
    pieces = 12
    for step in range(-FAN_RAYS, FAN_RAYS + 1):
        angle = 180.0 + step * (layout.KNOB_LAST_ANGLE - layout.KNOB_FIRST_ANGLE) / STAGE_STEPS
        turn = math.radians(angle - 180.0)
        reach = FAN_WIDTH * FAN_HEIGHT / math.hypot(FAN_HEIGHT * math.sin(turn), FAN_WIDTH * math.cos(turn))
        for piece in range(pieces):
            near = FAN_INNER + (reach - FAN_INNER) * piece / pieces
            far = FAN_INNER + (reach - FAN_INNER) * (piece + 1) / pieces
            parts.append(line(*scales.on_circle(middle, near, angle), *scales.on_circle(middle, far, angle),
                              palette.INK_SOFT, 1.0, 0.6 * (1.0 - piece / pieces)))
    return "".join(parts)


def _knob_scale(middle):
    """Graduations around the Position knob with L, C and R."""
    parts = []
    for step in range(STAGE_STEPS + 1):
        angle = scales.knob_angle(step / STAGE_STEPS)
        if step == STAGE_STEPS // 2:
            near, far, colour, thickness = 19.0, 24.0, palette.INK, 2.0
        elif step in (0, STAGE_STEPS):
            near, far, colour, thickness = 18.0, 20.5, palette.INK, 1.3  # the read-out is close
        elif step % 4 == 0:
            near, far, colour, thickness = 19.5, 24.0, palette.INK_SOFT, 1.0
        else:
            near, far, colour, thickness = 20.5, 22.5, palette.INK_FAINT, 1.0
        parts.append(line(*scales.on_circle(middle, near, angle), *scales.on_circle(middle, far, angle),
                          colour, thickness))
    parts.append(lettering("C", middle[0], 131, palette.INK, "middle"))
    parts.append(lettering("L", middle[0] - 27, 174, palette.INK, "middle"))
    parts.append(lettering("R", middle[0] + 27, 174, palette.INK, "middle"))
    return "".join(parts)


def _headings():
    def heading(text, x, anchor="middle"):
        return engraved(text, x, HEADING_ROW, palette.INK, anchor, 2, 1.15)

    return (heading("INPUT", 46.5) + heading("LOW", 149) + heading("HIGH", 237) + heading("POSITION", 324.5)
            + heading("OUTPUT", 430.5)
            + lettering("Hz", 193.5, 189, palette.INK_SOFT, "middle")
            + lettering("dB", 52, 189, palette.INK_SOFT)
            + lettering("dB", 452, 189, palette.INK_SOFT)
            + lettering("ON", 20, 15, palette.INK_SOFT, "right", 1)
            + lettering("COPY FROM", 96, 15, palette.INK_SOFT, spacing=1))


def _dividers():
    parts = []
    for x in (103, 284, 365):
        parts.append(rect(x, 45, 1, 156, palette.SHADE, opacity=0.16))
        parts.append(rect(x + 1, 45, 1, 156, palette.LIGHT, opacity=0.5))
    return "".join(parts)


def printing():
    """Everything printed: name, headings, scales and units."""
    input_scale = _level_scale(scales.INPUT_GAIN, (0, -3, -6, -12, -18, -24, -60),
                               (-1, -2, -4, -5, -9, -30, -36), layout.INPUT_FADER, 1)
    output_scale = _level_scale(scales.OUTPUT_GAIN, (6, 3, 0, -3, -6, -12, -18, -24, -60),
                                (5, 4, 2, 1, -1, -2, -4, -5, -9, -15, -30), layout.OUTPUT_FADER, -1)
    knob = layout.centre(layout.KNOB)
    return (_dividers() + wordmark(463, 8, palette.INK) + _headings() + input_scale + output_scale
            + _meter_scale(layout.METER_LEFTS[0] - 3, -1)
            + _meter_scale(layout.METER_LEFTS[3] + layout.METER_WIDTH + 3, 1)
            + _band_ladder() + _fan(knob) + _knob_scale(knob))


def plate():
    """The whole faceplate without any control."""
    return ground() + wells() + slots() + printing()
