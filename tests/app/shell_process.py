#!/usr/bin/env python3
"""The application shell as a process, on an instrument without quality-control file and settings.

Runs the shell probe (the real application object, with a reporting view in the place of the update
screen) and the delivered program inside the instrument sandbox on a private Xvfb display.

    shell_process.py --probe PROBE [--program UPDATE] startup|command_line
"""

import argparse
import os
import re
import signal
import subprocess
import sys
import time

REPO = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SANDBOX = os.path.join(REPO, "tools", "instrument-sandbox")
WITH_XVFB = os.path.join(REPO, "tools", "with-xvfb")

QC_LINE = "Error [Instrument View] Could not find read QC file!"
SETTINGS_LINE = "Error [Instrument View] Could not load settings!"
BORDER_MASK, BORDER_NONE = 0x1F200000, 0x00200000
DECORATIONS = 0x20000000 | 0x0040 | 0x0800 | 0x0400 | 0x0200 | 0x1000  # caption, resize border, menu, boxes

# (process arguments, special command)
COMMAND_LINES = [
    ([], 0), (["1 7"], 7), (["1", "7"], 7), (["1 1"], 1), (["1"], 0), (["2", "7"], 0), (["1", "7", "9"], 0),
    (["1  7"], 0),  # 1, an empty parameter, 7
    (["1 7 "], 7),  # no empty trailing parameter
    ([" 1 7"], 0),  # an empty first parameter reads as 0
    (["1", "abc"], 0), (["01", "1"], 1),
    (["1", "7", "\u00e9"], 0),  # under the C locale
    ([b"1", b"7", b"\xff"], 0), ([b"1", b"7\xff"], 7),  # not UTF-8, still parameters
    (["--name=vtx", "1", "--class=Vtx", "7"], 7),  # the toolkit's own options are no parameters
]

failures = []


def check(condition, message):
    if not condition:
        failures.append(message)
        print("FAIL: " + message, flush=True)
    return condition


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
        deadline = time.time() + timeout
        while True:
            exited = self.proc.poll() is not None
            self.out += self.proc.stdout.read() or b""
            found = re.search(pattern.encode() + rb"[^\n]*\n", self.out, re.M)
            if found or exited or time.time() > deadline:
                return found.group(0).decode(errors="replace") if found else None
            time.sleep(0.05)

    def console(self):
        with open(self.log, encoding="utf-8", errors="replace") as f:
            return f.read()

    def finish(self, stop=False, timeout=15):
        if stop:
            self.proc.send_signal(signal.SIGTERM)
        try:
            return self.proc.wait(timeout)
        except subprocess.TimeoutExpired:
            self.proc.kill()
            return "killed"


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
    """A shell taken down by its main loop's end; one stopped by SIGTERM ends at once, unhandled."""
    console = p.console()
    by_signal = who.endswith("SIGTERM")
    check(rc == (-signal.SIGTERM if by_signal else 0), "%s: exit status %s" % (who, rc))
    check(console.count(QC_LINE) == 1 and console.count(SETTINGS_LINE) == 1
          and console.find(QC_LINE) < console.find(SETTINGS_LINE), "%s: start-up log:\n%s" % (who, console))
    ended = p.line(r"^probe: ended", timeout=0 if by_signal else 1)
    if by_signal:
        check(ended is None, "%s: the program handled the signal: %s" % (who, ended))
    else:
        check(fields(ended) == {"rc": "0", "frame": "0", "server": "0", "main": "0", "workers": "0"},
              "%s: not taken down cleanly: %s" % (who, ended))


def start_up(probe, program):
    info = subprocess.run(["xwininfo", "-root"], stdout=subprocess.PIPE, text=True).stdout
    width, height = (int(re.search(k + r":\s+(\d+)", info).group(1)) for k in ("Width", "Height"))
    full = "0,0,%d,%d" % (width, height)

    p = Process(probe, name="probe")
    activated = p.line(r"^probe: activated")
    check(fields(activated) == {"special": "0", "view": full}, "activation: %s" % activated)
    f = fields(p.line(r"^probe: ticks .* 1s=1 "))
    check([f.get(k) for k in ("100ms", "1s", "1min", "2min", "gui")] == ["10", "1", "0", "0", "1"], "ticks: %s" % f)
    check(f.get("display") == "%dx%d" % (width, height) and f.get("frame") == full and f.get("client") == full,
          "frame and client area on a %dx%d display: %s" % (width, height, f))
    style = int(f.get("style", "0"), 16)
    check(style & BORDER_MASK == BORDER_NONE and not style & DECORATIONS and f.get("shown") == "1",
          "frame style 0x%x, shown %s" % (style, f.get("shown")))
    check(viewable_windows() == [(0, 0, width, height)], "windows on the display: %s" % viewable_windows())
    check_shell_ended("probe stopped by SIGTERM", p, p.finish(stop=True))

    p = Process(probe, name="probe-close", VTX_PROBE_CLOSE_AFTER="3")
    rc = p.finish(timeout=20)
    check(p.line(r"^probe: ticks 100ms=3 1s=0 ", timeout=1), "the probe did not close its frame after 3 ticks")
    check_shell_ended("probe closing its frame", p, rc)

    if program:
        p = Process(program, name="program")
        deadline = time.time() + 20
        while time.time() < deadline and not (SETTINGS_LINE in p.console() and "Status:" in p.console()):
            time.sleep(0.1)
        time.sleep(0.5)
        check(viewable_windows() == [(0, 0, width, height)], "windows of the program: %s" % viewable_windows())
        check_shell_ended("program stopped by SIGTERM", p, p.finish(stop=True))


def command_line(probe):
    for n, (args, special) in enumerate(COMMAND_LINES):
        locale = {"LANG": "C", "LC_ALL": "C"} if any("\u00e9" in a for a in args if isinstance(a, str)) else {}
        p = Process(probe, args, "args%d" % n, VTX_PROBE_CLOSE_AFTER="1", **locale)
        got = fields(p.line(r"^probe: activated")).get("special")
        rc = p.finish(timeout=20)
        check(got == str(special) and rc == 0, "arguments %r: special command %s (expected %d), exit status %s"
              % (args, got, special, rc))


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--probe", required=True)
    parser.add_argument("--program")
    parser.add_argument("--inside", action="store_true")
    parser.add_argument("group", choices=["startup", "command_line"])
    a = parser.parse_args()
    probe, program = os.path.abspath(a.probe), a.program and os.path.abspath(a.program)
    if a.inside:
        if not os.environ.get("ROOT"):
            sys.exit("run inside tools/instrument-sandbox")
        os.environ["HOME"] = "/home/vtx"
        for name in ("FactoryQC.vtx", "settings.vtx", "settings.lmo", "factory.lmo"):
            path = os.path.join("/home/vtx/Code", name)
            if os.path.lexists(path):
                os.remove(path)  # in the sandbox's overlay: a file of the host must not show through
        start_up(probe, program) if a.group == "startup" else command_line(probe)
        sys.exit(1 if failures else 0)
    status = 0
    for screen in ["1024x768x24", "800x600x24"] if a.group == "startup" else ["1024x768x24"]:
        print("--- %s on a %s display" % (a.group, screen), flush=True)
        cmd = [SANDBOX, "--bare", "--timeout", "240", "--", WITH_XVFB, sys.executable, os.path.abspath(__file__),
               "--inside", "--probe", probe] + (["--program", program] if program else []) + [a.group]
        status = status or subprocess.run(cmd, env=dict(os.environ, VTX_SCREEN=screen)).returncode
    sys.exit(status)


if __name__ == "__main__":
    main()
