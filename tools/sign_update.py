#!/usr/bin/python3
"""Signs a service stick for instruments that install only what the maker signed, and checks a
signed stick (docs/service/signed-updates.md). The stick is a folder holding the stick's files.

    tools/sign-update --key SECKEY --release R [--build DIR] [--product korvalin] STICKDIR
        writes STICKDIR/update/manifest (the stick's update/zip, jfonts.tgz and
        update/libstdc++.so.6.0.22 where present; with --build every file of the new build as
        NEW/<path>), then has minisign sign it into STICKDIR/update/manifest.minisig (minisign
        asks for the key's password, unless the key has none)
    tools/sign-update --check PUBKEY [--build DIR] [--product korvalin] STICKDIR
        verifies the signature with PUBKEY and hashes every listed file again; prints what
        differs, exit status 1 when something does

Exit status 2 when the stick cannot be signed or checked at all (a link where a file belongs, no
minisign). The end-to-end tests import manifest_text and sign to sign their simulated sticks.
"""

import argparse
import base64
import binascii
import hashlib
import os
import re
import shutil
import stat
import subprocess
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from stick_check import AUXILIARY, FONTS, RUNTIME  # noqa: E402

PRODUCT = "korvalin"
MANIFEST = "update/manifest"
SIGNATURE = MANIFEST + ".minisig"
STICK_FILES = (AUXILIARY, FONTS, RUNTIME)
BUILD = b"NEW/"  # the new build's files, as the instrument has them in /home/vtx/Code/NEW
HEADER = b"vtx-update-manifest 1"
NAME = re.compile(rb"[A-Za-z0-9._+~-]{1,64}\Z")
SIZE = re.compile(rb"(0|[1-9][0-9]{0,15}) ([0-9a-f]{64}) (.*)\Z", re.S)
LARGEST_FILE, LONGEST_PATH, LONGEST_LINE = 2 ** 53, 1024, 4096


class Refused(Exception):
    pass


def _kind(path):
    """None for a regular file, else what it is instead."""
    try:
        mode = os.lstat(path).st_mode
    except OSError:
        return "missing"
    return None if stat.S_ISREG(mode) else "a link" if stat.S_ISLNK(mode) else \
        "a folder" if stat.S_ISDIR(mode) else "not a regular file"


def path_fault(path):
    """Why path (bytes) cannot be a manifest's path, or None."""
    if not path or len(path) > LONGEST_PATH:
        return "is empty or longer than %d bytes" % LONGEST_PATH
    if any(b < 0x20 or b == 0x7f for b in path):
        return "holds a control character"
    if path.startswith(b"/"):
        return "begins with \"/\""
    if any(part in (b"", b".", b"..") for part in path.split(b"/")):
        return "has an empty, \".\" or \"..\" component"
    return None


def stick_files(stick):
    """[(path, file, kind)] of the stick's files the update reads, where present."""
    found = []
    if os.path.islink(os.path.join(stick, "update")):
        found.append((b"update", os.path.join(stick, "update"), "a link"))
        return found
    for name in sorted(STICK_FILES):
        full = os.path.join(stick, name)
        if os.path.lexists(full):
            found.append((name.encode(), full, _kind(full)))
    return found


def build_files(build):
    """[(NEW/path, file, kind)] of everything under the build folder but its folders."""
    found = []
    def unreadable(exc):
        raise exc
    for folder, dirs, names in os.walk(build, onerror=unreadable):
        for name in sorted(dirs + names):
            full = os.path.join(folder, name)
            kind = _kind(full)
            if kind == "a folder":
                continue
            found.append((BUILD + os.fsencode(os.path.relpath(full, build)), full, kind))
    return found


def sha256(path):
    digest = hashlib.sha256()
    with open(path, "rb") as f:
        for block in iter(lambda: f.read(1 << 20), b""):
            digest.update(block)
    return digest.hexdigest()


def format_manifest(product, release, entries):
    """The manifest's bytes, from [(path bytes, size, sha256 hex)] in any order."""
    lines = [HEADER, b"product " + product.encode(), b"release " + release.encode()]
    lines += [b"%d %s %s" % (size, digest.encode(), path) for path, size, digest in sorted(entries)]
    return b"".join(line + b"\n" for line in lines)


def manifest_text(stick, build=None, product=PRODUCT, release="1"):
    """The manifest (bytes, as signed) of the stick and, with build, of the new build in that folder.
    Raises Refused for what a signed update cannot hold: a link, a device, a name the format cannot
    carry, a release or product out of the allowed characters."""
    for what, value in (("product", product), ("release", release)):
        if not NAME.match(value.encode()):
            raise Refused("the %s %r is not 1 to 64 of A-Z a-z 0-9 . _ + ~ -" % (what, value))
    entries = []
    for path, full, kind in stick_files(stick) + (build_files(build) if build else []):
        where = "in the build %s" % build if path.startswith(BUILD) else "on the stick"
        if kind:
            raise Refused("%s (%s) is %s: a signed update holds regular files only" % (os.fsdecode(path), where, kind))
        fault = path_fault(path)
        if fault:
            raise Refused("%r (%s) %s" % (os.fsdecode(path), where, fault))
        size = os.stat(full).st_size
        if size > LARGEST_FILE:
            raise Refused("%s is larger than 2^53 bytes" % os.fsdecode(path))
        entries.append((path, size, sha256(full)))
    return format_manifest(product, release, entries)


