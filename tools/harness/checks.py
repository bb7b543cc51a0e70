"""What a run left, held against what a scenario expects: the state a service engineer would find,
the log's appended lines, the screen's bar, the pauses, the privileged commands, the service sheet."""

import hashlib
import os
import re
import stat
import subprocess

import service_sheet

from . import sandbox
from .console import CONSOLE, stamped_update_lines
from .instrument import (APPLICATION, BACKUP, CODE, COPY_FOLDERS, EU_PREFIX, LOG, NEW, PARTIAL, RUNTIME_LINK,
                         STATE_FILES, STICK, SUCCESS, US_PREFIX)


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
    lines = stamped_update_lines(run.record("stderr.log"))
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
    want = CONSOLE["kBuild"] + (open(text).read().strip() if os.path.exists(text) else "")
    check(first == want if os.path.exists(text) else first.startswith(want), "first console line %r" % first)


def does_not_start(expect):
    """Marks a scenario's expectation as one of a program the loader refuses: the runner then looks
    for no status, pause or build line."""
    expect.starts = False
    return expect


@does_not_start
def cannot_start(run):
    """The loader refuses the program, whose C++ runtime is behind the missing link; nothing changes."""
    check(run.session() == ["exited", "127"] and "libstdc++.so.6: cannot open shared object file"
          in run.record("stderr.log") and run.files() == run.before, "the program started: %s" % run.session())


# ---- the whole simulated instrument, before and after a run: only the update's own files change

ROOT_RUNTIME = (RUNTIME_LINK, RUNTIME_LINK + ".0.22")


def listing(run):
    """(kind and mode, owner, group, content) of every entry the sandbox root holds for the instrument."""
    out = {}
    for area, sub in sandbox.IN_ROOT:
        base = os.path.join(run.root, sub)
        for folder, dirs, names in os.walk(base):
            for p in [os.path.join(folder, n) for n in dirs + names] + ([folder] if folder != base else []):
                st, key = os.lstat(p), area + os.path.relpath(p, base)
                if stat.S_ISCHR(st.st_mode) and st.st_rdev == 0:
                    continue  # the overlay's mark of a removed entry
                data = (os.readlink(p) if stat.S_ISLNK(st.st_mode) else open(p, "rb").read()
                        if stat.S_ISREG(st.st_mode) else None)
                if isinstance(data, bytes) and not key.endswith(".log"):
                    data = hashlib.sha256(data).hexdigest()[:16]
                out[key] = (stat.filemode(st.st_mode), st.st_uid, st.st_gid, data)
    return out


def own_change(path, was, now, before, os_update):
    """Whether the update may leave path as now: its own files only, each of a kind it makes."""
    regular = now is not None and now[0].startswith("-")
    if path == APPLICATION:  # the old build or a file of the new-build folder, whole
        return regular and now[3] in {v[3] for p, v in before.items() if p == path or p.startswith(NEW + "/")}
    if path == NEW or path.startswith(NEW + "/"):
        return now is None
    if path.startswith(CODE + "/Old"):
        return (was is None or was[0].startswith("-")) and (regular or now[0].startswith("d"))
    if path.startswith(CODE + "/") and path.endswith(".log") and path.count("/") == 4:
        return regular and was is not None and was[0].startswith("-") and now[3].startswith(was[3])
    if path in (CODE + "/release.manifest", CODE + "/release.manifest.minisig"):
        return regular
    if path in (CODE + "/zip", "/home/vtx/jfonts.tgz"):
        return was is None and (now is None or regular)
    if path == "/home/vtx/jfonts" or path.startswith("/home/vtx/jfonts/"):
        return was is None and (regular or now[0].startswith("d"))
    if path.startswith(STICK + "/") and path.endswith(".log") and path.count("/") == 3:
        return regular
    return os_update and path in ROOT_RUNTIME
