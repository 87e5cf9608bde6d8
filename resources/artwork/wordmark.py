# SPDX-License-Identifier: MIT
"""The name: one stroke, circles and stems, and a voice that goes away towards the end."""

import math

STROKE = 1.7
RADIUS = 3.65      # of the round letters, to the stroke's middle
BASELINE = 16.0    # measured from the top of the ascenders' box
X_MIDDLE = BASELINE - STROKE / 2 - RADIUS
ASCENDER = 3.0


def _arc(cx, first, last):
    """A part of a round letter; angles in degrees, 0 to the right, growing clockwise on screen."""
    a, b = math.radians(first), math.radians(last)
    large = 1 if abs(last - first) > 180 else 0
    return "M%.3f,%.3fA%g,%g 0 %d %d %.3f,%.3f" % (
        cx + RADIUS * math.cos(a), X_MIDDLE + RADIUS * math.sin(a), RADIUS, RADIUS, large,
        1 if last > first else 0, cx + RADIUS * math.cos(b), X_MIDDLE + RADIUS * math.sin(b))


def _circle(cx):
    return _arc(cx, 0, 180) + _arc(cx, 180, 360)


def _letters():
    """(path, strength) of each letter, left to right, and the width of the word."""
    low = BASELINE
    letters = []
    x = 0.0
    letters.append(("M%.2f,%.2fL%.2f,%.2fL%.2f,%.2f" % (x + 0.8, ASCENDER, x + 5.4, low - 0.9, x + 10.0, ASCENDER), 1.0))
    x += 9.3
    cx = x + STROKE / 2 + RADIUS
    letters.append((_circle(cx), 1.0))
    x = cx + RADIUS + STROKE / 2 + 1.5
    cx = x + STROKE / 2 + RADIUS
    letters.append((_arc(cx, 42, 318), 1.0))
    x = cx + RADIUS * 0.78 + STROKE / 2 + 1.7
    cx = x + STROKE / 2 + RADIUS
    letters.append((_circle(cx) + "M%.3f,%.3fV%.3f" % (cx + RADIUS, X_MIDDLE - RADIUS - STROKE / 2, low), 1.0))
    x = cx + RADIUS + STROKE / 2 + 1.3
    stem = x + 2.2
    letters.append(("M%.3f,%.3fV%.3fQ%.3f,%.3f %.3f,%.3fH%.3fM%.3f,%.3fH%.3f" % (
        stem, low, ASCENDER + 2.6, stem, ASCENDER + 0.1, stem + 2.4, ASCENDER + 0.1, stem + 3.2,
        stem - 2.0, X_MIDDLE - RADIUS + 0.1, stem + 2.9), 0.86))
    x = stem + 3.2 + 1.0
    cx = x + STROKE / 2 + RADIUS
    letters.append((_circle(cx) + "M%.3f,%.3fV%.3f" % (cx + RADIUS, X_MIDDLE - RADIUS - STROKE / 2, low), 0.68))
    x = cx + RADIUS + STROKE / 2 + 1.7
    cx = x + STROKE / 2 + RADIUS
    letters.append((_circle(cx) + "M%.3f,%.3fV%.3f" % (cx + RADIUS, ASCENDER - STROKE / 2, low), 0.5))
    x = cx + RADIUS + STROKE / 2 + 1.7
    cx = x + STROKE / 2 + RADIUS
    letters.append((_arc(cx, 48, 360) + "H%.3f" % (cx - RADIUS), 0.34))
    return letters, cx + RADIUS + STROKE / 2


def wordmark(right, top, colour):
    """The name, ending at `right`, its ascenders' box beginning at row `top`."""
    letters, width = _letters()
    body = "".join('<path d="%s" opacity="%g"/>' % letter for letter in letters)
    return ('<g transform="translate(%.3f,%g)" fill="none" stroke="%s" stroke-width="%g" stroke-linejoin="miter"'
            ' stroke-linecap="butt">%s</g>' % (right - width, top, colour, STROKE, body))
