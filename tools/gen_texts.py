#!/usr/bin/env python3
"""Build-time generator for the UI text tables.

Table mode turns one PO file into a C++ source with a std::string array
indexed by (text id - first id):

    gen_texts.py --table en --first-id 0 --count 568 \
                 --out texts_en.cpp --symbol TEXTS_EN language/texts/en.po

A table may hold several ranges of ids (--first-id and --count once for
each, ascending): the array holds their texts one range after the other.

Check mode holds the translations (the other files) against the English
(the first): every file as in table mode, and each text with as many
"<TAG_AMOUNT>" as the English one. The build runs it before the tables, so
that one run names every translation that needs work:

    gen_texts.py --check en.po de.po fr.po ...

Problems are reported as "file:line: message" on stderr, exit status 1.

The syntax of the files is gettext's: they must pass "msgfmt --check"
before polib reads them. What is left here are the rules of the tables
(see language/texts/README.md):
  * msgctxt is the decimal text id; a table holds each of its ids once.
  * msgstr "" is an untranslated text and refused, unless the table is
    given --allow-empty: then it is an empty text, which the instrument
    shows as nothing (gettext would fall back to msgid).
  * An empty source text cannot be written as msgid "" (that is the PO
    header), so it is msgid "(empty)" with msgstr "".
  * A fuzzy entry is refused: msgfmt leaves it out, the instrument would
    show a text nobody has checked.
"""

import argparse
import os
import re
import subprocess
import sys
import tempfile

try:
    import polib
except ImportError:
    # python3-polib is a Debian package: the system's python3 has it, a python3 of a version
    # manager earlier on PATH may not.
    SYSTEM_PYTHON = "/usr/bin/python3"
    if os.path.exists(SYSTEM_PYTHON) and \
            os.path.realpath(sys.executable) != os.path.realpath(SYSTEM_PYTHON):
        os.execv(SYSTEM_PYTHON, [SYSTEM_PYTHON] + sys.argv)
    sys.exit("gen_texts.py: needs polib (Debian package python3-polib)")

PLACEHOLDER = "<TAG_AMOUNT>"
EMPTY_SOURCE = "(empty)"

_ID_RE = re.compile(r"(0|[1-9][0-9]*)\Z")
_IDENT_RE = re.compile(r"^[A-Za-z_][A-Za-z0-9_]*$")
# A control character other than \n \r \t is invisible damage from an editor, and a NUL would cut
# the text short in the generated table. A backslash is what polib leaves of an escape it does not
# know (\x41, \101), which msgfmt accepts and reads differently.
_BAD_CHAR_RE = re.compile(r"[\x00-\x08\x0b\x0c\x0e-\x1f\x7f\\]")


class TableError(Exception):
    def __init__(self, problems):
        super().__init__("\n".join(problems))
        self.problems = problems


def _quoted(text):
    return '"%s"' % text.replace("\n", "\\n").replace("\r", "\\r")


def read_table(path, allow_empty=False):
    """The entries of a PO file by text id, or TableError listing every problem."""
    try:
        check = subprocess.run(["msgfmt", "--check", "-o", os.devnull, path],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                               encoding="utf-8", errors="replace")
    except OSError:
        raise TableError(["%s: cannot run msgfmt (Debian package gettext)" % path])
    if check.returncode != 0:
        raise TableError(check.stderr.splitlines() or ["%s: msgfmt --check failed" % path])
    try:
        po = polib.pofile(path)
    except (OSError, UnicodeError) as exc:
        raise TableError(["%s: %s" % (path, exc)])

    problems, entries = [], {}
    for e in po:
        if e.obsolete:
            continue
        where = "%s:%d: " % (path, e.linenum)
        if not _ID_RE.match(e.msgctxt or ""):
            problems.append(where + "msgctxt must be the decimal text id, got %r" % e.msgctxt)
            continue
        tid = int(e.msgctxt)
        if tid in entries:
            problems.append(where + "text %d already defined on line %d"
                            % (tid, entries[tid].linenum))
            continue
        entries[tid] = e
        bad = _BAD_CHAR_RE.search(e.msgstr)
        if e.fuzzy:
            problems.append(where + "text %d %s is fuzzy: check the translation, "
                                    "then remove the flag" % (tid, _quoted(e.msgstr)))
        elif e.msgid == EMPTY_SOURCE and e.msgstr:
            problems.append(where + 'text %d: the source text is empty (msgid "%s"), '
                                    'so msgstr must be ""' % (tid, EMPTY_SOURCE))
        elif not e.msgstr and e.msgid != EMPTY_SOURCE and not allow_empty:
            problems.append(where + "text %d %s is not translated" % (tid, _quoted(e.msgid)))
        elif bad and bad.group() == "\\":
            problems.append(where + "text %d: backslash in msgstr (escapes: \\n \\r \\t \\\")"
                            % tid)
        elif bad:
            problems.append(where + "text %d: control character U+%04X in msgstr"
                            % (tid, ord(bad.group())))
    if problems:
        raise TableError(problems)
    return entries


