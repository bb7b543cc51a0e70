"""End-to-end scenarios: the outcomes of the update, and the checks every scenario file imports."""

import os
import platform
import re
import subprocess
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(HERE)), "tools"))
from sandbox_run import (CONSOLE, SANDBOX, SESSION, Run, Scenario, both, execute, gone, once_shown, package,  # noqa: E402,F401
                         prepare, put, runtime_library)
import service_sheet  # noqa: E402

US_PREFIX = r"\d\d/\d\d/\d{4} \d\d:\d\d [AP]M"
EU_PREFIX = r"\d\d/\d\d/\d{4} \d\d:\d\d"
LOG = "/home/vtx/Code/instrument.log"
APPLICATION = "/home/vtx/Code/Application"
BACKUP = "/home/vtx/Code/Old/Application_05032019_1412"  # from the layout's time stamp, in local time
RUNTIME_LINK = "/mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6"
PARTIAL = ".vtx-partial-copy"
# The instrument's 32-bit PC: its runtime is behind the checked link; a date after 2038 does not fit.
# The architecture the program is built for: a cross build lists its scenarios on the build machine.
I386 = os.environ.get("VTX_E2E_ARCH", platform.machine()) in ("i386", "i686")
COPY_FOLDERS = ("/home/vtx/Code/", "/home/vtx/Code/Old/", "/home/vtx/", "/media/usb/")
SUCCESS = "Upgrade successful...\nRestarting application"
OS_COMMANDS = [
    "mount -o remount,rw /mnt/root-ro",
    "cp /media/usb/update/libstdc++.so.6.0.22 /mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22",
    "ln -sf /usr/lib/i386-linux-gnu/libstdc++.so.6.0.22 /mnt/root-ro/usr/lib/i386-linux-gnu/libstdc++.so.6",
]
# Log lines; "P " stands for the date prefix (the blank after it is the log text's own).
SYSTEMS_CHECK = ["P no zip file on USB", "*** Performing systems check ***", "version read done"]
CURRENT = SYSTEMS_CHECK + ["version is correct, starting normal upgrade procedure"]
OS_UPDATE = SYSTEMS_CHECK + ["version incorrect - updating OS", "prerequisites exists on USB",
                             "prerequisites exists on disk"]
BACKED = ["P Old version backed up to " + BACKUP]
INSTALL = BACKED + ["P New version copied"]
DONE_LOG = CURRENT + INSTALL + ["P Application started"]
FONT_HEAD = CURRENT + INSTALL + ["P Copying /media/usb/jfonts.tgz to /home/vtx"]

# What a service engineer finds; a copy is "none", "complete" (as its source), "unchanged" or "partial".
FRESH = dict(application="old", backup="none", zip="none", fonts="none", stick_log="none", new_folder="present",
             runtime="old", partial_copy="none")
BACKED_UP = dict(FRESH, backup="complete")
INSTALLED = dict(BACKED_UP, application="new", new_folder="removed")
DONE = dict(INSTALLED, stick_log="complete")
STATE_FILES = {"application": [APPLICATION], "backup": ["/home/vtx/Code/Old/"], "zip": ["/home/vtx/Code/zip"],
               "fonts": ["/home/vtx/jfonts.tgz", "/home/vtx/jfonts/"], "stick_log": ["/media/usb/instrument.log"],
               "new_folder": ["/home/vtx/Code/NEW/"], "runtime": ["/mnt/root-ro/"]}


class Failure(Exception):
    pass


def check(condition, message):
    if not condition:
        raise Failure(message)


