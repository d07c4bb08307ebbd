#!/usr/bin/env python3
"""check_units.py BUILD NAME RULES FOLDER...: prints the translation units that check NAME is to look at.

A line holds a stamp, which the caller makes when the unit passes, and the unit. One that passed is not
looked at again as long as it, what it includes from the tree, its compiler command and the file RULES
are as they were. The largest come first, so that none is alone at the end.

Also writes BUILD/check/compile_commands.json: the commands without the precompiled headers, which only
the compiler that made them can read.
"""

import functools
import hashlib
import json
import pathlib
import re
import sys

TOP = pathlib.Path.cwd()
INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
PRECOMPILED = re.compile(r" -Winvalid-pch|(-Xclang )?-include (-Xclang )?\S+cmake_pch\.hxx")


@functools.lru_cache(maxsize=None)
def included(file):
    """The files of the tree that this one includes itself; of a generated one, the form it is made of."""
    found = set()
    for name in INCLUDE.findall(file.read_bytes()):
        place = pathlib.Path(name.decode())
        form = place.with_name(place.name.removeprefix("ui_")).with_suffix(".ui")
        for candidate in (file.parent / place, TOP / place, file.parent / form):
            if candidate.is_file():
                found.add(candidate)
                break
    return found


def closure(file):
    seen, open_ends = set(), {file}
    while open_ends:
        seen |= open_ends
        open_ends = {inner for outer in open_ends for inner in included(outer)} - seen
    return sorted(seen)


def main():
    build, name, rules, *folders = sys.argv[1:]
    place = pathlib.Path(build) / "check"
    entries = json.loads((place.parent / "compile_commands.json").read_text())
    for entry in entries:
        entry["command"] = PRECOMPILED.sub("", entry["command"])
    (place / name).mkdir(parents=True, exist_ok=True)
    written = place / f"{name}.json" # another check may be reading the commands
    written.write_text(json.dumps(entries))
    written.replace(place / "compile_commands.json")

    commands = {pathlib.Path(entry["file"]): entry["command"] for entry in entries}
    units = [unit for unit in commands if unit.is_relative_to(TOP)
             and unit.relative_to(TOP).parts[0] in folders and unit.is_file()]
    if not units:
        sys.exit("no translation unit is configured")
    common = pathlib.Path(rules).read_bytes() + pathlib.Path(__file__).read_bytes()
    for unit in sorted(units, key=lambda unit: (-unit.stat().st_size, unit)):
        digest = hashlib.sha256(common + commands[unit].encode())
        for file in closure(unit):
            digest.update(file.read_bytes())
        stamp = place / name / digest.hexdigest()[:32]
        if not stamp.exists():
            print(stamp, unit.relative_to(TOP))


if __name__ == "__main__":
    main()