def _ranges(ids):
    out, ids = [], sorted(ids)
    i = 0
    while i < len(ids):
        j = i
        while j + 1 < len(ids) and ids[j + 1] == ids[j] + 1:
            j += 1
        out.append(str(ids[i]) if i == j else "%d..%d" % (ids[i], ids[j]))
        i = j + 1
    return ", ".join(out)


def table_ids(ranges):
    """The text ids of the (first id, count) ranges, in the order of the array."""
    return [tid for first_id, count in ranges for tid in range(first_id, first_id + count)]


def table_texts(path, entries, ranges):
    """The texts of the ids of the (first id, count) ranges, or TableError."""
    ids = table_ids(ranges)
    wanted = set(ids)
    problems = ["%s:%d: text %d outside this table (%s)"
                % (path, e.linenum, tid, _ranges(ids))
                for tid, e in sorted(entries.items()) if tid not in wanted]
    missing = [tid for tid in ids if tid not in entries]
    if missing:
        problems.append("%s: table has %d of %d texts; missing text id(s) %s"
                        % (path, len(ids) - len(missing), len(ids), _ranges(missing)))
    if problems:
        raise TableError(problems)
    return [entries[tid].msgstr for tid in ids]


def check_translations(paths):
    """Problems of the translations paths[1:] and of their English paths[0], as strings."""
    problems, tables = [], []
    for path in paths:
        try:
            tables.append((path, read_table(path)))
        except TableError as exc:
            problems += exc.problems
    if problems:
        return problems
    ref_path, ref = tables[0]
    for path, entries in tables[1:]:
        for tid, e in sorted(entries.items()):
            want = ref[tid].msgstr.count(PLACEHOLDER) if tid in ref else 0
            got = e.msgstr.count(PLACEHOLDER)
            if want != got:
                problems.append("%s:%d: text %d has %d %s, %s has %d"
                                % (path, e.linenum, tid, got, PLACEHOLDER, ref_path, want))
    return problems


def cpp_literal(text):
    """A C++ narrow string literal holding the UTF-8 bytes of text.

    Bytes outside printable ASCII are written as three-digit octal escapes:
    an octal escape never takes more than three digits, so unlike \\x it
    cannot swallow a following digit or letter.
    """
    parts, cur, prev = [], [], None
    for b in text.encode("utf-8"):
        c = chr(b)
        if c == "\n":
            cur.append("\\n")
        elif c == "\r":
            cur.append("\\r")
        elif c == "\t":
            cur.append("\\t")
        elif c in '"\\':
            cur.append("\\" + c)
        elif c == "?" and prev == "?":
            cur.append("\\?")     # never form a trigraph, whatever the compiler mode
        elif 0x20 <= b < 0x7F:
            cur.append(c)
        else:
            cur.append("\\%03o" % b)
        if c == "\n":
            parts.append('"%s"' % "".join(cur))
            cur = []
        prev = c
    if cur or not parts:
        parts.append('"%s"' % "".join(cur))
    return parts


