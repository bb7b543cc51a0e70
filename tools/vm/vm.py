#!/usr/bin/python3
"""The virtual instrument's host side: boots the cached image with qemu-system-i386, talks to the
guest over its second serial port (the cut-point channel: tools/vm/cutpoint.c), kills the machine
at chosen steps or moments and judges what the next boot finds with the promises of the power-loss
checks (tools/harness/promises.py, `broken`), so that both check one list.

    vm.py probe | setup --deb DEB | e2e | trials [--count N] [--seed S] [--random N] [--cuts LIST]

Every phase writes into WORK (VTX_VM_WORK, default CACHE/work) and prints one JSON line per boot or
trial; a failure is one line "virtual-instrument: STEP: what" on standard error, exit status 1.
"""
import argparse
import base64
import glob
import json
import os
import random
import re
import select
import shutil
import signal
import socket
import subprocess
import sys
import threading
import time

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(REPO, "tools"))

CACHE = os.environ.get("VTX_VM_CACHE", "/var/cache/vtx-vm")
WORK = os.environ.get("VTX_VM_WORK", os.path.join(CACHE, "work"))
BASE, KERNEL, INITRD = (os.path.join(CACHE, n) for n in ("base.img", "vmlinuz", "initrd.img"))
# The installed instrument: a link to the newest setup's image; a failing trial's disk lies over the
# image of its own setup, which is kept while such a disk refers to it.
INSTALLED = os.path.join(CACHE, "installed.img")
STICK = os.path.join(CACHE, "stick.img")
# The instrument's read-only root image (/mnt/root-ro), a disk of its own: the operating-system
# update remounts it writable and repairs the runtime link there.
ROOT_RO = os.path.join(CACHE, "root-ro.img")
WRONG_LINK = "/usr/lib/i386-linux-gnu/libstdc++.so.6.0.21"
PLAN = os.path.join(CACHE, "steps.json")  # the steps of the uncut update, from the e2e run
MEMORY = os.environ.get("VTX_VM_MEMORY", "256")
# Bounds of every wait, in seconds under TCG; KVM keeps them.
BOOT_LIMIT = int(os.environ.get("VTX_VM_BOOT_LIMIT", "180"))
RUN_LIMIT = int(os.environ.get("VTX_VM_RUN_LIMIT", "600"))
BUILD_SIZE = 1024 * 1024
# The instrument's log as the power-loss runs start it: this run's first line crosses a page boundary.
LOG_BEFORE = b"line of an earlier run\r\n" * 170  # each build of the application: copies span many writes


class Failure(Exception):
    pass


def fail(step, what):
    raise Failure("%s: %s" % (step, what))


def application_build(name):
    """A build of the instrument's application: says which it is when started, padded to size."""
    head = b"#!/bin/sh\necho 'VTX-APP build=%s'\nexit 0\n" % name.encode()
    pad = b"# padding of the %s build\n" % name.encode()
    return head + pad * ((BUILD_SIZE - len(head)) // len(pad))


def stick_files():
    """The stick of a full update, as the power-loss runs have it: auxiliary file, font package, the
    runtime the operating-system update copies, an older log of the log's name."""
    from harness import sandbox as sandbox_run
    return {"update/zip": b"auxiliary data\n" * 1000,
            "update/libstdc++.so.6.0.22": sandbox_run.runtime_library() + bytes(38000),
            "jfonts.tgz": sandbox_run.package(("jfonts/ipag.ttf", b"stand-in font\n")),
            "instrument.log": b"older log\r\n"}


def run(*command, **kw):
    return subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **kw)


def job_disk(folder, phase, files=None):
    """The small read-only disk (/dev/vdc) with the guest's job script, its phase and its files."""
    jobs = os.path.join(folder, "job")
    shutil.rmtree(jobs, ignore_errors=True)
    os.makedirs(jobs)
    shutil.copy(os.path.join(HERE, "job.sh"), os.path.join(jobs, "job"))
    shutil.copy(os.path.join(HERE, "collect.py"), os.path.join(jobs, "collect.py"))
    with open(os.path.join(jobs, "phase"), "w") as f:
        f.write(phase + "\n")
    for name, source in (files or {}).items():
        if isinstance(source, bytes):
            with open(os.path.join(jobs, name), "wb") as f:
                f.write(source)
        else:
            shutil.copy(source, os.path.join(jobs, name))
    size = sum(os.path.getsize(os.path.join(jobs, n)) for n in os.listdir(jobs)) // (1 << 20) + 16
    image = os.path.join(folder, "job.img")
    run("mkfs.ext2", "-q", "-F", "-d", jobs, image, "%dM" % size)
    return image


