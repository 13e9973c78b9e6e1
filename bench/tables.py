#!/usr/bin/env python3
"""Makes the tables and charts of docs/performance.md from the output of the benchmark programs: medians, with the lowest
and the highest value of all repetitions. Usage: tables.py FOLDER MACHINE-LINE CHARTS-FOLDER"""

import json
import sys
from pathlib import Path
from statistics import median

import charts
import costs
from figures import number, table

folder = Path(sys.argv[1])


def runs(program):
    """The repetitions of a program's benchmarks, by name."""
    found = {}
    for run in json.loads((folder / f"{program}.json").read_text())["benchmarks"]:
        if run["run_type"] == "iteration":
            found.setdefault(run["run_name"].removesuffix("/manual_time"), []).append(run)
    return {name.split("/iterations:")[0]: repetitions for name, repetitions in found.items()}


def cell(values):
    values = list(values)
    return f"{number(median(values))} ({number(min(values))}–{number(max(values))})"


def column(repetitions, counter):
    return [run[counter] for run in repetitions]


def player_event():
    found = runs("bench_player_event")
    calls = [
        ("median call, in a burst", "playerEvent", "byHand", "p50_us", "1.5 µs, and 3 times the floor at most"),
        ("99th of 100 calls", "playerEvent", "byHand", "p99_us", "4 µs at most"),
        ("mean", "playerEvent", "byHand", "mean_us", ""),
        ("mean, CPU alone", "playerEvent", "byHand", "cpu_us", ""),
        ("median call, at 200 a second", "pacedEvent", "pacedByHand", "p50_us", "3 times the floor at most"),
        ("99th of 100 calls", "pacedEvent", "pacedByHand", "p99_us", ""),
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
    for name, connections, rate_wanted, cpu_wanted in [("six", "6", "0.85 at least", "1.4 at most"),
                                                       ("one", "1", "", "1.6 at most")]:
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
        ratio = median(ours) / median(floor)
        rows.append([number(int(size)), cell(ours), cell(floor), number(ratio), "1.3 at most",
                     cell(nanoseconds[f"groupByCategory/{size}"])])
    growth = median(nanoseconds[f"readAnswer/{sizes[-1]}"]) / median(nanoseconds[f"readAnswer/{sizes[1]}"])
    head = ["videos", "answer read, ns a video", "parser alone, ns a video", "ratio", "wanted", "grouping, ns a video"]
    line = (f"A video among {number(int(sizes[-1]))} costs {number(growth)} times what one among {number(int(sizes[1]))} does; "
            "1 is linear growth.")
    return table(head, rows) + "\n\n" + line, len(found[f"readAnswer/{sizes[0]}"])


def native_views():
    found = runs("bench_list_view")
    microseconds = {name: [run["s_per_video"] * 1e6 for run in repetitions] for name, repetitions in found.items()
                    if name.startswith("fill")}
    sizes = sorted((name.split("/")[1] for name in microseconds if name.startswith("fillList/")), key=int)
    rows = [[number(int(size)), cell(microseconds[f"fillList/{size}"]), cell(column(found[f"fillList/{size}"], "cells")),
             cell(microseconds[f"fillCategories/{size}"])] for size in sizes]
    head = ["videos", "filling the list, µs a video", "cells alive", "filling the categories, µs a video"]
    return table(head, rows), len(found[f"fillList/{sizes[0]}"])


def list_and_bare_view():
    found = runs("bench_list_view")
    sizes = sorted((int(name.split("/")[1]) for name in found if name.startswith("showList/")))
    figures = {
        "frame_ms": ("first frame, ms", "1.1 at most"),
        "frame_cpu_ms": ("first frame, the main thread's CPU, ms", "1.1 at most"),
        "step_us": ("a step of scrolling, µs", "1.1 at most"),
        "step_cpu_us": ("a step of scrolling, the main thread's CPU, µs", "1.1 at most"),
        "cells": ("cells alive", "24 at most"),
        "kb": ("memory without the pictures, kB", ""),
    }
    rows = []
    for figure, (label, wanted) in figures.items():
        for size in sizes[1:]:
            ours, theirs = (column(found[f"{name}/{size}"], figure) for name in ("showList", "showBare"))
            has_ratio = figure.startswith(("frame", "step"))
            ratio = median(ours) / median(theirs) if has_ratio else ""
            rows.append([f"{label}, {number(size)} videos", cell(ours), cell(theirs), number(ratio) if has_ratio else "",
                         wanted])

    def bytes_of_one(name):
        less, more = (median(column(found[f"{name}/{size}"], "kb")) for size in sizes[1:])
        return number(round((more - less) * 1024 / (sizes[2] - sizes[1])))

    line = f"Beside its picture a video takes {bytes_of_one('showList')} bytes, in the bare view {bytes_of_one('showBare')}."
    return table(["", "list", "bare view", "ratio", "wanted"], rows) + "\n\n" + line, len(found[f"showList/{sizes[0]}"])


def thumbnails():
    found = runs("bench_thumbnails")["thumbnails"]
    rows = []
    for name, label, wanted in [("fetched", "handed over", ""), ("shown", "drawn in the list", "1.3 at most")]:
        for unit, what in [("ms", "ms"), ("cpu_ms", "CPU of the process, ms")]:
            rows.append([f"{label}, {what}", cell(column(found, f"{name}_{unit}")), cell(column(found, f"floor_{unit}")),
                         cell(column(found, f"{name}_{unit.replace('ms', 'ratio')}")),
                         wanted if unit == "ms" else ""])
        rows.append([f"{label}, the calling thread's CPU, ms", cell(column(found, f"{name}_main_ms")), "", "",
                     "nothing decoded" if name == "fetched" else ""])
    return table(["100 thumbnails", "library", "by hand", "ratio", "wanted"], rows), len(found)


def lines(program):
    """The runs of a program that measures once and prints one line of JSON."""
    return [json.loads(line) for line in (folder / f"{program}.jsonl").read_text().splitlines()]


def processes(program, head, figures):
    found = lines(program)
    rows = [[label, cell(column(found, figure)), wanted] for figure, (label, wanted) in figures.items()]
    return table([head, "measured", "wanted"], rows), len(found)


def overlay():
    return processes("bench_overlay", "from the end of the pause's half second, ms", {
        "further_ms": ("to the overlay", "two frames"),
        "first_ms": ("to the overlay's first showing", "two frames"),
        "frame_ms": ("one frame: a plain item shows, from when it is made visible", ""),
    })


def stalls():
    return processes("stalls", "the longest event of the main thread, ms", {
        "longestStallMs": ("of the library", "16 at most"),
        "longestStallCpuMs": ("this thread's CPU in it", ""),
        "longestOtherMs": ("of others: players, the web engine, the demo itself", "16 at most"),
        "webEngineStartMs": ("the web engine's one start", ""),
        "longestDrawingMs": ("drawing the window, without a GPU", ""),
    })


def session():
    return processes("bench_session", "a session", {
        "first_engine_ms": ("first engine of a process, until initializeWithAPIKey returns, ms", "5 at most"),
        "each_engine_ms": ("each further one, ms", ""),
        "round_trips": ("from there to the recommendations, in answers' delays of 50 ms; 4 depend on each other",
                        "5 at most"),
        "connections": ("connections for that", "1"),
        "first_kb": ("memory of the first session, kB", "1,024 at most"),
        "each_kb": ("memory of each further engine, kB", "16 at most"),
        "event_bytes": ("memory of an event that waits for a view, bytes", "1,024 at most"),
        "call_bytes": ("memory of a call that waits for the network, bytes", "1,200 at most"),
        "handle_bytes": ("what stays of a finished call until stopAllSessions, bytes", ""),
        "threads": ("threads of the process", ""),
        "threads_of_more": ("threads that 100 further engines add", "0"),
        "wake_ups": ("wake-ups a second while nothing happens", "0"),
    })


def chart_of_event(path):
    counted = costs.measured(folder / "costs")
    layers = {"the call": "playerEvent", "networking": "networking of an event", "delivery": "delivery of an event",
              "listener": "listener of an event"}
    ours = [counted[f"{name}, instructions"] / 1000 for name in layers.values()]
    floor = counted["bare loop with an event, instructions"] / 1000
    charts.bars(path, f"An event costs {sum(ours) / floor:.2f} times a bare libcurl loop",
                "Thousands of instructions from playerEvent() to the listener, counted with callgrind.", "thousand",
                [("ZelvanoUI", ours), ("bare libcurl loop", [0, floor])], layers)


def chart_of_list(path):
    found = runs("bench_list_view")
    size = max(int(name.split("/")[1]) for name in found if name.startswith("showList/"))
    cpu = lambda name, counter, scale: median(column(found[f"{name}/{size}"], counter)) / scale
    figures = [("first frame", "frame_cpu_ms", 1), ("10 scroll steps", "step_cpu_us", 100)]
    ratios = [cpu("showList", counter, 1) / cpu("showBare", counter, 1) for _, counter, _ in figures]
    rows = [(f"{label}, {name}", [cpu(program, counter, scale)] if program == "showList" else
             [0, cpu(program, counter, scale)])
            for label, counter, scale in figures for name, program in [("list", "showList"), ("bare", "showBare")]]
    charts.bars(path, f"The list: {ratios[0]:.1f} times a bare view's first frame, {ratios[1]:.1f} times its scroll step",
                f"CPU of the main thread with {number(size)} videos, beside Qt's own ListView with the same look.", "ms",
                rows, ["ZVListView", "bare ListView"])


def chart_of_start(path):
    found = lines("bench_session")
    names = [name for name, _, _ in found[0]["calls"]]
    times = {name: [median(call[i] for run in found for call in run["calls"] if call[0] == name) for i in (1, 2)]
             for name in names}
    end = times["ready"][1]
    waited = sum(finish - begin for name, (begin, finish) in times.items() if name != "keepalive")
    charts.bars(path, f"To the recommendations: {end:.0f} ms, of which {waited:.0f} ms wait for the service",
                "From the API key on. Each answer takes 50 ms; four calls depend on each other.", "ms",
                [(name, [(begin, None), finish - begin]) for name, (begin, finish) in times.items()])


def main():
    target = Path(sys.argv[3])
    chart_of_event(target / "cost-of-an-event.svg")
    chart_of_list(target / "list-beside-bare-view.svg")
    chart_of_start(target / "start-of-a-session.svg")
    texts = [sys.argv[2]]
    for title, make in [("One player event on the calling thread", player_event), ("Delivery", delivery),
                        ("Reading a ready answer", ready_answer), ("Thumbnails", thumbnails),
                        ("Filling the native views", native_views), ("The list, and a bare view", list_and_bare_view),
                        ("Pause to overlay", overlay), ("Stalls", stalls), ("A session", session)]:
        text, repetitions = make()
        texts.append(f"### {title}\n\n{text}\n\nMedians of {repetitions} runs (least–greatest).")
    print("\n\n".join(texts))


main()
