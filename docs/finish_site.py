#!/usr/bin/env python3
"""Finishes the site that Doxygen has written, and finds what is dead in it.

    finish_site.py build/docs

Takes out of the pages what only works by a script, and out of the site what no page leads to. Then
each link must lead to a page that is there and to a place that it has, nothing may come from the
network, and no page may hold a script. Prints what is wrong; the exit status then is 1.
"""
import html.parser
import pathlib
import re
import sys
import urllib.parse

# Tooltips of code, choices of a level, signs that fold something in and out.
SCRIPTED = (
    r'<div class="ttc"[^\n]*\n',
    r'<div class="levels">.*?</div>',
    r'<div class="summary">.*?</div>',
    r'<img src="closed\.png" alt="-"/>(?:&#160;)?',
    r'<span class="permalink">.*?</span>',
    r' onclick="[^"]*"',
)


class Page(html.parser.HTMLParser):
    def __init__(self, text):
        super().__init__()
        self.links, self.places, self.faults = [], set(), []
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            value = value or ""
            if name == "id" or (tag == "a" and name == "name"):
                self.places.add(value)
            if name in ("href", "src"):
                self.links.append((tag, value))
            if name.startswith("on"):
                self.faults.append(f"a script in <{tag} {name}>")
        if tag == "script":
            self.faults.append("a script")


# The pages' own sources among the headers.
PAGE_FILES = re.compile(r'<tr id="row_[^"]*"[^>]*>(?:(?!</tr>).)*>(?:build|docs-pages|docs|[\w.]+\.md)</a>.*?</tr>\n?',
                        re.DOTALL)


def tidied(text):
    for pattern in SCRIPTED:
        text = re.sub(pattern, "", text, flags=re.DOTALL if ".*?" in pattern else 0)
    return PAGE_FILES.sub("", text)


def target_of(path, link):
    """The file and the place that a link leads to; None for one that leaves the site."""
    parts = urllib.parse.urlsplit(link)
    if parts.scheme or parts.netloc:
        return None
    file = (path.parent / urllib.parse.unquote(parts.path)).resolve() if parts.path else path
    return file, urllib.parse.unquote(parts.fragment)


def reachable_from(start, pages):
    found, waiting = {start}, [start]
    while waiting:
        path = waiting.pop()
        for _, link in pages[path].links if path in pages else ():
            target = target_of(path, link)
            if target and target[0].is_file() and target[0] not in found:
                found.add(target[0])
                waiting.append(target[0])
    return found


def faults_of(pages, path):
    yield from pages[path].faults
    for tag, link in pages[path].links:
        target = target_of(path, link)
        if target is None:
            # A reader may follow a link into the network; the page itself asks for nothing there.
            if tag != "a" or not link.startswith("https:"):
                yield f"'{link}' isn't of this site"
        elif not target[0].is_file():
            yield f"'{link}' leads nowhere"
        elif target[1] and target[0] in pages and target[1] not in pages[target[0]].places:
            yield f"'{link}' leads to no place of its page"


def main():
    site = pathlib.Path(sys.argv[1]).resolve()
    pages = {}
    for path in sorted(site.rglob("*.html")):
        text = tidied(path.read_text(encoding="utf-8"))
        path.write_text(text, encoding="utf-8")
        pages[path] = Page(text)
    kept = reachable_from(site / "index.html", pages)
    for path in list(site.rglob("*")):
        if path.is_file() and path not in kept:
            path.unlink()
            pages.pop(path, None)
    faults = [f"{path.relative_to(site)}: {fault}" for path in pages for fault in faults_of(pages, path)]
    for fault in dict.fromkeys(faults):
        print(fault, file=sys.stderr)
    print(f"{len(pages)} pages, {sum(len(page.links) for page in pages.values())} links")
    sys.exit(1 if faults or not pages else 0)


if __name__ == "__main__":
    main()
