# SPDX-License-Identifier: MIT
"""The fourteen bitmaps by number, each as one SVG document."""

from . import controls, layout, meters, palette, plate, scales
from .shapes import document, window


def _halves(area, make):
    """A bitmap of two halves, one above the other, each showing the same place of the panel.

    `make(index, prefix)` draws half 0 (upper) or 1 (lower) in panel coordinates and returns (defs, body).
    """
    width, height = layout.size(area)
    defs, body = plate.DEFS, ""
    for index in (0, 1):
        more, drawing = make(index, "half%d" % index)
        defs += more
        body += window(0, index * height, width, height, area, plate.ground() + drawing)
    return document(width, 2 * height, body, defs)


def _key(area, legend):
    """A key, released above and held below; `legend(pressed)` draws its sign."""
    def make(index, name):
        pressed = index == 1
        return (controls.key_defs(name, pressed),
                controls.key(area, "url(#%s)" % name, pressed) + legend(pressed))

    return _halves(area, make)


def background():
    return document(layout.PANEL_WIDTH, layout.PANEL_HEIGHT, plate.plate(), plate.DEFS)


def fader_track():
    """A piece of the plate, so that nothing shows where the fader's rectangle begins."""
    width, height = layout.size(layout.INPUT_FADER)
    piece = window(0, 0, width, height, layout.INPUT_FADER, plate.plate())
    return document(width, height, piece, plate.DEFS)


def fader_thumb():
    return document(layout.THUMB_WIDTH, layout.THUMB_HEIGHT, controls.thumb(), controls.THUMB_DEFS)


def knob_strip():
    """All positions of the knob, one below the other, each on its piece of the plate."""
    width, height = layout.size(layout.KNOB)
    frames = "".join(
        window(0, frame * height, width, height, layout.KNOB,
               plate.plate() + controls.knob(scales.knob_angle(frame / (layout.KNOB_FRAMES - 1))))
        for frame in range(layout.KNOB_FRAMES))
    return document(width, height * layout.KNOB_FRAMES, frames, plate.DEFS + controls.KNOB_DEFS)


def on_off(lit):
    return _key(layout.ON_OFF, lambda pressed: controls.power_legend(layout.ON_OFF, lit, pressed))


def copy_program(lit):
    """The lit form is shown while the menu is open."""
    return _key(layout.COPY, lambda pressed: controls.copy_legend(layout.COPY, lit, pressed))


def modified():
    area = layout.MODIFIED

    def make(index, name):
        return (controls.key_defs(name, False),
                controls.key(area, "url(#%s)" % name, False) + controls.modified_legend(area, index == 1))

    return _halves(area, make)


def save():
    area = layout.SAVE
    width, height = layout.size(area)
    body = window(0, 0, width, height, area,
                  plate.ground() + controls.key(area, "url(#save)", False) + controls.save_legend(area))
    return document(width, height, body, plate.DEFS + controls.key_defs("save", False))


def meter_pair():
    """The dark meter on the left, the shining one on the right."""
    width = layout.METER_WIDTH
    return document(2 * width, layout.METER_HEIGHT, meters.meter(0, False) + meters.meter(width, True))


def lamp(colour, lit):
    return document(9, 9, meters.lamp(9, 9, colour, lit))


def clip_lamp():
    """Dark above, shining below."""
    body = (window(0, 0, 16, 8, (0, 0, 16, 8), meters.lamp(16, 8, palette.RED, False))
            + window(0, 8, 16, 8, (0, 0, 16, 8), meters.lamp(16, 8, palette.RED, True)))
    return document(16, 16, body)


def all_bitmaps():
    """Resource number to SVG document."""
    return {
        3001: clip_lamp(),
        3002: on_off(False),
        3003: on_off(True),
        3004: knob_strip(),
        3005: background(),
        3006: fader_track(),
        3007: fader_thumb(),
        3008: meter_pair(),
        3009: lamp(palette.GREEN, True),
        3010: lamp(palette.GREEN, False),
        3011: copy_program(True),
        3012: copy_program(False),
        3013: save(),
        3014: modified(),
    }
