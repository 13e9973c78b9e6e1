#!/usr/bin/env python3
"""timeline.py TRACE: prints a demo's trace for reading: time, thread, kind and the main value of each entry."""
import json
import sys

SHOWN = {
    "request": lambda e: f'{e["method"]} {e["url"]} {e.get("body", {}).get("type", "")} '
                         f'{e.get("body", {}).get("position", "")}',
    "listener": lambda e: f'{e["what"]} {e.get("state", "")}{", ".join(e.get("videos", []))}',
    "delegate": lambda e: f'{e["what"]} {e.get("title", "")}',
    "overlay": lambda e: f'{e["what"]} {e.get("frame", "")}{e.get("value", "")}',
    "player": lambda e: f'{e["what"]} {e["value"]}',
    "notification": lambda e: e["what"],
    "script": lambda e: f'{e["what"]} {e["value"]}',
    "summary": lambda e: ", ".join(f"{k} {v}" for k, v in e.items() if k not in ("ms", "kind", "thread")),
}

for line in open(sys.argv[1]):
    entry = json.loads(line)
    if entry["kind"] in SHOWN:
        print(f'{entry["ms"]:7d} ms  {entry["thread"]:7}  {entry["kind"]:12}  {SHOWN[entry["kind"]](entry).rstrip()}')