def parse_manifest(data):
    """(product, release, {path: (size, sha256)}) of a manifest's bytes; ValueError says why not."""
    if not data.endswith(b"\n"):
        raise ValueError("its last line has no line end" if data else "it is empty")
    lines = [line[:-1] if line.endswith(b"\r") else line for line in data[:-1].split(b"\n")]
    for number, line in enumerate(lines, 1):
        if not line or len(line) > LONGEST_LINE:
            raise ValueError("line %d is %s" % (number, "blank" if not line else "longer than %d bytes" % LONGEST_LINE))
    if lines[0] != HEADER:
        raise ValueError("it does not begin with \"%s\"" % HEADER.decode())
    fields = {}
    for number, key in ((2, b"product"), (3, b"release")):
        line = lines[number - 1] if len(lines) >= number else b""
        if not line.startswith(key + b" ") or not NAME.match(line[len(key) + 1:]):
            raise ValueError("line %d is not \"%s\" and 1 to 64 of A-Z a-z 0-9 . _ + ~ -" % (number, key.decode()))
        fields[key] = line[len(key) + 1:].decode()
    files = {}
    for number, line in enumerate(lines[3:], 4):
        m = SIZE.match(line)
        if not m or int(m.group(1)) > LARGEST_FILE:
            raise ValueError("line %d is not \"<size> <sha256> <path>\"" % number)
        path = m.group(3)
        fault = path_fault(path) or (path in files and "is listed twice")
        if fault:
            raise ValueError("line %d: the path %s" % (number, fault))
        files[path] = (int(m.group(1)), m.group(2).decode())
    return fields[b"product"], fields[b"release"], files


def compare(stick, build, files):
    """What differs between the listed files and the stick (and the build, when given): one text a
    difference; and how many listed files of the new build were not looked at (no build)."""
    problems, unchecked = [], 0
    present = stick_files(stick) + (build_files(build) if build else [])
    for path, _, _ in present:
        if path not in files:
            problems.append("%s is not listed" % os.fsdecode(path))
    for path, (size, digest) in sorted(files.items()):
        if path.startswith(BUILD) and not build:
            unchecked += 1
            continue
        full = os.path.join(build, os.fsdecode(path[len(BUILD):])) if path.startswith(BUILD) else \
            os.path.join(stick, os.fsdecode(path))
        kind, shown = _kind(full), os.fsdecode(path)
        if kind == "missing":
            problems.append("%s is listed but missing" % shown)
        elif kind:
            problems.append("%s is %s, not a regular file" % (shown, kind))
        elif os.stat(full).st_size != size:
            problems.append("%s differs in size: %d bytes listed, %d here" % (shown, size, os.stat(full).st_size))
        elif sha256(full) != digest:
            problems.append("%s differs from its listed SHA-256" % shown)
    return problems, unchecked


def key_id(path, signature=False):
    """minisign's key ID (as it prints it) of a public key file or, with signature, of the key that
    made a signature file, and the key or signature in base64; ValueError when the file is not one. A key file's first line that is
    neither blank nor a comment is the key; a signature has its comments on lines 1 and 3."""
    try:
        with open(path, "rb") as f:
            lines = f.read(8192).splitlines()
    except OSError as exc:
        raise ValueError(exc.strerror)
    if signature:
        line = lines[1] if len(lines) >= 4 and lines[0].startswith(b"untrusted comment:") and \
            lines[2].startswith(b"trusted comment: ") else b""
    else:
        line = next((x for x in lines if x.strip() and not x.startswith(b"untrusted comment:")), b"")
    try:
        blob = base64.b64decode(line.strip(), validate=True)
    except binascii.Error:
        blob = b""
    if len(blob) != (74 if signature else 42) or blob[:2] not in ((b"Ed", b"ED") if signature else (b"Ed",)):
        raise ValueError("not a minisign %s" % ("signature" if signature else "public key"))
    return blob[2:10][::-1].hex().upper(), line.strip().decode()


def minisign():
    found = shutil.which("minisign")
    if not found:
        raise Refused("minisign is not installed (apt-get install minisign)")
    return found


