"""What all conversions to and from other packages share. A package is imported when it is
needed."""

from __future__ import annotations

import importlib
from collections.abc import Callable, Iterator
from typing import Any

from zeltbraidwerk import errors
from zeltbraidwerk._reading import Condition
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Reset, WholeCircuit

QASM_NAMES = {
    "CNOT": "cx", "CSIGN": "cz", "CZ": "cz", "H": "h", "S": "s", "D-S": "sdg", "X": "x", "Y": "y",
    "Z": "z", "I": "id", "RX": "rx", "RY": "ry", "RZ": "rz", "PH": "p", "XX": "rxx",
}  # fmt: skip


def _package(name: str) -> Any:
    top = name.partition(".")[0]
    try:
        importlib.import_module(top)
        return importlib.import_module(name)
    except ImportError:
        raise errors.MissingPackageError(
            f"this needs the package {top}: pip install {top.replace('_', '-')}, or "
            "zeltbraidwerk[interop] for all that it converts to and from"
        ) from None


def written(
    circuit: WholeCircuit,
) -> Iterator[tuple[Gate | Measure | Reset | Barrier, Condition | None]]:
    """The operations, each with its condition, and without XX on three and more qubits, which no
    other package has."""
    for place, operation in enumerate(circuit):
        condition: Condition | None = None
        inner = operation
        if isinstance(operation, Conditional):
            condition, inner = (operation.bits, operation.value), operation.operation
        if inner.name == "S*":
            raise errors.GateError(f"operation {place}: the gate S* has no counterpart elsewhere")
        if inner.name != "XX" or len(inner.qubits) == 2:
            yield inner, condition
            continue
        for k, first in enumerate(inner.qubits):
            for second in inner.qubits[k + 1 :]:
                yield Gate._trusted("XX", (first, second), inner.params), condition


def angles(gate: Gate | Measure | Reset) -> tuple[Parameter, ...]:
    """The angles for other packages; the second parameter of XX is not an angle."""
    return gate.params[:1] if gate.name == "XX" else gate.params


def angle(parameter: Parameter, symbol: Callable[[str], Any]) -> Any:
    """A number, or the prefix expression built from another package's symbols."""
    if not parameter.is_symbolic:
        return float(parameter)
    tokens = iter(parameter.expression.split())

    def operand() -> Any:
        token = next(tokens)
        if token == "+":
            return operand() + operand()
        if token == "UMINUS":
            return -operand()
        try:
            return float(token)
        except ValueError:
            return symbols.setdefault(token, symbol(token))

    symbols: dict[str, Any] = {}
    try:
        return operand()
    except StopIteration:
        raise errors.AngleError(f"got the broken expression {parameter.expression!r}") from None


def number(value: Any) -> Parameter:
    """A number, or a single symbol of another package."""
    try:
        return Parameter(float(value))
    except (TypeError, RuntimeError):
        name = getattr(value, "name", None)
        if isinstance(name, str) and not set(name) & set(" \t\n+-*/()"):
            return Parameter(name)
        raise errors.AngleError(
            f"got the angle {value}, wanted a number or a single parameter"
        ) from None
