"""Breaks the header that keeps "more effort is never worse", one line at a time.

Its test has to fail for each of these faults. usage: incumbent_mutants.py COMPILER SOURCE_FOLDER
"""

import subprocess
import sys
import tempfile
from pathlib import Path

HEADER = "zeltbraidwerk/search/internal/incumbent.h"
SMALLER = "size.key(objective_) < size_.key(objective_)"
FAULTS = [
    (SMALLER, SMALLER.replace("<", "<=")),
    (SMALLER, SMALLER.replace("<", ">")),
    (SMALLER, "size.count < size_.count"),
    ("empty_ || size.key", "size.key"),
    ("ties_ == Ties::latest", "ties_ == Ties::first"),
    ("&& size == size_", ""),
    ("    size_ = size;\n", ""),
    ("    empty_ = false;\n", ""),
    ("answer_(objective, ties)", "answer_(objective)"),
    ("answer_(objective, ties)", "answer_(Objective::count, ties)"),
    ("empty() || origin ==", "origin =="),
    ("origin == Origin::certain ||", ""),
    ("|| origin == lasting_", ""),
    ("|| !meter_.ended()", ""),
    ("|| !meter_.ended()", "|| true"),
    ("objective == Objective::count ? Origin", "objective == Objective::depth ? Origin"),
    ("    if (!counts(origin)) return false;\n", ""),
    ("    if (smaller) meter_", "    if (taken) meter_"),
    ("    if (smaller) meter_.better(size.count, size.depth);\n", ""),
]  # fmt: skip


def test_fails(compiler: str, source: Path, header: str) -> bool:
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        broken = folder / HEADER
        broken.parent.mkdir(parents=True)
        broken.write_text(header)
        program = folder / "test"
        command = [compiler, "-std=c++20", "-O0", f"-I{folder}", f"-I{source / 'src'}"]
        subprocess.run(
            [*command, source / "tests/search/incumbent_test.cpp", "-o", program], check=True
        )
        return subprocess.run([program], stdout=subprocess.DEVNULL).returncode != 0


def main() -> int:
    compiler, source = sys.argv[1], Path(sys.argv[2])
    header = (source / "src" / HEADER).read_text()
    missed = [old for old, _ in FAULTS if old not in header]
    unseen = [
        f"{old!r} -> {new!r}"
        for old, new in FAULTS
        if old in header and not test_fails(compiler, source, header.replace(old, new, 1))
    ]
    for line in missed:
        print(f"not in the header any more: {line!r}")
    for line in unseen:
        print(f"no test sees {line}")
    print(f"{len(FAULTS) - len(missed) - len(unseen)} of {len(FAULTS)} faults are seen")
    return 1 if missed or unseen else 0


if __name__ == "__main__":
    sys.exit(main())
