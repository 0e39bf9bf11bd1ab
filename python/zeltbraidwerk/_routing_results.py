"""What comes of circuits that were taken apart and routed."""

from __future__ import annotations

from collections.abc import Sequence
from dataclasses import dataclass, field

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _pauli_check, _routing_check
from zeltbraidwerk._observables import MovesObservables
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.clifford import CliffordTableau
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Parameter
from zeltbraidwerk.instructions import Barrier, Instruction


@dataclass(frozen=True, repr=False)
class NormalForm:
    """A circuit as Pauli rotations, block after block, followed by the Clifford operator ``tail``.

    The rotations of a block commute pairwise; the letter at place q acts on qubit q.
    """

    source: Circuit
    blocks: tuple[tuple[tuple[str, Parameter], ...], ...]
    tail: CliffordTableau
    merged: bool
    seconds: float = field(compare=False)

    @property
    def n(self) -> int:
        return self.source.n

    @property
    def rotations(self) -> tuple[tuple[str, Parameter], ...]:
        """Those of all blocks, in order."""
        return tuple(rotation for block in self.blocks for rotation in block)

    def verify(self) -> bool:
        """Takes the circuit apart once more, gate by gate, with signs and apart from the library,
        and compares rotations and Clifford operator; and blocks commute."""
        blocks, clifford = _routing_check.normal_form(self.source, self.merged)
        wanted = [rotation for block in blocks for rotation in block]
        alike = _pauli_check.same_rotations(list(self.rotations), wanted, True)
        return (
            alike
            and _routing_check.commutes_within(self.blocks)
            and _fits(_pauli_check.PulledBack(self.n), self.tail, clifford)
        )

    def __repr__(self) -> str:
        return (
            f"NormalForm({self.n} qubits, {len(self.rotations)} rotations in {len(self.blocks)} "
            f"blocks, {self.seconds:.2g} s)"
        )


@dataclass(frozen=True, repr=False)
class Routing(MovesObservables):
    """A routed circuit, and how it came about.

    The source equals ``circuit`` followed by the Clifford operator ``tail``, up to a global phase;
    ``tail`` is the identity where it was closed. An observable O after the source has the value of
    ``tail.inverse().conjugate(O)`` after the circuit: ``absorb`` and ``readout`` take the tail into
    what is measured. On a larger device qubit k of the source is its qubit ``placement[k]``.
    """

    circuit: Circuit
    source: Circuit
    tail: CliffordTableau
    rotations: int
    seconds: float = field(compare=False)
    placement: tuple[int, ...]
    device: Device | None
    _rotates: npt.NDArray[np.bool_] = field(compare=False)  # which gates are rotations

    @property
    def entangling_count(self) -> int:
        """Number of gates on two and more qubits, each counted once."""
        return sum(len(gate.qubits) > 1 for gate in self.circuit.gates)

    def _to_circuit(self) -> CliffordTableau:
        return self.tail.inverse()

    def verify(self) -> bool:
        """Follows the rotations of the circuit back through its gates, and those of the source
        through the source's, with signs and apart from the library: they are the same, none before
        another that it does not commute with; so are the Clifford operators, with the tail; and
        gates are on edges. Measurements and resets are those of the source, in their places."""
        circuit, ending = self.circuit.split_ending()
        source, wanted_ending = placed(self.source, self.placement, self.n).split_ending()
        found, pulled = _pauli_check.unfolded(circuit, [not r for r in self._rotates])
        blocks, clifford = _routing_check.normal_form(source.unitary())
        wanted = [rotation for block in blocks for rotation in block]
        return (
            _pauli_check.same_rotations(found, wanted, True)
            and _fits(pulled, self.tail, clifford)
            and (self.device is None or self.device.fits(self.circuit))
            and _records(ending) == _records(wanted_ending)
        )

    def __repr__(self) -> str:
        closed = "closed" if self.tail == CliffordTableau(self.n) else "returned"
        return (
            f"Routing({len(self.placement)} qubits, {self.rotations} rotations, "
            f"{self.entangling_count} entangling gates, depth {self.depth}, tail {closed}, "
            f"{self.seconds:.2g} s)"
        )


def placed(circuit: Circuit, placement: Sequence[int], n: int) -> Circuit:
    """The same operations on qubits of a larger machine."""
    return circuit if tuple(placement) == tuple(range(n)) else circuit.placed(placement, n)


def _records(ending: Circuit) -> list[Instruction]:
    return [item for item in ending if not isinstance(item, Barrier)]


def _fits(
    pulled: _pauli_check.PulledBack, tail: CliffordTableau, wanted: _pauli_check.PulledBack
) -> bool:
    """Whether Clifford gates followed by the tail act as wanted."""
    xs, zs = tail.images()
    for letter, images in (("X", xs), ("Z", zs)):
        for q, image in enumerate(images):
            minus, letters = wanted.image(image[1:])
            if pulled.letter(letter, q) != (minus != (image[0] == "-"), letters):
                return False
    return True
