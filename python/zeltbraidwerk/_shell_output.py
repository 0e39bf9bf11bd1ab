"""What the command writes: a result as OpenQASM, JSON, a program of XORs or a picture."""

from __future__ import annotations

import sys
from collections.abc import Callable, Iterator
from pathlib import Path
from typing import Any

from zeltbraidwerk import _core, _files
from zeltbraidwerk._results import Result
from zeltbraidwerk._shell_input import InputError
from zeltbraidwerk._tableau import CliffordTableau

SUFFIXES = {".qasm": "qasm", ".json": "json", ".xor": "xor", ".svg": "svg"}


def format_of(path: str | None, given: str | None, formats: tuple[str, ...]) -> str:
    """By the option, else by the suffix of the file; checked before work starts."""
    if given is None and path not in (None, "-"):
        suffix = Path(str(path)).suffix
        given = SUFFIXES.get(suffix)
        if given is None:
            known = ", ".join(SUFFIXES)
            raise InputError(
                f"output: got the suffix {suffix!r} of {path}, wanted one of {known}, or --format"
            )
    given = given or "qasm"
    if given not in formats:
        raise InputError(f"format: got {given!r}, wanted one of {', '.join(formats)}")
    return given


def check_place(path: str | None) -> None:
    """Refuses a file that cannot be made, before work starts."""
    if path in (None, "-"):
        return
    place = Path(str(path))
    if place.is_dir():
        raise InputError(f"cannot write {path}: Is a directory")
    if not place.parent.is_dir():
        raise InputError(f"cannot write {path}: No such directory: {place.parent}")


def write(result: Result, format: str, path: str | None) -> None:
    """The whole file, or nothing."""
    text = _FORMATS[format](result)
    text = text if text.endswith("\n") else text + "\n"
    if path in (None, "-"):
        sys.stdout.write(text)
        sys.stdout.flush()
        return
    _files.save(str(path), text)


def summary(result: Result) -> str:
    """One line on a result that was verified."""
    parts = [f"{result.method}: {result.count} two-qubit gates, depth {result.depth}"]
    before = getattr(result, "before", None)
    if before is not None:
        parts = [f"{parts[0]} (before: {before.two_qubit}, depth {before.depth})"]
    parts += [*result._certificate(), *_about(result)]
    return f"{', '.join(parts)}, verified, {result.seconds:.2g} s"


def _about(result: Result) -> Iterator[str]:
    if result.permutation != tuple(range(len(result.permutation))):
        yield "outputs permuted"
    if _is_open(result):
        yield "tail returned"


def _is_open(result: Result) -> bool:
    tail = getattr(result, "tail", None)
    closed = isinstance(tail, CliffordTableau) and tail == CliffordTableau(tail.n)
    return tail is not None and not closed


def _qasm(result: Result) -> str:
    """With comments on how to make it again, and on where inputs and outputs are."""
    outputs = [result.placement[wire] for wire in result.permutation[: len(result.placement)]]
    size = [f"{result.count} two-qubit gates, depth {result.depth}", *result._certificate()]
    notes = [f"zeltbraidwerk {_core._version}: {result.call}", ", ".join(size)]
    if list(result.placement) != list(range(result.n)):
        notes.append(f"inputs are on qubits {' '.join(map(str, result.placement))}")
    if outputs != list(range(result.n)):
        notes.append(f"outputs are on qubits {' '.join(map(str, outputs))}")
    logical = getattr(result, "logical_wires", None)
    if logical is not None:
        notes.append(f"logical qubits come in on qubits {' '.join(map(str, logical))}, 0 on others")
    if getattr(result, "local", None) is not None:
        notes.append("gates on single qubits are left out at the end; JSON holds them")
    if _is_open(result):
        notes.append("a tail is left over; JSON holds it")
    lines = "".join(f"// {note}\n" for note in notes)
    return lines + result.circuit.to_qasm()


_FORMATS: dict[str, Callable[[Any], str]] = {
    "qasm": _qasm,
    "json": lambda result: str(result.to_json()),
    "xor": lambda result: str(result.to_xor_program()),
    "svg": lambda result: str(result.circuit._repr_svg_()),
}
