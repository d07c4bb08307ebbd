#!/usr/bin/env python3
"""check_dialect.py [TREE]: reads the sources and fails on what is said here in another way.

A body of one line has no braces, a pointer is asked as a truth value, and a test's class is a TestX.
Neither the formatter nor clang-tidy tells these apart from what is wanted.
"""

import re
import sys

import check_outcome

FOLDERS = ["app", "asn", "bench", "cert", "core", "fuzz", "pxcpp", "signaturecore", "tests", "tools", "util"]

HEAD = re.compile(r"\s*(if|for|while)\b")
ASKED = re.compile(r"\b(if|while)\b.*[!=]= nullptr|(&&|\|\|)[^;]*[!=]= nullptr|[!=]= nullptr\)* *(&&|\|\||\?)")
TEST = re.compile(r"^QTEST_\w*MAIN\((?!Test[A-Z])(\w+)\)", re.MULTILINE)
LITERAL = re.compile(r"'(\\.|[^'\\])'|\"(\\.|[^\"\\])*\"|//.*")


def indent(line):
    return len(line) - len(line.lstrip())


def end_of_head(lines, i):
    """The line that closes the parentheses of the statement at line i."""
    depth = 0
    for j in range(i, len(lines)):
        bare = LITERAL.sub("", lines[j])
        depth += bare.count("(") - bare.count(")")
        if depth <= 0:
            return j
    return i


def branches(lines, i):
    """Of the statement at line i and each `else` of it: whether it has braces, and its body."""
    margin = indent(lines[i])
    while i < len(lines):
        body = end_of_head(lines, i) + 1
        end = body
        while end < len(lines) and (not lines[end] or indent(lines[end]) > margin):
            end += 1
        yield lines[body - 1].endswith("{"), lines[body:end]
        if end == len(lines) or not lines[end].strip("} ").startswith("else"):
            return
        i = end


def is_one_line(body):
    return len(body) == 1 and not body[0].lstrip().startswith("//")


def complaints(text):
    lines = text.split("\n")
    for i, line in enumerate(lines):
        if HEAD.match(line):
            found = list(branches(lines, i))
            if any(braced for braced, _ in found) and all(is_one_line(body) for _, body in found):
                yield f"{i + 1}: a body of one line has no braces"
        if ASKED.search(line):
            yield f"{i + 1}: a pointer is asked as a truth value"
    for name in TEST.findall(text):
        yield f" {name}: a test's class is named TestX"


def main():
    tree = check_outcome.tree()
    sources = sorted(source for folder in FOLDERS for source in (tree / folder).rglob("*.*")
                     if source.suffix in (".h", ".cpp"))
    found = [f"{source.relative_to(tree)}:{complaint}"
             for source in sources for complaint in complaints(source.read_text(encoding="utf-8"))]
    return check_outcome.tell(found, "the dialect is the house's")


if __name__ == "__main__":
    sys.exit(main())
