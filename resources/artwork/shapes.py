# SPDX-License-Identifier: MIT
"""Small SVG building blocks."""


def rect(left, top, width, height, fill, radius=0.0, opacity=1.0):
    """A filled rectangle with optional round corners."""
    extra = ' rx="%g"' % radius if radius else ""
    extra += ' opacity="%g"' % opacity if opacity != 1.0 else ""
    return ('<rect x="%g" y="%g" width="%g" height="%g" fill="%s"%s/>'
            % (left, top, width, height, fill, extra))


def gradient(name, top, bottom, stops):
    """A vertical gradient between two rows; `stops` are (offset, colour) or (offset, colour, opacity)."""
    body = "".join(
        '<stop offset="%g" stop-color="%s"%s/>'
        % (stop[0], stop[1], ' stop-opacity="%g"' % stop[2] if len(stop) > 2 else "") for stop in stops)
    return ('<linearGradient id="%s" gradientUnits="userSpaceOnUse" x1="0" y1="%g" x2="0" y2="%g">%s'
            "</linearGradient>" % (name, top, bottom, body))


def line(x1, y1, x2, y2, colour, width=1.0, opacity=1.0, cap="butt"):
    """A straight stroke."""
    return ('<path d="M%.3f,%.3fL%.3f,%.3f" fill="none" stroke="%s" stroke-width="%g" stroke-linecap="%s"'
            ' opacity="%g"/>' % (x1, y1, x2, y2, colour, width, cap, opacity))


def window(x, y, width, height, view, body):
    """A part of the panel (`view` = left, top, right, bottom) shown, and cut off, at a place of its own."""
    return ('<svg x="%g" y="%g" width="%g" height="%g" viewBox="%g %g %g %g">%s</svg>'
            % (x, y, width, height, view[0], view[1], view[2] - view[0], view[3] - view[1], body))


def document(width, height, body, defs=""):
    """A whole SVG file."""
    return ('<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" width="%d"'
            ' height="%d" viewBox="0 0 %d %d"><defs>%s</defs>%s</svg>\n'
            % (width, height, width, height, defs, body))
