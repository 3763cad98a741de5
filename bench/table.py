#!/usr/bin/env python3
"""Prints one table of every measured path beside its floor from the benchmark programs' JSON.

Usage: table.py DIR, where DIR holds the JSON files scripts/bench writes: zel_bench.json,
zel_bench_service.json, zel_bench_socket.json, zel_bench_socket_cpu0.json and device.json (the
figures scripts/bench measures itself). A file or a benchmark that is missing shows as n/a.
"""
import json
import os
import re
import sys

import device_figures

P99_LIMIT = 2.0  # a path's p99 may be at most this many times its floor's
SWEEP_MESSAGES = device_figures.GAMES * device_figures.CALLBACKS  # callbacks of the sweep through zel_device


def load(directory):
    """{file stem: {benchmark name: entry}}; names lose their /real_time-like suffixes."""
    runs = {}
    for name in os.listdir(directory):
        if not name.endswith(".json"):
            continue
        with open(os.path.join(directory, name)) as f:
            data = json.load(f)
        stem = name[:-5]
        if "benchmarks" not in data:
            runs[stem] = {key: {"value": value} for key, value in data.items()}
            continue
        runs[stem] = {}
        for entry in data["benchmarks"]:
            if entry.get("run_type", "iteration") != "iteration" or entry.get("error_occurred"):
                continue
            runs[stem][short_name(entry["name"])] = entry
    return runs


def short_name(name):
    """A benchmark's name without the settings Google Benchmark appends (/real_time, /iterations:3)."""
    return "/".join(p for p in name.split("/") if ":" not in p and p not in ("real_time", "manual_time"))


def latency(entry, prefix=""):
    """(median, p99) in microseconds."""
    if entry is None or prefix + "p50_us" not in entry:
        return None
    return entry[prefix + "p50_us"], entry[prefix + "p99_us"]


def per_message(entry):
    """A rate as microseconds per message; no p99."""
    if entry is None or not entry.get("msgs_per_s"):
        return None
    return 1e6 / entry["msgs_per_s"], None


def per_message_times(count):
    def figure(entry):
        one = per_message(entry)
        return None if one is None else (one[0] * count, None)
    return figure


def scalar(unit_scale=1.0):
    def figure(entry):
        return None if entry is None else (entry["value"] * unit_scale, None)
    return figure


def fmt(value, unit):
    if value is None:
        return "-"
    if unit == "us" and value < 1:
        return "%.0f ns" % (value * 1000)
    if unit == "us" and value >= 1000:
        return "%.2f ms" % (value / 1000)
    if unit == "us":
        return "%.2f us" % value
    if unit == "kB" and value >= 1024:
        return "%.1f MB" % (value / 1024)
    return "%.0f %s" % (value, unit)


def ratio(path, floor):
    if path is None or floor is None or floor == 0:
        return None
    return path / floor


def judge(target, unit, path, floor):
    """The target's text and "met", "missed", "n/a" or "-" (no target)."""
    kind, limit = target
    if kind == "none":
        return "-", "-"
    if kind == "below":
        text = "< " + fmt(limit, unit)
        return text, "n/a" if path is None else "met" if path[0] < limit else "missed"
    text = "<= %.1fx, p99 <= %.0fx" % (limit, P99_LIMIT)
    med = ratio(path[0], floor[0]) if path and floor else None
    if med is None:
        return text, "n/a"
    p99 = ratio(path[1], floor[1]) if path[1] is not None and floor[1] is not None else None
    return text, "met" if med <= limit and (p99 is None or p99 <= P99_LIMIT) else "missed"


