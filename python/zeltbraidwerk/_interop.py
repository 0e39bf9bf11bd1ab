"""What all conversions to and from other packages share. A package is imported when it is
needed."""

from __future__ import annotations

import importlib
from collections.abc import Callable, Collection, Iterator, Mapping, Sequence
from dataclasses import replace
from typing import Any

from zeltbraidwerk import _parameter, errors
from zeltbraidwerk._header import elementary
from zeltbraidwerk._reading import Condition
from zeltbraidwerk.gates import COMPOSED, Gate, Parameter
from zeltbraidwerk.instructions import (
    Barrier,
    Conditional,
    Measure,
    Operation,
    Reset,
    WholeCircuit,
)

QASM_NAMES = {
    "CNOT": "cx", "CSIGN": "cz", "CZ": "cz", "H": "h", "S": "s", "D-S": "sdg", "X": "x", "Y": "y",
    "Z": "z", "I": "id", "RX": "rx", "RY": "ry", "RZ": "rz", "PH": "p", "XX": "rxx",
    **COMPOSED,
}  # fmt: skip

MOST_BITS = 10  # of a condition that is not a value of bits, and is read as one for each value

_ON_PYPI = {"cirq": "cirq-core", "qiskit_qasm3_import": "qiskit-qasm3-import"}


def _package(name: str) -> Any:
    top = name.partition(".")[0]
    try:
        importlib.import_module(top)
        return importlib.import_module(name)
    except ImportError:
        raise errors.MissingPackageError(
            f"this needs the package {top}: pip install {_ON_PYPI.get(top, top)}, or "
            "zeltbraidwerk[interop] for all that it converts to and from"
        ) from None


def written(
    circuit: WholeCircuit, known: Collection[str] = QASM_NAMES
) -> Iterator[tuple[Gate | Measure | Reset | Barrier, Condition | None]]:
    """The operations, each with its condition. Gates that are made of others and not ``known`` are
    taken apart, and so is XX on three and more qubits, which no other package has."""
    for place, operation in enumerate(circuit):
        condition: Condition | None = None
        inner = operation
        if isinstance(operation, Conditional):
            condition, inner = (operation.bits, operation.value), operation.operation
        if inner.name == "S*":
            raise errors.GateError(f"operation {place}: the gate S* has no counterpart elsewhere")
        if inner.name in COMPOSED and inner.name not in known:
            for part in elementary(inner):
                if not part.params or part.params[0] != 0:
                    yield part, condition
            continue
        if inner.name != "XX" or len(inner.qubits) == 2:
            yield inner, condition
            continue
        for k, first in enumerate(inner.qubits):
            for second in inner.qubits[k + 1 :]:
                yield Gate._trusted("XX", (first, second), inner.params), condition


def angles(gate: Gate | Measure | Reset) -> tuple[Parameter, ...]:
    """The angles for other packages; the second parameter of XX is not an angle."""
    return gate.params[:1] if gate.name == "XX" else gate.params


def symbols(
    circuit: WholeCircuit, of_package: Callable[[Any], bool], make: Callable[[str], Any]
) -> dict[str, Any]:
    """For each name in the angles a symbol of another package: that which it was read from, or a
    new one."""
    angles = [angle for operation in circuit for angle in operation.params if angle.is_symbolic]
    sources = _parameter.sources_of(angles)
    found = {}
    for name in _parameter.names_of(angles):
        source = sources.get(name)
        found[name] = source if source is not None and of_package(source) else make(name)
    return found


def number(value: Any) -> float | Parameter:
    """An angle of another package. Numbers are plain, so that their sums are not wrapped."""
    angle = _parameter.parameter(value, "angle")
    return angle if angle.is_symbolic else float(angle)


def renumbered(operations: list[Operation], order: Sequence[int]) -> list[Operation]:
    """The operations on the same bits, numbered in this order."""
    if list(order) == list(range(len(order))):
        return operations
    place = {bit: k for k, bit in enumerate(order)}
    return [_renumbered(item, place) for item in operations]


def _renumbered(item: Any, place: Mapping[int, int]) -> Any:
    if isinstance(item, Measure):
        return replace(item, bit=place[item.bit])
    if isinstance(item, Conditional):
        bits = tuple(place[bit] for bit in item.bits)
        return replace(item, operation=_renumbered(item.operation, place), bits=bits)
    return item
