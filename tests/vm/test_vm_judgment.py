#!/usr/bin/python3
"""The virtual instrument's host side without a guest: which steps it cuts at, and how it judges
what a boot after a cut reports (the power-loss promises, the file system, the started build)."""

import base64
import hashlib
import os
import sys
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "tools", "vm"))
import vm  # noqa: E402

CODE = "/home/vtx/Code/"


def f(data, mode=0o644):
    e = dict(type="file", mode=mode, uid=1000, gid=1000, size=len(data), sha256=hashlib.sha256(data).hexdigest())
    if len(data) <= vm.BUILD_SIZE // 4:
        e["data"] = base64.b64encode(data).decode()
    return e


OLD, NEW = vm.application_build("old"), vm.application_build("new")
STICK = vm.stick_files()
BEFORE = {CODE + "Application": f(OLD, 0o755), CODE + "NEW/Application": f(NEW), CODE + "instrument.log": f(vm.LOG_BEFORE),
          "/media/usb/update/zip": f(STICK["update/zip"]), "/media/usb/jfonts.tgz": f(STICK["jfonts.tgz"]),
          "/media/usb/instrument.log": f(STICK["instrument.log"])}
LINE = b"11/26/2026 03:34 AM no zip file on USB\r\n"


def state(changes, app="0 VTX-APP build=old", fsck="0"):
    files = dict(BEFORE, **changes)
    return dict(files={p: e for p, e in files.items() if e}, app=app, fsck_status=fsck)


class Judgment(unittest.TestCase):
    def judge(self, changes, flushed=0, **kw):
        log_at_end = vm.re.sub(rb"[0-9]", b"D", vm.LOG_BEFORE + LINE * 3)
        return vm.judged(state(changes, **kw), dict(files=BEFORE), log_at_end, False, flushed)

    def test_an_untouched_instrument_keeps_every_promise(self):
        self.assertEqual(self.judge({}), [])

    def test_the_installed_build_whole_and_started_keeps_them(self):
        self.assertEqual(self.judge({CODE + "Application": f(NEW, 0o755), CODE + "NEW/Application": None,
                                     CODE + "instrument.log": f(vm.LOG_BEFORE + LINE)}, app="0 VTX-APP build=new"), [])

    def test_a_log_grown_by_zeros_keeps_no_flushed_line_and_no_more_than_one(self):
        # Zeros in place of the line being written: a cut during its write, before its flush.
        self.assertEqual(self.judge({CODE + "instrument.log": f(vm.LOG_BEFORE + bytes(16))}), [])
        broken = self.judge({CODE + "instrument.log": f(vm.LOG_BEFORE + bytes(16))}, flushed=1)
        self.assertEqual(broken, ["the instrument's log holds every line flushed before the cut (1)"])
        broken = self.judge({CODE + "instrument.log": f(vm.LOG_BEFORE + bytes(2 * len(LINE)))})
        self.assertEqual(len(broken), 1)
        self.assertIn("zero bytes end the instrument's log only in place of one line", broken[0])

    def test_a_torn_application_an_unclean_disk_and_the_wrong_build_are_each_named(self):
        broken = self.judge({CODE + "Application": f(NEW[:4096], 0o755)}, app="0 VTX-APP build=new", fsck="4")
        self.assertTrue(any(b.startswith("Application is the old or the new build") for b in broken), broken)
        self.assertTrue(any(b.startswith("e2fsck -fn is clean") for b in broken), broken)
        self.assertEqual(self.judge({}, app="0 VTX-APP build=new"),
                         ["the application starts and is the build its file holds: '0 VTX-APP build=new'"])


class CutPlan(unittest.TestCase):
    def test_every_name_change_flush_and_log_line_with_the_step_after_and_three_writes_of_a_copy(self):
        ops = [("write", CODE + ".vtx-partial-copy")] * 7 + [("fsync", CODE + ".vtx-partial-copy"),
               ("rename", CODE + "Application"), ("write", CODE + "instrument.log"), ("write", CODE + "instrument.log"),
               ("write", "/media/usb/.vtx-partial-copy"), ("privileged", "reboot")]
        steps = [dict(n=i + 1, op=op, path=path) for i, (op, path) in enumerate(ops)]
        self.assertEqual(vm.chosen_cuts(steps), [1, 4, 7, 8, 9, 10, 11, 12, 13])


if __name__ == "__main__":
    unittest.main()
