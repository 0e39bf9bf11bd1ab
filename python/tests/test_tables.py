"""Tables of searches in files, as programs meet them."""

import os
import subprocess
import sys

import pytest

PROGRAM = """
import zeltbraidwerk as zb
operators = zb.gallery.random_clifford(5, 2) + zb.gallery.random_clifford(7, 1)
matrix = zb.gallery.random_invertible(7, 1, seed=1)[0]
parities = dict.fromkeys(zb.gallery.random_parities(6, 20, 1)[0], 0.1)
for found in (
    *(zb.clifford.synthesize(operator, seed=1) for operator in operators[:2]),
    zb.clifford.synthesize(operators[2], seed=1, steps=3000, permutation="free"),
    zb.linear.synthesize(matrix, seed=1),
    zb.phase.synthesize(parities, n=6, seed=1, method="search", steps=3000),
):
    assert found.verify()
    print(found.circuit.to_qasm())
"""


def output(folder):
    done = subprocess.run(
        [sys.executable, "-c", PROGRAM], env={**os.environ, "ZELTBRAIDWERK_CACHE": str(folder)},
        capture_output=True, text=True, check=False,
    )  # fmt: skip
    assert not done.stderr
    assert done.returncode == 0
    return done.stdout


@pytest.mark.skipif(sys.platform == "win32", reason="tables are kept on POSIX alone")
def test_circuits_are_the_same_whatever_the_files_hold(tmp_path):
    wanted = output("off")
    folder = tmp_path / "of" / "tables"
    assert output(folder) == wanted
    files = {path: path.read_bytes() for path in folder.iterdir()}
    assert len(files) >= 3
    assert output(folder) == wanted
    assert {path: path.read_bytes() for path in folder.iterdir()} == files
    for path, content in files.items():
        path.write_bytes(content[: len(content) // 2])
    assert output(folder) == wanted
    assert {path: path.read_bytes() for path in folder.iterdir()} == files
    blocked = tmp_path / "text"
    blocked.write_text("no folder")
    assert output(blocked) == wanted
