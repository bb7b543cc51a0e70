"""The scenarios: how to lay out a sandbox root, run the program and judge the run. Scenario files
register theirs with add(); they are found only through a list file, which the runner, CMake and the
rehearsal all read, and a scenario file left off that list fails the loading rather than going unrun."""

import importlib
import os
import sys

from .sandbox import Scenario

SCENARIOS = {}  # run on this machine
OLD_SYSTEM = {}  # run on the older i386 system (runner.py --old-system)
# Python files beside the scenario files that hold none.
NOT_SCENARIO_FILES = {"runner.py"}


class ListError(Exception):
    pass


def add(name, doc, expect, into=SCENARIOS, **kw):
    if name in into:
        raise ListError("two scenarios named %s" % name)
    into[name] = Scenario(name, doc, expect=expect, **kw)


def listed(list_file):
    """The file names of the list, in order (one a line; # begins a comment)."""
    with open(list_file, encoding="utf-8") as f:
        return [line.split("#", 1)[0].strip() for line in f if line.split("#", 1)[0].strip()]


def load(list_file):
    """Imports the scenario files the list names, from its folder and in its order. Fails when one
    is missing, or when a Python file there is not listed."""
    folder = os.path.dirname(os.path.abspath(list_file))
    names = listed(list_file)
    present = {n for n in os.listdir(folder) if n.endswith(".py")} - NOT_SCENARIO_FILES
    missing, unlisted = [n for n in names if n not in present], sorted(present - set(names))
    if missing or unlisted:
        raise ListError("%s: %s" % (list_file, "; ".join(
            ["listed but missing: " + " ".join(missing)] * bool(missing)
            + ["scenario files not listed (their scenarios would never run): " + " ".join(unlisted)] * bool(unlisted))))
    if folder not in sys.path:
        sys.path.insert(0, folder)  # the scenario files import each other's pieces by name
    for name in names:
        importlib.import_module(name[:-len(".py")])
    return SCENARIOS