def overlay(folder, name, below=INSTALLED):
    """A disk of its own over the installed image: qcow2 written through, so a killed qemu leaves
    exactly what the guest had sent to its disk."""
    disk = os.path.join(folder, name + ".qcow2")
    run("qemu-img", "create", "-q", "-f", "qcow2", "-b", os.path.realpath(below), "-F", "raw", disk)
    return disk


class Guest:
    """One qemu process: the console in serial.log, the cut-point channel read line by line."""

    def __init__(self, folder, phase, disk, accel, files=None, reboot=False, readonly_root=False, stick=None,
                 root_ro=None):
        self.folder, self.phase, self.lines, self.accel = folder, phase, [], accel
        self.console = os.path.join(folder, "serial-%s.log" % phase)
        self.said = os.path.join(folder, "qemu-%s.log" % phase)
        sock = os.path.join(folder, "cut.sock")
        if os.path.exists(sock):
            os.unlink(sock)
        fmt = "qcow2" if disk.endswith(".qcow2") else "raw"
        if stick is None and not os.path.exists(STICK):
            make_stick(STICK)
        if root_ro is None and not os.path.exists(ROOT_RO):
            make_root_ro(ROOT_RO)
        append = ("root=/dev/vda %s console=ttyS0,115200 init=/sbin/vtx-init loglevel=4 fsck.mode=skip "
                  "panic=-1" % ("ro" if readonly_root else "rw"))
        command = ["nice", "-n", "10", "qemu-system-i386", "-nodefaults", "-no-user-config", "-display", "none",
                   "-accel", accel, "-m", MEMORY, "-smp", "1", "-rtc", "base=utc",
                   "-kernel", KERNEL, "-initrd", INITRD, "-append", append,
                   "-drive", "file=%s,format=%s,if=virtio,cache=writethrough" % (disk, fmt),
                   "-drive", "file=%s,format=raw,if=virtio,cache=writethrough" % (stick or STICK),
                   "-drive", "file=%s,format=raw,if=virtio,readonly=on" % job_disk(folder, phase, files),
                   "-drive", "file=%s,format=raw,if=virtio,cache=writethrough" % (root_ro or ROOT_RO),
                   "-chardev", "file,id=console,path=" + self.console, "-serial", "chardev:console",
                   "-chardev", "socket,id=cut,path=%s,server=on,wait=on" % sock, "-serial", "chardev:cut"]
        if not reboot:
            command.append("-no-reboot")
        self.started = time.monotonic()
        with open(self.said, "wb") as said:
            self.qemu = subprocess.Popen(command, stdout=said, stderr=subprocess.STDOUT, start_new_session=True)
        self.channel = socket.socket(socket.AF_UNIX)
        while True:
            try:
                self.channel.connect(sock)
                break
            except OSError:
                if self.qemu.poll() is not None or time.monotonic() - self.started > 30:
                    self.kill()
                    fail(phase, "qemu did not start: %s" % self.qemu_said())
                time.sleep(0.05)
        self.buffer = b""

    def qemu_said(self):
        with open(self.said, errors="replace") as f:
            lines = f.read().strip().splitlines()
        errors = [line for line in lines if "error" in line.lower()]
        return (errors or lines or ["nothing"])[-1 if not errors else 0]

    def elapsed(self):
        return round(time.monotonic() - self.started, 1)

    def kill(self):
        if self.qemu.poll() is None:
            os.killpg(self.qemu.pid, signal.SIGKILL)
        self.qemu.wait()

    def answer(self):
        self.channel.sendall(b"GO\n")

    def events(self, limit, what="came to no end"):
        """(seconds since start, line) of each channel line until qemu ends; the wait is bounded."""
        deadline = self.started + limit
        while True:
            while b"\n" in self.buffer:
                line, self.buffer = self.buffer.split(b"\n", 1)
                text = line.decode(errors="replace")
                self.lines.append((self.elapsed(), text))
                yield self.elapsed(), text
            left = deadline - time.monotonic()
            if left <= 0:
                self.kill()
                fail(self.phase, "the guest %s within %d s (serial log kept: %s)" % (what, limit, self.console))
            ready, _, _ = select.select([self.channel], [], [], min(left, 1.0))
            if ready:
                data = self.channel.recv(65536)
                if not data:
                    self.qemu.wait()
                    return
                self.buffer += data
            elif self.qemu.poll() is not None:
                return
            elif self.accel == "kvm" and "KVM internal error" in open(self.said, errors="replace").read():
                # KVM stops the machine and qemu waits: no need to wait out the limit.
                self.kill()
                fail(self.phase, "KVM stopped the guest: %s (serial log kept: %s)" % (self.qemu_said(), self.console))

    def result(self, phase):
        found = [json.loads(text[7:]) for _t, text in self.lines if text.startswith("RESULT ")]
        found = [r for r in found if r["phase"] == phase]
        if not found:
            fail(self.phase, "the guest reported no %s state (serial log kept: %s)" % (phase, self.console))
        return found[-1]


