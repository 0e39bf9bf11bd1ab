"""Circuits routed by Qiskit's level 3, which takes the gates as they are."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from typing import Any

from zeltbraidwerk import _interop
from zeltbraidwerk._placement import Placement
from zeltbraidwerk._swaps import Late, Route
from zeltbraidwerk.circuits import Circuit
from zeltbraidwerk.devices import Device
from zeltbraidwerk.gates import Gate

_GIVEN = "given"
_BASIS = ["cx", "cz", "swap", "h", "s", "sdg", "x", "y", "z", "rx", "ry", "rz"]


def routes(
    circuit: Circuit, device: Device, given: Placement | None, tries: int, seed: int, late: Late
) -> Iterator[Route]:
    """One per seed of Qiskit's. At least one, however late it is."""
    transpiler = _interop._package("qiskit.transpiler")
    gates = [gate for gate, _ in _interop.written(circuit.unitary()) if isinstance(gate, Gate)]
    written = _written(gates, circuit.n)
    edges = [pair for a, b in device.edges for pair in ((a, b), (b, a))]
    for k in range(tries):
        passes = transpiler.generate_preset_pass_manager(
            optimization_level=3,
            coupling_map=transpiler.CouplingMap(edges),
            basis_gates=_BASIS,
            initial_layout=None if given is None else list(given),
            seed_transpiler=(seed + k) % 2**31,
        )
        passes.init = passes.translation = passes.optimization = passes.scheduling = None
        found = passes.run(written)
        first = tuple(found.layout.initial_index_layout())
        moved = found.layout.routing_permutation()
        ends = [0] * device.n
        for start in first:
            ends[start] = moved[start]
        routed = _read(found, gates, device.n)
        starts = first[: circuit.n]
        if given is None:
            starts = _with_idle_in_order(circuit, routed, starts)
        yield Route(routed, starts, tuple(ends))


def _written(gates: Sequence[Gate], n: int) -> Any:
    """A circuit of Qiskit with the number of each gate in its place, which comes back as it went:
    gates would come back by other names, and with other phases."""
    qiskit = _interop._package("qiskit.circuit")
    made = qiskit.QuantumCircuit(n)
    for k, gate in enumerate(gates):
        made.append(qiskit.Gate(_GIVEN, len(gate.qubits), [k]), gate.qubits)
    return made


def _read(found: Any, gates: Sequence[Gate], n: int) -> Circuit:
    wires = {qubit: k for k, qubit in enumerate(found.qubits)}
    routed = []
    for instruction in found.data:
        qubits = [wires[qubit] for qubit in instruction.qubits]
        if instruction.operation.name == _GIVEN:
            gate = gates[int(instruction.operation.params[0])]
            routed.append(Gate._trusted(gate.name, tuple(qubits), gate.params))
        else:
            a, b = qubits
            routed += [Gate.cnot(a, b), Gate.cnot(b, a), Gate.cnot(a, b)]  # a swap
    return Circuit(n, routed)


def _with_idle_in_order(circuit: Circuit, routed: Circuit, starts: Placement) -> Placement:
    """With the qubits that nothing is done to on the first that are free: Qiskit's layout on
    matching edges puts them elsewhere from call to call."""
    busy = {q for gate in circuit for q in gate.qubits}
    passed = {q for gate in routed for q in gate.qubits}
    moved = [k for k, start in enumerate(starts) if k not in busy and start not in passed]
    kept = {start for k, start in enumerate(starts) if k not in moved}
    free = (q for q in range(routed.n) if q not in passed and q not in kept)
    places = dict(zip(moved, free, strict=False))
    return tuple(places.get(k, start) for k, start in enumerate(starts))
