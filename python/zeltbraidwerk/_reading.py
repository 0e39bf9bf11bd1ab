"""What the readers of all formats share: a list of operations with a limit on its length."""

from __future__ import annotations

import gc
from collections.abc import Iterable, Iterator, Sequence
from contextlib import contextmanager
from typing import Any, NamedTuple, TypeAlias

from zeltbraidwerk import _validate, errors, limits
from zeltbraidwerk._definitions import (
    Definition,
    Plain,
    Primitive,
    expanded,
)
from zeltbraidwerk._names import Names
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Operation, Register, Reset

Known: TypeAlias = Primitive | Definition
Condition = tuple[tuple[int, ...], int]  # bits and the value that they must have


# Errors to which readers add the place.
PLACED = (errors.AngleError, errors.GateError, errors.TooLargeError)


class Read(NamedTuple):
    """What a reader finds; without ``names`` the qubits have the usual ones."""

    n: int
    operations: list[Operation]
    classical: list[Register]
    names: Names | None = None


class Reading:
    """Operations in order. What is added under a condition that cannot hold is left out."""

    def __init__(self) -> None:
        self.operations: list[Operation] = []
        self._most = limits.get("operations")
        self._known: dict[tuple[Known, tuple[int, ...]], tuple[Operation, ...]] = {}

    def gate(
        self, gate: Known, qubits: tuple[int, ...], angles: Sequence[float | Parameter],
        where: str, condition: Condition | None = None,
    ) -> None:  # fmt: skip
        """A gate whose qubits and angles are of the right number. Gates without an angle are
        values that many places share."""
        if condition is None and len(angles) == 1 and type(gate) is Primitive:
            (angle,) = angles
            made = angle if isinstance(angle, Parameter) else Parameter._number(angle)
            self.operations.append(Gate._trusted(gate.own_name, qubits, (made,)))
            self._check_room()
        elif angles or condition is not None:
            self.gates(expanded(gate, qubits, angles), where, condition)
        elif (known := self._known.get((gate, qubits))) is not None:
            self.operations += known
            self._check_room()
        else:
            first = len(self.operations)
            self.gates(expanded(gate, qubits, ()), where)
            self._known[gate, qubits] = tuple(self.operations[first:])

    def gates(
        self, plain: Iterable[Plain], where: str = "", condition: Condition | None = None
    ) -> None:
        for name, qubits, params in plain:
            if name == "barrier":
                self.operations.append(Barrier(qubits, where=where))
            elif condition is None:
                self.operations.append(Gate._trusted(name, qubits, params))
            else:
                self.add(Gate._trusted(name, qubits, params), where, condition)
        self._check_room()

    def extend(self, operations: Iterable[Operation]) -> None:
        """Operations that were read before, without a condition."""
        self.operations.extend(operations)
        self._check_room()

    def add(
        self, operation: Gate | Measure | Reset | Barrier, where: str, condition: Condition | None
    ) -> None:
        self._check_room()
        if condition is None or isinstance(operation, Barrier):
            self.operations.append(operation)
        elif condition[1] >> len(condition[0]) == 0:
            self.operations.append(Conditional(operation, *condition, where=where))

    def _check_room(self) -> None:
        if len(self.operations) > self._most:
            limits.check_operations(len(self.operations))


@contextmanager
def without_collection() -> Iterator[None]:
    """No collection of garbage in the block. All that readers make of a circuit is kept, and
    looking through 10^5 objects again and again takes a fifth of their time."""
    was_on = gc.isenabled()
    gc.disable()
    try:
        yield
    finally:
        if was_on:
            gc.enable()


@contextmanager
def located(where: str) -> Iterator[None]:
    """Adds the place to errors of a gate or an angle in the block."""
    try:
        yield
    except PLACED as error:
        raise at(where, error) from None


def at(where: str, error: errors.Error) -> errors.Error:
    """The error with the place in its text."""
    text = str(error)
    return type(error)(text if text.startswith(where) else f"{where}: {text}")


def wanted(value: Any, package: str, kind: str) -> None:
    """Refuses objects that are not of the class of another package, or of one derived from it."""
    names = [base.__name__ for base in type(value).__mro__]
    if not (_validate.comes_from(value, package) and kind in names):
        raise errors.DtypeError(
            f"circuit: got {_validate.shown(value)}, wanted a {kind} of {package}"
        )
