"""The instrument's user (uid 1000, owning /home/vtx and the stick; root only in the stand-in
privileged tool), and the reference a run as that user is held against: the update's file steps
done by the shell tools as the user in a second sandbox, to the first that fails."""

import hashlib
import os
import shutil
import stat
import subprocess
import tempfile

from .checks import check
from .instrument import BACKUP, LOG, SUCCESS
from .sandbox import SANDBOX, prepare
from .scenarios import SCENARIOS

USER = (1000, 1000)
AS_USER = ["setpriv", "--reuid=%d" % USER[0], "--regid=%d" % USER[1], "--clear-groups", "--"]
os.umask(0o022)  # the instrument user's, for the program and the shell tools alike

# The update's file steps by the shell tools, in order, to the first that fails or to $STOP (no file step stops there).
REFERENCE = r"""C=/home/vtx/Code
result() { echo "reference: $1"; exit 0; }
[ -n "$LOG" ] || result stopped
true >> "$LOG" || result "Disk error... (10)"
if [ -e /media/usb/update/zip ] && [ ! -e $C/zip ]; then
  cp /media/usb/update/zip $C/zip || result "Could not copy file(s): auxillary files"
fi
[ "$STOP" = backup ] && result stopped
mkdir $C/Old || [ -e $C/Old ] || result "Disk error... (03)"
cp $C/Application %(backup)s || result "Disk error... (04)"
[ "$STOP" = install ] && result stopped
cp $C/NEW/$BUILD $C/Application || result "Disk error... (06)"
rm -r $C/NEW/*; rmdir $C/NEW || result "Disk error... (07)"
if [ -e /media/usb/jfonts.tgz ] && [ ! -e /home/vtx/jfonts.tgz ]; then
  cp /media/usb/jfonts.tgz /home/vtx || result "Could not copy file(s): font package"
  (cd /home/vtx; tar xzf jfonts.tgz)
fi
cp "$LOG" /media/usb/ || result "Disk error... (13)"
result done
""" % dict(backup=BACKUP)


def paths(run):
    """Every folder, file and link of /home/vtx and the stick but the stand-in tools (root's, as the system's)."""
    for area in ("/home/vtx/", "/media/usb/"):
        base = run.path(area)
        for folder, dirs, names in os.walk(base):
            if folder == base and area == "/home/vtx/":
                dirs.remove("bin")
            for p in [folder] + [os.path.join(folder, n) for n in names + dirs]:
                yield area + os.path.relpath(p, base), p


def owned_by_user(run):
    for _, p in paths(run):
        os.lchown(p, *USER)


def tree(run):
    """Kind, mode, owner, group and content (but the logs') of everything paths() lists."""
    out = {}
    for key, p in paths(run):
        st = os.lstat(p)
        content = (os.readlink(p) if stat.S_ISLNK(st.st_mode) else None if not stat.S_ISREG(st.st_mode)
                   or key.endswith(".log") else hashlib.sha256(open(p, "rb").read()).hexdigest()[:12])
        out[key] = (stat.filemode(st.st_mode), st.st_uid, st.st_gid, content)
    return out


def reference(sc, status, stop, log, build):
    """The tree the file steps leave as the user in a second root like the scenario's; they stop as the program did."""
    root = tempfile.mkdtemp(prefix="vtx-e2e-%s-cp-" % sc.name)
    try:
        ref = prepare(sc, root)
        inside = os.path.join(root, "inside-setup.sh")
        open(inside, "w").write(sc.inside or "")
        cmd = [SANDBOX, "--root", root, "--inside-setup", inside] + sc.sandbox
        env = dict(os.environ, LOG=log or "", STOP=stop or "", BUILD=build, HOME="/home/vtx")
        out = subprocess.run(cmd + ["--"] + AS_USER + ["/bin/sh", "-c", REFERENCE], env=env, cwd="/",
                             stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True).stdout
        got = [x[len("reference: "):] for x in out.splitlines() if x.startswith("reference: ")]
        want = "done" if status == SUCCESS else "stopped" if stop else status
        check(got == [want], "the shell's steps as the user ended with %r, the program with %r:\n%s" % (got, want, out))
        return tree(ref)
    finally:
        shutil.rmtree(root, ignore_errors=True)


def as_cp(name, status, stop=None, log=LOG, build="Application"):
    """The run ends as the same steps done by the shell tools as the user end."""
    def expect(run):
        want, got = reference(SCENARIOS[name], status, stop, log, build), tree(run)
        differ = ["%s: %s, with cp %s" % (p, got.get(p, "absent"), want.get(p, "absent"))
                  for p in sorted(set(want) | set(got)) if want.get(p) != got.get(p)]
        check(not differ, "files not as the shell tools leave them:\n" + "\n".join(differ))
    return expect


def chown(path, uid, gid, mode=None):
    return lambda run: (os.lchown(run.path(path), uid, gid), mode is None or os.chmod(run.path(path), mode))
