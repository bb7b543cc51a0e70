"""Damaged, wrongly made and hostile sticks and builds, as the instrument's user: every run ends, shows
the status line the service sheet gives for it, and changes nothing on the whole simulated instrument
(kind, mode, owner and content of every entry, the root image included) but the update's own files."""

import os
import tarfile

from harness.checks import appended_lines, check, listing, own_change
from harness.instrument import APPLICATION, BACKUP, CODE, LOG, NEW, STICK, SUCCESS
from harness.sandbox import both, fifo, folder, gone, link, made, newer, package, put, runtime_library, tgz
from harness.scenarios import add
from harness.as_user import USER, owned_by_user

AUX, FONTS_COPY = "Could not copy file(s): auxillary files", "Could not copy file(s): font package"
FONTS_UNPACK = FONTS_COPY + " unpack"
RUNTIME = STICK + "/update/libstdc++.so.6.0.22"


def row(name, doc, status, setup, os_update=False, more=None, prefix="hostile_", only_log=False, **kw):
    """A run as the user; with only_log, nothing but the log may change."""
    def expect(run):
        check(run.statuses()[-1] == status, "status %r, expected %r" % (run.statuses()[-1], status))
        after = listing(run)
        changed = ["%s: %s -> %s" % (p, run.listing.get(p), after.get(p)) for p in sorted(set(run.listing) | set(after))
                   if run.listing.get(p) != after.get(p)
                   and not (own_change(p, run.listing.get(p), after.get(p), run.listing, os_update)
                            and (not only_log or (p.startswith(CODE + "/") and p.endswith(".log"))))]
        check(not changed, "changed outside the update's own files:\n" + "\n".join(changed))
        check(os_update or not run.privileged() or run.privileged() == ["reboot"],
              "privileged commands %r" % run.privileged())
        if more:
            more(run)

    def lay_out(run):
        both(RESULTS, *([setup] if callable(setup) else setup), owned_by_user)(run)
        run.listing = listing(run)
    add(prefix + name, doc + " (as the user)", expect, setup=lay_out,
        sandbox=["--user", "%d:%d" % USER] + kw.pop("sandbox", []), **kw)


def log_line(text):
    return lambda run: check(any(x.endswith(text) for x in appended_lines(run)), "no log line %r" % text)


def no_fonts(run):
    check(not os.path.lexists(run.path("/home/vtx/jfonts.tgz")) and not os.path.lexists(run.path("/home/vtx/jfonts")),
          "a refused font package left jfonts.tgz or jfonts/")


RESULTS = put(CODE + "/data/results.db", b"patient results\n")
BAD_RUNTIME = [
    ("x86_64", runtime_library(elfclass=2, machine=62), "not 32-bit"),
    ("script", b"#!/bin/sh\necho runtime\n", "not an ELF file"),
    ("other_soname", runtime_library(soname=b"libfoo.so.1"), "its SONAME is not libstdc++.so.6"),
    ("executable", runtime_library(etype=2), "not a shared library"),
    ("truncated", runtime_library()[:30], "not an ELF file"),
]

# ---- the new-build folder: removed by name, its links never followed, its build judged by kind
row("new_glob_pattern", "NEW holds a link to the data folder and an empty folder named [l]ink", SUCCESS,
    [link(NEW + "/link", CODE + "/data"), folder(NEW + "/[l]ink")])
row("new_link_to_code", "NEW holds a link to the code folder", SUCCESS, link(NEW + "/link", CODE))
row("new_deep_links", "links to the home folder deep in NEW, beside folders named * and ?", SUCCESS,
    [folder(NEW + "/a/*/b"), folder(NEW + "/?"), link(NEW + "/a/*/b/home", "/home/vtx"), link(NEW + "/a/up", "..")])
row("new_build_folder", "the new build is a folder", "Disk error... (06)", [gone(NEW + "/Application"),
                                                                             folder(NEW + "/Application/x")])
row("new_build_link_out", "the new build is a link to the patient data", "Disk error... (06)",
    [gone(NEW + "/Application"), link(NEW + "/Application", CODE + "/data/results.db")])
row("new_build_link_inside", "the new build is a link to a versioned file in NEW", SUCCESS,
    [put(NEW + "/Application-2.1", b"new build 2.1\n", 0o755), gone(NEW + "/Application"),
     link(NEW + "/Application", "Application-2.1")],
    more=lambda run: check(run.read(APPLICATION) == b"new build 2.1\n", "not the versioned build"))
row("new_build_hard_link", "the new build is a hard link of the running build", "Disk error... (06)",
    [gone(NEW + "/Application"), lambda run: os.link(run.path(APPLICATION), run.path(NEW + "/Application"))])
row("new_hostile_names", "NEW holds files named with quotes, $( ) and ;", SUCCESS,
    [put(NEW + '/x"; touch pwned; "', b""), put(NEW + "/$(touch pwned)", b""), folder(NEW + "/`id`")])

# ---- the auxiliary file and the font package on the stick, judged before they are read
row("aux_fifo", "the auxiliary file is a FIFO", AUX, fifo(STICK + "/update/zip"))
row("aux_folder", "the auxiliary file is a folder", AUX, folder(STICK + "/update/zip/x"))
row("aux_link_out", "the auxiliary file is a link to the settings", AUX, link(STICK + "/update/zip", CODE + "/settings.vtx"))
row("aux_link_on_stick", "the auxiliary file is a link to a file on the stick", SUCCESS,
    [put(STICK + "/zip-1.2", b"aux\n"), link(STICK + "/update/zip", "../zip-1.2")],
    more=lambda run: check(run.read(CODE + "/zip") == b"aux\n", "the auxiliary file was not copied"))