def render_cpp(table, source_name, symbol, ids, texts):
    count = len(texts)
    names = symbol.split("::")
    lines = [
        "// generated from %s by tools/gen_texts.py, do not edit" % source_name,
        "// table \"%s\", text ids %s" % (table, _ranges(ids)),
        "",
        "#include <string>",
        "",
    ]
    if len(names) > 1:
        lines += ["namespace %s {" % "::".join(names[:-1]), ""]
    # The extern declaration gives the const array external linkage.
    lines += [
        "extern const std::string %s[%d];" % (names[-1], count),
        "",
        "const std::string %s[%d] = {" % (names[-1], count),
    ]
    for i, text in enumerate(texts):
        parts = cpp_literal(text)
        lines.append("    /* %d */ %s%s" % (ids[i], parts[0], "" if len(parts) > 1 else ","))
        for k, p in enumerate(parts[1:], 1):
            lines.append("        %s%s" % (p, "," if k == len(parts) - 1 else ""))
    lines.append("};")
    if len(names) > 1:
        lines += ["", "}  // namespace %s" % "::".join(names[:-1])]
    return "\n".join(lines) + "\n"


def write_atomically(path, data):
    # A half-written table must never be mistaken for an up-to-date one.
    directory = os.path.dirname(os.path.abspath(path))
    fd, tmp = tempfile.mkstemp(dir=directory, prefix=".gen_texts.")
    try:
        with os.fdopen(fd, "w", encoding="ascii", newline="\n") as f:
            f.write(data)
        os.replace(tmp, path)
    except BaseException:
        os.unlink(tmp)
        raise


def main(argv=None):
    ap = argparse.ArgumentParser(description="Generate C++ text tables from PO files.")
    ap.add_argument("--check", action="store_true",
                    help="check the translations (the other files) against the English (the first)")
    ap.add_argument("--allow-empty", action="store_true",
                    help='msgstr "" is an empty text, not an untranslated one')
    ap.add_argument("--table", help="table name, for the generated comment")
    ap.add_argument("--first-id", type=int, action="append",
                    help="first text id of a range; once for each range, with its --count")
    ap.add_argument("--count", type=int, action="append", help="number of texts in the range")
    ap.add_argument("--out", help="C++ file to write")
    ap.add_argument("--symbol", help="array name, may be namespace-qualified (a::b::TEXTS)")
    ap.add_argument("po", nargs="+", help="PO file(s)")
    args = ap.parse_args(argv)

    try:
        if args.check:
            if len(args.po) < 2:
                ap.error("--check needs the English file and at least one translation")
            problems = check_translations(args.po)
            for p in problems:
                print(p, file=sys.stderr)
            return 1 if problems else 0

        missing = [o for o in ("table", "first_id", "count", "out", "symbol")
                   if getattr(args, o) is None]
        if missing:
            ap.error("table mode needs " + ", ".join("--" + m.replace("_", "-") for m in missing))
        if len(args.po) != 1:
            ap.error("table mode takes exactly one PO file")
        if len(args.first_id) != len(args.count):
            ap.error("give one --count for each --first-id")
        ranges = list(zip(args.first_id, args.count))
        if any(count <= 0 or first_id < 0 for first_id, count in ranges):
            ap.error("--count must be positive and --first-id not negative")
        # Ascending and apart, so that each id has one place in the array.
        if any(b[0] < a[0] + a[1] for a, b in zip(ranges, ranges[1:])):
            ap.error("the ranges must ascend and must not overlap")
        if not all(_IDENT_RE.match(n) for n in args.symbol.split("::")):
            ap.error("--symbol must be a C++ identifier, optionally qualified with ::")

        path = args.po[0]
        texts = table_texts(path, read_table(path, args.allow_empty), ranges)
        write_atomically(args.out, render_cpp(args.table, os.path.basename(path),
                                              args.symbol, table_ids(ranges), texts))
        return 0
    except TableError as exc:
        print(exc, file=sys.stderr)
        return 1
    except OSError as exc:
        print("%s: %s" % (exc.filename or "gen_texts.py", exc.strerror), file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
