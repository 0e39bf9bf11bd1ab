"""Fails when the library exports more than its public interface.

Symbols of the libraries built into it must not mix with another copy in the process; our own
internal ones would be promises that nobody made.

usage: exported_symbols.py NM LIBRARY
"""

import subprocess
import sys


def main() -> int:
    nm, library = sys.argv[1:]
    listing = subprocess.run(
        [nm, "-DC", "--defined-only", library], check=True, capture_output=True, text=True
    ).stdout.splitlines()
    # A public function may name a foreign type among its parameters.
    names = [line.partition("(")[0] for line in listing]
    private = ("stim::", "lemon::", "Eigen::", "::internal::")
    wrong = [name for name in names if any(part in name for part in private)]
    print("\n".join(wrong) if wrong else f"{len(listing)} exported symbols, all of them public")
    return 1 if wrong or not listing else 0


if __name__ == "__main__":
    sys.exit(main())
