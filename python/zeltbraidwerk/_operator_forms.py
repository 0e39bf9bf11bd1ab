"""Clifford operators and states of other packages, none of which is imported."""

from __future__ import annotations

import os
from typing import Any

from zeltbraidwerk import _rotations
from zeltbraidwerk._tableau import CliffordTableau
from zeltbraidwerk.circuits import READ_PACKAGES, Circuit, CnotCircuit


def images_of_zeros(state: Any) -> list[Any] | None:
    """The images of Z under a tableau or a circuit; None for what is neither."""
    package, _, kind = _rotations._kind(state).partition(".")
    if package == "qiskit" and kind == "StabilizerState":
        state, kind = state.clifford, "Clifford"
    if package == "qiskit" and kind == "Clifford":
        return [label[0] + label[:0:-1] for label in state.to_labels(mode="S")]
    if package == "stim" and kind == "Tableau":
        return [state.z_output(q) for q in range(len(state))]
    if package == "stim" and kind == "TableauSimulator":
        return list(state.canonical_stabilizers())
    tableau = tableau_of(state)
    return None if tableau is None else list(tableau.images()[1])


def tableau_of(value: Any) -> CliffordTableau | None:
    """Of a tableau of this package or pytket, and of circuits, also as text or the path of a file;
    None for everything else."""
    package, _, kind = _rotations._kind(value).partition(".")
    if package == "pytket" and kind == "UnitaryTableau":
        value, kind = value.to_circuit(), "Circuit"
    is_text = isinstance(value, str) and not set(value) <= _PAULI_TEXT
    is_foreign = package in READ_PACKAGES and kind in _CIRCUITS
    if is_text or is_foreign or isinstance(value, os.PathLike):
        value = Circuit.of(value)
    if isinstance(value, (Circuit, CnotCircuit)):
        return CliffordTableau.from_circuit(value)
    return value if isinstance(value, CliffordTableau) else None


_PAULI_TEXT = frozenset("IXYZ_+-i ")
# What the packages call their circuits.
_CIRCUITS = ("Circuit", "FrozenCircuit", "QuantumCircuit", "QuantumScript", "QuantumTape")
