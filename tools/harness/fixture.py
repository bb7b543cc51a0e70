#!/usr/bin/python3
"""An input of the update as the harness makes it, on standard output, for the tests that are not
written in Python: the same runtime library and font package the end-to-end runs put on a stick.

    fixture.py runtime [MACHINE]    the smallest runtime library the update accepts (ELF machine 3,
                                    32-bit x86; another number makes one it refuses)
    fixture.py fonts [MEMBER]       a font package of one member (jfonts/ipag.ttf)
"""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
from harness.sandbox import package, runtime_library  # noqa: E402

if __name__ == "__main__":
    what, arg = (sys.argv[1:] + [None, None])[:2]
    if what == "runtime":
        sys.stdout.buffer.write(runtime_library(machine=int(arg or 3)))
    elif what == "fonts":
        sys.stdout.buffer.write(package((arg or "jfonts/ipag.ttf", b"stand-in font\n")))
    else:
        sys.exit(__doc__)
