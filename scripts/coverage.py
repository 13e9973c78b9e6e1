#!/usr/bin/env python3
"""Turns llvm-cov's summary into a table of lines and branches by folder, and names the files that are reached least."""

import collections
import json
import os
import sys

KINDS = ("lines", "branches")
LEAST = 8


def share(counts):
    covered, count = counts
    return f"{100 * covered / count:.1f} %" if count else "-"


def row(name, totals):
    print(f"| {name} | " + " | ".join(f"{share(totals[kind])} of {totals[kind][1]:,}" for kind in KINDS) + " |")


def add(totals, summary):
    for kind in KINDS:
        totals[kind][0] += summary[kind]["covered"]
        totals[kind][1] += summary[kind]["count"]


def main():
    path = lambda file: os.path.relpath(file["filename"], "../..")
    files = [file for file in json.load(sys.stdin)["data"][0]["files"] if not path(file).startswith("build/")]
    empty = lambda: {kind: [0, 0] for kind in KINDS}
    folders, whole = collections.defaultdict(empty), empty()
    for file in files:
        add(folders[os.path.dirname(path(file))], file["summary"])
        add(whole, file["summary"])
    print("| folder | lines | branches |\n| --- | --- | --- |")
    for folder in sorted(folders):
        row(folder, folders[folder])
    row("all", whole)
    print("\nLines not reached, by file:")
    missed = lambda file: file["summary"]["lines"]["count"] - file["summary"]["lines"]["covered"]
    for file in sorted(files, key=missed, reverse=True)[:LEAST]:
        print(f"  {missed(file):4} {path(file)}")


if __name__ == "__main__":
    main()
