"""Power loss: the program is killed at each step of a full update (auxiliary file, font package,
and in a second series the operating-system update), and the state it leaves is checked against
the table that the README publishes for service engineers.

    powerloss_e2e.py --table     prints that table (Markdown)
"""

import os
import sys

import update_e2e as e2e
from update_e2e import BACKUP, check, font_package, keep_new_build, scenario

e2e.GROUP[0] = "powerloss"

# A stand-in for a command the procedure runs through the shell: at its Nth call it cuts the
# power (kills the program) before, halfway through or right after doing its work.
CUT = r"""
count="$ROOT/record/{tool}.count"
n=$(( $(cat "$count" 2>/dev/null || echo 0) + 1 )); echo $n > "$count"
if [ $n -ne {nth} ]; then exec {real} "$@"; fi
mode={mode}
if [ $mode = half ]; then
  src=$1; dst=$2; [ -d "$dst" ] && dst=$dst/$(basename "$src")
  head -c $(( $(stat -c %s "$src") / 2 )) "$src" > "$dst"
elif [ $mode = after ]; then
  {real} "$@"
fi
kill -KILL "$(cat "$ROOT/record/pid")"
exit 137
"""


def cut(tool, nth, mode):
    real = {"cp": "/bin/cp", "tar": "/bin/tar", "ldd": "/usr/bin/ldd"}[tool]
    return {tool: CUT.format(tool=tool, nth=nth, mode=mode, real=real)}


def _full(run):
    keep_new_build(run)
    run.write("/media/usb/update/zip", b"auxiliary data\n" * 1000)
    run.package = font_package()
    run.write("/media/usb/jfonts.tgz", run.package)


def _os_update(run):
    keep_new_build(run)
    run.package = None
    run.write("/media/usb/update/libstdc++.so.6.0.22", b"runtime library 6.0.22 from the stick\n" * 1000)


def _kill_before(command):
    def setup(run):
        _os_update(run)
        with open(os.path.join(run.root, "record", "privileged.kill"), "w") as f:
            f.write(command + "\n")
    return setup


PARTIAL = ".vtx-partial-copy"
# The folders the copies of the update write into, where a cut can leave the partial copy.
COPY_FOLDERS = ("/home/vtx/Code/", "/home/vtx/Code/Old/", "/home/vtx/", "/media/usb/")


def state(run):
    """What a service engineer finds after the power comes back."""
    def compare(path, whole):
        if not run.exists(path):
            return "none"
        return "complete" if run.read(path) == whole else "partial"
    app = run.read("/home/vtx/Code/Application")
    application = "old" if app == run.application_before else "new" if app == run.new_build else "partial"
    link = run.path(e2e.ROOT_RO_RUNTIME_LINK)
    now = os.readlink(link) if os.path.islink(link) else None
    return {
        "application": application,
        "backup": compare(BACKUP, run.application_before),
        "zip": compare("/home/vtx/Code/zip", b"auxiliary data\n" * 1000),
        "fonts": "unpacked" if run.exists("/home/vtx/jfonts") else compare("/home/vtx/jfonts.tgz", run.package),
        "stick_log": compare("/media/usb/instrument.log", run.read("/home/vtx/Code/instrument.log")),
        "new_folder": "present" if run.exists("/home/vtx/Code/NEW") else "removed",
        "runtime": "replaced" if now != run.runtime_link_before else "old",
        "partial_copy": " ".join(f + PARTIAL for f in COPY_FOLDERS if run.exists(f + PARTIAL)) or "none",
    }


FRESH = dict(application="old", backup="none", zip="none", fonts="none", stick_log="none", new_folder="present",
             runtime="old", partial_copy="none")
BACKED_UP = dict(FRESH, backup="complete", zip="complete")
INSTALLED = dict(BACKED_UP, application="new", new_folder="removed")
REPEAT = "Repeat the update: the next copy into that folder replaces the partial copy."

