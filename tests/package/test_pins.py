"""Every file that pins packages names the same version of each."""

import re
import tomllib
from collections import defaultdict
from pathlib import Path

ROOT = Path(__file__).parents[2]
FILES = [
    *sorted(ROOT.glob("third_party/*.txt")),
    ROOT / "docs" / "requirements.txt",
    ROOT / "bench" / "peers" / "requirements.txt",
]


def test_each_pinned_package_has_hashes():
    lines = (ROOT / "third_party" / "hashes.txt").read_text(encoding="utf-8").splitlines()
    hashed = {line.split()[0] for line in lines if " --hash=sha256:" in line}
    listed = [path for path in FILES if path.name not in ("hashes.txt", "stim.txt")]
    pins = {line for path in listed for line in path.read_text(encoding="utf-8").splitlines()}
    assert {pin for pin in pins if pin and pin[0] != "#"} == hashed


def test_pins_are_exact_and_agree():
    pins = {path.name: path.read_text(encoding="utf-8").splitlines() for path in FILES}
    project = tomllib.loads((ROOT / "pyproject.toml").read_text(encoding="utf-8"))
    pins["pyproject.toml"] = project["build-system"]["requires"]
    versions = defaultdict(set)
    for file, lines in pins.items():
        for line in lines:
            if line and not line.startswith("#"):
                pin = re.match(r"([\w.-]+)==([\w.]+)( --hash=sha256:[0-9a-f]{64})*$", line)
                assert pin, f"{file}: {line}"
                versions[re.sub(r"[-_.]+", "-", pin[1]).lower()].add(pin[2])
    assert {name: seen for name, seen in versions.items() if len(seen) > 1} == {}
