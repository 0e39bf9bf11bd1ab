"""Runs the Python examples of a page, in the order in which they stand there.

usage: examples.py PAGE, with the Python that has the package
"""

import doctest
import sys


def failures(page: str) -> int:
    """How many examples print something else than the page shows."""
    flags = doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE
    failed, tried = doctest.testfile(page, module_relative=False, optionflags=flags)
    print(f"{page}: {tried - failed} of {tried} examples do what it shows")
    return failed


if __name__ == "__main__":
    sys.exit(failures(sys.argv[1]) != 0)
