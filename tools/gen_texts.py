#!/usr/bin/env python3
"""Build-time generator for the UI text tables.

Table mode turns one PO file into a C++ source with a std::string array
indexed by (text id - first id):

    gen_texts.py --table en --first-id 0 --count 568 \
                 --out texts_en.cpp --symbol TEXTS_EN language/texts/en.po

Placeholder mode compares the number of "<TAG_AMOUNT>" in each text of
the first file with the same text id in the other files:

    gen_texts.py --check-placeholders en.po de.po fr.po ...

Problems are reported as "file:line: message" on stderr, exit status 1.

Conventions (see language/texts/README.md):
  * msgctxt is the decimal text id; msgstr is the text of this table.
  * msgstr "" is the empty text, not "untranslated": gettext would fall back
    to msgid, the instrument shows nothing.
  * An empty source text cannot be written as msgid "" (that is the PO
    header), so it is flagged "#, vtx-empty" with msgid "(empty)" and
    msgstr "".
"""

import argparse
import os
import re
import sys
import tempfile

PLACEHOLDER = "<TAG_AMOUNT>"
EMPTY_FLAG = "vtx-empty"
EMPTY_MSGID = "(empty)"

_ESCAPES = {"n": "\n", "r": "\r", "t": "\t", '"': '"', "\\": "\\"}
_ID_RE = re.compile(r"^(0|[1-9][0-9]*)$")
_KEYWORD_RE = re.compile(r"^(msgctxt|msgid|msgstr|msgid_plural|msgstr\[\d+\])\s+(.*)$")
_IDENT_RE = re.compile(r"^[A-Za-z_][A-Za-z0-9_]*$")
# Control characters other than the escapes \n \r \t: a NUL would silently cut the text short
# in the generated table, the others are invisible damage from an editor.
_CONTROL_RE = re.compile(r"[\x00-\x08\x0b\x0c\x0e-\x1f\x7f]")


class PoError(Exception):
    def __init__(self, path, line, message):
        super().__init__("%s:%d: %s" % (path, line, message))


class PoErrors(Exception):
    def __init__(self, errors):
        super().__init__("\n".join(str(e) for e in errors))
        self.errors = errors


class Entry:
    def __init__(self, line):
        self.line = line          # line of the entry's first keyword
        self.flags = set()
        self.msgctxt = None
        self.msgid = None
        self.msgstr = None
        self.bad = False          # already reported, keep out of the table


class PoFile:
    def __init__(self, path):
        self.path = path
        self.header = None
        self.entries = []         # Entry objects with a text id, file order
        self.last_line = 1

    def text_ids(self):
        return {int(e.msgctxt): e for e in self.entries}


def _unquote(s):
    s = s.strip()
    if len(s) < 2 or s[0] != '"' or s[-1] != '"':
        raise ValueError("expected a quoted string")
    out = []
    i, end = 1, len(s) - 1
    while i < end:
        c = s[i]
        if c == "\\":
            if i + 1 >= end:
                raise ValueError("backslash at end of string")
            e = s[i + 1]
            if e not in _ESCAPES:
                raise ValueError("unsupported escape '\\%s' (use \\n \\r \\t \\\" \\\\)" % e)
            out.append(_ESCAPES[e])
            i += 2
        elif c == '"':
            raise ValueError('unescaped " inside string')
        else:
            out.append(c)
            i += 1
    return "".join(out)


