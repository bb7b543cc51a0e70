#!/usr/bin/python3
"""A service stick against what the update expects of it, judged by the rules the program applies
before it uses a file from the stick: the auxiliary file, the replacement runtime and the font
package. The stick itself is only read.

    tools/stick_check.py DIR     prints one line a finding: "refused: ..." (the update would stop
                                 on it) or "note: ..."; exit status 1 when something is refused

tools/rehearse --stick runs it before it rehearses the stick.
"""

import io
import os
import stat
import struct
import sys
import tarfile
import zlib

MOUNT = "/media/usb"  # where the instrument mounts the stick: an absolute link there stays on it
AUXILIARY = "update/zip"
RUNTIME = "update/libstdc++.so.6.0.22"
SONAME = b"libstdc++.so.6"
FONTS = "jfonts.tgz"
FONT_FOLDER = "jfonts"
LARGEST_RUNTIME = 64 << 20  # the program reads no larger runtime into memory
ELF32_HEADER, ELF32_SECTION, ELF32_DYN = 52, 40, 8
SHT_DYNAMIC, DT_NULL, DT_SONAME = 6, 0, 14
# The member types tar unpacks as a regular file (0, old-style NUL, contiguous 7) or a folder (5).
FILE_OR_FOLDER = {tarfile.REGTYPE, tarfile.AREGTYPE, tarfile.CONTTYPE, tarfile.DIRTYPE}


def _soname(image):
    """DT_SONAME of a 32-bit little-endian image, by its first dynamic section; None when any
    offset or size leads outside the image."""
    def field(fmt, offset):
        size = struct.calcsize(fmt)
        return struct.unpack_from(fmt, image, offset) if 0 <= offset and offset + size <= len(image) else None
    shoff, shentsize, shnum = field("<I", 32)[0], field("<H", 46)[0], field("<H", 48)[0]
    if shentsize != ELF32_SECTION:
        return None

    def section(index):  # (type, offset, size, link)
        fields = field("<10I", shoff + index * ELF32_SECTION) if index < shnum else None
        return fields and (fields[1], fields[4], fields[5], fields[6])
    for i in range(shnum):
        dynamic = section(i)
        if not dynamic:
            return None
        if dynamic[0] != SHT_DYNAMIC:
            continue
        strings = section(dynamic[3])
        if not strings:
            return None
        for at in range(0, dynamic[2] - ELF32_DYN + 1, ELF32_DYN):
            entry = field("<iI", dynamic[1] + at)
            if not entry or entry[0] == DT_NULL:
                return None
            if entry[0] != DT_SONAME:
                continue
            start, end = strings[1] + entry[1], strings[1] + strings[2]
            nul = image.find(b"\0", start) if entry[1] < strings[2] and start < len(image) else -1
            return image[start:nul] if 0 <= nul < end else None
        return None
    return None


def check_runtime(path):
    """None when the program would install the file as the instrument's runtime, else why not."""
    try:
        mode = os.lstat(path).st_mode
    except OSError:
        return "missing"
    if stat.S_ISLNK(mode):
        return "a link"
    if not stat.S_ISREG(mode):
        return "not a regular file"
    try:
        with open(path, "rb", opener=lambda p, f: os.open(p, f | os.O_NOFOLLOW | os.O_NONBLOCK)) as f:
            if os.fstat(f.fileno()).st_size > LARGEST_RUNTIME:
                return "cannot be read"
            image = f.read()
    except OSError:
        return "cannot be read"
    if len(image) < 16 or image[:4] != b"\x7fELF":
        return "not an ELF file"
    if image[4] != 1:
        return "not 32-bit"
    if len(image) < ELF32_HEADER:
        return "not an ELF file"
    if image[5] != 1 or struct.unpack_from("<H", image, 18)[0] != 3:
        return "not for x86"
    if struct.unpack_from("<H", image, 16)[0] != 3:
        return "not a shared library"
    if _soname(image) != SONAME:
        return "its SONAME is not libstdc++.so.6"
    return None


def resolve_in_stick(stick, relative):
    """stick/relative with every link on the way followed as on the instrument (an absolute target
    under the mount point lands on the stick again), or None when it leads off the stick or loops.
    Nothing off the stick is ever looked at."""
    parts, done, hops = relative.split("/"), [], 0
    while parts:
        part = parts.pop(0)
        if part in ("", "."):
            continue
        if part == "..":
            if not done:
                return None
            done.pop()
            continue
        path = os.path.join(stick, *done, part)
        if not os.path.islink(path):
            done.append(part)
            continue
        hops += 1
        target = os.readlink(path)
        if target.startswith("/"):
            if hops > 40 or (target != MOUNT and not target.startswith(MOUNT + "/")):
                return None
            done, target = [], target[len(MOUNT):]
        elif hops > 40:
            return None
        parts = target.split("/") + parts
    return os.path.join(stick, *done)


def _shown(name):
    """A member's name as the program shows it: printable and short."""
    shown = "".join(c if " " <= c < "\x7f" else "?" for c in name[:80])
    return shown + ("..." if len(name) > 80 else "")


def _name_allowed(name):
    while name.startswith("./"):
        name = name[2:]
    parts = name.split("/")
    return bool(name) and not name.startswith("/") and parts[0] == FONT_FOLDER and ".." not in parts


