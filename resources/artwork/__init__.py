# SPDX-License-Identifier: MIT
"""The panel's artwork, drawn as SVG in panel coordinates (pixels, origin top left)."""
