"""Whether a circuit is another one with blocks of gates replaced, by the matrices of the blocks."""

from __future__ import annotations

import cmath
import math
from collections.abc import Iterable, Sequence
from dataclasses import dataclass
from functools import lru_cache
from itertools import pairwise
from typing import Any, NamedTuple

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import errors
from zeltbraidwerk._pauli_check import rotated_letter
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import ROTATIONS, Gate
from zeltbraidwerk.instructions import gates_alone, placed

TOLERANCE = 1e-9  # of each entry of a matrix

Matrix = npt.NDArray[np.complex128]


class Step(NamedTuple):
    """The one to three wires of a block, the numbers of the gates that go, and the gates that come.
    With ``moves``, the last of three gates comes to stand right after the two others, which are on
    its first and on its second wire."""

    wires: Sequence[int]
    before: Sequence[int]
    after: Sequence[Gate]
    moves: bool = False

    def placed(self, qubits: Sequence[int]) -> Step:
        """The same on other qubits: what is on wire w goes to ``qubits[w]``."""
        return self._replace(
            wires=[qubits[w] for w in self.wires],
            after=[placed(gate, qubits) for gate in self.after],
        )


@dataclass(frozen=True)
class BlockProof:
    """True or False as a condition; ``phase`` is what ``after`` has relative to ``before``, in
    radians from -pi to pi."""

    is_proven: bool
    phase: float = 0.0

    def __bool__(self) -> bool:
        return self.is_proven


def same_blocks(
    before: Circuit, after: Circuit, log: Iterable[Step | tuple[Any, ...]]
) -> BlockProof:
    """Whether ``after`` is what the steps of ``log`` make of ``before``, and each of them keeps the
    operator up to a global phase.

    A step replaces the gates of a block on one to three wires. Its first entry lists the wires. The
    second lists the gates that go by their numbers, in an order in which they may act: the gates of
    ``before`` have the numbers 0, 1, ..., barriers not counted, and gates that come are numbered on
    in the order of the log. The third lists the gates that come.

    Proven for each step: on each wire the gates that go are neighbours, no other gate has to act
    between them, and the matrices of both lists agree within 1e-9.
    At the end, the wires hold the gates of ``after`` in the same order. All else gives False, so
    does a block with symbols. RZ(a) and PH(a) have the same matrix, diag(exp(-ia/2), exp(ia/2)).

    Cost: time linear in the gates of the circuits and of the log.

    >>> gates = [Gate.h(0), Gate.cnot(0, 1), Gate.rz(0, 0.5), Gate.cnot(0, 1)]
    >>> log = [((0, 1), [1, 2, 3], [Gate.rz(0, 0.5)])]
    >>> bool(same_blocks(Circuit(2, gates), Circuit(2, [Gate.h(0), Gate.rz(0, 0.5)]), log))
    True
    """
    if before.n != after.n:
        return BlockProof(False)
    wires, phase = _Wires(before.n, gates_alone(before, "before")), 0.0
    for step in log:
        wanted = Step(*step)
        turned: float | None = 0.0
        if not wanted.moves:
            turned = wires.replace(wanted.wires, wanted.before, wanted.after)
        elif not wires.move(wanted.before):
            turned = None
        if turned is None:
            return BlockProof(False)
        phase += turned
    if not wires.hold(gates_alone(after, "after")):
        return BlockProof(False)
    return BlockProof(True, math.remainder(phase, 2 * math.pi))


