#!/usr/bin/env python3
"""The service sheet (docs/service/service-sheet.md) as data: its failure sections, looked up by what the
status line shows in any language, and its table of the screen texts, made from the text tables.

    service_sheet.py --texts                 prints the screen-text table from language/texts/*.po
    service_sheet.py --check [SHEET]         the sheet's screen-text table is that table (exit 1 if not)
    service_sheet.py --update [SHEET]        writes it into the sheet

Used by the end-to-end scenarios (tests/e2e), which hold every failure they produce against its
section, and by tools/rehearse, which prints the section of a failure it rehearsed.
"""

import argparse
import os
import re
import sys

REPO = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SHEET = os.path.join(REPO, "docs", "service", "service-sheet.md")
TEXTS = os.path.join(REPO, "language", "texts")
# The screen's languages in the order of the instrument's language setting, with their tables.
LANGUAGES = [("EN", "English", "en"), ("DK", "Danish", "da"), ("SE", "Swedish", "sv"), ("IT", "Italian", "it"),
             ("NL", "Dutch", "nl"), ("FR", "French", "fr"), ("SP", "Spanish", "es"), ("DE", "German", "de"),
             ("JP", "Japanese", "ja"), ("CH", "Chinese", "zh")]
# The update screen's texts: heading, progress, failures, success.
TEXT_IDS = [417, 418, 168, 419, 651, 422, 423]
BEGIN = "<!-- screen texts: made by tools/service_sheet.py --update; do not edit by hand -->"
END = "<!-- end of screen texts -->"
COPY_FAILED = "Could not copy file(s): "


def read_po(path):
    """msgctxt -> msgstr of a PO file, without polib (the sheet's readers run under any python3)."""
    entries, field, values = {}, None, {}

    def unquote(text):
        return re.sub(r'\\(.)', lambda m: {"n": "\n", "r": "\r", "t": "\t"}.get(m.group(1), m.group(1)), text[1:-1])

    def close():
        if "msgctxt" in values and "msgstr" in values:
            entries[values["msgctxt"]] = values["msgstr"]
    with open(path, encoding="utf-8") as f:
        for line in f:
            line = line.strip()
            m = re.match(r'(msgctxt|msgid|msgstr) (".*")$', line)
            if m:
                if m.group(1) == "msgctxt":
                    close()
                    values = {}
                field = m.group(1)
                values[field] = unquote(m.group(2))
            elif line.startswith('"') and field:
                values[field] += unquote(line)
            elif not line:
                field = None
        close()
    return entries


def texts_table():
    tables = {code: read_po(os.path.join(TEXTS, po + ".po")) for code, _, po in LANGUAGES}
    english = tables["EN"]
    head = "| language | " + " | ".join("%d \"%s\"" % (i, english[str(i)]) for i in TEXT_IDS) + " |"
    rows = [head, "|" + "---|" * (len(TEXT_IDS) + 1)]
    for code, name, _ in LANGUAGES:
        cells = [tables[code][str(i)].replace("\n", " ").replace("|", "\\|") for i in TEXT_IDS]
        rows.append("| %s (%s) | %s |" % (name, code, " | ".join(cells)))
    return "\n".join(rows)


def with_texts(sheet_text):
    start, end = sheet_text.index(BEGIN) + len(BEGIN), sheet_text.index(END)
    return sheet_text[:start] + "\n\n" + texts_table() + "\n\n" + sheet_text[end:]


class Section:
    """One failure of the sheet: its heading (the status line in English), the log's last lines
    (alternatives; [] when the run writes nothing into the log), what has changed (name -> the
    words allowed, from "a or b"), and the whole text."""

    def __init__(self, heading, text):
        self.heading, self.text = heading, text
        self.logs, self.no_log, self.changed = [], False, {}
        in_log, block = False, []
        for line in text.splitlines():
            if in_log and line.startswith("    "):
                block.append(line[4:])
                continue
            if block:  # the end of one way the log can end; "or" lines lead to the next
                self.logs.append(block)
                block = []
            if line.startswith("Log, last lines"):
                in_log = True
            elif line.startswith("Already changed"):
                in_log = False
            elif line.startswith("Log: nothing"):
                self.no_log = True
            m = re.match(r"- (.+?): (.+)$", line)
            if m:
                words = re.sub(r"\s*\(.*\)\s*$", "", m.group(2))
                self.changed[m.group(1)] = [w.strip() for w in words.split(" or ")]
        if block:
            self.logs.append(block)


