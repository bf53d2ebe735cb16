#!/usr/bin/env python3
"""Draws the program's icon: four LEDs of a cabinet inside an arrow that turns clockwise.

    tools/make-icon.py win32/Trevolt.ico            writes the file
    tools/make-icon.py --check win32/Trevolt.ico    fails when the file holds other pictures
"""
import math
import struct
import sys
import zlib

SIZES = (16, 20, 24, 32, 40, 48, 64, 256)
SAMPLES = 4  # per pixel and axis

TILE = (27, 38, 54)
ARROW = (122, 214, 255)
LEDS = {(-1, -1): (255, 92, 92), (1, -1): (94, 224, 122),
        (-1, 1): (92, 150, 255), (1, 1): (245, 245, 245)}

RING_RADIUS, RING_HALF_WIDTH = 0.335, 0.05
# Angles in turns, clockwise from the top as seen on the screen.
RING_FROM, RING_TO = 0.14, 0.90
HEAD_LENGTH, HEAD_HALF_WIDTH = 0.17, 0.12


def rounded_square(x, y, half, radius):
    dx, dy = max(abs(x) - half + radius, 0.0), max(abs(y) - half + radius, 0.0)
    return math.hypot(dx, dy) <= radius


def in_ring(x, y):
    turn = (math.atan2(x, -y) / math.tau) % 1.0
    return (abs(math.hypot(x, y) - RING_RADIUS) <= RING_HALF_WIDTH
            and RING_FROM <= turn <= RING_TO)


def in_arrow_head(x, y):
    angle = RING_TO * math.tau
    base = (math.sin(angle) * RING_RADIUS, -math.cos(angle) * RING_RADIUS)
    along = (math.cos(angle), math.sin(angle))
    forward = (x - base[0]) * along[0] + (y - base[1]) * along[1]
    aside = (x - base[0]) * -along[1] + (y - base[1]) * along[0]
    return 0 <= forward <= HEAD_LENGTH and abs(aside) <= HEAD_HALF_WIDTH * (1 - forward / HEAD_LENGTH)


def colour_at(x, y):
    """Colour of a point of the unit square around the origin, None outside the tile."""
    if not rounded_square(x, y, 0.5, 0.11):
        return None
    for (column, row), colour in LEDS.items():
        if rounded_square(x - column * 0.098, y - row * 0.098, 0.078, 0.02):
            return colour
    return ARROW if in_ring(x, y) or in_arrow_head(x, y) else TILE


def draw(size):
    """Rows of (r, g, b, a) pixels, top row first."""
    rows = []
    for py in range(size):
        row = []
        for px in range(size):
            inside = []
            for sy in range(SAMPLES):
                for sx in range(SAMPLES):
                    x = (px + (sx + 0.5) / SAMPLES) / size - 0.5
                    y = (py + (sy + 0.5) / SAMPLES) / size - 0.5
                    colour = colour_at(x, y)
                    if colour is not None:
                        inside.append(colour)
            if inside:
                mean = [round(sum(channel) / len(inside)) for channel in zip(*inside)]
                row.append((*mean, round(255 * len(inside) / SAMPLES ** 2)))
            else:
                row.append((0, 0, 0, 0))
        rows.append(row)
    return rows


def as_bitmap(rows):
    """A 32-bit device-independent bitmap with its (all zero) mask, as icons of small size hold it."""
    size = len(rows)
    header = struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, 32, 0, 0, 0, 0, 0, 0)
    pixels = b"".join(bytes((b, g, r, a)) for row in reversed(rows) for r, g, b, a in row)
    mask_row = (size + 31) // 32 * 4
    return header + pixels + bytes(mask_row * size)


def as_png(rows):
    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))
    raw = b"".join(b"\0" + bytes(value for pixel in row for value in pixel) for row in rows)
    header = struct.pack(">IIBBBBB", len(rows), len(rows), 8, 6, 0, 0, 0)
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header)
            + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def make_icon():
    images = [(size, as_png(draw(size)) if size >= 256 else as_bitmap(draw(size)))
              for size in SIZES]
    directory = struct.pack("<HHH", 0, 1, len(images))
    offset = len(directory) + 16 * len(images)
    for size, data in images:
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, 32, len(data), offset)
        offset += len(data)
    return directory + b"".join(data for _, data in images)


def pictures(icon):
    """What an icon file shows, whatever its PNGs were compressed with."""
    count = struct.unpack_from("<H", icon, 4)[0]
    found = []
    for index in range(count):
        entry = struct.unpack_from("<BBBBHHII", icon, 6 + 16 * index)
        data = icon[entry[7]:entry[7] + entry[6]]
        if data.startswith(b"\x89PNG"):
            data = data[:33] + zlib.decompress(data[41:-16])
        found.append((entry[:6], data))
    return found


def main():
    icon = make_icon()
    if sys.argv[1] != "--check":
        with open(sys.argv[1], "wb") as file:
            file.write(icon)
        return 0
    with open(sys.argv[2], "rb") as file:
        same = pictures(file.read()) == pictures(icon)
    if not same:
        print(f"make-icon: {sys.argv[2]} is not what this script draws", file=sys.stderr)
    return 0 if same else 1


if __name__ == "__main__":
    sys.exit(main())
