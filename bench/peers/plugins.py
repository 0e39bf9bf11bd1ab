"""Qiskit's transpiler with the plugins of this package and without: two-qubit gates, their layers
and processor time, at level 3.

Every circuit is compared with its source: by normal forms, where these prove it, or by what both
do to a random state. Qiskit replaces blocks on two qubits by numbers, so that neither decides about
large circuits; what the plugin handed to Qiskit's own passes is proven then, which the last column
says. A circuit that is wrong, or worse with the plugin, ends the program.
"""

from __future__ import annotations

import sys
from collections.abc import Callable, Sequence

import numpy as np
import rotations
from circuits import DEVICES, ON_DEVICES, Input, for_devices, generic, of_folder
from qiskit import QuantumCircuit, transpile
from qiskit.quantum_info import Statevector
from qiskit.transpiler import CouplingMap, generate_preset_pass_manager
from qiskit.transpiler.passes.synthesis.high_level_synthesis import HLSConfig

import zeltbraidwerk as zb
from zeltbraidwerk import _circuit_check
from zeltbraidwerk.qiskit import Optimize

Timer = Callable[..., tuple[object, float]]

BASIS = ["cx", "rz", "sx", "x"]
GATES = ["cx", "h", "s", "sdg", "x", "y", "z", "sx", "sxdg", "rx", "ry", "rz"]  # of the plugins
MOST_SIMULATED = 16  # qubits
QUICK = 60  # two-qubit gates, with --quick
HEADS = ("circuit", "on", "before", "without", "depth", "s", "with", "depth", "s", "shown by")
WIDTHS = (24, 12, 8, 8, 8, 7, 8, 8, 7, 34)
Row = tuple[int, int]


def main(timed: Timer, quick: bool) -> None:
    most = QUICK if quick else sys.maxsize
    total: list[tuple[Row, Row]] = []
    print(f"\nThe optimization stage of Qiskit: two-qubit gates and layers\n{_line(HEADS)}")
    for source in [*of_folder(most), *generic(quick)]:
        total.append(stage(source, None, timed))
    inputs = for_devices()
    for name, place in ON_DEVICES[:2] if quick else ON_DEVICES:
        total.append(stage(inputs[name], place, timed))
    _sum(total)
    print(f"\nPauliEvolution, in the order given\n{_line(HEADS)}")
    _sum([evolution(name, listed, timed) for name, listed in rotations.inputs(quick)])


def stage(source: Input, place: str | None, timed: Timer) -> tuple[Row, Row]:
    given = QuantumCircuit.from_qasm_str(source.text)
    options = {"basis_gates": BASIS, "optimization_level": 3, "seed_transpiler": 1}
    if place is not None:
        edges = DEVICES[place].edges
        options["coupling_map"] = CouplingMap([p for a, b in edges for p in ((a, b), (b, a))])
    found = [
        timed(lambda method=method: transpile(given, optimization_method=method, **options), runs=1)
        for method in ("default", "zeltbraidwerk")
    ]
    shown = [shown_by(given, circuit) for circuit, _ in found]
    if shown[1] is None:
        shown[1] = shown_before(given, options)
    return _row(source.name, place or "", source.before, found, shown)


def evolution(name: str, listed: rotations.Rotations, timed: Timer) -> tuple[Row, Row]:
    given = rotations.to_qiskit(listed)
    config = HLSConfig(PauliEvolution=[("zeltbraidwerk", {"seed": 1})])
    found = [
        timed(lambda hls=hls: transpile(
            given, basis_gates=BASIS, optimization_level=3, seed_transpiler=1, hls_config=hls
        ), runs=1)
        for hls in (None, config)
    ]  # fmt: skip
    plain = given.decompose()
    shown = [shown_by(plain, circuit) for circuit, _ in found]
    if shown[1] is None:
        plugin = transpile(
            given, basis_gates=GATES, optimization_level=0, hls_config=config
        )  # fmt: skip
        shown[1] = "before Qiskit's own passes" if shown_by(plain, plugin) else None
    return _row(name, "", zb.Circuit.from_qiskit(plain).two_qubit_count, found, shown)


