"""Power cuts at each step of a full update (with the operating-system update), checked against the
table of docs/service/power-cuts.md (`powerloss_e2e.py --table` prints it); the powerloss_everywhere runs cut
at every operation on disks that lose what was not flushed and check every crash state."""

import os
import sys

TOOLS = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "tools")
sys.path[:0] = [TOOLS, os.path.join(TOOLS, "lossyfs")]  # also when run alone, for --table
import harness.instrument as e2e  # noqa: E402
from crashstates import PAGE, Journal  # noqa: E402
from harness.checks import appended_lines, check, files_as, outcome  # noqa: E402
from harness.instrument import (APPLICATION, BACKUP, DONE, FRESH, LOG, OS_COMMANDS, PARTIAL,  # noqa: E402
                                RUNTIME_ON_STICK, SUCCESS)
from harness.sandbox import both, once_shown, package, put  # noqa: E402
from harness.scenarios import add  # noqa: E402

# A stand-in for a command: its Nth call kills the program before, halfway through or after its work.
CUT = r"""n=$(( $(cat "$ROOT/record/{tool}.count" 2>/dev/null || echo 0) + 1 )); echo $n > "$ROOT/record/{tool}.count"
[ $n -ne {nth} ] && exec {real} "$@"
case {mode} in
  half) dst=$2; [ -d "$dst" ] && dst=$dst/$(basename "$1"); head -c $(( $(stat -c %s "$1") / 2 )) "$1" > "$dst" ;;
  after) {real} "$@" ;;
esac
kill -KILL "$(cat "$ROOT/record/pid")"; exit 137
"""
FULL = both(put("/media/usb/update/zip", b"auxiliary data\n" * 1000), put("/media/usb/jfonts.tgz", package(
    ("jfonts/ipag.ttf", b"stand-in font\n"))))


def cut(tool, nth, mode):
    real = {"cp": "/bin/cp", "tar": "/bin/tar", "ldd": "/usr/bin/ldd"}[tool]
    return dict(setup=FULL, path_stubs={tool: CUT.format(tool=tool, nth=nth, mode=mode, real=real)})


def before_privileged(command, os_update=True):
    """The stand-in privileged tool cuts the power before it would run the command."""
    runtime = put("/media/usb/update/libstdc++.so.6.0.22", e2e.RUNTIME + bytes(38000))
    return dict(layout=["--link", "wrong"] if os_update else [],
                setup=both(runtime if os_update else FULL, lambda run: run.record("privileged.kill", command + "\n")))


# Cut from outside as soon as the first status is shown: the procedure then pauses for 2 s.
AT_FIRST_STATUS = dict(setup=FULL, inside=once_shown("Copying files", 'kill -KILL "$(cat "$ROOT/record/pid")"'))
BACKED_UP, INSTALLED = (dict(s, zip="complete") for s in (e2e.BACKED_UP, e2e.INSTALLED))  # with the auxiliary file
REPEAT = "Repeat the update: the next copy into that folder replaces the partial copy."

# (name, doc, how the power is cut, expected state, what it means for service)
POINTS = [
    ("start", "during the first status pause", AT_FIRST_STATUS, FRESH, "Nothing changed. Repeat the update."),
    ("auxiliary_copy", "halfway through copying the auxiliary file", cut("cp", 1, "half"),
     dict(FRESH, partial_copy="/home/vtx/Code/" + PARTIAL), "No `Code/zip` yet, only its partial copy. " + REPEAT),
    ("os_update_copy", "OS update: before the runtime is copied into the root image", before_privileged(OS_COMMANDS[1]),
     FRESH, "The root image was remounted writable only; the old runtime still works. Repeat the update."),
    ("os_update_link", "OS update: before the runtime link is changed", before_privileged(OS_COMMANDS[2]), FRESH,
     "The new runtime is in the root image, the link still points at the old one. Repeat the update."),
    ("backup_copy", "halfway through the backup copy", cut("cp", 2, "half"),
     dict(FRESH, zip="complete", partial_copy="/home/vtx/Code/Old/" + PARTIAL),
     "No backup yet, only its partial copy; the running build is intact. " + REPEAT),
    ("library_check", "while the new build's libraries are checked", cut("ldd", 1, "before"), BACKED_UP,
     "Backup made, nothing installed. Repeat the update."),
    ("install_copy", "halfway through copying the new build", cut("cp", 3, "half"),
     dict(BACKED_UP, partial_copy="/home/vtx/Code/" + PARTIAL),
     "The old build is intact and starts; the new build is still in `Code/NEW`. " + REPEAT),
    ("install_done", "right after the new build was copied, before it takes the application's name",
     cut("cp", 3, "after"), dict(BACKED_UP, partial_copy="/home/vtx/Code/" + PARTIAL),
     "The old build is intact and starts; the new build lies whole under the partial name. " + REPEAT),
    ("font_copy", "halfway through copying the font package", cut("cp", 4, "half"),
     dict(INSTALLED, partial_copy="/home/vtx/" + PARTIAL),
     "New build installed; no font package yet, only its partial copy (the next font copy replaces it). Install "
     "the fonts by hand: copy `jfonts.tgz` from the stick to `/home/vtx`, then `cd /home/vtx; tar xzf jfonts.tgz`."),
    ("font_unpack", "before the font package is unpacked", cut("tar", 1, "before"), dict(INSTALLED, fonts="complete"),
     "New build installed, fonts not unpacked, and later updates skip them: run `cd /home/vtx; tar xzf jfonts.tgz`."),
    ("log_copy", "halfway through copying the log to the stick", cut("cp", 5, "half"),
     dict(INSTALLED, fonts="unpacked", partial_copy="/media/usb/" + PARTIAL),
     "Everything installed; the stick holds only a partial copy of the log (the next log copy replaces it), the "
     "instrument's log is whole: copy it to the stick by hand."),
    ("reboot", "when the reboot is asked for", before_privileged("reboot", os_update=False),
     dict(INSTALLED, fonts="unpacked", stick_log="complete"), "Everything done; the new build starts at power-up."),
]