row("fonts_fifo", "the font package is a FIFO", FONTS_COPY, fifo(STICK + "/jfonts.tgz"))
row("fonts_link_out", "the font package is a link to the user's profile", FONTS_COPY,
    [put("/home/vtx/.profile", b"PATH=...\n"), link(STICK + "/jfonts.tgz", "/home/vtx/.profile")])
for _name, _doc, _setup, _cause in [
        ("truncated", "a font package cut short", made(STICK + "/jfonts.tgz", lambda: package(("jfonts/big.ttf", os.urandom(1 << 20)))[
            :300000]), "not a whole gzip stream"),
        ("not_gzip", "a font package that is plain text", put(STICK + "/jfonts.tgz", b"fonts\n"), "not a whole gzip stream"),
        ("trailing", "a font package with bytes after its gzip stream",
         put(STICK + "/jfonts.tgz", package(("jfonts/a.ttf", b"f")) + b"junk"), "not a whole gzip stream"),
        ("application", "a font package holding Code/Application", tgz(("Code/Application", b"evil")),
         "member Code/Application lies outside jfonts/"),
        ("profile", "a font package holding .profile after a font", tgz(("jfonts/a.ttf", b"f"), (".profile", b"evil")),
         "member .profile lies outside jfonts/"),
        ("absolute", "a font package with an absolute member", tgz(("/home/vtx/Code/settings.vtx", b"evil")),
         "member /home/vtx/Code/settings.vtx lies outside jfonts/"),
        ("dot_dot", "a font package climbing out with ..", tgz(("jfonts/../Code/zz.log", b"x")),
         "member jfonts/../Code/zz.log lies outside jfonts/"),
        ("member_link", "a font package with a link to the code folder", tgz(("jfonts/a.ttf", b"f"), ("jfonts/c", CODE)),
         "member jfonts/c is not a file or folder"),
        ("member_fifo", "a font package with a FIFO", tgz(("jfonts/a.ttf", b"f"), ("jfonts/p", b""), kind=tarfile.FIFOTYPE),
         "member jfonts/p is not a file or folder"),
        ("member_hard_link", "a font package with a hard link", tgz(("jfonts/a.ttf", b"f"), ("jfonts/h", b""),
                                                             kind=tarfile.LNKTYPE), "member jfonts/h is not a file or folder"),
        ("bomb", "a font package that unpacks to 200 MiB on a 32 MiB home disk",
         made(STICK + "/jfonts.tgz", lambda: package(("jfonts/zero.ttf", bytes(200 << 20)))), "bytes free")]:
    row("fonts_" + _name, _doc, FONTS_UNPACK, _setup, more=both(no_fonts, log_line(_cause)),
        inside="small_disk /home/vtx 32m\nchmod 755 /home/vtx\n" if _name == "bomb" else None)

# ---- the runtime that root would install into the root image
for _name, _data, _cause in BAD_RUNTIME:
    row("runtime_" + _name, "a replacement runtime refused as %s" % _cause, "Disk error... (18)", put(RUNTIME, _data),
        more=log_line("FAIL - runtime on USB refused: " + _cause), layout=["--link", "wrong"])
row("runtime_link", "the replacement runtime is a link to a file only root may read", "Disk error... (18)",
    link(RUNTIME, "/mnt/root-ro/etc/shadow"), more=log_line("FAIL - runtime on USB refused: a link"),
    layout=["--link", "wrong"])
row("runtime_fifo", "the replacement runtime is a FIFO", "Disk error... (18)", fifo(RUNTIME),
    more=log_line("FAIL - runtime on USB refused: not a regular file"), layout=["--link", "wrong"])

# ---- links where the update writes, and logs that are not the code folder's
STICK_LOG = STICK + "/instrument.log"
row("stick_log_link_to_application", "the stick's log name is a link to the application", SUCCESS,
    link(STICK_LOG, APPLICATION), more=lambda run: check(run.read(STICK_LOG) == run.read(LOG), "no log copied"))
row("stick_log_dangling", "the stick's log name is a dangling link to the user's profile", SUCCESS,
    link(STICK_LOG, "/home/vtx/.profile"), more=lambda run: check(run.read(STICK_LOG) == run.read(LOG), "no log"))
row("backup_dangling", "the backup's name is a dangling link to the user's profile", "Disk error... (04)",
    [folder(CODE + "/Old"), link(BACKUP, "/home/vtx/.profile")])
row("log_link_out", "the newest log is a link to a file outside the code folder", SUCCESS,
    [put("/home/vtx/secret.txt", b"secret\n"), link(CODE + "/zz.log", "/home/vtx/secret.txt"), newer(CODE + "/zz.log")],
    more=lambda run: check(run.read(STICK_LOG) == run.read(LOG), "instrument.log was not the log"))
row("log_link_fifo", "the newest log is a link to a FIFO in the code folder", SUCCESS,
    [fifo(CODE + "/pipe"), link(CODE + "/zz.log", "pipe"), newer(CODE + "/zz.log")])
row("log_hostile_name", "the only log is named with $( ) and `", SUCCESS,
    [gone(LOG), put(CODE + "/$(touch pwned)`id`.log", b"older\r\n")],
    more=lambda run: check(run.read(STICK + "/$(touch pwned)`id`.log").startswith(b"older\r\n"), "not copied"))
