"""Fault injection: full and read-only disks, a stick pulled out, a growing log, hostile file
names and font packages, a slow or missing privileged tool.

For every fault the program must neither crash nor hang, show the stated text, change no file
but the stated ones, only ever append to the log, and leave the old build intact whenever the
fault comes before the installation.
"""

import hashlib
import io
import os
import subprocess
import tarfile

import update_e2e as e2e
from update_e2e import (BACKUP, CURRENT, OS_COMMANDS, SUCCESS, US_PREFIX, appended_lines, backup_made, check,
                        failed, final_status, font_package, keep_new_build, log_is, old_build_intact,
                        privileged_is, rebooted, scenario)

e2e.GROUP[0] = "faults"

AREAS = ("/home/vtx/", "/media/usb/", "/mnt/root-ro/", "/usr/lib/i386-linux-gnu/", "/opt/")
# Files every run may change or create, whatever the fault.
ALWAYS = {"/home/vtx/Code/instrument.log"}


def snapshot(run):
    files = {}
    for area in AREAS:
        base = run.path(area)
        for folder, dirs, names in os.walk(base):
            for n in names + [d for d in dirs if os.path.islink(os.path.join(folder, d))]:
                p = os.path.join(folder, n)
                rel = area + os.path.relpath(p, base)
                if os.path.islink(p):
                    files[rel] = "-> " + os.readlink(p)
                else:
                    with open(p, "rb") as f:
                        files[rel] = hashlib.sha256(f.read()).hexdigest()
    return files


def take_snapshot(run):
    run.before = snapshot(run)


def only_changed(run, allowed):
    """No file outside `allowed` (instrument paths; a trailing "/" allows a whole folder) changed."""
    after = snapshot(run)
    allowed = set(allowed) | ALWAYS
    for path in set(run.before) | set(after):
        if run.before.get(path) == after.get(path):
            continue
        ok = path in allowed or any(a.endswith("/") and path.startswith(a) for a in allowed)
        check(ok, "%s changed (%s -> %s)" % (path, run.before.get(path, "absent"), after.get(path, "absent")))