def powered_off(expected, also):
    def expect(run):
        files_as(run, expected, also)
        appended_lines(run)  # the log keeps its old content and whole lines
    return expect


for _name, _doc, _how, _expected, _meaning in POINTS:
    # The OS update may leave the new runtime in the root image beside the old one.
    _also = ["/mnt/root-ro/"] if _how.get("layout") else []
    add("powerloss_" + _name, "power cut " + _doc, powered_off(_expected, _also), killed=True, **_how)


# ---- every operation of a full update as a cut point, on disks that lose what was not flushed
# (tools/lossyfs): each crash state at each cut point must keep the table's promises.

NEW = "/home/vtx/Code/NEW/"
STICK_LOG = "/media/usb/instrument.log"
# Builds without their execute bit (copied from a FAT stick), an older log of that name on the stick,
# an instrument's log whose first line of this run crosses a page boundary.
LOSSY = both(FULL, RUNTIME_ON_STICK, put(STICK_LOG, b"older log\r\n"), put(LOG, b"line of an earlier run\r\n" * 170), *(
    put(NEW + name, open(build, "rb").read(), 0o644) for name, build in (("Application", "/bin/false"),
                                                                         ("Application_Chinese", "/bin/echo"))))
POWER_LOSS_DOC = os.path.join(os.path.dirname(TOOLS), "docs", "maintainer", "crash-model.md")


def broken(tree, was, build, log_at_end, last):
    """The promises one crash state breaks; last: the state is one of the reboot request's."""
    app, old, new, log = tree.get(APPLICATION), was[APPLICATION], was[NEW + build].data, tree[LOG].data

    def whole(path, source, mode=None):
        return path not in tree or tree[path].data == was[source].data and mode in (None, tree[path].mode)
    return [promise for promise, kept in [
        ("Application is the old or the new build, whole, with the old file's mode, owner and group",
         app is not None and app.data in (old.data, new) and app[1:4] == old[1:4]),
        ("the new build is in Application or whole in Code/NEW",
         new in (getattr(tree.get(path), "data", None) for path in (APPLICATION, NEW + build))),
        ("the backup is whole (with the running build's mode) or absent", whole(BACKUP, APPLICATION, old.mode)),
        ("Code/zip is whole or absent", whole("/home/vtx/Code/zip", "/media/usb/update/zip")),
        ("/home/vtx/jfonts.tgz is whole or absent", whole("/home/vtx/jfonts.tgz", "/media/usb/jfonts.tgz")),
        ("the stick's log is the older one, a whole copy of the instrument's log, or absent",
         STICK_LOG not in tree or tree[STICK_LOG].data in (was[STICK_LOG].data, log)),
        # Written back a page at a time, the log may end inside a line only at a page boundary.
        ("the instrument's log keeps its old content and holds this run's lines, whole but the last, "
         "cut short only at a page boundary",
         log.startswith(was[LOG].data) and log_at_end.startswith(log)
         and (log[len(was[LOG].data):][-2:] in (b"", b"\r\n") or len(log) % PAGE == 0)),
        ("when the reboot is asked for, Code/NEW is gone, the fonts unpacked and the stick's log whole",
         not last or NEW[:-1] not in tree and [getattr(tree.get(p), "data", None) for p in (
             "/home/vtx/jfonts/ipag.ttf", STICK_LOG)] == [b"stand-in font\n", log_at_end]),
    ] if not kept]


def crash_states(journal, build, log_at_end):
    """(cut, label, tree, promises broken) of every crash state, cut point by cut point."""
    was, last = journal.initial_tree(), len(journal.events) - 1  # nothing touches the disks after the reboot request
    for cut in range(len(journal.events)):
        for label, tree in journal.states(cut):
            yield cut, label, tree, broken(tree, was, build, log_at_end, cut == last)


