"""How large a circuit of Qiskit is, as it will be in the gates of its target."""

from __future__ import annotations

from collections.abc import Collection, Iterator
from typing import Any

Cost = tuple[int, int, int]

# Two-qubit gates that a gate takes where the target does not have it.
_CNOTS = {"swap": 3, "iswap": 2, "dcx": 2, "rxx": 2, "ryy": 2, "rzz": 2, "rzx": 2,
          "crx": 2, "cry": 2, "crz": 2, "cp": 2, "cu1": 2, "cu3": 2, "cu": 2, "csx": 2,
          "cs": 2, "csdg": 2, "xx_plus_yy": 2, "xx_minus_yy": 2} | dict.fromkeys(
    ("cx", "cy", "cz", "ch", "ecr"), 1)  # fmt: skip
_ROTATIONS = frozenset(("rxx", "ryy", "rzz", "rzx"))  # equal up to gates on one qubit


def cost(circuit: Any, objective: str, native: Collection[str] = ()) -> Cost:
    """Two-qubit gates, their layers, and all gates; with "depth", the layers come first.

    ``native`` are the gates of the target, each of which counts once."""
    rotates = not _ROTATIONS.isdisjoint(native)
    known = _CNOTS | dict.fromkeys(native, 1)
    if rotates:
        known |= dict.fromkeys(_ROTATIONS, 1)
    layers = [0] * circuit.num_qubits
    count = 0
    for qubits, weight in _two_qubit(circuit, range(circuit.num_qubits), known):
        count += weight
        layer = max(layers[q] for q in qubits) + weight
        for q in qubits:
            layers[q] = layer
    depth = max(layers, default=0)
    size: int = circuit.size()
    return (depth, count, size) if objective == "depth" else (count, depth, size)


def _two_qubit(circuit: Any, places: Any, known: dict[str, int]) -> Iterator[tuple[list[int], int]]:
    """The gates on two and more qubits, with definitions taken apart as far as it takes."""
    index = dict(zip(circuit.qubits, places, strict=True))
    for instruction in circuit.data:
        operation = instruction.operation
        if len(instruction.qubits) < 2 or operation._directive:
            continue
        on = [index[qubit] for qubit in instruction.qubits]
        weight = known.get(operation.name)
        definition = None if weight else getattr(operation, "definition", None)
        if definition is None:
            yield on, weight or 1
        else:
            yield from _two_qubit(definition, on, known)
