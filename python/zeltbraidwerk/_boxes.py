"""The boxes that show the operations of a circuit in a picture."""

from __future__ import annotations

from zeltbraidwerk import _draw
from zeltbraidwerk.gates import ROTATIONS, Gate
from zeltbraidwerk.instructions import Conditional, Measure, Operation, Reset, WholeCircuit


def boxes(circuit: WholeCircuit) -> list[_draw.Box]:
    names = [f"{r.name}[{k}]" for r in circuit.classical for k in range(r.size)]
    whole: dict[tuple[int, ...], str] = {}
    first = 0
    for register in circuit.classical:
        whole[tuple(range(first, first + register.size))] = register.name
        first += register.size
    return [_box(operation, names, whole) for operation in circuit]


def _box(operation: Operation, names: list[str], whole: dict[tuple[int, ...], str]) -> _draw.Box:
    if isinstance(operation, Gate):
        return _draw.Box(operation.qubits, _labels(operation))
    if isinstance(operation, Conditional):
        inner = _box(operation.operation, names, whole)
        bits = whole.get(operation.bits) or ",".join(names[bit] for bit in operation.bits)
        first, *rest = inner.labels
        labels = (f"{first} if {bits}={operation.value}", *rest)
        return _draw.Box(inner.qubits, labels, operation.bits + inner.bits)
    if isinstance(operation, Measure):
        return _draw.Box(operation.qubits, (f"M {names[operation.bit]}",), operation.bits)
    label = "|0>" if isinstance(operation, Reset) else _draw.BARRIER
    return _draw.Box(operation.qubits, (label,) * len(operation.qubits))


def _labels(gate: Gate) -> tuple[str, ...]:
    if gate.name == "CNOT":
        return _draw.CONTROL, _draw.TARGET
    if gate.name in ("CSIGN", "CZ"):
        return _draw.CONTROL, _draw.CONTROL
    if gate.name == "ECR":
        return "ECR 1", "ECR 2"
    shown = ROTATIONS | {"U", "RZZ"}
    angles = f"({', '.join(map(str, gate.params))})" if gate.name in shown else ""
    label = f"{gate.name}{angles}"
    return (label,) * len(gate.qubits)
