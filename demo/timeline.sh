#!/usr/bin/env bash
# Prints a demo's trace as a person reads it: time, thread, kind, and the heart of each occurrence.
set -euo pipefail
python3 - "$1" <<'PYTHON'
import json
import sys

shown = {
    "request": lambda e: f'{e["method"]} {e["url"]} {e.get("body", {}).get("type", "")} {e.get("body", {}).get("position", "")}',
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
    if entry["kind"] in shown:
        print(f'{entry["ms"]:7d} ms  {entry["thread"]:7}  {entry["kind"]:12}  {shown[entry["kind"]](entry).rstrip()}')
PYTHON
