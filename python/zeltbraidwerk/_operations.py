"""Circuits from the arrays of the kernels: one row per gate, with its name, its qubits, and its
angle as a rotation and a sign, or as -1 and a number of quarter turns."""

from __future__ import annotations

import math
from collections.abc import Iterable, Sequence
from typing import TypeAlias

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core
from zeltbraidwerk._parameter import NO_SOURCES, Sources
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import ROTATIONS, Gate, Parameter

Rows: TypeAlias = npt.NDArray[np.int32]
_NAMES = tuple(_core._gate_names())


def circuit_of(
    n: int,
    operations: Rows | _core._HeldCliffords,
    angles: Sequence[Parameter] = (),
    qubits: Sequence[int] | None = None,
) -> Circuit:
    """Wire k of the rows is qubit ``qubits[k]`` of ``n``. Gates are written when they are first
    asked for: a call is over, or ends after Ctrl-C, before that; its text needs their sizes."""
    place = range(n) if qubits is None else qubits
    if isinstance(operations, _core._HeldCliffords):
        held = operations
        return Circuit._later(n, lambda: _gates(held.rows(), angles, place), held.sizes)

    def sizes() -> tuple[int, npt.NDArray[np.int32]]:
        pairs = operations[operations[:, 2] >= 0, 1:3]
        return len(operations) - len(pairs), pairs

    return Circuit._later(n, lambda: _gates(operations, angles, place), sizes)


def _gates(operations: Rows, angles: Sequence[Parameter], place: Sequence[int]) -> tuple[Gate, ...]:
    known: dict[tuple[int, ...], Gate] = {}
    gates = []
    for row in map(tuple, operations.tolist()):
        gate = known.get(row)
        if gate is None:
            gate = known[row] = _gate(row, angles, place)
        gates.append(gate)
    return tuple(gates)


def of_core(n: int, gates: Iterable[_core.Gate], sources: Sources = NO_SOURCES) -> Circuit:
    """From gates of the compiled part, which are known to be valid. Their symbols stand for those
    of other packages in ``sources``. Gates are written when they are first asked for."""
    return Circuit._later(n, lambda: tuple([Gate._of_core(gate, sources) for gate in gates]))


Held: TypeAlias = _core._HeldGates | _core._HeldSteps


def of_held(n: int, held: Held, sources: Sources = NO_SOURCES) -> Circuit:
    """The same of gates that the compiled part holds."""
    sizes = held.sizes if held.width() <= 2 else None
    return Circuit._later(n, lambda: _written(held, sources), sizes)


def _written(held: Held, sources: Sources) -> tuple[Gate, ...]:
    parts, places = held.written()
    gates = [
        Gate._trusted(name, qubits, tuple([
            Parameter._number(angle) if isinstance(angle, float)
            else Parameter._of_core(angle, sources)
            for angle in angles
        ]))
        for name, qubits, angles in parts
    ]  # fmt: skip
    return tuple([gates[place] for place in places])


def _gate(row: tuple[int, ...], angles: Sequence[Parameter], place: Sequence[int]) -> Gate:
    name, a, b, rotation, turns = row
    kind = _NAMES[name]
    wires = (place[a],) if b < 0 else (place[a], place[b])
    if kind not in ROTATIONS:
        return Gate._trusted(kind, wires, ())
    if rotation < 0:
        return Gate._trusted(kind, wires, (Parameter(turns * math.pi / 2),))
    return Gate._trusted(kind, wires, (angles[rotation] if turns > 0 else -angles[rotation],))
