"""What the README shows is what happens: its examples run, its commands and files are there."""

import re
import runpy
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

import pytest
from examples import failures

ROOT = Path(__file__).parents[2]
PAGES = [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_python_examples(page):
    if page.stem in ("qiskit", "pytket", "pyzx", "cirq", "pennylane"):
        pytest.importorskip(page.stem)
    assert failures(str(page)) == 0


def test_cpp_example_is_the_compiled_file():
    blocks = re.findall(r"```cpp\n(.*?)```", PAGES[0].read_text(encoding="utf-8"), re.DOTALL)
    assert blocks == [(ROOT / "examples" / "quickstart.cpp").read_text(encoding="utf-8")]


def test_cmake_example_is_what_the_consumer_test_builds():
    (block,) = re.findall(r"```cmake\n(.*?)```", PAGES[0].read_text(encoding="utf-8"), re.DOTALL)
    assert block in (ROOT / "tests" / "consumer" / "CMakeLists.txt").read_text(encoding="utf-8")


def test_commands_and_links_lead_somewhere():
    text = PAGES[0].read_text(encoding="utf-8")
    known = set(
        re.findall(
            r"^  (\w+(?: (?:speed|quality|peers|search|batch))?)",
            (ROOT / "dev").read_text(),
            re.MULTILINE,
        )
    )
    for command in re.findall(r"\./dev (bench \w+|\w+)", text):
        assert command in known
    for target in re.findall(r"\]\(([^)#:]+)\)", text):
        assert (ROOT / target).exists(), target


@pytest.mark.parametrize("example", sorted((ROOT / "examples").glob("*.py")), ids=lambda p: p.name)
def test_python_example_files(example, tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    monkeypatch.setattr(sys, "argv", [str(example)])
    runpy.run_path(str(example), run_name="__main__")
    for picture in tmp_path.glob("*.svg"):
        assert ElementTree.parse(picture).getroot().tag.endswith("svg")
