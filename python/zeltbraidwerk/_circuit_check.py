"""Whether two circuits are the same operator, gate by gate and without the library.

A rotation by an angle a about a Pauli string P is exp(-i a P / 2). A circuit of Clifford gates and
rotations is a list of rotations at its start, followed by a Clifford operator. Here this list has a
unique form, whatever was folded in the circuit before:

- Strings have no sign, and angles are reduced to 0 <= a < pi/2. Signs and quarter turns go into the
  Clifford operator.
- No two equal strings could be moved next to each other past strings that commute with them, so
  that their angles could be added.

Both hold after each gate, so that one pass over the gates is enough. A new rotation is added to the
last equal string if all strings after that one commute with it. What is taken out of its angle, or
the whole of it, then commutes with all that remains after it: it acts on none of the rotations so
far, and the Clifford operator takes it in as a rotation of the qubit that the gate is on. Two lists
that cannot be merged further are the same product, by moves of neighbours that commute and sums of
equal neighbours, only if they have the same strings and angles and the same order of each pair that
does not commute (V. Diekert, G. Rozenberg, "The Book of Traces", 1995).
"""

from __future__ import annotations

import math
from collections.abc import Sequence
from itertools import combinations

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _validate, errors
from zeltbraidwerk._pauli_check import PulledBack, is_minus, rotated_letter
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import ROTATIONS, Gate, Parameter
from zeltbraidwerk.instructions import gates_alone

TOLERANCE = 1e-9  # radians; an angle as close as this to a quarter turn counts as one
_QUARTER = math.pi / 2
_WORD = 64  # places in a word
_FIRST_LOOK = 16  # words that are looked at first, which mostly decide

# Names with their factors, in order of names, and a constant.
Angle = tuple[tuple[tuple[str, float], ...], float]


def same_operator(
    before: Circuit, after: Circuit, permutation: Sequence[int] | None = None
) -> bool:
    """Whether both circuits are the same operator up to a global phase, with output q of ``before``
    on wire ``permutation[q]`` of ``after``.

    True is a proof, up to 1e-9 radians per angle and coefficient of a symbol. False means that
    these steps prove nothing: the circuits may still be equal by an identity of special angles,
    such as those of three rotations of one qubit about other axes.

    Cost: time linear in the gates; and for each rotation whose string was there before, a look at
    the strings since then, 64 at a time, up to one that does not commute: a second for 10^5 gates.
    Raises a ShapeError for unequal numbers of qubits and a NotUnitaryError for measurements and
    resets.

    >>> one = Circuit(2, [Gate.cnot(0, 1), Gate.rz(1, 0.75), Gate.cnot(0, 1)])
    >>> other = Circuit(2, [Gate.cnot(1, 0), Gate.rz(0, 0.75), Gate.cnot(1, 0)])
    >>> same_operator(one, other), same_operator(one, one + Circuit(2, [Gate.rx(0, 1e-6)]))
    (True, False)
    """
    n = before.n
    if after.n != n:
        raise errors.ShapeError(f"after: got {after.n} qubits, wanted {n}, as before")
    wires = list(range(n)) if permutation is None else _wires(permutation, n)
    one, other = _NormalForm(before, "before"), _NormalForm(after, "after")
    return all(
        one.clifford.operator(letter, [q]) == other.clifford.operator(letter, [wire])
        for q, wire in enumerate(wires)
        for letter in "XZ"
    ) and one.same_rotations(other)


def _wires(permutation: Sequence[int], n: int) -> list[int]:
    wires = _validate.qubits(permutation, "permutation")
    _validate.qubits_below(wires, n, "permutation")
    if len(wires) != n:
        raise errors.ShapeError(f"permutation: got {len(wires)} wires, wanted {n}")
    return list(wires)


# --- angles -------------------------------------------------------------------------------------


def angle_of(parameter: Parameter) -> Angle:
    return _terms(parameter.coefficients), parameter.constant


def _terms(factors: dict[str, float]) -> tuple[tuple[str, float], ...]:
    return tuple(
        sorted((name, factor) for name, factor in factors.items() if abs(factor) > TOLERANCE)
    )


def plus(a: Angle, b: Angle, sign: int) -> Angle:
    """a, plus or minus b."""
    factors = dict(a[0])
    for name, factor in b[0]:
        factors[name] = factors.get(name, 0) + sign * factor
    return _terms(factors), a[1] + sign * b[1]


def _reduced(angle: Angle) -> tuple[int, Angle]:
    """Quarter turns, and what remains: 0, or at least the tolerance away from 0 and from the next
    quarter turn."""
    quarters = math.floor((angle[1] + TOLERANCE) / _QUARTER)
    rest = angle[1] - quarters * _QUARTER
    return quarters, (angle[0], rest if rest > TOLERANCE else 0.0)


# --- strings ------------------------------------------------------------------------------------


