"""The instrument's files as they are now, as one line "RESULT {json}" on the cut-point channel for
the host, which judges them: every file of the code folder, the user's home (but its hidden caches)
and the stick, with type, mode, owner, group and digest, small files with their bytes.

    python3 vtx-collect.py PHASE [NAME=VALUE...]   (the values are read from files: NAME=@PATH)"""
import base64
import hashlib
import json
import os
import sys

AREAS = ("/home/vtx", "/media/usb")
SMALL = 256 * 1024


def entry(path):
    st = os.lstat(path)
    kind = "dir" if os.path.isdir(path) and not os.path.islink(path) else "link" if os.path.islink(path) else "file"
    e = dict(type=kind, mode=st.st_mode & 0o7777, uid=st.st_uid, gid=st.st_gid, size=st.st_size)
    if kind == "link":
        e["target"] = os.readlink(path)
    elif kind == "file":
        with open(path, "rb") as f:
            data = f.read()
        e["sha256"] = hashlib.sha256(data).hexdigest()
        if len(data) <= SMALL:
            e["data"] = base64.b64encode(data).decode()
    return e


def walk():
    files = {}
    for area in AREAS:
        for folder, dirs, names in os.walk(area):
            # The program's runtime is the package's, not the update's: not looked into.
            dirs[:] = [d for d in dirs if os.path.join(folder, d) != "/home/vtx/Code/update-runtime"]
            if folder == "/home/vtx":
                dirs[:] = [d for d in dirs if not d.startswith(".")]
                names = [n for n in names if not n.startswith(".") or n == ".vtx-partial-copy"]
            for name in dirs + names:
                path = os.path.join(folder, name)
                files[path] = entry(path)
            files[folder] = entry(folder)
    return files


def main():
    result = dict(phase=sys.argv[1], files=walk())
    for arg in sys.argv[2:]:
        name, value = arg.split("=", 1)
        if value.startswith("@"):
            with open(value[1:], errors="replace") as f:
                value = f.read()
        result[name] = value
    line = ("RESULT " + json.dumps(result, separators=(",", ":")) + "\n").encode()
    with open("/dev/ttyS1", "wb", buffering=0) as channel:
        channel.write(line)


if __name__ == "__main__":
    main()