def sections(path=SHEET):
    """The failure sections: the level-3 headings under "## Failure by failure"."""
    with open(path, encoding="utf-8") as f:
        text = f.read()
    part = text.split("\n## Failure by failure", 1)[1].split("\n## ", 1)[0]
    found = []
    for chunk in part.split("\n### ")[1:]:
        heading, _, body = chunk.partition("\n")
        found.append(Section(heading.strip(), body))
    return found


def row_of(status, path=SHEET):
    """The cells of the status line's row in the table "Every status line" (found as section_of
    finds a section), by column name; None when there is none."""
    with open(path, encoding="utf-8") as f:
        table = f.read().split("\n## Every status line", 1)[1].split("\n## ", 1)[0]
    lines = [x for x in table.splitlines() if x.startswith("| ")]
    names = [c.strip() for c in lines[0].strip("|").split(" | ")]
    rows = [dict(zip(names, (c.strip() for c in x.strip().strip("|").split(" | ")))) for x in lines[1:]]
    section = section_of(status, path)
    if not section:
        return None
    first = names[0]
    codes = re.findall(r"\(\d\d\)", section.heading)
    return next((r for r in rows if (codes and any(c in r[first] for c in codes)) or r[first] == section.heading),
                None)


def line_pattern(line):
    """A log line of the sheet as a pattern: "<cause>" stands for the reason the program gives."""
    return re.compile(".+".join(re.escape(x) for x in line.split("<cause>")))


def fail_line(line, path=SHEET):
    """(cause, remedy) of a log's "FAIL - " line from the sheet's table of them; None if not there."""
    with open(path, encoding="utf-8") as f:
        table = f.read().split("\n## The `FAIL -` lines", 1)[1].split("\n## ", 1)[0]
    for row in table.splitlines():
        cells = [c.strip() for c in row.strip().strip("|").split(" | ")]
        if len(cells) == 3 and line_pattern(cells[0].strip("`")).fullmatch(line.strip()):
            return cells[1], cells[2]
    return None


def section_of(status, path=SHEET):
    """The section of what the status line shows at its end, in any language: a step code reads
    the same in every language, and so do the words after "Could not copy file(s): " (the copy
    failures name what failed in English, or show what the unpacking printed)."""
    status = status.strip()
    all_sections = sections(path)
    code = re.search(r"\.\.\. \((\d\d)\)", status)
    if code:
        return next((s for s in all_sections if "(%s)" % code.group(1) in s.heading), None)
    if ": " not in status:
        return None
    what = status.split(": ", 1)[1]
    named = [s for s in all_sections if s.heading.startswith(COPY_FAILED) and s.heading[len(COPY_FAILED):] == what]
    if named:
        return named[0]
    return next((s for s in all_sections if s.heading == COPY_FAILED + "*printed text*"), None)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    mode = parser.add_mutually_exclusive_group(required=True)
    mode.add_argument("--texts", action="store_true")
    mode.add_argument("--check", action="store_true")
    mode.add_argument("--update", action="store_true")
    parser.add_argument("sheet", nargs="?", default=SHEET)
    a = parser.parse_args()
    if a.texts:
        print(texts_table())
        return 0
    with open(a.sheet, encoding="utf-8") as f:
        text = f.read()
    if a.update:
        with open(a.sheet, "w", encoding="utf-8") as f:
            f.write(with_texts(text))
        return 0
    if with_texts(text) != text:
        print("%s: the screen texts differ from language/texts/*.po: run tools/service_sheet.py --update" % a.sheet)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main())
