#!/usr/bin/env python3
"""Checks the benchmark table: what it prints from given figures, and, with the benchmark programs'
folder as argument, that every benchmark it reads is one the programs have."""
import contextlib
import io
import json
import os
import re
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import device_figures  # noqa: E402
import table  # noqa: E402

BIN_DIR = None


def entry(name, **counters):
    return dict(name=name, run_type="iteration", **counters)


def write(folder, stem, benchmarks):
    with open(os.path.join(folder, stem + ".json"), "w") as f:
        json.dump({"benchmarks": benchmarks}, f)


def printed(folder):
    out = io.StringIO()
    with contextlib.redirect_stdout(out):
        table.print_table(folder)
    return {tuple(re.split(r"\s{2,}", line.strip())[:2]): re.split(r"\s{2,}", line.strip())
            for line in out.getvalue().splitlines()[1:]}


class TableTest(unittest.TestCase):
    def test_rows_show_both_figures_their_ratios_and_the_verdict(self):
        with tempfile.TemporaryDirectory() as folder:
            write(folder, "zel_bench", [
                entry("InProcessRoundTrip/real_time", p50_us=12.0, p99_us=30.0),
                entry("FloorEventfdRoundTrip/default_placement/real_time", p50_us=10.0, p99_us=20.0),
                entry("LocalCallThroughProxy/real_time", p50_us=0.25, p99_us=0.5),
                # An aggregate and a failed run are not figures.
                entry("TasksDueAtOnce<RunnerPoster>/manual_time", p50_us=1.0, p99_us=1.0, error_occurred=True),
                dict(entry("TasksDueAtOnce<FloorPoster>/manual_time", p50_us=1.0, p99_us=1.0), run_type="aggregate"),
                entry("InProcessOneWay/real_time", msgs_per_s=500000.0),
                entry("FloorQueueOneWay/real_time", msgs_per_s=2000000.0),
            ])
            write(folder, "zel_bench_service", [
                entry("SceneEnterExitDirect/real_time", p50_us=29.0, p99_us=41.0),
                entry("FloorEventfdTwoRoundTrips/real_time", p50_us=20.0, p99_us=20.0),
                entry("GameFpsFanOut/1000/min_warmup_time:0.200/real_time", p50_us=2.0, p99_us=3.0,
                      sweep_p50_us=31000.0, sweep_p99_us=40000.0),
            ])
            with open(os.path.join(folder, "device.json"), "w") as f:
                json.dump({"serve_host_rss_kb": 7000, "bare_rss_kb": 3500}, f)
            rows = printed(folder)
        self.assertEqual(rows[("3 round trip", "in-process transport")],
                         ["3 round trip", "in-process transport", "12.00 us", "30.00 us", "10.00 us", "20.00 us",
                          "1.20x", "1.50x", "<= 1.3x, p99 <= 2x", "met"])
        self.assertEqual(rows[("2 call in one process", "proxy -> stub")][2:], ["250 ns", "500 ns", "-", "-", "-", "-",
                                                                                "< 300 ns", "met"])
        # Within the median's target, but the p99 is more than twice the floor's.
        self.assertEqual(rows[("4 SetScene enter+exit", "on the service object")][6:], ["1.45x", "2.05x",
                                                                                      "<= 1.5x, p99 <= 2x", "missed"])
        self.assertEqual(rows[("3 one-way (per msg)", "in-process transport")][2:8],
                         ["2.00 us", "-", "500 ns", "-", "4.00x", "-"])
        self.assertEqual(rows[("5 fps fan-out (sweep)", "1000 games x 6")][2:], ["31.00 ms", "40.00 ms", "-", "-",
                                                                                "-", "-", "< 30.00 ms", "missed"])
        self.assertEqual(rows[("7 device", "idle VmRSS, service host")][2:], ["6.8 MB", "-", "3.4 MB", "-", "2.00x",
                                                                            "-", "< 8.0 MB", "met"])
        for missing in [("6 task queue", "10k due at once"), ("5 fps fan-out (per cb)", "100 games x 6")]:
            self.assertEqual(rows[missing][2], "-")
            self.assertEqual(rows[missing][-1], "n/a")
        self.assertEqual(rows[("3 round trip", "socket transport")][-2:], ["-", "-"])


class NamesTest(unittest.TestCase):
    def test_every_benchmark_the_table_reads_is_one_a_program_has(self):
        if BIN_DIR is None:
            self.skipTest("needs the folder of the benchmark programs")
        programs = {"zel_bench": ["zel_bench"], "zel_bench_service": ["zel_bench_service"],
                    "zel_bench_socket": ["zel_bench_socket"], "zel_bench_socket_cpu0": ["zel_bench_socket"]}
        listed = {}
        for stem, command in programs.items():
            result = subprocess.run([os.path.join(BIN_DIR, command[0]), "--benchmark_list_tests=true"],
                                    check=True, capture_output=True, text=True, timeout=60)
            listed[stem] = {table.short_name(name) for name in result.stdout.split()}
        wanted = [source for row in table.rows() for source in row[2:4] if source and source[0] in programs]
        self.assertTrue(wanted)
        for stem, name, _ in wanted:
            self.assertIn(name, listed[stem], stem)


class SweepScenarioTest(unittest.TestCase):
    def test_the_generated_sweep_is_a_scenario_zel_device_accepts(self):
        if BIN_DIR is None:
            self.skipTest("needs the folder of zel_device")
        text = device_figures.sweep_scenario(3)
        self.assertEqual(text.count(" register "), 3 * device_figures.CALLBACKS)
        self.assertEqual(text.count(" gamefps "), 3)
        with tempfile.TemporaryDirectory() as folder:
            scenario = os.path.join(folder, "sweep.scn")
            with open(scenario, "w") as f:
                f.write(text)
            result = subprocess.run([os.path.join(BIN_DIR, "zel_device"), "check", scenario], capture_output=True,
                                    text=True, timeout=60)
        self.assertEqual(result.returncode, 0, result.stdout + result.stderr)


if __name__ == "__main__":
    if len(sys.argv) > 1:
        BIN_DIR = sys.argv.pop(1)
    unittest.main()