def _finish(po, entry, errors):
    if entry is None or (entry.msgctxt is None and entry.msgid is None and entry.msgstr is None):
        return                    # nothing but comments
    if entry.bad:
        return
    where = (po.path, entry.line)
    if entry.msgid is None or entry.msgstr is None:
        errors.append(PoError(*where, "entry needs both msgid and msgstr"))
        return
    if entry.msgctxt is None:
        if entry.msgid != "":
            errors.append(PoError(*where, "entry without msgctxt (text id)"))
        elif po.header is not None:
            errors.append(PoError(*where, "second PO header"))
        else:
            po.header = entry
        return
    if not _ID_RE.match(entry.msgctxt):
        errors.append(PoError(*where, "msgctxt must be a decimal text id, got %r" % entry.msgctxt))
        return
    if entry.msgid == "":
        errors.append(PoError(*where, 'empty msgid: write an empty text as "#, %s", '
                                      'msgid "%s", msgstr ""' % (EMPTY_FLAG, EMPTY_MSGID)))
        return
    if "fuzzy" in entry.flags:
        # msgfmt would drop it silently; on the instrument it would be a
        # blank or stale text, so make someone look at it.
        errors.append(PoError(*where, "fuzzy entry: review the text and remove the fuzzy flag"))
        return
    bad = _CONTROL_RE.search(entry.msgstr)
    if bad:
        errors.append(PoError(*where, "control character U+%04X in msgstr" % ord(bad.group())))
        return
    if EMPTY_FLAG in entry.flags:
        if entry.msgid != EMPTY_MSGID:
            errors.append(PoError(*where, '%s entry must have msgid "%s"' % (EMPTY_FLAG, EMPTY_MSGID)))
            return
        if entry.msgstr != "":
            errors.append(PoError(*where, 'the source text is empty, so msgstr must be ""'))
            return
    po.entries.append(entry)


def parse_po(path):
    """Parse a PO file; raises PoErrors listing every problem found."""
    with open(path, "rb") as f:
        raw = f.read()
    if raw.startswith(b"\xef\xbb\xbf"):
        raw = raw[3:]
    po = PoFile(path)
    errors = []
    lines = raw.split(b"\n")
    if lines and lines[-1] == b"":
        lines.pop()
    po.last_line = max(len(lines), 1)

    def fail(lineno, message):
        # Keep parsing so that one run reports every problem, but never let
        # a damaged entry into the table or cause follow-up messages.
        errors.append(PoError(path, lineno, message))
        if entry is not None:
            entry.bad = True

    entry = None
    field = None              # attribute of entry that continuation lines extend
    for lineno, bline in enumerate(lines, 1):
        try:
            line = bline.decode("utf-8")
        except UnicodeDecodeError as exc:
            line = bline.decode("utf-8", "replace")
            fail(lineno, "invalid UTF-8 at byte %d" % (exc.start + 1))
        line = line.strip()
        if not line:
            continue                  # blank lines may even split a string
        if line.startswith("#~"):
            field = None              # obsolete entry, not part of the table
            continue
        if line.startswith("#"):
            if entry is not None and entry.msgstr is not None:
                _finish(po, entry, errors)
                entry = None
            if entry is None:
                entry = Entry(lineno)
            if line.startswith("#,"):
                entry.flags.update(f.strip() for f in line[2:].split(",") if f.strip())
            field = None
            continue
        if line.startswith('"'):
            if entry is None or field is None:
                fail(lineno, "string continuation without a keyword")
                continue
            try:
                setattr(entry, field, getattr(entry, field) + _unquote(line))
            except ValueError as exc:
                fail(lineno, str(exc))
            continue

        m = _KEYWORD_RE.match(line)
        key = m.group(1) if m else None
        if key in ("msgctxt", "msgid", "msgstr"):
            starts_new = entry is not None and (
                entry.msgstr is not None or
                (key != "msgstr" and getattr(entry, key) is not None) or
                (key == "msgctxt" and entry.msgid is not None))
            if starts_new:
                _finish(po, entry, errors)
                entry = None
        if entry is None:
            entry = Entry(lineno)
        if key is None:
            fail(lineno, "cannot parse line")
            field = None
            continue
        if key == "msgid_plural" or key.startswith("msgstr["):
            fail(lineno, "plural forms are not used in text tables")
            field = None
            continue
        if key == "msgstr" and entry.msgid is None:
            fail(lineno, "msgstr without msgid")
        if entry.msgctxt is None and entry.msgid is None:
            entry.line = lineno       # point messages at the text, not its comments
        try:
            setattr(entry, key, _unquote(m.group(2)))
        except ValueError as exc:
            setattr(entry, key, "")
            fail(lineno, str(exc))
        field = key
    _finish(po, entry, errors)

    if po.header is None:
        errors.append(PoError(path, 1, 'no PO header (msgid "" with Content-Type)'))
    elif not re.search(r"charset\s*=\s*utf-8\b", po.header.msgstr, re.IGNORECASE):
        errors.append(PoError(path, po.header.line, "header must declare charset=UTF-8"))

    seen = {}
    for e in po.entries:
        tid = int(e.msgctxt)
        if tid in seen:
            errors.append(PoError(path, e.line, "text id %d already defined on line %d"
                                  % (tid, seen[tid].line)))
        else:
            seen[tid] = e
    if errors:
        raise PoErrors(errors)
    return po


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


