#!/usr/bin/python3
"""Crash states: what the disks hold after a power cut, built from a lossyfs journal.

    crashstates.py JOURNAL                              cut points and crash states, counted
    crashstates.py JOURNAL --cut N [--state LABEL --out DIR]
                                                        the labels of a cut point's states; with
                                                        --state, writes one as a plain folder tree

A cut point is the moment right after one recorded operation. What survives a cut, on the file
systems the areas stand for (docs/maintainer/crash-model.md, "What the disks are assumed to be"):
- a file's data as of its last fsync (or sync) for certain; data written since may have reached
  the disk whole, in part (written back a page at a time: the pages before a 4 KiB boundary) or
  not at all (a new file is then empty, an old one keeps the data it had before the run);
- a name change (create, mkdir, symlink, link, unlink, rmdir, rename, chmod, chown) for certain
  once its folder was flushed (fsync of the folder; a rename counts in the folder it lands in) or
  a sync came; a change still open may or may not have reached the disk. On a journalling file
  system a folder's changes reach the disk in the order they were made and a rename is one
  change; on a FAT stick (no journal) they reach it in any order, and a rename over a file is two
  changes: the old file's removal and the new name.
The states built at each cut point:
  a         none of the open name changes: only what was made durable;
  b         all of them, in the order they were made (data still only as far as flushed: the
            state in which a rename is ahead of the data behind it);
  c         per folder, the open changes that may have reached the disk (on a journalling file
            system a prefix of them, "2/3"; on FAT any subset, "+-+", one sign a change), every
            combination over the folders;
  a+data, b+data
            a and b with every file's data as written, none of it lost;
  b+torn P@N
            b with the file P written back up to the page boundary at byte N (its pages before N
            as written, the rest as flushed), the other files as flushed;
  b+zeros P
            b with the file P grown to its written size but its data as flushed: the bytes past
            the flushed end read as zero bytes, as ext4 leaves a file whose new size its journal
            committed ahead of the data (the other files as flushed).
Equal states of one cut point are built once. A cut point with more than MAX_COMBINATIONS
combinations of open name changes stops the run (TooManyStates): building fewer would pass in
silence what was never checked.
"""

import argparse
import itertools
import json
import math
import os
import sys
from collections import namedtuple

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
from harness.sandbox import areas  # noqa: E402

NAME_OPS = {"create", "mkdir", "symlink", "link", "unlink", "rmdir", "rename", "chmod", "chown"}
FLUSH_OPS = {"fsync", "fsyncdir", "sync"}
MAX_COMBINATIONS = 4096
PAGE = 4096

# The mount point of each lossyfs area inside the instrument sandbox, and the file system it stands for.
AREAS = {area: path for path, (_sub, area, *_fs) in areas("lossy").items()}
FILE_SYSTEMS = {area: fs[0] for _path, (_sub, area, *fs) in areas("lossy").items()}

Entry = namedtuple("Entry", "type mode uid gid data")  # data: bytes of a file, target of a link


class TooManyStates(Exception):
    pass


