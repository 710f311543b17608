#!/usr/bin/env python3
"""Runs a benchmark program and writes a table of ratios, our time divided by each peer's.

  table.py PROGRAM PAGE [FILTER]

The program runs as three processes, each with interleaved repetitions. A process yields one ratio for each row, that of
the medians of its repetitions; the table shows the median of the three. The first contestant of a row is ours. With
FILTER, a regular expression on the names, the table is printed and PAGE is left untouched.
"""
import json
import os
import statistics
import subprocess
import sys

PROCESSES = 3
REPETITIONS = 7
# The heap keeps freed memory. Otherwise some benchmarks would map and unmap a large block on every turn and others would
# not, depending on what ran before.
KEEP_PAGES = "glibc.malloc.mmap_threshold=1073741824:glibc.malloc.trim_threshold=4294967296"
HEAD = """# Benchmark: {name}

Our time divided by the peer's: below 1.00 we are faster. Written by `./dev bench {name}`, GCC at -O2, the library at
-O3, {cpus} cores at {mhz} MHz. Median of {processes} processes, each the ratio of the medians of {repetitions} interleaved
repetitions; differences under 15 % are noise.

"""


def measure(program, name_filter):
    """Runs one process; returns {row: {contestant: {n: [times in ns]}}} and the context that it reports."""
    output = subprocess.run(
        [program, "--benchmark_format=json", f"--benchmark_repetitions={REPETITIONS}", "--benchmark_min_time=0.02",
         "--benchmark_enable_random_interleaving=true", f"--benchmark_filter={name_filter}"],
        env=os.environ | {"GLIBC_TUNABLES": KEEP_PAGES}, check=True, stdout=subprocess.PIPE,
        stderr=subprocess.DEVNULL, text=True).stdout
    report = json.loads(output)
    times = {}
    # Interleaving shuffles the report; the family index is the order of registration.
    for run in sorted(report["benchmarks"], key=lambda run: (run["family_index"], run["per_family_instance_index"])):
        if run.get("error_occurred"):
            sys.exit(f"{run['name']}: {run['error_message']}")
        if run["run_type"] == "iteration":
            row, contestant, n = run["run_name"].split("/")
            times.setdefault(row, {}).setdefault(contestant, {}).setdefault(int(n), []).append(run["cpu_time"])
    return times, report["context"]


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    program, page = sys.argv[1:3]
    name_filter = sys.argv[3] if len(sys.argv) == 4 else "."
    runs = []
    for _ in range(PROCESSES):
        times, context = measure(program, name_filter)
        runs.append(times)

    peers = []
    for row in runs[0].values():
        peers += [peer for peer in list(row)[1:] if peer not in peers]
    lines = ["| | n | ns | " + " | ".join(peers) + " |", "|---|--:|--:|" + "--:|" * len(peers)]
    for row, contestants in runs[0].items():
        own = next(iter(contestants))
        for n in contestants[own]:
            cells = []
            for peer in peers:
                ratios = [statistics.median(run[row][own][n]) / statistics.median(run[row][peer][n])
                          for run in runs if n in run[row].get(peer, {})]
                cells.append(f"{statistics.median(ratios):.2f}" if ratios else "")
            time = statistics.median(statistics.median(run[row][own][n]) for run in runs)
            lines.append(f"| {row} | {n} | {time:.0f} | " + " | ".join(cells) + " |")
    table = "\n".join(lines) + "\n"
    print(table)
    if len(sys.argv) == 3:
        name = page.rsplit("/", 1)[-1].removesuffix(".md")
        with open(page, "w", encoding="utf-8") as file:
            file.write(HEAD.format(name=name, cpus=context["num_cpus"], mhz=context["mhz_per_cpu"],
                                   processes=PROCESSES, repetitions=REPETITIONS) + table)


main()