class _Wires:
    """A circuit as the gates on each wire in order, linked both ways."""

    def __init__(self, n: int, gates: Sequence[Gate]) -> None:
        self._n = n
        self._gates: list[Gate | None] = []  # by number; None where it is gone
        # By number and wire, the numbers of the neighbours on the wire; -1 for an end of the wire,
        # whose neighbours are the gates at the ends.
        self._next: dict[tuple[int, int], int] = {(-1, w): -1 for w in range(n)}
        self._previous = dict(self._next)
        for gate in gates:
            self._gates.append(gate)
            for w in gate.qubits:
                self._link(self._previous[-1, w], len(self._gates) - 1, w)
                self._link(len(self._gates) - 1, -1, w)

    def _link(self, one: int, other: int, wire: int) -> None:
        self._next[one, wire] = other
        self._previous[other, wire] = one

    def replace(
        self, wires: Sequence[int], numbers: Sequence[int], gates: Sequence[Gate]
    ) -> float | None:
        """The phase of the new gates relative to the old ones, or None, unless proven."""
        old = self._taken(wires, numbers)
        if old is None or not _on_wires(gates, wires) or not _may_act_as_one(old, gates, wires):
            return None
        phase = _phase(old, gates, wires)
        if phase is None:
            return None
        first = len(self._gates)
        self._gates += gates
        for w in wires:
            going = [k for k, gate in zip(numbers, old, strict=True) if w in gate.qubits]
            coming = [first + k for k, gate in enumerate(gates) if w in gate.qubits]
            if going:
                ends = self._previous[going[0], w], self._next[going[-1], w]
                chain = [ends[0], *coming, ends[1]]
                for one, other in pairwise(chain):
                    self._link(one, other, w)
        for number in numbers:
            self._gates[number] = None
        return phase

    def move(self, numbers: Sequence[int]) -> bool:
        """Brings the last gate to stand after the two others, of one block, if it commutes with
        all that it passes."""
        if len(numbers) != 3 or not all(0 <= k < len(self._gates) for k in numbers):
            return False
        last = numbers[2]
        gate = self._gates[last]
        if gate is None or len(gate.qubits) != 2:
            return False
        joints = []
        for anchor, w in zip(numbers, gate.qubits, strict=False):
            passed = self._previous[last, w]
            while passed != anchor:
                other = None if passed < 0 else self._gates[passed]
                if other is None or not _act_alike(gate, other, w):
                    return False
                passed = self._previous[passed, w]
            joints.append(self._joint(anchor, w))
        if joints[0] != joints[1] or joints[0] < 0:
            return False
        for anchor, w in zip(numbers, gate.qubits, strict=False):
            if self._previous[last, w] == anchor:
                continue
            self._link(self._previous[last, w], self._next[last, w], w)
            after = self._next[anchor, w]
            self._link(anchor, last, w)
            self._link(last, after, w)
        return True

    def _joint(self, number: int, wire: int) -> int:
        """The last gate on two wires up to this one on the wire."""
        while number >= 0 and len((self._gates[number] or _NO_GATE).qubits) == 1:
            number = self._previous[number, wire]
        return number

    def _taken(self, wires: Sequence[int], numbers: Sequence[int]) -> list[Gate] | None:
        """The gates with these numbers, if they are neighbours in this order on each wire."""
        if len(set(wires)) != len(wires) or not 1 <= len(wires) <= 3:
            return None
        if not all(0 <= wire < self._n for wire in wires):
            return None
        if not all(0 <= number < len(self._gates) for number in numbers):
            return None
        there = [gate for number in numbers if (gate := self._gates[number]) is not None]
        if len(there) < len(numbers) or not _on_wires(there, wires):
            return None
        for w in wires:
            listed = [k for k, gate in zip(numbers, there, strict=True) if w in gate.qubits]
            if any(self._next[a, w] != b for a, b in pairwise(listed)):
                return None
        return there

    def hold(self, gates: Sequence[Gate]) -> bool:
        """Whether these gates stand on the wires in this order."""
        places = [self._next[-1, w] for w in range(self._n)]
        for gate in gates:
            number = places[gate.qubits[0]]
            if number < 0 or self._gates[number] != gate:
                return False
            for w in gate.qubits:
                if places[w] != number:
                    return False
                places[w] = self._next[number, w]
        return all(place < 0 for place in places)


def _act_alike(one: Gate, other: Gate, wire: int) -> bool:
    """Whether both act on the wire by the same Pauli operator, so that they commute there."""
    letters = [_letter_on(gate, wire) for gate in (one, other)]
    return letters[0] != "" and letters[0] == letters[1]