def shown_by(given: QuantumCircuit, found: QuantumCircuit) -> str | None:
    """How the circuits are seen to be the same; None where that is not known. Ends the program
    where they are not."""
    n = found.num_qubits
    first = list(range(n)) if found.layout is None else found.layout.initial_index_layout()
    last = list(range(n)) if found.layout is None else found.layout.final_index_layout(False)
    wires = [0] * n
    for start, end in zip(first, last, strict=True):
        wires[start] = end
    source = zb.Circuit.from_qiskit(given).placed(first[: given.num_qubits], n)
    circuit = zb.Circuit.from_qiskit(found)
    if _circuit_check.same_operator(source, circuit, wires):
        return "normal form"
    return "random state" if _same_state(source, circuit, wires) else None


def _same_state(source: zb.Circuit, found: zb.Circuit, wires: Sequence[int]) -> bool:
    """On the qubits in use; False where they are too many."""
    used = {q for circuit in (source, found) for gate in circuit for q in gate.qubits}
    used |= {q for q, wire in enumerate(wires) if wire != q}
    qubits = sorted(used)
    n, place = len(qubits), {q: k for k, q in enumerate(qubits)}
    if n > MOST_SIMULATED:
        return False
    rng = np.random.default_rng(1)
    start = rng.normal(size=2**n) + 1j * rng.normal(size=2**n)
    states = [
        Statevector(start / np.linalg.norm(start)).evolve(_narrowed(circuit, place).to_qiskit())
        for circuit in (source, found)
    ]
    ends = [place[wires[q]] for q in qubits]
    axes = [n - 1 - ends[n - 1 - k] for k in range(n)]  # qubit 0 is the last axis
    moved = states[1].data.reshape([2] * n).transpose(axes).reshape(-1)
    if abs(np.vdot(states[0].data, moved)) < 1 - 1e-6:
        sys.exit("the circuit is wrong")
    return True


def _narrowed(circuit: zb.Circuit, place: dict[int, int]) -> zb.Circuit:
    gates = [
        zb.Gate(gate.name, [place[q] for q in gate.qubits], *([gate.params] if gate.params else []))
        for gate in circuit
    ]
    return zb.Circuit(len(place), gates)


def shown_before(given: QuantumCircuit, options: dict[str, object]) -> str | None:
    """What goes into the stage, and what the pass of the stage makes of it."""
    passes = generate_preset_pass_manager(**options)
    passes.optimization = passes.scheduling = None
    before = passes.run(given)
    found = Optimize(coupling_map=options.get("coupling_map"), seed=1)(before)
    if shown_by(given, before) and shown_by(_without_layout(before), _without_layout(found)):
        return "before Qiskit's own passes"
    return None


def _without_layout(circuit: QuantumCircuit) -> QuantumCircuit:
    plain = circuit.copy()
    plain._layout = None
    return plain


def _row(
    name: str, place: str, before: int, found: Sequence[tuple[QuantumCircuit, float]],
    shown: Sequence[str | None],
) -> tuple[Row, Row]:  # fmt: skip
    sizes = [
        (circuit.num_nonlocal_gates(), circuit.depth(lambda each: len(each.qubits) > 1))
        for circuit, _ in found
    ]
    cells = [cell for size, (_, seconds) in zip(sizes, found, strict=True)
             for cell in (*size, f"{seconds:.1f}")]  # fmt: skip
    print(_line((name, place, before, *cells, shown[1])), flush=True)
    if shown[1] is None:
        sys.exit(f"{name}: not known to be right")
    if sizes[1] > sizes[0]:
        sys.exit(f"{name}: worse with the plugin")
    return sizes[0], sizes[1]


def _sum(rows: Sequence[tuple[Row, Row]]) -> None:
    without, by_plugin = (sum(row[k][0] for row in rows) for k in (0, 1))
    print(f"all {len(rows)}: without {without}, with {by_plugin}")


def _line(cells: Sequence[object]) -> str:
    return " ".join(str(cell).rjust(width) for cell, width in zip(cells, WIDTHS, strict=True))
