"""Pauli operators followed back through circuits, gate by gate and without the library."""

from __future__ import annotations

import math
from collections.abc import Iterator, Sequence
from itertools import combinations

import numpy as np

from zeltbraidwerk import errors
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import ROTATIONS, Gate, Parameter

# i^power X^x Z^z, bit q of x and z for qubit q.
Operator = tuple[int, int, int]
Pauli = tuple[bool, str]  # true for minus, letters
_STRIDE = 1024  # strings compared with all later ones together


def _times(a: Operator, b: Operator, power: int = 0) -> Operator:
    sign = 2 * (a[2] & b[1]).bit_count()
    return (a[0] + b[0] + sign + power) % 4, a[1] ^ b[1], a[2] ^ b[2]


def is_minus(operator: Operator) -> bool:
    """Of plus or minus a product of the letters X, Y and Z."""
    power, x, z = operator
    return (power - (x & z).bit_count()) % 4 == 2


def _packed(minus: bool, letters: str) -> Operator:
    x = sum(1 << q for q, letter in enumerate(letters) if letter in "XY")
    z = sum(1 << q for q, letter in enumerate(letters) if letter in "YZ")
    return ((x & z).bit_count() + 2 * minus) % 4, x, z


class PulledBack:
    """For X and Z on each qubit after a circuit U, the operator before it: U-dagger P U."""

    def __init__(self, n: int) -> None:
        self.n = n
        self._x: list[Operator] = [(0, 1 << q, 0) for q in range(n)]
        self._z: list[Operator] = [(0, 0, 1 << q) for q in range(n)]

    def image(self, letters: str) -> Pauli:
        product = (0, 0, 0)
        for q, letter in enumerate(letters):
            if letter in "XY":
                product = _times(product, self._x[q])
            if letter in "YZ":
                product = _times(product, self._z[q], letter == "Y")
        return self._named(product)

    def operator(self, letter: str, qubits: Sequence[int]) -> Operator:
        """The letter, X or Y or Z, on each of the qubits."""
        product = (0, 0, 0)
        for q in qubits:
            if letter != "Z":
                product = _times(product, self._x[q])
            if letter != "X":
                product = _times(product, self._z[q], letter == "Y")
        return product

    def letter(self, letter: str, q: int) -> Pauli:
        return self.image("I" * q + letter + "I" * (self.n - q - 1))

    def _named(self, operator: Operator) -> Pauli:
        _, x, z = operator
        letters = "".join("IXZY"[(x >> q & 1) + 2 * (z >> q & 1)] for q in range(self.n))
        return is_minus(operator), letters

    def append(self, gate: Gate) -> None:
        x, z = self._x, self._z
        a, b = gate.qubits[0], gate.qubits[-1]
        if gate.name == "CNOT":
            x[a], z[b] = _times(x[a], x[b]), _times(z[a], z[b])
        elif gate.name in ("CSIGN", "CZ"):
            x[a], x[b] = _times(x[a], z[b]), _times(x[b], z[a])
        elif gate.name == "H":
            x[a], z[a] = z[a], x[a]
        elif gate.name in ROTATIONS:
            self.turn(rotated_letter(gate), gate.qubits, _quarters(gate))
        elif gate.name in ("S", "D-S"):
            self.turn("Z", gate.qubits, 1 if gate.name == "S" else 3)
        elif gate.name == "XX":
            for pair in combinations(gate.qubits, 2):
                self.turn("X", pair, _quarters(gate))
        elif gate.name in ("X", "Y", "Z"):
            flip = (2, 0, 0)
            if gate.name != "X":
                x[a] = _times(flip, x[a])
            if gate.name != "Z":
                z[a] = _times(flip, z[a])
        elif gate.name != "I":
            raise errors.GateError(f"got {gate}, which no synthesis of rotations uses")

    def rotate(self, minus: bool, letters: str, quarters: int) -> None:
        """Appends a rotation by quarter turns, given by its axis before the circuit."""
        _, x, z = axis = _packed(minus, letters)
        for operators in (self._x, self._z):
            for q, operator in enumerate(operators):
                if ((operator[1] & z).bit_count() + (operator[2] & x).bit_count()) % 2:
                    for _ in range(quarters % 4):
                        operator = _times(operator, axis, 3)
                    operators[q] = operator

    def then(self, later: PulledBack) -> PulledBack:
        """This circuit followed by the other."""
        result = PulledBack(self.n)
        for mine, other in ((result._x, later._x), (result._z, later._z)):
            for q, operator in enumerate(other):
                minus, letters = later._named(operator)
                turned, image = self.image(letters)
                mine[q] = _packed(minus != turned, image)
        return result

    def turn(self, letter: str, qubits: Sequence[int], quarters: int) -> None:
        """Appends a rotation by quarter turns about a letter on one qubit, or X on two.

        X becomes -Y about Z, Z becomes Y about X, X becomes Z about Y.
        """
        x, z = self._x, self._z
        a, b = qubits[0], qubits[-1]
        for _ in range(quarters % 4):
            if a != b:
                axis = _times(x[a], x[b])
                z[a], z[b] = _times(z[a], axis, 3), _times(z[b], axis, 3)
            elif letter == "X":
                z[a] = _times(x[a], z[a], 1)
            elif letter == "Y":
                x[a], z[a] = z[a], _times((2, 0, 0), x[a])
            else:
                x[a] = _times(x[a], z[a], 3)