def state(run):
    before, now = run.before, run.files()

    def copy(path, source):
        return ("none" if path not in now else "complete" if now[path] == source
                else "unchanged" if now[path] == before.get(path) else "partial")
    builds = {before.get("/home/vtx/Code/NEW/Application"): "new", "absent": "none",
              before.get("/home/vtx/Code/NEW/Application_Chinese"): "chinese", before.get(APPLICATION): "old"}
    return {
        "application": builds.get(now.get(APPLICATION, "absent"), "partial"),
        "backup": copy(BACKUP, before.get(APPLICATION)),
        "zip": copy("/home/vtx/Code/zip", before.get("/media/usb/update/zip")),
        "fonts": "unpacked" if any(p.startswith("/home/vtx/jfonts/") for p in now)
        else copy("/home/vtx/jfonts.tgz", before.get("/media/usb/jfonts.tgz")),
        "stick_log": copy("/media/usb/instrument.log", now.get(LOG)),
        "new_folder": "present" if os.path.isdir(run.path("/home/vtx/Code/NEW")) else "removed",
        "runtime": "replaced" if now.get(RUNTIME_LINK) != before.get(RUNTIME_LINK) else "old",
        "partial_copy": " ".join(f + PARTIAL for f in COPY_FOLDERS if f + PARTIAL in now) or "none",
    }


def files_as(run, expected, also=()):
    """The state is as expected; no file changed but its own, the log and `also` ("x/": a folder)."""
    got = state(run)
    check(got == expected, "state %s, expected %s" % tuple({k: s[k] for k in got if got[k] != expected[k]}
                                                            for s in (got, expected)))
    allowed = {p for key, paths in STATE_FILES.items() if expected[key] not in ("old", "none", "unchanged", "present")
               for p in paths} | set(expected["partial_copy"].split()) | {LOG} | set(also)
    now = run.files()
    for path in set(run.before) | set(now):
        check(run.before.get(path) == now.get(path) or path in allowed
              or any(a.endswith("/") and path.startswith(a) for a in allowed),
              "%s changed (%s -> %s)" % (path, run.before.get(path, "absent"), now.get(path, "absent")))


def appended_lines(run, path=LOG, before=None):
    """The lines the program appended to a log that keeps its old content byte for byte."""
    before = run.log_before if before is None else before
    after = run.read(path)
    check(after.startswith(before), "%s was not only appended to" % path)
    lines = after[len(before):].split(b"\r\n")
    check(lines[-1] == b"" and not any(b"\n" in x or b"\r" in x for x in lines), "a bare line end in %s" % path)
    return [x.decode() for x in lines[:-1]]


def matches(lines, expected, prefix=US_PREFIX):
    return len(lines) == len(expected) and all(
        re.fullmatch(prefix + re.escape(want[1:]) if want.startswith("P ") else re.escape(want), got)
        for got, want in zip(lines, expected))


def log_is(run, expected, prefix=US_PREFIX, **where):
    lines = appended_lines(run, **where)
    check(matches(lines, expected, prefix), "log lines:\n%s\nexpected:\n%s" % ("\n".join(lines), "\n".join(expected)))


def bar_is(run, fill, shot="screen.png"):
    """The bar's fill colour near both ends of its inside, on the 1024 x 768 test display."""
    pixels = [subprocess.run(["convert", os.path.join(run.root, "record", shot), "-crop", "1x1+%d+365" % x, "-depth",
                              "8", "txt:-"], stdout=subprocess.PIPE, text=True).stdout for x in (140, 880)]
    check(all("srgb" in p for p in pixels) and [" #3A8ACE " in p for p in pixels] == [fill == "full"] * 2,
          "the progress bar in %s is not %s: %s" % (shot, fill, pixels))


