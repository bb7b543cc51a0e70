"""End-to-end scenarios of the installed i386 package on an older i386 system than the one it was
built on: Debian 11 (tools/old-system-root), with only the fonts added (runner.py --old-system
installs the package and runs them there)."""

import os
import re

import harness.instrument as e2e
from harness.checks import check, does_not_start, files_as, log_is
from harness.instrument import provisioned, signed
from harness.sandbox import both, gone
from harness.scenarios import OLD_SYSTEM, add as add_scenario

PROGRAM = "/home/vtx/Code/update"
RUNTIME = "/home/vtx/Code/update-runtime/"
# A file of the runtime folder as /proc/PID/maps names it: inside the sandbox's overlay, relative to
# the overlaid folder.
IN_RUNTIME = re.compile(r"^(/home)?/vtx/Code/update-runtime/")
# Variables through which a runtime would reach the programs the update starts.
RUNTIME_VARIABLES = ("LD_LIBRARY_PATH", "LD_PRELOAD", "GCONV_PATH", "LOCPATH", "GIO_MODULE_DIR",
                     "GDK_PIXBUF_MODULE_FILE", "GTK_PATH", "FONTCONFIG_FILE")
# Every shell command of the update that copies goes through cp: this one first notes what the
# program and the command itself have loaded, and with which environment.
WATCHING_CP = r'''program=$(cat "$ROOT/record/pid")
cat "/proc/$program/maps" > "$ROOT/record/program-maps"
readlink "/proc/$program/exe" > "$ROOT/record/program-exe"
tr '\0' '\n' < "/proc/$program/cmdline" > "$ROOT/record/program-cmdline"
cat /proc/$$/maps > "$ROOT/record/command-maps"
env > "$ROOT/record/command-env"
exec /bin/cp "$@"
'''


def mapped_files(maps):
    """The files in a /proc/PID/maps but an emulator's own (qemu-user, where the kernel runs no
    i386 code)."""
    files = {line.split(None, 5)[5] for line in maps.splitlines() if len(line.split(None, 5)) == 6}
    return {f for f in files if f.startswith("/") and not os.path.basename(f).startswith("qemu-")}


def own_runtime_only(run):
    """The program runs as itself and has loaded nothing but its own runtime; the shell command it
    started runs on the system's C library, with no variable of the program's runtime."""
    # Started through the loader, the program would be named by neither; under qemu-user the
    # emulator is the process, and the program its first argument.
    exe, cmdline = run.record("program-exe").strip(), run.record("program-cmdline").splitlines()
    check(exe == PROGRAM and cmdline[:1] == [PROGRAM] or os.path.basename(exe).startswith("qemu-")
          and cmdline[1:2] == [PROGRAM], "the program runs as %s, %s" % (exe, cmdline))
    libs = {f for f in mapped_files(run.record("program-maps")) if ".so" in f}
    check(libs and all(IN_RUNTIME.match(f) for f in libs),
          "the program loaded from elsewhere: %s" % sorted(f for f in libs if not IN_RUNTIME.match(f)))
    command = mapped_files(run.record("command-maps"))
    check(any(re.search(r"i386-linux-gnu/libc(-2\.31)?\.so", f) for f in command)
          and not any(IN_RUNTIME.match(f) for f in command), "the shell command's libraries: %s" % sorted(command))
    env = dict(line.split("=", 1) for line in run.record("command-env").splitlines() if "=" in line)
    check(not any(k in env for k in RUNTIME_VARIABLES) and not any(RUNTIME in v for v in env.values()),
          "the shell command's environment carries the runtime: %s" % env)


def ended(status, log, expected, privileged, more=None, also=()):
    def expect(run):
        statuses = run.statuses()
        check(statuses and statuses[0] == "Copying files..." and statuses[-1] == status,
              "statuses %r, expected ... %r" % (statuses, status))
        log_is(run, log)
        files_as(run, expected, also)
        rebooted = os.path.exists(os.path.join(run.root, "record", "reboot"))
        check(rebooted == (status == e2e.SUCCESS), "the reboot was%s asked for" % ("" if rebooted else " not"))
        check(run.privileged() == privileged, "privileged commands %r" % run.privileged())
        if more:
            more(run)
    return expect


@does_not_start
def refused(run):
    """The runtime folder is damaged: the loader names what is missing, nothing changes."""
    check(run.session() == ["exited", "127"] and "error while loading shared libraries: libwx_baseu-3.2.so.0"
          in run.record("stderr.log") and run.files() == run.before, "session %s" % run.session())


def whiteout(path):
    """path hidden in the sandbox, as if removed, though the system below has it."""
    def setup(run):
        os.makedirs(os.path.dirname(run.path(path)), exist_ok=True)
        os.mknod(run.path(path), 0o600 | 0o020000, os.makedev(0, 0))
    return setup


def add(name, doc, expect, **kw):
    kw.setdefault("path_stubs", {"cp": WATCHING_CP})
    add_scenario(name, doc, expect, into=OLD_SYSTEM, **kw)


add("happy_path", "the whole update on the older system, with its OpenGL listed in the loader cache",
    ended(e2e.SUCCESS, e2e.DONE_LOG, e2e.DONE, ["reboot"], own_runtime_only))
add("code_16", "the runtime link removed: the program starts and shows 16",
    ended("Disk error... (16)", e2e.SYSTEMS_CHECK[:2] + ["FAIL - cannot read link version", "Contact service!"],
          e2e.FRESH, []), layout=["--link", "missing"])
add("code_17_18", "a relative runtime link and no runtime on the stick: 17, then 18",
    ended("Disk error... (18)", e2e.OS_UPDATE[:4] + ["FAIL - no prerequisites on USB"], e2e.FRESH, [],
          lambda run: check("Disk error... (17)" in run.statuses(), "17 was not shown")),
    layout=["--link", "relative"])
add("link_to_absent_6022", "the link names a runtime 6.0.22 that is not there (right after the OS update)",
    ended(e2e.SUCCESS, e2e.DONE_LOG, e2e.DONE, ["reboot"], own_runtime_only),
    setup=gone("/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22"))
RECORD = "/home/vtx/Code/release.manifest"
add("signed_update", "the maker's key provisioned and the stick signed with it: checked, installed, recorded",
    ended(e2e.SUCCESS, ["*** Checking update signature ***", "signed release 2.1 accepted"] + e2e.CURRENT + e2e.INSTALL
          + ["release 2.1 recorded in " + RECORD, "P Application started"], e2e.DONE, ["reboot"], own_runtime_only,
          also=[RECORD, RECORD + ".minisig"]),
    setup=both(provisioned("maker"), signed()))
add("runtime_damaged", "a library of the program's runtime folder missing: the loader refuses, exit status 127",
    refused, setup=whiteout(RUNTIME + "libwx_baseu-3.2.so.0"))
