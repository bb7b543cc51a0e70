"""Injected faults: full and read-only disks, a stick pulled out, a log growing, a hostile log name,
a missing privileged tool, a running application, earlier partial copies."""

import hashlib
import os
import re
import time

from harness.checks import appended_lines, check, log_is, matches, outcome
from harness.instrument import (APPLICATION, BACKED, BACKED_UP, COPY_FOLDERS, CURRENT, DONE, DONE_LOG, EXTRAS,
                                INSTALLED, LOG, PARTIAL, SUCCESS)
from harness.sandbox import both, gone, once_shown, put
from harness.scenarios import add
from update_e2e import EXTRAS_LOG, WITH_EXTRAS


def big(size, seed):
    return (hashlib.sha256(seed).digest() * (size // 32 + 1))[:size]


def old_build(data):
    stamp = time.mktime((2019, 3, 5, 14, 12, 0, 0, 0, -1))  # local time, as the backup's name reads it
    return both(put(APPLICATION, data, 0o755), lambda run: os.utime(run.path(APPLICATION), (stamp, stamp)))


# ---- full and read-only disks: a copy that fails leaves no part of the file under its name

# After the backup ~260 KiB are free: room for the growth (100 KiB), not a second copy (700 KiB).
add("disk_full_install", "the code folder has room for the new build's growth only: the old build stays whole",
    outcome("Disk error... (06)", CURRENT + BACKED, BACKED_UP), inside="small_disk /home/vtx/Code 2200k\n",
    setup=both(old_build(big(600 << 10, b"old")), put("/home/vtx/Code/NEW/Application", big(700 << 10, b"new"))))
add("disk_full_stick", "the stick is too small for the log; the older log there under its name stays",
    outcome("Disk error... (13)", DONE_LOG, dict(INSTALLED, stick_log="unchanged")),
    setup=both(put(LOG, big(512 << 10, b"l") + b"\r\n"), put("/media/usb/instrument.log", b"older log\r\n")),
    inside="small_disk /media/usb 64k\n")
# ---- copies that replace: a running program, partial copies of an earlier power cut

# Writing into a running program fails ("Text file busy"); a rename replaces it.
add("application_running", "the old build is running while it is replaced",
    outcome(SUCCESS, DONE_LOG, DONE, more=lambda run: os.kill(int(run.record("running.pid")), 9)),
    setup=old_build(open("/bin/sleep", "rb").read()),
    inside='/home/vtx/Code/Application 60 </dev/null >/dev/null 2>&1 & echo $! > "$ROOT/record/running.pid"\n')
LEFTOVERS = [folder + PARTIAL for folder in COPY_FOLDERS]
add("partial_copies_left", "partial copies of an earlier power cut in every folder the update copies into",
    outcome(SUCCESS, EXTRAS_LOG, WITH_EXTRAS, also=LEFTOVERS),
    setup=both(EXTRAS, *(put(p, b"cut short by a power loss", 0o444) for p in LEFTOVERS)))

# ---- the stick pulled out, the log growing

# Without the stick: no auxiliary file, no fonts; the log copy lands in the empty mount point.
add("stick_removed", "the stick is pulled out while the first status is shown",
    outcome(SUCCESS, DONE_LOG, DONE, also=["/media/usb/update/zip", "/media/usb/jfonts.tgz"]), setup=EXTRAS,
    inside="_onto_tmpfs /media/usb 64m\n" + once_shown("Copying files", "umount -l /media/usb"))

# Another writer appends until the reboot request and one line more (holding the sandbox's output
# open, so the run waits for it). Our lines are whole and in order among its lines; the stick holds
# a beginning of the log with all of ours (at most the end of one of its lines cut short).
GROWER = r"""( i=0; while [ $i -lt 600 ]; do [ -e "$ROOT/record/reboot" ] && last=1
  printf 'other writer %d\r\n' $i >> /home/vtx/Code/instrument.log; i=$((i+1))
  [ -n "${last:-}" ] && break; sleep 0.1; done; echo done > "$ROOT/record/grown.done" ) &
"""


def both_writers_whole(run):
    check(run.record("grown.done"), "the other writer did not end")
    lines = appended_lines(run)
    others = [x for x in lines if x.startswith("other writer")]
    check(others == ["other writer %d" % i for i in range(len(others))] and len(others) > 1,
          "lines of the other writer were lost: %r" % others)
    ours = [x for x in lines if x not in others]
    check(matches(ours, DONE_LOG), "our lines were torn or lost: %r" % ours)
    stick = run.read("/media/usb/instrument.log")
    *copied, rest = stick[len(run.log_before):].split(b"\r\n")
    ours = [x.decode(errors="replace") for x in copied if not x.startswith(b"other writer")]
    check(run.read(LOG).startswith(stick) and stick.startswith(run.log_before) and matches(ours, DONE_LOG)
          and re.fullmatch(rb"other writer \d+\r?", rest + b"other writer 0"[len(rest):]), "stick's copy: %r" % stick)


add("log_grows", "another process appends to the log during the update",
    outcome(SUCCESS, None, dict(DONE, stick_log="partial"), more=both_writers_whole), inside=GROWER)

# ---- a hostile log name, broken font packages, the privileged tool gone

# A name cannot hold "/": the command "cd"s home (/home/vtx), where a mark would show as a change.
HOSTILE = 'x" ; cd ; touch pwned ; ".log'


def hostile_log_copied(run):
    log_is(run, DONE_LOG, path="/home/vtx/Code/" + HOSTILE, before=b"hostile log\r\n")
    check(run.read("/media/usb/" + HOSTILE) == run.read("/home/vtx/Code/" + HOSTILE), "the stick's copy differs")


add("hostile_log_name_quote", "the newest log is named %r" % HOSTILE,
    outcome(SUCCESS, [], INSTALLED, also=["/home/vtx/Code/" + HOSTILE, "/media/usb/" + HOSTILE],
            more=hostile_log_copied), setup=put("/home/vtx/Code/" + HOSTILE, b"hostile log\r\n"))
# The screen keeps the success text; the console says why the instrument is still on.
add("privileged_tool_missing_reboot", "everything installed, but the reboot cannot be asked for",
    outcome(SUCCESS, DONE_LOG, DONE, ending="stuck"), setup=gone("/home/vtx/bin/VtxSecret"))
