"""Pauli rotations side by side with other packages: ansaetze of chemistry, and parities.

Angles are small, so that a rotation can be told from the Clifford gates around it, whoever merged
them: circuits are unfolded, gate by gate, and each rotation must come up once. Qiskit resynthesises
blocks on two qubits, which leaves no rotation to be told; its circuits are taken as they come.
"""

from __future__ import annotations

import math
import random
import sys
from collections.abc import Callable, Iterator

from pytket import Circuit as PytketCircuit
from pytket.circuit import OpType, PauliExpBox
from pytket.passes import AutoRebase, GreedyPauliSimp
from pytket.pauli import Pauli
from qiskit import QuantumCircuit, transpile
from qiskit.circuit.library import PauliEvolutionGate
from qiskit.quantum_info import SparsePauliOp

import zeltbraidwerk as zb
from zeltbraidwerk import gallery
from zeltbraidwerk._pauli_check import PulledBack

Rotations = dict[str, float]
Timer = Callable[..., tuple[object, float]]

MOLECULES = {"LiH": (12, 4), "H2O": (14, 10), "NH3": (16, 10), "N2": (20, 14)}


def small_angles(strings) -> Rotations:
    rng = random.Random(1)
    return {string: rng.uniform(0.05, 0.6) for string in strings}


def inputs(quick: bool) -> Iterator[tuple[str, Rotations]]:
    for name, size in MOLECULES.items():
        if not quick or name == "LiH":
            yield f"UCCSD {name}", small_angles(gallery.uccsd(*size))
    for n, terms in ((8, 64), (16, 160), (20, 200)):
        parities = gallery.random_parities(n, terms, 1)[0]
        yield (
            f"parities {n} {terms}",
            small_angles("".join("IZ"[p >> q & 1] for q in range(n)) for p in parities),
        )
    ring = [f"{'I' * k}ZZ{'I' * (10 - k)}" for k in range(11)]
    yield "Ising 12", small_angles([*ring, *("I" * k + "X" + "I" * (11 - k) for k in range(12))])
    yield "LABS 12", small_angles(string for string, _ in gallery.low_autocorrelation(12))
    yield "MaxCut 20, 12", small_angles(gallery.maxcut_regular(20, 12))
    yield "Heisenberg 4x4", small_angles(string for string, _ in gallery.heisenberg((4, 4)))


def to_pytket(rotations: Rotations) -> PytketCircuit:
    n = len(next(iter(rotations)))
    circuit = PytketCircuit(n)
    for string, angle in rotations.items():
        circuit.add_pauliexpbox(PauliExpBox([Pauli[p] for p in string], angle / math.pi), range(n))
    return circuit


def to_qiskit(rotations: Rotations) -> QuantumCircuit:
    n = len(next(iter(rotations)))
    circuit = QuantumCircuit(n)
    operator = SparsePauliOp([s[::-1] for s in rotations], [a / 2 for a in rotations.values()])
    circuit.append(PauliEvolutionGate(operator), range(n))
    return circuit


def pytket_greedy(rotations: Rotations, timed: Timer) -> tuple[zb.Circuit, float]:
    start = to_pytket(rotations)

    def run() -> PytketCircuit:
        circuit = start.copy()
        GreedyPauliSimp().apply(circuit)
        return circuit

    circuit, seconds = timed(run)
    AutoRebase({OpType.CX, OpType.Rz, OpType.Rx}).apply(circuit)
    kept = PytketCircuit(circuit.n_qubits)
    for command in circuit:
        kept.add_gate(command.op.type, command.op.params, [q.index[0] for q in command.qubits])
    return zb.Circuit.from_pytket(kept), seconds


def qiskit_default(rotations: Rotations, timed: Timer) -> tuple[zb.Circuit, float]:
    """Angles as they are, level 3, to CX and rotations."""
    circuit = to_qiskit(rotations)
    found, seconds = timed(
        lambda: transpile(
            circuit, basis_gates=["cx", "rz", "rx"], optimization_level=3, seed_transpiler=1
        )
    )
    return zb.Circuit.from_qiskit(found), seconds


def ours(order: str = "free", **options: object):
    def run(rotations: Rotations, timed: Timer) -> tuple[zb.Circuit, float]:
        listed = list(rotations.items())
        result, seconds = timed(lambda: zb.pauli.synthesize(listed, order=order, seed=1, **options))
        return result.circuit, seconds

    return run


def is_right(circuit: zb.Circuit, rotations: Rotations) -> bool:
    """Each rotation once, in whatever order, and a permutation of the wires at most after them."""
    left = dict(rotations)
    pulled = PulledBack(circuit.n)
    for gate in circuit:
        if not gate.params:
            pulled.append(gate)
            continue
        angle = float(gate.params[0])
        quarters = round(angle / (math.pi / 2))
        rest = angle - quarters * math.pi / 2
        if abs(rest) > 1e-7:
            minus, letters = pulled.letter("Z" if gate.diag else gate.name[1], gate.qubits[0])
            if not math.isclose(-rest if minus else rest, left.pop(letters, 9.0), abs_tol=1e-6):
                return False
        pulled.append(zb.Gate(gate.name, gate.qubits, quarters * math.pi / 2))
    ends = [(pulled.letter("X", q), pulled.letter("Z", q)) for q in range(circuit.n)]
    start = PulledBack(circuit.n)
    wires = {(start.letter("X", q), start.letter("Z", q)) for q in range(circuit.n)}
    return not left and set(ends) == wires


PEERS = (
    ("pytket, free wires", pytket_greedy),
    ("Qiskit, level 3", qiskit_default),
    ("ladder", ours(method="ladder")),
    ("recursive", ours(method="recursive", permutation="free")),
    ("greedy", ours(method="greedy", permutation="free")),
    ("greedy, in order", ours(method="greedy", order="commuting", permutation="free")),
    ("greedy_depth", ours(method="greedy_depth", permutation="free")),
    ("sets_closed", ours(method="sets_closed")),
    ("auto", ours(permutation="free")),
    ("search, 15 s", ours(method="search", permutation="free", budget=15)),
)


def main(timed: Timer, quick: bool) -> None:
    print("\nPauli rotations, one Trotter step: two-qubit gates / depth / ms")
    heads = [name for name, _ in PEERS]
    print(" ".join(["input".ljust(16), *(head.rjust(20) for head in heads)]))
    for name, rotations in inputs(quick):
        cells = []
        for peer, method in PEERS:
            circuit, seconds = method(rotations, timed)
            if method is not qiskit_default and not is_right(circuit, rotations):
                sys.exit(f"{peer} on {name}: the circuit is wrong")
            cells.append(f"{circuit.two_qubit_count}/{circuit.two_qubit_depth}/{1e3 * seconds:.1f}")
        print(" ".join([name.ljust(16), *(cell.rjust(20) for cell in cells)]), flush=True)
