#!/usr/bin/env python3
"""check_coverage.py SUMMARY: tells how many of the lines and branches of each folder of the product the tests
run through, from gcovr's summary in JSON, and fails when a folder has too few.
"""

import collections
import json
import pathlib
import sys

FOLDERS = ["app", "app/instance", "app/look", "asn", "cert", "core", "pxcpp", "signaturecore", "util"]
LEAST = {"line": 98.0, "branch": 92.0}


def folder_of(file):
    """The longest of the folders that the file lies below."""
    parents = [str(parent) for parent in pathlib.PurePath(file).parents]
    return next((parent for parent in parents if parent in FOLDERS), None)


def main():
    summary = json.loads(pathlib.Path(sys.argv[1]).read_text(encoding="utf-8"))
    counts = {folder: collections.Counter() for folder in FOLDERS}
    for file in summary["files"]:
        folder = folder_of(file["filename"])
        if folder:
            counts[folder].update({key: count for key, count in file.items() if key.endswith(("_covered", "_total"))})
    failed = False
    for folder, count in counts.items():
        told = f"{folder:14}"
        for kind, least in LEAST.items():
            covered, total = count[f"{kind}_covered"], count[f"{kind}_total"]
            percent = 100.0 * covered / total if total else 0.0
            failed = failed or percent < least
            told += f"  {kind} {percent:5.1f} % of {total:4}" + (f", less than {least:.0f} %" if percent < least else "")
        print(told)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
