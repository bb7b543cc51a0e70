#!/usr/bin/env python3
"""Checks that keep bench/run-bench honest, asserting no time: both programs report their paints as
run-bench reads them, the update program only when asked. (That bench/update-steps.sh, the yardstick
of the whole update, does what the program does is tests/tools/test_update_steps.py's.) On the
current X display:
    test_measuring.py --program build/update --minimal build/bench/vtx_bench_minimal
"""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(HERE)
sys.path.insert(0, os.path.join(REPO, "tools"))
from harness import instrument, sandbox  # noqa: E402
from harness.console import CONSOLE, is_probe_line, probe  # noqa: E402

RUN_BENCH = os.path.join(HERE, "run-bench")
PROGRAMS = {}


class PaintReports(unittest.TestCase):
    def inside(self, *args):
        """run-bench's measuring part, in a sandbox; its JSON answer."""
        root = tempfile.mkdtemp(prefix="vtx-bench-test-")
        try:
            env = dict(os.environ, HOME="/home/vtx")
            subprocess.run([sandbox.SANDBOX, "--root", root, "--init"], check=True)
            proc = subprocess.run([sandbox.SANDBOX, "--root", root, "--", sys.executable, RUN_BENCH, "--inside"] +
                                  list(args), env=env, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            return json.loads(proc.stdout.decode().strip().splitlines()[-1])
        finally:
            shutil.rmtree(root, ignore_errors=True)

    def test_both_programs_report_their_first_paint(self):
        for name in ("update", "minimal"):
            with self.subTest(program=name):
                answer = self.inside("startup", PROGRAMS[name])
                self.assertNotIn("error", answer)
                self.assertGreater(answer["startup"], 0)  # from exec to the first paint; how long is run-bench's
                self.assertGreater(answer["peak_rss_kib"], 1024)

    def test_probe_only_when_asked_and_first_pass_once(self):
        root = tempfile.mkdtemp(prefix="vtx-bench-test-")
        try:
            consoles = {}
            for asked in (False, True):
                run = sandbox.prepare(sandbox.Scenario("failure", "", setup=sandbox.gone(instrument.LOG)),
                                      os.path.join(root, str(asked)))
                # The session asks for the reports itself unless it takes no screenshot.
                env = dict(os.environ, HOME="/home/vtx", VTX_SCREENSHOT="1" if asked else "0")
                subprocess.run([sandbox.SANDBOX, "--root", run.root, "--", sandbox.SESSION, PROGRAMS["update"]], env=env,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                consoles[asked] = run.record("stderr.log").splitlines()
        finally:
            shutil.rmtree(root, ignore_errors=True)
        self.assertFalse([line for line in consoles[False] if is_probe_line(line)])
        self.assertEqual(sum(1 for line in consoles[True] if probe(line, "kFirstPaint")), 1)
        painted = {probe(line, "kPaint")[1] for line in consoles[True] if probe(line, "kPaint")}
        self.assertTrue({"CInstrumentViewUpdate", "CTextField", "CInstrumentProgressBase"} <= painted, painted)
        # The failure text reached the screen: the status line was painted after it was set.
        failed_at = next(i for i, line in enumerate(consoles[True]) if CONSOLE["kStatus"] + "Disk error" in line)
        self.assertTrue(any(line.startswith(CONSOLE["kPaint"]) and line.endswith(" CTextField")
                            for line in consoles[True][failed_at:]))


if __name__ == "__main__":
    args = sys.argv[1:]
    for flag, key in (("--program", "update"), ("--minimal", "minimal")):
        if flag in args:
            at = args.index(flag)
            PROGRAMS[key] = os.path.abspath(args[at + 1])
            del args[at:at + 2]
    if set(PROGRAMS) != {"update", "minimal"}:
        sys.exit("usage: test_measuring.py --program PATH --minimal PATH [unittest args]")
    unittest.main(argv=[sys.argv[0]] + args)
