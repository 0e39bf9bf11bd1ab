"""What comes of Pauli rotations: circuits, and the Clifford operators that they leave."""

from __future__ import annotations

from collections.abc import Iterable, Mapping
from dataclasses import dataclass, field
from functools import cached_property
from typing import Any

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _core, _pauli_check, _rotations, errors
from zeltbraidwerk._operations import circuit_of
from zeltbraidwerk._results import HoldsCircuit
from zeltbraidwerk._search import Point
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.clifford import CliffordTableau
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Parameter


@dataclass(frozen=True, repr=False)
class PauliSynthesis(HoldsCircuit):
    """A circuit for Pauli rotations, and how it came about.

    The circuit is the rotations followed by ``clifford``, which is the identity where the tail was
    closed, but for qubits that stand on other wires, ``permutation[k]`` for qubit k. On a larger
    device wire k is its qubit ``placement[k]``; elsewhere the two are the same. ``trace`` holds the
    moments of the search at which its best became better.
    """

    circuit: Circuit
    rotations: tuple[tuple[str, Parameter], ...]
    global_angle: Parameter
    permutation: tuple[int, ...]
    method: str
    order: str
    tail: str
    seed: int | None
    runs: int = field(compare=False)
    seconds: float = field(compare=False)
    placement: tuple[int, ...]
    device: Device | None
    _rotates: npt.NDArray[np.bool_] = field(compare=False)  # which gates are rotations
    trace: tuple[Point, ...] = field(compare=False, default=())

    @cached_property
    def clifford(self) -> CliffordTableau:
        """The operator of the Clifford gates of the circuit."""
        pairs = zip(self.circuit, self._rotates, strict=True)
        return CliffordTableau(self.n).apply([gate for gate, rotates in pairs if not rotates])

    def verify(self) -> bool:
        """Follows the rotations back through the circuit, gate by gate, with signs and apart from
        the library: each comes up once, with ``order="commuting"`` none before another that it does
        not commute with; what is left is what the result says; and gates are on edges."""
        found, pulled = _pauli_check.unfolded(self.circuit, [not r for r in self._rotates])
        wanted = [(self._placed(letters), angle) for letters, angle in self.rotations]
        if not _pauli_check.same_rotations(found, wanted, self.order == "commuting"):
            return False
        on_edges = self.device is None or self.device.fits(self.circuit)
        return on_edges and (
            self._is_closed(pulled) if self.tail == "close" else self._fits(pulled)
        )

    def _is_closed(self, pulled: _pauli_check.PulledBack) -> bool:
        places = list(range(self.n))
        for k, wire in enumerate(self.permutation):
            places[self.placement[k]] = self.placement[wire]
        identity = _pauli_check.PulledBack(self.n)
        return all(
            pulled.letter(letter, wire) == identity.letter(letter, q)
            for q, wire in enumerate(places)
            for letter in "XZ"
        )

    def _fits(self, pulled: _pauli_check.PulledBack) -> bool:
        xs, zs = self.clifford.images()
        return all(
            pulled.image(image[1:]) == (image[0] == "-", "I" * q + letter + "I" * (self.n - q - 1))
            for letter, images in (("X", xs), ("Z", zs))
            for q, image in enumerate(images)
        )

    def absorb(self, observables: Any) -> Any:
        """What to measure behind the circuit in place of observables behind the rotations.

        A string, a list of strings, or a mapping from strings to coefficients; the same form comes
        back, as signed strings, or with the signs in the coefficients. An observable has the same
        expectation value behind the rotations as its image has behind the circuit.

        >>> import zeltbraidwerk as zb
        >>> result = zb.pauli.synthesize({"XX": 0.5}, method="greedy", tail="return")
        >>> result.circuit
        Circuit(2 qubits, 2 gates, 1 two-qubit, depth 2)
        >>> result.absorb({"ZI": 1.0, "YY": 0.5})
        {'ZZ': 1.0, 'ZX': -0.5}
        """
        if isinstance(observables, Mapping):
            total: dict[str, Any] = {}
            for pauli, coefficient in observables.items():
                image = self._image(pauli)
                value = -coefficient if image[0] == "-" else coefficient
                total[image[1:]] = total.get(image[1:], 0) + value
            return total
        if isinstance(observables, (str, bytes)) or not isinstance(observables, Iterable):
            return self._image(observables)
        return [self._image(pauli) for pauli in observables]

    def readout(self, observables: Iterable[Any]) -> Readout:
        """A final basis change that measures observables, which commute, behind the rotations.

        >>> import zeltbraidwerk as zb
        >>> result = zb.pauli.synthesize({"XX": 0.5}, method="greedy", tail="return")
        >>> result.readout(["ZZ", "XX"]).qubits
        ((0,), (1,))
        """
        listed = [self._image(pauli) for pauli in observables]
        letters = _rotations.codes([image[1:] for image in listed], self.n)
        if (clash := _core._first_clash(letters)) is not None:
            raise errors.PauliError(
                f"observables: number {clash[0]} and {clash[1]} do not commute, "
                "wanted observables that do"
            )
        operations, images, negative = _core._codiagonalised(letters, 0, None, 0)
        return Readout(
            circuit=circuit_of(self.n, operations),
            qubits=tuple(tuple(map(int, np.flatnonzero(row))) for row in images),
            signs=tuple(
                -1 if turned != (image[0] == "-") else 1
                for turned, image in zip(negative, listed, strict=True)
            ),
        )

    def _placed(self, letters: str) -> str:
        placed = ["I"] * self.n
        for q, letter in enumerate(letters):
            placed[self.placement[q]] = letter
        return "".join(placed)

    def _image(self, pauli: Any) -> str:
        minus, letters = _rotations.signed(pauli, len(self.placement), "observables")
        return self.clifford.conjugate("+-"[minus] + self._placed(letters))

    def __repr__(self) -> str:
        end = "tail returned" if self.tail == "return" else "tail closed"
        if self.permutation != tuple(range(len(self.permutation))):
            end += ", wires permuted"
        return (
            f"PauliSynthesis({self.method}: {len(self.placement)} qubits, "
            f"{len(self.rotations)} rotations, {self.count} two-qubit gates, depth {self.depth}, "
            f"{end}, {self.seconds:.2g} s)"
        )


