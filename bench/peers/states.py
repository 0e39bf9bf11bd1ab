"""Stabilizer states on devices, side by side with Qiskit.

Qiskit starts from its own circuit for the stabilizers, or from our shortest one without a device,
and routes it at level 3 with its qubits where it pleases; the best of five seeds counts. Ours is
verified; of Qiskit's circuits the edges are checked.
"""

from __future__ import annotations

import sys
from collections.abc import Iterator, Sequence

from qiskit import QuantumCircuit, transpile
from qiskit.synthesis import synth_circuit_from_stabilizers
from qiskit.transpiler import CouplingMap

import zeltbraidwerk as zb
from zeltbraidwerk import gallery

SEEDS = 5
STEPS = 300_000
GRIDS = {7: (3, 3), 8: (2, 4), 12: (3, 4), 16: (4, 4), 17: (4, 5), 19: (4, 5), 23: (5, 5)}
HEAVY = zb.Device.heavy_hex(3, 7)


def main(quick: bool) -> None:
    print("\nStabilizer states on devices: CNOTs / depth")
    heads = ("Qiskit", "ours, then Qiskit", "search", "300,000 steps")
    print(" ".join(["state, device".ljust(34), *(head.rjust(18) for head in heads)]))
    for name, state in _states(quick):
        n = len(state)
        short = zb.clifford.synthesize_state(state, seed=1).circuit.to_qiskit()
        own = synth_circuit_from_stabilizers([text[:-n] + text[-n:][::-1] for text in state])
        for device in (zb.Device.line(n), zb.Device.grid(*GRIDS[n]), HEAVY):
            cells = [_routed(own, device), _routed(short, device)]
            cells += [_ours(state, device), _ours(state, device, steps=STEPS)]
            label = f"{name}, {'heavy-hex' if device is HEAVY else device.name}"
            print(" ".join([label.ljust(34), *(cell.rjust(18) for cell in cells)]), flush=True)


def _states(quick: bool) -> Iterator[tuple[str, list[str]]]:
    codes = {
        "Steane": gallery.steane_code(),
        "carbon": gallery.carbon_code(),
        "octagon": gallery.color_code_17(),
        "hexagons": gallery.color_code(5),
        "Golay": gallery.golay_code(),
    }
    for name, code in list(codes.items())[: 2 if quick else None]:
        yield name, gallery.logical_zero(code)
    for n in (8,) if quick else (8, 12, 16):
        graph = gallery.random_graph(n, 1)
        yield f"graph {n}", list(zb.graph_state.synthesize(graph, method="naive").stabilizers)


def _ours(state: Sequence[str], device: zb.Device, **effort: int) -> str:
    result = zb.clifford.synthesize_state(
        state, device=device, permutation="free", seed=1, **effort
    )
    if not result.verify():
        sys.exit("ours: the circuit is wrong")
    return f"{result.count} / {result.depth}"


def _routed(source: QuantumCircuit, device: zb.Device) -> str:
    coupling = CouplingMap([pair for a, b in device.edges for pair in ((a, b), (b, a))])
    found = []
    for seed in range(SEEDS):
        circuit = transpile(
            source, coupling_map=coupling, basis_gates=["cx", "rz", "sx", "x"],
            optimization_level=3, seed_transpiler=seed,
        )  # fmt: skip
        gates = [gate for gate in circuit.data if len(gate.qubits) == 2]
        pairs = {tuple(sorted(circuit.find_bit(q).index for q in gate.qubits)) for gate in gates}
        if not pairs <= set(device.edges):
            sys.exit("Qiskit: a gate is off the edges")
        found.append((len(gates), circuit.depth(lambda gate: len(gate.qubits) == 2)))
    count, depth = min(found)
    return f"{count} / {depth}"
