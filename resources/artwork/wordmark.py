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
    """(path, strength) of each letter, left to right, and the width of the word.

    Round letters are nine pixels wide and begin on whole pixels, so that every stem ends on one.
    """
    top = X_MIDDLE - RADIUS - STROKE / 2
    half = RADIUS + STROKE / 2

    def stem(x, above):
        return "M%.3f,%.3fV%.3f" % (x, above, BASELINE)

    v = "M0.9,%g L5.5,%.3f L10.1,%g" % (ASCENDER, BASELINE - 0.9, ASCENDER)
    o, c, first_a, second_a, d, e = (left + half for left in (10, 20, 29, 46, 57, 68))
    f = 42.0 - STROKE / 2
    f_path = stem(f, ASCENDER + 2.6) + "M%.3f,%.3fQ%.3f,%.3f %.3f,%.3fH%.3fM%.3f,%.3fH%.3f" % (
        f, ASCENDER + 2.65, f, ASCENDER - 0.15 + STROKE / 2, f + 2.4, ASCENDER - 0.15 + STROKE / 2, f + 3.4,
        f - 2.3, top + STROKE / 2, f + 3.0)
    return [
        (v, 1.0),
        (_circle(o), 1.0),
        (_arc(c, 42, 318), 1.0),
        (_circle(first_a) + stem(first_a + RADIUS, top), 1.0),
        (f_path, 0.86),
        (_circle(second_a) + stem(second_a + RADIUS, top), 0.7),
        (_circle(d) + stem(d + RADIUS, ASCENDER - 1), 0.54),
        (_arc(e, 48, 360) + "H%.3f" % (e - RADIUS), 0.4),
    ], e + half


def wordmark(right, top, colour):
    """The name, ending at `right`, its ascenders' box beginning at row `top`."""
    letters, width = _letters()
    body = "".join('<path d="%s" opacity="%g"/>' % letter for letter in letters)
    return ('<g transform="translate(%g,%g)" fill="none" stroke="%s" stroke-width="%g">%s</g>'
            % (right - width, top, colour, STROKE, body))
