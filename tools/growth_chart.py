#!/usr/bin/env python3
"""Draws the table of docs/benchmarks/growth.md as a chart beside it, and shows the chart on the page.

  growth_chart.py PAGE

There is a panel for each structure. A line goes from the smallest size to the largest: solid for ours, dashed for the peer, in
one colour for each phase. Both scales are logarithmic, so a line that stays level is a cost that does not grow.
"""
import math
import pathlib
import re
import sys
from xml.sax.saxutils import escape

COLOURS = {"insert": "#1f6fb4", "find": "#d1711b", "copy": "#d1711b", "iterate": "#3a8f3a", "destroy": "#b03a3a"}
WIDTH, HEIGHT, LEFT, TOP, GAP = 250, 260, 50, 76, 60
LOWEST, HIGHEST = 0.1, 10_000


def read_table(text):
    """Returns the sizes as written, and {structure: {(phase, contestant): [ns]}}; the first contestant is ours."""
    rows = [[cell.strip() for cell in line.strip().strip("|").split("|")] for line in text.splitlines()
            if line.startswith("|")]
    panels = {}
    for cells in rows[2:]:
        structure, phase = cells[0].split(", ")
        panels.setdefault(structure, {})[phase, cells[1]] = [float(cell) for cell in cells[2:]]
    return rows[0][2:], panels


def label(x, y, text, anchor="middle", colour="#202020"):
    return f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}" fill="{colour}">{escape(text)}</text>'


def height(ns):
    share = math.log(min(max(ns, LOWEST), HIGHEST) / LOWEST) / math.log(HIGHEST / LOWEST)
    return TOP + HEIGHT * (1 - share)


def panel(left, structure, sizes, lines):
    ours, peer = list(dict.fromkeys(contestant for _, contestant in lines))
    yield label(left + WIDTH / 2, TOP - 30, structure)
    yield label(left + WIDTH / 2, TOP - 14, f"{ours} solid, {peer} dashed", colour="#606060")
    for power in range(round(math.log10(LOWEST)), round(math.log10(HIGHEST)) + 1):
        y = height(10.0**power)
        yield f'<line x1="{left}" x2="{left + WIDTH}" y1="{y:.1f}" y2="{y:.1f}" stroke="#dddddd"/>'
        yield label(left - 6, y + 4, f"{10.0**power:g}", "end", "#606060")
    places = [left + WIDTH * index / (len(sizes) - 1) for index in range(len(sizes))]
    for x, size in zip(places, sizes):
        yield label(x, TOP + HEIGHT + 18, size.replace(",000", "k").replace("kk", "M"), colour="#606060")
    for (phase, contestant), times in lines.items():
        points = " ".join(f"{x:.1f},{height(ns):.1f}" for x, ns in zip(places, times))
        dashes = "" if contestant == ours else ' stroke-dasharray="5 4"'
        yield f'<polyline points="{points}" fill="none" stroke="{COLOURS[phase]}" stroke-width="2"{dashes}/>'


def draw(sizes, panels):
    width = LEFT + len(panels) * (WIDTH + GAP)
    parts = []
    for index, (structure, lines) in enumerate(panels.items()):
        parts += panel(LEFT + index * (WIDTH + GAP), structure, sizes, lines)
    x = LEFT
    for phases in ("insert", "find or copy", "iterate", "destroy"):
        parts.append(f'<circle cx="{x}" cy="14" r="5" fill="{COLOURS[phases.split()[0]]}"/>' + label(x + 9, 18, phases, "start"))
        x += 40 + 7 * len(phases)
    total = TOP + HEIGHT + 30
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{total}" viewBox="0 0 {width} {total}" role="img" '
        f'font-family="sans-serif" font-size="12">', "<title>Time for an element in ns, by the number of elements</title>",
        f'<rect width="{width}" height="{total}" fill="#ffffff"/>', *parts, "</svg>", ""])


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    page = pathlib.Path(sys.argv[1])
    text = page.read_text(encoding="utf-8")
    sizes, panels = read_table(text)
    page.with_suffix(".svg").write_text(draw(sizes, panels), encoding="utf-8")
    picture = f"![Time for an element in ns, by the number of elements; ours solid, the peer dashed.]({page.stem}.svg)"
    if picture not in text:
        page.write_text(re.sub(r"(?=^\| \| \|)", lambda _: picture + "\n\n", text, count=1, flags=re.MULTILINE), encoding="utf-8")


main()
