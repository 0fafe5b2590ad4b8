#!/usr/bin/env python3
"""Builds the pages of the documentation. Arguments: the folder to write them to, which is emptied first. Fails at each
warning of the generator and at each link that leads nowhere."""

import html.parser
import pathlib
import shutil
import subprocess
import sys
import urllib.parse

SITE = pathlib.Path(__file__).resolve().parent
PROJECT = SITE.parent.parent


class Links(html.parser.HTMLParser):
    """The links and the anchors of a page."""

    def __init__(self, text):
        super().__init__()
        self.links, self.anchors = [], set()
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        for key, value in attributes:
            if key in ("href", "src") and value:
                self.links.append(value)
            elif key in ("id", "name"):
                self.anchors.add(value)


def broken(folder):
    """The links of all pages that lead to no file, or to no place in one."""
    pages = {path: Links(path.read_text(encoding="utf-8")) for path in folder.glob("*.html")}
    for path, page in pages.items():
        for link in page.links:
            target = urllib.parse.urlsplit(link)
            if target.scheme or link.startswith("//"):
                continue
            to = folder / urllib.parse.unquote(target.path) if target.path else path
            anchor = urllib.parse.unquote(target.fragment)
            if not to.exists() or anchor and to in pages and anchor not in pages[to].anchors:
                yield f"{path.name}: {link} leads nowhere"


def build(folder):
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    topics = subprocess.run([sys.executable, SITE / "filter.py", "--topics"], capture_output=True, text=True, check=True)
    folder.joinpath("topics.dox").write_text(topics.stdout, encoding="utf-8")
    settings = SITE.joinpath("Doxyfile").read_text(encoding="utf-8")
    settings += f"\nOUTPUT_DIRECTORY = {folder}\nHTML_OUTPUT = .\nINPUT += {folder}/topics.dox\n"
    done = subprocess.run(["doxygen", "-"], input=settings, cwd=PROJECT, capture_output=True, text=True)
    folder.joinpath("topics.dox").unlink()
    wrong = [line for line in done.stderr.splitlines() if line.strip()]
    shutil.copy(SITE / "search.css", folder / "search" / "search.css")
    return wrong + list(broken(folder))


def main():
    wrong = build(pathlib.Path(sys.argv[1]).resolve())
    for line in wrong:
        print(line, file=sys.stderr)
    sys.exit(1 if wrong else 0)


main()
