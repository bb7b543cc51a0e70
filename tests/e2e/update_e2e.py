#!/usr/bin/env python3
"""End-to-end scenarios of the update program.

Each scenario lays out a simulated instrument and USB stick, runs the real program inside the
instrument sandbox on a private Xvfb display until the update has come to an end, and then checks
what a service engineer would look at: the final status text, the lines appended to the log file,
the files on the instrument and on the stick, the privileged commands and whether a reboot was
asked for.

    update_e2e.py --program build/update --list
    update_e2e.py --program build/update SCENARIO [SCENARIO...]
"""

import argparse
import io
import os
import re
import shutil
import subprocess
import sys
import tarfile
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(os.path.dirname(HERE))
SANDBOX = os.path.join(REPO, "tools", "instrument-sandbox")
WITH_XVFB = os.path.join(REPO, "tools", "with-xvfb")
SESSION = os.path.join(REPO, "tools", "run-update-session")

US_PREFIX = r"\d\d/\d\d/\d{4} \d\d:\d\d [AP]M"
EU_PREFIX = r"\d\d/\d\d/\d{4} \d\d:\d\d"
OLD_LOG = b"instrument log\r\n"
BACKUP = "/home/vtx/Code/Old/Application_05032019_1412"
SUCCESS = "Upgrade successful...\nRestarting application"
OS_COMMANDS = [
    "mount -o remount,rw /mnt/root-ro",
    "cp /media/usb/update/libstdc++.so.6.0.22 /mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22",
    "ln -sf /usr/lib/i386-linux-gnu/libstdc++.so.6.0.22 /mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6",
]
SYSTEMS_CHECK = ["*** Performing systems check ***", "version read done"]
CURRENT = SYSTEMS_CHECK + ["version is correct, starting normal upgrade procedure"]
OS_UPDATE_OK = SYSTEMS_CHECK + [
    "version incorrect - updating OS",
    "prerequisites exists on USB",
    "prerequisites exists on disk",
    "remounted OS",
    "copied prerequisites to OS",
    "link changed",
]


class Failure(Exception):
    pass


def check(condition, message):
    if not condition:
        raise Failure(message)


class Run:
    """A sandbox root before and after one run of the program."""

    def __init__(self, root):
        self.root = root

    def path(self, instrument_path):
        """The file behind an instrument path, in the sandbox root."""
        for prefix, sub in (("/home/", "home/"), ("/media/", "media/"), ("/opt/", "opt/"),
                            ("/mnt/root-ro/", "rootro/"), ("/usr/lib/", "usr-lib/")):
            if instrument_path.startswith(prefix):
                return os.path.join(self.root, sub + instrument_path[len(prefix):])
        raise ValueError(instrument_path)

    def read(self, instrument_path):
        with open(self.path(instrument_path), "rb") as f:
            return f.read()

    def write(self, instrument_path, data, mode=0o644):
        p = self.path(instrument_path)
        os.makedirs(os.path.dirname(p), exist_ok=True)
        with open(p, "wb") as f:
            f.write(data if isinstance(data, bytes) else data.encode())
        os.chmod(p, mode)

    def exists(self, instrument_path):
        return os.path.lexists(self.path(instrument_path))

    def remove(self, instrument_path):
        p = self.path(instrument_path)
        if os.path.isdir(p) and not os.path.islink(p):
            shutil.rmtree(p)
        else:
            os.remove(p)

    def record(self, name):
        p = os.path.join(self.root, "record", name)
        if not os.path.exists(p):
            return ""
        with open(p, encoding="utf-8", errors="replace") as f:
            return f.read()

    def privileged(self):
        return self.record("privileged.log").splitlines()

    def statuses(self):
        out = []
        for line in self.record("stderr.log").splitlines():
            m = re.search(r"Event \[Update\] Status: (.*)$", line)
            if m:
                out.append(m.group(1).replace("\\n", "\n").replace("\\r", "\r"))
        return out

    def session(self):
        return self.record("session").split()


