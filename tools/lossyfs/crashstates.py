#!/usr/bin/python3
"""Crash states: what the disks hold after a power cut, built from a lossyfs journal.

    crashstates.py JOURNAL                              cut points and crash states, counted
    crashstates.py JOURNAL --cut N --state LABEL --out DIR
                                                        writes that state as a plain folder tree

A cut point is the moment right after one recorded operation. What survives a cut:
- a file's data as of its last fsync (or sync); never flushed, a new file is empty and an old one
  keeps the data it had before the run;
- a name change (create, mkdir, symlink, link, unlink, rmdir, rename, chmod, chown) for certain
  once its folder was flushed (fsync of the folder; a rename counts in the folder it lands in) or
  a sync came; a change still open may or may not have reached the disk.
The states built at each cut point from the changes still open:
  a   none of them: only what was made durable;
  b   all of them, in the order they were made (data still only as far as flushed: the state in
      which a rename is ahead of the data behind it);
  c   per folder, any prefix of that folder's open changes, each folder independently of the
      others (a disk without one ordered journal), as long as that gives at most
      MAX_COMBINATIONS states; past that, every prefix of one folder with all or none of the other
      folders' changes.
Equal states of one cut point are built once.
"""

import argparse
import bisect
import itertools
import json
import math
import os
import sys
from collections import namedtuple

sys.path.insert(0, os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
from sandbox_run import areas  # noqa: E402

NAME_OPS = {"create", "mkdir", "symlink", "link", "unlink", "rmdir", "rename", "chmod", "chown"}
MAX_COMBINATIONS = 256

# The mount point of each lossyfs area inside the instrument sandbox.
AREAS = {area: path for path, (_sub, area) in areas("lossy").items()}

Entry = namedtuple("Entry", "type mode uid gid data")  # data: bytes of a file, target of a link


class Journal:
    def __init__(self, folder):
        self.folder = folder
        with open(os.path.join(folder, "journal"), encoding="utf-8") as f:
            lines = [json.loads(line) for line in f]
        self.initial = [e for e in lines if e["op"] == "have"]
        self.events = [e for e in lines if e["op"] != "have"]
        self._blobs = {}
        # Where each name change is made durable, and each file's flushed data in order.
        self.names = [i for i, e in enumerate(self.events) if e["op"] in NAME_OPS]
        self.durable_at, self.flushed = {}, {}
        for i in self.names:
            e = self.events[i]
            folder = e.get("to_dir", e["dir"])
            self.durable_at[i] = next((j for j in range(i + 1, len(self.events)) if self._covers(self.events[j], e,
                                                                                                 folder)), None)
        # Each folder that has name changes, by its path, for the labels of the c states.
        self.folder_paths = {}
        for i in self.names:
            e = self.events[i]
            self.folder_paths.setdefault(e.get("to_dir", e["dir"]),
                                         AREAS[e["area"]] + os.path.dirname(e["path"]).rstrip("/"))
        for j, e in enumerate(self.events):
            if e["op"] == "fsync":
                self.flushed.setdefault(e["id"], []).append((j, e["blob"]))
            elif e["op"] == "sync":
                for ident, blob in e["blobs"].items():
                    self.flushed.setdefault(ident, []).append((j, blob))

    @staticmethod
    def _covers(flush, change, folder):
        return (flush["op"] == "fsyncdir" and flush["id"] == folder) or (
            flush["op"] == "sync" and flush["area"] == change["area"])

    def blob(self, digest):
        if digest not in self._blobs:
            with open(os.path.join(self.folder, "blobs", digest), "rb") as f:
                self._blobs[digest] = f.read()
        return self._blobs[digest]

    def describe(self, cut):
        e = self.events[cut]
        return "#%d %s %s%s" % (cut, e["op"], AREAS[e["area"]], "" if e["path"] == "/" else e["path"])

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

    def states(self, cut):
        """[(label, tree)] of the distinct crash states at the cut; tree: {path: Entry}."""
        durable, by_folder = self.open_changes(cut)
        folders = list(by_folder.values())
        everything = sorted(i for changes in folders for i in changes)
        choices = [("a", []), ("b", everything)]
        if len(everything) > 1:
            for lengths in self._prefix_lengths([len(changes) for changes in folders]):
                kept = [i for changes, n in zip(folders, lengths) for i in changes[:n]]
                choices.append(("c " + self._label(by_folder, lengths), sorted(kept)))
        seen, states = set(), []
        for label, kept in choices:
            key = tuple(kept)
            if key not in seen:
                seen.add(key)
                states.append((label, self.tree(sorted(durable + kept), cut)))
        return states

    @staticmethod
    def _prefix_lengths(sizes):
        """How many open changes of each folder the c states keep: every combination while there
        are at most MAX_COMBINATIONS, else every prefix of one folder with all or none of the others."""
        if math.prod(size + 1 for size in sizes) <= MAX_COMBINATIONS:
            return itertools.product(*(range(size + 1) for size in sizes))
        return ([n if g == f else size if rest else 0 for g, size in enumerate(sizes)]
                for f in range(len(sizes)) for n in range(sizes[f] + 1) for rest in (False, True))

    def _label(self, by_folder, lengths):
        """Which open changes of which folder a c state keeps, by the folder's path."""
        return ", ".join("%s %d/%d" % (self.folder_paths[folder], n, len(changes))
                         for (folder, changes), n in zip(by_folder.items(), lengths))

    def data(self, ident, cut, initial):
        flushes = self.flushed.get(ident, [])
        at = bisect.bisect_right([j for j, _blob in flushes], cut)
        return self.blob(flushes[at - 1][1]) if at else initial

    def tree(self, applied, cut):
        """The disks with the initial tree, the given name changes applied in order, and every
        file's data as flushed at the cut."""
        nodes, entries, roots, initial = {}, {}, {}, {}
        for e in self.initial:
            nodes[e["id"]] = dict(type=e["type"], mode=e["mode"], uid=e["uid"], gid=e["gid"], target=e.get("target"))
            initial[e["id"]] = self.blob(e["blob"]) if e["type"] == "file" else None
            if e["type"] == "dir":
                entries[e["id"]] = {}
            if e["path"] == "/":
                roots[e["area"]] = e["id"]
            else:
                entries[e["dir"]][os.path.basename(e["path"])] = e["id"]
        for i in applied:
            e, op = self.events[i], self.events[i]["op"]
            folder = entries.setdefault(e["dir"], {})
            if op in ("create", "mkdir", "symlink"):
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

        def walk(ident, path, seen):
            node = nodes[ident]
            data = self.data(ident, cut, initial.get(ident) or b"") if node["type"] == "file" else node["target"]
            tree[path] = Entry(node["type"], node["mode"], node["uid"], node["gid"], data)
            if node["type"] == "dir" and ident not in seen:
                for name, child in sorted(entries.get(ident, {}).items()):
                    walk(child, path.rstrip("/") + "/" + name, seen | {ident})
        for area, ident in roots.items():
            walk(ident, AREAS[area], set())
        return tree

    def initial_tree(self):
        return self.tree([], -1)


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
        print("%d cut points, %d crash states" % (len(journal.events), total))
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