def big(size, seed):
    return (hashlib.sha256(seed).digest() * (size // 32 + 1))[:size]


def with_setup(*steps):
    def setup(run):
        for s in steps:
            s(run)
        take_snapshot(run)
    return setup


def big_builds(run):
    # Large enough that a small disk cannot hold them twice.
    run.write("/home/vtx/Code/Application", big(300 * 1024, b"old"), 0o755)
    # Local time, as the backup's name reads it.
    subprocess.run(["touch", "-d", "2019-03-05 14:12:00", run.path("/home/vtx/Code/Application")], check=True)
    run.application_before = run.read("/home/vtx/Code/Application")
    run.write("/home/vtx/Code/NEW/Application", big(400 * 1024, b"new"), 0o755)
    keep_new_build(run)


INSTALLED = CURRENT + ["P Old version backed up to " + BACKUP, "P New version copied", "P Application started"]


# ---- full disks


@scenario("disk_full_auxiliary", "the code folder is too small for the auxiliary file",
          setup=with_setup(lambda r: r.write("/media/usb/update/zip", big(2 * 1024 * 1024, b"zip"))),
          inside="small_disk /home/vtx/Code 1m\n")
def _(run):
    failed(run, "Could not copy file(s): auxillary files", ["P could not copy auxillary files"])
    only_changed(run, set())  # no part of the file under its name, no partial copy either


@scenario("disk_full_backup", "the backup folder is too small for the old build",
          setup=with_setup(big_builds, lambda r: os.makedirs(r.path("/home/vtx/Code/Old"))),
          inside="small_disk /home/vtx/Code/Old 128k\n")
def _(run):
    failed(run, "Disk error... (04)", ["P no zip file on USB"] + CURRENT)
    only_changed(run, set())


@scenario("disk_full_install", "the code folder fills up while the new build is copied",
          setup=with_setup(big_builds), inside="small_disk /home/vtx/Code 1100k\n")
def _(run):
    # The copy that did not fit is removed; the old build stays whole under its name.
    failed(run, "Disk error... (06)", ["P no zip file on USB"] + CURRENT + ["P Old version backed up to " + BACKUP])
    backup_made(run)
    only_changed(run, {"/home/vtx/Code/Old/"})


@scenario("disk_full_fonts", "the home folder is too small for the font package",
          setup=with_setup(keep_new_build, lambda r: r.write("/media/usb/jfonts.tgz", big(3 * 1024 * 1024, b"f"))),
          inside="small_disk /home/vtx 2m\n")
def _(run):
    failed(run, "Could not copy file(s): font package", ["P no zip file on USB"] + INSTALLED[:-1] + [
        "P Copying /media/usb/jfonts.tgz to /home/vtx", "P could not copy font package"], old_intact=False)
    only_changed(run, {"/home/vtx/Code/Application", "/home/vtx/Code/Old/", "/home/vtx/Code/NEW/"})


@scenario("disk_full_stick", "the stick is too small for the log",
          setup=with_setup(keep_new_build, lambda r: r.write("/home/vtx/Code/instrument.log", big(512 * 1024, b"l")
                                                             + b"\r\n")),
          inside="small_disk /media/usb 64k\n")
def _(run):
    final_status(run, "Disk error... (13)")
    rebooted(run, False)
    only_changed(run, {"/home/vtx/Code/Application", "/home/vtx/Code/Old/", "/home/vtx/Code/NEW/"})
    appended_lines(run)


# ---- read-only folders


@scenario("read_only_code_folder", "the code folder is read-only: the log cannot be opened",
          setup=with_setup(), inside="read_only /home/vtx/Code\n")
def _(run):
    final_status(run, "Disk error... (10)")
    rebooted(run, False)
    old_build_intact(run)
    only_changed(run, set())


@scenario("read_only_backup_folder", "the backup folder is read-only",
          setup=with_setup(lambda r: os.makedirs(r.path("/home/vtx/Code/Old"))),
          inside="read_only /home/vtx/Code/Old\n")
def _(run):
    failed(run, "Disk error... (04)", ["P no zip file on USB"] + CURRENT)
    only_changed(run, set())


@scenario("read_only_stick", "the stick is write-protected", setup=with_setup(keep_new_build),
          inside="read_only /media/usb\n")
def _(run):
    final_status(run, "Disk error... (13)")
    rebooted(run, False)
    log_is(run, ["P no zip file on USB"] + INSTALLED)
    only_changed(run, {"/home/vtx/Code/Application", "/home/vtx/Code/Old/", "/home/vtx/Code/NEW/"})


# ---- copies that replace: a running program, partial copies of an earlier power cut


def _running_application(run):
    keep_new_build(run)
    run.write("/home/vtx/Code/Application", open("/bin/sleep", "rb").read(), 0o755)
    subprocess.run(["touch", "-d", "2019-03-05 14:12:00", run.path("/home/vtx/Code/Application")], check=True)
    run.application_before = run.read("/home/vtx/Code/Application")


@scenario("application_running", "the old build is running while it is replaced", setup=_running_application,
          inside='/home/vtx/Code/Application 60 & echo $! > "$ROOT/record/running.pid"\n')
def _(run):
    # Writing into a running program fails ("Text file busy"); a rename replaces it.
    os.kill(int(open(os.path.join(run.root, "record", "running.pid")).read()), 9)
    final_status(run, SUCCESS)
    check(run.read("/home/vtx/Code/Application") == run.new_build, "the new build is not installed")
    backup_made(run)


LEFTOVERS = ["/home/vtx/Code/", "/home/vtx/Code/Old/", "/home/vtx/", "/media/usb/"]


def _leftovers(run):
    keep_new_build(run)
    run.write("/media/usb/update/zip", b"auxiliary data\n")
    run.write("/media/usb/jfonts.tgz", font_package())
    for folder in LEFTOVERS:
        run.write(folder + ".vtx-partial-copy", b"cut short by a power loss", 0o444)


@scenario("partial_copies_left", "partial copies of an earlier power cut in every folder the update copies into",
          setup=_leftovers)
def _(run):
    final_status(run, SUCCESS)
    check(run.read("/home/vtx/Code/Application") == run.new_build, "the new build is not installed")
    check(run.read("/home/vtx/Code/zip") == b"auxiliary data\n" and run.exists("/home/vtx/jfonts/ipag.ttf"),
          "the extras are not installed")
    backup_made(run)
    left = [f for f in LEFTOVERS if run.exists(f + ".vtx-partial-copy")]
    check(not left, "partial copies left in %s" % left)


# ---- the stick pulled out, the log growing


def _stick_with_extras(run):
    keep_new_build(run)
    run.write("/media/usb/update/zip", b"auxiliary data\n")
    run.write("/media/usb/jfonts.tgz", font_package())
    take_snapshot(run)


@scenario("stick_removed", "the stick is pulled out while the first status is shown",
          setup=_stick_with_extras, inside="remove_later /media/usb 0.5\n")
def _(run):
    # Without the stick there is no auxiliary file and no font package; the log copy lands in
    # the empty mount point, as it would on the instrument.
    final_status(run, SUCCESS)
    log_is(run, ["P no zip file on USB"] + INSTALLED)
    check(not run.exists("/home/vtx/Code/zip") and not run.exists("/home/vtx/jfonts.tgz"), "files from a gone stick")
    only_changed(run, {"/home/vtx/Code/Application", "/home/vtx/Code/Old/", "/home/vtx/Code/NEW/",
                       "/media/usb/"})


GROWER = r"""
( i=0; while [ $i -lt 60 ]; do printf 'other writer %d\r\n' $i >> /home/vtx/Code/instrument.log; i=$((i+1));
  sleep 0.1; done ) &
"""


@scenario("log_grows", "another process appends to the log during the update", setup=with_setup(keep_new_build),
          inside=GROWER)
def _(run):
    final_status(run, SUCCESS)
    after = run.read("/home/vtx/Code/instrument.log")
    check(after.startswith(run.log_before), "the log was not only appended to")
    lines = [l.decode() for l in after[len(run.log_before):].split(b"\r\n")[:-1]]
    ours = [l for l in lines if not l.startswith("other writer")]
    check(len([l for l in lines if l.startswith("other writer")]) == 60, "lines of the other writer were lost")
    expected = ["P no zip file on USB"] + INSTALLED
    check(len(ours) == len(expected), "our lines were torn or lost: %r" % ours)
    for got, want in zip(ours, expected):
        pattern = US_PREFIX + e2e.re.escape(want[1:]) if want.startswith("P ") else e2e.re.escape(want)
        check(e2e.re.fullmatch(pattern, got) is not None, "log line %r, expected %r" % (got, want))
    # The other writer may go on after the copy: the stick holds the log as it was then, with all
    # of our lines.
    stick = run.read("/media/usb/instrument.log")
    check(after.startswith(stick) and b" Application started\r\n" in stick,
          "the stick's copy is not the log as it was")


# ---- hostile names and packages

# A file name cannot hold "/": the injected commands "cd" to the home folder first (HOME is
# /home/vtx, as for the instrument's user) and leave a mark there if they ever run.
HOSTILE_NAMES = {
    "dollar": "a$(cd;touch pwned).log",
    "quote": 'x" ; cd ; touch pwned ; ".log',
    "backquote": "b`cd;touch pwned`.log",
    "backslash": "c\\\" ; cd ; touch pwned ; \\\".log",
    "line_feed": "first\ncd\ntouch pwned\n.log",
    "long": "L" * 251 + ".log",
}


def _hostile_log(name):
    def setup(run):
        keep_new_build(run)
        p = run.path("/home/vtx/Code/") + name
        with open(p, "wb") as f:
            f.write(b"hostile log\r\n")
        run.hostile = name
        take_snapshot(run)
    return setup


def _expect_hostile(run):
    name = run.hostile
    final_status(run, SUCCESS)
    privileged_is(run, ["reboot"])
    check(not run.exists("/home/vtx/pwned"), "a file name ran a command")
    # The log path is split at its last backslash before its last slash, as on the instrument's
    # older file names: such a name lands beside the stick's folder, but whole and unexecuted.
    on_stick = "/media/usb" + name[name.rindex("\\"):] if "\\" in name else "/media/usb/" + name
    stick = run.path("/media/") + on_stick[len("/media/"):]
    mine = run.path("/home/vtx/Code/") + name
    with open(mine, "rb") as f:
        content = f.read()
    check(content.startswith(b"hostile log\r\n") and content.endswith(b" Application started\r\n"),
          "the hostile log was not the one written")
    check(os.path.exists(stick), "the log was not copied to the stick under its own name")
    with open(stick, "rb") as f:
        check(f.read() == content, "the stick's copy differs")
    check(run.read("/home/vtx/Code/instrument.log") == run.log_before, "the older log was written")
    only_changed(run, {"/home/vtx/Code/Application", "/home/vtx/Code/Old/", "/home/vtx/Code/NEW/",
                       "/home/vtx/Code/" + name, on_stick})


for _key, _name in HOSTILE_NAMES.items():
    scenario("hostile_log_name_" + _key, "the newest log is named %r" % _name, setup=_hostile_log(_name))(
        _expect_hostile)


def _tar(entries):
    buf = io.BytesIO()
    with tarfile.open(fileobj=buf, mode="w:gz", format=tarfile.GNU_FORMAT) as tar:
        for name, kind, data in entries:
            info = tarfile.TarInfo(name)
            if kind == "link":
                info.type, info.linkname = tarfile.SYMTYPE, data
                tar.addfile(info)
            else:
                info.size = len(data)
                tar.addfile(info, io.BytesIO(data))
    return buf.getvalue()


FONT_HEAD = ["P no zip file on USB"] + INSTALLED[:-1] + ["P Copying /media/usb/jfonts.tgz to /home/vtx"]
INSTALL_CHANGES = {"/home/vtx/Code/Application", "/home/vtx/Code/Old/", "/home/vtx/Code/NEW/", "/home/vtx/jfonts.tgz",
                   "/home/vtx/jfonts/"}


def _package(entries):
    def setup(run):
        keep_new_build(run)
        run.write("/media/usb/jfonts.tgz", _tar(entries))
        take_snapshot(run)
    return setup


def _unpack_failed(run, allowed=()):
    # tar reports on its error output, which is not collected: only the missing font folder tells.
    failed(run, "Could not copy file(s): font package unpack", FONT_HEAD + ["P could not unpack font package"],
           old_intact=False)
    only_changed(run, INSTALL_CHANGES | set(allowed))


def _unpacked_inside_home(run, allowed=()):
    # tar itself keeps members inside the folder it unpacks into; its complaints go to its error
    # output, the font folder is there, and the update goes on.
    final_status(run, SUCCESS)
    log_is(run, FONT_HEAD[:-1] + ["P Copying /media/usb/jfonts.tgz to /home/vtx", "P Application started"])
    check(run.read("/home/vtx/Code/Application") == run.new_build, "the package overwrote the application")
    rebooted(run)
    only_changed(run, INSTALL_CHANGES | {"/media/usb/instrument.log"} | set(allowed))


@scenario("font_package_absolute_path", "a package member with an absolute path",
          setup=_package([("jfonts/ok.ttf", "file", b"f"), ("/home/vtx/Code/Application", "file", b"evil")]))
def _(run):
    _unpacked_inside_home(run, {"/home/vtx/home/"})


@scenario("font_package_dot_dot", "a package member climbing out with ..",
          setup=_package([("jfonts/ok.ttf", "file", b"f"), ("jfonts/../../vtx/Code/Application", "file", b"evil")]))
def _(run):
    _unpacked_inside_home(run)


@scenario("font_package_symlink_out", "a package symlink pointing out of the home folder, then a file through it",
          setup=_package([("jfonts/ok.ttf", "file", b"f"), ("jfonts/code", "link", "/home/vtx/Code"),
                          ("jfonts/code/Application", "file", b"evil")]))
def _(run):
    check(run.read("/home/vtx/Code/Application") == run.new_build, "the package wrote through its symlink")
    statuses = run.statuses()
    check(statuses[-1] in (SUCCESS,) or statuses[-1].startswith("Could not copy file(s): "), "status %r" % statuses[-1])
    only_changed(run, INSTALL_CHANGES | {"/media/usb/instrument.log"})


def _corrupt(run):
    keep_new_build(run)
    run.write("/media/usb/jfonts.tgz", b"\x1f\x8b\x08\x00 truncated")
    take_snapshot(run)


@scenario("font_package_corrupt", "the package is not a whole gzip archive", setup=_corrupt)
def _(run):
    _unpack_failed(run)


# ---- the privileged tool slow or missing


def _slow_tool(run):
    keep_new_build(run)
    run.write("/media/usb/update/libstdc++.so.6.0.22", b"runtime library 6.0.22 from the stick\n")
    with open(os.path.join(run.root, "record", "privileged.hang"), "w") as f:
        f.write("3\n")
    take_snapshot(run)


@scenario("privileged_tool_slow", "every call of the privileged tool takes 3 s", layout=["--link", "wrong"],
          setup=_slow_tool)
def _(run):
    final_status(run, SUCCESS)
    privileged_is(run, OS_COMMANDS + ["reboot"])
    only_changed(run, {"/home/vtx/Code/Application", "/home/vtx/Code/Old/", "/home/vtx/Code/NEW/",
                       "/media/usb/instrument.log", "/mnt/root-ro/"})


def _no_tool(run):
    _slow_tool(run)
    os.remove(os.path.join(run.root, "record", "privileged.hang"))
    run.remove("/home/vtx/bin/VtxSecret")
    take_snapshot(run)


@scenario("privileged_tool_missing_os_update", "the OS needs its update and the privileged tool is gone",
          layout=["--link", "wrong"], setup=_no_tool)
def _(run):
    failed(run, "Disk error... (18)", ["P no zip file on USB", "*** Performing systems check ***", "version read done",
                                       "version incorrect - updating OS", "prerequisites exists on USB",
                                       "FAIL - no prerequisites on disk"])
    only_changed(run, set())


def _no_tool_current(run):
    keep_new_build(run)
    run.remove("/home/vtx/bin/VtxSecret")
    take_snapshot(run)


@scenario("privileged_tool_missing_reboot", "everything installed, but the reboot cannot be asked for",
          setup=_no_tool_current)
def _(run):
    # The screen keeps the success text; the console says why the instrument is still on.
    statuses = run.statuses()
    check(statuses[-1] == SUCCESS, "status %r" % statuses[-1])
    check(run.session()[0] == "stuck", "session %r" % run.session())
    check("The reboot command returned, exit status" in run.record("stderr.log"), "no console line on the reboot")
    log_is(run, ["P no zip file on USB"] + INSTALLED)
    only_changed(run, {"/home/vtx/Code/Application", "/home/vtx/Code/Old/", "/home/vtx/Code/NEW/",
                       "/media/usb/instrument.log"})
