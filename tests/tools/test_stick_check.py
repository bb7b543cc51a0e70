#!/usr/bin/python3
"""The stick check (tools/stick_check.py) judges font packages and runtimes as the update does, on
files made here the ways they come back from the field: cut short, made with the wrong tar call,
built for the wrong machine, or a link."""

import gzip
import os
import random
import sys
import tempfile

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools"))
from harness.sandbox import package  # noqa: E402
from harness.sandbox import runtime_library as minimal_runtime  # noqa: E402
from stick_check import check_font_package, check_runtime  # noqa: E402

# Fonts do not compress much: a cut in the first 300 bytes falls inside the archive's data.
FONTS = package(("./jfonts/", b""), *(("jfonts/f%d.ttf" % i, random.Random(i).randbytes(3000)) for i in range(3)))
SONAME = "its SONAME is not libstdc++.so.6"
CASES = [  # (check, content; a str makes a link to it, the cause expected)
    (check_font_package, FONTS, None),
    (check_font_package, FONTS[:300], "not a whole gzip stream"),
    (check_font_package, FONTS + b"garbage", "not a whole gzip stream"),
    (check_font_package, gzip.compress(gzip.decompress(FONTS)[:4000]), "not a whole tar archive"),
    (check_font_package, package(("jfonts/a", b"a"), ("jfonts/../../x", b"x")),
     "member jfonts/../../x lies outside jfonts/"),
    (check_font_package, package(("./jfonts/l", "/etc/passwd")), "member ./jfonts/l is not a file or folder"),
    (check_font_package, package(("/jfonts/a", b"a")), "member /jfonts/a lies outside jfonts/"),
    (check_font_package, "/etc/hostname", "not a regular file"),
    (check_runtime, minimal_runtime(), None),
    (check_runtime, minimal_runtime(elfclass=2, machine=62), "not 32-bit"),
    (check_runtime, minimal_runtime(machine=40), "not for x86"),
    (check_runtime, minimal_runtime(soname=b"libstdc++.so.5"), SONAME),
    (check_runtime, minimal_runtime()[:100], SONAME),
    (check_runtime, b"#!/bin/sh\nexit 0\n", "not an ELF file"),
    (check_runtime, "libstdc++.so.6.0.21", "a link"),
]
failures = 0
for i, (check, content, expected) in enumerate(CASES):
    with tempfile.TemporaryDirectory() as stick:
        path = os.path.join(stick, "file")
        if isinstance(content, str):
            os.symlink(content, path)
        else:
            with open(path, "wb") as f:
                f.write(content)
        if check(path) != expected:
            print("FAIL: case %d, %s: %r, not %r" % (i, check.__name__, check(path), expected))
            failures += 1
sys.exit(failures > 0)