# (name, doc, sandbox layout, setup, stubs, privileged command before which the power goes,
#  expected state, what it means for service)
POINTS = [
    ("start", "during the first status pause", [], _full, {"sleep": ""}, None, FRESH,
     "Nothing changed. Repeat the update."),
    ("auxiliary_copy", "halfway through copying the auxiliary file", [], _full, cut("cp", 1, "half"), None,
     dict(FRESH, partial_copy="/home/vtx/Code/" + PARTIAL),
     "No `Code/zip` yet, only its partial copy. " + REPEAT),
    ("os_update_copy", "OS update: before the runtime is copied into the root image", ["--link", "wrong"],
     _kill_before(e2e.OS_COMMANDS[1]), {}, None, FRESH,
     "The root image was remounted writable only; the old runtime still works. Repeat the update."),
    ("os_update_link", "OS update: before the runtime link is changed", ["--link", "wrong"],
     _kill_before(e2e.OS_COMMANDS[2]), {}, None, FRESH,
     "The new runtime is in the root image, the link still points at the old one. Repeat the update."),
    ("backup_copy", "halfway through the backup copy", [], _full, cut("cp", 2, "half"), None,
     dict(FRESH, zip="complete", partial_copy="/home/vtx/Code/Old/" + PARTIAL),
     "No backup yet, only its partial copy; the running build is intact. " + REPEAT),
    ("library_check", "while the new build's libraries are checked", [], _full, cut("ldd", 1, "before"), None,
     BACKED_UP, "Backup made, nothing installed. Repeat the update."),
    ("install_copy", "halfway through copying the new build", [], _full, cut("cp", 3, "half"), None,
     dict(BACKED_UP, partial_copy="/home/vtx/Code/" + PARTIAL),
     "The old build is intact and starts; the new build is still in `Code/NEW`. " + REPEAT),
    ("install_done", "right after the new build was copied, before it takes the application's name", [], _full,
     cut("cp", 3, "after"), None, dict(BACKED_UP, partial_copy="/home/vtx/Code/" + PARTIAL),
     "The old build is intact and starts; the new build lies whole under the partial name. " + REPEAT),
    ("font_copy", "halfway through copying the font package", [], _full, cut("cp", 4, "half"), None,
     dict(INSTALLED, partial_copy="/home/vtx/" + PARTIAL),
     "New build installed; no font package yet, only its partial copy (the next font copy replaces it). Install "
     "the fonts by hand: copy `jfonts.tgz` from the stick to `/home/vtx`, then `cd /home/vtx; tar xzf jfonts.tgz`."),
    ("font_unpack", "before the font package is unpacked", [], _full, cut("tar", 1, "before"), None,
     dict(INSTALLED, fonts="complete"),
     "New build installed, fonts not unpacked, and later updates skip them: run `cd /home/vtx; tar xzf jfonts.tgz`."),
    ("log_copy", "halfway through copying the log to the stick", [], _full, cut("cp", 5, "half"), None,
     dict(INSTALLED, fonts="unpacked", partial_copy="/media/usb/" + PARTIAL),
     "Everything installed; the stick holds only a partial copy of the log (the next log copy replaces it), the "
     "instrument's log is whole: copy it to the stick by hand."),
    ("reboot", "when the reboot is asked for", [], _full, {}, "reboot",
     dict(INSTALLED, fonts="unpacked", stick_log="complete"),
     "Everything done; the new build starts at power-up."),
]


def _setup(base, kill_command):
    def setup(run):
        base(run)
        if kill_command:
            with open(os.path.join(run.root, "record", "privileged.kill"), "w") as f:
                f.write(kill_command + "\n")
    return setup


def _expect(expected):
    def expect(run):
        got = state(run)
        for key, want in expected.items():
            check(got[key] == want, "%s is %s, expected %s" % (key, got[key], want))
        check(run.read("/home/vtx/Code/instrument.log").startswith(run.log_before), "the log lost its old content")
    return expect


for _name, _doc, _layout, _base, _stubs, _kill, _expected, _meaning in POINTS:
    if "sleep" in _stubs:
        # The first pause runs inside the program; the power is cut from outside instead.
        _sandbox = []
        # Cut as soon as the first status is shown: the procedure then pauses for 2 s.
        _inside = ('( i=0; while [ $i -lt 600 ] && ! grep -q "Status: Copying files" "$ROOT/record/stderr.log" '
                   '2>/dev/null; do sleep 0.05; i=$((i+1)); done; kill -KILL "$(cat "$ROOT/record/pid")" ) &\n')
        _stubs = {}
    else:
        _sandbox, _inside = [], None
    scenario("powerloss_" + _name, "power cut " + _doc, layout=_layout, sandbox=_sandbox, inside=_inside,
             setup=_setup(_base, _kill), path_stubs=_stubs or None, killed=True)(_expect(_expected))


def table():
    out = ["| power cut | application | backup | auxiliary file | font package | log on the stick | `Code/NEW` | "
           "partial copy left | what to do |", "|---|---|---|---|---|---|---|---|---|"]
    for name, doc, _l, _b, _s, _k, st, meaning in POINTS:
        partial = " ".join("`%s`" % p for p in st["partial_copy"].split()) if st["partial_copy"] != "none" else "none"
        out.append("| %s | %s | %s | %s | %s | %s | %s | %s | %s |" % (
            doc, st["application"], st["backup"], st["zip"], st["fonts"], st["stick_log"], st["new_folder"], partial,
            meaning))
    return "\n".join(out)


if __name__ == "__main__" and "--table" in sys.argv:
    print(table())
