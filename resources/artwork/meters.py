# SPDX-License-Identifier: MIT
"""Level meters: one segment a dB, three rows each, green below, amber near full level, red above 0 dB."""

from . import layout, palette, scales
from .shapes import rect


def _colour(decibels):
    """Colour of the segment whose upper edge stands for a level."""
    if decibels > 0:
        return palette.RED
    if decibels > -6:
        return palette.AMBER
    return palette.mix(palette.YELLOW, palette.GREEN, min(max((-12 - decibels) / 8.0, 0.0), 1.0))


def meter(left, lit):
    """One meter, seven pixels wide, whose segments all shine or are all dark."""
    parts = [rect(left, 0, layout.METER_WIDTH, layout.METER_HEIGHT, palette.WELL)]
    for decibels in range(6, -38, -1):
        colour = _colour(decibels)
        row = scales.meter_row(decibels)
        if lit:
            parts.append(rect(left, row, layout.METER_WIDTH, 2, colour))
            parts.append(rect(left, row, layout.METER_WIDTH, 1, palette.LIGHT, opacity=0.18))
        else:
            parts.append(rect(left, row, layout.METER_WIDTH, 2, palette.mix(palette.WELL, colour, 0.16)))
    return "".join(parts)


def lamp(width, height, colour, lit):
    """A small rectangular lamp."""
    face = colour if lit else palette.mix(palette.WELL, colour, 0.22)
    glint = rect(1, 1, width - 2, 1, palette.LIGHT, opacity=0.35 if lit else 0.12)
    return (rect(0, 0, width, height, palette.CAP_EDGE, 1.5) + rect(1, 1, width - 2, height - 2, face, 0.5)
            + glint)
