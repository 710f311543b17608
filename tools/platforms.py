"""Writes the table of docs/platforms.md from the reports of the last test runs.

    python3 tools/platforms.py <preset>...

Each preset has been tested with `ctest --output-junit build/<preset>/tests.xml`. The page keeps all that is not a row of
the table, and the last column of the rows that it has.
"""

import os
import re
import subprocess
import sys
import xml.etree.ElementTree

PAGE = "docs/platforms.md"
HEAD = "| Preset | Compiler | Builds | Cases | Own tests | What differs |\n|---|---|---|---:|---:|---|\n"


def compiler(preset):
    with open(f"build/{preset}/CMakeCache.txt", encoding="utf-8") as cache:
        path = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache.read(), re.MULTILINE)
    if path is None:  # a toolchain file has chosen it
        with open(f"cmake/toolchains/{preset}.cmake", encoding="utf-8") as toolchain:
            path = re.search(r"^set\(CMAKE_CXX_COMPILER (.*)\)$", toolchain.read(), re.MULTILINE)
    version = subprocess.run([path[1], "--version"], capture_output=True, text=True, check=True).stdout.split("\n")[0]
    number = re.search(r"[\d.]+", version.rsplit(" ", 1)[-1])[0]
    return f"{'Clang' if 'clang' in version else 'GCC'} {number}"


def counts(preset):
    """The cases and the other tests that passed, each as 'N of M', or 'fail' if a case failed."""
    tests = xml.etree.ElementTree.parse(f"build/{preset}/tests.xml").getroot().findall("testcase")
    # The judge of the report passes only if all cases do. CTest keeps too little of the report to count them here.
    judged = next(test for test in tests if test.get("name") == "verification")
    with open("verification/registry.txt", encoding="utf-8") as registry:
        total = sum(not line.startswith("#") and bool(line.strip()) for line in registry)
    others = [test for test in tests if not test.get("name").startswith("verification")]
    passed = sum(test.get("status") == "run" for test in others)
    return f"{total} of {total}" if judged.get("status") == "run" else "fail", f"{passed} of {len(others)}"


def main():
    os.chdir(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    with open(PAGE, encoding="utf-8") as page:
        text = page.read()
    before, table = text.split(HEAD)
    rows = re.match(r"(\|.*\n)*", table)[0]
    differs = {row.split("|")[1].strip(" `"): row.split("|")[6].strip() for row in rows.splitlines()}
    written = ""
    for preset in sys.argv[1:]:
        cases, tests = counts(preset)
        written += f"| `{preset}` | {compiler(preset)} | yes | {cases} | {tests} | {differs.get(preset, '')} |\n"
    with open(PAGE, "w", encoding="utf-8") as page:
        page.write(before + HEAD + written + table[len(rows):])


main()
