"""The package as a whole: its docstrings run, its types hold, its stub fits the module."""

import doctest
import importlib
import inspect
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


def test_types(tmp_path):
    """mypy, strict, on the package with the stub of its compiled module."""
    pytest.importorskip("mypy")
    package = tmp_path / "zeltbraidwerk"
    shutil.copytree(
        Path(zb.__file__).parent, package, ignore=shutil.ignore_patterns("data", "__pycache__")
    )
    shutil.copy(Path(zb._core.__file__).parent / "_core.pyi", package)
    config = tmp_path / "mypy.ini"
    config.write_text(
        "[mypy]\nstrict = True\nexclude = demo\n"
        "[mypy-cirq.*,matplotlib.*,pennylane.*,pytket.*,pyzx.*,qiskit.*,stim.*]\n"
        "ignore_missing_imports = True\nfollow_imports = skip\n"
    )
    command = [sys.executable, "-m", "mypy", "--config-file", config, "-p", "zeltbraidwerk"]
    done = subprocess.run(command, cwd=tmp_path, capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stdout


def test_stub_fits_the_compiled_module():
    pytest.importorskip("mypy")
    command = [sys.executable, "-m", "mypy.stubtest", "zeltbraidwerk._core"]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stdout


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
                bare += [f"{name}.{member}" for member, held in vars(value).items()
                         if member[0] != "_" and (callable(held) or isinstance(held, property))
                         and not inspect.getdoc(held)]  # fmt: skip
    assert bare == []
