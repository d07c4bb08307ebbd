"""What the checks that read texts have in common: the tree that they look at, and how they end."""

import pathlib
import sys


def tree():
    """The one named on the command line, or the project's own."""
    return pathlib.Path(sys.argv[1] if len(sys.argv) > 1 else pathlib.Path(__file__).parents[1])


def tell(complaints, fine):
    """Prints the complaints, or that all is fine; the exit status."""
    found = list(complaints)
    print("\n".join(found) if found else fine)
    return 1 if found else 0
