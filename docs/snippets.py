#!/usr/bin/env python3
"""Copies code from the examples into the documents, and checks relative links. With --check it changes nothing and
fails where a block is out of date.

A code block below "<!-- examples/NAME/FILE [PART] -->" is the text of that file between two comment lines with
"[PART]". A part may have several such pairs. Without a part it is the whole file. An example's main file and its QML
have less than 60 lines.
"""
import pathlib
import re
import sys

BLOCK = re.compile(r"(<!-- (examples/\S+)(?: \[(\w+)\])? -->\n```\w+\n)(.*?)(```\n)", re.DOTALL)
MARKER = re.compile(r"\s*(?://|#) \[(\w+)\]\s*")
LINK = re.compile(r"\]\(([^)\s]+)\)")
LONGEST = 59
root = pathlib.Path(__file__).resolve().parent.parent


def without_indent(lines):
    lines = [line for line in lines if not MARKER.fullmatch(line)]
    indent = min((len(line) - len(line.lstrip()) for line in lines if line), default=0)
    return "".join(f"{line[indent:]}\n" for line in lines)


def part_of(path, part):
    lines = (root / path).read_text().splitlines()
    marks = [number for number, line in enumerate(lines) if (found := MARKER.fullmatch(line)) and found[1] == part]
    if part:
        if not marks or len(marks) % 2:
            sys.exit(f"{path}: found [{part}] {len(marks)} times, expected pairs")
        stretches = [lines[start:end] for start, end in zip(marks[::2], marks[1::2])]
    else:
        stretches = [lines]
    return "\n".join(without_indent(stretch) for stretch in stretches)


def anchors(text):
    """The anchors of the headings, as GitHub makes them."""
    return {re.sub(r"[^\w\- ]", "", heading).strip().lower().replace(" ", "-")
            for heading in re.findall(r"^#+ (.*)$", text, re.MULTILINE)}


def broken_links(document, text):
    for target in LINK.findall(re.sub(r"```.*?```", "", text, flags=re.DOTALL)):
        file, _, anchor = target.partition("#")
        if re.match(r"\w+:", target):
            continue
        path = (document.parent / file) if file else document
        if not path.exists():
            yield f"{document.relative_to(root)}: {target} does not exist"
        elif anchor and anchor not in anchors(path.read_text()):
            yield f"{document.relative_to(root)}: no heading for {target}"


def main():
    check = sys.argv[1:] == ["--check"]
    faults = []
    for document in sorted([root / "README.md", *root.glob("docs/*.md"), *root.glob("*/README.md"),
                            *root.glob("src/**/README.md")]):
        text = document.read_text()
        renewed = BLOCK.sub(lambda found: found[1] + part_of(found[2], found[3]) + found[5], text)
        if renewed != text and check:
            faults.append(f"{document.relative_to(root)}: its code differs from the examples: scripts/docs.sh renews it")
        elif renewed != text:
            document.write_text(renewed)
        faults += broken_links(document, renewed)
    for file in sorted([*root.glob("examples/*/main.cpp"), *root.glob("examples/*/*.qml")]):
        length = len(file.read_text().splitlines())
        if length > LONGEST:
            faults.append(f"{file.relative_to(root)}: {length} lines, {LONGEST} at most")
    print("\n".join(faults), file=sys.stderr, end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