# Each flush the update makes, by what it flushes: the promise that breaks without it.
FLUSHES = [
    ("the partial copy before its rename", lambda e: e["op"] == "fsync" and e["path"].endswith("/" + PARTIAL),
     "is whole or absent"),
    ("the folder after the rename", lambda e: e["op"] == "fsyncdir", "the new build is in Application"),
    ("the instrument's log before its copy", lambda e: e["op"] == "fsync" and e["path"] == LOG[len("/home/vtx"):],
     "the stick's log is the older one"),
    ("`sync` before the reboot", lambda e: e["op"] == "sync", "when the reboot is asked for"),
]


def flush_table(journal, build, log_at_end):
    """Each kind of flush taken out in turn: the first crash state that then breaks a promise, as a table."""
    rows = ["| flush taken out | first broken at | state | promises broken |", "|---|---|---|---|"]
    for kind, which, promise in FLUSHES:
        dropped = [i for i in journal.flushes() if which(journal.events[i])]
        lacking = journal.without(dropped)
        first = next(((cut, label, promises) for cut, label, _t, promises in crash_states(lacking, build, log_at_end)
                      if promises), None)
        check(dropped and first and any(promise in p for p in first[2]), "without %s (%d flushes) the first broken "
              "state does not break the promise \"%s...\": %s" % (kind, len(dropped), promise, first))
        cut, label, promises = first
        # Without the operation's number, which depends on how many writes the copies took.
        where = lacking.describe(cut, numbered=False)
        where = "the reboot request (after %s)" % where if cut == len(lacking.events) - 1 else where
        rows.append("| %s | %s | %s | %s |" % (kind, where, label, "; ".join(promises)))
    check(sum(len([i for i in journal.flushes() if f[1](journal.events[i])]) for f in FLUSHES) == len(
        journal.flushes()), "a flush of no kind the table knows")
    return "\n".join(rows)


def in_doc(table, begin, end="<!-- end of flush table -->"):
    """Checks that the crash model (POWER_LOSS_DOC) holds the table between its markers; VTX_WRITE_DOCS=1 writes it."""
    with open(POWER_LOSS_DOC, encoding="utf-8") as f:
        doc = f.read()
    head, rest = doc.split(begin + "\n", 1)
    block, tail = rest.split(end, 1)
    if os.environ.get("VTX_WRITE_DOCS") == "1":
        with open(POWER_LOSS_DOC, "w", encoding="utf-8") as f:
            f.write(head + begin + "\n" + table + "\n" + end + tail)
    else:
        check(block == table + "\n", "docs/maintainer/crash-model.md's flush table differs from the run's "
              "(VTX_WRITE_DOCS=1 writes it):\n" + table)


def every_cut_point(build, table=False):
    def expect(run):
        journal = Journal(os.path.join(run.root, "record", "lossy"))
        log_at_end, failures, count, cut_lines = run.read(LOG), {}, 0, 0
        for cut, label, tree, promises in crash_states(journal, build, log_at_end):
            count += 1
            cut_lines += not tree[LOG].data.endswith(b"\r\n")
            for p in promises:
                failures.setdefault(p, []).append("cut point %s, state %s" % (journal.describe(cut), label))
        check(not failures, "broken promises, each with its first crash state:\n" + "\n".join(
            "%s: broken in %d states, first at %s" % (p, len(where), where[0]) for p, where in failures.items()))
        print("%s: %d cut points, %d crash states checked, %d with the log's last line cut at a page boundary"
              % (build, len(journal.events), count, cut_lines))
        if table:
            in_doc(flush_table(journal, build, log_at_end),
                   "<!-- flush table: made by the powerloss_everywhere run -->")
    return expect


for _build, _layout in (("Application", []), ("Application_Chinese", ["--chinese"])):
    add("powerloss_everywhere" + _build[len("Application"):].lower(), "power cut at every file-system operation of "
        "a full update (%s), every crash state" % _build,
        outcome(SUCCESS, None, dict(DONE, application="chinese" if _layout else "new", zip="complete",
                                    fonts="unpacked", stick_log="complete", runtime="replaced"),
                OS_COMMANDS + ["reboot"], more=every_cut_point(_build, table=not _layout)),
        layout=["--link", "wrong"] + _layout, sandbox=["--lossy"], setup=LOSSY)


def table():
    out = ["| power cut | application | backup | auxiliary file | font package | log on the stick | `Code/NEW` | "
           "partial copy left | what to do |", "|" + "---|" * 9]
    for _n, doc, _h, st, meaning in POINTS:
        partial = " ".join("`%s`" % p for p in st["partial_copy"].split()) if st["partial_copy"] != "none" else "none"
        cells = [doc] + [st[k] for k in ("application", "backup", "zip", "fonts", "stick_log", "new_folder")]
        out.append("| %s |" % " | ".join(cells + [partial, meaning]))
    return "\n".join(out)


if __name__ == "__main__" and "--table" in sys.argv:
    print(table())