def _letter_on(gate: Gate, wire: int) -> str:
    if gate.name == "CNOT":
        return "Z" if gate.qubits[0] == wire else "X"
    if gate.name in ROTATIONS:
        return rotated_letter(gate)
    return {"CZ": "Z", "CSIGN": "Z", "S": "Z", "D-S": "Z"}.get(
        gate.name, gate.name if gate.name in ("X", "Y", "Z") else ""
    )


def _on_wires(gates: Sequence[Gate], wires: Sequence[int]) -> bool:
    return all(qubit in wires for gate in gates for qubit in gate.qubits)


def _may_act_as_one(old: Sequence[Gate], new: Sequence[Gate], wires: Sequence[int]) -> bool:
    """Whether no other gate has to act after one of the old gates and before another, so that the
    new ones may take their place.

    Other gates could lead from the end of the block on one wire to its beginning on another, but
    not where the last old gate on each wire comes after the first one on each. Without gates on two
    wires among the old and the new ones, there is one block per wire.
    """
    first_before: dict[int, set[int]] = {w: set() for w in wires}  # of the last gate on each wire
    for gate in old:
        union = set(gate.qubits).union(*(first_before[q] for q in gate.qubits))
        first_before |= dict.fromkeys(gate.qubits, union)
    if all(len(before) == len(wires) for before in first_before.values()):
        return True
    touched = {gate.qubits[0] for gate in old}
    return all(len(gate.qubits) == 1 and gate.qubits[0] in touched for gate in new)


_NO_GATE = Gate("I", 0)


# --- matrices -----------------------------------------------------------------------------------


def _phase(old: Sequence[Gate], new: Sequence[Gate], wires: Sequence[int]) -> float | None:
    """Of the new gates relative to the old ones, or None where they are another operator."""
    if any(gate.params and gate.params[0].is_symbolic for gate in (*old, *new)):
        return None
    one, other = _product(old, wires), _product(new, wires)
    turn = cmath.phase(np.vdot(one, other))
    error = np.abs(other - cmath.exp(1j * turn) * one).max()
    return turn if error <= TOLERANCE else None


def _product(gates: Sequence[Gate], wires: Sequence[int]) -> Matrix:
    product: Matrix = np.eye(2 ** len(wires), dtype=complex)
    for gate in gates:
        name = f"R{rotated_letter(gate)}" if gate.name in ROTATIONS else gate.name
        places = tuple([list(wires).index(qubit) for qubit in gate.qubits])
        angle = float(gate.params[0]) if gate.params else 0.0
        product = _matrix(name, angle, places, len(wires)) @ product
    return product


_LETTERS = {
    "I": np.eye(2, dtype=complex),
    "X": np.array([[0, 1], [1, 0]], dtype=complex),
    "Y": np.array([[0, -1j], [1j, 0]]),
    "Z": np.diag([1, -1]).astype(complex),
}
_ONE = _LETTERS | {
    "H": (_LETTERS["X"] + _LETTERS["Z"]) / math.sqrt(2),
    "S": np.diag([1, 1j]),
    "D-S": np.diag([1, -1j]),
}


@lru_cache(maxsize=4096)
def _matrix(name: str, angle: float, places: tuple[int, ...], size: int) -> Matrix:
    """On the wires of a block, the first one the leading factor."""
    if name in ("CNOT", "CZ", "CSIGN"):
        a, b = (_on({place: _LETTERS["Z"]}, size) for place in places)
        if name == "CNOT":
            b = _on({places[1]: _LETTERS["X"]}, size)
        return (np.eye(2**size) + a + b - a @ b) / 2
    if name[0] == "R" or name == "XX":
        letter = _LETTERS[name[1:]]
        axis = _on(dict.fromkeys(places, letter), size)
        return math.cos(angle / 2) * np.eye(2**size) - 1j * math.sin(angle / 2) * axis
    if name not in _ONE:
        raise errors.GateError(f"got the gate {name}, wanted one with a known matrix")
    return _on({places[0]: _ONE[name]}, size)


def _on(factors: dict[int, Matrix], size: int) -> Matrix:
    matrix = np.eye(1, dtype=complex)
    for place in range(size):
        matrix = np.kron(matrix, factors.get(place, _LETTERS["I"]))
    return matrix
