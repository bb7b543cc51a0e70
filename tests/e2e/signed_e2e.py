"""Signed updates, as the instrument's user: with the maker's key in the root image, a stick signed
by it installs and leaves its manifest in the code folder; every other stick stops before anything
changes but the log. Without a key every other scenario runs as it always did."""

import os

from harness.checks import check
from harness.instrument import KEYS, OS_COMMANDS, SUCCESS, provisioned, signed
from harness.sandbox import gone, package, put, runtime_library
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
HEADER = b"vtx-update-manifest 1\nproduct korvalin\nrelease 2.1\n"

row("update", "a stick and build signed by the maker's key: installed, its manifest kept", SUCCESS,
    [provisioned("maker"), *EXTRAS, signed()], os_update=True, prefix="signed_", layout=["--link", "wrong"],
    more=lambda run: (recorded(run), log_line("signed release 2.1 accepted")(run)))
row("key_change_over", "two keys provisioned during a change-over, the stick signed by the new one", SUCCESS,
    [provisioned("maker", "other"), signed(by="other")], prefix="signed_",
    more=log_line("release 2.1 recorded in /home/vtx/Code/release.manifest"))
refused("no_manifest", "no manifest on the stick", "update not signed: no manifest: " + STICK + "/update/manifest")
refused("no_signature", "a manifest without its signature", "update not signed: no signature: "
        + STICK + "/update/manifest.minisig", signed(), gone(STICK + "/update/manifest.minisig"))
refused("other_key", "a stick signed by another key", "update not signed: signed by another key: "
        + STICK + "/update/manifest.minisig", signed(by="other"))
refused("byte_changed", "one byte of the new build changed after signing", "update not signed: differs from the "
        "manifest: " + NEW + "/Application", signed(),
        lambda run: run.write(NEW + "/Application", bytes([run.read(NEW + "/Application")[0] ^ 1])
                              + run.read(NEW + "/Application")[1:]))
refused("not_listed", "an auxiliary file put on the stick after signing", "update not signed: not listed: "
        + STICK + "/update/zip", signed(), put(STICK + "/update/zip", b"aux\n"))
refused("listed_missing", "a listed file taken off the stick", "update not signed: listed but missing: "
        + RUNTIME, put(RUNTIME, runtime_library()), signed(), gone(RUNTIME))
refused("other_product", "a stick signed for another product", "update not signed: for another product, pellam: "
        + STICK + "/update/manifest", signed(product="pellam"))
refused("line_too_long", "a manifest line of 5000 bytes", "update not signed: manifest line 4 too long: "
        + STICK + "/update/manifest", signed(text=HEADER + b"1 " + b"0" * 64 + b" " + b"x" * 4930 + b"\n"))
refused("size_too_large", "a listed size that does not fit", "update not signed: manifest line 4 size too large: "
        + STICK + "/update/manifest", signed(text=HEADER + b"9999999999999999 " + b"0" * 64 + b" NEW/x\n"))
refused("signature_cut", "a signature cut short", "update not signed: malformed signature: "
        + STICK + "/update/manifest.minisig", signed(),
        lambda run: run.write(STICK + "/update/manifest.minisig", run.read(STICK + "/update/manifest.minisig")[:120]))
refused("build_link", "a signed build with a link in it", "update not signed: not a regular file: " + NEW
        + "/Application.1", signed(), link(NEW + "/Application.1", "Application"))
refused("bad_key_file", "a key file on the instrument that is not a key", "update key refused: not a key: "
        "/etc/vtx/update-keys/bad.pub", put(KEYS + "bad.pub", b"untrusted comment: none\nnot a key\n"),
        signed())
