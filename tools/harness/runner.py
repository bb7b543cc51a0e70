"""Runs scenarios: each in a fresh sandbox root, on a private Xvfb display, checked for what a service
engineer would look at once the update has come to an end. On this machine (--program), or, with
--old-system, on an older i386 system than the program is built on (tools/old-system-root): there the
package is installed with dpkg, and, as on an instrument with OpenGL, a libGL.so.1 lies in the
system's library folder and a libGLX.so.1 in a folder of its own, both in /etc/ld.so.cache; the
program runs from /home/vtx/Code in the sandbox inside that system, on the caller's X display.

    runner.py --list | --program build/update [--keep] [SCENARIO...]
    with-xvfb runner.py --old-system --deb vtx-update_<version>_i386.deb [--keep] [SCENARIO...]
    runner.py --old-system --list
"""

import argparse
import os
import re
import shutil
import subprocess
import sys
import tempfile

from . import sandbox
from .checks import Failure, check, names_its_build, on_the_sheet, paused
from .scenarios import OLD_SYSTEM, SCENARIOS, ListError, load

OLD_SYSTEM_ROOT = os.path.join(sandbox.TOOLS, "old-system-root")
INSTALLED_PROGRAM = "/home/vtx/Code/update"
PASSED_ENV = ("DISPLAY", "HOME", "LANG", "LC_ALL", "NO_AT_BRIDGE", "GDK_BACKEND", "TZ", "VTX_SESSION_TIMEOUT")


def run_scenario(sc, program, keep=False, old_system=None):
    """One scenario; old_system: the work folder of the older system's runs."""
    root = tempfile.mkdtemp(prefix="%s-" % sc.name if old_system else "vtx-e2e-%s-" % sc.name,
                            dir=old_system and os.path.join(old_system, "roots"))
    try:
        run = sandbox.prepare(sc, root)
        output = sandbox.execute(sc, run, program, use_display=bool(old_system))
        starts = getattr(sc.expect, "starts", True)
        try:
            session = run.session()
            check(session[:1] != ["refused"], "the session refused the program: see its line above")
            check(session and not session[0].startswith("timeout"), "the program did not come to an end: %s" % session)
            # Killed by a power cut, or else stopped with SIGTERM as the instrument's shutdown does,
            # whose default action ends it.
            check(session[0] == "exited" if sc.killed else session[-1] == "143" or not starts, "session %s" % session)
            check(not re.search(r"ERROR: (Address|Leak)Sanitizer|runtime error:|WARNING: ThreadSanitizer",
                                run.record("stderr.log")), "a sanitizer reported an error")
            if starts:
                check(run.statuses(), "no status text was shown")
                paused(run)
                if not old_system:
                    names_its_build(run, program)
            sc.expect(run)
            if session[0] == "failed" and not old_system:
                on_the_sheet(run)
        except Failure:
            sys.stderr.write(output + "--- program console ---\n" + run.record("stderr.log"))
            raise
    finally:
        print("kept sandbox root %s" % root) if keep else shutil.rmtree(root, ignore_errors=True)


def install(deb, upper):
    """The package, and the stand-ins of an OpenGL installation, into the older system."""
    def old(*command):
        subprocess.run([OLD_SYSTEM_ROOT, "--upper", upper, "--bind", os.path.dirname(deb), "--"] + list(command),
                       check=True, stdout=subprocess.DEVNULL)
    old("dpkg", "-i", deb)
    # Any loadable library will do as a stand-in; the loader cache lists it by the name it carries.
    libs = os.path.join(upper, "changes")
    for path in ("/usr/lib/i386-linux-gnu/libGL.so.1", "/opt/gl/libGLX.so.1"):
        os.makedirs(os.path.dirname(libs + path), exist_ok=True)
        old("cp", "/lib/i386-linux-gnu/libz.so.1", path)
        subprocess.run(["patchelf", "--set-soname", os.path.basename(path), libs + path], check=True)
    os.makedirs(libs + "/etc/ld.so.conf.d", exist_ok=True)
    with open(libs + "/etc/ld.so.conf.d/opengl.conf", "w") as f:
        f.write("/opt/gl\n")
    old("ldconfig")
    cache = subprocess.run([OLD_SYSTEM_ROOT, "--upper", upper, "--", "ldconfig", "-p"], check=True,
                           stdout=subprocess.PIPE, text=True).stdout
    check(re.search(r"=> (/usr)?/lib/i386-linux-gnu/libGL\.so\.1$", cache, re.M) and "=> /opt/gl/libGLX.so.1" in cache,
          "the loader cache does not list the OpenGL stand-ins:\n" + cache)


def run_all(a, registry, program, old_system=None):
    """PASS, FAIL or SKIP a line; the exit status (77: some skipped, for CTest)."""
    failures, skipped, prefix = 0, False, "oldsystem." if old_system else ""
    for name in a.scenarios or list(registry):
        if "--user" in registry[name].sandbox and os.geteuid() != 0:
            print("SKIP %s: runs the program as another user, which needs root" % name)
            skipped = True
            continue
        try:
            run_scenario(registry[name], program, a.keep, old_system)
            print("PASS %s%s" % (prefix, name))
        except Failure as e:
            failures += 1
            print("FAIL %s%s: %s" % (prefix, name, e))
    if old_system:
        total = len(a.scenarios or registry)
        print("%d passed, %d failed" % (total - failures, failures))
    return 1 if failures else 77 if skipped else 0


def on_old_system(a):
    if not os.environ.get("DISPLAY"):
        sys.exit("runner.py: no X display (run it under tools/with-xvfb)")
    work = tempfile.mkdtemp(prefix="vtx-old-system-")
    try:
        os.makedirs(os.path.join(work, "roots"))
        install(os.path.abspath(a.deb), os.path.join(work, "upper"))
        os.environ.setdefault("VTX_SESSION_TIMEOUT", "90")
        sandbox.WRAP = [OLD_SYSTEM_ROOT, "--upper", os.path.join(work, "upper"), "--bind", os.path.join(work, "roots")]
        sandbox.WRAP += [x for name in PASSED_ENV for x in ("--env", name)] + ["--"]
        return run_all(a, OLD_SYSTEM, INSTALLED_PROGRAM, work)
    finally:
        print("kept %s" % work) if a.keep else shutil.rmtree(work, ignore_errors=True)


def main(list_file):
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program")
    parser.add_argument("--old-system", action="store_true", help="the older i386 system's scenarios")
    parser.add_argument("--deb", help="with --old-system: the i386 package to install there")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--keep", action="store_true", help="keep the sandbox roots (and the older system's changes)")
    parser.add_argument("scenarios", nargs="*")
    a = parser.parse_args()
    if not a.list and not (a.deb if a.old_system else a.program):
        parser.error("--program, --old-system --deb or --list is needed")
    try:
        load(list_file)
    except ListError as e:
        sys.exit("runner.py: %s" % e)
    registry = OLD_SYSTEM if a.old_system else SCENARIOS
    unknown = [n for n in a.scenarios if n not in registry]
    if unknown:
        parser.error("no scenario %s" % " ".join(unknown))
    if a.list:
        print("\n".join("%-34s %s" % (name, sc.doc) for name, sc in registry.items()))
        return 0
    return on_old_system(a) if a.old_system else run_all(a, SCENARIOS, a.program)
