#!/usr/bin/env python3
"""check.py ROOT BUILD CLASS... -- what doxygen does not look at: every public class has a page with
a text and is named in docs/classes.md, every widget has a picture, an example and its place in
docs/widgets.md, what pages show of C++ stands in an example, and no link leads nowhere, neither in BUILD/html nor in a Markdown file of the tree
ROOT."""

import re
import subprocess
import sys
from html.parser import HTMLParser
from pathlib import Path
from urllib.parse import unquote, urlsplit
from xml.etree import ElementTree

root, build, classes = Path(sys.argv[1]), Path(sys.argv[2]), sys.argv[3:]
faults = []


class Page(HTMLParser):
    """The links of a page, and what they may lead to."""

    def __init__(self, path):
        super().__init__()
        self.links, self.anchors = [], set()
        self.feed(path.read_text(encoding="utf-8"))

    def handle_starttag(self, tag, attributes):
        for name, value in attributes:
            if name in ("href", "src") and value:
                self.links.append(value)
            elif name == "id" or (tag == "a" and name == "name"):
                self.anchors.add(value)


def markdown(path):
    """The same of a Markdown file: its headings are anchors."""
    text = re.sub(r"^```.*?^```$", "", path.read_text(encoding="utf-8"), flags=re.M | re.S)
    page = Page.__new__(Page)
    page.links = re.findall(r"\]\(([^)\s]+)\)", text)
    headings = re.findall(r"^#+ +(.*)", text, flags=re.M)
    page.anchors = {re.sub(r"[^\w -]", "", heading.lower()).replace(" ", "-")
                    for heading in headings}
    return page


def check_links(folder, pages):
    for path, page in pages.items():
        for link in page.links:
            parts = urlsplit(link)
            if parts.scheme or parts.netloc or link == "#":
                continue
            target = (path.parent / unquote(parts.path)).resolve() if parts.path else path
            if not target.exists():
                faults.append(f"{path.relative_to(folder)}: {link} does not exist")
            elif parts.fragment and target in pages and \
                    unquote(parts.fragment) not in pages[target].anchors:
                faults.append(f"{path.relative_to(folder)}: {link} has no such place")


# Code in a page stands in an example, which is compiled and run: each run of lines between blank ones.
def lines_of(text):
    return "\n".join(line.strip() for line in text.split("\n") if line.strip())


examples = "\n\n".join("\n" + lines_of(path.read_text(encoding="utf-8")) + "\n"
                       for path in (root / "examples").rglob("*.cpp"))
for path in [root / "README.md", *(root / "docs").glob("*.md")]:
    for block in re.findall(r"^```cpp$(.*?)^```$", path.read_text(encoding="utf-8"),
                            flags=re.M | re.S):
        for piece in block.strip().split("\n\n"):
            if f"\n{lines_of(piece)}\n" not in examples:
                first = piece.split("\n")[0]
                faults.append(f"{path.relative_to(root)}: in no example: {first} ...")

html = (build / "html").resolve()
check_links(html, {path: Page(path) for path in html.rglob("*.html")})

tree = root.resolve()
files = subprocess.run(["git", "-C", tree, "ls-files", "-co", "--exclude-standard", "*.md"],
                       capture_output=True, text=True)
names = files.stdout.split("\n") if files.returncode == 0 else \
    [path.relative_to(tree) for path in tree.rglob("*.md")]  # not under git: a package is built
check_links(tree, {tree / name: markdown(tree / name) for name in names if name})

# What has a header of its name may also be an alias, or the header's functions and structures.
compounds, bases = {}, {}
for compound in ElementTree.parse(build / "xml/index.xml").iter("compound"):
    kind, name, page = compound.get("kind"), compound.findtext("name"), compound.get("refid")
    if kind not in ("class", "struct", "file"):
        continue
    compounds[name.split("::")[-1]] = page
    for alias in compound.iterfind("member[@kind='typedef']/name"):
        compounds.setdefault(alias.text, page)
    definition = ElementTree.parse(build / f"xml/{page}.xml").find("compounddef")
    bases[name] = [re.sub("<.*", "", base.text) for base in definition.iterfind("basecompoundref")]
    text = (definition.find(part) for part in ("briefdescription", "detaileddescription"))
    if kind != "file" and not any("".join(part.itertext()).strip() for part in text):
        faults.append(f"{name} has no documentation")

def is_widget(name):
    return re.match(r"Q(Widget|Dialog|ComboBox|\w+View)$", name) or \
        any(is_widget(base) for base in bases.get(name, []))


gallery = (root / "docs/widgets.md").read_text(encoding="utf-8")
for name in classes:
    if not is_widget(name) or name.endswith("Base"): # an abstract one
        continue
    page = (html / f"{compounds[name]}.html").read_text(encoding="utf-8")
    if f'src="{name}.png"' not in page or 'class="fragment"' not in page:
        faults.append(f"{name} has no picture or no example")
    if f"`{name}`" not in gallery:
        faults.append(f"{name} is not in docs/widgets.md")

overview = (root / "docs/classes.md").read_text(encoding="utf-8")
for name in classes:
    page = next((compounds[key] for key in
                 (name, f"{name.lower()}.h", f"{name.removeprefix('Qvel').lower()}.h")
                 if key in compounds), None)
    if not page or not (html / f"{page}.html").exists():
        faults.append(f"{name} has no page")
    if not re.search(rf"`(UaClientSdk::)?{name}`", overview):
        faults.append(f"{name} is not in docs/classes.md")

print("\n".join(faults) or f"{len(classes)} classes; no dead link")
sys.exit(1 if faults else 0)
