#!/usr/bin/env python3
"""bench/update-steps.sh, the yardstick of the whole-update time, does what the program does: each on
its own copy of the same layout, with the shell tools' calls recorded by the harness, both call them
with the same arguments in the same order, ask the privileged tool for the same, and leave the same
files. The full update as benchmarked, the operating-system update, the Chinese variant with a
day-first log.
    test_update_steps.py PROGRAM
"""

import os
import re
import shutil
import sys
import tempfile
import unittest

REPO = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(REPO, "tools"))
from harness import instrument, sandbox  # noqa: E402

STEPS = os.path.join(REPO, "bench", "update-steps.sh")
RECORDED = sandbox.recording("cp", "ldd", "tar")
LOG_PREFIX = re.compile(rb"^(%s|%s)" % (instrument.US_PREFIX.encode(), instrument.EU_PREFIX.encode()), re.M)
LAYOUTS = [sandbox.Scenario("full", "", setup=instrument.EXTRAS, path_stubs=RECORDED),
           sandbox.Scenario("os_update", "", layout=["--link", "relative"], setup=instrument.RUNTIME_ON_STICK,
                            path_stubs=RECORDED),
           sandbox.Scenario("chinese_eu", "", layout=["--chinese"], path_stubs=RECORDED,
                            setup=sandbox.put("/home/vtx/Code/settings.vtx", "Language = EN\r\nDateFormat = EU\r\n"))]


def outcome(layout, script):
    """What the run did and left, each file told by the layout file it equals (layouts differ from copy
    to copy), else by its content; the logs' date prefixes blanked."""
    root = tempfile.mkdtemp(prefix="vtx-steps-test-")
    try:
        run = sandbox.prepare(layout, root)

        def files():
            found = run.files(lambda path, data: LOG_PREFIX.sub(b"<date>", data) if path.endswith(".log") else data)
            return {path: digest for path, digest in found.items() if not path.startswith("/home/vtx/bin/")}
        origin = {digest: "as laid out at " + path for path, digest in sorted(files().items(), reverse=True)}
        sandbox.execute(layout, run, PROGRAM, command=["/bin/sh", STEPS] if script else None)
        return {"steps": sandbox.recorded_steps(run), "privileged": run.privileged(),
                "rebooted": os.path.exists(os.path.join(root, "record", "reboot")),
                "files": {path: origin.get(digest, digest) for path, digest in files().items()}}
    finally:
        shutil.rmtree(root, ignore_errors=True)


class UpdateSteps(unittest.TestCase):
    maxDiff = None
    def test_script_does_what_the_program_does(self):
        for layout in LAYOUTS:
            with self.subTest(layout.name):
                program = outcome(layout, script=False)
                self.assertIn("ldd /home/vtx/Code/NEW/Application" + "_Chinese" * (layout.name == "chinese_eu"),
                              program["steps"])  # the recording itself works
                self.assertEqual(program, outcome(layout, script=True))


if __name__ == "__main__":
    PROGRAM = os.path.abspath(sys.argv.pop(1))
    unittest.main()
