# SPDX-License-Identifier: MIT
"""From values to pixels: where a graduation must be printed so that the thumb's line meets it."""

import math

from . import layout

OUTPUT_GAIN = (0.001, 2.0)
INPUT_GAIN = (0.001, 1.0)
BAND_HERTZ = (20.0, 20000.0)


def gain_of(decibels):
    """Linear gain of a level; a doubling counts as 6 dB exactly, as everywhere in the product."""
    return 2.0 ** (decibels / 6.0)


def normalised(value, limits):
    """A value as a part of its range, 0 to 1."""
    low, high = limits
    return min(max((value - low) / (high - low), 0.0), 1.0)


def thumb_centre(normal):
    """Row of the track on which the thumb's index line stands: the faders' decade taper."""
    half = layout.THUMB_HEIGHT // 2
    start = layout.FADER_HEIGHT - half
    end = half
    return int(start + (end - start) * math.log10(normal * 9.0 + 1.0) + 0.5)


def level_row(decibels, limits):
    """Panel row of a level beside its fader."""
    return layout.FADER_TOP + thumb_centre(normalised(gain_of(decibels), limits))


def hertz_row(hertz):
    """Panel row of a frequency beside the band faders."""
    return layout.FADER_TOP + thumb_centre(normalised(hertz, BAND_HERTZ))


def meter_row(decibels):
    """First lit row of a meter, counted from the top of its bitmap: three rows a dB, 0 dB on row 19."""
    return int(decibels * -3.0 + 19.0)


def knob_angle(normal):
    """Angle of the knob's pointer in degrees; 0 points straight down, growing clockwise."""
    return layout.KNOB_FIRST_ANGLE + (layout.KNOB_LAST_ANGLE - layout.KNOB_FIRST_ANGLE) * normal


def on_circle(centre, radius, angle):
    """The point that lies at a knob angle around a centre."""
    turn = math.radians(angle)
    return centre[0] - radius * math.sin(turn), centre[1] + radius * math.cos(turn)