def outcome(status, log, expected, privileged=None, also=(), ending=None, first="Copying files...",
            prefix=US_PREFIX, more=None):
    """Statuses, log lines (None: not looked at), state, privileged commands and ending: "rebooted",
    "failed" (with a full bar) or "stuck" (the reboot command returned)."""
    ending = ending or ("rebooted" if status == SUCCESS else "failed")

    def expect(run):
        if more:
            more(run)
        statuses = run.statuses()
        check(statuses[0] == first and statuses[-1] == status, "statuses %r, expected %r ... %r"
              % (statuses, first, status))
        if log is not None:
            log_is(run, log, prefix)
        files_as(run, expected, also)
        rebooted = os.path.exists(os.path.join(run.root, "record", "reboot"))
        check(rebooted == (ending == "rebooted"), "the reboot was%s asked for" % ("" if rebooted else " not"))
        # The session tells a reboot by the stand-in's mark, which races with the console's line
        # of the returned reboot command: only the other endings are read from it.
        check(ending == "rebooted" or run.session()[0] == ending, "session %s, expected %s" % (run.session(), ending))
        if ending == "failed":
            bar_is(run, "full")
        want = privileged if privileged is not None else ["reboot"] if rebooted else []
        check(run.privileged() == want, "privileged commands %r, expected %r" % (run.privileged(), want))
    return expect


def paused(run):
    """The first status and the success text each stand 2 s before the next line (by the console's
    stamps: a sleep never returns early, so this holds on any machine)."""
    lines = re.findall(r"^vtx-bench log (\S+) [\w ]+ \[Update\] (.*)$", run.record("stderr.log"), re.M)
    statuses = [i for i, (_, x) in enumerate(lines) if x.startswith(CONSOLE["kStatus"])]
    check(statuses, "no stamped status on the console")
    for i in statuses[:1] + [i + 1 for i, (_, x) in enumerate(lines) if x == CONSOLE["kSucceeded"]]:
        if i + 1 < len(lines):  # not cut short by a power cut
            gap = float(lines[i + 1][0]) - float(lines[i][0])
            check(gap >= 2.0, "%r followed after %.3f s by %r" % (lines[i][1], gap, lines[i + 1][1]))


# Each part of state(run) as the service sheet's sections name it and its values.
SHEET_WORDS = {
    "application": ("application", {"old": "old build", "new": "new build", "chinese": "new build", "none": "missing"}),
    "backup": ("backup", {"none": "none", "complete": "made"}),
    "zip": ("`Code/zip`", {"none": "none", "complete": "copied", "unchanged": "unchanged"}),
    "fonts": ("fonts", {"none": "none", "complete": "copied, not unpacked", "unpacked": "unpacked",
                        "unchanged": "unchanged"}),
    "stick_log": ("log on the stick", {"none": "none", "complete": "copied", "unchanged": "unchanged"}),
    "new_folder": ("`Code/NEW`", {"present": "still there", "removed": "removed"}),
    "runtime": ("runtime in the root image", {"old": "unchanged", "replaced": "replaced"}),
}


def on_the_sheet(run):
    """The failure's section of docs/service/service-sheet.md gives the log's last lines and what changed."""
    status = run.statuses()[-1]
    section = service_sheet.section_of(status)
    check(section and service_sheet.row_of(status), "the service sheet has no section or row for %r" % status)
    if run.log_before is not None:
        lines = [re.sub(r"Application_\d{8}_\d{4}", "Application_<stamp>",
                        re.sub("^(%s|%s)" % (US_PREFIX, EU_PREFIX), "<date>", x)) for x in appended_lines(run)]
        printed = status.split(": ", 1)[-1]
        blocks = [[service_sheet.line_pattern(x.replace("<printed text>", printed)) for x in b] for b in section.logs]
        check(lines == [] if section.no_log else any(len(lines) >= len(b) and all(
            p.fullmatch(x) for p, x in zip(b, lines[-len(b):])) for b in blocks),
              "the log's last lines %r are not those of the sheet's %r" % (lines[-2:], section.heading))
        for line in (x for x in lines if x.startswith("FAIL - ")):
            check(service_sheet.fail_line(line), "the service sheet does not explain %r" % line)
    got = state(run)
    for key, (name, words) in SHEET_WORDS.items():
        check(words.get(got[key], got[key]) in section.changed.get(name, []), "the sheet's %r says %s: %s, the run "
              "left %s" % (section.heading, name, " or ".join(section.changed.get(name, ["nothing"])), got[key]))


