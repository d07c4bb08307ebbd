#!/usr/bin/env python3
"""check_docs.py [TREE]: fails when a document names a file, a test or a test's function that is not there, or,
where the architecture draws the road of a certificate, a function that does not live in the file beside it.
"""

import re
import sys

import check_outcome

DOCUMENTS = ["docs/*.md", "tests/data/*.md", "*.md"]
STEP = re.compile(r"^ *-> ([\w:…, ]*\S) +(\w+/\S+\.\w+)  ", re.MULTILINE)
NAMED = re.compile(r"`([a-z]\w*(?:/[\w.-]+)*/[\w-]+\.(?:cpp|h|py|sh|tsv|txt|md|cmake|ui|qrc))`")
TEST = re.compile(r"`(tst_\w+)((?: \w+)*)`")  # as it is run by hand: a program, and functions of it


def defines(text, function):
    """A definition begins at the margin, with its type, and what follows the parameters is no ";"."""
    name = re.escape(function).replace("…", r"\w+")
    return re.search(rf"^(?!return\b)[\w:<>*&,\[\] ]*\b{name}\([^;{{]*\n?[^;]*\{{", text, re.MULTILINE)


def missing_tests(tree, text):
    for test, functions in TEST.findall(text):
        source = next((found.read_text(encoding="utf-8") for found in tree.glob(f"tests/**/{test}.cpp")), "")
        if not source:
            yield test
        for function in functions.split():
            if not re.search(rf"^    void {function}\(\)", source, re.MULTILINE):
                yield f"{test} {function}"


def complaints(tree):
    documents = {found for pattern in DOCUMENTS for found in tree.glob(pattern)}
    if not documents:
        yield "there is no document"
    for document in sorted(documents):
        text = document.read_text(encoding="utf-8")
        where = document.relative_to(tree)
        for name in NAMED.findall(text):
            if not (tree / name).exists() and not (document.parent / name).exists():
                yield f"{where} names {name}, which is not there"
        for test in missing_tests(tree, text):
            yield f"{where} names the test {test}, which is not there"
        steps = STEP.findall(text)
        if document.name == "architecture.md" and not steps:
            yield f"{where} draws no road"
        for functions, name in steps:
            file = tree / name
            source = file.read_text(encoding="utf-8") if file.exists() else ""
            for function in functions.split(", "):
                if not defines(source, function):
                    yield f"{where} says that {function} is in {name}, where it is not"


if __name__ == "__main__":
    sys.exit(check_outcome.tell(complaints(check_outcome.tree()), "the documents name what is there"))