def rows():
    """(group, label, path source, floor source, target, unit); a source is (file, name, figure)."""
    parcel = []
    for layout in ("SetScene", "ChangeResolutionMode", "SetThermalPolicy", "RegisterGameFpsListener",
                   "SetGameFpsForThermalControl", "OnGameFpsChange"):
        parcel.append(("1 parcel write+read", layout, ("zel_bench", "ParcelWriteRead/" + layout, latency),
                       ("zel_bench", "FloorMemcpy/" + layout, latency), ("none", None), "us"))
    eventfd = ("zel_bench", "FloorEventfdRoundTrip/default_placement", latency)
    seq_child = ("zel_bench_socket", "FloorSeqpacketProcessRoundTrip/default_placement", latency)
    seq_child_cpu0 = ("zel_bench_socket_cpu0", "FloorSeqpacketProcessRoundTrip/default_placement", latency)
    return parcel + [
        ("2 call in one process", "proxy -> stub", ("zel_bench", "LocalCallThroughProxy", latency), None,
         ("below", 0.3), "us"),
        ("3 round trip", "in-process transport", ("zel_bench", "InProcessRoundTrip", latency), eventfd,
         ("ratio", 1.3), "us"),
        ("3 round trip", "socket transport", ("zel_bench_socket", "SocketTransportRoundTrip", latency), seq_child,
         ("none", None), "us"),
        ("3 round trip", "socket transport, 1 CPU",
         ("zel_bench_socket_cpu0", "SocketTransportRoundTrip", latency), seq_child_cpu0, ("none", None), "us"),
        ("3 one-way (per msg)", "in-process transport", ("zel_bench", "InProcessOneWay", per_message),
         ("zel_bench", "FloorQueueOneWay", per_message), ("none", None), "us"),
        ("3 one-way (per msg)", "socket transport", ("zel_bench_socket", "SocketTransportOneWay", per_message),
         ("zel_bench_socket", "FloorSeqpacketOneWay", per_message), ("none", None), "us"),
        ("3 one-way (per msg)", "socket transport, 1 CPU",
         ("zel_bench_socket_cpu0", "SocketTransportOneWay", per_message),
         ("zel_bench_socket_cpu0", "FloorSeqpacketOneWay", per_message), ("none", None), "us"),
        ("4 SetScene enter+exit", "on the service object", ("zel_bench_service", "SceneEnterExitDirect", latency),
         ("zel_bench_service", "FloorEventfdTwoRoundTrips", latency), ("ratio", 1.5), "us"),
        ("4 SetScene enter+exit", "through the proxy",
         ("zel_bench_service", "SceneEnterExitThroughProxy", latency),
         ("zel_bench_service", "FloorEventfdTwoRoundTrips", latency), ("ratio", 1.5), "us"),
        ("5 fps fan-out (per cb)", "100 games x 6", ("zel_bench_service", "GameFpsFanOut/100", latency),
         ("zel_bench_service", "FloorQueueOneWay", per_message), ("ratio", 3.0), "us"),
        ("5 fps fan-out (per cb)", "1000 games x 6", ("zel_bench_service", "GameFpsFanOut/1000", latency),
         ("zel_bench_service", "FloorQueueOneWay", per_message), ("ratio", 3.0), "us"),
        ("5 fps fan-out (sweep)", "1000 games x 6",
         ("zel_bench_service", "GameFpsFanOut/1000", lambda e: latency(e, "sweep_")), None, ("below", 30000.0),
         "us"),
        ("5 fps fan-out (sweep)", "zel_device --processes",
         ("device", "processes_sweep_us", scalar()),
         ("zel_bench_socket", "FloorSeqpacketProcessBatch/%d" % SWEEP_MESSAGES, per_message_times(SWEEP_MESSAGES)),
         ("ratio", 3.0), "us"),
        ("6 task queue", "10k due at once", ("zel_bench", "TasksDueAtOnce<RunnerPoster>", latency),
         ("zel_bench", "TasksDueAtOnce<FloorPoster>", latency), ("ratio", 2.0), "us"),
        ("6 task queue", "10k over 1 s: lateness",
         ("zel_bench", "TasksSpreadOverASecond<RunnerPoster>", latency),
         ("zel_bench", "TasksSpreadOverASecond<FloorPoster>", latency), ("ratio", 2.0), "us"),
        ("7 device", "tour wall time", ("device", "tour_wall_us", scalar()), None, ("none", None), "us"),
        ("7 device", "idle VmRSS, service host", ("device", "serve_host_rss_kb", scalar()),
         ("device", "bare_rss_kb", scalar()), ("below", 8192.0), "kB"),
        ("7 device", "idle RssAnon, service host", ("device", "serve_host_anon_kb", scalar()),
         ("device", "bare_anon_kb", scalar()), ("none", None), "kB"),
        ("7 device", "idle VmRSS, all processes", ("device", "serve_total_rss_kb", scalar()),
         ("device", "bare_rss_kb", scalar()), ("none", None), "kB"),
    ]


def print_table(directory):
    runs = load(directory)
    header = ("path", "", "median", "p99", "floor med", "floor p99", "med/med", "p99/p99", "target", "")
    table = [header]
    for group, label, path_src, floor_src, target, unit in rows():
        path = figure_of(runs, path_src)
        floor = figure_of(runs, floor_src)
        med = ratio(path[0], floor[0]) if path and floor else None
        p99 = ratio(path[1], floor[1]) if path and floor and path[1] is not None and floor[1] is not None else None
        text, verdict = judge(target, unit, path, floor)
        table.append((group, label, fmt(path[0] if path else None, unit), fmt(path[1] if path else None, unit),
                      fmt(floor[0] if floor else None, unit), fmt(floor[1] if floor else None, unit),
                      "%.2fx" % med if med is not None else "-", "%.2fx" % p99 if p99 is not None else "-", text,
                      verdict))
    widths = [max(len(row[i]) for row in table) for i in range(len(header))]
    for row in table:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


def figure_of(runs, source):
    if source is None:
        return None
    stem, name, figure = source
    return figure(runs.get(stem, {}).get(name))


if __name__ == "__main__":
    print_table(sys.argv[1] if len(sys.argv) > 1 else ".")
