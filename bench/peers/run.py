"""Side by side with other packages: one process, the same matrices, one table.

    run.py                    every row
    run.py --quick            small sizes alone
    run.py --only PART        one of the parts: linear, devices, phases, rotations, cliffords,
                              states, routing, circuits, plugins, tableau
    run.py --circuits FOLDER  routes the OpenQASM 2 files there as well

Times are processor time, the best of a few runs of the synthesis call alone, with its own
conversions from numpy; no call uses a second thread.
Every circuit, theirs as well as ours, is replayed gate by gate before it counts.
"""

from __future__ import annotations

import argparse
import random
import sys
import time
from collections.abc import Callable, Sequence
from dataclasses import dataclass
from functools import partial
from pathlib import Path
from statistics import mean

import circuits
import cliffords
import numpy as np
import plugins
import pyzx
import rotations
import routing
import states
import stim
from pytket import Circuit as PytketCircuit
from pytket.circuit import OpType
from pytket.passes import GreedyPauliSimp
from pyzx.routing.architecture import Architecture
from pyzx.routing.parity_maps import CNOT_tracker
from pyzx.routing.steiner import rec_steiner_gauss
from qiskit.synthesis import synth_cnot_count_full_pmh, synth_cnot_phase_aam

import zeltbraidwerk as zb
from zeltbraidwerk import gallery

Matrix = gallery.BoolArray
Pairs = Sequence[tuple[int, int]]


@dataclass(frozen=True)
class Outcome:
    """A circuit and how long it took; output r of the map stands on wire permutation[r]."""

    gates: Pairs
    permutation: Sequence[int]
    seconds: float


Method = Callable[[Matrix], Outcome]


def timed(call: Callable[[], object], runs: int = 5, enough: float = 0.5):
    """The result of a call and the shortest of its times; slow calls run once."""
    best, spent = float("inf"), 0.0
    for _ in range(runs):
        start = time.process_time()
        result = call()
        seconds = time.process_time() - start
        best, spent = min(best, seconds), spent + seconds
        if spent > enough:
            break
    return result, best


def ours(method: str, **options) -> Method:
    def run(matrix: Matrix) -> Outcome:
        result, seconds = timed(lambda: zb.linear.synthesize(matrix, method=method, **options))
        return Outcome(_pairs(result.circuit), result.permutation, seconds)

    return run


def our_single_pmh(matrix: Matrix) -> Outcome:
    """One elimination at one section width, by the function of the core."""
    n = len(matrix)
    section = max(1, round(np.log2(n) / 2))
    circuit, seconds = timed(lambda: zb.core.PMH_Algorithm(n, matrix, section), runs=50)
    return Outcome(_pairs(circuit.gates)[::-1], range(n), seconds)  # it builds the inverse


def qiskit_pmh(matrix: Matrix) -> Outcome:
    circuit, seconds = timed(lambda: synth_cnot_count_full_pmh(matrix), runs=20)
    gates = [tuple(circuit.find_bit(q).index for q in gate.qubits) for gate in circuit.data]
    return Outcome(gates, range(len(matrix)), seconds)


def pyzx_every_block(matrix: Matrix) -> Outcome:
    rows = matrix.astype(int).tolist()
    gates, seconds = timed(lambda: pyzx.Mat2(rows).to_cnots(optimize=True))
    # Their circuit is that of the transposed matrix: read from the end, with the roles exchanged.
    turned = [(gate.target, gate.control) for gate in reversed(gates)]
    return Outcome(turned, range(len(matrix)), seconds)


def pytket_greedy(matrix: Matrix) -> Outcome:
    """The matrix goes in as a CNOT circuit; the wires may come out in another order."""
    start = PytketCircuit(len(matrix))
    for control, target in _pairs(zb.linear.synthesize(matrix, method="pmh").circuit):
        start.CX(control, target)

    def run() -> PytketCircuit:
        circuit = start.copy()
        GreedyPauliSimp().apply(circuit)
        return circuit

    circuit, seconds = timed(run)
    if any(command.op.type != OpType.CX for command in circuit):
        sys.exit("pytket: gates other than CX came out")
    gates = [tuple(qubit.index[0] for qubit in command.qubits) for command in circuit]
    permutation = [0] * len(matrix)
    for wire, output in circuit.implicit_qubit_permutation().items():
        permutation[output.index[0]] = wire.index[0]
    return Outcome(gates, permutation, seconds)


def pyzx_on(device: zb.Device) -> Method:
    """Recursive Steiner elimination; the device is numbered along a path, as it wants it."""
    path = list(device.hamiltonian_path())
    adjacency = device.part(path).adjacency().astype(int)

    def run(matrix: Matrix) -> Outcome:
        rows = matrix[np.ix_(path, path)].astype(int).tolist()

        def reduce() -> CNOT_tracker:
            gates = CNOT_tracker(len(rows))
            architecture = Architecture("device", coupling_matrix=adjacency)
            rec_steiner_gauss(
                pyzx.Mat2([*map(list, rows)]), architecture, full_reduce=True, x=gates
            )
            return gates

        found, seconds = timed(reduce)
        gates = [(path[gate.control], path[gate.target]) for gate in reversed(found.gates)]
        return Outcome(gates, range(len(matrix)), seconds)

    return run


