#!/usr/bin/env python3
"""Runs a benchmark program and writes a table of ratios, our time divided by each peer's.

  table.py PROGRAM PAGE [FILTER]

The program runs as three processes, each with interleaved repetitions. A process yields one ratio for each row, that of
the medians of its repetitions; the table shows the median of the three. The first contestant of a row is ours. With
FILTER, a regular expression on the names, the table is printed and PAGE is left untouched.

The page growth.md is different. Its program reports the time for an element in each phase as a counter, and its table
has a line for each phase and contestant and a column for each n: the median of three processes.
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


GROWTH_HEAD = """# Benchmark: {name}

Time for an element in ns, at sizes from a thousand to ten million elements. Written by `./dev bench {name}`, GCC at
-O2, the library at -O3, {cpus} cores at {mhz} MHz, without transparent huge pages. Median of {processes} processes.

"""
# What the benchmark library itself reports of a run; all other fields are counters.
OWN_FIELDS = ("name run_name run_type repetitions repetition_index threads iterations real_time cpu_time time_unit "
              "family_index per_family_instance_index").split()


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
            row, contestant, n = run["run_name"].split("/")[:3]
            times.setdefault(row, {}).setdefault(contestant, {}).setdefault(int(n), []).append(run["cpu_time"])
    return times, report["context"]


def growth_table(program, name_filter):
    """Runs the processes of a benchmark that reports phases; returns the table and the context."""
    times = {}
    for _ in range(PROCESSES):
        report = json.loads(subprocess.run(
            [program, "--benchmark_format=json", f"--benchmark_filter={name_filter}"], check=True,
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True).stdout)
        for run in report["benchmarks"]:
            if run.get("error_occurred"):
                sys.exit(f"{run['name']}: {run['error_message']}")
            row, contestant, n = run["run_name"].split("/")[:3]
            for phase in run.keys() - OWN_FIELDS:
                times.setdefault((row, phase, contestant), {}).setdefault(int(n), []).append(run[phase])
    sizes = sorted({n for line in times.values() for n in line})
    lines = ["| | | " + " | ".join(f"{n:,}" for n in sizes) + " |", "|---|---|" + "--:|" * len(sizes)]
    order = list(dict.fromkeys(row for row, _, _ in times))
    for row, phase, contestant in sorted(times, key=lambda key: (order.index(key[0]), key[1])):
        cells = [f"{statistics.median(times[row, phase, contestant][n]):.1f}" for n in sizes]
        lines.append(f"| {row}, {phase} | {contestant} | " + " | ".join(cells) + " |")
    return "\n".join(lines) + "\n", report["context"]


def ratio_table(program, name_filter):
    """Runs the processes of a benchmark that measures contestants; returns the table and the context."""
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
    return "\n".join(lines) + "\n", context


def main():
    if len(sys.argv) not in (3, 4):
        sys.exit(__doc__)
    program, page = sys.argv[1:3]
    name_filter = sys.argv[3] if len(sys.argv) == 4 else "."
    name = page.rsplit("/", 1)[-1].removesuffix(".md")
    table, context = (growth_table if name == "growth" else ratio_table)(program, name_filter)
    print(table)
    if len(sys.argv) == 3:
        head = GROWTH_HEAD if name == "growth" else HEAD
        with open(page, "w", encoding="utf-8") as file:
            file.write(head.format(name=name, cpus=context["num_cpus"], mhz=context["mhz_per_cpu"],
                                   processes=PROCESSES, repetitions=REPETITIONS) + table)


main()