def font_package(with_folder=True):
    buf = io.BytesIO()
    with tarfile.open(fileobj=buf, mode="w:gz") as tar:
        data = b"stand-in font\n"
        name = "jfonts/ipag.ttf" if with_folder else "ipag.ttf"
        info = tarfile.TarInfo(name)
        info.size = len(data)
        tar.addfile(info, io.BytesIO(data))
    return buf.getvalue()


class Scenario:
    def __init__(self, name, doc, layout=(), sandbox=(), args=(), setup=None, inside=None,
                 path_stubs=None, expect=None, killed=False, group="update"):
        self.name, self.doc, self.killed, self.group = name, doc, killed, group
        self.layout, self.sandbox, self.args = list(layout), list(sandbox), list(args)
        self.setup, self.inside, self.path_stubs, self.expect = setup, inside, path_stubs, expect


SCENARIOS = {}
# Scenario files other than this one set their group before they register.
GROUP = ["update"]


def scenario(name, doc, **kw):
    def register(expect):
        SCENARIOS[name] = Scenario(name, doc, expect=expect, group=GROUP[0], **kw)
        return expect
    return register


# The runtime link in the instrument's read-only root image, which the operating-system update
# changes.
ROOT_RO_RUNTIME_LINK = "/mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6"


def prepare(sc, root, extra_setup=None):
    """Lays out the sandbox root of a scenario; returns the Run."""
    subprocess.run([SANDBOX, "--root", root, "--init"] + sc.layout, check=True)
    run = Run(root)
    if sc.setup:
        sc.setup(run)
    if extra_setup:
        extra_setup(run)
    run.log_before = run.read("/home/vtx/Code/instrument.log") if run.exists(
        "/home/vtx/Code/instrument.log") else None
    run.application_before = run.read("/home/vtx/Code/Application") if run.exists(
        "/home/vtx/Code/Application") else None
    link = run.path(ROOT_RO_RUNTIME_LINK)
    run.runtime_link_before = os.readlink(link) if os.path.islink(link) else None
    return run


