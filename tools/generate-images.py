#!/usr/bin/env python3
"""Draws the images of resources/images.

    tools/generate-images.py [FOLDER]

Every image is 64 x 64 pixels with transparency, drawn from strokes by the distance of each point to them: a white sign
on a coloured disc. Running it again writes the same bytes.
"""
import math
import pathlib
import struct
import sys
import zlib

SIZE = 64
SAMPLES = 4  # in each direction, for smooth edges

# Strokes are lines (x1, y1, x2, y2) or arcs (centre x, centre y, radius, from, to in degrees, clockwise from the right),
# in a square from -1 to 1 with y downwards.
SIGNS = {
    "G": [("arc", 0, 0, 0.46, 45, 315), (0.02, 0.06, 0.44, 0.06), (0.44, 0.06, 0.33, 0.33)],
    "F": [(-0.24, -0.46, -0.24, 0.46), (-0.24, -0.46, 0.3, -0.46), (-0.24, -0.02, 0.2, -0.02)],
    "T": [(-0.36, -0.44, 0.36, -0.44), (0, -0.44, 0, 0.46)],
    "L": [(-0.22, -0.46, -0.22, 0.44), (-0.22, 0.44, 0.3, 0.44)],
    "E": [(-0.24, -0.46, -0.24, 0.46), (-0.24, -0.46, 0.3, -0.46), (-0.24, 0, 0.22, 0), (-0.24, 0.46, 0.3, 0.46)],
    "O": [("arc", 0, 0, 0.46, 0, 360)],
    "bin": [(-0.4, -0.3, 0.4, -0.3), (-0.14, -0.46, 0.14, -0.46), (-0.3, -0.3, -0.22, 0.48), (0.3, -0.3, 0.22, 0.48),
            (-0.22, 0.48, 0.22, 0.48), (-0.1, -0.1, -0.07, 0.28), (0.1, -0.1, 0.07, 0.28)],
}

# Name, sign, half the width of its strokes, colour of the disc.
IMAGES = [
    ("pic_E", "E", 0.085, (0x2E, 0x7D, 0x6B)),
    ("pic_F", "F", 0.085, (0x3B, 0x5A, 0xA0)),
    ("pic_G", "G", 0.085, (0xB5, 0x4A, 0x3C)),
    ("pic_L", "L", 0.085, (0x2A, 0x78, 0xA8)),
    ("pic_O", "O", 0.085, (0x6A, 0x4C, 0x93)),
    ("pic_T", "T", 0.085, (0x4A, 0x90, 0xC2)),
    ("pic_trash_logo1", "bin", 0.055, (0x6B, 0x72, 0x80)),
    ("pic_trash_logo2", "bin", 0.055, (0xA0, 0x3A, 0x3A)),
]


def to_line(x, y, x1, y1, x2, y2):
    dx, dy = x2 - x1, y2 - y1
    t = min(1.0, max(0.0, ((x - x1) * dx + (y - y1) * dy) / (dx * dx + dy * dy)))
    return math.hypot(x - x1 - t * dx, y - y1 - t * dy)


def to_arc(x, y, cx, cy, radius, begin, end):
    angle = math.degrees(math.atan2(y - cy, x - cx)) % 360
    if begin <= angle <= end:
        return abs(math.hypot(x - cx, y - cy) - radius)
    ends = [math.radians(begin), math.radians(end)]
    return min(math.hypot(x - cx - radius * math.cos(a), y - cy - radius * math.sin(a)) for a in ends)


def sample(x, y, strokes, width):
    """Whether the point is in the disc, and whether it is on the sign."""
    disc = math.hypot(x, y) <= 0.97
    sign = any((to_arc(x, y, *s[1:]) if s[0] == "arc" else to_line(x, y, *s)) <= width for s in strokes)
    return disc, disc and sign


def pixel(column, row, strokes, width, colour):
    disc = sign = 0
    for i in range(SAMPLES):
        for j in range(SAMPLES):
            x = (column + (i + 0.5) / SAMPLES) / SIZE * 2 - 1
            y = (row + (j + 0.5) / SAMPLES) / SIZE * 2 - 1
            in_disc, on_sign = sample(x, y, strokes, width)
            disc += in_disc
            sign += on_sign
    if disc == 0:
        return (0, 0, 0, 0)
    mixed = [(255 * sign + part * (disc - sign) + disc // 2) // disc for part in colour]
    return (*mixed, 255 * disc // (SAMPLES * SAMPLES))


def chunk(kind, content):
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", zlib.crc32(kind + content))


def png(rows):
    header = struct.pack(">IIBBBBB", SIZE, SIZE, 8, 6, 0, 0, 0)
    lines = b"".join(b"\0" + bytes(part for dot in row for part in dot) for row in rows)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) + chunk(b"IDAT", zlib.compress(lines, 9)) +
            chunk(b"IEND", b""))


def main():
    default = pathlib.Path(__file__).resolve().parent.parent / "resources/images"
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else default
    folder.mkdir(parents=True, exist_ok=True)
    for name, sign, width, colour in IMAGES:
        rows = [[pixel(column, row, SIGNS[sign], width, colour) for column in range(SIZE)] for row in range(SIZE)]
        (folder / f"{name}.png").write_bytes(png(rows))
    return 0


if __name__ == "__main__":
    sys.exit(main())