DEVICES = {"3 x 3 grid": zb.Device.grid(3, 3), "4 x 4 grid": zb.Device.grid(4, 4)} | {
    name: zb.Device.named(name) for name in ("qx5", "aspen", "tokyo")
}


def devices(quick: bool) -> None:
    """Random matrices on the edges of a device, every output in its place."""
    for title, options in (
        ("auto, 1 run", {"restarts": 1}),
        ("auto, 20 runs", {"restarts": 20}),
        ("search, 5 s", {"method": "search", "budget": 5}),
    ):
        print(f"\nOn a device, {title}\n{_line(HEADS)}")
        for name, device in DEVICES.items():
            matrices = gallery.random_invertible(device.n, 3 if quick else 10)
            their = pyzx_on(device)
            our = ours(**{"method": "auto", "device": device, "seed": 1} | options)
            them = measured("PyZX", their, matrices, device)
            us = measured("ours", our, matrices, device)
            _compare(name, "PyZX", them, title, us)


def phases(quick: bool) -> None:
    """Random phase polynomials on any two qubits, with what they leave undone."""
    for title, options in (
        ("gray, 1 run", {"method": "gray", "restarts": 1}),
        ("auto, 1 run", {"restarts": 1}),
        ("search, 3 s", {"method": "search", "budget": 3}),
    ):
        print(f"\nPhase polynomials, {title}\n{_line(HEADS)}")
        for n, terms in ((8, 64), (16, 160), (20, 200)):
            them, us = [], []
            for parities in gallery.random_parities(n, terms, 3 if quick else 10):
                wires = [[parity >> q & 1 for parity in parities] for q in range(n)]
                circuit, seconds = timed(partial(synth_cnot_phase_aam, wires, [0.1] * terms))
                poly = dict.fromkeys(parities, 0.1)
                them.append(_phase_cost(zb.Circuit.from_qiskit(circuit), poly, seconds))
                call = partial(zb.phase.synthesize, poly, n=n, seed=1, **options)
                result, seconds = timed(call)
                us.append(_phase_cost(result.circuit, poly, seconds))
            _compare(f"{n}, {terms} terms", "Qiskit", _means(them), title, _means(us))


def _phase_cost(circuit: zb.Circuit, poly: dict[int, float], seconds: float) -> tuple[float, ...]:
    """Count, depth and milliseconds of a circuit that was found right."""
    terms, left = zb.phase.polynomial_of(circuit)
    if terms.keys() != poly.keys() or not np.array_equal(left, np.eye(circuit.n)):
        sys.exit(f"wrong phases at {circuit.n} qubits")
    return circuit.two_qubit_count, circuit.two_qubit_depth, 1e3 * seconds


FREE = {"permutation": "free", "seed": 1}

# Title, sizes, the peer, ours. A size is a number of random matrices' qubits, or a layer's name.
Named = tuple[str, Method]
COMPARISONS: tuple[tuple[str, tuple[int | str, ...], Named, Named], ...] = (
    (
        "One elimination",
        (8, 16, 32, 64, 256, 512),
        ("Qiskit", qiskit_pmh),
        ("PMH_Algorithm", our_single_pmh),
    ),
    (
        "Best elimination",
        (8, 16, 32, 64, "aes_mixcolumns"),
        ("PyZX", pyzx_every_block),
        ("pmh", ours("pmh")),
    ),
    (
        "Wires free, one run",
        (8, 16, 32, 64, "aes_mixcolumns"),
        ("pytket", pytket_greedy),
        ("auto, 1 run", ours("auto", restarts=1, **FREE)),
    ),
    (
        "Wires free, for count",
        (8, 16, 32, 64, "aes_mixcolumns"),
        ("pytket", pytket_greedy),
        ("auto, 20 runs", ours("auto", restarts=20, **FREE)),
    ),
    (
        "Wires free, longer search",
        (8, 16, 32, 64, "aes_mixcolumns"),
        ("pytket", pytket_greedy),
        ("search, 5 s", ours("search", budget=5, **FREE)),
    ),
    (
        "Wires free, for depth",
        (8, 16, 32, 64, "aes_mixcolumns"),
        ("pytket", pytket_greedy),
        ("auto, 20 runs", ours("auto", objective="depth", restarts=20, **FREE)),
    ),
)
MATRICES = {8: 20, 16: 20, 32: 5}  # how many random ones by size; one for all others

HEADS = (
    "input",
    "peer",
    "CNOTs",
    "depth",
    "ms",
    "ours",
    "CNOTs",
    "depth",
    "ms",
    "CNOTs x",
    "depth x",
    "speed-up",
)
WIDTHS = (15, 8, 8, 7, 9, 18, 8, 7, 9, 8, 8, 8)


