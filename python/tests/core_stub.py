"""What zeltbraidwerk.core has to be called, and with what types, as its stub tells."""

import ast
from dataclasses import dataclass
from pathlib import Path

# They end the process, or change how it ends.
LEFT_OUT = {"cpp_signal_handler", "setup_cpp_signal_handler"}
SPECIAL = {"__init__", "__iadd__", "__eq__", "__len__", "__str__", "__repr__"}


@dataclass(frozen=True)
class Target:
    """A function, method, constructor, property or setter; `call` is its text with {} for self."""

    name: str
    owner: str | None
    call: str
    parameters: tuple[tuple[str, ast.expr], ...]
    doc: str


def _parameters(function: ast.FunctionDef, skip: int) -> tuple[tuple[str, ast.expr], ...]:
    arguments = function.args
    plain = [*arguments.posonlyargs, *arguments.args][skip:]
    named = [(f"{each.arg}=", each.annotation) for each in arguments.kwonlyargs]
    return tuple([(each.arg, each.annotation) for each in plain] + named)


def _target(function: ast.FunctionDef, owner: str | None) -> Target:
    marks = {ast.unparse(mark).rpartition(".")[2] for mark in function.decorator_list}
    name = f"{owner}.{function.name}" if owner else function.name
    is_method = owner is not None and "staticmethod" not in marks
    if function.name == "__init__":
        name, call, is_method = f"{owner}()", f"core.{owner}(%s)", False
    elif "setter" in marks:
        name, call = f"{name}=", f"{{}}.{function.name} = %s"
    elif "property" in marks:
        call = f"{{}}.{function.name}"
    else:
        call = f"{{}}.{function.name}(%s)" if is_method else f"core.{name}(%s)"
    skip = 1 if is_method or function.name == "__init__" else 0
    doc = ast.get_docstring(function) or ""
    return Target(name, owner if is_method else None, call, _parameters(function, skip), doc)


def read_targets(stub: Path) -> list[Target]:
    """All targets of the stub, overloads one by one."""
    targets = []
    for node in ast.parse(stub.read_text()).body:
        is_class = isinstance(node, ast.ClassDef)
        if not (is_class or isinstance(node, ast.FunctionDef)) or node.name[0] == "_":
            continue
        for each in node.body if is_class else [node]:
            if not isinstance(each, ast.FunctionDef) or each.name in LEFT_OUT:
                continue
            if each.name[0] != "_" or each.name in SPECIAL:
                targets.append(_target(each, node.name if is_class else None))
    return targets
