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


def test_pins_are_exact_and_agree():
    pins = {path.name: path.read_text(encoding="utf-8").splitlines() for path in FILES}
    project = tomllib.loads((ROOT / "pyproject.toml").read_text(encoding="utf-8"))
    pins["pyproject.toml"] = project["build-system"]["requires"]
    versions = defaultdict(set)
    for file, lines in pins.items():
        for line in lines:
            if line and not line.startswith("#"):
                pin = re.match(r"([\w.-]+)==([\w.]+)( --hash=\S+)?$", line)
                assert pin, f"{file}: {line}"
                versions[re.sub(r"[-_.]+", "-", pin[1]).lower()].add(pin[2])
    assert {name: seen for name, seen in versions.items() if len(seen) > 1} == {}
