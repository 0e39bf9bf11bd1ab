"""What comes of Pauli rotations: circuits, and the Clifford operators that they leave."""

from __future__ import annotations

from dataclasses import dataclass, field
from functools import cached_property

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _pauli_check
from zeltbraidwerk._observables import MovesObservables
from zeltbraidwerk._search import Point
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.clifford import CliffordTableau
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Parameter


@dataclass(frozen=True, repr=False)
class PauliSynthesis(MovesObservables):
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
        the library. With ``order="commuting"`` it proves that the circuit is the product of
        ``rotations``: each comes up once, none before another that it does not commute with. With
        ``order="free"`` it proves that each comes up once, in whatever order, which is not the
        product where they do not commute. In both cases what is left is what the result says, and
        gates are on edges."""
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

    def _to_circuit(self) -> CliffordTableau:
        return self.clifford

    def __repr__(self) -> str:
        end = "tail returned" if self.tail == "return" else "tail closed"
        if self.permutation != tuple(range(len(self.permutation))):
            end += ", wires permuted"
        return (
            f"PauliSynthesis({self.method}: {len(self.placement)} qubits, "
            f"{len(self.rotations)} rotations, {self.count} two-qubit gates, depth {self.depth}, "
            f"{end}, {self.seconds:.2g} s)"
        )


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
