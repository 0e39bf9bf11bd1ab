"""Fails when the library exports symbols of the libraries built into it.

A process may hold another copy of them, and the two must not mix.

usage: exported_symbols.py NM LIBRARY
"""

import subprocess
import sys


def main() -> int:
    nm, library = sys.argv[1:]
    listing = subprocess.run(
        [nm, "-DC", "--defined-only", library], check=True, capture_output=True, text=True
    ).stdout.splitlines()
    # An own function may name a foreign type among its parameters.
    names = [line.partition("(")[0] for line in listing]
    foreign = [name for name in names if "stim::" in name or "lemon::" in name]
    print("\n".join(foreign) if foreign else f"{len(listing)} exported symbols, all our own")
    return 1 if foreign or not listing else 0


if __name__ == "__main__":
    sys.exit(main())
