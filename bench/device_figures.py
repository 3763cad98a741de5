#!/usr/bin/env python3
"""Measures what only whole programs show and writes it as one JSON object (device.json):

  tour_wall_us        zel_device run of the tour in virtual time, wall clock (median of 3)
  serve_host_rss_kb   VmRSS of the service host of an idle `zel_device serve`
  serve_host_anon_kb  the part of it that is the process's own memory (RssAnon), not mapped files
  serve_total_rss_kb  VmRSS of every process of that device, added up
  bare_rss_kb         VmRSS of zel_bench_bare, a program linked with the platform libraries
  bare_anon_kb        its RssAnon
  processes_sweep_us  one fps change for each of GAMES games with 6 callbacks each, played by
                      `zel_device run --processes --realtime`: from the first callback delivered
                      to the last one, from the trace (the player waits for the device to be
                      quiet between two lines, as it always does)

Usage: device_figures.py BIN_DIR SOURCE_DIR OUT_FILE
"""
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

GAMES = 100
CALLBACKS = 6


def wall_us(command):
    start = time.monotonic()
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return (time.monotonic() - start) * 1e6


def tour_wall(bin_dir, source_dir):
    tour = os.path.join(source_dir, "examples", "scenarios", "tour.scn")
    return statistics.median(wall_us([os.path.join(bin_dir, "zel_device"), "run", tour, "--quiet"]) for _ in range(3))


def status_kb(pid, field):
    try:
        with open("/proc/%d/status" % pid) as f:
            for line in f:
                if line.startswith(field + ":"):
                    return int(line.split()[1])
    except OSError:
        pass
    return 0


def rss_kb(pid):
    return status_kb(pid, "VmRSS")


def descendants(pid):
    try:
        with open("/proc/%d/task/%d/children" % (pid, pid)) as f:
            found = [int(child) for child in f.read().split()]
    except OSError:
        return []
    return found + [grandchild for child in found for grandchild in descendants(child)]


def command_line(pid):
    try:
        with open("/proc/%d/cmdline" % pid, "rb") as f:
            return f.read().split(b"\0")
    except OSError:
        return []


def settled_rss(pids_of, settle_s=3.0, limit_s=30.0):
    """{pid: VmRSS} once no process's figure changed for settle_s (or at limit_s)."""
    start = time.monotonic()
    last = {}
    stable_since = time.monotonic()
    while time.monotonic() - start < limit_s:
        now = {pid: rss_kb(pid) for pid in pids_of()}
        if now != last:
            last, stable_since = now, time.monotonic()
        elif time.monotonic() - stable_since >= settle_s:
            break
        time.sleep(0.5)
    return last


def serve_rss(bin_dir):
    run_dir = tempfile.mkdtemp(prefix="zel_bench_serve.")
    serve = subprocess.Popen([os.path.join(bin_dir, "zel_device"), "serve", "--dir", run_dir],
                             stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    try:
        if "serving" not in serve.stdout.readline():
            return None, None, None
        rss = settled_rss(lambda: [serve.pid] + descendants(serve.pid))
        hosts = [pid for pid in rss if command_line(pid)[1:3] == [b"process", b"host"]]
        if not hosts:
            return None, None, sum(rss.values())
        return rss[hosts[0]], status_kb(hosts[0], "RssAnon"), sum(rss.values())
    finally:
        serve.terminate()
        serve.wait(timeout=30)


def bare_rss(bin_dir):
    bare = subprocess.Popen([os.path.join(bin_dir, "zel_bench_bare")], stdout=subprocess.PIPE, text=True)
    try:
        bare.stdout.readline()
        rss = settled_rss(lambda: [bare.pid], settle_s=1.0, limit_s=5.0).get(bare.pid)
        return rss, status_kb(bare.pid, "RssAnon")
    finally:
        bare.terminate()
        bare.wait(timeout=10)


def sweep_scenario(games):
    lines = ["0 pkg.install com.bench.game%d game" % g for g in range(games)]
    lines.append("0 boot")
    lines += ["5000 register com.bench.game%d cb%d" % (g, c) for g in range(games) for c in range(CALLBACKS)]
    lines += ["%s gamefps com.bench.game%d 60" % ("10000" if g == 0 else "+0", g) for g in range(games)]
    lines.append("12000 end")
    return "\n".join(lines) + "\n"


def processes_sweep(bin_dir, games=GAMES):
    """From the first callback of the sweep to the last, on the real clock, from the trace."""
    with tempfile.TemporaryDirectory(prefix="zel_bench_sweep.") as folder:
        scenario = os.path.join(folder, "sweep.scn")
        trace = os.path.join(folder, "trace.jsonl")
        with open(scenario, "w") as f:
            f.write(sweep_scenario(games))
        subprocess.run([os.path.join(bin_dir, "zel_device"), "run", scenario, "--processes", "--realtime", "--quiet",
                        "--trace", trace], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        with open(trace) as f:
            times = [event["t"] for event in map(json.loads, f) if event.get("ev") == "game.fps"]
    if len(times) != games * CALLBACKS:
        return None
    return (max(times) - min(times)) * 1000.0


def main():
    bin_dir, source_dir, out_file = sys.argv[1:4]
    host, host_anon, total = serve_rss(bin_dir)
    bare_rss_kb, bare_anon_kb = bare_rss(bin_dir)
    figures = {
        "tour_wall_us": tour_wall(bin_dir, source_dir),
        "serve_host_rss_kb": host,
        "serve_host_anon_kb": host_anon,
        "serve_total_rss_kb": total,
        "bare_rss_kb": bare_rss_kb,
        "bare_anon_kb": bare_anon_kb,
        "processes_sweep_us": processes_sweep(bin_dir),
    }
    with open(out_file, "w") as f:
        json.dump({key: value for key, value in figures.items() if value is not None}, f, indent=1)


if __name__ == "__main__":
    main()
