"""A simulated instrument in the instrument sandbox: lays out a sandbox root, runs the update program
(or any command) on it, and reads what it left, all addressed by the instrument's own paths."""

import hashlib
import io
import os
import struct
import subprocess
import tarfile
from pathlib import Path

from .console import CONSOLE, statuses

TOOLS = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SANDBOX, WITH_XVFB, SESSION = (os.path.join(TOOLS, t)
                               for t in ("instrument-sandbox", "with-xvfb", "run-update-session"))
# A command that the sandbox itself runs under, such as another system's root
# (tools/old-system-root ... --); empty: this machine.
WRAP = []


def areas(kind):
    """{path: (sub, name, ...)} of the sandbox's areas of a kind (tools/sandbox-areas)."""
    with open(os.path.join(TOOLS, "sandbox-areas"), encoding="utf-8") as f:
        rows = [line.split() for line in f if line.strip() and not line.startswith("#")]
    return {row[1]: tuple(row[2:]) for row in rows if row[0] == kind}


def inside_sandbox():
    """Whether this process runs in the instrument sandbox: ROOT names a sandbox root and each of
    its overlays is, in this mount namespace, that root's (as tests/common/SandboxGuard.cpp checks)."""
    root = os.environ.get("ROOT", "")
    if not root or not os.path.exists(os.path.join(root, "record", ".sandbox")):
        return False
    mounts = Path("/proc/self/mountinfo").read_text().splitlines()
    for point, (sub, name, *_rest) in areas("overlay").items():
        seen = [m for m in mounts if m.split()[4] == point]  # the last mount on the point is the one seen
        if not seen or " - overlay %s " % name not in seen[-1] or "upperdir=%s/%s," % (root, sub) not in seen[-1]:
            return False
    return True


# Where the instrument's folders that a run may change lie in the root, the deepest first.
IN_ROOT = sorted(((path + "/", sub + "/") for path, (sub, *_) in {**areas("overlay"), **areas("image")}.items()),
                 key=lambda area: -len(area[0]))


class Run:
    """A sandbox root, addressed by the instrument's paths."""

    def __init__(self, root):
        self.root = root

    def path(self, instrument_path):
        for prefix, sub in IN_ROOT:
            if instrument_path.startswith(prefix):
                return os.path.join(self.root, sub + instrument_path[len(prefix):])
        raise ValueError(instrument_path)

    def read(self, instrument_path):
        return Path(self.path(instrument_path)).read_bytes()

    def write(self, instrument_path, data, mode=0o644):
        p = Path(self.path(instrument_path))
        p.parent.mkdir(parents=True, exist_ok=True)
        p.write_bytes(data if isinstance(data, bytes) else data.encode())
        p.chmod(mode)

    def record(self, name, text=None):
        """A file of ROOT/record; with text, written first (faults for the stand-in privileged tool)."""
        p = Path(self.root, "record", name)
        if text is not None:
            p.write_text(text)
        return p.read_text(encoding="utf-8", errors="replace") if p.exists() else ""

    def privileged(self):
        return self.record("privileged.log").splitlines()

    def statuses(self):
        return statuses(self.record("stderr.log"))

    def session(self):
        return self.record("session").split()

    def files(self, content=lambda path, data: data):
        """Every file and link on the instrument and the stick: the digest of content(path, data)
        of a file, "-> target" of a link."""
        files = {}
        for area, sub in IN_ROOT:
            base = os.path.join(self.root, sub)
            for folder, dirs, names in os.walk(base):
                for n in names + [d for d in dirs if os.path.islink(os.path.join(folder, d))]:
                    p = os.path.join(folder, n)
                    key = area + os.path.relpath(p, base)
                    if os.path.islink(p):
                        files[key] = "-> " + os.readlink(p)
                    elif os.path.isfile(p):  # not a whiteout, nor a file whose date a 32-bit PC cannot read
                        files[key] = hashlib.sha256(content(key, Path(p).read_bytes())).hexdigest()
        return files


class Scenario:
    """How to lay out the root (instrument-sandbox --init options, then setup(run)), how to run the
    sandbox and the program, and what to expect of the run."""

    def __init__(self, name, doc, layout=(), sandbox=(), args=(), setup=None, inside=None, path_stubs=None,
                 expect=None, killed=False):
        self.name, self.doc, self.setup, self.inside, self.path_stubs = name, doc, setup, inside, path_stubs
        self.layout, self.sandbox, self.args = list(layout), list(sandbox), list(args)
        self.expect, self.killed = expect, killed


def prepare(sc, root, extra_setup=None, log="/home/vtx/Code/instrument.log"):
    """Lays out the sandbox root of a scenario; returns the Run, with the files as they were."""
    subprocess.run(WRAP + [SANDBOX, "--root", root, "--init"] + sc.layout, check=True)
    run = Run(root)
    for setup in filter(None, (sc.setup, extra_setup)):
        setup(run)
    run.log_before = run.read(log) if os.path.isfile(run.path(log)) else None
    run.before = run.files()
    return run


