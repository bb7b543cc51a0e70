"""Signed updates, as the instrument's user: with the maker's key in the root image, a stick signed
by it installs and leaves its manifest in the code folder; a signed build holding a link stops before
anything changes but the log. Every other refusal is a row of the update's outcome table
(tests/update/UpdateOutcomes_test.cpp). Without a key every other scenario runs as it always did."""

import os

from harness.checks import check
from harness.instrument import OS_COMMANDS, SUCCESS, provisioned, signed
from harness.sandbox import package, put, runtime_library
from hostile_e2e import CODE, NEW, RUNTIME, STICK, link, log_line, row

NOT_SIGNED = "Update not signed for this instrument... (19)"


def recorded(run):
    check(run.read(CODE + "/release.manifest") == run.read(STICK + "/update/manifest")
          and run.read(CODE + "/release.manifest.minisig") == run.read(STICK + "/update/manifest.minisig"),
          "the accepted manifest was not kept in the code folder")
    check(run.privileged() == [OS_COMMANDS[0], "cp /home/vtx/.vtx-checked-runtime " + OS_COMMANDS[1].split()[2],
                               OS_COMMANDS[2], "reboot"], "privileged commands %r" % run.privileged())
    check(not os.path.lexists(run.path("/home/vtx/.vtx-checked-runtime")), "the checked runtime was left behind")


def refused(name, doc, cause, *setup, keys=("maker",)):
    row(name, doc, NOT_SIGNED, [provisioned(*keys), *setup], prefix="signed_", only_log=True,
        more=log_line("FAIL - " + cause))


EXTRAS = [put(STICK + "/update/zip", b"aux\n"), put(STICK + "/jfonts.tgz", package(("jfonts/a.ttf", b"font\n"))),
          put(RUNTIME, runtime_library())]

row("update", "a stick and build signed by the maker's key: installed, its manifest kept", SUCCESS,
    [provisioned("maker"), *EXTRAS, signed()], os_update=True, prefix="signed_", layout=["--link", "wrong"],
    more=lambda run: (recorded(run), log_line("signed release 2.1 accepted")(run)))
refused("build_link", "a signed build with a link in it", "update not signed: not a regular file: " + NEW
        + "/Application.1", signed(), link(NEW + "/Application.1", "Application"))
