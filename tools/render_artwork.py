#!/usr/bin/env python3
"""Renders the drawings below app/img, each beside its SVG, and puts the icon file together.

render_artwork.py [--output DIR]
    --output writes the same tree into another directory than app/img.

Needs rsvg-convert (Debian: librsvg2-bin).
"""

import argparse
import pathlib
import struct
import subprocess

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
    ("res/combo1", "res/combo1_room.svg", 18, 18),
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


def icon_file(images):
    """An icon file of (size, PNG octets): a header, a directory of 16 octets each, the images."""
    header = struct.pack("<3H", 0, 1, len(images))
    offset = len(header) + 16 * len(images)
    directory = b""
    for size, png in images:
        side = size % 256  # 256 does not fit in its octet and is written 0
        directory += struct.pack("<4B2H2I", side, side, 0, 0, 1, 32, len(png), offset)
        offset += len(png)
    return header + directory + b"".join(png for _, png in images)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--output", type=pathlib.Path, default=SOURCE)
    output = parser.parse_args().output

    for name, width, height in IMAGES:
        render((SOURCE / name).with_suffix(".svg"), output / name, width, height)
    for name, drawing, width, height in LARGER:
        for scale in SCALES:
            render(SOURCE / drawing, output / f"{name}@{scale}x.png", scale * width, scale * height)
    icons = []
    for size, drawing in ICONS:
        image = output / "icon" / f"stamp-{size}.png"
        render(SOURCE / drawing, image, size, size)
        icons.append((size, image.read_bytes()))
    (output / ICON_FILE).write_bytes(icon_file(icons))


if __name__ == "__main__":
    main()
