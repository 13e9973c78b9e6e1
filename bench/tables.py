#!/usr/bin/env python3
"""Makes the tables of docs/performance.md out of what the benchmark programs wrote: medians, with the least and the
greatest value of all repetitions behind them. Usage: tables.py FOLDER MACHINE-LINE"""

import json
import statistics
import sys
from pathlib import Path

folder = Path(sys.argv[1])


def runs(program):
    """The repetitions of a program's benchmarks, by name."""
    found = {}
    for run in json.loads((folder / f"{program}.json").read_text())["benchmarks"]:
        if run["run_type"] == "iteration":
            found.setdefault(run["run_name"].removesuffix("/manual_time"), []).append(run)
    return {name.split("/iterations:")[0]: repetitions for name, repetitions in found.items()}


def number(value):
    return f"{value:,.0f}" if value >= 1000 else f"{value:.3g}"


def median(values):
    return statistics.median(list(values))


def cell(values):
    values = list(values)
    return f"{number(median(values))} ({number(min(values))}–{number(max(values))})"


def column(repetitions, counter):
    return [run[counter] for run in repetitions]


def table(head, rows):
    return "\n".join("| " + " | ".join(row) + " |" for row in [head, ["---"] * len(head), *rows])


def player_event():
    found = runs("bench_player_event")
    calls = [
        ("median call, in a burst", "playerEvent", "byHand", "p50_us", "5 at most"),
        ("99th of 100 calls", "playerEvent", "byHand", "p99_us", "20 at most"),
        ("mean", "playerEvent", "byHand", "mean_us", ""),
        ("mean, CPU alone", "playerEvent", "byHand", "cpu_us", ""),
        ("median call, at 200 a second", "pacedEvent", "pacedByHand", "p50_us", "15 at most"),
        ("99th of 100 calls", "pacedEvent", "pacedByHand", "p99_us", "60 at most"),
    ]
    rows = []
    for label, engine, floor, counter, wanted in calls:
        ours, theirs = column(found[engine], counter), column(found[floor], counter)
        ratio = number(median(ours) / median(theirs))
        rows.append([label, cell(ours), cell(theirs), ratio, wanted])
    return table(["µs a call", "playerEvent", "by hand", "ratio", "wanted"], rows), len(found["playerEvent"])


def delivery():
    found = runs("bench_delivery")
    rows = []
    for name, connections, rate_wanted, cpu_wanted in [("six", "6", "0.8 at least", "1.5 at most"),
                                                       ("one", "1", "", "1.3 at most")]:
        figures = lambda counter: cell(column(found[name], counter))
        rows.append([connections, "events a second", figures("engine_per_s"), figures("bare_per_s"),
                     figures("rate_ratio"), rate_wanted])
        rows.append([connections, "CPU, µs an event", figures("engine_cpu_us"), figures("bare_cpu_us"),
                     figures("cpu_ratio"), cpu_wanted])
    return table(["connections", "", "engine", "bare loop", "ratio", "wanted"], rows), len(found["six"])


def ready_answer():
    found = runs("bench_ready_answer")
    nanoseconds = {name: [run["s_per_video"] * 1e9 for run in repetitions] for name, repetitions in found.items()}
    sizes = sorted((name.split("/")[1] for name in nanoseconds if name.startswith("readAnswer/")), key=int)
    rows = []
    for size in sizes:
        ours, floor = nanoseconds[f"readAnswer/{size}"], nanoseconds[f"parseOnly/{size}"]
        rows.append([number(int(size)), cell(ours), cell(floor), number(median(ours) / median(floor)), "1.5 at most",
                     cell(nanoseconds[f"groupByCategory/{size}"])])
    growth = median(nanoseconds[f"readAnswer/{sizes[-1]}"]) / median(nanoseconds[f"readAnswer/{sizes[1]}"])
    head = ["videos", "answer read, ns a video", "parser alone, ns a video", "ratio", "wanted", "grouping, ns a video"]
    line = (f"A video among {number(int(sizes[-1]))} costs {number(growth)} times what one among {number(int(sizes[1]))} does; "
            "1 is linear growth.")
    return table(head, rows) + "\n\n" + line, len(found[f"readAnswer/{sizes[0]}"])


def native_views():
    found = runs("bench_list_view")
    microseconds = {name: [run["s_per_video"] * 1e6 for run in repetitions] for name, repetitions in found.items()}
    sizes = sorted((name.split("/")[1] for name in microseconds if name.startswith("fillList/")), key=int)
    rows = [[number(int(size)), cell(microseconds[f"fillList/{size}"]), cell(column(found[f"fillList/{size}"], "cells")),
             cell(microseconds[f"fillCategories/{size}"])] for size in sizes]
    head = ["videos", "filling the list, µs a video", "cells alive", "filling the categories, µs a video"]
    return table(head, rows), len(found[f"fillList/{sizes[0]}"])


def session():
    """Each run is a process of its own, and one line."""
    found = [json.loads(line) for line in (folder / "bench_session.jsonl").read_text().splitlines()]
    figures = {
        "first_engine_ms": ("first engine of a process, until initializeWithAPIKey returns, ms", "5 at most"),
        "each_engine_ms": ("each further one, ms", ""),
        "round_trips": ("from there to the recommendations, in answers' delays of 50 ms; 4 depend on each other",
                        "5 at most"),
        "connections": ("connections for that", "1"),
        "first_kb": ("memory of the first session, kB", "1,024 at most"),
        "each_kb": ("memory of each further engine, kB", "16 at most"),
        "event_bytes": ("memory of an event that waits for a view, bytes", "1,024 at most"),
        "call_bytes": ("memory of a call that waits for the network, bytes", ""),
        "handle_bytes": ("what stays of a finished call until stopAllSessions, bytes", ""),
        "threads": ("threads of the process", ""),
        "threads_of_more": ("threads that 100 further engines add", "0"),
        "wake_ups": ("wake-ups a second while nothing happens", "0"),
    }
    rows = [[label, cell(column(found, figure)), wanted] for figure, (label, wanted) in figures.items()]
    return table(["a session", "measured", "wanted"], rows), len(found)


print(sys.argv[2])
for title, make in [("One player event on the calling thread", player_event), ("Delivery", delivery),
                    ("Reading a ready answer", ready_answer), ("Filling the native views", native_views), ("A session", session)]:
    text, repetitions = make()
    print(f"\n### {title}\n\n{text}\n\nMedians of {repetitions} runs (least–greatest).")
