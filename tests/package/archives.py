"""Checks what a source distribution and a wheel hold: all that is needed, and nothing else.

usage: archives.py SDIST WHEEL, in a checkout
"""

import json
import re
import subprocess
import sys
import tarfile
import zipfile
from pathlib import Path

# What the build reads, of the files that git does not ignore.
READ = r"(CMakeLists\.txt|README\.md|pyproject\.toml|third_party/stim\.txt|(cmake|python|src)/.*)"
UNREAD = r"(python/tests/.*|src/.*\.md)"
# Licences of what is built in, each with words that stand in it.
LICENCES = {
    "eigen": "Mozilla Public License",
    "lemon": "Boost Software License, Version 1.0",
    "nanobind": "Wenzel Jakob",
    "robin_map": "MIT License",
    "stim": "Apache License",
}


COMPONENTS = {"eigen", "lemon", "nanobind", "robin_map", "stim"}


def sbom_faults(archive: str, texts: list[bytes]) -> list[str]:
    """Of the list of what is built in."""
    if len(texts) != 1:
        return [f"{archive} has {len(texts)} lists of components, wanted one"]
    bom = json.loads(texts[0])
    components = {each["name"]: each for each in bom["components"]}
    faults = compare(f"the list of {archive}", COMPONENTS, set(components))
    faults += [
        f"{archive}: {name} has no version"
        for name, each in components.items()
        if not re.fullmatch(r"\d+(\.\d+)+", each["version"])
    ]
    stim = components.get("stim", {})
    pin = f"stim=={stim.get('version')} --hash=sha256:{stim.get('hashes', [{}])[0].get('content')}"
    if Path("third_party/stim.txt").read_text().strip() != pin:
        faults.append(f"{archive}: the Stim of its list is not the pinned one")
    return faults


def compare(archive: str, wanted: set[str], found: set[str]) -> list[str]:
    return [
        *(f"{archive} lacks {name}" for name in sorted(wanted - found)),
        *(f"{archive} holds {name}, which nothing needs" for name in sorted(found - wanted)),
    ]


def sdist_faults(archive: Path, tracked: list[str]) -> list[str]:
    wanted = {n for n in tracked if re.fullmatch(READ, n) and not re.fullmatch(UNREAD, n)}
    with tarfile.open(archive) as tar:
        found = {member.name.partition("/")[2] for member in tar if member.isfile()}
    return compare(archive.name, wanted | {"PKG-INFO"}, found)


def wheel_faults(archive: Path, tracked: list[str]) -> list[str]:
    package = {n.removeprefix("python/") for n in tracked if n.startswith("python/zeltbraidwerk/")}
    built = {"_core.so", "_core.pyi"}
    faults = []
    with zipfile.ZipFile(archive) as wheel:
        names = wheel.namelist()
        boms = [wheel.read(n) for n in names if re.search(r"\.dist-info/sboms/.*\.cdx\.json$", n)]
        faults += sbom_faults(archive.name, boms)
        for name, words in LICENCES.items():
            text = next((n for n in names if n.endswith(f".dist-info/licenses/{name}.txt")), None)
            if text is None:
                faults.append(f"{archive.name} lacks the licence of {name}")
            elif words not in wheel.read(text).decode():
                faults.append(f"{archive.name}: {text} is not the licence of {name}")
    held = (name for name in names if ".dist-info/" not in name)
    found = {re.sub(r"\.(cpython-\S+|abi3)\.so$", ".so", name) for name in held}
    wanted = package | {f"zeltbraidwerk/{name}" for name in built}
    return faults + compare(archive.name, wanted, found)


def main() -> int:
    sdist, wheel = map(Path, sys.argv[1:])
    command = ["git", "ls-files", "--cached", "--others", "--exclude-standard"]
    listing = subprocess.run(command, check=True, capture_output=True, text=True)
    tracked = listing.stdout.split()
    faults = sdist_faults(sdist, tracked) + wheel_faults(wheel, tracked)
    print("\n".join(faults) if faults else f"{sdist.name}, {wheel.name}: complete, nothing else")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
