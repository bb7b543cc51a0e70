"""The program's console (standard error) as update/ConsoleLines.h defines its lines and their forms:
the one place the harness learns them, so that a text changed there is changed for every tool."""

import os
import re

HEADER = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "update",
                      "ConsoleLines.h")


def console_lines():
    """{name: text} of every definition of the header."""
    with open(HEADER, encoding="utf-8") as f:
        return dict(re.findall(r'^inline constexpr char (k\w+)\[\] = "([^"\\]*)";', f.read(), re.M))


CONSOLE = console_lines()
# The update procedure's source, as it follows a line's log type ("Event ", "Trace1 ", ...).
UPDATE_SOURCE = CONSOLE["kUpdateEvent"].split(" ", 1)[1]


def statuses(console):
    """The status texts the program showed, in order, with their line breaks."""
    pattern = r"%s%s(.*)$" % (re.escape(CONSOLE["kUpdateEvent"]), re.escape(CONSOLE["kStatus"]))
    return [s.replace("\\n", "\n").replace("\\r", "\r") for s in re.findall(pattern, console, re.M)]


def stamped_update_lines(console):
    """(seconds, text) of each stamped line of the update procedure, of every log type."""
    return re.findall(r"^%s(\S+) [\w ]+ %s(.*)$" % (re.escape(CONSOLE["kStamp"]), re.escape(UPDATE_SOURCE)),
                      console, re.M)


def probe(line, kind):
    """(seconds, detail) of a paint probe line of a kind (kPaint, kDrawn, kFirstPaint), else None."""
    if not line.startswith(CONSOLE[kind]):
        return None
    seconds, _, detail = line[len(CONSOLE[kind]):].rstrip("\n").partition(" ")
    return float(seconds), detail


def is_probe_line(line):
    """Whether the line is one the program writes only when asked to (VTX_REPORT_PAINTS)."""
    return line.startswith(tuple(CONSOLE[k] for k in ("kStamp", "kPaint", "kDrawn", "kFirstPaint")))
