#!/usr/bin/env python3
"""The application shell as a process (tests/app/ShellProbe.cpp, and the delivered program) on an
instrument without quality-control file and settings, in the sandbox on a private Xvfb display.

    shell_process.py --probe PROBE [--program UPDATE]
"""

import argparse
import os
import re
import signal
import subprocess
import sys
import time
from pathlib import Path

REPO = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(REPO, "tools"))
from harness.sandbox import inside_sandbox  # noqa: E402
QC_LINE = "Error [Instrument View] Could not find read QC file!"
SETTINGS_LINE = "Error [Instrument View] Could not load settings!"
BORDER_MASK, BORDER_NONE = 0x1F200000, 0x00200000
DECORATIONS = 0x20000000 | 0x0040 | 0x0800 | 0x0400 | 0x0200 | 0x1000  # caption, resize border, menu, boxes

failures = []


def check(condition, message):
    if not condition:
        failures.append(message)
        print("FAIL: " + message, flush=True)


def wait_for(condition, timeout=20):
    deadline = time.monotonic() + timeout
    while not condition() and time.monotonic() < deadline:
        time.sleep(0.05)
    return condition()


def fields(line):
    return dict(re.findall(r"(\w+)=(\S*)", line or ""))


class Process:
    """A program on the display; its report lines (stdout) are read as they come."""

    def __init__(self, program, args=(), name="run", **env):
        self.log = os.path.join(os.environ["ROOT"], "record", name + ".stderr")
        with open(self.log, "wb") as err:
            self.proc = subprocess.Popen([program] + [a if isinstance(a, bytes) else a.encode() for a in args],
                                         stdout=subprocess.PIPE, stderr=err, env=dict(os.environ, **env))
        os.set_blocking(self.proc.stdout.fileno(), False)
        self.out = b""

    def line(self, pattern, timeout=20):
        """The first report line matching pattern, waited for while the program runs."""
        def seen():
            ended = self.proc.poll() is not None
            self.out += self.proc.stdout.read() or b""
            return re.search(pattern.encode() + rb"[^\n]*\n", self.out, re.M) or ended
        found = wait_for(seen, timeout)
        return found.group(0).decode(errors="replace") if isinstance(found, re.Match) else None

    def console(self):
        return Path(self.log).read_text(encoding="utf-8", errors="replace")

    def finish(self, stop=False, timeout=15):
        if stop:
            self.proc.send_signal(signal.SIGTERM)
        if not wait_for(lambda: self.proc.poll() is not None, timeout):
            self.proc.kill()
        return self.proc.wait()


def viewable_windows():
    """(x, y, width, height) of every viewable top-level window on the display."""
    tree = subprocess.run(["xwininfo", "-root", "-children"], stdout=subprocess.PIPE, text=True).stdout
    found = []
    for wid in re.findall(r"^\s+(0x[0-9a-f]+)\s", tree, re.M):
        info = subprocess.run(["xwininfo", "-id", wid], stdout=subprocess.PIPE, text=True).stdout
        if "IsViewable" in info:
            found.append(tuple(int(re.search(k + r":\s+(-?\d+)", info).group(1))
                               for k in ("Absolute upper-left X", "Absolute upper-left Y", "Width", "Height")))
    return found


def check_shell_ended(who, p, rc):
    """One stopped by SIGTERM ends at once, unhandled; one whose main loop ended is taken down."""
    console = p.console()
    by_signal = who.endswith("SIGTERM")
    check(rc == (-signal.SIGTERM if by_signal else 0), "%s: exit status %s" % (who, rc))
    check(console.count(QC_LINE) == 1 and console.count(SETTINGS_LINE) == 1
          and console.find(QC_LINE) < console.find(SETTINGS_LINE), "%s: start-up log:\n%s" % (who, console))
    ended = fields(p.line(r"^probe: ended", timeout=0))
    check(ended == ({} if by_signal else {"rc": "0", "frame": "0", "server": "0", "main": "0", "workers": "0"}),
          "%s: ended with %s" % (who, ended))


def start_up(probe, program):
    width, height = map(int, os.environ["VTX_SCREEN"].split("x")[:2])
    full = "0,0,%d,%d" % (width, height)

    p = Process(probe, name="probe")
    activated = p.line(r"^probe: activated")
    check(fields(activated) == {"special": "0", "view": full}, "activation: %s" % activated)
    f = fields(p.line(r"^probe: ticks .* 1s=1 "))
    check((f.get("100ms"), f.get("gui"), f.get("display"), f.get("frame"), f.get("client"), f.get("shown"))
          == ("10", "1", "%dx%d" % (width, height), full, full, "1"), "ticks and frame: %s" % f)
    style = int(f.get("style", "0"), 16)
    check(style & BORDER_MASK == BORDER_NONE and not style & DECORATIONS, "frame style 0x%x" % style)
    check(viewable_windows() == [(0, 0, width, height)], "windows on the display: %s" % viewable_windows())
    check_shell_ended("probe stopped by SIGTERM", p, p.finish(stop=True))

    p = Process(probe, name="probe-close", VTX_PROBE_CLOSE_AFTER="3")
    rc = p.finish(timeout=20)
    check(p.line(r"^probe: ticks 100ms=3 1s=0 ", timeout=0), "the probe did not close its frame after 3 ticks")
    check_shell_ended("probe closing its frame", p, rc)

    if program:
        p = Process(program, name="program")
        check(wait_for(lambda: "Status:" in p.console() and viewable_windows() == [(0, 0, width, height)]),
              "windows of the program: %s" % viewable_windows())
        check_shell_ended("program stopped by SIGTERM", p, p.finish(stop=True))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--probe", required=True)
    parser.add_argument("--program")
    parser.add_argument("--inside", action="store_true")
    a = parser.parse_args()
    probe, program = os.path.abspath(a.probe), a.program and os.path.abspath(a.program)
    if a.inside:
        # Before anything is deleted.
        if not inside_sandbox():
            sys.exit("shell_process.py: refused, --inside runs only inside tools/instrument-sandbox")
        os.environ["HOME"] = "/home/vtx"
        for name in ("FactoryQC.vtx", "settings.vtx", "settings.lmo", "factory.lmo"):
            Path("/home/vtx/Code", name).unlink(missing_ok=True)  # in the overlay: none of the host's shows through
        start_up(probe, program)
        sys.exit(1 if failures else 0)
    status = 0
    for screen in ["1024x768x24", "800x600x24"]:
        print("--- start-up on a %s display" % screen, flush=True)
        cmd = [os.path.join(REPO, "tools", "instrument-sandbox"), "--bare", "--timeout", "240", "--",
               os.path.join(REPO, "tools", "with-xvfb"), sys.executable, os.path.abspath(__file__), "--inside",
               "--probe", probe] + (["--program", program] if program else [])
        status = subprocess.run(cmd, env=dict(os.environ, VTX_SCREEN=screen)).returncode or status
    sys.exit(status)


if __name__ == "__main__":
    main()
