#!/usr/bin/env python3
"""Fails when a file of a lower layer includes a file of a higher one, or when two subsystems
include each other (directly or round a longer loop), or when a file under src/ belongs to
no layer. Reads only the #include "..." lines, so it needs no build.

Usage: check-layers.py [SRC_FOLDER]   (default: the repository's src/)
Prints `file:line: <subsystem> (<layer>) includes "<header>" of <subsystem> (<layer>)` for
each include that goes up, `loop: a -> b -> a` for each loop, and exits 1 on any of them."""
import fnmatch
import os
import re
import sys

# The layers from the bottom up. A file may include files of its own layer or below.
LAYERS = ["platform", "formats and engine", "datasets, rules and services", "run and flows", "reports",
          "desktop and programs"]

# Which subsystem and layer a file belongs to: the first pattern that matches its path under
# src/ wins, so the exceptions come before the folders that hold them.
TABLE = [
    # Qt implementations of the platform's interfaces are the desktop's.
    ("platform/forms/*", "desktop", 5),
    ("platform/*", "platform", 0),
    ("formats/*", "formats", 1),
    # The engine program's --asc mode runs the front-end's dataset checks before a direct
    # run; the engine's library uses nothing of the front-end.
    ("engine/qvxengine_main.cpp", "programs", 5),
    ("engine/*", "engine", 1),
    # The graph pictures paint with QtGui off-screen, for the run with no window too.
    ("report/forms/graph_drawer.*", "report", 4),
    ("report/forms/graph_stroke.*", "report", 4),
    ("report/forms/jpeg_writer.*", "report", 4),
    ("*/forms/*", "desktop", 5),
    ("app/*", "programs", 5),
    ("dataset/*", "dataset", 2),
    ("rules/*", "rules", 2),
    # Start-up, settings, preferences, logging and the error reaction, which every flow uses.
    ("shell/*", "shell", 2),
    ("batch/engine/*", "engine client", 2),
    ("batch/*", "batch", 3),
    ("genseries/*", "genseries", 3),
    ("aggregate/*", "aggregate", 3),
    ("pool/*", "pool", 3),
    ("spreadsheet/*", "spreadsheet", 3),
    ("report/*", "report", 4),
]

INCLUDE = re.compile(r'\s*#\s*include\s*"([^"]+)"')
SOURCE_ENDINGS = (".h", ".hpp", ".cpp", ".cc")


def place(path):
    for pattern, subsystem, rank in TABLE:
        if fnmatch.fnmatchcase(path, pattern):
            return subsystem, rank
    return None


def loops(edges):
    """Every strongly connected group of more than one subsystem, as a loop to print."""
    index, low, stack, on_stack, found = {}, {}, [], set(), []

    def visit(v):
        index[v] = low[v] = len(index)
        stack.append(v)
        on_stack.add(v)
        for w in sorted(edges.get(v, ())):
            if w not in index:
                visit(w)
                low[v] = min(low[v], low[w])
            elif w in on_stack:
                low[v] = min(low[v], index[w])
        if low[v] == index[v]:
            group = []
            while True:
                w = stack.pop()
                on_stack.discard(w)
                group.append(w)
                if w == v:
                    break
            if len(group) > 1:
                found.append(sorted(group))

    for v in sorted(edges):
        if v not in index:
            visit(v)
    return found


def main():
    src = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "src")
    problems = []
    edges = {}
    for root, dirs, files in os.walk(src):
        dirs.sort()
        for name in sorted(files):
            if not name.endswith(SOURCE_ENDINGS):
                continue
            full = os.path.join(root, name)
            rel = os.path.relpath(full, src).replace(os.sep, "/")
            here = place(rel)
            if here is None:
                problems.append(f"{full}:1: belongs to no layer; add its folder to scripts/check-layers.py")
                continue
            with open(full, encoding="utf-8", errors="replace") as f:
                for number, line in enumerate(f, 1):
                    m = INCLUDE.match(line)
                    if not m or "/" not in m.group(1):
                        continue
                    there = place(m.group(1))
                    if there is None or there[0] == here[0]:
                        continue
                    edges.setdefault(here[0], set()).add(there[0])
                    if there[1] > here[1]:
                        problems.append(f'{full}:{number}: {here[0]} ({LAYERS[here[1]]}) includes '
                                        f'"{m.group(1)}" of {there[0]} ({LAYERS[there[1]]})')
    # The desktop and the programs sit at the top and bind everything; loops among them are
    # not layering faults.
    edges.pop("desktop", None)
    edges.pop("programs", None)
    for group in loops(edges):
        problems.append("loop: " + ", ".join(group) + " include each other, directly or round a loop")
    for p in problems:
        print(p)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