def execute(sc, run, program, use_display=False, extra_args=(), command=None):
    """Runs the program on the prepared root (or, with command, that command instead of the session
    of the program); returns the sandbox's console output."""
    env = dict(os.environ, HOME="/home/vtx")  # the instrument's user
    env.setdefault("VTX_SESSION_TIMEOUT", "90")
    env["VTX_SYNC_RECORDER"] = os.path.join(os.path.dirname(os.path.abspath(program)), "libvtx_sync_recorder.so")
    env["PATH"] = os.path.join(run.root, "stubs") + ":" + env.get("PATH", "/usr/bin:/bin")

    def script(name, text):
        path = Path(run.root, name)
        path.parent.mkdir(exist_ok=True)
        path.write_text(text)
        path.chmod(0o755)
        return str(path)
    for tool, body in (sc.path_stubs or {}).items():
        script("stubs/" + tool, "#!/bin/sh\n" + body)
    cmd = WRAP + [SANDBOX, "--root", run.root] + sc.sandbox
    cmd += ["--inside-setup", script("inside-setup.sh", sc.inside)] if sc.inside else []
    cmd += ["--"] + (command or ([] if use_display else [WITH_XVFB]) + [SESSION, os.path.abspath(program)] + sc.args)
    proc = subprocess.run(cmd + list(extra_args), env=env, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return proc.stdout.decode(errors="replace")


def recording(*tools):
    """PATH stubs of the shell tools named: each notes "tool args..." in ROOT/record/steps, then runs
    the real one, so that a run's commands can be read in order (recorded_steps)."""
    return {tool: 'echo "%s $*" >> "$ROOT/record/steps"\nPATH=${PATH#*/stubs:} exec %s "$@"\n' % (tool, tool)
            for tool in tools}


def recorded_steps(run):
    return run.record("steps").splitlines()


# Set-up steps of a layout.
def put(path, data, mode=0o644):
    return lambda run: run.write(path, data, mode)


def gone(path):
    return lambda run: os.remove(run.path(path))


def once_shown(status, action):
    """An --inside-setup step: the shell command action, in the background, once the program has
    shown the status (unless the session ends first, or a minute passes)."""
    shown = 'grep -qF "%s%s" "$ROOT/record/stderr.log" 2>/dev/null' % (CONSOLE["kStatus"], status)
    return "( wait_until 60 '%s || [ -e \"$ROOT/record/session\" ]' && %s && %s ) &\n" % (shown, shown, action)


def both(*steps):
    def setup(run):
        for step in steps:
            step(run)
    return setup


def runtime_library(soname=b"libstdc++.so.6", elfclass=1, machine=3, etype=3):
    """The smallest ELF shared object the update accepts as the runtime (32-bit x86, that SONAME):
    a header and three sections (none, .dynstr, .dynamic); 64-bit with elfclass 2."""
    wide = elfclass == 2
    strings = b"\0" + soname + b"\0"
    dynamic = struct.pack("<qQqQ" if wide else "<iIiI", 14, 1, 0, 0)  # DT_SONAME at 1, DT_NULL
    ehsize, shsize = (64, 64) if wide else (52, 40)
    shoff = ehsize + len(strings) + len(dynamic)
    head = b"\x7fELF" + bytes([elfclass, 1, 1]) + bytes(9)
    head += struct.pack("<HHIQQQIHHHHHH" if wide else "<HHIIIIIHHHHHH", etype, machine, 1, 0, 0, shoff, 0, ehsize,
                        0, 0, shsize, 3, 0)
    section = "<IIQQQQIIQQ" if wide else "<IIIIIIIIII"
    sections = bytes(shsize) + struct.pack(section, 0, 3, 0, 0, ehsize, len(strings), 0, 0, 1, 0)
    sections += struct.pack(section, 0, 6, 0, 0, ehsize + len(strings), len(dynamic), 1, 0, 4, len(dynamic) // 2)
    return head + strings + dynamic + sections


def package(*members):
    """A gzipped tar of (name, data) members; a str for data makes a symbolic link to it."""
    buf = io.BytesIO()
    with tarfile.open(fileobj=buf, mode="w:gz", format=tarfile.GNU_FORMAT) as tar:
        for name, data in members:
            info, link = tarfile.TarInfo(name), isinstance(data, str)
            info.type, info.linkname, info.size = (tarfile.SYMTYPE, data, 0) if link else (info.type, "", len(data))
            tar.addfile(info, None if link else io.BytesIO(data))
    return buf.getvalue()


def fifo(path):
    return lambda run: (os.makedirs(os.path.dirname(run.path(path)), exist_ok=True), os.mkfifo(run.path(path)))


def link(path, target):
    return lambda run: (os.makedirs(os.path.dirname(run.path(path)), exist_ok=True), os.symlink(target, run.path(path)))


def folder(path):
    return lambda run: os.makedirs(run.path(path), exist_ok=True)


def newer(path):
    return lambda run: os.utime(run.path(path), (2 ** 31 - 10,) * 2, follow_symlinks=False)


def tgz(*members, kind=None):
    """A package of (name, data) members; kind makes the last one a FIFO or a hard link."""
    data = package(*members)
    if kind:
        buf = io.BytesIO()
        with tarfile.open(fileobj=buf, mode="w:gz") as tar:
            info = tarfile.TarInfo(members[-1][0])
            info.type, info.linkname = kind, "jfonts/a.ttf"
            tar.addfile(info)
        data = buf.getvalue()
    return put("/media/usb/jfonts.tgz", data)


def made(path, data):
    """Written when the layout is made: the large packages are not built when the scenarios are listed."""
    return lambda run: run.write(path, data())
