# SPDX-License-Identifier: MIT
"""What one takes hold of: thumb, knob and keys. Light falls from above, whatever the control's position."""

from . import layout, palette, scales
from .lettering import lettering
from .shapes import gradient, line, rect


# --- fader thumb, drawn in its own coordinates -------------------------------------------------------------

THUMB_DEFS = (
    gradient("thumbUpper", 1, 12, [(0, palette.CAP_TOP), (0.3, palette.CAP_MIDDLE), (1, "#232427")])
    + gradient("thumbLower", 13, 24, [(0, "#4a4c51"), (0.6, palette.CAP_MIDDLE), (1, palette.CAP_BOTTOM)])
)


def _groove(row):
    """A groove across the thumb: dark cut, lit lower edge."""
    left, width = 2, layout.THUMB_WIDTH - 4
    return (rect(left, row, width, 1, palette.SHADE, opacity=0.30)
            + rect(left, row + 1, width, 1, palette.LIGHT, opacity=0.10))


def thumb():
    """A fader cap with grooves for the finger and a white line on its middle row."""
    w = layout.THUMB_WIDTH
    middle = layout.THUMB_HEIGHT // 2
    return (rect(0, 3, w, 22, palette.SHADE, 2.5, 0.28)
            + rect(0, 1, w, 23, palette.CAP_EDGE, 2)
            + rect(1, 2, w - 2, 10, "url(#thumbUpper)", 1)
            + rect(1, 13, w - 2, 10, "url(#thumbLower)", 1)
            + rect(2, 2, w - 4, 1, palette.LIGHT, opacity=0.30)
            + "".join(_groove(middle + offset) for offset in (-7, -4, 4, 7))
            + rect(1, middle, w - 2, 1, palette.LEGEND))


# --- knob, drawn in panel coordinates ----------------------------------------------------------------------

_KX, _KY = layout.centre(layout.KNOB)
KNOB_DEFS = (
    gradient("knobSkirt", _KY - 15, _KY + 15, [(0, "#5a5c61"), (0.5, "#303236"), (1, "#1a1b1d")])
    + gradient("knobCap", _KY - 11, _KY + 11, [(0, "#4b4d52"), (1, "#2b2c30")])
    + gradient("knobRim", _KY - 11, _KY + 11,
               [(0, palette.LIGHT, 0.38), (0.45, palette.LIGHT, 0.05), (1, palette.SHADE, 0.35)])
    + '<radialGradient id="knobShadow" gradientUnits="userSpaceOnUse" cx="%g" cy="%g" r="15.4">'
      '<stop offset="0.8" stop-color="#000" stop-opacity="0.55"/>'
      '<stop offset="1" stop-color="#000" stop-opacity="0"/>'
      "</radialGradient>" % (_KX, _KY + 1)
)


def knob(angle):
    """The knob with its pointer at an angle (0 points straight down, growing clockwise)."""
    def disc(radius, fill, extra=""):
        return '<circle cx="%g" cy="%g" r="%g" fill="%s"%s/>' % (_KX, _KY, radius, fill, extra)

    inner = scales.on_circle((_KX, _KY), 4.5, angle)
    outer = scales.on_circle((_KX, _KY), 12.8, angle)
    return ('<circle cx="%g" cy="%g" r="15.4" fill="url(#knobShadow)"/>' % (_KX, _KY + 1)
            + disc(14, palette.CAP_EDGE) + disc(13.2, "url(#knobSkirt)") + disc(11, "url(#knobCap)")
            + disc(10.6, "none", ' stroke="url(#knobRim)" stroke-width="0.9"')
            + line(*inner, *outer, palette.LEGEND, 2.0, cap="round"))


# --- keys, drawn in panel coordinates ----------------------------------------------------------------------

def key_defs(name, pressed):
    """Gradient of one key's face."""
    stops = ([(0, "#232427"), (1, "#303236")] if pressed
             else [(0, palette.CAP_TOP), (0.15, "#43454a"), (1, palette.CAP_BOTTOM)])
    return gradient(name, layout.KEY_TOP + 1, layout.KEY_BOTTOM - 2, stops)


def key(area, face, pressed):
    """A key's body: it stands a row proud of the plate, and goes down a row when it is held."""
    left, right = area[0], area[2]
    top, bottom = layout.KEY_TOP, layout.KEY_BOTTOM
    w, h = right - left, bottom - top
    body = rect(left, top + 1, w, h - 1, palette.LIGHT, 3, 0.55)  # the lit lip of its opening
    body += rect(left, top, w, h - 1, palette.CAP_EDGE, 3)
    if pressed:
        return body + rect(left + 1, top + 2, w - 2, h - 4, face, 2)
    return (body + rect(left + 1, top + 1, w - 2, h - 4, face, 2)
            + rect(left + 3, top + 1, w - 6, 1, palette.LIGHT, opacity=0.28)
            + rect(left + 2, bottom - 3, w - 4, 1, palette.SHADE, opacity=0.35))


def power_legend(area, lit, pressed):
    """The power sign; green light shines through it while the effect is on."""
    x = (area[0] + area[2]) / 2
    y = (layout.KEY_TOP + layout.KEY_BOTTOM) / 2 + (1 if pressed else 0)
    colour = palette.GREEN if lit else palette.LEGEND_UNLIT
    shape = ('<path d="M%g,%gA3.9,3.9 0 1 0 %g,%gM%g,%gV%g" fill="none" stroke-linecap="round" stroke="%%s"'
             ' stroke-width="%%g" opacity="%%g"/>'
             % (x - 2.3, y - 3.1, x + 2.3, y - 3.1, x, y - 5.0, y - 0.8))
    glow = "".join(shape % (colour, w, o) for w, o in ((6.0, 0.07), (4.0, 0.12), (2.8, 0.16))) if lit else ""
    return glow + shape % (colour, 1.4, 1.0)


def copy_legend(area, lit, pressed):
    """Two sheets and a mark that a menu opens."""
    x, y = area[0] + 6, layout.KEY_TOP + 3 + (1 if pressed else 0)
    colour = palette.AMBER if lit else palette.LEGEND
    return ('<g fill="none" stroke="%s" stroke-width="1"><path d="M%g,%gH%gV%gH%gZ"/>'
            '<path d="M%g,%gH%gV%gH%g" opacity="0.7"/></g>'
            % (colour, x + 2.5, y + 2.5, x + 7.5, y + 8.5, x + 2.5, x + 2, y + 6.5, x + 0.5, y + 0.5, x + 6)
            + '<path d="M%g,%gh5l-2.5,3z" fill="%s"/>' % (x + 11, y + 4, colour))


def _turn_back(x, y, colour):
    """An arrow that turns back, seven pixels wide and six high."""
    return ('<path d="M%g,%gH%gA1.75,1.75 0 0 1 %g,%gH%g" fill="none" stroke="%s"/>'
            '<path d="M%g,%gl3,-2v4z" fill="%s"/>'
            % (x + 2, y + 2, x + 4.75, x + 4.75, y + 5.5, x + 1.5, colour, x, y + 2, colour))


def modified_legend(area, changed):
    """EDITED and the way back light up while the program differs from its stored state."""
    colour = palette.AMBER if changed else palette.LEGEND_DEAD
    x, y = area[0] + 4, layout.KEY_TOP + 5
    return lettering("EDITED", x, y, colour) + _turn_back(x + 29, y, colour)


def save_legend(area):
    """The word SAVE in the middle of its key."""
    x = (area[0] + area[2]) / 2
    return lettering("SAVE", x, layout.KEY_TOP + 5, palette.LEGEND, "middle", 2)
