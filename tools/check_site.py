#!/usr/bin/env python3
"""Checks the pages that ./dev docs has written: every link leads somewhere, and the search knows what it must.

  check_site.py FOLDER NAME...

Links to other sites are not followed. A NAME, such as TArray::Insert, must be in the data of the search.
"""
import html.parser
import pathlib
import re
import sys
import urllib.parse

# Doxygen links to these sections from the head of a class even if everything in them is private, and then omits them.
OMITTED_SECTIONS = {"nested-classes", "concepts"}


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.anchors, self.links = set(), []
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("id", "name"):
                self.anchors.add(value)
            elif name in ("href", "src", "data") and value and not re.match(r"(https?|mailto|javascript|data):", value):
                self.links.append(urllib.parse.unquote(value))


def broken_links(folder, pages):
    for path, page in pages.items():
        for link in page.links:
            file, _, anchor = link.partition("#")
            target = path if file == "" else (folder / file).resolve()
            if not target.exists():
                yield path, link
            elif anchor and target in pages and anchor not in pages[target].anchors | OMITTED_SECTIONS:
                yield path, link


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[1]).resolve()
    pages = {path: Page(path) for path in folder.glob("*.html")}
    broken = sorted(broken_links(folder, pages))
    for path, link in broken:
        print(f"{path.name}: {link} leads nowhere")
    searched = "".join(path.read_text(encoding="utf-8") for path in (folder / "search").glob("all_*.js"))
    unknown = [name for name in sys.argv[2:] if f"'{name}(" not in searched]
    for name in unknown:
        print(f"the search does not find {name}")
    print(f"{len(pages)} pages, {sum(len(page.links) for page in pages.values())} links, {len(broken)} broken")
    sys.exit(1 if broken or unknown else 0)


main()
