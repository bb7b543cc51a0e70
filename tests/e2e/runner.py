#!/usr/bin/env python3
"""End-to-end scenarios: the delivered program in the instrument sandbox on a private Xvfb display.
The scenario files are those of scenarios.list; the machinery is tools/harness (harness/runner.py
gives the options).

    runner.py --list | --program build/update [--keep] [SCENARIO...]
    with-xvfb runner.py --old-system --deb vtx-update_<version>_i386.deb [--keep] [SCENARIO...]
"""

import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(HERE)), "tools"))
from harness.runner import main  # noqa: E402

if __name__ == "__main__":
    sys.exit(main(os.path.join(HERE, "scenarios.list")))