def names_its_build(run, program):
    """The console's first line names the build, as the build tree has it."""
    first = run.record("stderr.log").split("\n", 1)[0]
    text = os.path.join(os.path.dirname(os.path.abspath(program)), "version.txt")
    want = "vtx-update " + (open(text).read().strip() if os.path.exists(text) else "")
    check(first == want if os.path.exists(text) else first.startswith(want), "first console line %r" % first)


SCENARIOS = {}


def add(name, doc, expect, **kw):
    SCENARIOS[name] = Scenario(name, doc, expect=expect, **kw)


RUNTIME = runtime_library()
FONTS = put("/media/usb/jfonts.tgz", package(("jfonts/ipag.ttf", b"stand-in font\n")))
EXTRAS = both(put("/media/usb/update/zip", b"auxiliary data\n"), FONTS)
EXTRAS_LOG = ["P auxillary files copied"] + DONE_LOG[1:-1] + ["P Copying /media/usb/jfonts.tgz to /home/vtx",
                                                              "P Application started"]
WITH_EXTRAS = dict(DONE, zip="complete", fonts="unpacked")

add("happy_path", "no auxiliary file, no font package, current runtime link", outcome(SUCCESS, DONE_LOG, DONE))
add("happy_path_extras", "auxiliary file and font package on the stick", outcome(SUCCESS, EXTRAS_LOG, WITH_EXTRAS),
    setup=EXTRAS)
add("extras_installed_before", "auxiliary file and font package already on the instrument: not copied again",
    outcome(SUCCESS, ["P zip already copied"] + DONE_LOG[1:], dict(DONE, zip="unchanged", fonts="unchanged")),
    setup=both(EXTRAS, put("/home/vtx/Code/zip", b"older auxiliary data\n"), put("/home/vtx/jfonts.tgz", b"before")))
add("day_first_prefix", "the log prefix follows the date-format setting",
    outcome(SUCCESS, DONE_LOG, DONE, prefix=EU_PREFIX),
    setup=put("/home/vtx/Code/settings.vtx", "Language = EN\r\nDateFormat = EU\r\n"))
add("german_failure_text", "status texts follow the language setting",
    outcome("Datenträgerfehler... (08)/home/vtx/Code/", None, FRESH, first="Kopiere Daten..."),
    setup=both(put("/home/vtx/Code/settings.vtx", "Language = DE\r\nDateFormat = EU\r\n"), gone(LOG)))
add("special_command_1", "the reduced update: no log, no auxiliary file, no fonts",
    outcome(SUCCESS, None, INSTALLED), setup=both(EXTRAS, gone(LOG)), args=["1", "1"])


def os_updated(run):
    check("Disk error... (17)" in run.statuses(), "code 17 was not shown during the OS update")
    check(os.readlink(run.path(RUNTIME_LINK)) == "/usr/lib/i386-linux-gnu/libstdc++.so.6.0.22"
          and run.read(RUNTIME_LINK + ".0.22") == RUNTIME, "the runtime in the root image was not replaced")


def os_update(*more):
    return outcome(SUCCESS, OS_UPDATE + ["remounted OS", "copied prerequisites to OS", "link changed"] + INSTALL
                   + ["P Application started"], dict(DONE, runtime="replaced"), OS_COMMANDS + ["reboot"],
                   more=both(os_updated, *more))


RUNTIME_ON_STICK = put("/media/usb/update/libstdc++.so.6.0.22", RUNTIME)
add("relative_link", "a relative runtime link is wrong: the OS is updated", os_update(),
    layout=["--link", "relative"], setup=RUNTIME_ON_STICK)
