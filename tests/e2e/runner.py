#!/usr/bin/env python3
"""End-to-end scenarios: the delivered program in the instrument sandbox on a private Xvfb display,
checked for what a service engineer would look at once the update has come to an end. Runs the
scenarios of every scenario file (update_e2e.py, faults_e2e.py, powerloss_e2e.py, user_e2e.py, hostile_e2e.py, signed_e2e.py), which import
only update_e2e and tools/sandbox_run.py, never this runner.

    runner.py --list | --program build/update [--keep] [SCENARIO...]
"""

import argparse
import os
import re
import shutil
import sys
import tempfile

import faults_e2e  # noqa: F401  (registers its scenarios)
import hostile_e2e  # noqa: F401
import signed_e2e  # noqa: F401
import powerloss_e2e  # noqa: F401
import user_e2e  # noqa: F401
from update_e2e import SCENARIOS, Failure, cannot_start, check, execute, names_its_build, on_the_sheet, paused, prepare


def run_scenario(sc, program, keep=False):
    root = tempfile.mkdtemp(prefix="vtx-e2e-%s-" % sc.name)
    try:
        run = prepare(sc, root)
        output = execute(sc, run, program)
        try:
            session = run.session()
            check(session[:1] != ["refused"], "the session refused the program: see its line above")
            check(session and not session[0].startswith("timeout"), "the program did not come to an end: %s" % session)
            # Killed by a power cut, or else stopped with SIGTERM as the instrument's shutdown does,
            # whose default action ends it.
            check(session[0] == "exited" if sc.killed else session[-1] == "143", "session %s" % session)
            check(not re.search(r"ERROR: (Address|Leak)Sanitizer|runtime error:|WARNING: ThreadSanitizer",
                                run.record("stderr.log")), "a sanitizer reported an error")
            if sc.expect is not cannot_start:
                check(run.statuses(), "no status text was shown")
                paused(run)
                names_its_build(run, program)
            sc.expect(run)
            if session[0] == "failed":
                on_the_sheet(run)
        except Failure:
            sys.stderr.write(output + "--- program console ---\n" + run.record("stderr.log"))
            raise
    finally:
        print("kept sandbox root %s" % root) if keep else shutil.rmtree(root, ignore_errors=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required="--list" not in sys.argv)
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--keep", action="store_true", help="keep the sandbox roots")
    parser.add_argument("scenarios", nargs="*")
    a = parser.parse_args()
    if a.list:
        print("\n".join("%-34s %s" % (name, sc.doc) for name, sc in SCENARIOS.items()))
        return 0
    failures, skipped = 0, False
    for name in a.scenarios or list(SCENARIOS):
        if "--user" in SCENARIOS[name].sandbox and os.geteuid() != 0:
            print("SKIP %s: runs the program as another user, which needs root" % name)
            skipped = True
            continue
        try:
            run_scenario(SCENARIOS[name], a.program, a.keep)
            print("PASS %s" % name)
        except Failure as e:
            failures += 1
            print("FAIL %s: %s" % (name, e))
    return 1 if failures else 77 if skipped else 0


if __name__ == "__main__":
    sys.exit(main())