class Journal:
    def __init__(self, folder, lines=None):
        """The journal in folder (or the given lines, its blobs still from folder)."""
        self.folder = folder
        if lines is None:
            with open(os.path.join(folder, "journal"), encoding="utf-8") as f:
                lines = [json.loads(line) for line in f]
        self.lines = lines
        self.initial = [e for e in lines if e["op"] == "have"]
        self.events = [e for e in lines if e["op"] != "have"]
        for number, e in enumerate(self.events):
            e.setdefault("number", number)  # as recorded: a journal without some events keeps the numbers
        self._blobs, self._written = {}, {}
        self._initial = {e["id"]: e["blob"] for e in self.initial if e["type"] == "file"}
        # Where each name change is made durable; each file's flushed data and its data changes, in order.
        self.names = [i for i, e in enumerate(self.events) if e["op"] in NAME_OPS]
        self.durable_at, self.flushed, self.changes = {}, {}, {}
        for i in self.names:
            e = self.events[i]
            folder = e.get("to_dir", e["dir"])
            self.durable_at[i] = next((j for j in range(i + 1, len(self.events)) if self._covers(self.events[j], e,
                                                                                                 folder)), None)
        # Each folder that has name changes, by its path and area, for the labels of the c states.
        self.folder_paths, self.folder_areas = {}, {}
        for i in self.names:
            e = self.events[i]
            folder = e.get("to_dir", e["dir"])
            self.folder_paths.setdefault(folder, AREAS[e["area"]] + os.path.dirname(e["path"]).rstrip("/"))
            self.folder_areas.setdefault(folder, e["area"])
        for j, e in enumerate(self.events):
            if e["op"] == "fsync":
                self.flushed.setdefault(e["id"], []).append((j, e["blob"]))
            elif e["op"] == "sync":
                for ident, blob in e["blobs"].items():
                    self.flushed.setdefault(ident, []).append((j, blob))
            elif e["op"] in ("write", "truncate"):
                self.changes.setdefault(e["id"], []).append(j)

    def without(self, dropped):
        """The journal with the events of the given indexes taken out (a flush the program left out, say)."""
        drop = {id(self.events[i]) for i in dropped}
        return Journal(self.folder, [e for e in self.lines if id(e) not in drop])

    @staticmethod
    def _covers(flush, change, folder):
        return (flush["op"] == "fsyncdir" and flush["id"] == folder) or (
            flush["op"] == "sync" and flush["area"] == change["area"])

    def blob(self, digest):
        if digest not in self._blobs:
            with open(os.path.join(self.folder, "blobs", digest), "rb") as f:
                self._blobs[digest] = f.read()
        return self._blobs[digest]

    def describe(self, cut, numbered=True):
        e = self.events[cut]
        return ("#%d " % e["number"] if numbered else "") + "%s %s%s" % (
            e["op"], AREAS[e["area"]], "" if e["path"] == "/" else e["path"])

    def open_changes(self, cut):
        """The name changes made up to the cut: (durable ones, open ones by folder)."""
        durable, by_folder = [], {}
        for i in self.names:
            if i > cut:
                break
            if self.durable_at[i] is not None and self.durable_at[i] <= cut:
                durable.append(i)
            else:
                e = self.events[i]
                by_folder.setdefault(e.get("to_dir", e["dir"]), []).append(i)
        return durable, by_folder

    def _steps(self, folder, changes):
        """A folder's open changes as the steps that reach the disk apart: (index, 1) a change,
        (index, 0) on FAT the removal of the file a rename replaces."""
        fat = FILE_SYSTEMS[self.folder_areas[folder]] == "fat"
        return [step for i in changes for step in ([(i, 0)] if fat and self.events[i]["op"] == "rename" else [])
                + [(i, 1)]]

    def _kept(self, folder, steps):
        """Every choice of the steps that may have reached the disk: (label, kept steps)."""
        if FILE_SYSTEMS[self.folder_areas[folder]] == "fat":
            for signs in itertools.product("-+", repeat=len(steps)):
                yield "".join(signs), [s for s, sign in zip(steps, signs) if sign == "+"]
        else:
            for n in range(len(steps) + 1):
                yield "%d/%d" % (n, len(steps)), steps[:n]

    def combinations(self, cut):
        """How many c states the open name changes of the cut give."""
        _durable, by_folder = self.open_changes(cut)
        return math.prod(2 ** len(steps) if FILE_SYSTEMS[self.folder_areas[f]] == "fat" else len(steps) + 1
                         for f, steps in ((f, self._steps(f, c)) for f, c in by_folder.items()))

    def states(self, cut):
        """[(label, tree)] of the distinct crash states at the cut; tree: {path: Entry}."""
        durable, by_folder = self.open_changes(cut)
        count = self.combinations(cut)
        if count > MAX_COMBINATIONS:
            raise TooManyStates("cut point %s: %d combinations of open name changes, more than MAX_COMBINATIONS "
                                "(%d) in tools/lossyfs/crashstates.py" % (self.describe(cut), count, MAX_COMBINATIONS))
        folders = [(self.folder_paths[f], self._steps(f, changes)) for f, changes in by_folder.items()]
        everything = sorted(step for _path, steps in folders for step in steps)
        done = [(i, 1) for i in durable]
        choices = [("a", []), ("b", everything)]
        if len(everything) > 1:
            for picks in itertools.product(*(self._kept(f, self._steps(f, c)) for f, c in by_folder.items())):
                choices.append(("c " + ", ".join("%s %s" % (path, label) for (path, _s), (label, _k)
                                                 in zip(folders, picks)), sorted(s for _l, kept in picks for s in kept)))
        seen, states = set(), []
        for label, kept in choices:
            if tuple(kept) not in seen:
                seen.add(tuple(kept))
                states.append((label, self.tree(sorted(done + kept), cut)))
        unflushed = [ident for ident in self.changes if self.data(ident, cut) != self.written(ident, cut)]
        if unflushed:
            states += [(label + "+data", self.tree(sorted(done + kept), cut, {i: "written" for i in unflushed}))
                       for label, kept in choices[:2]]
        for ident in unflushed:
            for boundary in self.page_boundaries(ident, cut):
                states.append(("b+torn %s@%d" % (self.path_of(ident, cut), boundary),
                               self.tree(sorted(done + everything), cut, {ident: boundary})))
            if len(self.written(ident, cut)) > len(self.data(ident, cut)):
                states.append(("b+zeros %s" % self.path_of(ident, cut),
                               self.tree(sorted(done + everything), cut, {ident: "zeros"})))
        return states

    def page_boundaries(self, ident, cut):
        """The page boundaries at which a write-back of the file's unflushed data stops in a state
        of its own: the file then differs from both its flushed and its written data."""
        flushed, written = self.data(ident, cut), self.written(ident, cut)
        return [n for n in range(PAGE, len(written), PAGE) if written[:n] + flushed[n:] not in (flushed, written)]

    def path_of(self, ident, cut):
        return next(AREAS[e["area"]] + e["path"] for e in reversed(self.events[:cut + 1]) if e.get("id") == ident)

    def initial_data(self, ident):
        """The file's data before the run; a file made in the run starts empty."""
        return self.blob(self._initial[ident]) if ident in self._initial else b""

    def data(self, ident, cut):
        """The file's data as flushed at the cut."""
        at = [blob for j, blob in self.flushed.get(ident, []) if j <= cut]
        return self.blob(at[-1]) if at else self.initial_data(ident)

    def written(self, ident, cut):
        """The file's data as written at the cut, flushed or not."""
        changes = [j for j in self.changes.get(ident, []) if j <= cut]
        if not changes:
            return self.initial_data(ident)
        key = (ident, changes[-1])
        if key not in self._written:
            data = bytearray(self.initial_data(ident))
            for j in changes:
                e = self.events[j]
                if e["op"] == "truncate":
                    del data[e["size"]:]
                    data.extend(bytes(e["size"] - len(data)))
                else:
                    chunk = self.blob(e["blob"])
                    data.extend(bytes(max(0, e["offset"] - len(data))))
                    data[e["offset"]:e["offset"] + len(chunk)] = chunk
            self._written[key] = bytes(data)
        return self._written[key]

    def tree(self, applied, cut, data=None):
        """The disks with the initial tree, the given steps of name changes applied in order, and
        every file's data as flushed at the cut; data: {file: "written", a page boundary or "zeros"}
        for files whose data (or only their size) reached the disk beyond that."""
        nodes, entries, roots = {}, {}, {}
        for e in self.initial:
            nodes[e["id"]] = dict(type=e["type"], mode=e["mode"], uid=e["uid"], gid=e["gid"], target=e.get("target"))
            if e["type"] == "dir":
                entries[e["id"]] = {}
            if e["path"] == "/":
                roots[e["area"]] = e["id"]
            else:
                entries[e["dir"]][os.path.basename(e["path"])] = e["id"]
        for i, whole in applied:
            e, op = self.events[i], self.events[i]["op"]
            folder = entries.setdefault(e["dir"], {})
            if not whole:  # on FAT, the removal of the file a rename replaces
                entries.setdefault(e["to_dir"], {}).pop(e["to_name"], None)
            elif op in ("create", "mkdir", "symlink"):
                nodes[e["id"]] = dict(type=e["type"], mode=e["mode"], uid=e["uid"], gid=e["gid"],
                                      target=e.get("target"))
                if op == "mkdir":
                    entries.setdefault(e["id"], {})
                folder[e["name"]] = e["id"]
            elif op == "link":
                folder[e["name"]] = e["id"]
            elif op in ("unlink", "rmdir"):
                folder.pop(e["name"], None)
            elif op == "rename":
                moved = folder.pop(e["name"], None)
                if moved is not None:
                    entries.setdefault(e["to_dir"], {})[e["to_name"]] = moved
            elif op == "chmod" and e["id"] in nodes:
                nodes[e["id"]]["mode"] = e["mode"]
            elif op == "chown" and e["id"] in nodes:
                nodes[e["id"]].update(uid=e["uid"], gid=e["gid"])
        tree = {}

        def content(ident):
            flushed = self.data(ident, cut)
            how = (data or {}).get(ident)
            if how is None:
                return flushed
            written = self.written(ident, cut)
            if how == "zeros":
                return flushed + bytes(len(written) - len(flushed))
            return written if how == "written" else written[:how] + flushed[how:]

        def walk(ident, path, seen):
            node = nodes[ident]
            tree[path] = Entry(node["type"], node["mode"], node["uid"], node["gid"],
                               content(ident) if node["type"] == "file" else node["target"])
            if node["type"] == "dir" and ident not in seen:
                for name, child in sorted(entries.get(ident, {}).items()):
                    walk(child, path.rstrip("/") + "/" + name, seen | {ident})
        for area, ident in roots.items():
            walk(ident, AREAS[area], set())
        return tree

    def initial_tree(self):
        return self.tree([], -1)

    def flushes(self):
        """The indexes of the flush events."""
        return [i for i, e in enumerate(self.events) if e["op"] in FLUSH_OPS]


