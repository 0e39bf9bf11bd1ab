"""A circuit on the edges of a device, as it comes up while one is optimised there."""

from __future__ import annotations

from dataclasses import dataclass, replace

from zeltbraidwerk._optimize_results import Optimization
from zeltbraidwerk._placement import Placement
from zeltbraidwerk.circuits import Circuit


@dataclass(frozen=True)
class Routed:
    """A circuit on the wires, where the qubits of the source begin, and where each wire ends."""

    found: Optimization
    placement: Placement
    wires: Placement
    front: tuple[Routed, ...] = ()

    @classmethod
    def of(cls, found: Optimization, placement: Placement) -> Routed:
        front = tuple(cls.of(each, placement) for each in found.front)
        return cls(found, placement, found.permutation, front)

    def then(self, later: Optimization) -> Routed:
        """The circuit made anew from this one. Its stages go on from those of this one."""
        first = self.found._stages or ((),) * len(later._stages)
        stages = tuple(
            before + tuple(stage.after(self.wires) for stage in after)
            for before, after in zip(first, later._stages, strict=True)
        )
        return Routed(
            replace(later, _stages=stages), self.placement,
            tuple(later.permutation[wire] for wire in self.wires),
            tuple(self.then(each) for each in later.front),
        )  # fmt: skip


def two_qubit_cost(circuit: Circuit) -> int:
    """Two-qubit gates, three for each SWAP."""
    return sum(
        3 if name == "SWAP" else 1 for name, qubits, _ in circuit._operations() if len(qubits) == 2
    )