def execute(sc, run, program, use_display=False, extra_args=()):
    """Runs the program on the prepared root; returns the sandbox's console output."""
    root = run.root
    env = dict(os.environ)
    env["HOME"] = "/home/vtx"  # the instrument's user
    cmd = [SANDBOX, "--root", root] + sc.sandbox
    if sc.inside:
        script = os.path.join(root, "inside-setup.sh")
        with open(script, "w") as f:
            f.write(sc.inside)
        cmd += ["--inside-setup", script]
    if sc.path_stubs:
        stubs = os.path.join(root, "stubs")
        os.makedirs(stubs, exist_ok=True)
        for tool, body in sc.path_stubs.items():
            with open(os.path.join(stubs, tool), "w") as f:
                f.write("#!/bin/sh\n" + body)
            os.chmod(os.path.join(stubs, tool), 0o755)
        env["PATH"] = stubs + ":" + env.get("PATH", "/usr/bin:/bin")
    env.setdefault("VTX_SESSION_TIMEOUT", "90")
    display = [] if use_display else [WITH_XVFB]
    cmd += ["--"] + display + [SESSION, os.path.abspath(program)] + sc.args + list(extra_args)
    proc = subprocess.run(cmd, env=env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return proc.stdout.decode(errors="replace")


def run_scenario(sc, program, keep=False):
    root = tempfile.mkdtemp(prefix="vtx-e2e-%s-" % sc.name)
    try:
        run = prepare(sc, root)
        output = execute(sc, run, program)
        try:
            session = run.session()
            check(session and not session[0].startswith("timeout"),
                  "the program did not come to an end: %s" % (session or "no session record"))
            if sc.killed:
                check(session[0] == "exited", "the program was not killed: %s" % session)
            else:
                # Stopped with SIGTERM as the instrument's shutdown does: its default action ends it.
                check(session[-1] == "143", "the program did not end at SIGTERM: %s" % session)
            check("ERROR: AddressSanitizer" not in run.record("stderr.log")
                  and "ERROR: LeakSanitizer" not in run.record("stderr.log")
                  and "runtime error:" not in run.record("stderr.log")
                  and "WARNING: ThreadSanitizer" not in run.record("stderr.log"),
                  "a sanitizer reported an error")
            check(run.statuses(), "no status text was shown")
            sc.expect(run)
        except Failure:
            sys.stderr.write(output)
            sys.stderr.write("--- program console ---\n" + run.record("stderr.log"))
            raise
        return run
    finally:
        if keep:
            print("kept sandbox root %s" % root)
        else:
            shutil.rmtree(root, ignore_errors=True)


# ---- expectations shared by the scenarios


def first_status(run, text="Copying files..."):
    statuses = run.statuses()
    check(statuses[0] == text, "first status %r, expected %r" % (statuses[0], text))


def final_status(run, text):
    first_status(run)
    statuses = run.statuses()
    check(statuses and statuses[-1] == text, "final status %r, expected %r" % (statuses[-1:], text))


def appended_lines(run):
    """The lines the program appended to the log; the old content must be kept byte for byte."""
    after = run.read("/home/vtx/Code/instrument.log")
    check(after.startswith(run.log_before), "the log file was not only appended to")
    added = after[len(run.log_before):]
    check(added == b"" or added.endswith(b"\r\n"), "the appended log does not end with CR LF")
    lines = added.split(b"\r\n")[:-1] if added else []
    for line in lines:
        check(b"\n" not in line and b"\r" not in line, "a bare line end in the log: %r" % line)
    return [line.decode() for line in lines]


def log_is(run, expected, prefix=US_PREFIX):
    """expected: lines; 'P <text>' is the date prefix followed by ' <text>' (the blank is the
    log text's own)."""
    lines = appended_lines(run)
    check(len(lines) == len(expected), "log lines:\n%s\nexpected:\n%s" % ("\n".join(lines), "\n".join(expected)))
    for got, want in zip(lines, expected):
        if want.startswith("P "):
            check(re.fullmatch(prefix + re.escape(want[1:]), got) is not None,
                  "log line %r, expected prefix + %r" % (got, want[1:]))
        else:
            check(got == want, "log line %r, expected %r" % (got, want))


def rebooted(run, yes=True):
    asked = os.path.exists(os.path.join(run.root, "record", "reboot"))
    check(asked == yes, "reboot %s asked for" % ("was not" if yes else "was"))


def privileged_is(run, expected):
    check(run.privileged() == expected, "privileged commands %r, expected %r" % (run.privileged(), expected))


def old_build_intact(run):
    check(run.read("/home/vtx/Code/Application") == run.application_before, "the old build was changed")


def backup_made(run, yes=True):
    if yes:
        check(run.exists(BACKUP) and run.read(BACKUP) == run.application_before, "no backup of the old build")
    else:
        check(not run.exists("/home/vtx/Code/Old"), "a backup folder was made")


def new_build_removed(run, yes=True):
    check(run.exists("/home/vtx/Code/NEW") != yes, "the new-build folder %s" % ("is still there" if yes else "was removed"))


def log_on_stick(run):
    check(run.exists("/media/usb/instrument.log"), "the log was not copied to the stick")
    check(run.read("/media/usb/instrument.log") == run.read("/home/vtx/Code/instrument.log"),
          "the log on the stick differs from the instrument's")


def nothing_on_stick(run, names=("instrument.log",)):
    for n in names:
        check(not run.exists("/media/usb/" + n), "%s was copied to the stick" % n)


def keep_new_build(run):
    run.new_build = run.read("/home/vtx/Code/NEW/Application")
    run.new_build_chinese = run.read("/home/vtx/Code/NEW/Application_Chinese")


# ---- happy paths


def _happy_common(run):
    final_status(run, SUCCESS)
    rebooted(run)
    privileged_is(run, ["reboot"])
    backup_made(run)
    new_build_removed(run)
    log_on_stick(run)


@scenario("happy_path", "no auxiliary file, no font package, current runtime link",
          setup=keep_new_build)
def _(run):
    _happy_common(run)
    check(run.read("/home/vtx/Code/Application") == run.new_build, "the new build is not installed")
    log_is(run, ["P no zip file on USB"] + CURRENT + ["P Old version backed up to " + BACKUP,
                                                      "P New version copied", "P Application started"])
    check(not run.exists("/home/vtx/Code/zip") and not run.exists("/home/vtx/jfonts"), "unexpected files")


def _with_extras(run):
    keep_new_build(run)
    run.write("/media/usb/update/zip", b"auxiliary data\n")
    run.write("/media/usb/jfonts.tgz", font_package())


@scenario("happy_path_extras", "auxiliary file and font package on the stick", setup=_with_extras)
def _(run):
    _happy_common(run)
    check(run.read("/home/vtx/Code/Application") == run.new_build, "the new build is not installed")
    check(run.read("/home/vtx/Code/zip") == b"auxiliary data\n", "the auxiliary file was not copied")
    check(run.exists("/home/vtx/jfonts.tgz") and run.exists("/home/vtx/jfonts/ipag.ttf"), "fonts not installed")
    log_is(run, ["P auxillary files copied"] + CURRENT + [
        "P Old version backed up to " + BACKUP, "P New version copied",
        "P Copying /media/usb/jfonts.tgz to /home/vtx", "P Application started"])


def _extras_installed_before(run):
    _with_extras(run)
    run.write("/home/vtx/Code/zip", b"older auxiliary data\n")
    run.write("/home/vtx/jfonts.tgz", b"installed before")


@scenario("extras_installed_before", "auxiliary file and font package already on the instrument",
          setup=_extras_installed_before)
def _(run):
    _happy_common(run)
    check(run.read("/home/vtx/Code/zip") == b"older auxiliary data\n", "the auxiliary file was overwritten")
    check(not run.exists("/home/vtx/jfonts"), "the font package was unpacked again")
    log_is(run, ["P zip already copied"] + CURRENT + [
        "P Old version backed up to " + BACKUP, "P New version copied", "P Application started"])


def _day_first(run):
    keep_new_build(run)
    run.write("/home/vtx/Code/settings.vtx", "Language = EN\r\nDateFormat = EU\r\n")


@scenario("day_first_prefix", "the log prefix follows the date-format setting", setup=_day_first)
def _(run):
    final_status(run, SUCCESS)
    log_is(run, ["P no zip file on USB"] + CURRENT + ["P Old version backed up to " + BACKUP,
                                                      "P New version copied", "P Application started"],
           prefix=EU_PREFIX)


def _german(run):
    keep_new_build(run)
    run.write("/home/vtx/Code/settings.vtx", "Language = DE\r\nDateFormat = EU\r\n")
    run.remove("/home/vtx/Code/instrument.log")


@scenario("german_failure_text", "status texts follow the language setting", setup=_german)
def _(run):
    statuses = run.statuses()
    check(statuses[0] == "Kopiere Daten...", "first status not in German: %r" % statuses[0])
    check(statuses[-1].endswith("... (08)/home/vtx/Code/") and not statuses[-1].startswith("Disk error"),
          "failure status not in German: %r" % statuses[-1])
    rebooted(run, False)


def _special(run):
    keep_new_build(run)
    run.remove("/home/vtx/Code/instrument.log")
    run.write("/media/usb/update/zip", b"auxiliary data\n")
    run.write("/media/usb/jfonts.tgz", font_package())


@scenario("special_command_1", "the reduced update: no log, no auxiliary file, no fonts",
          setup=_special, args=["1", "1"])
def _(run):
    final_status(run, SUCCESS)
    rebooted(run)
    backup_made(run)
    new_build_removed(run)
    check(run.read("/home/vtx/Code/Application") == run.new_build, "the new build is not installed")
    check(not run.exists("/home/vtx/Code/zip") and not run.exists("/home/vtx/jfonts.tgz"),
          "the reduced update copied extras")
    check(sorted(os.listdir(run.path("/media/usb/"))) == ["jfonts.tgz", "update"], "files written to the stick")


@scenario("special_command_1_single_argument", "'1 1' as one argument is the same command",
          setup=_special, args=["1 1"])
def _(run):
    final_status(run, SUCCESS)
    check(not run.exists("/home/vtx/Code/zip"), "the reduced update copied the auxiliary file")


@scenario("chinese_variant", "with /opt/librime/ the Chinese build is installed", layout=["--chinese"],
          setup=keep_new_build)
def _(run):
    _happy_common(run)
    check(run.read("/home/vtx/Code/Application") == run.new_build_chinese, "the Chinese build is not installed")


def _os_update(run):
    keep_new_build(run)
    run.write("/media/usb/update/libstdc++.so.6.0.22", b"runtime library 6.0.22 from the stick\n")


def _expect_os_update(run):
    final_status(run, SUCCESS)
    statuses = run.statuses()
    check("Disk error... (17)" in statuses, "code 17 was not shown during the OS update")
    privileged_is(run, OS_COMMANDS + ["reboot"])
    check(os.readlink(run.path("/mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6")) ==
          "/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22", "the link in the root image was not changed")
    check(run.read("/mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22") ==
          b"runtime library 6.0.22 from the stick\n", "the runtime was not copied into the root image")
    log_is(run, ["P no zip file on USB"] + OS_UPDATE_OK + [
        "P Old version backed up to " + BACKUP, "P New version copied", "P Application started"])


@scenario("relative_link", "a relative runtime link is wrong: the OS is updated", layout=["--link", "relative"],
          setup=_os_update)
def _(run):
    _expect_os_update(run)


def _os_update_screenshot(run):
    _os_update(run)
    with open(os.path.join(run.root, "record", "privileged.screenshot"), "w") as f:
        f.write(OS_COMMANDS[0] + "\n")


@scenario("wrong_link", "a link to another runtime: the OS is updated; the bar stays empty until the end",
          layout=["--link", "wrong"], setup=_os_update_screenshot)
def _(run):
    _expect_os_update(run)
    bar_is(run, "empty", "screen-during.png")
    bar_is(run, "full")


# ---- failures: each leaves the program on its screen, with a full bar, and reboots nothing


# Near the left and the right end of the progress bar's inside on the 1024 x 768 test display,
# and the bar's fill colour there.
BAR_ENDS = ((140, 365), (880, 365))
BAR_FILL = (58, 138, 206)


def bar_is(run, state, shot="screen.png"):
    """The screenshot shows the progress bar "empty" or "full"."""
    path = os.path.join(run.root, "record", shot)
    check(os.path.exists(path), "no screenshot %s" % shot)
    filled = []
    for x, y in BAR_ENDS:
        out = subprocess.run(["convert", path, "-crop", "1x1+%d+%d" % (x, y), "-depth", "8", "txt:-"],
                             stdout=subprocess.PIPE).stdout.decode()
        m = re.search(r"\((\d+),(\d+),(\d+)", out.splitlines()[-1] if out else "")
        check(m is not None, "cannot read %s: %r" % (shot, out))
        filled.append(tuple(int(v) for v in m.groups()) == BAR_FILL)
    check(filled == [state == "full"] * 2, "the progress bar in %s is not %s: %s" % (shot, state, filled))


def failed(run, status, log=None, old_intact=True, prefix=US_PREFIX):
    final_status(run, status)
    bar_is(run, "full")
    rebooted(run, False)
    check(run.session()[0] == "failed", "the procedure did not end as failed: %s" % run.session())
    if old_intact:
        old_build_intact(run)
    if log is not None:
        log_is(run, log, prefix)


def _no_application(run):
    run.remove("/home/vtx/Code/Application")
    run.application_before = None


@scenario("code_01", "no application to back up", setup=_no_application)
def _(run):
    failed(run, "Disk error... (01)", ["P no zip file on USB"] + CURRENT, old_intact=False)
    check(run.exists("/home/vtx/Code/NEW/Application"), "the new build was touched")


@scenario("code_03", "the backup folder cannot be created (no inode left on the disk)", setup=keep_new_build,
          inside="small_disk /home/vtx/Code 64m no-inodes\n")
def _(run):
    failed(run, "Disk error... (03)", ["P no zip file on USB"] + CURRENT)
    check(not run.exists("/home/vtx/Code/Old"), "a backup folder was made")


def _old_is_file(run):
    run.write("/home/vtx/Code/Old", b"not a folder")


@scenario("code_04", "a file in the backup folder's place: the backup copy fails", setup=_old_is_file)
def _(run):
    failed(run, "Disk error... (04)", ["P no zip file on USB"] + CURRENT)
    check(run.read("/home/vtx/Code/Old") == b"not a folder", "the file in the folder's place was changed")
    new_build_removed(run, False)


def _new_build_is_folder(run):
    run.remove("/home/vtx/Code/NEW/Application")
    os.makedirs(run.path("/home/vtx/Code/NEW/Application"))


@scenario("code_06", "the new build cannot be copied", setup=_new_build_is_folder)
def _(run):
    failed(run, "Disk error... (06)", ["P no zip file on USB"] + CURRENT + ["P Old version backed up to " + BACKUP])
    backup_made(run)


def _hidden_in_new_build(run):
    keep_new_build(run)
    run.write("/home/vtx/Code/NEW/.hidden", b"left by the build tool\n")


@scenario("code_07", "the new-build folder holds a hidden file, which its removal does not match",
          setup=_hidden_in_new_build)
def _(run):
    failed(run, "Disk error... (07)", ["P no zip file on USB"] + CURRENT + ["P Old version backed up to " + BACKUP],
           old_intact=False)
    check(run.read("/home/vtx/Code/Application") == run.new_build, "the new build is not installed")
    left = os.listdir(run.path("/home/vtx/Code/NEW"))
    check(left == [".hidden"], "NEW holds %r" % left)


def _no_log(run):
    run.remove("/home/vtx/Code/instrument.log")
    run.write("/home/vtx/Code/logs/deeper.log", b"not directly in the code folder\r\n")


@scenario("code_08", "no log file directly in the code folder", setup=_no_log)
def _(run):
    final_status(run, "Disk error... (08)/home/vtx/Code/")
    rebooted(run, False)
    old_build_intact(run)
    backup_made(run, False)
    check(run.read("/home/vtx/Code/logs/deeper.log") == b"not directly in the code folder\r\n", "log changed")


def _dangling_log(run):
    os.symlink("/nonexistent/folder/newest.log", run.path("/home/vtx/Code/newest.log"))


@scenario("code_10", "the newest log file cannot be opened", setup=_dangling_log)
def _(run):
    final_status(run, "Disk error... (10)")
    rebooted(run, False)
    old_build_intact(run)
    check(run.read("/home/vtx/Code/instrument.log") == OLD_LOG, "the older log was written")


def _stick_log_blocked(run):
    keep_new_build(run)
    os.symlink("/nonexistent/folder/instrument.log", run.path("/media/usb/instrument.log"))


@scenario("code_13", "the log cannot be copied to the stick", setup=_stick_log_blocked)
def _(run):
    failed(run, "Disk error... (13)", ["P no zip file on USB"] + CURRENT + [
        "P Old version backed up to " + BACKUP, "P New version copied", "P Application started"], old_intact=False)
    check(run.read("/home/vtx/Code/Application") == run.new_build, "the new build is not installed")


@scenario("code_14", "Chinese build whose library check answers 0 (bash as /bin/sh)",
          layout=["--chinese"], sandbox=["--sh", "bash"])
def _(run):
    failed(run, "Disk error... (14)", ["P no zip file on USB"] + CURRENT + ["P Old version backed up to " + BACKUP])
    backup_made(run)
    new_build_removed(run, False)


@scenario("code_15", "library check answers 0 (bash as /bin/sh)", sandbox=["--sh", "bash"])
def _(run):
    failed(run, "Disk error... (15)", ["P no zip file on USB"] + CURRENT + ["P Old version backed up to " + BACKUP])
    backup_made(run)
    new_build_removed(run, False)


@scenario("code_16", "the runtime link cannot be read", layout=["--link", "missing"])
def _(run):
    failed(run, "Disk error... (16)", ["P no zip file on USB", "*** Performing systems check ***",
                                       "FAIL - cannot read link version", "Contact service!"])
    backup_made(run, False)


@scenario("code_18_no_runtime_on_stick", "wrong link and no replacement runtime on the stick",
          layout=["--link", "wrong"])
def _(run):
    failed(run, "Disk error... (18)", ["P no zip file on USB"] + SYSTEMS_CHECK + [
        "version incorrect - updating OS", "FAIL - no prerequisites on USB"])
    privileged_is(run, [])
    backup_made(run, False)


def _mount_refused(run):
    _os_update(run)
    with open(os.path.join(run.root, "record", "privileged.fail"), "w") as f:
        f.write("mount -o remount,rw /mnt/root-ro\n")


@scenario("code_18_mount_refused", "the root image cannot be remounted", layout=["--link", "relative"],
          setup=_mount_refused)
def _(run):
    failed(run, "Disk error... (18)", ["P no zip file on USB"] + SYSTEMS_CHECK + [
        "version incorrect - updating OS", "prerequisites exists on USB", "prerequisites exists on disk",
        "FAIL - cannot mount OS"])
    privileged_is(run, OS_COMMANDS[:1])


def _font_package_folder(run):
    keep_new_build(run)
    os.makedirs(run.path("/media/usb/jfonts.tgz"))


FONT_LOG_HEAD = ["P no zip file on USB"] + CURRENT + ["P Old version backed up to " + BACKUP, "P New version copied",
                                                      "P Copying /media/usb/jfonts.tgz to /home/vtx"]


@scenario("font_copy_fails", "the font package cannot be copied", setup=_font_package_folder)
def _(run):
    failed(run, "Could not copy file(s): font package", FONT_LOG_HEAD + ["P could not copy font package"],
           old_intact=False)


def _font_without_folder(run):
    keep_new_build(run)
    run.write("/media/usb/jfonts.tgz", font_package(with_folder=False))


@scenario("font_unpack_no_folder", "the font package holds no jfonts folder", setup=_font_without_folder)
def _(run):
    failed(run, "Could not copy file(s): font package unpack", FONT_LOG_HEAD + ["P could not unpack font package"],
           old_intact=False)


def _font_tar_prints(run):
    keep_new_build(run)
    run.write("/media/usb/jfonts.tgz", font_package())


@scenario("font_unpack_error", "the unpacking prints a complaint", setup=_font_tar_prints,
          path_stubs={"tar": "printf 'gzip: stdin: not in gzip format'\nexit 2\n"})
def _(run):
    failed(run, "Could not copy file(s): gzip: stdin: not in gzip format",
           FONT_LOG_HEAD + ["P Unpack error : gzip: stdin: not in gzip format"], old_intact=False)


def _aux_copy_fails(run):
    os.makedirs(run.path("/media/usb/update/zip"))


@scenario("auxiliary_copy_fails", "the auxiliary file cannot be copied", setup=_aux_copy_fails)
def _(run):
    failed(run, "Could not copy file(s): auxillary files", ["P could not copy auxillary files"])


def load_all_groups():
    """Registers the scenarios of the other scenario files; they import this module by name."""
    sys.modules.setdefault("update_e2e", sys.modules[__name__])
    if HERE not in sys.path:
        sys.path.insert(0, HERE)
    import faults_e2e  # noqa: F401
    import powerloss_e2e  # noqa: F401
    GROUP[0] = "update"


def main():
    load_all_groups()
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--names", action="store_true", help="list the scenario names only (for the build)")
    parser.add_argument("--group", help="only the scenarios of this group (update, faults, powerloss)")
    parser.add_argument("--keep", action="store_true", help="keep the sandbox roots")
    parser.add_argument("scenarios", nargs="*")
    a = parser.parse_args()
    if a.list or a.names:
        for name, sc in SCENARIOS.items():
            if a.group and sc.group != a.group:
                continue
            print(name if a.names else "%-34s %s" % (name, sc.doc))
        return 0
    if not a.program:
        parser.error("--program is required to run scenarios")
    names = a.scenarios or list(SCENARIOS)
    failures = 0
    for name in names:
        try:
            run_scenario(SCENARIOS[name], a.program, a.keep)
            print("PASS %s" % name)
        except Failure as e:
            failures += 1
            print("FAIL %s: %s" % (name, e))
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
