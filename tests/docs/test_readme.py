"""What the README shows is what happens: its examples run, its commands and files are there."""

import pydoc
import re
import runpy
import sys
import xml.etree.ElementTree as ElementTree
from pathlib import Path

import pytest
from examples import failures
from reference import public_modules

import zeltbraidwerk
from zeltbraidwerk import errors

ROOT = Path(__file__).parents[2]
NEEDED = {
    "cirq": ("cirq",),
    "codes": ("stim",),
    "pennylane": ("pennylane",),
    "python": ("galois", "networkx", "qiskit", "scipy"),
    "pytket": ("pytket",),
    "pyzx": ("pyzx",),
    "qiskit": ("qiskit",),
    "stim": ("stim",),
}
PAGES = [ROOT / "README.md", *sorted((ROOT / "docs").glob("*.md"))]


@pytest.mark.parametrize("page", PAGES, ids=lambda page: page.name)
def test_python_examples(page):
    for package in NEEDED.get(page.stem, ()):
        pytest.importorskip(package)
    assert failures(str(page)) == 0


def blocks(page, language):
    text = (ROOT / page).read_text(encoding="utf-8")
    return re.findall(rf"```{language}\n(.*?)```", text, re.DOTALL)


@pytest.mark.parametrize(
    ("page", "program"), [("README.md", "quickstart.cpp"), ("docs/cpp.md", "ladder.cpp")]
)
def test_pages_of_cpp_show_what_is_built(page, program):
    assert blocks(page, "cpp")[0] == (ROOT / "examples" / program).read_text(encoding="utf-8")
    (project,) = blocks(page, "cmake")
    assert project in (ROOT / "tests" / "consumer" / "CMakeLists.txt").read_text(encoding="utf-8")


def test_every_error_is_shown():
    text = (ROOT / "docs" / "errors.md").read_text(encoding="utf-8")
    for name in set(dir(errors)) - {"Error", "Interrupted"}:
        assert f"\nzeltbraidwerk.errors.{name}: " in text, name


def test_help_names_the_modules_and_the_pages():
    """``help(zb)`` names all public modules, and the pages of the table of contents."""
    shown = pydoc.render_doc(zeltbraidwerk, renderer=pydoc.plaintext)
    for module in public_modules():
        assert re.search(rf"\b{module.replace('zeltbraidwerk', 'zb', 1)}\b", shown), module
    listed = "\n".join(blocks("docs/index.md", "{toctree}"))
    for page in re.findall(r"^\w+$", listed, re.MULTILINE):
        assert f"{page}.md" in shown, page


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