def check_table(po, first_id, count):
    """Return the texts for ids first_id..first_id+count-1, or raise PoErrors."""
    errors = []
    texts = [None] * count
    for e in po.entries:
        tid = int(e.msgctxt)
        if not first_id <= tid < first_id + count:
            errors.append(PoError(po.path, e.line, "text id %d outside this table (%d..%d)"
                                  % (tid, first_id, first_id + count - 1)))
            continue
        texts[tid - first_id] = e.msgstr
    missing = [first_id + i for i, t in enumerate(texts) if t is None]
    if missing:
        errors.append(PoError(po.path, po.last_line, "table has %d of %d texts; missing text id(s) %s"
                              % (count - len(missing), count, _ranges(missing))))
    if errors:
        raise PoErrors(errors)
    return texts


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


def render_cpp(table, source_name, symbol, first_id, texts):
    count = len(texts)
    names = symbol.split("::")
    lines = [
        "// generated from %s by tools/gen_texts.py, do not edit" % source_name,
        "// table \"%s\", text ids %d..%d" % (table, first_id, first_id + count - 1),
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
        lines.append("    /* %d */ %s%s" % (first_id + i, parts[0], "" if len(parts) > 1 else ","))
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


def check_placeholders(paths):
    """Return a list of PoError for ids whose placeholder count differs."""
    files = [parse_po(p) for p in paths]
    ref = files[0]
    ref_ids = ref.text_ids()
    problems = []
    for other in files[1:]:
        for e in other.entries:
            r = ref_ids.get(int(e.msgctxt))
            # An empty text is one the instrument does not show, so it has
            # nothing to fill in.
            if r is None or e.msgstr == "":
                continue
            want, got = r.msgstr.count(PLACEHOLDER), e.msgstr.count(PLACEHOLDER)
            if want != got:
                problems.append(PoError(other.path, e.line,
                                        "text id %s has %d %s, %s has %d"
                                        % (e.msgctxt, got, PLACEHOLDER, ref.path, want)))
    return problems


def main(argv=None):
    ap = argparse.ArgumentParser(description="Generate C++ text tables from PO files.")
    ap.add_argument("--check-placeholders", action="store_true",
                    help="compare %s counts of the other files against the first" % PLACEHOLDER)
    ap.add_argument("--table", help="table name, for the generated comment")
    ap.add_argument("--first-id", type=int, help="text id of the first entry")
    ap.add_argument("--count", type=int, help="number of texts in the table")
    ap.add_argument("--out", help="C++ file to write")
    ap.add_argument("--symbol", help="array name, may be namespace-qualified (a::b::TEXTS)")
    ap.add_argument("po", nargs="+", help="PO file(s)")
    args = ap.parse_args(argv)

    try:
        if args.check_placeholders:
            if len(args.po) < 2:
                ap.error("--check-placeholders needs a reference file and at least one other")
            problems = check_placeholders(args.po)
            for p in problems:
                print(p, file=sys.stderr)
            return 1 if problems else 0

        missing = [o for o in ("table", "first_id", "count", "out", "symbol")
                   if getattr(args, o) is None]
        if missing:
            ap.error("table mode needs " + ", ".join("--" + m.replace("_", "-") for m in missing))
        if len(args.po) != 1:
            ap.error("table mode takes exactly one PO file")
        if args.count <= 0 or args.first_id < 0:
            ap.error("--count must be positive and --first-id not negative")
        if not all(_IDENT_RE.match(n) for n in args.symbol.split("::")):
            ap.error("--symbol must be a C++ identifier, optionally qualified with ::")

        po = parse_po(args.po[0])
        texts = check_table(po, args.first_id, args.count)
        write_atomically(args.out, render_cpp(args.table, os.path.basename(args.po[0]),
                                              args.symbol, args.first_id, texts))
        return 0
    except PoErrors as exc:
        for e in exc.errors:
            print(e, file=sys.stderr)
        return 1
    except OSError as exc:
        print("%s: %s" % (exc.filename or "gen_texts.py", exc.strerror), file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