def write_tree(tree, out):
    """A crash state as a plain folder tree under out (modes kept; owners only for root)."""
    for path, e in sorted(tree.items()):
        target = os.path.join(out, path.lstrip("/"))
        if e.type == "dir":
            os.makedirs(target, exist_ok=True)
        elif e.type == "link":
            os.symlink(e.data, target)
        else:
            with open(target, "wb") as f:
                f.write(e.data)
        if e.type != "link":
            os.chmod(target, e.mode)
    for path, e in sorted(tree.items(), reverse=True):
        if e.type == "dir":
            os.chmod(os.path.join(out, path.lstrip("/")), e.mode)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("journal")
    parser.add_argument("--cut", type=int)
    parser.add_argument("--state")
    parser.add_argument("--out")
    a = parser.parse_args()
    journal = Journal(a.journal)
    if a.cut is None:
        total = sum(len(journal.states(cut)) for cut in range(len(journal.events)))
        peak = max(journal.combinations(cut) for cut in range(len(journal.events)))
        print("%d cut points, %d crash states; at most %d combinations of open name changes at a cut point "
              "(limit %d)" % (len(journal.events), total, peak, MAX_COMBINATIONS))
        return 0
    for label, tree in journal.states(a.cut):
        if a.state is None:
            print(label)
        elif label == a.state:
            write_tree(tree, a.out)
            return 0
    return 1 if a.state else 0


if __name__ == "__main__":
    sys.exit(main())
