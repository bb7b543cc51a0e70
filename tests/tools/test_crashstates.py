#!/usr/bin/python3
"""The crash-state checker (tools/lossyfs/crashstates.py) on small journals written here the way
lossyfs records them: what each flush protects, what the stick's FAT loses, torn write-back, and
the combination limit."""

import hashlib
import json
import os
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools", "lossyfs"))
import crashstates  # noqa: E402
from crashstates import PAGE, Journal, TooManyStates  # noqa: E402

OLD, NEW = b"old build\n", b"new build\n" * 1000


class Recorder:
    """A journal as lossyfs writes it, for one area; each method is one recorded operation."""

    def __init__(self, folder, area="home"):
        self.folder, self.area, self.lines, self.ids, self.files = folder, area, [], {}, {}
        os.makedirs(os.path.join(folder, "blobs"), exist_ok=True)
        self.have("/", "dir")

    def blob(self, data):
        digest = hashlib.sha256(data).hexdigest()
        with open(os.path.join(self.folder, "blobs", digest), "wb") as f:
            f.write(data)
        return digest

    def log(self, op, path, **fields):
        self.lines.append(dict(fields, op=op, area=self.area, path=path))

    def new_id(self, path):
        self.ids[path] = "%s:%d" % (self.area, len(self.ids) + 1)
        return self.ids[path]

    def have(self, path, kind, data=None):
        fields = dict(type=kind, mode=0o644, uid=0, gid=0, dir=self.ids.get(os.path.dirname(path)))
        if kind == "file":
            fields["blob"], self.files[path] = self.blob(data), data
        self.log("have", path, id=self.new_id(path), **fields)

    def create(self, path):
        self.files[path] = b""
        self.log("create", path, dir=self.ids[os.path.dirname(path)], name=os.path.basename(path), type="file",
                 mode=0o644, uid=0, gid=0, id=self.new_id(path))

    def write(self, path, data, offset=None):
        offset = len(self.files[path]) if offset is None else offset
        self.files[path] = self.files[path][:offset] + data + self.files[path][offset + len(data):]
        self.log("write", path, id=self.ids[path], offset=offset, size=len(data), blob=self.blob(data))

    def fsync(self, path):
        self.log("fsync", path, id=self.ids[path], blob=self.blob(self.files[path]))

    def fsyncdir(self, path):
        self.log("fsyncdir", path, id=self.ids[path])

    def rename(self, old, new):
        self.log("rename", new, dir=self.ids[os.path.dirname(old)], name=os.path.basename(old),
                 to_dir=self.ids[os.path.dirname(new)], to_name=os.path.basename(new))
        self.ids[new], self.files[new] = self.ids.pop(old), self.files.pop(old)

    def unlink(self, path):
        self.log("unlink", path, dir=self.ids[os.path.dirname(path)], name=os.path.basename(path))
        del self.ids[path], self.files[path]

    def journal(self):
        with open(os.path.join(self.folder, "journal"), "w", encoding="utf-8") as f:
            f.writelines(json.dumps(line) + "\n" for line in self.lines)
        return Journal(self.folder)


def install(folder):
    """The update's install on the instrument's disk (/home/vtx): the new build copied beside the
    application under the partial name, flushed, renamed over it, the folder flushed, then removed
    from NEW and NEW flushed; a log line appended and flushed."""
    r = Recorder(folder)
    for path, kind, data in [("/Code", "dir", None), ("/Code/Application", "file", OLD), ("/Code/NEW", "dir", None),
                             ("/Code/NEW/Application", "file", NEW), ("/Code/instrument.log", "file", b"old\r\n")]:
        r.have(path, kind, data)
    partial = "/Code/.vtx-partial-copy"
    r.create(partial)
    r.write(partial, NEW)
    r.fsync(partial)
    r.rename(partial, "/Code/Application")
    r.fsyncdir("/Code")
    r.unlink("/Code/NEW/Application")
    r.fsyncdir("/Code/NEW")
    r.write("/Code/instrument.log", b"New version copied\r\n")
    r.fsync("/Code/instrument.log")
    return r.journal()


def broken(tree):
    """The install's promises a crash state breaks."""
    app = tree["/home/vtx/Code/Application"].data
    return [promise for promise, kept in [
        ("Application old or new, whole", app in (OLD, NEW)),
        ("the new build in Application or in NEW", NEW in (app, getattr(tree.get("/home/vtx/Code/NEW/Application"),
                                                                        "data", None))),
        # A line whose flush did not come may be zero bytes: its new size reached the disk alone.
        ("the log's old content and whole lines", tree["/home/vtx/Code/instrument.log"].data in (
            b"old\r\n", b"old\r\nNew version copied\r\n", b"old\r\n" + bytes(20))),
    ] if not kept]


