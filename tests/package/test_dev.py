"""What ./dev does after it was killed, and when it has no network or no room. It runs in a copy,
with programs in the place of pip, Python and the package manager."""

import os
import shutil
import subprocess
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]

# Makes an environment whose pip does what the file `mood` says, and counts what was made.
PYTHON = """#!/bin/sh
case "$1" in
-) exit 0 ;;
esac
for folder; do :; done
echo made >>made
rm -rf "$folder"
mkdir -p "$folder/bin"
cp fake/pip "$folder/bin/pip"
cp fake/python3 "$folder/bin/python"
"""
PIP = """#!/bin/sh
case "$(cat mood)" in
killed) echo 'Installing collected packages: a'; kill -9 "$(cat dev.pid)"; exit 1 ;;
network) echo "WARNING: NewConnectionError('Temporary failure in name resolution')"; exit 1 ;;
full) echo 'OSError: [Errno 28] No space left on device'; exit 1 ;;
hash) echo 'ERROR: THESE PACKAGES DO NOT MATCH THE HASHES FROM THE REQUIREMENTS FILE.'; exit 1 ;;
broken) echo 'error: something else'; exit 1 ;;
esac
echo "$@" >pip.arguments
"""


@pytest.fixture
def tree(tmp_path):
    shutil.copy(ROOT / "dev", tmp_path)
    shutil.copytree(ROOT / "third_party", tmp_path / "third_party")
    for name, text in {
        "python3": PYTHON,
        "pip": PIP,
        "dpkg-query": '#!/bin/sh\nshift 3\nfor p; do echo "$p installed"; done\n',
    }.items():
        path = tmp_path / "fake" / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(text)
        path.chmod(0o755)
    return tmp_path


def setup(tree, mood):
    (tree / "mood").write_text(mood)
    environment = os.environ | {"PATH": f"{tree / 'fake'}:{os.environ['PATH']}"}
    run = ["bash", "-c", "echo $$ >dev.pid; exec ./dev setup"]
    done = subprocess.run(
        run, cwd=tree, env=environment, capture_output=True, text=True, check=False, timeout=60
    )
    made = tree / "made"
    return done, len(made.read_text().splitlines()) if made.exists() else 0


def test_an_environment_that_was_being_changed_is_made_anew(tree):
    assert setup(tree, "killed")[0].returncode == -9
    done, made = setup(tree, "works")
    assert (done.returncode, made) == (0, 2), done.stderr
    assert "--require-hashes" in (tree / "pip.arguments").read_text()
    done, made = setup(tree, "broken")  # nothing is left to do
    assert (done.returncode, made) == (0, 2), done.stderr


@pytest.mark.parametrize(
    ("mood", "told", "made"),
    [
        ("network", "no network: connect, then run this again", 1),
        ("full", "the disk is full: make room, then run this again", 2),
        ("hash", "a file is not the one that third_party names", 1),
    ],
)
def test_a_failure_is_one_line_that_says_what_to_do(tree, mood, told, made):
    done, _ = setup(tree, mood)
    lines = [line for line in done.stderr.splitlines() if line.startswith("./dev: ")]
    assert done.returncode != 0
    assert len(lines) == 1, done.stderr
    assert told in lines[0]
    done, found = setup(tree, "works")
    assert (done.returncode, found) == (0, made), done.stderr


def test_a_package_without_hashes_is_told(tree):
    with open(tree / "third_party" / "python-tools.txt", "a") as file:
        file.write("unheard-of==1.0\n")
    done, _ = setup(tree, "works")
    assert done.returncode != 0
    assert "third_party/hashes.txt lacks unheard-of==1.0: run ./dev lock" in done.stderr
