"""Power cuts at each step of a full update (with the operating-system update), checked against the
table of docs/service/power-cuts.md (`powerloss_e2e.py --table` prints it); the powerloss_everywhere runs cut
at every operation on disks that lose what was not flushed and check every crash state."""

import os
import sys

TOOLS = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "tools")
sys.path[:0] = [TOOLS, os.path.join(TOOLS, "lossyfs")]  # also when run alone, for --table
import harness.instrument as e2e  # noqa: E402
from harness.checks import appended_lines, files_as, outcome  # noqa: E402
from harness.instrument import (DONE, FRESH, LOG, OS_COMMANDS, PARTIAL,  # noqa: E402
                                RUNTIME_ON_STICK, SUCCESS)
from harness.sandbox import both, once_shown, package, put  # noqa: E402
from harness.promises import every_cut_point  # noqa: E402
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