def verify(pubkey, stick):
    """None when minisign accepts the stick's signature of its manifest with the key, else its words.
    The key goes by its line, as the instrument reads it: minisign's own reading wants the comment."""
    proc = subprocess.run([minisign(), "-V", "-P", key_id(pubkey)[1], "-m", os.path.join(stick, MANIFEST),
                           "-x", os.path.join(stick, SIGNATURE)], stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return None if proc.returncode == 0 else " ".join(proc.stdout.decode(errors="replace").split()) or "refused"


def sign(seckey, stick, release, build=None, product=PRODUCT):
    """Writes the stick's manifest and has minisign sign it; returns the manifest's bytes."""
    text, tool = manifest_text(stick, build, product, release), minisign()
    manifest, signature = os.path.join(stick, MANIFEST), os.path.join(stick, SIGNATURE)
    os.makedirs(os.path.dirname(manifest), exist_ok=True)
    if os.path.lexists(signature):  # an old signature must never stand beside a new manifest
        os.remove(signature)
    with open(manifest + ".part", "wb") as f:
        f.write(text)
        f.flush()
        os.fsync(f.fileno())
    os.replace(manifest + ".part", manifest)
    proc = subprocess.run([tool, "-S", "-s", seckey, "-m", manifest, "-x", signature,
                           "-t", "release %s for %s" % (release, product)])
    if proc.returncode != 0:
        raise Refused("minisign did not sign %s (exit status %d): it stays unsigned" % (manifest, proc.returncode))
    return text


def signature_findings(stick, pubkey, build=None, product=PRODUCT):
    """[(kind, text)] in the stick check's terms: whether an instrument holding the key would accept
    the stick's signed manifest, every text beginning with the manifest or signature file's name."""
    found = []
    try:
        mine = key_id(pubkey)[0]
    except ValueError:
        return [("refused", "%s: cannot be checked: %s is not a minisign public key (an instrument with it "
                            "refuses every update)" % (SIGNATURE, pubkey))]
    for name in (MANIFEST, SIGNATURE):
        kind = _kind(os.path.join(stick, name))
        if kind:
            found.append(("refused", "%s: %s" % (name, kind if kind != "missing" else
                                                 "missing: an instrument with update keys needs it")))
    if found:
        return found
    try:
        theirs = key_id(os.path.join(stick, SIGNATURE), signature=True)[0]
    except ValueError as exc:
        return found + [("refused", "%s: %s" % (SIGNATURE, exc))]
    if theirs != mine:
        found.append(("refused", "%s: not signed by this key (signed by key %s, this key is %s)"
                      % (SIGNATURE, theirs, mine)))
    elif shutil.which("minisign"):
        failed = verify(pubkey, stick)
        found += [("refused", "%s: does not verify with this key: %s" % (SIGNATURE, failed))] if failed else []
    else:
        found.append(("note", "%s: minisign is not installed: the signature was not verified" % SIGNATURE))
    try:
        with open(os.path.join(stick, MANIFEST), "rb") as f:
            their_product, release, files = parse_manifest(f.read())
    except ValueError as exc:
        return found + [("refused", "%s: %s" % (MANIFEST, exc))]
    if their_product != product:
        found.append(("refused", "%s: signed for the product %s, not %s" % (MANIFEST, their_product, product)))
    problems, unchecked = compare(stick, build, files)
    found += [("refused", "%s: %s" % (MANIFEST, p)) for p in problems]
    if unchecked:
        found.append(("note", "%s: %d files of the new build not checked (no build given)" % (MANIFEST, unchecked)))
    if not any(kind == "refused" for kind, _ in found):
        found.append(("note", "%s: release %s for %s, %d files, signed by key %s" % (MANIFEST, release, product,
                                                                                     len(files), mine)))
    return found


def main(argv=None):
    parser = argparse.ArgumentParser(prog="tools/sign-update", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    how = parser.add_mutually_exclusive_group(required=True)
    how.add_argument("--key", metavar="SECKEY", help="minisign secret key to sign with")
    how.add_argument("--check", metavar="PUBKEY", help="minisign public key to check a signed stick with")
    parser.add_argument("--release", help="the release the stick carries (with --key)")
    parser.add_argument("--build", metavar="DIR", help="the new build, as it reaches /home/vtx/Code/NEW")
    parser.add_argument("--product", default=PRODUCT, help="the product id (default %(default)s)")
    parser.add_argument("stick", metavar="STICKDIR")
    a = parser.parse_args(argv)
    for folder in filter(None, (a.stick, a.build)):
        if not os.path.isdir(folder) or os.path.islink(folder):
            parser.error("%s is not a folder" % folder)
    try:
        if a.key:
            if not a.release:
                parser.error("--key needs --release")
            files = parse_manifest(sign(a.key, a.stick, a.release, a.build, a.product))[2]
            new = sum(1 for p in files if p.startswith(BUILD))
            print("%s: release %s for %s, %d files on the stick, %d of the new build; signed into %s"
                  % (os.path.join(a.stick, MANIFEST), a.release, a.product, len(files) - new, new, SIGNATURE))
            return 0
        minisign()
        findings = signature_findings(a.stick, a.check, a.build, a.product)
        for kind, text in findings:
            print("%s: %s" % ("differs" if kind == "refused" else kind, text))
        return 1 if any(kind == "refused" for kind, _ in findings) else 0
    except (Refused, OSError) as exc:
        print("sign-update: %s" % exc, file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
