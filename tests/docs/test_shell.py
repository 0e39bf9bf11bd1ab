"""The commands that the pages show do what they show, by bash and the installed command."""

import os
import re
import subprocess
import sysconfig
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]
PAGES = [ROOT / "README.md", ROOT / "docs" / "shell.md"]
BLOCK = re.compile(r"```console\n(.*?)```", re.DOTALL)


def sessions(page):
    """Commands with the output that is shown after them, of the blocks that use the command."""
    for block in BLOCK.findall(page.read_text(encoding="utf-8")):
        if "zeltbraidwerk " in block and "pip " not in block:
            for part in re.split(r"^\$ ", block, flags=re.MULTILINE)[1:]:
                lines = part.splitlines(keepends=True)
                end = 1 + next(k for k, line in enumerate(lines) if not line.endswith("|\n"))
                yield "".join(lines[:end]), "".join(lines[end:])


def without_seconds(text):
    return re.sub(r", [\d.e-]+ s$", ", so many s", text, flags=re.MULTILINE)


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_commands(page, tmp_path):
    path = f"{sysconfig.get_path('scripts')}:{os.environ['PATH']}"
    shown = list(sessions(page))
    assert shown
    for command, output in shown:
        done = subprocess.run(
            ["bash", "-o", "pipefail", "-c", command], cwd=tmp_path, text=True, check=False,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env={**os.environ, "PATH": path},
        )  # fmt: skip
        assert without_seconds(done.stdout) == without_seconds(output), command