def rotated_letter(gate: Gate) -> str:
    """The axis of a rotation of one qubit."""
    return "Z" if gate.diag else gate.name[1]


def _quarters(gate: Gate) -> int:
    return round(float(gate.params[0]) / (math.pi / 2)) % 4


def unfolded(
    circuit: Circuit, fixed: Sequence[bool]
) -> tuple[list[tuple[str, Parameter]], PulledBack]:
    """The rotations with their axes before the circuit, and the Clifford operator of the fixed
    gates."""
    clifford = PulledBack(circuit.n)
    rotations = []
    for gate, is_fixed in zip(circuit, fixed, strict=True):
        if is_fixed:
            clifford.append(gate)
            continue
        minus, letters = clifford.letter(rotated_letter(gate), gate.qubits[0])
        rotations.append((letters, -gate.params[0] if minus else gate.params[0]))
    return rotations, clifford


def same_rotations(
    found: list[tuple[str, Parameter]], wanted: list[tuple[str, Parameter]], in_order: bool
) -> bool:
    """Whether each rotation is found once; with ``in_order``, whether those that do not commute
    have the wanted order."""
    places: dict[str, list[int]] = {}
    for place, (letters, _) in enumerate(found):
        places.setdefault(letters, []).append(place)
    if len(found) != len(wanted):
        return False
    order = []
    lists: dict[str, Iterator[int]] = {letters: iter(list_) for letters, list_ in places.items()}
    for letters, angle in wanted:
        place = next(lists.get(letters, iter(())), -1)
        if place < 0 or found[place][1] != angle:
            return False
        order.append(place)
    return not in_order or _keeps_order([letters for letters, _ in wanted], order)


def _keeps_order(strings: Sequence[str], order: Sequence[int]) -> bool:
    if not strings:
        return True
    letters = np.array([list(string) for string in strings])
    x = np.isin(letters, ("X", "Y")).astype(np.float32)
    z = np.isin(letters, ("Z", "Y")).astype(np.float32)
    places = np.array(order)
    for start in range(0, len(places), _STRIDE):
        some = slice(start, start + _STRIDE)
        clash = (x[some] @ z[start:].T + z[some] @ x[start:].T) % 2 > 0
        swapped = places[some, None] > places[None, start:]
        if np.any(np.triu(clash & swapped)):
            return False
    return True
