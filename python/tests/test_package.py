"""The package as a whole: its docstrings run, its types hold, its stub fits the module."""

import doctest
import functools
import importlib
import inspect
import os
import re
import shutil
import subprocess
import sys
from pathlib import Path

import pytest

import zeltbraidwerk as zb

SOURCES = sorted(Path(zb.__file__).parent.glob("*.py"))
MODULES = [f"zeltbraidwerk.{path.stem}" for path in SOURCES if path.stem[:2] != "__"]


@pytest.mark.parametrize("name", ["zeltbraidwerk", *MODULES])
def test_examples_in_docstrings(name):
    failed, _ = doctest.testmod(importlib.import_module(name))
    assert failed == 0


def test_optional_packages_are_not_imported_with_the_package():
    code = (
        "import sys, zeltbraidwerk\n"
        "print(*{'qiskit', 'pytket', 'stim', 'pyzx', 'cirq', 'pennylane', 'matplotlib', "
        "'networkx', 'sympy'} & set(sys.modules))"
    )
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    assert done.stdout.strip() == ""


def test_version_is_that_of_the_installed_package():
    assert zb.__version__ == importlib.metadata.version("zeltbraidwerk")


@pytest.fixture
def copied(tmp_path):
    """A folder with the package, its compiled module and the stub of that in one place, where mypy
    finds them, as it does not in an editable installation."""
    pytest.importorskip("mypy")
    package = tmp_path / "zeltbraidwerk"
    shutil.copytree(
        Path(zb.__file__).parent, package, ignore=shutil.ignore_patterns("data", "__pycache__")
    )
    for compiled in Path(zb._core.__file__).parent.glob("_core*"):
        shutil.copy(compiled, package)
    (tmp_path / "mypy.ini").write_text(
        "[mypy]\nstrict = True\nexclude = demo\n"
        "[mypy-cirq.*,matplotlib.*,pennylane.*,pytket.*,pyzx.*,qiskit.*,stim.*]\n"
        "ignore_missing_imports = True\nfollow_imports = skip\n"
    )
    return tmp_path


def test_types(copied):
    """mypy, strict, on the package with the stub of its compiled module."""
    command = [sys.executable, "-m", "mypy", "--config-file", "mypy.ini", "-p", "zeltbraidwerk"]
    done = subprocess.run(command, cwd=copied, capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stdout


# What functions, classes and enumerations of nanobind are not in the eyes of mypy.
OF_NANOBIND = re.compile(
    r"not a function|metaclass differs|stub is a staticmethod|__nb_enum__"
    r"|(_SynthesisResult|_HeldCliffords).__init__"
)


def test_stub_fits_the_compiled_module(copied):
    options = ["--concise", "--ignore-disjoint-bases", "--mypy-config-file", "mypy.ini"]
    done = subprocess.run(
        [sys.executable, "-m", "mypy.stubtest", *options, "zeltbraidwerk._core"],
        cwd=copied, env={**os.environ, "MYPYPATH": str(copied)}, capture_output=True, text=True,
    )  # fmt: skip
    told = done.stdout.splitlines()
    assert any("BlossomAlgorithm" in line for line in told), "the stub was not found"
    assert [line for line in told if not OF_NANOBIND.search(line)] == []


def test_modules_show_public_names_alone_and_name_the_nearest():
    assert dir(zb) == sorted(zb.__all__)
    assert dir(zb.linear) == ["LinearSynthesis", "methods", "synthesize"]
    assert {"annotations", "Any"}.isdisjoint(dir(zb.errors))
    for module, wrong, right in [
        (zb, "optimise", "optimize"), (zb.linear, "synthesise", "synthesize"),
        (zb.core, "GaussianEliminaton", "GaussianElimination"),
        (zb.errors, "QbitError", "QubitError"),
    ]:  # fmt: skip
        with pytest.raises(AttributeError, match=f"did you mean '{right}'"):
            getattr(module, wrong)
    with pytest.raises(AttributeError, match=r"no attribute 'xyz'$"):
        _ = zb.xyz


def test_every_public_name_is_described():
    """Modules, classes, functions, methods and properties that ``dir`` shows have docstrings."""
    bare = []
    for module in (zb, *(value for _, value in inspect.getmembers(zb, inspect.ismodule))):
        for name, value in inspect.getmembers(module):
            if name == "__version__" or getattr(value, "__module__", "") == "builtins":
                continue
            if not inspect.getdoc(value):
                bare.append(f"{module.__name__}.{name}")
            if inspect.isclass(value) and module is not zb.core:
                kinds = (property, functools.cached_property, classmethod, staticmethod)
                bare += [f"{name}.{member}" for member, held in vars(value).items()
                         if member[0] != "_" and (callable(held) or isinstance(held, kinds))
                         and not inspect.getdoc(getattr(value, member))]  # fmt: skip
    assert bare == []
