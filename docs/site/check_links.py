# SPDX-License-Identifier: Apache-2.0
"""Every link and picture of the HTML files in a folder leads to a file of it, and to a place in that file. Links to
elsewhere are not followed."""
import html.parser
import pathlib
import sys
import urllib.parse


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.links, self.places = set(), set()
        self.feed(path.read_text(errors="replace"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src") and value and tag != "link":
                self.links.add(value)
            if name in ("id", "name") and value:
                self.places.add(value)


def main():
    folder = pathlib.Path(sys.argv[1])
    pages = {path: Page(path) for path in folder.rglob("*.html")}
    broken = 0
    for path, page in pages.items():
        for link in sorted(page.links):
            parts = urllib.parse.urlsplit(link)
            if parts.scheme or parts.netloc:
                continue
            target = path.parent / urllib.parse.unquote(parts.path) if parts.path else path
            place = urllib.parse.unquote(parts.fragment)
            if not target.exists() or (place and target in pages and place not in pages[target].places):
                print(f"{path.relative_to(folder)}: {link} leads nowhere")
                broken += 1
    print(f"{len(pages)} pages, {sum(len(page.links) for page in pages.values())} links, {broken} broken")
    return 1 if broken else 0


if __name__ == "__main__":
    sys.exit(main())
