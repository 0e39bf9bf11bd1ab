"""Which public names the built reference lacks.

usage: reference.py BUILT, the folder of the built documentation, with the Python that has the
package and Sphinx
"""

from __future__ import annotations

import importlib
import inspect
import pkgutil
import re
import sys
from collections.abc import Iterator
from dataclasses import fields, is_dataclass
from functools import cached_property
from pathlib import Path
from types import ModuleType

import zeltbraidwerk

SOURCES = Path(__file__).parents[2] / "src"
PROGRAMS = {"zeltbraidwerk.demo"}  # run, not imported


def public_modules() -> list[str]:
    found = pkgutil.walk_packages(zeltbraidwerk.__path__, "zeltbraidwerk.")
    public = (each.name for each in found if "._" not in each.name)
    return ["zeltbraidwerk", *(name for name in public if name not in PROGRAMS)]


def names(module: ModuleType) -> list[str]:
    """What ``dir`` shows, or what the module exports."""
    return [name for name in getattr(module, "__all__", dir(module)) if name[0] != "_"]


def members(held: type) -> Iterator[str]:
    """Public methods and properties of a class and of those classes of the package under it."""
    for base in inspect.getmro(held):
        if base.__module__.startswith("zeltbraidwerk"):
            for name, value in vars(base).items():
                kinds = (property, cached_property, classmethod, staticmethod)
                if name[0] != "_" and (callable(value) or isinstance(value, kinds)):
                    yield name


def lacking(known: set[str]) -> Iterator[str]:
    """Names that the reference does not have, by any of the names of the same object."""
    spelled: dict[int, tuple[object, set[str]]] = {}
    for module in map(importlib.import_module, public_modules()):
        for name in names(module):
            value = getattr(module, name)
            spelled.setdefault(id(value), (value, set()))[1].add(f"{module.__name__}.{name}")
    classes = {id(value): value for value, _ in spelled.values() if inspect.isclass(value)}
    for held in list(classes.values()):
        classes |= {id(base): base for base in inspect.getmro(held)}

    def all_names(value: object) -> set[str]:
        full = f"{getattr(value, '__module__', '')}.{getattr(value, '__qualname__', '')}"
        return spelled.get(id(value), (value, set()))[1] | {full}

    for value, under in spelled.values():
        if not (all_names(value) | under) & known:
            yield min(under, key=len)
        if not inspect.isclass(value):
            continue
        owners = [name for base in inspect.getmro(value) for name in all_names(base)]
        for member in members(value):
            if not known.intersection(f"{owner}.{member}" for owner in owners):
                yield f"{min(under, key=len)}.{member}"
        if is_dataclass(value):
            text = " ".join(base.__doc__ or "" for base in inspect.getmro(value))
            for field in fields(value):
                if field.name[0] != "_" and not re.search(rf"\b{field.name}\b", text):
                    yield f"{min(under, key=len)}.{field.name} (in no docstring of the class)"


def main(built: Path) -> int:
    from sphinx.util.inventory import InventoryFile

    inventory = InventoryFile.loads((built / "objects.inv").read_bytes(), uri="").data
    known = {name for kind, found in inventory.items() if kind.startswith("py:") for name in found}
    missing = sorted(set(lacking(known)))
    page = (built / "reference" / "cpp.html").read_text(encoding="utf-8")
    headers = (str(path.relative_to(SOURCES)) for path in SOURCES.glob("zeltbraidwerk/*/*.h"))
    missing += [header for header in sorted(headers) if header not in page]
    print(f"reference: {len(known)} Python names; missing: {', '.join(missing) or 'none'}")
    return len(missing) > 0


if __name__ == "__main__":
    sys.exit(main(Path(sys.argv[1])))
