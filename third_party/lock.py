"""Writes hashes.txt: for each package of the lists of exact versions, the hashes of all files of
that version, one line per package. `./dev lock` runs it after a list was changed.

usage: lock.py UV LIST...
"""

import re
import subprocess
import sys
import tempfile
from pathlib import Path

HEADER = "# Hashes of all files of the packages in the lists; written by `./dev lock`.\n"


def pins(lists: list[str]) -> list[str]:
    """name==version, as written, each once."""
    lines = {line for name in lists for line in Path(name).read_text().splitlines()}
    return sorted((line for line in lines if line and line[0] != "#"), key=str.lower)


def normal(name: str) -> str:
    return re.sub(r"[-_.]+", "-", name).lower()


def main() -> int:
    uv, *lists = sys.argv[1:]
    wanted = pins(lists)
    with tempfile.NamedTemporaryFile("w", suffix=".in") as file:
        file.write("\n".join(wanted))
        file.flush()
        command = [uv, "pip", "compile", "--quiet", "--no-deps", "--no-header", "--no-annotate",
                   "--generate-hashes", file.name]  # fmt: skip
        found = subprocess.run(command, check=True, capture_output=True, text=True).stdout
    hashes = {}
    for entry in re.sub(r"\s*\\\n\s*", " ", found).splitlines():
        pin, *rest = entry.split()
        hashes[normal(pin)] = " ".join(rest)
    Path("third_party/hashes.txt").write_text(
        HEADER + "".join(f"{pin} {hashes[normal(pin)]}\n" for pin in wanted)
    )
    return 0


if __name__ == "__main__":
    sys.exit(main())
