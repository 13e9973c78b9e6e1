#!/usr/bin/env python3
"""Reads the dumps that bench/costs.cpp makes under callgrind, and compares them with bench/costs.txt. Fails when a
figure has grown by more than 3 %. Usage: costs.py FOLDER-OF-DUMPS [--update]"""

import re
import sys
from collections import Counter
from pathlib import Path

FIGURES = Path(__file__).with_name("costs.txt")
MOST_GROWTH = 0.03
EVENTS = 1000
# In the order in which the library starts them.
MAIN, DELIVERY, NETWORKING = 1, 2, 3
ALLOCATORS = re.compile(r"(malloc|calloc|realloc|aligned_alloc|posix_memalign)")


def allocations(dump):
    """The calls of the allocating functions. callgrind numbers each name where it first occurs."""
    names = dict(re.findall(r"fn=\((\d+)\) (\S+)", dump))
    calls = re.findall(r"^cfn=\((\d+)\).*\ncalls=(\d+)", dump, re.MULTILINE)
    return sum(int(count) for name, count in calls if ALLOCATORS.fullmatch(names[name]))


def read(folder):
    """Instructions and allocations of each dump's name and thread."""
    instructions, allocated = Counter(), Counter()
    for file in folder.iterdir():
        dump = file.read_text()
        trigger = re.search(r"^desc: Trigger: (?:Client Request: )?(.+)$", dump, re.MULTILINE)
        thread = re.search(r"^thread: (\d+)$", dump, re.MULTILINE)
        if trigger and thread:
            key = trigger[1], int(thread[1])
            instructions[key] += int(re.search(r"^totals: (\d+)", dump, re.MULTILINE)[1])
            allocated[key] += allocations(dump)
    return instructions, allocated


def measured(folder):
    instructions, allocated = read(folder)
    found = {}

    def add(name, count, key):
        found[f"{name}, instructions"] = instructions[key] / count
        found[f"{name}, allocations"] = allocated[key] / count

    add("playerEvent", EVENTS, ("call", MAIN))
    for name, thread in [("networking", NETWORKING), ("delivery", DELIVERY)]:
        add(f"{name} of an event", EVENTS, ("Program termination", thread))
    add("listener of an event", EVENTS, ("listener", MAIN))
    add("bare loop with an event", EVENTS, ("bare", MAIN))
    for videos, readings in [(10, 100), (1000, 1), (10000, 1)]:
        add(f"reading {videos} videos", readings, (f"read {videos}", MAIN))
        add(f"parsing {videos} videos", readings, (f"parse {videos}", MAIN))
    return found


def main():
    found = measured(Path(sys.argv[1]))
    if "--update" in sys.argv:
        FIGURES.write_text("".join(f"{name}: {value:.2f}\n" for name, value in found.items()))
    known = {name: float(value) for name, value in (line.split(": ") for line in FIGURES.read_text().splitlines())}
    grown = []
    for name, value in found.items():
        before = known.get(name, 0)
        print(f"{name + ':':42}{value:14,.1f}  before{before:14,.1f}  {value / before - 1 if before else 0:+.1%}")
        if value > before * (1 + MOST_GROWTH):
            grown.append(name)
    if grown:
        sys.exit("Grown by more than 3 %: " + "; ".join(grown) + ". If it is worth it: scripts/costs.sh --update")


if __name__ == "__main__":
    main()
