"""The normal form of a circuit, computed gate by gate and without the library."""

from __future__ import annotations

import math
from collections.abc import Sequence

from zeltbraidwerk._pauli_check import PulledBack, unfolded
from zeltbraidwerk._rotations import commute
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import ROTATIONS, Gate, Parameter

Rotation = tuple[str, Parameter]
_TOLERANCE = 1e-5


def is_clifford(gate: Gate) -> bool:
    return gate.name not in ROTATIONS or is_clifford_angle(gate.params[0])


def is_clifford_angle(angle: Parameter) -> bool:
    """Angles are not reduced: 3 pi/2 stays a rotation."""
    if angle.is_symbolic:
        return False
    value = abs(float(angle))
    return any(abs(value - turns * math.pi / 2) < _TOLERANCE for turns in (0, 1, 2))


def rounded(circuit: Circuit) -> Circuit:
    """With the angles of Clifford gates exact, as routing takes them: those of gates, then of sums
    of rotations that merge, where the first gate of a sum makes up for the difference."""
    gates = [gate if gate.name not in ROTATIONS else _turned(gate, _exact(gate.params[0]))
             for gate in circuit.gates]  # fmt: skip
    clifford = [is_clifford(gate) for gate in gates]
    rotations, _ = unfolded(Circuit._trusted(circuit.n, tuple(gates)), clifford)
    places = [place for place, is_fixed in enumerate(clifford) if not is_fixed]
    for (_, angle), first in zip(*_merged(rotations), strict=True):
        gate, rotation = gates[places[first]], rotations[first][1]
        change = _exact(angle) - angle
        gates[places[first]] = _turned(
            gate, gate.params[0] + (change if rotation == gate.params[0] else -change)
        )
    return Circuit._trusted(circuit.n, tuple(gates))


def _turned(gate: Gate, angle: Parameter) -> Gate:
    return Gate(gate.name, gate.qubits, angle)


def _exact(angle: Parameter) -> Parameter:
    """The multiple of a quarter turn that a Clifford angle stands for; others as they are."""
    if not is_clifford_angle(angle):
        return angle
    return Parameter(round(float(angle) / (math.pi / 2)) * math.pi / 2)


def normal_form(circuit: Circuit, merge: bool = True) -> tuple[list[list[Rotation]], PulledBack]:
    """Blocks of rotations that commute pairwise, and the Clifford operator after them."""
    rotations, clifford = unfolded(circuit, [is_clifford(gate) for gate in circuit])
    if merge:
        rotations, folded = _folded(_merged(rotations)[0], circuit.n)
        clifford = folded.then(clifford)
    return _blocks(rotations), clifford


def _merged(rotations: Sequence[Rotation]) -> tuple[list[Rotation], list[int]]:
    """Each is added to the nearest earlier one of the same string that it can be moved to; and of
    which rotation every sum has the place."""
    merged: list[Rotation] = []
    first: list[int] = []
    there: set[str] = set()
    for number, (letters, angle) in enumerate(rotations):
        place = len(merged) - 1 if letters in there else -1
        while place >= 0 and merged[place][0] != letters:
            place = place - 1 if commute(merged[place][0], letters) else -1
        if place >= 0:
            merged[place] = (letters, merged[place][1] + angle)
        else:
            merged.append((letters, angle))
            first.append(number)
            there.add(letters)
    return merged, first


def _folded(rotations: Sequence[Rotation], n: int) -> tuple[list[Rotation], PulledBack]:
    """Rotations by Clifford angles become part of the Clifford operator, which conjugates
    others."""
    clifford = PulledBack(n)
    kept: list[Rotation] = []
    for letters, angle in rotations:
        minus, image = clifford.image(letters)
        if is_clifford_angle(angle):
            clifford.rotate(minus, image, round(float(angle) / (math.pi / 2)))
        else:
            kept.append((image, -angle if minus else angle))
    return kept, clifford


def _blocks(rotations: Sequence[Rotation]) -> list[list[Rotation]]:
    """Angles of equal strings of a block are added."""
    blocks: list[list[Rotation]] = [[]]
    for letters, angle in rotations:
        if not all(commute(letters, other) for other, _ in blocks[-1]):
            blocks.append([])
        block = blocks[-1]
        same = next((k for k, (other, _) in enumerate(block) if other == letters), None)
        if same is None:
            block.append((letters, angle))
        else:
            block[same] = (letters, block[same][1] + angle)
    return blocks


def commutes_within(blocks: Sequence[Sequence[Rotation]]) -> bool:
    return all(
        commute(a, b) for block in blocks for k, (a, _) in enumerate(block) for b, _ in block[:k]
    )