add("wrong_link", "a link to another runtime: the OS is updated; the bar stays empty until the end",
    os_update(lambda run: bar_is(run, "empty", "screen-during.png"), lambda run: bar_is(run, "full")),
    layout=["--link", "wrong"],
    setup=both(RUNTIME_ON_STICK, lambda run: run.record("privileged.screenshot", OS_COMMANDS[0] + "\n")))

# ---- failures: each leaves the program on its screen with a full bar, and reboots nothing

# An application dated after 2038: backed up under that date, but taken for absent on the 32-bit PC.
STAMP_2040 = "/home/vtx/Code/Old/Application_01022040_1200"
add("application_dated_2040", "the application's date lies beyond a 32-bit time_t",
    outcome("Disk error... (01)", CURRENT, dict(FRESH, application="none")) if I386 else
    outcome(SUCCESS, [x.replace(BACKUP, STAMP_2040) for x in DONE_LOG], dict(DONE, backup="none"), also=[STAMP_2040],
            more=lambda run: check(run.files().get(STAMP_2040) == run.before[APPLICATION], "no backup of 2040")),
    setup=lambda run: subprocess.run(["touch", "-d", "2040-02-01 12:00", run.path(APPLICATION)], check=True))
add("code_03", "the backup folder cannot be created (no inode left on the disk)",
    outcome("Disk error... (03)", CURRENT, FRESH,
            more=lambda run: check(not os.path.isdir(run.path("/home/vtx/Code/Old")), "a backup folder was made")),
    inside="small_disk /home/vtx/Code 64m no-inodes\n")
add("code_04", "a file in the backup folder's place: the backup copy fails",
    outcome("Disk error... (04)", CURRENT, FRESH), setup=put("/home/vtx/Code/Old", b"not a folder"))
add("code_07", "the new-build folder holds a hidden file, which its removal does not match",
    outcome("Disk error... (07)", CURRENT + BACKED, dict(BACKED_UP, application="new"), also=["/home/vtx/Code/NEW/"],
            more=lambda run: check(os.listdir(run.path("/home/vtx/Code/NEW")) == [".hidden"], "NEW holds more")),
    setup=put("/home/vtx/Code/NEW/.hidden", b"left by the build tool\n"))
add("code_08", "no log file directly in the code folder", outcome("Disk error... (08)/home/vtx/Code/", None, FRESH),
    setup=both(gone(LOG), put("/home/vtx/Code/logs/deeper.log", b"not directly in the code folder\r\n")))


def cannot_start(run):
    """The loader refuses the program, whose C++ runtime is behind the missing link; nothing changes."""
    check(run.session() == ["exited", "127"] and "libstdc++.so.6: cannot open shared object file"
          in run.record("stderr.log") and run.files() == run.before, "the program started: %s" % run.session())


if I386:  # elsewhere the program starts and shows 16: user_e2e's code_16
    add("code_16", "the runtime link cannot be read", cannot_start, layout=["--link", "missing"], killed=True)
add("code_18_no_runtime_on_stick", "wrong link and no replacement runtime on the stick",
    outcome("Disk error... (18)", OS_UPDATE[:4] + ["FAIL - no prerequisites on USB"], FRESH),
    layout=["--link", "wrong"])
add("code_18_mount_refused", "the root image cannot be remounted",
    outcome("Disk error... (18)", OS_UPDATE + ["FAIL - cannot mount OS"], FRESH, OS_COMMANDS[:1]),
    layout=["--link", "relative"],
    setup=both(RUNTIME_ON_STICK, lambda run: run.record("privileged.fail", OS_COMMANDS[0] + "\n")))
add("font_unpack_error", "the unpacking prints a complaint",
    outcome("Could not copy file(s): gzip: stdin: not in gzip format",
            FONT_HEAD + ["P Unpack error : gzip: stdin: not in gzip format"], dict(INSTALLED, fonts="complete")),
    setup=FONTS, path_stubs={"tar": "printf 'gzip: stdin: not in gzip format'\nexit 2\n"})
