"""The directive ``core-reference``: every name of ``zeltbraidwerk.core`` with its signature.

The compiled module writes signatures and comments into docstrings, which are shown as they are.
"""

from __future__ import annotations

import re
from collections.abc import Iterator
from textwrap import indent
from types import ModuleType
from typing import Any

from docutils import nodes
from sphinx.application import Sphinx
from sphinx.util.docutils import SphinxDirective

from zeltbraidwerk import core

MODULES = re.compile(r"zeltbraidwerk\._core\.|numpy\.typing\.|numpy\.|collections\.abc\.")


def entry(kind: str, signatures: list[str], text: str) -> str:
    arguments = f"\n{' ' * (len(kind) + 10)}".join(signatures)
    return f".. py:{kind}:: {arguments}\n\n{indent(text, '   ')}\n"


def called(kind: str, value: Any) -> str:
    """A function or a method: its signatures are the first lines of its docstring."""
    first, _, text = (value.__doc__ or "").partition("\n\n")
    text = text.removeprefix("Overloaded function.\n\n")
    return entry(kind, MODULES.sub("", first).splitlines(), MODULES.sub("", text))


def members(held: type) -> Iterator[str]:
    for name, value in vars(held).items():
        if name == "__init__" and value.__doc__:
            continue  # stands at the class
        if name[0] != "_":
            if isinstance(value, property):
                yield entry("attribute", [name], value.__doc__ or "")
            else:
                yield called("method", value)


def described(module: ModuleType) -> Iterator[str]:
    for name in module.__all__:
        value = getattr(module, name)
        if isinstance(value, type):
            first, _, text = (value.__init__.__doc__ or "").partition("\n\n")
            text = re.sub(r"``__init__\(self,? ?", f"``{name}(", text).replace(") -> None``", ")``")
            signatures = [re.sub(r"__init__\(self,? ?(.*)\) -> None", rf"{name}(\1)", line)
                          for line in MODULES.sub("", first).splitlines()]  # fmt: skip
            text = MODULES.sub("", text.removeprefix("Overloaded function.\n\n"))
            if not first.startswith("__init__"):
                signatures, text = [name], ""
            yield entry("class", signatures, "\n".join([text, "", *members(value)]))
        elif callable(value):
            yield called("function", value)
        else:
            yield entry("data", [name], f"Array of {value.dtype}, shape {value.shape}.")


class CoreReference(SphinxDirective):
    def run(self) -> list[nodes.Node]:
        self.env.note_dependency(core.__file__)
        return self.parse_text_to_nodes("\n".join(described(core)))


def setup(app: Sphinx) -> dict[str, bool]:
    app.add_directive("core-reference", CoreReference)
    return {"parallel_read_safe": True}
