"""What the readers of all formats share: a list of operations with a limit on its length."""

from __future__ import annotations

from collections.abc import Iterable, Iterator, Sequence
from contextlib import contextmanager
from typing import Any

from zeltbraidwerk import _validate, errors
from zeltbraidwerk._definitions import (
    MOST_OPERATIONS,
    Definition,
    Plain,
    Primitive,
    expanded,
)
from zeltbraidwerk.gates import Gate, Parameter
from zeltbraidwerk.instructions import Barrier, Conditional, Measure, Operation, Register, Reset

Known = Primitive | Definition
Condition = tuple[tuple[int, ...], int]  # bits and the value that they must have
Read = tuple[int, list[Operation], list[Register]]  # number of qubits, ...


class Reading:
    """Operations in order. What is added under a condition that cannot hold is left out."""

    def __init__(self) -> None:
        self.operations: list[Operation] = []
        self._known: dict[tuple[Known, tuple[int, ...]], tuple[Operation, ...]] = {}

    def gate(
        self, gate: Known, qubits: tuple[int, ...], angles: Sequence[float | Parameter],
        where: str, condition: Condition | None = None,
    ) -> None:  # fmt: skip
        """A gate whose qubits and angles are of the right number. Gates without an angle are
        values that many places share."""
        if angles or condition is not None:
            self.gates(expanded(gate, qubits, angles), where, condition)
            return
        key = gate, qubits
        made = self._known.get(key)
        if made is None:
            first = len(self.operations)
            self.gates(expanded(gate, qubits, ()), where)
            self._known[key] = tuple(self.operations[first:])
        else:
            self.operations += made
            self._check_room()

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
        if len(self.operations) > MOST_OPERATIONS:
            raise errors.GateError(f"got more than {MOST_OPERATIONS} operations")


@contextmanager
def located(where: str) -> Iterator[None]:
    """Adds the place to errors of a gate or an angle in the block."""
    try:
        yield
    except (errors.AngleError, errors.GateError) as error:
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
