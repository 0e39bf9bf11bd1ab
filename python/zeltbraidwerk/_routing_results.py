"""The results of taking circuits apart and of routing them."""

from __future__ import annotations

from collections.abc import Iterable, Sequence
from dataclasses import dataclass, field

import numpy as np
import numpy.typing as npt

from zeltbraidwerk import _circuit_check, _core, _json, _pauli_check, _routing_check
from zeltbraidwerk._observables import MovesObservables
from zeltbraidwerk._operations import of_held
from zeltbraidwerk._tableau import CliffordTableau
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.gates import Parameter
from zeltbraidwerk.instructions import Barrier, Instruction


@dataclass(frozen=True, repr=False)
class NormalForm(_json.Stored):
    """The circuit ``source`` as Pauli rotations, block after block of ``blocks``, followed by the
    Clifford operator ``tail``.

    The rotations of a block commute pairwise; the letter at place q acts on qubit q. ``merged``
    and ``repeated`` are the options ``merge`` and ``repeat`` of the call, which took ``seconds``.
    """

    source: Circuit
    blocks: tuple[tuple[tuple[str, Parameter], ...], ...]
    tail: CliffordTableau
    merged: bool
    repeated: bool = False
    seconds: float = field(compare=False, default=0.0)

    @property
    def n(self) -> int:
        """How many qubits the circuit has."""
        return self.source.n

    @property
    def rotations(self) -> tuple[tuple[str, Parameter], ...]:
        """Those of all blocks, in order."""
        return tuple(rotation for block in self.blocks for rotation in block)

    def verify(self) -> bool:
        """Takes the circuit apart once more, gate by gate, with signs and without the library,
        and compares rotations and Clifford operator; and blocks commute. With ``repeat`` it takes
        apart a circuit of the same operator, made anew and proven to be that."""
        circuit = self.source
        if self.repeated:
            circuit = of_held(self.n, _core._fold_circuit(self.n, circuit._held()))
            if not _circuit_check.same_operator(self.source, circuit):
                return False
        blocks, clifford = _routing_check.normal_form(circuit, self.merged)
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


@dataclass(frozen=True, kw_only=True, repr=False)
class Routing(MovesObservables):
    """A routed circuit, and how it was found; ``rotations`` is the number of its rotations.

    The source equals ``circuit`` followed by the Clifford operator ``tail``, up to a global phase;
    ``tail`` is the identity where it was closed. An observable O after the source has the value of
    ``tail.inverse().conjugate(O)`` after the circuit: ``absorb`` and ``readout`` do that.

    ``method`` is "trees" on the edges of a device, and "global_gates" for an ion machine, whose
    gates are on any qubits and whose ``device`` is None. Routing draws nothing at random and makes
    one run: ``seed`` is None, ``runs`` 1, ``trace`` empty, and ``permutation`` ascending.
    """

    circuit: Circuit
    source: Circuit
    tail: CliffordTableau
    rotations: int
    _rotates: npt.NDArray[np.bool_] = field(compare=False)  # which gates are rotations

    @property
    def entangling_count(self) -> int:
        """Number of gates on two and more qubits, each counted once: for an ion machine the number
        of global gates, while ``count`` is that of their pairs of ions."""
        return self.circuit.entangling_count

    def _to_circuit(self) -> CliffordTableau:
        return self.tail.inverse()

    def verify(self) -> bool:
        """Follows the rotations of the circuit back through its gates, and those of the source
        through the source's, with signs and without the library: they are the same, equal ones
        added, none before another that it does not commute with; so are the Clifford operators,
        with the tail; angles within 1e-5 of a Clifford gate's may have become one; and gates are on
        edges. Measurements and resets are those of the source, in their places."""
        circuit, ending = self.circuit.split_ending()
        source, wanted_ending = placed(self.source, self.placement, self.n).split_ending()
        if not (self._on_edges() and _records(ending) == _records(wanted_ending)):
            return False
        if self.tail == CliffordTableau(self.n):
            gates = source.unitary()
            return any(
                _circuit_check.same_operator(each, circuit)
                for each in (gates, _routing_check.rounded(gates))
            )
        found, pulled = _pauli_check.unfolded(circuit, [not r for r in self._rotates])
        blocks, clifford = _routing_check.normal_form(source.unitary())
        wanted = [rotation for block in blocks for rotation in block]
        return _pauli_check.same_rotations(found, wanted, True) and _fits(
            pulled, self.tail, clifford
        )

    def _about(self) -> Iterable[str]:
        yield f"{self.rotations} rotations"
        if self.entangling_count != self.count:
            yield f"{self.entangling_count} entangling gates"
        yield "tail closed" if self.tail == CliffordTableau(self.n) else "tail returned"


def placed(circuit: Circuit, placement: Sequence[int], n: int) -> Circuit:
    """The same operations on qubits of a larger machine."""
    is_same = tuple(placement) == tuple(range(n))
    return circuit._named(None) if is_same else circuit.placed(placement, n)


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
