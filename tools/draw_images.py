#!/usr/bin/env python3
"""Draws the embedded images' artwork as binary PPM (P6) files.

    draw_images.py [OUTDIR]        (default: the res/ folder beside tools/)

Writes:
  Lumet_Progressbar_LightBlue.ppm  68 x 80  progress-bar frame: rounded light-blue
                                            border, lighter inside, soft vertical shading
  SelfTestGreen.ppm                50 x 62  self-test indicator: green lamp with a
                                            check mark on a neutral light background

The images have no mask and no alpha: pixels outside the rounded shapes are
blended into a neutral light background so that they sit well on the
instrument's light screens. Edges are anti-aliased by 4 x 4 supersampling.
Only the standard library is used, so the files can be redrawn anywhere.
"""

import math
import os
import sys

SS = 4  # supersampling per axis

BACKGROUND = (240, 240, 240)


def clamp(v):
    return max(0, min(255, int(round(v))))


def mix(a, b, t):
    return tuple(a[i] + (b[i] - a[i]) * t for i in range(3))


def rounded_rect_inside(x, y, left, top, right, bottom, radius):
    """True when point (x, y) lies inside the rounded rectangle [left, right) x [top, bottom)."""
    if x < left or x >= right or y < top or y >= bottom:
        return False
    cx = min(max(x, left + radius), right - radius)
    cy = min(max(y, top + radius), bottom - radius)
    return (x - cx) ** 2 + (y - cy) ** 2 <= radius * radius


def render(width, height, shade):
    """shade(x, y) gives the colour at a sub-pixel position; returns rows of RGB tuples."""
    rows = []
    for py in range(height):
        row = []
        for px in range(width):
            acc = [0.0, 0.0, 0.0]
            for sy in range(SS):
                for sx in range(SS):
                    c = shade(px + (sx + 0.5) / SS, py + (sy + 0.5) / SS)
                    for i in range(3):
                        acc[i] += c[i]
            row.append(tuple(clamp(a / (SS * SS)) for a in acc))
        rows.append(row)
    return rows


def progress_frame(width=68, height=80):
    border_dark = (62, 140, 204)
    border_light = (120, 186, 236)
    highlight = (236, 246, 255)
    inner_top = (232, 243, 252)
    inner_bottom = (203, 226, 246)
    outer_radius = 10.0
    border = 3.0

    def shade(x, y):
        if not rounded_rect_inside(x, y, 0.5, 0.5, width - 0.5, height - 0.5, outer_radius):
            return BACKGROUND
        t = y / height
        inner = rounded_rect_inside(x, y, 0.5 + border, 0.5 + border, width - 0.5 - border,
                                    height - 0.5 - border, outer_radius - border)
        if not inner:
            # The border is lit from above: lighter at the top, deeper at the bottom.
            return mix(border_light, border_dark, t)
        inside_highlight = rounded_rect_inside(x, y, 0.5 + border + 1, 0.5 + border + 1,
                                               width - 0.5 - border - 1,
                                               height - 0.5 - border - 1,
                                               outer_radius - border - 1)
        if not inside_highlight and y < height / 2:
            return highlight
        return mix(inner_top, inner_bottom, t)

    return render(width, height, shade)


def self_test_green(width=50, height=62):
    cx, cy, radius = 25.0, 25.0, 21.0
    rim = (20, 110, 40)
    lamp_light = (150, 235, 140)
    lamp_dark = (30, 150, 50)
    check = (255, 255, 255)
    base_top = (200, 200, 200)
    base_bottom = (150, 150, 150)

    def on_check(x, y):
        # Two thick strokes: (14,26)-(22,34) and (22,34)-(37,17).
        def dist(ax, ay, bx, by):
            vx, vy = bx - ax, by - ay
            t = max(0.0, min(1.0, ((x - ax) * vx + (y - ay) * vy) / (vx * vx + vy * vy)))
            return math.hypot(x - (ax + t * vx), y - (ay + t * vy))
        return min(dist(14, 26, 22, 34), dist(22, 34, 37, 17)) <= 3.0

    def shade(x, y):
        d = math.hypot(x - cx, y - cy)
        if d <= radius:
            if d > radius - 2.0:
                return rim
            if on_check(x, y):
                return check
            # Light comes from the upper left.
            hx, hy = cx - 7.0, cy - 8.0
            t = min(1.0, math.hypot(x - hx, y - hy) / (radius * 1.6))
            return mix(lamp_light, lamp_dark, t)
        if rounded_rect_inside(x, y, 13.0, 47.0, 37.0, 59.0, 3.0):
            return mix(base_top, base_bottom, (y - 47.0) / 12.0)
        return BACKGROUND

    return render(width, height, shade)


def write_ppm(path, rows):
    height = len(rows)
    width = len(rows[0])
    with open(path, "wb") as f:
        f.write(b"P6\n%d %d\n255\n" % (width, height))
        f.write(bytes(c for row in rows for px in row for c in px))


def main(argv):
    outdir = argv[1] if len(argv) > 1 else os.path.join(os.path.dirname(os.path.abspath(__file__)),
                                                         "..", "res")
    write_ppm(os.path.join(outdir, "Lumet_Progressbar_LightBlue.ppm"), progress_frame())
    write_ppm(os.path.join(outdir, "SelfTestGreen.ppm"), self_test_green())
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
