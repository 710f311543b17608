#!/usr/bin/env python3
"""Draws the table of a benchmark's page as a chart beside it, and shows the chart on the page.

  benchmark_chart.py PAGE...

For each operation and peer there is a bar from the lowest to the highest ratio of the sizes that were measured, with a dot at
their geometric mean. The scale is logarithmic, so twice as fast is as far from 1 as twice as slow.
"""
import math
import pathlib
import re
import sys
from xml.sax.saxutils import escape

COLOURS = ("#1f6fb4", "#d1711b", "#3a8f3a", "#b03a3a", "#7b56a8", "#7a5a3a", "#5a5a5a")
LEFT, WIDTH, LINE = 230, 560, 11
LOWEST, HIGHEST = 1 / 16, 16
TICKS = (1 / 16, 1 / 8, 1 / 4, 1 / 2, 1, 2, 4, 8, 16)


def read_table(text):
    """Returns the peers, and {operation: {peer: [ratios]}}."""
    lines = [[cell.strip() for cell in line.strip().strip("|").split("|")] for line in text.splitlines()
             if line.startswith("|")]
    if len(lines) < 3 or lines[0][:3] != ["", "n", "ns"]:
        return [], {}
    peers = lines[0][3:]
    operations = {}
    for cells in lines[2:]:
        ratios = operations.setdefault(cells[0], {})
        for peer, cell in zip(peers, cells[3:]):
            if cell:
                ratios.setdefault(peer, []).append(float(cell))
    return peers, operations


def place(ratio):
    """Where a ratio is on the scale, from left to right."""
    share = math.log(min(max(ratio, LOWEST), HIGHEST) / LOWEST) / math.log(HIGHEST / LOWEST)
    return LEFT + share * WIDTH


def label(x, y, text, anchor="start", colour="#202020"):
    return f'<text x="{x:.0f}" y="{y:.0f}" text-anchor="{anchor}" fill="{colour}">{escape(text)}</text>'


def bar(ratios, y, colour):
    middle = math.exp(sum(map(math.log, (max(ratio, LOWEST / 4) for ratio in ratios))) / len(ratios))
    return (f'<line x1="{place(min(ratios)):.1f}" x2="{place(max(ratios)):.1f}" y1="{y}" y2="{y}" stroke="{colour}" '
            f'stroke-width="5" stroke-opacity="0.4" stroke-linecap="round"/>'
            f'<circle cx="{place(middle):.1f}" cy="{y}" r="4" fill="{colour}"/>')


def scale(bottom):
    for tick in TICKS:
        x = place(tick)
        yield f'<line x1="{x:.1f}" x2="{x:.1f}" y1="44" y2="{bottom}" stroke="{"#404040" if tick == 1 else "#dddddd"}"/>'
        yield label(x, 40, f"{tick:g}" if tick >= 1 else f"1/{1 / tick:g}", "middle", "#606060")


def draw(name, peers, operations):
    parts, y = [], 56
    for operation, ratios in operations.items():
        parts.append(label(LEFT - 12, y + LINE * (len(ratios) - 1) / 2 + 4, operation, "end"))
        for peer in ratios:
            parts.append(bar(ratios[peer], y, COLOURS[peers.index(peer) % len(COLOURS)]))
            y += LINE
        parts.append(f'<line x1="8" x2="{LEFT + WIDTH}" y1="{y}" y2="{y}" stroke="#eeeeee"/>')
        y += LINE
    legend, x = [], 12
    for index, peer in enumerate(peers):
        legend.append(f'<circle cx="{x}" cy="14" r="5" fill="{COLOURS[index % len(COLOURS)]}"/>' + label(x + 9, 18, peer))
        x += 30 + 7 * len(peer)
    width = max(LEFT + WIDTH + 30, x)
    return "\n".join([
        f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{y}" viewBox="0 0 {width} {y}" role="img" '
        f'font-family="sans-serif" font-size="12">',
        f"<title>{escape(name)}: our time divided by the peer's; to the left of 1 we are faster</title>",
        f'<rect width="{width}" height="{y}" fill="#ffffff"/>', *scale(y - LINE), *legend, *parts, "</svg>", ""])


def show(page, text):
    """Puts the chart before the table, unless it is there."""
    picture = (f"![Our time divided by the peer's: left of 1 we are faster. Bars span the sizes measured.]"
               f"({page.stem}.svg)")
    if picture not in text:
        page.write_text(re.sub(r"(?=^\| \| n \| ns \|)", lambda _: picture + "\n\n", text, count=1, flags=re.MULTILINE),
                        encoding="utf-8")


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    for page in map(pathlib.Path, sys.argv[1:]):
        text = page.read_text(encoding="utf-8")
        peers, operations = read_table(text)
        if not operations:
            sys.exit(f"{page}: no table of ratios")
        page.with_suffix(".svg").write_text(draw(page.stem, peers, operations), encoding="utf-8")
        show(page, text)


main()
