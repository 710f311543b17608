"""Measures what each public header costs a source that includes nothing else, and writes docs/header_costs.md.

    python3 tools/header_costs.py <compiler> <header>...
"""

import os
import resource
import subprocess
import sys

# The standard header for the same job.
STANDARD = {
    "core/containers/array.h": "vector",
    "core/containers/blockarray.h": "deque",
    "core/containers/hashmap.h": "unordered_map",
    "core/containers/hashset.h": "unordered_set",
    "core/containers/keyvaluepair.h": "utility",
    "core/containers/list.h": "list",
    "core/containers/map.h": "map",
    "core/containers/maxarray.h": "array",
    "core/containers/multihashmap.h": "unordered_map",
    "core/containers/nodeiterator.h": "iterator",
    "core/containers/set.h": "set",
    "core/containers/slist.h": "forward_list",
    "core/dynamic/dynamicobject.h": "any",
    "core/dynamic/typeid.h": "typeindex",
    "core/dynamic/variant.h": "any",
    "core/memory/memorymanager.h": "memory_resource",
    "core/platform/platform.h": "cstdint",
    "core/strings/stack_string.h": "string",
    "core/strings/string.h": "string",
    "core/strings/stringfunc.h": "charconv",
    "core/values/guid.h": "string",
    "core/values/linereader.h": "istream",
    "core/values/version.h": "compare",
}
RUNS = 7


def run(compiler, include, *options):
    command = [compiler, "-std=c++20", "-I.", "-x", "c++", *options, "-"]
    return subprocess.run(command, input=f"#include {include}\n", capture_output=True, text=True, check=True).stdout


def lines(compiler, include):
    return run(compiler, include, "-E").count("\n")


def milliseconds(compiler, include):
    """The least processor time of several runs."""
    times = []
    for _ in range(RUNS):
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        run(compiler, include, "-fsyntax-only")
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        times.append(after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime)
    return min(times) * 1000


def main():
    compiler, *headers = sys.argv[1:]
    empty = milliseconds(compiler, "<version>")
    cost = {}

    def measure(include):
        if include not in cost:
            cost[include] = lines(compiler, include), max(milliseconds(compiler, include) - empty, 0)
        return cost[include]

    rows = []
    for header in headers:
        ours = measure(f'"{header}"')
        row = f"| `{header}` | {ours[0]:,} | {ours[1]:.0f} |"
        if header in STANDARD:
            standard = measure(f"<{STANDARD[header]}>")
            row += f" `<{STANDARD[header]}>` | {standard[0]:,} | {standard[1]:.0f} | {ours[0] / standard[0]:.2f} |"
        else:
            row += " | | | |"
        rows.append(row)
        print(row)

    version = subprocess.run([compiler, "-dumpfullversion"], capture_output=True, text=True, check=True).stdout.strip()
    with open("docs/header_costs.md", "w", encoding="utf-8") as page:
        page.write(
            f"""# What the headers cost

`./dev headers` writes this page. For each public header it shows how many lines the compiler reads, and how many
milliseconds of processor time it takes to check them, beyond those for an empty source. Beside them are the figures of the
standard header for the same job. The ratio is that of the lines, which do not depend on the machine. GCC {version}, C++20,
least of {RUNS} runs.

Nearly all of the cost of a string header is `<string_view>`. `dynamicobject.h` adds `<cmath>`.

| Header | Lines | ms | Standard | Lines | ms | Ratio |
|---|---:|---:|---|---:|---:|---:|
"""
        )
        page.write("\n".join(rows) + "\n")


if __name__ == "__main__":
    os.chdir(os.path.join(os.path.dirname(__file__), ".."))
    main()
