#!/usr/bin/env python3
"""Renders the drawings below app/img, each beside its SVG, and puts the icon file together.

render_artwork.py [--output DIR]
    --output writes the same tree into another directory than app/img.

What the program reads at every start is written for speed: the pictures of scale 1 uncompressed,
and with a palette if they can, which the toolkit converts without other threads; the icon file's as
bitmaps.

Needs rsvg-convert (Debian: librsvg2-bin).
"""

import argparse
import pathlib
import struct
import subprocess
import zlib

SOURCE = pathlib.Path(__file__).resolve().parent.parent / "app" / "img"

# Image, width, height. The drawing has the image's name.
IMAGES = (
    ("cert.png", 21, 23),
    ("res/background.png", 200, 200),
    ("res/background2.png", 200, 200),
    ("res/background_right.png", 100, 200),
    ("res/bk_rose_gold_noborder.png", 500, 44),
    ("res/closeBtn/close_normal.png", 45, 29),
    ("res/closeBtn/close_horver.png", 45, 29),
    ("res/closeBtn/close_down.png", 45, 29),
    ("res/combo1.png", 7, 5),
    ("res/down.png", 7, 5),
    ("res/title_ico.png", 24, 24),
)

# What the window shows has versions for screens of the double and the threefold resolution: name,
# drawing, width and height at the single one.
LARGER = (
    ("cert", "cert.svg", 21, 23),
    ("res/bk_rose_gold_noborder", "res/bk_rose_gold_noborder.svg", 500, 44),
    ("res/closeBtn/close_normal", "res/closeBtn/close_normal.svg", 45, 29),
    ("res/closeBtn/close_horver", "res/closeBtn/close_horver.svg", 45, 29),
    ("res/closeBtn/close_down", "res/closeBtn/close_down.svg", 45, 29),
    ("res/combo1", "res/combo1.svg", 7, 5),
    ("res/combo1_room", "res/combo1_room.svg", 18, 18),
)
SCALES = (2, 3)

# The icon's sizes and which drawing serves each: the small ones have their own, on whole pixels.
ICONS = (
    (16, "icon/stamp-16.svg"),
    (24, "icon/stamp-24.svg"),
    (32, "icon/stamp-32.svg"),
    (48, "icon/stamp.svg"),
    (64, "icon/stamp.svg"),
    (128, "icon/stamp.svg"),
    (256, "icon/stamp.svg"),
)
ICON_FILE = "res/stamp.ico"


def render(drawing, image, width, height):
    image.parent.mkdir(parents=True, exist_ok=True)
    subprocess.run(
        ["rsvg-convert", "--width", str(width), "--height", str(height), "--output", image, drawing],
        check=True)


def chunks(png):
    """The parts of a PNG file, as (type, content)."""
    at = 8
    while at < len(png):
        length, kind = struct.unpack_from(">I4s", png, at)
        yield kind, png[at + 8:at + 8 + length]
        at += 12 + length


def chunk(kind, content):
    checksum = zlib.crc32(kind + content)
    return struct.pack(">I", len(content)) + kind + content + struct.pack(">I", checksum)


def paeth(left, above, corner):
    """The one of the three that comes next to their plane, as the PNG format picks it."""
    return min((left, above, corner), key=lambda value: abs(left + above - corner - value))


def unfiltered(rows, stride, depth):
    """The rows of a PNG's pixels, each without its filter."""
    above = bytes(stride)
    for start in range(0, len(rows), stride + 1):
        kind, row = rows[start], bytearray(rows[start + 1:start + 1 + stride])
        for i in range(stride):
            left, corner = (row[i - depth], above[i - depth]) if i >= depth else (0, 0)
            guess = (0, left, above[i], (left + above[i]) // 2, paeth(left, above[i], corner))[kind]
            row[i] = (row[i] + guess) % 256
        yield bytes(row)
        above = row


def picture(png):
    """Width, octets a pixel and rows of a PNG of 8 bits a channel, as the renderer writes it."""
    parts = {}
    for kind, content in chunks(png):
        parts[kind] = parts.get(kind, b"") + content
    width, _, _, color = struct.unpack_from(">2I2B", parts[b"IHDR"])
    depth = {2: 3, 6: 4}[color]
    return width, depth, list(unfiltered(zlib.decompress(parts[b"IDAT"]), width * depth, depth))


def quick(png):
    """The picture uncompressed, and by a palette where its colours are few enough for one."""
    width, depth, rows = picture(png)
    pixels = [[row[i:i + depth] for i in range(0, len(row), depth)] for row in rows]
    colors = sorted({color for row in pixels for color in row})
    palette = b""
    kind = {3: 2, 4: 6}[depth]
    if len(colors) <= 256:
        kind = 3
        palette = chunk(b"PLTE", b"".join(color[:3] for color in colors))
        if depth == 4:
            palette += chunk(b"tRNS", bytes(color[3] for color in colors))
        places = {color: place for place, color in enumerate(colors)}
        rows = [bytes(places[color] for color in row) for row in pixels]
    header = struct.pack(">2I5B", width, len(rows), 8, kind, 0, 0, 0)
    content = zlib.compress(b"".join(b"\0" + row for row in rows), 0)
    return (png[:8] + chunk(b"IHDR", header) + palette + chunk(b"IDAT", content) +
            chunk(b"IEND", b""))


def bitmap(png):
    """A picture of an icon file: a header, rows from the bottom of blue, green, red and alpha, and
    rows of a mask that the alpha stands for."""
    width, depth, rows = picture(png)
    assert depth == 4
    pixels = b""
    for row in reversed(rows):
        swapped = bytearray(row)
        swapped[0::4], swapped[2::4] = row[2::4], row[0::4]
        pixels += swapped
    mask = bytes((width + 31) // 32 * 4 * len(rows))
    header = struct.pack("<3I2H6I", 40, width, 2 * len(rows), 1, 32, 0, len(pixels) + len(mask),
                         0, 0, 0, 0)
    return header + pixels + mask


def icon_file(images):
    """An icon file of (size, bitmap): a header, a directory of 16 octets each, the images."""
    header = struct.pack("<3H", 0, 1, len(images))
    offset = len(header) + 16 * len(images)
    directory = b""
    for size, image in images:
        side = size % 256  # 256 does not fit in its octet and is written 0
        directory += struct.pack("<4B2H2I", side, side, 0, 0, 1, 32, len(image), offset)
        offset += len(image)
    return header + directory + b"".join(image for _, image in images)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--output", type=pathlib.Path, default=SOURCE)
    output = parser.parse_args().output

    for name, width, height in IMAGES:
        image = output / name
        render((SOURCE / name).with_suffix(".svg"), image, width, height)
        image.write_bytes(quick(image.read_bytes()))
    for name, drawing, width, height in LARGER:
        for scale in SCALES:
            render(SOURCE / drawing, output / f"{name}@{scale}x.png", scale * width, scale * height)
    icons = []
    for size, drawing in ICONS:
        image = output / "icon" / f"stamp-{size}.png"
        render(SOURCE / drawing, image, size, size)
        icons.append((size, bitmap(image.read_bytes())))
    (output / ICON_FILE).write_bytes(icon_file(icons))


if __name__ == "__main__":
    main()
