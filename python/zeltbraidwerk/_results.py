"""What all results that hold a circuit tell of it."""

from __future__ import annotations

from functools import cached_property

from zeltbraidwerk.circuits import Circuit


class HoldsCircuit:
    """Base of the results whose ``circuit`` has gates of several kinds."""

    circuit: Circuit

    @property
    def n(self) -> int:
        """Number of qubits."""
        return self.circuit.n

    @cached_property
    def count(self) -> int:
        """Number of gates on two qubits."""
        return self.circuit.two_qubit_count

    @cached_property
    def depth(self) -> int:
        """Layers of gates on two qubits; those on one take no time."""
        return self.circuit.two_qubit_depth
