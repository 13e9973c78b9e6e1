#!/usr/bin/env python3
"""Makes the tables and charts of docs/fleet.md from the output of bench/fleet.cpp. Usage: fleet.py FILE CHARTS-FOLDER"""

import json
import sys
from datetime import timedelta
from pathlib import Path

import charts
from figures import number, table

found = json.loads(Path(sys.argv[1]).read_text())
target = Path(sys.argv[2])


def costs():
    runs = [found["alone"], found["together"], found["without_ui"]]
    figures = {
        "requests": "requests",
        "received_kb": "kB that the service receives",
        "sent_kb": "kB that the service sends",
        "handshakes": "new connections",
        "open": "open connections, on average",
    }
    kinds = {f"requests: {kind}": [run["kinds"].get(kind, 0) for run in runs] for kind in found["alone"]["kinds"]}
    rows = {label: [run[figure] for run in runs] for figure, label in figures.items()}
    rows["memory of a viewer's engine, kB"] = [None, found["together"]["memory_kb"], None]
    return table(["per viewer-hour", "one viewer in a process", f"{found['viewers']} viewers in a process",
                  "one viewer, `showUI` false"],
                 [[label, *("" if value is None else number(value) for value in values)]
                  for label, values in [*rows.items(), *kinds.items()]])


def million():
    each = found["alone"]
    rows = [[label, f"{value:,.0f}"] for label, value in [
        ("requests a second", each["requests"] * 1e6 / 3600),
        ("MB received a second", each["received_kb"] * 1e6 / 3600 / 1024),
        ("MB sent a second", each["sent_kb"] * 1e6 / 3600 / 1024),
        ("new connections a second", each["handshakes"] * 1e6 / 3600)]]
    return table(["a million viewers at the same time", ""], rows)


def keep_alives():
    intervals = sorted(((int(seconds), run) for seconds, run in found["keep_alive"].items()), reverse=True)
    figures = ["requests", "received_kb", "handshakes"]
    rows = [[str(timedelta(seconds=seconds)), *(number(run[figure]) for figure in figures),
             number(run["kinds"]["keep-alives"])] for seconds, run in intervals]
    usual, shortest = intervals[0][1]["requests"], intervals[-1][1]["requests"]
    charts.bars(target / "fleet-keep-alive.svg",
                f"A keep-alive each {intervals[-1][0]} s makes {shortest / usual:.1f} times the requests",
                "Requests of a viewer in an hour, by the service's keepALiveInterval.", "",
                [(f"each {seconds} s", [run["requests"] - run["kinds"]["keep-alives"], run["kinds"]["keep-alives"]])
                 for seconds, run in intervals], ["the session", "keep-alives"])
    return table(["`keepALiveInterval`", "requests", "kB received", "new connections", "of the requests, keep-alives"],
                 rows)


def outage():
    minutes = found["outage"]["minutes"]
    first = 2 # All viewers have come.
    begin, end = found["outage_begin"] // 60, found["outage_end"] // 60
    before, during, after = minutes[first:begin], minutes[begin:end], minutes[end:]
    mean = sum(before) / len(before)
    charts.columns(target / "fleet-outage.svg",
                   f"After an outage there is no storm: {max(after) / mean:.2f} times the usual minute at most",
                   f"Requests of {found['viewers']} viewers, minute by minute. In the orange minutes the service answers "
                   "none.",
                   minutes[first:], first, [(begin, end)])
    return table(["requests in a minute", "mean", "most"],
                 [[name, number(sum(part) / len(part)), number(max(part))]
                  for name, part in [("before the outage", before), ("in the outage", during), ("after it", after)]])


def main():
    print("### A million viewers", million(), "### A viewer-hour", costs(), "### The keep-alive interval", keep_alives(),
          "### An outage", outage(), sep="\n\n")


main()