def main() -> int:
    parser = argparse.ArgumentParser(description="Side by side with other packages.")
    parser.add_argument("--quick", action="store_true", help="32 qubits at most")
    parser.add_argument("--circuits", type=Path, help="a folder of OpenQASM 2 files to route")
    parts = {
        "linear": linear,
        "devices": devices,
        "phases": phases,
        "rotations": partial(rotations.main, timed),
        "cliffords": partial(cliffords.main, timed),
        "states": states.main,
        "routing": lambda quick: routing.main(timed, quick, options.circuits),
        "circuits": partial(circuits.main, timed),
        "plugins": partial(plugins.main, timed),
        "tableau": lambda quick: tableau(gates=1000 if quick else 100_000),
    }
    parser.add_argument("--only", choices=parts, help="one part")
    options = parser.parse_args()
    for name, part in parts.items():
        if options.only in (None, name):
            part(options.quick)
    return 0


def linear(quick: bool) -> None:
    for title, sizes, (peer, theirs), (name, our) in COMPARISONS:
        print(f"\n{title}\n{_line(HEADS)}")
        for size in sizes:
            matrices = inputs(size)
            if quick and len(matrices[0]) > 32:
                continue
            them = measured(peer, theirs, matrices)
            us = measured(name, our, matrices)
            _compare(str(size), peer, them, name, us)
    print("\nCNOTs x, depth x: ours over theirs. speed-up: their time over ours.")


def tableau(gates: int, n: int = 200) -> None:
    """A random Clifford circuit, from each package's own circuit object, to its tableau."""
    rng = random.Random(1)
    theirs, our = stim.Circuit(), []
    for _ in range(gates):
        name = rng.choice(("H", "S", "CNOT", "CZ"))
        qubits = rng.sample(range(n), 1 if name in "HS" else 2)
        theirs.append(name, qubits)
        our.append(zb.Gate(name, qubits))
    circuit = zb.Circuit(n, our)
    them, their_time = timed(theirs.to_tableau)
    us, our_time = timed(lambda: zb.CliffordTableau.from_circuit(circuit))
    if us.to_stim() != them:
        sys.exit("the tableaus differ")
    print(
        f"\nTableau of {gates} Clifford gates on {n} qubits\n"
        f"Stim {1e3 * their_time:.1f} ms, ours {1e3 * our_time:.1f} ms, "
        f"speed-up {their_time / our_time:.2f}"
    )


def inputs(size: int | str) -> list[Matrix]:
    if isinstance(size, str):
        return [gallery.cipher_layers()[size]]
    return gallery.random_invertible(size, MATRICES.get(size, 1))


def measured(
    name: str, method: Method, matrices: Sequence[Matrix], device: zb.Device | None = None
) -> tuple[float, ...]:
    """Mean count, depth and milliseconds, of circuits that were found right."""
    costs = []
    for matrix in matrices:
        outcome = method(matrix)
        wires = np.eye(len(matrix), dtype=bool)
        for control, target in outcome.gates:
            wires[target] ^= wires[control]
        if not np.array_equal(wires[list(outcome.permutation)], matrix):
            sys.exit(f"{name}: wrong circuit at {len(matrix)} qubits")
        if device and not device.fits(zb.CnotCircuit(device.n, outcome.gates)):
            sys.exit(f"{name}: a CNOT that is on no edge of {device}")
        costs.append(
            (len(outcome.gates), _depth(outcome.gates, len(matrix)), 1e3 * outcome.seconds)
        )
    return _means(costs)


def _means(costs: Sequence[tuple[float, ...]]) -> tuple[float, ...]:
    return tuple(mean(column) for column in zip(*costs, strict=True))


def _compare(
    size: str, peer: str, them: tuple[float, ...], name: str, us: tuple[float, ...]
) -> None:
    ratios = f"{us[0] / them[0]:.2f}", f"{us[1] / them[1]:.2f}", f"{them[2] / us[2]:.1f}"
    print(_line((size, peer, *_numbers(them), name, *_numbers(us), *ratios)))


def _depth(gates: Pairs, n: int) -> int:
    level = [0] * n
    for a, b in gates:
        level[a] = level[b] = max(level[a], level[b]) + 1
    return max(level, default=0)


def _pairs(gates) -> list[tuple[int, int]]:
    return [(int(control), int(target)) for control, target in gates]


def _numbers(costs: tuple[float, ...]) -> tuple[str, str, str]:
    return f"{costs[0]:.1f}", f"{costs[1]:.1f}", f"{costs[2]:.3f}"


def _line(cells: Sequence[str]) -> str:
    return " ".join(cell.rjust(width) for cell, width in zip(cells, WIDTHS, strict=True))


if __name__ == "__main__":
    sys.exit(main())
