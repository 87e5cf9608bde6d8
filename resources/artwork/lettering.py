# SPDX-License-Identifier: MIT
"""A single-stroke alphabet, as an engraver's machine cuts it.

Letters are six pixels high. Strokes run along pixel centres, so that verticals and horizontals fill whole
pixels at 1:1. No font is needed, and the result is the same on every machine.
"""

HEIGHT = 6

# Character: (width in pixels, path). Path units are pixels; (0, 0) is the centre of the top left pixel.
GLYPHS = {
    " ": (2, ""),
    "0": (4, "M0,1.5A1.5,1.5 0 0 1 3,1.5V3.5A1.5,1.5 0 0 1 0,3.5Z"),
    "1": (3, "M0.5,0.9L1.9,0H2V5"),
    "2": (4, "M0.2,0H1.5Q3,0 3,1.3Q3,2.1 2.2,2.9L0.1,5H3"),
    "3": (4, "M0.2,0H1.4Q2.8,0 2.8,1Q2.8,2 1.3,2Q3,2 3,3.5Q3,5 1.5,5H0.2"),
    "4": (4, "M3,4H0V3.4L2,0V5"),
    "5": (4, "M2.8,0H0V2H1.5Q3,2 3,3.5Q3,5 1.5,5H0.2"),
    "6": (4, "M2.5,0H1.8Q0,0 0,2.2V3.5Q0,5 1.5,5Q3,5 3,3.5Q3,2 1.5,2Q0.5,2 0,2.8"),
    "7": (4, "M0,0H3V0.4L1,5"),
    "8": (4, "M1.5,2Q0.1,2 0.1,1Q0.1,0 1.5,0Q2.9,0 2.9,1Q2.9,2 1.5,2"
             "Q3,2 3,3.5Q3,5 1.5,5Q0,5 0,3.5Q0,2 1.5,2Z"),
    "9": (4, "M0.5,5H1.2Q3,5 3,2.8V1.5Q3,0 1.5,0Q0,0 0,1.5Q0,3 1.5,3Q2.5,3 3,2.2"),
    "+": (3, "M1,2V4M0,3H2"),
    "A": (5, "M0,5L1.9,0H2.1L4,5M0.8,3.5H3.2"),
    "B": (4, "M1.6,2Q2.8,2 2.8,1Q2.8,0 1.6,0H0V5H1.7Q3,5 3,3.5Q3,2 1.6,2H0"),
    "C": (4, "M2.8,0H1.7Q0,0 0,1.7V3.3Q0,5 1.7,5H2.8"),
    "D": (4, "M0,0H1.2Q3,0 3,1.8V3.2Q3,5 1.2,5H0Z"),
    "E": (4, "M3,0H0V5H3M0,2H2.4"),
    "F": (4, "M3,0H0V5M0,2H2.4"),
    "G": (4, "M2.8,0H1.7Q0,0 0,1.7V3.3Q0,5 1.7,5H3V3H1.8"),
    "H": (4, "M0,0V5M3,0V5M0,2H3"),
    "I": (1, "M0,0V5"),
    "L": (4, "M0,0V5H3"),
    "M": (5, "M0,5V0H0.2L2,3.2L3.8,0H4V5"),
    "N": (4, "M0,5V0H0.1L2.9,5H3V0"),
    "O": (4, "M0,1.5A1.5,1.5 0 0 1 3,1.5V3.5A1.5,1.5 0 0 1 0,3.5Z"),
    "P": (4, "M0,5V0H1.6Q3,0 3,1.5Q3,3 1.6,3H0"),
    "R": (4, "M0,5V0H1.6Q3,0 3,1.5Q3,3 1.6,3H0M1.5,3L3,5"),
    "S": (4, "M2.8,0H1.4Q0,0 0,1.1Q0,2 1.5,2.4Q3,2.8 3,3.9Q3,5 1.6,5H0.2"),
    "T": (5, "M0,0H4M2,0V5"),
    "U": (4, "M0,0V3.5Q0,5 1.5,5Q3,5 3,3.5V0"),
    "V": (5, "M0,0L1.9,5H2.1L4,0"),
    "W": (7, "M0,0L1.4,5H1.6L3,0.8L4.4,5H4.6L6,0"),
    "Y": (5, "M0,0L2,2.6L4,0M2,2.6V5"),
    "d": (4, "M3,0V5M3,3.5Q3,2 1.5,2Q0,2 0,3.5Q0,5 1.5,5Q3,5 3,3.5"),
    "k": (4, "M0,0V5M2.7,2L0.4,3.6L2.9,5"),
    "z": (4, "M0,2H3L0,5H3"),
}


def width(text, spacing=1):
    """Width of a line of text in pixels."""
    return sum(GLYPHS[letter][0] + spacing for letter in text) - spacing


def _strokes(text, x, y, spacing):
    parts = []
    for letter in text:
        advance, path = GLYPHS[letter]
        if path:
            parts.append('<path transform="translate(%g,%g)" d="%s"/>' % (x + 0.5, y + 0.5, path))
        x += advance + spacing
    return "".join(parts)


def lettering(text, x, y, colour, anchor="left", spacing=1, weight=1.0):
    """A line of text whose letters stand from row `y` to row `y + 5`.

    `x` is the left edge, the middle or the right edge, as `anchor` says.
    """
    span = width(text, spacing)
    left = {"left": x, "middle": int(x - span / 2), "right": x - span}[anchor]
    return (
        '<g fill="none" stroke="%s" stroke-width="%g" stroke-linecap="square" stroke-linejoin="round">%s</g>'
        % (colour, weight, _strokes(text, left, y, spacing)))


def engraved(text, x, y, colour, anchor="left", spacing=1, weight=1.0):
    """Text cut into the plate: its lower edge catches the light."""
    catch = lettering(text, x, y + 1, "#ffffff", anchor, spacing, weight)
    return '<g opacity="0.5">%s</g>%s' % (catch, lettering(text, x, y, colour, anchor, spacing, weight))