def first_broken(journal):
    return next(((journal.describe(cut), label, promises) for cut in range(len(journal.events))
                 for label, tree in journal.states(cut) for promises in [broken(tree)] if promises), None)


class CrashStates(unittest.TestCase):
    def setUp(self):
        self.tmp = tempfile.TemporaryDirectory()
        self.folder = self.tmp.name

    def tearDown(self):
        self.tmp.cleanup()

    def test_every_flush_is_needed_by_a_promise(self):
        journal = install(self.folder)
        self.assertIsNone(first_broken(journal))
        # Each flush taken out in turn: the first state that breaks a promise, and the promise.
        expected = {
            "#2 fsync /home/vtx/Code/.vtx-partial-copy":
                ("#3 rename /home/vtx/Code/Application", "b", ["Application old or new, whole"]),
            "#4 fsyncdir /home/vtx/Code": ("#5 unlink /home/vtx/Code/NEW/Application",
                                           "c /home/vtx/Code 0/2, /home/vtx/Code/NEW 1/1",
                                           ["the new build in Application or in NEW"]),
            # Without it the unlink stays open: a state keeps the new build in both places, breaking nothing.
            "#6 fsyncdir /home/vtx/Code/NEW": None,
        }
        for flush in journal.flushes()[:3]:
            got = first_broken(journal.without([flush]))
            self.assertEqual(got and got[:3], expected[journal.describe(flush)], journal.describe(flush))

    def test_unflushed_data_reaches_the_disk_whole_or_a_page_at_a_time(self):
        r = Recorder(self.folder)
        r.have("/log", "file", b"x" * (PAGE - 2))
        for line in (b"first line\r\n", b"second line\r\n" * 400):
            r.write("/log", line)
        journal = r.journal()
        written = r.files["/log"]
        states = dict(journal.states(len(journal.events) - 1))
        self.assertEqual(states["a"]["/home/vtx/log"].data, b"x" * (PAGE - 2))
        self.assertEqual(states["a+data"]["/home/vtx/log"].data, written)
        torn = {label: tree["/home/vtx/log"].data for label, tree in states.items() if "torn" in label}
        self.assertEqual(torn, {"b+torn /home/vtx/log@%d" % n: written[:n] for n in (PAGE, 2 * PAGE)})
        # A line cut at the first boundary: "every line is one write" does not keep lines whole.
        self.assertFalse(torn["b+torn /home/vtx/log@%d" % PAGE].endswith(b"\r\n"))
        # The new size on the disk ahead of the data: zero bytes where the lines were.
        self.assertEqual(states["b+zeros /home/vtx/log"]["/home/vtx/log"].data,
                         b"x" * (PAGE - 2) + bytes(len(written) - PAGE + 2))

    def test_a_fat_stick_may_lose_both_names_of_a_rename(self):
        names = {}
        for area in ("home", "usb"):
            r = Recorder(os.path.join(self.folder, area), area)
            r.have("/instrument.log", "file", b"older log\r\n")
            r.create("/.vtx-partial-copy")
            r.write("/.vtx-partial-copy", b"log\r\n")
            r.fsync("/.vtx-partial-copy")
            r.rename("/.vtx-partial-copy", "/instrument.log")
            journal = r.journal()
            mount = crashstates.AREAS[area]
            names[area] = {tuple(sorted(p[len(mount):] for p in tree if p != mount))
                           for _l, tree in journal.states(len(journal.events) - 1)}
        # In a journalling folder the rename is atomic and its changes keep their order.
        self.assertEqual(names["home"], {("/.vtx-partial-copy", "/instrument.log"), ("/instrument.log",)})
        # On FAT the older log may be gone with the new one not yet in its place.
        self.assertEqual(names["usb"], names["home"] | {("/.vtx-partial-copy",), ()})

    def test_over_the_combination_limit_the_run_stops(self):
        r = Recorder(self.folder)
        folders = 13  # 2 ** 13 combinations of one open change per folder
        for n in range(folders):
            r.have("/d%d" % n, "dir")
        for n in range(folders):
            r.create("/d%d/f" % n)
        journal = r.journal()
        self.assertGreater(2 ** folders, crashstates.MAX_COMBINATIONS)
        # Up to the limit, every combination is a state (a and b among them).
        self.assertEqual(len(journal.states(folders - 2)), 2 ** (folders - 1))
        with self.assertRaisesRegex(TooManyStates, "8192 combinations"):
            journal.states(folders - 1)


if __name__ == "__main__":
    unittest.main()
