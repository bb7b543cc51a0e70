#!/usr/bin/env python3
"""Checks that keep bench/run-bench honest, asserting no time: bench/update-steps.sh, the yardstick
of the whole update, leaves what the program leaves; both programs report their paints as run-bench
reads them, the update program only when asked. On the current X display:
    test_measuring.py --program build/update --minimal build/bench/vtx_bench_minimal
"""

import json
import os
import re
import runpy
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(HERE)
sys.path.insert(0, os.path.join(REPO, "tests", "e2e"))
import update_e2e as e2e  # noqa: E402

RUN_BENCH = os.path.join(HERE, "run-bench")
STEPS = os.path.join(HERE, "update-steps.sh")
PROGRAMS = {}
LOG_PREFIX = re.compile(rb"^(%s|%s)" % (e2e.US_PREFIX.encode(), e2e.EU_PREFIX.encode()), re.M)


def instrument_state(run):
    """Every file on the instrument and the stick but the stand-in tools, the logs' date prefixes blanked."""
    files = run.files(lambda path, data: LOG_PREFIX.sub(b"<date>", data) if path.endswith(".log") else data)
    return {path: digest for path, digest in files.items() if not path.startswith("/home/vtx/bin/")}


class ReferenceScript(unittest.TestCase):
    """The script and the program, each on its own copy of the same layout."""

    def outcome(self, scenario, use_script):
        """What the run left, each file told by the layout file it equals (layouts differ from copy to
        copy), else by its content."""
        root = tempfile.mkdtemp(prefix="vtx-bench-test-")
        try:
            run = e2e.prepare(scenario, root)
            origin = {}
            for path, digest in sorted(instrument_state(run).items(), reverse=True):
                origin[digest] = "as laid out at " + path
            if use_script:
                env = dict(os.environ, HOME="/home/vtx")
                subprocess.run([e2e.SANDBOX, "--root", root, "--", "/bin/sh", STEPS], env=env,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
            else:
                e2e.execute(scenario, run, PROGRAMS["update"], use_display=True)
            files = {path: origin.get(digest, digest) for path, digest in instrument_state(run).items()}
            return {"files": files, "privileged": run.privileged(),
                    "rebooted": os.path.exists(os.path.join(root, "record", "reboot"))}
        finally:
            shutil.rmtree(root, ignore_errors=True)

    def test_script_leaves_what_the_program_leaves(self):
        # The full update as benchmarked, the operating-system update, the Chinese variant with a
        # day-first log; the privileged commands, the reboot and the files, all the same.
        chinese_eu = e2e.Scenario("chinese_eu", "", layout=["--chinese"], setup=e2e.SCENARIOS["day_first_prefix"].setup)
        for scenario in (runpy.run_path(RUN_BENCH)["happy_layout"](), e2e.SCENARIOS["relative_link"], chinese_eu):
            with self.subTest(scenario.name):
                self.assertEqual(self.outcome(scenario, use_script=False), self.outcome(scenario, use_script=True))


class PaintReports(unittest.TestCase):
    def inside(self, *args):
        """run-bench's measuring part, in a sandbox; its JSON answer."""
        root = tempfile.mkdtemp(prefix="vtx-bench-test-")
        try:
            env = dict(os.environ, HOME="/home/vtx")
            subprocess.run([e2e.SANDBOX, "--root", root, "--init"], check=True)
            proc = subprocess.run([e2e.SANDBOX, "--root", root, "--", sys.executable, RUN_BENCH, "--inside"] +
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
                run = e2e.prepare(e2e.SCENARIOS["code_08"], os.path.join(root, str(asked)))
                # The session asks for the reports itself unless it takes no screenshot.
                env = dict(os.environ, HOME="/home/vtx", VTX_SCREENSHOT="1" if asked else "0")
                subprocess.run([e2e.SANDBOX, "--root", run.root, "--", e2e.SESSION, PROGRAMS["update"]], env=env,
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                consoles[asked] = run.record("stderr.log").splitlines()
        finally:
            shutil.rmtree(root, ignore_errors=True)
        self.assertFalse([line for line in consoles[False] if line.startswith("vtx-bench")])
        reports = [line for line in consoles[True] if line.startswith("vtx-bench")]
        self.assertEqual(sum(1 for line in reports if line.startswith("vtx-bench first-paint ")), 1)
        painted = {line.split(" ", 3)[3] for line in reports if line.startswith("vtx-bench paint ")}
        self.assertTrue({"CInstrumentViewUpdate", "CTextField", "CInstrumentProgressBase"} <= painted, painted)
        # The failure text reached the screen: the status line was painted after it was set.
        failed_at = next(i for i, line in enumerate(consoles[True]) if "Status: Disk error" in line)
        self.assertTrue(any(line.startswith("vtx-bench paint ") and line.endswith(" CTextField")
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