def _whole_gzip(data):
    """The data of every gzip member one after another, or None unless each is whole and nothing
    else follows them (not even zeros: the program refuses what gzip would only warn about)."""
    out = []
    while True:
        z = zlib.decompressobj(16 + zlib.MAX_WBITS)
        try:
            out.append(z.decompress(data))
        except zlib.error:
            return None
        if not z.eof:
            return None
        data = z.unused_data
        if not data:
            return b"".join(out)


def font_package(path, stick=None):
    """(cause, bytes): why the program would refuse the font package (None when it would not), and
    the space its members take unpacked, counted as the program counts it."""
    stick = stick or os.path.dirname(os.path.abspath(path))
    real = resolve_in_stick(stick, os.path.relpath(os.path.abspath(path), stick))
    if not real or not os.path.isfile(real):
        return "not a regular file", 0
    try:
        with open(real, "rb", opener=lambda p, f: os.open(p, f | os.O_NONBLOCK)) as f:
            data = _whole_gzip(f.read())
    except OSError:
        return "cannot be read", 0
    if data is None:
        return "not a whole gzip stream", 0
    if not data:
        return "it holds no %s folder" % FONT_FOLDER, 0
    unpacked, members = 0, 0
    try:
        with tarfile.open(fileobj=io.BytesIO(data), mode="r:") as tar:
            for member in tar:
                members += 1
                if member.type not in FILE_OR_FOLDER:
                    return "member %s is not a file or folder" % _shown(member.name), unpacked
                if not _name_allowed(member.name):
                    return "member %s lies outside %s/" % (_shown(member.name), FONT_FOLDER), unpacked
                unpacked += 4096 + (-(-member.size // 4096) * 4096 if member.isfile() else 0)
            rest = data[tar.offset:tar.offset + tarfile.BLOCKSIZE]
    except (tarfile.TarError, ValueError, UnicodeError) as exc:
        short = "unexpected end" in str(exc) or "truncated" in str(exc) or len(data) < tarfile.BLOCKSIZE
        return "not a whole tar archive" if short else "not a tar archive", unpacked
    # tarfile takes a header it cannot read, or a last one cut short, for the end: tar does not.
    if 0 < len(rest) < tarfile.BLOCKSIZE:
        return "not a whole tar archive", unpacked
    if rest.strip(b"\0"):
        return "not a tar archive", unpacked
    return (None if members else "it holds no %s folder" % FONT_FOLDER), unpacked


def check_font_package(path, stick=None):
    """None when the program would unpack the font package, else why not."""
    return font_package(path, stick)[0]


def check_stick(stick):
    """[(kind, text)] of the stick at the folder stick: "refused" for what the update would stop
    on, "note" for what it skips or ignores."""
    findings = []
    try:
        top = sorted(os.listdir(stick))
    except OSError as exc:
        return [("refused", "the stick cannot be read: %s" % exc.strerror)]
    update = resolve_in_stick(stick, "update") if "update" in top else None
    try:
        inside = sorted(os.listdir(update)) if update and os.path.isdir(update) else []
    except OSError as exc:
        return [("refused", "the stick's update folder cannot be read: %s" % exc.strerror)]
    if "update" in top and not update:
        findings.append(("refused", "update is a link that leads off the stick or round in a loop"))
    elif update and not os.path.isdir(update):
        findings.append(("note", "update is not a folder: the update finds nothing in it"))
    if "zip" in inside:
        real = resolve_in_stick(stick, AUXILIARY)
        if not real or not os.path.isfile(real):
            findings.append(("refused", AUXILIARY + " is not a regular file"))
    else:
        findings.append(("note", "no %s: the update goes on without the auxiliary file" % AUXILIARY))
    if os.path.basename(RUNTIME) in inside:
        cause = check_runtime(os.path.join(update, os.path.basename(RUNTIME)))
        if cause:
            findings.append(("refused", "%s: %s" % (RUNTIME, cause)))
    else:
        findings.append(("note", "no %s: an instrument whose runtime link needs repair stops at Disk error... (18)"
                         % RUNTIME))
    if FONTS in top:
        cause, unpacked = font_package(os.path.join(stick, FONTS), stick)
        if cause:
            findings.append(("refused", "%s: %s" % (FONTS, cause)))
        else:
            findings.append(("note", "%s unpacks into /home/vtx/%s/, which needs %.1f MiB free"
                             % (FONTS, FONT_FOLDER, unpacked / 1048576.0)))
    else:
        findings.append(("note", "no %s: the update installs no fonts" % FONTS))
    logs = [n for n in top if n.endswith(".log")]
    if logs:
        links = [n for n in logs if os.path.islink(os.path.join(stick, n))]
        findings.append(("note", "already on the stick: %s; the update replaces the one named as the instrument's "
                         "log%s" % (", ".join(logs), "; a link is replaced itself, not what it leads to: "
                                    + ", ".join(links) if links else "")))
    others = [n for n in top if n not in ("update", FONTS) and n not in logs]
    others += ["update/" + n for n in inside if n not in ("zip", os.path.basename(RUNTIME))]
    if others:
        findings.append(("note", "not used by the update: " + ", ".join(others)))
    return findings


def main(argv):
    if len(argv) != 2 or argv[1].startswith("-") or not os.path.isdir(argv[1]):
        print("usage: tools/stick_check.py DIR (the folder holding a stick's files)", file=sys.stderr)
        return 2
    findings = check_stick(argv[1])
    for kind, text in findings:
        print("%s: %s" % (kind, text))
    return 1 if any(kind == "refused" for kind, _ in findings) else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
