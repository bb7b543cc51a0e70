#!/usr/bin/env python3
"""Build-time generator of the embedded image classes.

Fills res/ResourceImplementation.template.cpp with one image's pixels and answers:

    gen_image.py --template res/ResourceImplementation.template.cpp \
                 --name SelfTestGreen --kind 3 --id 153 [--size 50x62] \
                 [--mask R,G,B] [--alpha alpha.pgm] --out out.cpp image.ppm

The image and the optional alpha channel (grey, the same size) may be of any
format ImageMagick reads; the artwork is kept as binary PPM. Without --mask the image has no mask and the mask colour is
(0, 0, 0). --size makes a mismatch between the artwork and the expected size a
build error.

Problems are reported on stderr with exit status 1.
"""

import argparse
import os
import re
import subprocess
import sys

TOKENS = (
    "####TEMPLATE_NAME####", "####IMAGE_TYPE####", "####RESOURCE_ID####",
    "####IMAGE_SIZE_X####", "####IMAGE_SIZE_Y####", "####HAS_MASK####",
    "####MASK_RED####", "####MASK_GREEN####", "####MASK_BLUE####",
    "####DATA_RGB####", "####DATA_ALPHA####", "####_SET_ALPHA####",
)


class ImageError(Exception):
    pass


def read_image(path, channels):
    """Returns (width, height, bytes) of an image file of any format ImageMagick reads: 8-bit RGB
    (channels 3) or grey (channels 1), rows top to bottom."""
    def magick(*args):
        run = subprocess.run(args, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        if run.returncode != 0:
            raise ImageError("%s: %s" % (path, run.stderr.decode(errors="replace").strip() or "unreadable"))
        return run.stdout
    size = magick("identify", "-format", "%w %h\n", path).split(b"\n")[0].split()
    width, height = int(size[0]), int(size[1])
    pixels = magick("convert", path + "[0]", "-depth", "8", "rgb:-" if channels == 3 else "gray:-")
    if len(pixels) != width * height * channels:
        raise ImageError("%s: %d bytes of pixels for %dx%d" % (path, len(pixels), width, height))
    return width, height, pixels


def c_bytes(data, per_line=16):
    lines = []
    for i in range(0, len(data), per_line):
        lines.append("    " + ", ".join("0x%02x" % b for b in data[i:i + per_line]) + ",")
    return "\n".join(lines)


def fill(template, values):
    missing = [t for t in TOKENS if t not in template]
    if missing:
        raise ImageError("template lacks " + ", ".join(missing))
    return re.sub("|".join(re.escape(t) for t in TOKENS), lambda m: values[m.group(0)], template)


def main(argv):
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--template", required=True)
    ap.add_argument("--name", required=True, help="class-name suffix")
    ap.add_argument("--kind", type=int, required=True)
    ap.add_argument("--id", type=int, required=True)
    ap.add_argument("--size", help="expected WIDTHxHEIGHT")
    ap.add_argument("--mask", help="mask colour R,G,B")
    ap.add_argument("--alpha", help="alpha channel, a grey image")
    ap.add_argument("--out", required=True)
    ap.add_argument("image", help="the artwork")
    args = ap.parse_args(argv[1:])

    try:
        if not re.fullmatch(r"[A-Za-z_][A-Za-z0-9_]*", args.name):
            raise ImageError("%s: not a valid class-name suffix" % args.name)
        if not 0 <= args.id <= 0xFFFFFFFF:
            raise ImageError("resource id %d out of range" % args.id)
        width, height, rgb = read_image(args.image, 3)
        if args.size:
            m = re.fullmatch(r"(\d+)x(\d+)", args.size)
            if not m:
                raise ImageError("--size wants WIDTHxHEIGHT")
            if (int(m.group(1)), int(m.group(2))) != (width, height):
                raise ImageError("%s: %dx%d, expected %s" % (args.image, width, height, args.size))
        mask = (0, 0, 0)
        if args.mask:
            parts = args.mask.split(",")
            if len(parts) != 3 or not all(p.strip().isdigit() and int(p) < 256 for p in parts):
                raise ImageError("--mask wants R,G,B with values 0 to 255")
            mask = tuple(int(p) for p in parts)
        alpha = None
        if args.alpha:
            aw, ah, alpha = read_image(args.alpha, 1)
            if (aw, ah) != (width, height):
                raise ImageError("%s: alpha is %dx%d, image is %dx%d" % (args.alpha, aw, ah,
                                                                        width, height))
        with open(args.template, encoding="utf-8") as f:
            template = f.read()
        text = fill(template, {
            "####TEMPLATE_NAME####": args.name,
            "####IMAGE_TYPE####": str(args.kind),
            "####RESOURCE_ID####": str(args.id),
            "####IMAGE_SIZE_X####": str(width),
            "####IMAGE_SIZE_Y####": str(height),
            "####HAS_MASK####": "true" if args.mask else "false",
            "####MASK_RED####": str(mask[0]),
            "####MASK_GREEN####": str(mask[1]),
            "####MASK_BLUE####": str(mask[2]),
            "####DATA_RGB####": c_bytes(rgb),
            "####DATA_ALPHA####": c_bytes(alpha) if alpha is not None else "",
            "####_SET_ALPHA####": "_HAS_ALPHA" if alpha is not None else "_HAS_NO_ALPHA",
        })
    except (ImageError, OSError, ValueError, IndexError) as e:
        print("gen_image.py: %s" % e, file=sys.stderr)
        return 1

    tmp = args.out + ".tmp"
    with open(tmp, "w", encoding="utf-8") as f:
        f.write(text)
    os.replace(tmp, args.out)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
