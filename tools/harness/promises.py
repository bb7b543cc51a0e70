"""The promises a power cut at any moment of a full update keeps, checked on every crash state the
crash model (tools/lossyfs/crashstates.py) builds from a run's journal: one list, which the
end-to-end runs on lossy disks and any other checker of cut states read."""

import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "lossyfs"))
from crashstates import PAGE, Journal  # noqa: E402

from .checks import check  # noqa: E402
from .instrument import APPLICATION, BACKUP, LOG, PARTIAL  # noqa: E402

NEW = "/home/vtx/Code/NEW/"
STICK_LOG = "/media/usb/instrument.log"
POWER_LOSS_DOC = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "docs",
                              "maintainer", "crash-model.md")


def broken(tree, was, build, log_at_end, last):
    """The promises one crash state breaks; last: the state is one of the reboot request's."""
    app, old, new, log = tree.get(APPLICATION), was[APPLICATION], was[NEW + build].data, tree[LOG].data

    # The log's end as zero bytes: its new size reached the disk ahead of the data of its last write.
    kept = log.rstrip(b"\0")
    unwritten = log_at_end[len(kept):len(log)]

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
         kept.startswith(was[LOG].data) and log_at_end.startswith(kept)
         and (kept[len(was[LOG].data):][-2:] in (b"", b"\r\n") or len(kept) % PAGE == 0)),
        ("zero bytes end the instrument's log only in place of one line, the last",
         b"\r\n" not in unwritten[:-2]),
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
    ("the instrument's log after each line", lambda e: e["op"] == "fsync" and e["path"] == LOG[len("/home/vtx"):],
     "zero bytes end the instrument's log"),
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
