"""Reads the files below src and fails where an include breaks the plan of the house, or where two
internal headers have classes of one name: all are in one namespace, and the linker would take the
functions of one for those of the other without a word.

usage: include_arrows.py SRC_FOLDER
"""

import re
import sys
from pathlib import Path

# What each subsystem may include, beside itself.
ALLOWED = {
    "foundations": set(),
    "graphs": {"foundations"},
    "search": {"foundations"},
    "graph_state": {"foundations", "clifford", "search"},
    "linear": {"foundations", "graphs", "search"},
    "phase": {"foundations", "graphs", "linear", "search"},
    "clifford": {"foundations", "graphs", "linear", "search"},
    "routing": {"foundations", "graphs"},
}
ALLOWED["pauli"] = set(ALLOWED) - {"routing"}
ALLOWED["circuit"] = set(ALLOWED)

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.MULTILINE)

CLASS = re.compile(r"^(?:class|struct) (\w+)(?: final)?(?: :.*)? \{", re.MULTILINE)


def faults(root: Path, file: Path):
    here = file.relative_to(root).parts
    subsystem = here[0] if len(here) > 1 else None
    is_header = file.suffix == ".h"
    is_public = is_header and "internal" not in here
    if subsystem is not None and subsystem not in ALLOWED:
        yield f"subsystem {subsystem} is not in the plan"
        return
    for quote, name in INCLUDE.findall(file.read_text()):
        target = name.split("/")
        if is_header and target[0] in ("lemon", "stim", "stim.h"):
            yield f"a header includes <{name}>; only .cpp files may"
        if target[0] != "zeltbraidwerk":
            if is_public and target[0] == "Eigen":
                yield f"a public header includes <{name}>, which users need not have"
            if quote == '"':
                yield f'"{name}" is not written from "zeltbraidwerk/" on'
            continue
        if is_public and "internal" in target:
            yield f'a public header includes "{name}", which is not installed'
        if subsystem is not None and len(target) > 2:
            if target[1] != subsystem and target[1] not in ALLOWED[subsystem]:
                yield f'{subsystem} must not include "{name}"'
        elif subsystem is not None and target[1] != "export.h":
            yield f'"{name}" is for users of the library'


def shared_names(root: Path, files: list[Path]):
    first: dict[str, Path] = {}
    for file in files:
        if file.suffix != ".h" or "internal" not in file.parts:
            continue
        here = file.relative_to(root)
        for name in CLASS.findall(file.read_text()):
            if first.setdefault(name, here) != here:
                yield f"{here}: {name} is a class of {first[name]} as well"


def main() -> int:
    root = Path(sys.argv[1]) / "zeltbraidwerk"
    files = sorted(p for p in root.rglob("*") if p.suffix in (".h", ".cpp"))
    found = [f"{p.relative_to(root)}: {fault}" for p in files for fault in faults(root, p)]
    found += shared_names(root, files)
    print("\n".join(found) if found else f"{len(files)} files keep to the plan")
    return 1 if found or not files else 0


if __name__ == "__main__":
    sys.exit(main())