@dataclass(frozen=True)
class Readout:
    """A basis change to append before all qubits are measured. The value of observable k is then
    ``signs[k]``, turned over for each of ``qubits[k]`` that comes out as 1."""

    circuit: Circuit
    qubits: tuple[tuple[int, ...], ...]
    signs: tuple[int, ...]

    def values(self, bits: npt.ArrayLike) -> npt.NDArray[np.int64]:
        """1 or -1 by shot and observable, of measured bits by shot and qubit."""
        shots = np.asarray(bits, dtype=np.int64)
        if shots.ndim != 2 or shots.shape[1] != self.circuit.n:
            raise errors.ShapeError(
                f"bits: got shape {shots.shape}, wanted (shots, {self.circuit.n})"
            )
        columns = [
            sign * (1 - 2 * (shots[:, list(qubits)].sum(axis=1) % 2))
            for sign, qubits in zip(self.signs, self.qubits, strict=True)
        ]
        return np.array(columns, dtype=np.int64).reshape(len(columns), len(shots)).T


@dataclass(frozen=True, repr=False)
class CoDiagonalization:
    """A Clifford circuit that makes strings diagonal: ``images[k]`` is string k behind it. On a
    larger device letter k stands on its qubit ``placement[k]``."""

    circuit: Circuit
    strings: list[str]
    images: list[str]
    placement: tuple[int, ...]
    device: Device | None

    def verify(self) -> bool:
        """Follows the images back through the circuit, gate by gate and apart from the library."""
        pulled = _pauli_check.PulledBack(self.circuit.n)
        for gate in self.circuit:
            pulled.append(gate)
        return (self.device is None or self.device.fits(self.circuit)) and all(
            not set(image[1:]) - set("IZ")
            and pulled.image(self._placed(image[1:]))
            == (string[0] != image[0], self._placed(string[1:]))
            for string, image in zip(self.strings, self.images, strict=True)
        )

    def _placed(self, letters: str) -> str:
        placed = ["I"] * self.circuit.n
        for q, letter in enumerate(letters):
            placed[self.placement[q]] = letter
        return "".join(placed)

    def __repr__(self) -> str:
        return (
            f"CoDiagonalization({len(self.strings)} strings, {self.circuit.two_qubit_count} "
            f"two-qubit gates, depth {self.circuit.two_qubit_depth})"
        )