class _Strings:
    """Pauli strings at places 0, 1, ..., which many are compared with one at once.

    A string on n qubits is an int: bit q for X on qubit q, bit n + q for Z, both for Y. The strings
    are stored as one row for each of these bits, 64 places to a word.
    """

    def __init__(self, n: int) -> None:
        self._n = n
        self._rows = np.zeros((2 * n, 1), dtype=np.uint64)
        self.count = 0

    def append(self, string: int) -> None:
        if self.count == _WORD * self._rows.shape[1]:
            self._rows = np.concatenate((self._rows, np.zeros_like(self._rows)), axis=1)
        self._flip(self.count, string)
        self.count += 1

    def remove(self, place: int, string: int) -> None:
        """Leaves the place empty: an identity, which commutes with every string."""
        self._flip(place, string)

    def _flip(self, place: int, string: int) -> None:
        word, bit = divmod(place, _WORD)
        self._rows[self._ones(string), word] ^= np.uint64(1 << bit)

    def clash(self, string: int, start: int, stop: int) -> bool:
        """Whether the string anticommutes with one of those at places start <= place < stop."""
        rows = self._ones(string >> self._n | (string & ((1 << self._n) - 1)) << self._n)
        first, last, size = start // _WORD, -(-stop // _WORD), _FIRST_LOOK
        while first < last:
            begin = max(first, last - size)
            found = np.bitwise_xor.reduce(self._rows[rows, begin:last], axis=0)
            if stop < _WORD * last:
                found[-1] &= np.uint64((1 << stop % _WORD) - 1)
            if begin == first:
                found[0] &= np.uint64(-(1 << start % _WORD) % (1 << _WORD))
            if found.any():
                return True
            last, size = begin, 4 * size
        return False

    def _ones(self, string: int) -> npt.NDArray[np.intp]:
        packed = np.frombuffer(string.to_bytes(self._n // 4 + 1, "little"), dtype=np.uint8)
        return np.flatnonzero(np.unpackbits(packed, bitorder="little"))


class _NormalForm:
    """The rotations of a circuit, and the Clifford operator after them."""

    def __init__(self, circuit: Circuit, name: str) -> None:
        self._n = circuit.n
        self.clifford = PulledBack(circuit.n)
        self._strings = _Strings(circuit.n)
        self._rotations: list[tuple[int, Angle] | None] = []  # by place, None where empty
        self._places: dict[int, list[int]] = {}  # of each string, in order
        for gate in gates_alone(circuit, name):
            self._append(gate)

    def _append(self, gate: Gate) -> None:
        if gate.name in ROTATIONS:
            self._rotate(rotated_letter(gate), gate.qubits, angle_of(gate.params[0]))
        elif gate.name == "XX":
            angle = angle_of(gate.params[0])
            for pair in combinations(gate.qubits, 2):
                self._rotate("X", pair, angle)
        else:
            self.clifford.append(gate)

    def _rotate(self, letter: str, qubits: Sequence[int], angle: Angle) -> None:
        operator = self.clifford.operator(letter, qubits)
        sign = -1 if is_minus(operator) else 1
        string = operator[1] | operator[2] << self._n
        place = self._place_to_merge(string)
        old = self._rotations[place] if place is not None else None
        quarters, rest = _reduced(plus(old[1] if old else ((), 0.0), angle, sign))
        self.clifford.turn(letter, qubits, sign * quarters)
        vanishes = rest == ((), 0.0)
        if place is None and not vanishes:
            self._places.setdefault(string, []).append(self._strings.count)
            self._strings.append(string)
            self._rotations.append((string, rest))
        elif place is not None:
            self._rotations[place] = None if vanishes else (string, rest)
            if vanishes:
                self._strings.remove(place, string)
                self._places[string].pop()

    def _place_to_merge(self, string: int) -> int | None:
        places = self._places.get(string)
        if not places or self._strings.clash(string, places[-1] + 1, self._strings.count):
            return None
        return places[-1]

    def same_rotations(self, other: _NormalForm) -> bool:
        """Whether both forms have the same rotations, those that do not commute in the same order.
        The other form is used up."""
        return self._same_angles(other) and self._same_order(other)

    def _same_angles(self, other: _NormalForm) -> bool:
        """Equal strings keep their order: some string between two of them commutes with neither."""
        for string in self._places.keys() | other._places.keys():
            ours, theirs = self._places.get(string, []), other._places.get(string, [])
            if len(ours) != len(theirs) or not all(
                _alike(self._rotations[a], other._rotations[b])
                for a, b in zip(ours, theirs, strict=True)
            ):
                return False
        return True

    def _same_order(self, other: _NormalForm) -> bool:
        """Takes the rotations out of the other form in the order of this one. Each one must commute
        with those that are still there before it."""
        waiting = {string: iter(places) for string, places in other._places.items()}
        first = 0
        for rotation in self._rotations:
            if rotation is None:
                continue
            string = rotation[0]
            place = next(waiting[string])
            while other._rotations[first] is None:
                first += 1
            if other._strings.clash(string, first, place):
                return False
            other._strings.remove(place, string)
            other._rotations[place] = None
        return True


def _alike(a: tuple[int, Angle] | None, b: tuple[int, Angle] | None) -> bool:
    """Of rotations about the same string."""
    if a is None or b is None:
        return a is b
    terms, constant = plus(a[1], b[1], -1)
    return not terms and abs(constant) <= TOLERANCE
