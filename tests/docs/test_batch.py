"""The scripts of the page on batches do what the page says; bash runs each job of the array."""

import os
import re
import subprocess
import sys
import sysconfig
from pathlib import Path

import pytest

PAGE = (Path(__file__).parents[2] / "docs" / "batch.md").read_text(encoding="utf-8")
PYTHON = re.findall(r"```python\n(.*?)```", PAGE, re.DOTALL)
PRINTED = {
    "clifford.synthesize": r"200 operators, 0 errors\ngates: 1\d\d\d\nall right: True\n",
    "dask": r"100 matrices, 0 errors\n",
    "batch.race": r"\d+ \d+ True\nTrue\n",
}


def done(command, folder, **variables):
    path = f"{sysconfig.get_path('scripts')}:{os.environ['PATH']}"
    return subprocess.run(
        command, cwd=folder, capture_output=True, text=True, check=True,
        env={**os.environ, "PATH": path, **variables},
    ).stdout  # fmt: skip


@pytest.mark.parametrize("word", PRINTED)
def test_scripts_of_python(word, tmp_path):
    if word == "dask":
        pytest.importorskip("distributed")
    (script,) = (block for block in PYTHON if word in block)
    (tmp_path / "script.py").write_text(script)
    first = done([sys.executable, "script.py"], tmp_path)
    assert re.fullmatch(PRINTED[word], first)
    if word != "dask":
        assert done([sys.executable, "script.py"], tmp_path) == first  # from the file


def test_job_array(tmp_path):
    (tmp_path / "operators").mkdir()
    for k, images in enumerate(["XX IX ZI ZZ", "IX XI IZ ZI", "-XI IX ZI IZ", "ZI IX XI IZ"]):
        (tmp_path / "operators" / f"{k}.txt").write_text(images.replace(" ", "\n"))
    (script,) = re.findall(r"```bash\n(.*?)```", PAGE, re.DOTALL)
    first, last = map(int, re.search(r"--array=(\d+)-(\d+)", script).groups())
    assert f"--array-size {last + 1 - first}\n" in script
    for job in range(first, last + 1):
        done(["bash", "-ec", script], tmp_path, SLURM_ARRAY_TASK_ID=str(job),
             SLURM_CPUS_PER_TASK="1")  # fmt: skip
    (merging,) = re.findall(r"^\$ (zeltbraidwerk batch merge .*)$", PAGE, re.MULTILINE)
    done(["bash", "-ec", merging], tmp_path)
    lines = (tmp_path / "runs.jsonl").read_text().splitlines()
    assert [re.search(r'"input":"operators/(\d).txt"', line)[1] for line in lines[1:]] == [*"0123"]
