#!/usr/bin/env python3
"""check_units.py BUILD NAME FOLDERS LINTER...: check NAME, a linter's command, over the translation units in
the FOLDERS (names with blanks between them).

A unit that passed is not looked at again as long as it, what it includes from the tree, its compiler
command, the linter's command and its configuration are as they were. Many are looked at together, as one
source, since headers are most of what a linter reads. Where that finds something, or where two define the
same, each is looked at alone, and what that finds is told.
"""

import concurrent.futures
import functools
import hashlib
import json
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

TOP = pathlib.Path.cwd()
INCLUDE = re.compile(rb'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)
PRECOMPILED = re.compile(r" -Winvalid-pch|(-Xclang )?-include (-Xclang )?\S+cmake_pch\.hxx")
CONFIGURATION = ".clang-tidy"
ENTRIES = ("main", "LLVMFuzzerTestOneInput")  # what each program has one of
MOST_TOGETHER = 24
# What differs from target to target and not in how a source reads: where headers are, and of which library.
SEARCHED = re.compile(r"-I|-isystem|-DQT_\w+_LIB$|-fPI[CE]$")


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


def configurations(folder):
    """What the linter reads for a source in this folder."""
    return [place / CONFIGURATION for place in (folder, *folder.parents)
            if place.is_relative_to(TOP) and (place / CONFIGURATION).is_file()]


def commands_of(build):
    """Each source with the commands, as words, that compile it: one for each set of macros. They leave out
    the output and the precompiled headers, which only the compiler that made them can read."""
    commands = {}
    for entry in json.loads(pathlib.Path(build, "compile_commands.json").read_text()):
        words = shlex.split(PRECOMPILED.sub("", entry["command"]).replace(" -isystem ", " -isystem"))
        del words[words.index("-o"):words.index("-o") + 2]
        macros = frozenset(word.split("=")[0] for word in words
                           if word.startswith("-D") and not word.endswith("_EXPORTS"))
        commands.setdefault(pathlib.Path(entry["file"]), {}).setdefault(macros, words)
    return {source: list(variants.values()) for source, variants in commands.items()}


def pending(commands, folders, linter, place):
    """The units to look at, the largest first, with the stamp that each gets when it passes."""
    units = [unit for unit in commands if unit.is_relative_to(TOP)
             and unit.relative_to(TOP).parts[0] in folders and unit.is_file()]
    if not units:
        sys.exit("no translation unit is configured")
    common = pathlib.Path(__file__).read_bytes() + "\0".join(linter).encode()
    stamps = {}
    for unit in sorted(units, key=lambda unit: (-unit.stat().st_size, unit)):
        digest = hashlib.sha256(common + repr(commands[unit]).encode())
        for file in closure(unit) + configurations(unit.parent):
            digest.update(file.read_bytes())
        stamp = place / digest.hexdigest()[:32]
        if not stamp.exists():
            stamps[unit] = stamp
    return stamps


def batches(units, commands):
    """Units of the product, or of a folder of tests, whose commands differ in nothing but what is SEARCHED,
    and the command that finds the headers of all. One that is compiled in several ways is alone."""
    groups = {}
    for unit in units:
        words = commands[unit][0]
        kind = [word for word in words if not SEARCHED.match(word) and word != str(unit)]
        apart = unit if len(commands[unit]) > 1 else None
        place = unit.relative_to(TOP).parts[:2]
        groups.setdefault((apart, place if place[0] == "tests" else None, *kind), []).append(unit)
    for members in groups.values():
        count = -(-len(members) // MOST_TOGETHER)
        for first in range(count):
            batch = members[first::count]
            words = [word for unit in batch for word in (*commands[unit][0], f"-I{unit.parent}")
                     if word not in map(str, batch)]
            yield batch, list(dict.fromkeys(words))


def write_together(source, units):
    """One source of all the units' text, below a copy of their configuration. It doesn't include them: much
    of what a linter looks for it looks for in the main file alone."""
    folder = pathlib.Path(os.path.commonpath([unit.parent for unit in units]))
    for configuration in configurations(folder):
        copy = source.parent / configuration.relative_to(TOP)
        copy.parent.mkdir(parents=True, exist_ok=True)
        shutil.copyfile(configuration, copy)
    together = source.parent / folder.relative_to(TOP) / source.name
    together.parent.mkdir(parents=True, exist_ok=True)
    with together.open("w") as file:
        for unit in units:
            for entry in ENTRIES:
                file.write(f"#undef {entry}\n#define {entry} {entry}_of_{unit.stem}\n")
            file.write(unit.read_text())
    return together


def findings(linter, source):
    """What the linter finds there; None when that is nothing."""
    run = subprocess.run([*linter, str(source)], text=True, stdout=subprocess.PIPE,
                         stderr=subprocess.STDOUT)
    lines = [line for line in run.stdout.splitlines() if not line.endswith("warnings generated.")]
    return "\n".join(lines) if run.returncode else None


def look_at(linter, together, units, stamps):
    """What is found in the units; each where nothing is gets its stamp."""
    clean = len(units) > 1 and findings(linter, together) is None
    found = {unit: None if clean else findings(linter, unit) for unit in units}
    for unit in units:
        if found[unit] is None:
            stamps[unit].touch()
    return [text for text in found.values() if text is not None]


def main():
    build, name, folders, *linter = sys.argv[1:]
    place = pathlib.Path(build).resolve() / "check" / name
    place.mkdir(parents=True, exist_ok=True)
    commands = commands_of(build)
    stamps = pending(commands, folders.split(), linter, place)

    jobs = []
    for units, command in batches(stamps, commands):
        together = write_together(place / f"together_{len(jobs)}.cpp", units)
        commands[together] = [[*command, str(together)]]
        jobs.append((together, units))
    entries = [{"directory": str(TOP), "file": str(source), "arguments": words}
               for source, variants in commands.items() for words in variants]
    (place / "compile_commands.json").write_text(json.dumps(entries))
    linter += ["-p", str(place)]
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as workers:
        found = sum(workers.map(lambda job: look_at(linter, *job, stamps), jobs), [])
    for text in found:
        print(text, file=sys.stderr)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