def kernel_panicked(guest):
    try:
        with open(guest.console, errors="replace") as f:
            return "Kernel panic" in f.read()
    except OSError:
        return False


def boot_ready(guest, limit=BOOT_LIMIT):
    """Seconds to the job's start (the READY line)."""
    for t, text in guest.events(limit, "did not boot"):
        if text.startswith("READY"):
            return t
    fail(guest.phase, "the guest did not boot, qemu said %s (serial log kept: %s)" % (guest.qemu_said(), guest.console))


def probe_boot(folder, accel, limit):
    """Seconds to a booted guest, or the failure."""
    try:
        guest = Guest(folder, "probe-" + accel, overlay(folder, "probe-" + accel, BASE), accel)
        t = boot_ready(guest, limit=limit)
        for _ in guest.events(limit):
            pass
        return True, "booted in %.1f s, off in %.1f s" % (t, guest.elapsed())
    except Failure as e:
        return False, str(e)


def kvm_works(folder):
    """A short probe boot under KVM: /dev/kvm may be there and still boot no Linux."""
    folder = os.path.join(WORK, "probe")  # the last probe's logs, kept for a look
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    if not os.access("/dev/kvm", os.R_OK | os.W_OK):
        return False, "no usable /dev/kvm"
    return probe_boot(folder, "kvm", int(os.environ.get("VTX_VM_KVM_PROBE", "20")))


def accelerator(folder):
    choice = os.environ.get("VTX_VM_ACCEL")
    if choice:
        return choice
    ok, why = kvm_works(folder)
    print(json.dumps(dict(step="probe", kvm=ok, detail=why)), flush=True)
    return "kvm" if ok else "tcg"


def judged(state, initial, log_at_end, last, flushed=0):
    """The promises one state breaks, from the power-loss checks, and the boot's own: a clean file
    system, an application that starts and is the build its file holds, and the instrument's log
    holding every line whose flush had ended before the cut (flushed of them)."""
    from harness import promises as p
    from crashstates import Entry

    def tree(files):
        out = {}
        for path, e in files.items():
            if e["type"] == "file":
                data = base64.b64decode(e["data"]) if "data" in e else "sha256:" + e["sha256"]
                if path in (p.LOG, p.STICK_LOG) and isinstance(data, bytes):
                    # Run by run the lines' time stamps differ; their lengths do not.
                    data = re.sub(rb"[0-9]", b"D", data)
            else:
                data = e.get("target")
            out[path] = Entry(e["type"], e["mode"], e["uid"], e["gid"], data)
        return out
    now, was = tree(state["files"]), tree(initial["files"])
    broken = p.broken(now, was, "Application", log_at_end, last)
    before = was[p.LOG].data
    lines = log_at_end[len(before):].split(b"\r\n")[:flushed]
    if flushed and not now[p.LOG].data.startswith(before + b"".join(line + b"\r\n" for line in lines)):
        broken.append("the instrument's log holds every line flushed before the cut (%d)" % flushed)
    if state.get("fsck_status", "0").strip() != "0":
        broken.append("e2fsck -fn is clean: " + state.get("fsck", "").strip().replace("\n", " | ")[-300:])
    app, held = state.get("app", ""), getattr(now.get(p.APPLICATION), "data", None)
    build = {was[p.APPLICATION].data: "old", was[p.NEW + "Application"].data: "new"}.get(held)
    if not app.startswith("0 VTX-APP build=") or build and "build=" + build not in app:
        broken.append("the application starts and is the build its file holds: %r" % app)
    return broken


