#!/usr/bin/env python3
"""check_layers.py [TREE]: reads the includes and fails on an arrow against the layers.

Also fails when files need each other, within a folder too, and when a source file is compiled a
second time from elsewhere, by including it.
"""

import pathlib
import re
import sys

import check_outcome

# Each folder with those it may include from, besides itself.
LAYERS = {
    "core": [],
    "pxcpp": [],
    "signaturecore": [],
    "util": ["core"],
    "asn": ["pxcpp", "util", "core"],
    "cert": ["asn", "util", "core"],
    "app": ["cert", "util", "core"],
}
# They link the libraries and may use any of them, but not the plug-in, which nobody links.
USERS = ["tools", "tests", "bench", "fuzz"]

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


def sources(tree, folder):
    for pattern in ("*.h", "*.cpp"):
        yield from sorted((tree / folder).rglob(pattern))


def needs(tree):
    """What each file includes of the tree. A header and the source of its name count as one."""
    result = {}
    for folder in [*LAYERS, *USERS]:
        for source in sources(tree, folder):
            unit = source.relative_to(tree).with_suffix("")
            for included in INCLUDE.findall(source.read_text(encoding="utf-8")):
                beside = source.parent / included
                path = beside.relative_to(tree) if beside.exists() else pathlib.Path(included)
                result.setdefault(unit, set()).add(path.with_suffix(""))
            result.get(unit, set()).discard(unit)
    return result


def circles(tree):
    """The roads that lead from a file back to itself."""
    graph = needs(tree)
    done = set()

    def walk(unit, road):
        if unit in road:
            yield [*road[road.index(unit):], unit]
        elif unit not in done:
            for needed in sorted(graph.get(unit, ())):
                yield from walk(needed, [*road, unit])
            done.add(unit)

    for unit in sorted(graph):
        yield from walk(unit, [])


def complaints(tree):
    for circle in circles(tree):
        yield "files that need each other: " + " -> ".join(map(str, circle))
    for folder in [*LAYERS, *USERS]:
        below = LAYERS.get(folder, [f for f in LAYERS if f != "signaturecore"])
        for source in sources(tree, folder):
            for included in INCLUDE.findall(source.read_text(encoding="utf-8")):
                where = f"{source.relative_to(tree)} includes {included}"
                target = included.split("/")[0] if "/" in included else folder
                if target in LAYERS and target != folder and target not in below:
                    yield f"{where}: {folder} lies below or beside {target}"
                if included.endswith(".cpp"):
                    yield f"{where}: a source is compiled once, by its own library"


if __name__ == "__main__":
    sys.exit(check_outcome.tell(complaints(check_outcome.tree()), "the layers hold"))