def log_of(state):
    from harness import promises as p
    return re.sub(rb"[0-9]", b"D", base64.b64decode(state["files"][p.LOG]["data"]))


def load(name):
    with open(os.path.join(CACHE, name)) as f:
        return json.load(f)


def save(name, value):
    with open(os.path.join(CACHE, name), "w") as f:
        json.dump(value, f)


def make_stick(path):
    run("mkfs.vfat", "-C", "-n", "VTXSTICK", path, "32768")
    env = dict(os.environ, MTOOLS_SKIP_CHECK="1")
    run("mmd", "-i", path, "::update", env=env)
    for name, data in stick_files().items():
        source = path + ".part"
        with open(source, "wb") as f:
            f.write(data)
        run("mcopy", "-i", path, source, "::" + name, env=env)
        os.unlink(source)


def forget_setups(current):
    """Removes the images of earlier setups that no kept trial's disk lies over."""
    used = {current}
    for disk in glob.glob(os.path.join(WORK, "*", "*", "disk.qcow2")):
        info = json.loads(run("qemu-img", "info", "--output=json", disk).stdout)
        used.add(info.get("full-backing-filename") or info.get("backing-filename"))
    for image in glob.glob(os.path.join(CACHE, "installed-*.img")):
        if image not in used and os.path.isfile(image):
            os.unlink(image)


def make_root_ro(path):
    """The root image's runtime folder with the link wrong: every update repairs it."""
    tree = path + ".d"
    shutil.rmtree(tree, ignore_errors=True)
    os.makedirs(tree + "/usr/lib/i386-linux-gnu")
    os.symlink(WRONG_LINK, tree + "/usr/lib/i386-linux-gnu/libstdc++.so.6")
    run("mkfs.ext4", "-q", "-F", "-d", tree, path, "16M")
    shutil.rmtree(tree)


def phase_setup(args, folder, accel):
    """Installs this commit's package in a setup boot and lays out the instrument's state."""
    t0 = time.monotonic()
    made = os.path.join(CACHE, "installed-%d.img" % time.time())
    part = made + ".partial"
    run("cp", "--sparse=always", BASE, part)
    for image, make in ((STICK, make_stick), (ROOT_RO, make_root_ro)):
        if os.path.exists(image):
            os.unlink(image)
        make(image)
    from harness import promises as p
    files = {"vtx-update.deb": args.deb, "Application.old": application_build("old"),
             "Application.new": application_build("new"), "instrument.log": LOG_BEFORE}
    guest = Guest(folder, "setup", part, accel, files)
    ready = boot_ready(guest)
    for _t, text in guest.events(RUN_LIMIT):
        if text.startswith("FAILED"):
            guest.kill()
            fail("setup", "%s (serial log kept: %s)" % (text, guest.console))
    state = guest.result("setup")
    for path in ("/home/vtx/Code/update", p.APPLICATION, p.NEW + "Application", p.LOG, p.STICK_LOG):
        if path not in state["files"]:
            fail("setup", "%s is missing after the setup boot (serial log kept: %s)" % (path, guest.console))
    save("initial.json", state)
    os.rename(part, made)
    if os.path.exists(PLAN):  # the steps of another installation
        os.unlink(PLAN)
    os.symlink(os.path.basename(made), INSTALLED + ".new")
    os.rename(INSTALLED + ".new", INSTALLED)
    forget_setups(made)
    out = dict(step="setup", accel=accel, boot_s=ready, total_s=round(time.monotonic() - t0, 1))
    print(json.dumps(out), flush=True)
    return out


def phase_e2e(args, folder, accel):
    """The whole update through the real reboot; the second boot must run the new build."""
    t0 = time.monotonic()
    stick, root_ro = os.path.join(folder, "stick.img"), os.path.join(folder, "root-ro.img")
    shutil.copy(STICK, stick)
    shutil.copy(ROOT_RO, root_ro)
    guest = Guest(folder, "e2e", overlay(folder, "e2e"), accel, reboot=True, stick=stick, root_ro=root_ro)
    steps, marks, apps = [], {}, []
    for t, text in guest.events(RUN_LIMIT):
        word = text.split(" ", 1)[0]
        if word == "STEP":
            _, pid, op, path = (text.split(" ", 3) + [""])[:4]
            steps.append(dict(n=len(steps) + 1, op=op, path=path, t=t))
            guest.answer()
        elif word in ("READY", "UPDATE", "ENDED"):
            marks.setdefault(word, []).append(t)
        elif word == "APP":
            apps.append(text[4:])
    guest.qemu.wait()
    if "ENDED" in marks:
        fail("e2e", "the update ended without rebooting (serial log kept: %s)" % guest.console)
    if len(apps) != 2 or "build=old" not in apps[0] or "build=new" not in apps[1]:
        fail("e2e", "the boots started %r, expected the old build, then after the reboot the new one (serial log "
             "kept: %s)" % (apps, guest.console))
    state = guest.result("second-boot")
    initial = load("initial.json")
    log = log_of(state)
    broken = judged(state, initial, log, True)
    if broken or b"Application started" not in log:
        fail("e2e", "after the reboot: %s (serial log kept: %s)" % ("; ".join(broken) or "no log line", guest.console))
    save("steps.json", dict(steps=steps, log_at_end=base64.b64encode(log).decode(),
                            update_at=marks["UPDATE"][0], first_boot_s=marks["READY"][0]))
    out = dict(step="e2e", accel=accel, first_boot_s=marks["READY"][0], update_started_s=marks["UPDATE"][0],
               reboot_request_s=steps[-1]["t"] if steps else None, second_boot_ready_s=marks["READY"][-1],
               total_s=round(time.monotonic() - t0, 1), steps=len(steps), apps=apps)
    print(json.dumps(out), flush=True)
    return out


def chosen_cuts(steps):
    """Every step that can matter, once: all name changes and flushes and the steps right after
    them, each log append, the reboot request, and of each copy's run of writes the first, the
    middle and the last."""
    chosen, runs = set(), {}
    for i, s in enumerate(steps):
        if s["op"] == "write" and not s["path"].endswith(".log"):
            runs.setdefault((s["path"], _run_id(steps, i)), []).append(s["n"])
        else:
            chosen.add(s["n"])
            if s["op"] in ("rename", "fsync", "fdatasync", "sync", "syncfs", "unlink", "rmdir") and i + 1 < len(steps):
                chosen.add(steps[i + 1]["n"])
    for ns in runs.values():
        chosen.update((ns[0], ns[len(ns) // 2], ns[-1]))
    return sorted(chosen)


def table_cuts(steps):
    """One cut for each point of the service engineer's power-cut table (docs/service/power-cuts.md),
    found in the recorded steps, and the log's line after the backup with its flush, where a disk
    that commits a file's size ahead of its data would leave zero bytes: {point: step number}."""
    def first(op, path, after=0):
        return next((s["n"] for s in steps if s["n"] > after and s["op"] == op and s["path"] == path), None)

    def middle_write(path, after=0):
        run = []
        for s in steps:
            if s["n"] > after and s["op"] == "write" and s["path"] == path:
                run.append(s["n"])
            elif run:
                break
        return run[len(run) // 2] if run else None
    code, old, partial = "/home/vtx/Code", "/home/vtx/Code/Old", "/.vtx-partial-copy"
    backup = first("rename", old + "/" + next((s["path"] for s in steps if s["path"].startswith(old + "/Application_")),
                                              "")[len(old) + 1:])
    log_line = first("write", code + "/instrument.log", backup or 0)
    privileged = [s for s in steps if s["op"] == "privileged"]
    points = {
        "start": steps[0]["n"] if steps else None,
        "auxiliary_copy": middle_write(code + partial),
        "os_update_copy": next((s["n"] for s in privileged if s["path"].startswith("cp ")), None),
        "os_update_link": next((s["n"] for s in privileged if s["path"].startswith("ln ")), None),
        "backup_copy": middle_write(old + partial),
        "library_check": first("unlink", code + partial, backup or 0),
        "install_copy": middle_write(code + partial, backup or 0),
        "install_done": first("rename", code + "/Application"),
        "font_copy": middle_write("/home/vtx" + partial),
        "font_unpack": first("mkdir", "/home/vtx/jfonts"),
        "log_copy": middle_write("/media/usb" + partial),
        "reboot": next((s["n"] for s in privileged if s["path"] == "reboot"), None),
        "log_line": log_line,
        "log_line_flush": next((s["n"] for s in steps if log_line and s["n"] > log_line
                                and s["op"] in ("fsync", "fdatasync") and s["path"] == code + "/instrument.log"), None),
    }
    return points


def _run_id(steps, i):
    while i > 0 and steps[i - 1]["op"] == "write" and steps[i - 1]["path"] == steps[i]["path"]:
        i -= 1
    return i


def describe(step):
    return "%s %s" % (step["op"], step["path"]) if step else "no step"


def trial(folder, accel, plan, initial, cut=None, moment=None):
    """One power cut (before step `cut`, or `moment` seconds after the update started), the next
    boot's check and the promises' judgment."""
    t0 = time.monotonic()
    os.makedirs(folder, exist_ok=True)
    stick, root_ro = os.path.join(folder, "stick.img"), os.path.join(folder, "root-ro.img")
    shutil.copy(STICK, stick)
    shutil.copy(ROOT_RO, root_ro)
    disk = overlay(folder, "disk")
    guest = Guest(folder, "trial", disk, accel, stick=stick, root_ro=root_ro)
    n, at, timer, flushes = 0, None, None, []
    for _t, text in guest.events(RUN_LIMIT):
        if text.startswith("UPDATE") and moment is not None:
            timer = threading.Timer(moment, guest.kill)
            timer.start()
        if text.startswith("STEP"):
            n += 1
            _, _pid, op, path = (text.split(" ", 3) + [""])[:4]
            if n == cut:
                at = dict(n=n, op=op, path=path)
                break
            flushes.append(op in ("fsync", "fdatasync") and path == "/home/vtx/Code/instrument.log")
            try:
                guest.answer()
            except OSError:  # the moment came
                break
    if timer:
        timer.cancel()
    guest.kill()
    cut_s = guest.elapsed()
    if cut is not None and at is None:
        fail("trial", "the update ended before step %d (%d steps; serial log kept: %s)" % (cut, n, guest.console))
    if at is None:
        # Killed at the moment, or stopped by itself (the reboot request passed): after step n.
        at = dict(n=n + 1, op="moment", path="%s s after the update's start" % moment)
    expected = plan["steps"][at["n"] - 1] if 0 < at["n"] <= len(plan["steps"]) else None
    for attempt in (1, 2):
        checker = Guest(folder, "check", disk, accel, stick=stick, readonly_root=True, root_ro=root_ro)
        for _ in checker.events(BOOT_LIMIT + RUN_LIMIT // 4):
            pass
        # Under TCG the guest's kernel falls over now and then (a double fault, about once in 150
        # boots) before it reports: that says nothing of the cut, and the check only reads, so boot
        # it once more. A second fall is a failure.
        if attempt == 1 and not any(t.startswith("RESULT ") for _t, t in checker.lines) and kernel_panicked(checker):
            shutil.copy(checker.console, checker.console + ".first")
            continue
        break
    state = checker.result("check")
    # The reboot was asked for once its step was announced: a cut there; a moment only after it (at
    # a moment, step n is the one not yet announced, and the sync before it may still be running).
    last = (moment is None and expected == plan["steps"][-1]) or at["n"] > len(plan["steps"])
    # A step answered has ended once the next is announced; at a moment the last may still run.
    flushed = sum(flushes if cut is not None else flushes[:-1])
    broken = judged(state, initial, base64.b64decode(plan["log_at_end"]), last, flushed)
    if moment is None and expected and (expected["op"], expected["path"]) != (at["op"], at["path"]):
        broken.append("the cut step is the planned one: planned %s, got %s" % (describe(expected), describe(at)))
    out = dict(cut=at, cut_s=cut_s, check_s=checker.elapsed(), total_s=round(time.monotonic() - t0, 1),
               application=state.get("app"), fsck=state.get("fsck_status", "").strip(), broken=broken,
               log_size=state["files"].get("/home/vtx/Code/instrument.log", {}).get("size"))
    if broken:
        out["kept"] = folder
        shutil.rmtree(os.path.join(folder, "job"), ignore_errors=True)
        with open(os.path.join(folder, "state.json"), "w") as f:
            json.dump(state, f)
    else:
        shutil.rmtree(folder, ignore_errors=True)
    return out


def phase_trials(args, folder, accel):
    plan, initial = load("steps.json"), load("initial.json")
    steps = plan["steps"]
    if args.table:
        points = table_cuts(steps)
        missing = [name for name, n in points.items() if n is None]
        if missing:
            sys.stderr.write("virtual-instrument: trials: the recorded update has no step for %s\n" % ", ".join(missing))
            return 1
        cuts = sorted(set(points.values()))
    else:
        cuts = [int(c) for c in args.cuts.split(",")] if args.cuts else chosen_cuts(steps)
    rng = random.Random(args.seed)
    if args.count is not None and args.count < len(cuts):
        cuts = sorted(rng.sample(cuts, args.count))
    # Between the first step and the reboot request: before the first step the update only waits.
    first, last = (steps[0]["t"] - plan["update_at"], steps[-1]["t"] - plan["update_at"]) if steps else (0, 30)
    moments = [round(rng.uniform(first, last), 2) for _ in range(args.random)]
    print(json.dumps(dict(step="trials", seed=args.seed, steps=len(steps), cuts=cuts, moments=moments)), flush=True)
    failed, tally = 0, {}
    for i, cut in enumerate(cuts + [None] * len(moments)):
        moment = None if cut is not None else moments[i - len(cuts)]
        name = "cut-%03d" % cut if cut is not None else "moment-%d" % (i - len(cuts))
        out = trial(os.path.join(folder, name), accel, plan, initial, cut=cut, moment=moment)
        out.update(trial=name, seed=args.seed, planned=describe(steps[cut - 1]) if cut else None)
        failed += bool(out["broken"])
        for promise in out["broken"]:
            tally.setdefault(promise[:120], []).append(name)
        print(json.dumps(out), flush=True)
    print(json.dumps(dict(step="trials", trials=len(cuts) + len(moments), failed=failed, seed=args.seed, broken=tally)),
          flush=True)
    return failed


def tidy(folder):
    """The work folder of a run that went through, but the failing trials it keeps."""
    for name in os.listdir(folder):
        if not name.startswith(("cut-", "moment-")):
            path = os.path.join(folder, name)
            shutil.rmtree(path) if os.path.isdir(path) else os.unlink(path)
    if not os.listdir(folder):
        os.rmdir(folder)


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("phase", choices=["probe", "setup", "e2e", "trials"])
    ap.add_argument("--deb")
    ap.add_argument("--tcg", action="store_true", help="probe: when KVM fails, time a TCG boot")
    ap.add_argument("--count", type=int, help="this many of the chosen cut points, drawn with the seed")
    ap.add_argument("--seed", type=int, default=None)
    ap.add_argument("--random", type=int, default=0, help="this many cuts at random moments too")
    ap.add_argument("--cuts", help="cut before these steps (numbers of the e2e run's steps)")
    ap.add_argument("--table", action="store_true", help="one cut at each point of the power-cut table, and the "
                    "log's line after the backup with its flush")
    args = ap.parse_args()
    if args.seed is None:
        args.seed = random.SystemRandom().randrange(1 << 31)
    folder = os.path.join(WORK, "%s-%d" % (args.phase, os.getpid()))
    os.makedirs(folder, exist_ok=True)
    needs = {"e2e": [INSTALLED, "setup"], "trials": [PLAN, "e2e"]}.get(args.phase)
    if needs and not os.path.exists(needs[0]):
        sys.stderr.write("virtual-instrument: %s: %s is missing; run the %s step first\n" % (args.phase, needs[0], needs[1]))
        return 1
    try:
        accel = accelerator(folder) if args.phase != "probe" else None
        if args.phase == "probe":
            ok, why = kvm_works(folder)
            print(json.dumps(dict(step="probe", kvm=ok, detail=why)), flush=True)
            if not ok and args.tcg:
                ok, why = probe_boot(folder, "tcg", BOOT_LIMIT)
                print(json.dumps(dict(step="probe", tcg=ok, detail=why)))
                if not ok:
                    return 1
        elif args.phase == "setup":
            phase_setup(args, folder, accel)
        elif args.phase == "e2e":
            phase_e2e(args, folder, accel)
        else:
            status = 1 if phase_trials(args, folder, accel) else 0
            tidy(folder)
            return status
        tidy(folder)
    except Failure as e:
        sys.stderr.write("virtual-instrument: %s\n" % e)
        return 1
    except (OSError, ValueError, KeyError, subprocess.CalledProcessError) as e:
        detail = getattr(e, "output", b"") or b""
        sys.stderr.write("virtual-instrument: %s: %s %s %s (work folder kept: %s)\n" % (
            args.phase, type(e).__name__, e, detail.decode(errors="replace").strip()[-200:], folder))
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
